// What the calibration (vexo.cpp) and gray tracking (vexo-gray.cpp) share: the tables of a context, and reading them.
#ifndef VEXO_TABLES_H
#define VEXO_TABLES_H

#include "base/exact.h"
#include "vexo-cs.h"
#include "vexo.h"

namespace vexo_internal {

const int kLevels = 1024; // table levels of a channel
const int kTop = kLevels - 1;
const float kTopF = 1023.0F;

const float kFarthest = 2.0F; // a candidate colour counts when its distance to the target is less

using Column = float[kLevels]; // a channel's tables are three: x, y, relative Y

// Fills the context's tables from its measurements, as both recipes begin. Returns 0, or -1 when the measurements make
// no tables.
int make_tables(vexo *panel);

// Whether three LUTs have an entry per table level, as gray tracking needs. Reports another size on standard error.
bool level_sized(const vexo_lut *lut);

// Gray tracking: fits red and blue of three LUTs, level by level, to the chromaticity of the white XYZ. Returns 0, or
// -1 with the LUTs unchanged when they are not level-sized or the white has no chromaticity.
int track_gray(vexo_lut *lut, vexo *panel, const vexo_vector &white);

// The matrix from XYZ to linear RGB of a panel whose primaries, white and black were measured as XYZ. Returns 0, or -1
// when the measurements make no colour space.
int panel_rgb_matrix(vexo_matrix *m, const float *R, const float *G, const float *B, const float *W, const float *D);

inline vexo_vector entry(const Column *T, int level) { return vexo_vector{{T[0][level], T[1][level], T[2][level]}}; }

// Absolute xyY of channel c at a fractional level.
inline vexo_vector channel_xyY(const vexo *panel, int c, float level) {
  const Column *T = panel->data[c];
  return vexo_vector{
      {table_at(T[0], kTop, level), table_at(T[1], kTop, level), table_at(T[2], kTop, level) * panel->maxY[c]}};
}

// Squared distance in the chromaticity diagram. Differences in x count twice.
inline float color_distance(const vexo_vector &a, const vexo_vector &b) {
  const float dx = 2.0F * (a.d[0] - b.d[0]);
  const float dy = a.d[1] - b.d[1];
  return dx * dx + dy * dy;
}

// X and Z of a table level.
struct XZ {
  float X;
  float Z;
};
inline XZ level_XZ(const Column *T, int level) {
  const vexo_vector xyY = entry(T, level);
  const float S = xyY.d[2] / xyY.d[1];
  return XZ{S * xyY.d[0], S * (1.0F - xyY.d[0] - xyY.d[1])};
}

// vexo_data_Y_xyY() with the caller's search and the caller's X and Z: first_level(luma) is the first level above 0
// that reaches luma, or kLevels; XZ_of(level) is level_XZ().
template <typename FirstLevel, typename XZ_Of>
float level_of_luminance(vexo_vector *v, const Column *T, float luma, FirstLevel first_level, XZ_Of XZ_of) {
  if (T[2][kTop] <= luma) {
    *v = entry(T, kTop);
    return kTopF;
  }
  if (luma <= T[2][0]) {
    *v = entry(T, 0);
    return 0.0F;
  }
  const int upper = first_level(luma);
  if (upper == kLevels) {
    return -1.0F;
  }
  const int lower = upper - 1;
  const float level = (luma - T[2][lower]) / (T[2][upper] - T[2][lower]) + static_cast<float>(lower);
  if (T[1][lower] == 0.0F || T[1][upper] == 0.0F) {
    *v = entry(T, lower);
    return level;
  }
  const XZ a = XZ_of(lower);
  const XZ b = XZ_of(upper);
  const float f = level - static_cast<float>(lower);
  *v = vexo_vector{{lerp(a.X, b.X, f), luma, lerp(a.Z, b.Z, f)}};
  vexo_XYZ_xyY(v);
  return level;
}

} // namespace vexo_internal

#endif
