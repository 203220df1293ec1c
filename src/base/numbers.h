// Number text, read and written with exact arithmetic: what the C library's scanf and printf make of it in the "C"
// locale, to the last bit and character, at a fraction of the cost. The readers take the plain forms and leave every
// other (hexadecimal, infinities, long mantissas, odd separators) to scanf; the writers ask printf for what is out of
// the usual range. Both need vexo_internal::NumberLocale in force.
#ifndef VEXO_TEXT_H
#define VEXO_TEXT_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace vexo_internal {

// ---- Several characters at once, the first in the lowest byte whatever the host's order

const bool kBigEndian = __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__;

inline uint32_t load_two(const char *text) {
  uint16_t characters;
  memcpy(&characters, text, sizeof characters);
  return kBigEndian ? __builtin_bswap16(characters) : characters;
}

inline uint64_t load_eight(const char *text) {
  uint64_t characters;
  memcpy(&characters, text, sizeof characters);
  return kBigEndian ? __builtin_bswap64(characters) : characters;
}

inline void store_eight(char *text, uint64_t characters) {
  characters = kBigEndian ? __builtin_bswap64(characters) : characters;
  memcpy(text, &characters, sizeof characters);
}

const uint64_t kEightZeros = 0x3030303030303030;  // "00000000"
const uint64_t kEightBlanks = 0x1010101010101010; // as many blanks, below the zeros

// The high bits of the bytes that are not 0..9, right up to the first such byte: only it can carry into the next.
inline uint64_t beyond_digits(uint64_t bytes) { return (bytes | (bytes + 0x7676767676767676)) & 0x8080808080808080; }

// Which of eight bytes, with the first mark in it.
inline int first_byte(uint64_t marks) { return __builtin_ctzll(marks) / 8; }

// The number of eight digit bytes: pairs, then fours, then all eight.
inline uint64_t number_of(uint64_t digits) {
  const uint64_t pairs = digits * 10 + (digits >> 8);
  const uint64_t odd = (pairs & 0x000000FF000000FF) * (100 + (uint64_t{1000000} << 32));
  const uint64_t even = (pairs >> 16 & 0x000000FF000000FF) * (1 + (uint64_t{10000} << 32));
  return (odd + even) >> 32;
}

// The eight digit bytes of a number below 10^8: the inverse, with quotients by multiplication that are exact here. A
// step leaves the quotient where the number was and puts the remainder n - q c at the next higher place of s bits:
// q + ((n - q c) << s) = (n << s) - q ((c << s) - 1).
inline uint64_t digits_of(uint32_t number) {
  const uint64_t fours = (uint64_t{number} << 32) - uint64_t{number / 10000} * ((uint64_t{10000} << 32) - 1);
  const uint64_t hundreds = (fours * 10486 >> 20) & 0x0000007F0000007F;
  const uint64_t pairs = (fours << 16) - hundreds * ((100 << 16) - 1);
  const uint64_t tens = (pairs * 103 >> 10) & 0x000F000F000F000F;
  return (pairs << 8) - tens * ((10 << 8) - 1);
}

// ---- Reading

// Every reader below takes text up to limit and gives the end of what it read, or null when the text is not of its
// plain form or does not end before limit.

inline bool is_digit(char c) { return c >= '0' && c <= '9'; }

// White space within a line.
inline bool is_blank(char c) { return c == ' ' || (c >= '\t' && c <= '\r' && c != '\n'); }

inline const char *skip_blanks(const char *text, const char *limit) {
  while (text < limit && is_blank(*text)) {
    text++;
  }
  return text;
}

// Whether a number that ends here is one for scanf, too, without a look at what follows.
inline bool ends_number(const char *text, const char *limit) {
  return text < limit && (*text == ' ' || *text == '\n' || *text == ',' || *text == '\0' || is_blank(*text));
}

const ptrdiff_t kMostDigits = 18; // of a number below 2^63
const int kMostDown = 22;         // decimal exponents that keep a number of so many digits a float
const int kMostUp = 18;

