#include "text/json.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>

#include "text/failure.h"

Json json_number(float value) {
  if (!std::isfinite(value)) {
    return nullptr;
  }
  char text[64];
  const auto shortest = std::to_chars(text, text + sizeof text, value);
  double exact = 0.0;
  std::from_chars(text, shortest.ptr, exact);
  return exact;
}

Json json_vector(const vexo_vector &v) { return {json_number(v.d[0]), json_number(v.d[1]), json_number(v.d[2])}; }

Json json_matrix(const vexo_matrix &m) {
  Json rows = Json::array();
  for (const auto &row : m.d) {
    rows.push_back(json_vector(vexo_vector{{row[0], row[1], row[2]}}));
  }
  return rows;
}

Json parse_json(const std::string &name, const std::string &text, const std::string &expected) {
  try {
    return Json::parse(text);
  } catch (const Json::parse_error &error) {
    const size_t before = std::min(error.byte, text.size());
    const auto line = 1 + std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(before), '\n');
    refuse_input(name + ":" + std::to_string(line), "no JSON, expected " + expected);
  }
}

void print_json(const Json &document) {
  // Titles and paths may hold any bytes; those that are not UTF-8 are replaced.
  std::puts(document.dump(2, ' ', false, Json::error_handler_t::replace).c_str());
}
