// Additive mixing of xyY colours, inline for the loops of the calibration.
#ifndef VEXO_XYY_H
#define VEXO_XYY_H

#include "vexo-matrix.h"

namespace vexo_internal {

// Without branches, so that loops over many colours vectorise.
inline bool valid_xyY(float x, float y, float Y) {
  return (x >= 0.0F) & (x < 1.0F) & (y >= 0.0F) & (y < 1.0F) & (Y >= 0.0F);
}

inline bool valid_xyY(const vexo_vector &v) { return valid_xyY(v.d[0], v.d[1], v.d[2]); }

// X + Y + Z: what a colour weighs in a mixture.
inline float weight(const vexo_vector &v) { return v.d[2] / v.d[1]; }

// The sum of two valid colours of weights Sa and Sb.
inline vexo_vector mix_weighted(const vexo_vector &a, float Sa, const vexo_vector &b, float Sb) {
  const float k = Sb / (Sa + Sb);
  return vexo_vector{{a.d[0] + (b.d[0] - a.d[0]) * k, a.d[1] + (b.d[1] - a.d[1]) * k, a.d[2] + b.d[2]}};
}

} // namespace vexo_internal

#endif