// Appends a run of digits to the number, modulo 2^64.
inline const char *read_digits(const char *text, const char *limit, uint64_t *number) {
  static const uint32_t kPowers[] = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000};
  while (limit - text >= 8) {
    const uint64_t digits = load_eight(text) ^ kEightZeros;
    const uint64_t marks = beyond_digits(digits);
    if (marks != 0) {
      const int count = first_byte(marks);
      *number = *number * kPowers[count] + number_of(digits << 8 * (7 - count) << 8); // behind zeros
      return text + count;
    }
    *number = *number * 100000000 + number_of(digits);
    text += 8;
  }
  while (text < limit && is_digit(*text)) {
    *number = *number * 10 + static_cast<uint64_t>(*text++ - '0');
  }
  return text;
}

// The low 32 bits of a number as "%llu" takes it.
inline const char *read_number(const char *text, const char *limit, uint32_t *value) {
  uint64_t number = 0;
  const char *end = read_digits(text, limit, &number);
  if (end == text || end - text > kMostDigits || !ends_number(end, limit)) {
    return nullptr;
  }
  *value = static_cast<uint32_t>(number);
  return end;
}

// number * 10^exponent as a float, for a number below 2^63. Its conversion, the power and the product err by half a
// unit in the last place each, so that near is within four units of the exact value. False where a midpoint between two
// floats may lie between the two: anywhere else both round to the same float. So no value may be below FLT_MIN, but 0.
inline bool scaled(uint64_t number, int exponent, bool negative, float *value) {
  static const double kPowers[] = {1e-22, 1e-21, 1e-20, 1e-19, 1e-18, 1e-17, 1e-16, 1e-15, 1e-14, 1e-13, 1e-12,
                                   1e-11, 1e-10, 1e-9,  1e-8,  1e-7,  1e-6,  1e-5,  1e-4,  1e-3,  1e-2,  1e-1,
                                   1e0,   1e1,   1e2,   1e3,   1e4,   1e5,   1e6,   1e7,   1e8,   1e9,   1e10,
                                   1e11,  1e12,  1e13,  1e14,  1e15,  1e16,  1e17,  1e18};
  const double near = static_cast<double>(static_cast<int64_t>(number)) * kPowers[exponent + kMostDown];
  uint64_t bits;
  memcpy(&bits, &near, sizeof bits);
  const uint64_t beyond_float = bits & 0x1FFFFFFF; // the 29 bits that a float has not got
  const uint64_t midpoint = 0x10000000;
  *value = static_cast<float>(negative ? -near : near);
  return beyond_float - (midpoint - 4) > 8;
}

// A decimal number as "%f" takes it: sign, digits with a point among them, and a power of ten of one or two digits.
inline const char *read_number(const char *text, const char *limit, float *value) {
  const bool negative = text < limit && *text == '-';
  if (negative || (text < limit && *text == '+')) {
    text++;
  }
  uint64_t number = 0;
  const char *end = read_digits(text, limit, &number);
  ptrdiff_t count = end - text;
  ptrdiff_t exponent = 0;
  if (end < limit && *end == '.') {
    const char *decimals = end + 1;
    end = read_digits(decimals, limit, &number);
    exponent = decimals - end;
    count -= exponent;
  }
  if (count == 0 || count > kMostDigits) {
    return nullptr;
  }
  if (end < limit && (*end == 'e' || *end == 'E')) {
    const bool down = ++end < limit && *end == '-';
    if (down || (end < limit && *end == '+')) {
      end++;
    }
    uint64_t power = 0;
    const char *digits = end;
    end = read_digits(digits, limit, &power);
    if (end == digits || end - digits > 2) {
      return nullptr;
    }
    exponent += down ? -static_cast<ptrdiff_t>(power) : static_cast<ptrdiff_t>(power);
  }
  if (exponent < -kMostDown || exponent > kMostUp || !ends_number(end, limit)) {
    return nullptr;
  }
  return scaled(number, static_cast<int>(exponent), negative, value) ? end : nullptr;
}

