// Integer codes of normalised values. The library rounds to nearest, halves away from zero, limits the result to its
// range and makes 0 of a NaN. Only the registers of the video converter differ: they round halves upward.
#ifndef VEXO_BASE_CODES_H
#define VEXO_BASE_CODES_H

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace vexo_internal {

// The nearest integer between lowest and highest.
template <typename Int>
Int rounded(double x, Int lowest = std::numeric_limits<Int>::min(), Int highest = std::numeric_limits<Int>::max()) {
  if (std::isnan(x)) {
    return 0;
  }
  return static_cast<Int>(std::clamp(std::round(x), static_cast<double>(lowest), static_cast<double>(highest)));
}

// The same for 0 <= x < 2^31, in a form that vectorises.
inline int nearest(float x) {
  const auto whole = static_cast<int>(x);
  return whole + (x - static_cast<float>(whole) >= 0.5F ? 1 : 0);
}

inline bool valid_depth(int nbits) { return nbits >= 1 && nbits <= 30; }

// The highest code of 1 to 31 bits.
inline int largest_code(int nbits) { return static_cast<int>((uint32_t{1} << nbits) - 1); }

inline float max_code(int nbits) { return static_cast<float>(largest_code(nbits)); }

// The code of a value, not limited to its depth.
inline int quantise(float value, float max_value) { return rounded<int>(static_cast<double>(max_value * value)); }

// The low 16 bits of the code; a negative code is 0.
inline unsigned short quantise_short(float value, float max_value) {
  return static_cast<unsigned short>(rounded<uint32_t>(static_cast<double>(max_value * value)) & 0xFFFFU);
}

} // namespace vexo_internal

#endif
