// Codes of normalised values.
#ifndef VEXO_BASE_CODES_H
#define VEXO_BASE_CODES_H

#include <climits>
#include <cmath>
#include <cstdint>

namespace vexo_internal {

// To nearest, halves away from zero, for 0 <= x < 2^31. The integer part is a float, and so is what lies beyond it.
inline int nearest(float x) {
  const auto whole = static_cast<int>(x);
  return whole + (x - static_cast<float>(whole) >= 0.5F ? 1 : 0);
}

inline bool valid_depth(int nbits) { return nbits >= 1 && nbits <= 30; }

inline float max_code(int nbits) { return static_cast<float>((1 << nbits) - 1); }

// The code of a value, to nearest, halves away from zero; not limited to the depth, but to int. A NaN is 0.
inline int code_of(float value, float max_value) {
  const float scaled = max_value * value;
  if (scaled >= 0.0F && scaled < 2147483648.0F) {
    return nearest(scaled);
  }
  const float code = std::round(scaled);
  if (std::isnan(code)) {
    return 0;
  }
  if (code >= 2147483648.0F) {
    return INT_MAX;
  }
  return code <= -2147483648.0F ? INT_MIN : static_cast<int>(code);
}

// The low 16 bits of the code, negative codes as 0.
inline unsigned short short_code_of(float value, float max_value) {
  const float code = std::round(value * max_value);
  if (!(code > 0.0F)) {
    return 0;
  }
  const uint32_t bits = code >= 4294967296.0F ? UINT32_MAX : static_cast<uint32_t>(code);
  return static_cast<unsigned short>(bits & 0xFFFFU);
}

} // namespace vexo_internal

#endif
