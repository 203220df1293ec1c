// Resampling of 3D LUTs in its plain form, entry by entry: what the library's faster form is checked against, and
// measured by.
#ifndef VEXO_TESTS_3DLUT_PLAIN_H
#define VEXO_TESTS_3DLUT_PLAIN_H

#include <cmath>

#include "vexo-3dlut.h"
#include "vexo-util.h"

namespace plain {

// Component c of the source at index m and fraction e of each axis. An axis on its last index drops out.
inline float interpolated(vexo_3dlut *src, const int (&m)[3], const float (&e)[3], int c) {
  const int last = vexo_3dlut_size(src) - 1;
  const auto at = [&](int b, int g, int r) { return vexo_3dlut_item(src, m[0] + b, m[1] + g, m[2] + r)->d[c]; };
  float red[2][2]; // along red, for each blue and green neighbour
  for (int b = 0; b < 2 && m[0] + b <= last; b++) {
    for (int g = 0; g < 2 && m[1] + g <= last; g++) {
      float v[2] = {at(b, g, 0), m[2] < last ? at(b, g, 1) : 0.0F};
      red[b][g] = m[2] < last ? linear_inter(e[2], v) : v[0];
    }
  }
  float green[2];
  for (int b = 0; b < 2 && m[0] + b <= last; b++) {
    green[b] = m[1] < last ? linear_inter(e[1], red[b]) : red[b][0];
  }
  return m[0] < last ? linear_inter(e[0], green) : green[0];
}

// dst = src resampled; both of more than one point an axis and of different sizes.
inline void resample(vexo_3dlut *dst, vexo_3dlut *src) {
  const int size = vexo_3dlut_size(dst);
  const float scale =
      static_cast<float>((static_cast<double>(size) - 1.0) / (static_cast<double>(vexo_3dlut_size(src)) - 1.0));
  for (int bi = 0; bi < size; bi++) {
    for (int gi = 0; gi < size; gi++) {
      for (int ri = 0; ri < size; ri++) {
        const int target[3] = {bi, gi, ri};
        int m[3];
        float e[3];
        for (int axis = 0; axis < 3; axis++) {
          const float position = static_cast<float>(target[axis]) / scale;
          m[axis] = static_cast<int>(std::floor(position));
          e[axis] = position - static_cast<float>(m[axis]);
        }
        vexo_vector v;
        for (int c = 0; c < 3; c++) {
          v.d[c] = interpolated(src, m, e, c);
        }
        vexo_3dlut_set_item(dst, &v, bi, gi, ri);
      }
    }
  }
}

} // namespace plain

#endif
