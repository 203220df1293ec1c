// The plain forms of the searches that the library does in fewer steps: each candidate predicted and each table
// searched on its own, as the formulas prescribe. The tests compare the library's bits with these; the benchmarks time
// both.
#ifndef VEXO_TESTS_PLAIN_VEXO_PLAIN_H
#define VEXO_TESTS_PLAIN_VEXO_PLAIN_H

#include <algorithm>
#include <vector>

#include "vexo-cs.h"
#include "vexo-tables.h"
#include "vexo.h"

namespace plain {

using vexo_internal::channel_xyY;
using vexo_internal::color_distance;
using vexo_internal::kFarthest;
using vexo_internal::kLevels;
using vexo_internal::kTop;
using vexo_internal::kTopF;
using vexo_internal::table_at;

// Three LUTs of an entry per table level, at first the identity.
class Luts {
public:
  Luts() : d_(3 * kLevels) {
    for (int c = 0; c < 3; c++) {
      lut[c] = vexo_lut{kLevels, &d_[static_cast<size_t>(c) * kLevels]};
      vexo_lut_by_linear_gamma(&lut[c]);
    }
  }
  Luts(const Luts &) = delete;
  Luts &operator=(const Luts &) = delete;

  vexo_lut lut[3];

private:
  std::vector<float> d_;
};

inline void gamma_lut_invert(vexo_lut *lut, vexo_gamma *camera, vexo_gamma *system, vexo_lut *panel) {
  if (lut->size < 2 || panel->size < 2) {
    return;
  }
  const float step = static_cast<float>(1.0 / (static_cast<double>(lut->size) - 1.0));
  for (int i = 0; i < lut->size; i++) {
    const float scene = vexo_gamma_inverse(camera, static_cast<float>(i) * step);
    lut->d[i] = vexo_lut_inverse(panel, vexo_gamma_evaluate(system, scene));
  }
}

// mixed keeps the last mixture: one that fails leaves it as it was.
inline void track_level(vexo_lut *lut, vexo *panel, const vexo_vector &target, int ng, vexo_vector *mixed) {
  float &red_entry = lut[0].d[ng];
  float &blue_entry = lut[2].d[ng];
  const float red_above = lut[0].d[ng + 1] * kTopF;
  const float blue_above = lut[2].d[ng + 1] * kTopF;
  const float Yr = table_at(panel->data[0][2], kTop, red_entry * kTopF);
  const float Yb = table_at(panel->data[2][2], kTop, blue_entry * kTopF);
  vexo_vector vg = channel_xyY(panel, 1, lut[1].d[ng] * kTopF);
  const float Y = vg.d[2] + Yr * panel->maxY[0] + Yb * panel->maxY[2];

  float best = kFarthest;
  for (float red = red_above - 0.0625F; red >= 0.0F; red -= 0.0625F) {
    vexo_vector vr = channel_xyY(panel, 0, red);
    vexo_vector vb = {};
    const float need = (Y - vr.d[2] - vg.d[2]) / panel->maxY[2];
    const float blue = vexo_data_Y_xyY(&vb, panel->data[2], need);
    if (blue < 0.0F || blue_above <= blue) {
      break;
    }
    vb.d[2] *= panel->maxY[2];
    vexo_xyY_mix_3(&vr, &vg, &vb, mixed);
    const float distance = color_distance(target, *mixed);
    if (distance < best) {
      best = distance;
      red_entry = red / kTopF;
      blue_entry = blue / kTopF;
    }
  }
}

inline void gray_tracking(vexo_lut *lut, vexo *panel, vexo_vector target) {
  vexo_XYZ_xyY(&target);
  vexo_vector mixed = {};
  for (int ng = kTop - 1; ng >= 16; ng--) {
    track_level(lut, panel, target, ng, &mixed);
  }
  for (int c = 0; c < 3; c++) {
    for (int n = 0; n < 16; n++) {
      lut[c].d[n] = lut[c].d[16] * 0.0625F * static_cast<float>(n);
    }
  }
}

// One pass from level n down. mixed keeps the last prediction, as in track_level().
inline void search_white(vexo *panel, const vexo_vector &ref, const int n[3], int m[3], float *best,
                         vexo_vector *mixed) {
  for (int r = n[0]; r >= std::max(n[0] - 32, 0); r--) {
    for (int g = n[1]; g >= std::max(n[1] - 32, 0); g--) {
      for (int b = n[2]; b >= std::max(n[2] - 32, 0); b--) {
        vexo_get_xyY(mixed, panel, static_cast<float>(r), static_cast<float>(g), static_cast<float>(b));
        const float distance = color_distance(*mixed, ref);
        if (distance < *best) {
          *best = distance;
          m[0] = r;
          m[1] = g;
          m[2] = b;
        }
      }
    }
  }
}

inline int peak_white_adjust(vexo_vector *v, vexo *panel, vexo_vector *ref) {
  float best = kFarthest;
  vexo_vector mixed = {};
  int n[3];
  int m[3] = {kTop, kTop, kTop};
  do {
    std::copy(m, m + 3, n);
    search_white(panel, *ref, n, m, &best, &mixed);
  } while (m[0] == n[0] - 32 || m[1] == n[1] - 32 || m[2] == n[2] - 32);
  for (int c = 0; c < 3; c++) {
    v->d[c] = static_cast<float>(static_cast<double>(m[c]) / 1023.0);
  }
  return 0;
}

// The curve-following drives of the tables.
inline void invert_tables(Luts *curve, vexo *panel, vexo_gamma *camera, vexo_gamma *system) {
  for (int c = 0; c < 3; c++) {
    vexo_lut response = {kLevels, panel->data[c][2]};
    gamma_lut_invert(&curve->lut[c], camera, system, &response);
  }
}

// The direct recipe for a context that holds its tables.
inline int generate_lut(vexo_lut *lut, vexo *panel, vexo_gamma *camera, vexo_gamma *system, vexo_vector *white) {
  Luts curve;
  Luts balance;
  vexo_vector gain;
  invert_tables(&curve, panel, camera, system);
  peak_white_adjust(&gain, panel, white);
  for (int c = 0; c < 3; c++) {
    for (int i = 0; i < kLevels; i++) {
      balance.lut[c].d[i] *= gain.d[c];
    }
    vexo_lut_merge(&curve.lut[c], &balance.lut[c], &lut[c]);
  }
  gray_tracking(lut, panel, *white);
  return 0;
}

// The aligned recipe for a context that holds the tables as seen through the balance; bare holds those of the panel.
inline int data_alignment(vexo_lut *lut, vexo *panel, vexo *bare, vexo_gamma *camera, vexo_gamma *system,
                          vexo_vector *white) {
  Luts curve;
  Luts balance;
  vexo_lut_adjust_wb_2(balance.lut, bare, white);
  invert_tables(&curve, panel, camera, system);
  gray_tracking(curve.lut, panel, *white);
  for (int c = 0; c < 3; c++) {
    vexo_lut_merge(&curve.lut[c], &balance.lut[c], &lut[c]);
  }
  return 0;
}

} // namespace plain

#endif
