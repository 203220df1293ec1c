#include "report/markup.h"

#include <cmath>

#include "text/format.h"
#include "text/json.h"

namespace {

const char *const kReplacement = "\xEF\xBF\xBD"; // U+FFFD

// What stands for a byte of UTF-8.
std::string replaced(char c) {
  switch (c) {
  case '&':
    return "&amp;";
  case '<':
    return "&lt;";
  case '>':
    return "&gt;";
  case '"':
    return "&quot;";
  default:
    const auto byte = static_cast<unsigned char>(c);
    const bool control = (byte < 0x20 && c != '\n' && c != '\t') || byte == 0x7F;
    return control ? kReplacement : std::string(1, c);
  }
}

} // namespace

std::string escaped(const std::string &text) {
  // The JSON writer replaces what is not UTF-8.
  const Json utf8 = Json::parse(Json(text).dump(-1, ' ', false, Json::error_handler_t::replace));
  std::string out;
  for (const char c : utf8.get<std::string>()) {
    out += replaced(c);
  }
  return out;
}

std::string number(double value, int decimals) { return std::isfinite(value) ? format("%.*f", decimals, value) : "–"; }

std::string kelvin(int cct) { return cct > 0 ? format("%d K", cct) : "–"; }