// Numbers with white space before each.
template <typename Number, size_t kCount>
[[gnu::noinline]] const char *read_numbers(const char *text, const char *limit, Number (&values)[kCount]) {
  for (Number &value : values) {
    text = read_number(skip_blanks(text, limit), limit, &value);
    if (text == nullptr) {
      return nullptr;
    }
  }
  return text;
}

// Whole lines of numbers.
class LineReader {
public:
  // Gives what follows the line.
  template <typename Number, size_t kCount>
  const char *read(const char *text, const char *limit, Number (&values)[kCount]) {
    const char *end = read_alike(text, limit, values);
    return end != nullptr ? end : read_any(text, limit, values);
  }

private:
  // A line of numbers of a digit and as many decimals as in the line before, one blank between them: most files have
  // no other. Without a branch on the way.
  template <size_t kCount> const char *read_alike(const char *text, const char *limit, float (&values)[kCount]) {
    static const uint32_t kOne[] = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000};
    const ptrdiff_t width = decimals_ + 3;
    if (decimals_ == 0 || limit - text < width * static_cast<ptrdiff_t>(kCount) + 8) {
      return nullptr;
    }
    uint64_t marks = 0;
    bool alike = true;
    for (size_t i = 0; i < kCount; i++) {
      const uint64_t decimals = (load_eight(text + 2) ^ kEightZeros) << 8 * (8 - decimals_);
      const uint32_t first = load_two(text) ^ ('0' | '.' << 8);
      const uint64_t number = uint64_t{first} * kOne[decimals_] + number_of(decimals);
      marks |= beyond_digits(decimals);
      alike &= (first <= 9) & (text[width - 1] == (i + 1 < kCount ? ' ' : '\n')) &
               scaled(number, -decimals_, false, &values[i]);
      text += width;
    }
    return alike && marks == 0 ? text : nullptr;
  }

  // A line of codes in columns of kColumn characters, one blank between them, as the library writes it.
  template <size_t kCount> const char *read_alike(const char *text, const char *limit, uint32_t (&values)[kCount]) {
    const int before = 64 - 8 * kColumn;
    if (limit - text < (kColumn + 1) * static_cast<ptrdiff_t>(kCount) + 8) {
      return nullptr;
    }
    uint64_t odd = 0;
    bool alike = true;
    for (size_t i = 0; i < kCount; i++) {
      const uint64_t column = (load_eight(text) ^ kEightZeros) << before;
      const uint64_t last = uint64_t{1} << 56; // at least this digit is none of the blanks
      const uint64_t marks = (column ^ (kEightBlanks << before)) | last;
      const uint64_t digits = column & ~((marks & (~marks + 1)) - 1);
      values[i] = static_cast<uint32_t>(number_of(digits));
      odd |= beyond_digits(digits);
      alike &= text[kColumn] == (i + 1 < kCount ? ' ' : '\n');
      text += kColumn + 1;
    }
    return alike && odd == 0 ? text : nullptr;
  }

  template <typename Number, size_t kCount>
  const char *read_any(const char *text, const char *limit, Number (&values)[kCount]) {
    const char *end = read_numbers(text, limit, values);
    if (end == nullptr) {
      return nullptr;
    }
    find_decimals(text, limit); // to be tried next
    end = skip_blanks(end, limit);
    return end < limit && *end == '\n' ? end + 1 : nullptr;
  }

  void find_decimals(const char *text, const char *limit) {
    decimals_ = 0;
    if (limit - text >= 10 && text[1] == '.') {
      const uint64_t marks = beyond_digits(load_eight(text + 2) ^ kEightZeros);
      decimals_ = marks == 0 ? 8 : first_byte(marks);
    }
  }

  static const int kColumn = 5;
  int decimals_ = 6; // of the line before, 1 to 8; 0 if it is of another form
};

// ---- Writing

// Every writer of text below gives the end of what it wrote and may use kNumberRoom characters.
const size_t kNumberRoom = 64;

