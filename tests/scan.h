// The numbers of the library's texts beside those of scanf.
#ifndef VEXO_TESTS_SCAN_H
#define VEXO_TESTS_SCAN_H

#include <cstdio>
#include <cstring>

#include "base/numbers.h"
#include "bits.h"

// Whether the number at the start of a text, and its length, are what scanf makes of it.
template <typename Number> bool reads_as_scanf(const char *text, const char *format) {
  Number got = 7;
  Number expected = 7;
  int length = 0;
  const char *end = vexo_internal::scan(text, text + std::strlen(text), &got);
  const bool reads = std::sscanf(text, format, &expected, &length) == 1;
  const bool both_nan = got != got && expected != expected;
  return end == (reads ? text + length : nullptr) && (both_nan || bits(got) == bits(expected));
}

#endif
