#include "text/grammar.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>

#include "text/failure.h"
#include "text/format.h"
#include "text/hints.h"

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
