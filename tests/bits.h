// Comparison of single-precision results bit by bit: NaNs with equal bits are equal, -0 and +0 differ.
#ifndef VEXO_TESTS_BITS_H
#define VEXO_TESTS_BITS_H

#include <cstdint>
#include <cstring>

inline uint32_t bits(float x) {
  uint32_t u;
  std::memcpy(&u, &x, sizeof u);
  return u;
}

inline float from_bits(uint32_t u) {
  float x;
  std::memcpy(&x, &u, sizeof x);
  return x;
}

#endif
