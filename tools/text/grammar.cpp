#include "text/grammar.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>

#include "text/failure.h"
#include "text/format.h"
#include "text/hints.h"

namespace {

struct NamedWhite {
  const char *name;
  float xy[2];
};

// CIE 15 daylight illuminants and E; D93 as broadcast monitors use it; DCI of SMPTE RP 431-2.
const NamedWhite kWhites[] = {
    {"D50", {0.3457F, 0.3585F}},       {"D55", {0.3324F, 0.3474F}}, {"D65", {0.3127F, 0.3290F}},
    {"D75", {0.2990F, 0.3149F}},       {"D93", {0.2831F, 0.2971F}}, {"DCI", {0.3140F, 0.3510F}},
    {"E", {1.0F / 3.0F, 1.0F / 3.0F}},
};

struct NamedCurve {
  const char *name;
  vexo_gamma gamma; // slope, transition, gamma, offset
};

// Encoding curves: linear light to signal.
const NamedCurve kCurves[] = {
    {"linear", {0.0F, 0.0F, 1.0F, 0.0F}},
    {"bt709", {4.5F, 0.018F, 0.45F, 0.099F}},            // BT.709, BT.601, BT.2020 at 10 bits
    {"bt2020", {4.5F, 0.0181F, 0.45F, 0.0993F}},         // BT.2020 at 12 bits
    {"bt1886", {0.0F, 0.0F, 1.0F / 2.4F, 0.0F}},         // inverse of BT.1886 over a black of 0
    {"srgb", {12.92F, 0.0031308F, 1.0F / 2.4F, 0.055F}}, // IEC 61966-2-1
    {"smpte240m", {4.0F, 0.0228F, 0.45F, 0.1115F}},      // SMPTE 240M
    {"adobe", {0.0F, 0.0F, 256.0F / 563.0F, 0.0F}},      // Adobe RGB (1998)
    {"dci", {0.0F, 0.0F, 1.0F / 2.6F, 0.0F}},            // SMPTE ST 428-1
};

} // namespace