// The numbers 0..99 in two characters: of the lower pair behind digits or blanks, and of the higher pair.
struct Pairs {
  constexpr Pairs() {
    for (int n = 0; n < 100; n++) {
      const auto tens = static_cast<char>('0' + n / 10);
      const auto ones = static_cast<char>('0' + n % 10);
      digits[n][0] = tens;
      number[n][0] = higher[n][0] = n < 10 ? ' ' : tens;
      digits[n][1] = number[n][1] = ones;
      higher[n][1] = n == 0 ? ' ' : ones;
    }
  }
  char digits[100][2] = {};
  char number[100][2] = {};
  char higher[100][2] = {};
};
static constexpr Pairs kPairs;

// "%*d" for a width of 1 to 8: the digits behind blanks that go up to the width.
[[gnu::noinline]] inline char *put_any_integer(char *text, int value, int width) {
  if (value < 0 || value > 99999999) {
    return text + snprintf(text, kNumberRoom, "%*d", width, value);
  }
  const uint64_t digits = digits_of(static_cast<uint32_t>(value));
  const int zeros = __builtin_ctzll(digits | uint64_t{1} << 56) & ~7; // bits of them before the first digit to show
  const uint64_t blanks = kEightBlanks & ((uint64_t{1} << zeros) - 1);
  const int left_out = zeros < 64 - 8 * width ? zeros : 64 - 8 * width;
  store_eight(text, ((digits | kEightZeros) - blanks) >> left_out);
  return text + (64 - left_out) / 8;
}

// The same, at once for numbers of up to four digits.
inline char *put_integer(char *text, int value, int width) {
  const auto number = static_cast<uint32_t>(value);
  if (number >= 10000 || width < 4) {
    return put_any_integer(text, value, width);
  }
  const uint32_t high = number / 100;
  const uint32_t low = number % 100;
  memcpy(text, "    ", 4);
  text += width;
  memcpy(text - 4, kPairs.higher[high], 2);
  memcpy(text - 2, high > 0 ? kPairs.digits[low] : kPairs.number[low], 2);
  return text;
}

// "%0.8f". The product with 10^8 is exact in double: 24 bits times the 19 bits of 5^8. Adding 2^52 rounds it to a whole
// number as printf rounds, halves to even.
inline char *put_decimal(char *text, float value) {
  const double magnitude = std::fabs(static_cast<double>(value));
  if (!(magnitude < 16777216.0)) {
    return text + snprintf(text, kNumberRoom, "%0.8f", static_cast<double>(value));
  }
  const double whole = 4503599627370496.0;
  const auto scaled_value = static_cast<uint64_t>((magnitude * 1e8 + whole) - whole);
  if (std::signbit(value)) {
    *text++ = '-';
  }
  const auto integer = static_cast<int>(scaled_value / 100000000);
  if (integer < 10) {
    *text++ = static_cast<char>('0' + integer);
  } else {
    text = put_integer(text, integer, 1);
  }
  *text++ = '.';
  store_eight(text, digits_of(static_cast<uint32_t>(scaled_value % 100000000)) | kEightZeros);
  return text + 8;
}

// The eight digits of "%08x".
inline uint64_t hexadecimal_of(uint32_t word) {
  // The nibbles as bytes, the highest in the lowest byte.
  uint64_t nibbles = (word >> 16) | uint64_t{word & 0xFFFFU} << 32;
  nibbles = (nibbles >> 8 & 0x000000FF000000FF) | (nibbles & 0x000000FF000000FF) << 16;
  nibbles = (nibbles >> 4 & 0x000F000F000F000F) | (nibbles & 0x000F000F000F000F) << 8;
  const uint64_t letters = (nibbles + 0x0606060606060606) >> 4 & 0x0101010101010101;
  return nibbles + kEightZeros + (letters << 5) + (letters << 3) - letters; // 39 from '9' + 1 to 'a'
}

} // namespace vexo_internal

#endif
