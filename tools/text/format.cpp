#include "text/format.h"

#include <charconv>
#include <cstdarg>
#include <cstdio>
#include <cstring>

std::string format(const char *pattern, ...) {
  va_list args;
  va_start(args, pattern);
  std::string text(static_cast<size_t>(std::vsnprintf(nullptr, 0, pattern, args)), '\0');
  va_end(args);
  va_start(args, pattern);
  std::vsnprintf(text.data(), text.size() + 1, pattern, args);
  va_end(args);
  return text;
}

std::string shortest(float value) {
  char digits[32];
  return {digits, std::to_chars(digits, digits + sizeof digits, value).ptr};
}

std::string join(const std::vector<std::string> &words) {
  std::string text;
  for (const std::string &word : words) {
    text += (text.empty() ? "" : " ") + word;
  }
  return text;
}

std::string visible(const std::string &text) {
  std::string shown;
  for (const char c : text) {
    const auto code = static_cast<unsigned char>(c);
    shown += code < 0x20 || code == 0x7F ? format("\\x%02x", code) : std::string(1, c);
  }
  return shown;
}

bool blank(const char *text) { return text[std::strspn(text, " \t\r\n")] == '\0'; }
