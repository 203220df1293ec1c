// Resampling, packed words and listings of 3D LUTs in their plain form, entry by entry: what the library's faster forms
// are checked against, and measured by.
#ifndef VEXO_TESTS_3DLUT_PLAIN_H
#define VEXO_TESTS_3DLUT_PLAIN_H

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>

#include "vexo-3dlut.h"
#include "vexo-util.h"

namespace plain {

// Component c of the source at the positions of the axes from one on; index holds what the axes before it chose.
inline float interpolated(vexo_3dlut *src, const float *position, int (&index)[3], int axis, int c) {
  if (axis == 3) {
    return vexo_3dlut_item(src, index[0], index[1], index[2])->d[c];
  }
  const float lower = std::floor(position[axis]);
  index[axis] = static_cast<int>(lower);
  float v[2] = {interpolated(src, position, index, axis + 1, c), 0.0F};
  if (static_cast<int>(lower) == vexo_3dlut_size(src) - 1) {
    return v[0];
  }
  index[axis] = static_cast<int>(lower) + 1;
  v[1] = interpolated(src, position, index, axis + 1, c);
  return linear_inter(position[axis] - lower, v);
}

// dst = src resampled; both of more than one point an axis and of different sizes.
inline void resample(vexo_3dlut *dst, vexo_3dlut *src) {
  const int size = vexo_3dlut_size(dst);
  const float scale =
      static_cast<float>((static_cast<double>(size) - 1.0) / (static_cast<double>(vexo_3dlut_size(src)) - 1.0));
  for (int bi = 0; bi < size; bi++) {
    for (int gi = 0; gi < size; gi++) {
      for (int ri = 0; ri < size; ri++) {
        const float position[3] = {static_cast<float>(bi) / scale, static_cast<float>(gi) / scale,
                                   static_cast<float>(ri) / scale};
        vexo_vector v;
        for (int c = 0; c < 3; c++) {
          int index[3];
          v.d[c] = interpolated(src, position, index, 0, c);
        }
        vexo_3dlut_set_item(dst, &v, bi, gi, ri);
      }
    }
  }
}

} // namespace plain

#endif
