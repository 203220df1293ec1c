// Additive mixing of xyY colours.
#ifndef VEXO_XYY_H
#define VEXO_XYY_H

#include "vexo-matrix.h"

namespace vexo_internal {

// A NaN in any component fails.
inline bool valid_xyY(const vexo_vector &v) {
  return v.d[0] >= 0.0F && v.d[0] < 1.0F && v.d[1] >= 0.0F && v.d[1] < 1.0F && v.d[2] >= 0.0F;
}

// One light of a mixture, with what each of its mixtures needs.
struct Light {
  Light() = default;
  explicit Light(const vexo_vector &v) : xyY(v), weight(v.d[2] / v.d[1]), valid(valid_xyY(v)) {}
  vexo_vector xyY;
  float weight; // X + Y + Z: the weight of its chromaticity
  bool valid;
};

// The sum of two lights: the centre of gravity of their chromaticities. Black when either is invalid.
inline vexo_vector mix(const Light &a, const Light &b) {
  if (!a.valid || !b.valid) {
    return vexo_vector{};
  }
  const float k = b.weight / (a.weight + b.weight);
  return vexo_vector{{a.xyY.d[0] + (b.xyY.d[0] - a.xyY.d[0]) * k, a.xyY.d[1] + (b.xyY.d[1] - a.xyY.d[1]) * k,
                      a.xyY.d[2] + b.xyY.d[2]}};
}

} // namespace vexo_internal

#endif
