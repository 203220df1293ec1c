// Numbers in text: what the C library's scanf and printf make of them in the "C" locale, to the last bit and character.
// The usual forms are read and written here, for speed; scanf and printf take all others. They need
// vexo_internal::NumberLocale in force.
#ifndef VEXO_BASE_NUMBERS_H
#define VEXO_BASE_NUMBERS_H

#include <fast_float/fast_float.h>

#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace vexo_internal {

// ---- Reading

inline bool is_blank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// Whether a number that was read up to this character ends here for scanf, too. Before any other, as in "1e5", "0x1"
// and "1.5.5", scanf decides.
inline bool ends_number(char next) { return is_blank(next) || next == ',' || next == '\0'; }

inline const char *scan_any(const char *text, float *value) {
  int length = 0;
  return sscanf(text, "%f%n", value, &length) == 1 ? text + length : nullptr;
}

inline const char *scan_any(const char *text, unsigned long long *value) {
  int length = 0;
  return sscanf(text, "%llu%n", value, &length) == 1 ? text + length : nullptr;
}

// Reads a number as "%f" does, white space before it included, from a text whose NUL is at limit. Gives the end of the
// number, or null where there is none.
inline const char *scan(const char *text, const char *limit, float *value) {
  while (is_blank(*text)) {
    text++;
  }
  float plain = 0.0F;
  const auto [end, error] = fast_float::from_chars(text, limit, plain);
  if (error != std::errc() || !ends_number(*end) || !std::isfinite(plain)) {
    return scan_any(text, value);
  }
  *value = plain;
  return end;
}

// The same as "%llu" does.
inline const char *scan(const char *text, const char *limit, unsigned long long *value) {
  while (is_blank(*text)) {
    text++;
  }
  unsigned long long plain = 0;
  const auto [end, error] = std::from_chars(text, limit, plain);
  if (error != std::errc() || !ends_number(*end)) {
    return scan_any(text, value);
  }
  *value = plain;
  return end;
}

// Reads the numbers at the start of a text. Gives the end of the last one, or null where there are fewer.
template <typename Number, size_t kCount>
const char *scan_all(const char *text, const char *limit, Number (&values)[kCount]) {
  for (Number &value : values) {
    text = scan(text, limit, &value);
    if (text == nullptr) {
      return nullptr;
    }
  }
  return text;
}

// ---- Writing. Every function gives the end of what it wrote and may use kNumberRoom characters.

const size_t kNumberRoom = 64;

// "00" to "99".
struct Pairs {
  constexpr Pairs() {
    for (int n = 0; n < 100; n++) {
      digits[n][0] = static_cast<char>('0' + n / 10);
      digits[n][1] = static_cast<char>('0' + n % 10);
    }
  }
  char digits[100][2] = {};
};
static constexpr Pairs kPairs;

inline void put_pair(char *text, uint32_t number) { memcpy(text, kPairs.digits[number], 2); }

// "%*d" for a width of 1 to 8.
inline char *put_integer(char *text, int value, int width) {
  static const int kPowers[] = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000};
  if (value < 0 || value >= kPowers[width]) {
    return text + snprintf(text, kNumberRoom, "%*d", width, value);
  }
  memset(text, ' ', 8);
  char *const end = text + width;
  char *first = end;
  auto rest = static_cast<uint32_t>(value);
  for (; rest >= 10; rest /= 100) {
    put_pair(first -= 2, rest % 100);
  }
  if (rest > 0 || first == end) {
    *--first = static_cast<char>('0' + rest);
  }
  return end;
}

// "%0.8f". The product with 10^8 is exact in double: 24 bits times the 19 bits of 5^8. Adding 2^52 rounds it to a whole
// number as printf rounds, halves to even.
inline char *put_decimal(char *text, float value) {
  const double magnitude = std::fabs(static_cast<double>(value));
  if (!(magnitude < 16777216.0)) {
    return text + snprintf(text, kNumberRoom, "%0.8f", static_cast<double>(value));
  }
  const double two_to_52 = 4503599627370496.0;
  const auto scaled = static_cast<uint64_t>((magnitude * 1e8 + two_to_52) - two_to_52);
  const auto decimals = static_cast<uint32_t>(scaled % 100000000);
  if (std::signbit(value)) {
    *text++ = '-';
  }
  text = std::to_chars(text, text + 8, static_cast<uint32_t>(scaled / 100000000)).ptr;
  *text++ = '.';
  put_pair(text, decimals / 1000000);
  put_pair(text + 2, decimals / 10000 % 100);
  put_pair(text + 4, decimals / 100 % 100);
  put_pair(text + 6, decimals % 100);
  return text + 8;
}

} // namespace vexo_internal

#endif
