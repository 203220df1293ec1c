// Comparison of single-precision numbers bit by bit: NaNs with equal bits are equal, -0 and +0 differ.
#ifndef VEXO_TESTS_BITS_H
#define VEXO_TESTS_BITS_H

#include <cstdint>
#include <cstring>
#include <vector>

// The bits of a number, or of a record of numbers.
template <typename Record> std::vector<uint32_t> bits(const Record &record) {
  std::vector<uint32_t> u(sizeof record / sizeof(uint32_t));
  std::memcpy(u.data(), &record, sizeof record);
  return u;
}

#endif
