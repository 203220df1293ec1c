// Arithmetic that every table of the library shares: the blend between neighbouring entries and the reading of a
// table at a fractional position. Results are part of the interface to the last bit, so the compiler must round
// every operation to its own type: no fused multiply-add, no reassociation, no excess precision.
#ifndef VEXO_EXACT_H
#define VEXO_EXACT_H

#include <cfloat>

#ifdef __FAST_MATH__
#error "fast-math changes results; build without it"
#endif
#if FLT_EVAL_METHOD != 0
#error "float arithmetic must not carry excess precision"
#endif

namespace vexo_internal {

// The blend of neighbouring entries a (lower) and b (upper) at fraction t: t b rounded to single precision, plus
// a (1 - t) in double, rounded once.
inline float lerp(float a, float b, float t) {
  return static_cast<float>(static_cast<double>(t * b) + static_cast<double>(a) * (1.0 - static_cast<double>(t)));
}

// The table at position p, between entry 0 and entry last. Positions outside read the nearest end; a NaN reads entry 0.
inline float table_at(const float *table, int last, float p) {
  if (!(p >= 0.0F)) {
    return table[0];
  }
  if (static_cast<double>(p) >= static_cast<double>(last)) {
    return table[last];
  }
  const int left = static_cast<int>(p);
  return lerp(table[left], table[left + 1], p - static_cast<float>(left));
}

} // namespace vexo_internal

#endif