std::vector<std::string> split(const std::string &text, char separator) {
  std::vector<std::string> parts;
  for (size_t begin = 0; begin <= text.size();) {
    const size_t end = std::min(text.find(separator, begin), text.size());
    parts.push_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  return parts;
}

std::string lower(std::string text) {
  for (char &c : text) {
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  return text;
}

std::optional<float> finite_number(const std::string &text) {
  float value = 0.0F;
  const char *first = text.data() + (text.size() > 1 && text[0] == '+' && text[1] != '-' ? 1 : 0);
  const char *last = text.data() + text.size();
  const auto [end, error] = std::from_chars(first, last, value);
  if (error != std::errc() || end != last || !std::isfinite(value)) {
    return std::nullopt;
  }
  return value;
}

std::vector<float> number_list(const std::string &text) {
  std::vector<float> values;
  for (const std::string &part : split(text, ',')) {
    const auto value = finite_number(part);
    if (!value) {
      return {};
    }
    values.push_back(*value);
  }
  return values;
}

bool scan_triple(const std::string &text, vexo_vector *v) {
  const auto after_blanks = [&](size_t at) { return std::min(text.find_first_not_of(" \t\r", at), text.size()); };
  size_t at = after_blanks(0);
  for (int i = 0; i < 3; i++) {
    if (i > 0 && at < text.size() && text[at] == ',') {
      at = after_blanks(at + 1);
    }
    const size_t end = std::min(text.find_first_of(" \t\r,", at), text.size());
    const auto value = finite_number(text.substr(at, end - at));
    if (!value) {
      return false;
    }
    v->d[i] = *value;
    at = after_blanks(end);
  }
  return at == text.size();
}

void reject(const std::string &option, const std::string &text, const std::string &expected,
            const std::vector<std::string> &names) {
  throw Failure(kUsageError, option + " '" + text + "': expected " + expected + hint(text, names));
}

int parse_integer(const std::string &option, const std::string &text, int min, int max) {
  int value = 0;
  const char *last = text.data() + text.size();
  const auto [end, error] = std::from_chars(text.data(), last, value);
  if (error != std::errc() || end != last || value < min || value > max) {
    reject(option, text, "a whole number from " + std::to_string(min) + " to " + std::to_string(max));
  }
  return value;
}

float parse_number(const std::string &option, const std::string &text) {
  const auto value = finite_number(text);
  if (!value) {
    reject(option, text, "a number, with a decimal point");
  }
  return *value;
}

float parse_positive(const std::string &option, const std::string &text) {
  const auto value = finite_number(text);
  if (!value || !(*value > 0.0F)) {
    reject(option, text, "a number above 0, with a decimal point");
  }
  return *value;
}

float parse_not_negative(const std::string &option, const std::string &text) {
  const auto value = finite_number(text);
  if (!value || !(*value >= 0.0F)) {
    reject(option, text, "a number not below 0, with a decimal point");
  }
  return *value;
}

std::string parse_name(const std::string &option, const std::string &text, const std::vector<std::string> &names) {
  if (std::find(names.begin(), names.end(), text) == names.end()) {
    reject(option, text, "one of " + join(names), names);
  }
  return text;
}

vexo_vector parse_triple(const std::string &option, const std::string &text) {
  const std::vector<float> values = number_list(text);
  if (values.size() != 3) {
    reject(option, text, "three numbers separated by commas, with decimal points");
  }
  return vexo_vector{{values[0], values[1], values[2]}};
}

White parse_white(const std::string &option, const std::string &text) {
  White white = {text, {}};
  if (const NamedWhite *named = find_name(kWhites, text)) {
    white.name = named->name;
    vexo_vector_set_xy(&white.xyz, named->xy);
    return white;
  }
  const std::vector<float> xy = number_list(text);
  if (xy.size() != 2 || !(xy[0] > 0.0F) || !(xy[1] > 0.0F) || !(xy[0] + xy[1] < 1.0F)) {
    reject(option, text, "one of " + white_names() + ", or a chromaticity x,y such as 0.3127,0.3290",
           names_of(kWhites));
  }
  vexo_vector_set_xy(&white.xyz, xy.data());
  return white;
}

Curve power_curve(float exponent, const std::string &name) {
  Curve curve = {name, {}};
  vexo_gamma_init(&curve.gamma, exponent);
  return curve;
}

Curve parse_curve(const std::string &option, const std::string &text) {
  if (const NamedCurve *named = find_name(kCurves, text)) {
    return Curve{named->name, named->gamma};
  }
  const std::vector<float> values = number_list(text);
  if (values.size() == 1 && values[0] > 0.0F) {
    return power_curve(values[0], "power law " + text);
  }
  if (values.size() == 4 && values[0] >= 0.0F && values[1] >= 0.0F && values[1] < 1.0F && values[2] > 0.0F &&
      values[3] >= 0.0F && (values[0] > 0.0F || values[1] == 0.0F)) {
    return Curve{"custom", {values[0], values[1], values[2], values[3]}};
  }
  reject(option, text,
         "one of " + curve_names() + ", an exponent above 0, or slope,transition,gamma,offset " +
             "(slope above 0 where there is a toe, transition below 1, gamma above 0, offset not below 0)",
         names_of(kCurves));
}

std::string describe(const Curve &curve) {
  const vexo_gamma &g = curve.gamma;
  return format("%s (slope %.9g, transition %.9g, gamma %.9g, offset %.9g)", curve.name.c_str(),
                static_cast<double>(g.slope), static_cast<double>(g.transition), static_cast<double>(g.gamma),
                static_cast<double>(g.offset));
}

std::string white_names() { return join(names_of(kWhites)); }

std::string curve_names() { return join(names_of(kCurves)); }
