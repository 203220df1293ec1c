// Comparison of single-precision results bit by bit: NaNs with equal bits are equal, -0 and +0 differ.
#ifndef VEXO_TESTS_BITS_H
#define VEXO_TESTS_BITS_H

#include <cstdint>
#include <cstring>
#include <vector>

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

// The bits of count floats.
inline std::vector<uint32_t> bits(const float *x, size_t count) {
  std::vector<uint32_t> u(count);
  for (size_t i = 0; i < count; i++) {
    u[i] = bits(x[i]);
  }
  return u;
}

inline std::vector<uint32_t> bits(const std::vector<float> &x) { return bits(x.data(), x.size()); }

// The bits of a record of nothing but floats.
template <typename Record> std::vector<uint32_t> bits_of(const Record &record) {
  std::vector<uint32_t> u(sizeof record / sizeof(uint32_t));
  std::memcpy(u.data(), &record, sizeof record);
  return u;
}

// FNV-1a over words.
inline uint64_t digest(const std::vector<uint32_t> &words) {
  uint64_t d = 14695981039346656037U;
  for (const uint32_t word : words) {
    d = (d ^ word) * 1099511628211U;
  }
  return d;
}

#endif
