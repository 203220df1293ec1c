// The plain forms of the calibration and of the one-dimensional LUT inversion: each step as its formula prescribes it,
// in the prescribed order, every table searched entry by entry. The library computes the same bits in fewer steps; the
// tests compare it with these, the benchmarks time it beside them.
#ifndef VEXO_TESTS_PLAIN_VEXO_PLAIN_H
#define VEXO_TESTS_PLAIN_VEXO_PLAIN_H

#include <cmath>
#include <vector>

#include "base/exact.h"
#include "vexo.h"

namespace plain {

const int kRows = 64;
const int kLevels = 1024;
const int kTop = kLevels - 1;
const float kTopF = 1023.0F;

const int kWhiteRange = 32;
const float kFarthest = 2.0F;
const float kRedStep = 0.0625F;
const int kToe = 16;

using Column = float[kLevels];
using Table = Column[3];

using vexo_internal::blend;
using vexo_internal::table_at;

inline bool xyY_valid(const vexo_vector *xyY) {
  const auto &d = xyY->d;
  return d[0] >= 0.0F && d[0] < 1.0F && d[1] >= 0.0F && d[1] < 1.0F && d[2] >= 0.0F;
}

inline int XYZ_xyY(vexo_vector *XYZ) {
  const float sum = XYZ->d[0] + XYZ->d[1] + XYZ->d[2];
  if (!(sum > 0.0F)) {
    return -1;
  }
  *XYZ = vexo_vector{{XYZ->d[0] / sum, XYZ->d[1] / sum, XYZ->d[1]}};
  return 0;
}

inline int XYZ_xyY_array(int size, float **XYZ) {
  if (size < 1) {
    return -1;
  }
  vexo_vector black = {{XYZ[0][0], XYZ[1][0], XYZ[2][0]}};
  XYZ[0][0] = XYZ[1][0] = XYZ[2][0] = 0.0F;
  for (int i = 1; i < size; i++) {
    vexo_vector v = {{XYZ[0][i], XYZ[1][i], XYZ[2][i]}};
    for (int m = 0; m < 3; m++) {
      v.d[m] -= black.d[m];
    }
    if (XYZ_xyY(&v) != 0) {
      return -1;
    }
    for (int m = 0; m < 3; m++) {
      XYZ[m][i] = v.d[m];
    }
  }
  return 0;
}

inline int xyY_XYZ(vexo_vector *xyY) {
  if (!xyY_valid(xyY)) {
    return -1;
  }
  const float x = xyY->d[0];
  const float y = xyY->d[1];
  const float Y = xyY->d[2];
  if (!(y > 0.0F)) {
    *xyY = vexo_vector{};
    return 0;
  }
  const float t = Y / y;
  const float X = t * x;
  *xyY = vexo_vector{{X, Y, t - X - Y}};
  return 0;
}

inline int xyY_mix(vexo_vector *xyY1, vexo_vector *xyY2, vexo_vector *xyY) {
  if (!xyY_valid(xyY1) || !xyY_valid(xyY2)) {
    *xyY = vexo_vector{};
    return -1;
  }
  const auto &a = xyY1->d;
  const auto &b = xyY2->d;
  const float S2 = b[2] / b[1];
  const float S1 = a[2] / a[1];
  const float k = S2 / (S1 + S2);
  *xyY = vexo_vector{{a[0] + (b[0] - a[0]) * k, a[1] + (b[1] - a[1]) * k, a[2] + b[2]}};
  return 0;
}

inline int xyY_mix_3(vexo_vector *xyY1, vexo_vector *xyY2, vexo_vector *xyY3, vexo_vector *xyY) {
  vexo_vector mixed;
  if (xyY_mix(xyY1, xyY2, &mixed) != 0) {
    return -1;
  }
  return xyY_mix(&mixed, xyY3, xyY);
}

inline float XYZ_uniformity(float X, float Xn) {
  const float var = X / Xn;
  if (var < 0.008856452F) {
    return static_cast<float>(static_cast<double>(var * 7.787037F) + 0.13793103448275862);
  }
  return static_cast<float>(std::pow(static_cast<double>(var), 0.3333333333333333));
}

inline int XYZ_Lab(vexo_vector *XYZ, vexo_vector *REF) {
  const float Lstar = REF->d[1] <= 0.0F ? 100.0F : 116.0F * XYZ_uniformity(XYZ->d[1], REF->d[1]) - 16.0F;
  const float fX = XYZ_uniformity(XYZ->d[0], REF->d[0]);
  const float fY = XYZ_uniformity(XYZ->d[1], REF->d[1]);
  const float fZ = XYZ_uniformity(XYZ->d[2], REF->d[2]);
  *XYZ = vexo_vector{{Lstar, (fX - fY) * 500.0F, (fY - fZ) * 200.0F}};
  return 0;
}

inline float normalised_input(int i, int size) {
  return static_cast<float>(static_cast<double>(i) / (static_cast<double>(size) - 1.0));
}

// The normalised distance between the entries of a table of size entries.
inline float step_of(int size) { return static_cast<float>(1.0 / (static_cast<double>(size) - 1.0)); }

inline float lut_inverse(vexo_lut *lut, float y) {
  if (y <= 0.0F) {
    return 0.0F;
  }
  if (y >= 1.0F) {
    return 1.0F;
  }
  const float *d = lut->d;
  const int n = lut->size - 1;
  int i = 0;
  while (i < n && !(y <= d[i + 1])) {
    i++;
  }
  if (i >= n) {
    return 1.0F;
  }
  if (d[i + 1] == d[i]) { // only a flat start: any other segment begins below y
    return -1.0F;
  }
  const float t = (y - d[i]) / (d[i + 1] - d[i]);
  const double position =
      static_cast<double>(t * static_cast<float>(i + 1)) + (1.0 - static_cast<double>(t)) * static_cast<double>(i);
  return static_cast<float>(position / static_cast<double>(n));
}

inline void lut_merge(vexo_lut *src0, vexo_lut *src1, vexo_lut *dst) {
  if (src0->size < 2 || src1->size < 2 || dst->size < 2) {
    return;
  }
  const float src0_step = step_of(src0->size);
  const float src1_step = step_of(src1->size);
  const float dst_step = step_of(dst->size);
  for (int i = 0; i < dst->size; i++) {
    const float y = table_at(src0->d, src0->size - 1, static_cast<float>(i) * dst_step / src0_step);
    dst->d[i] = table_at(src1->d, src1->size - 1, y / src1_step);
  }
}

inline void interpolate_linear(int num, int *nx, float *ny, float *lut) {
  if (num < 1) {
    return;
  }
  for (int k = 0; k + 1 < num; k++) {
    const int length = nx[k + 1] - nx[k];
    const float step = length > 0 ? (ny[k + 1] - ny[k]) / static_cast<float>(length) : 0.0F;
    for (int m = 0; m < length; m++) {
      lut[nx[k] + m] = ny[k] + static_cast<float>(m) * step;
    }
  }
  lut[nx[num - 1]] = ny[num - 1];
}

inline void gamma_lut_invert(vexo_lut *lut, vexo_gamma *camera, vexo_gamma *system, vexo_lut *panel) {
  if (lut->size < 2 || panel->size < 2) {
    return;
  }
  const float lut_step = step_of(lut->size);
  for (int i = 0; i < lut->size; i++) {
    const float scene = vexo_gamma_inverse(camera, static_cast<float>(i) * lut_step);
    lut->d[i] = lut_inverse(panel, vexo_gamma_evaluate(system, scene));
  }
}

// The measurements make tables when at least two rows rise from level 0 and every value is finite.
inline bool usable(const vexo_lcnr *lcnr) {
  if (lcnr->num < 2 || lcnr->num > kRows || lcnr->sample[0] != 0.0F) {
    return false;
  }
  for (int i = 0; i < lcnr->num; i++) {
    if (!std::isfinite(lcnr->sample[i]) || (i > 0 && !(lcnr->sample[i] > lcnr->sample[i - 1]))) {
      return false;
    }
    for (const auto &channel : lcnr->data) {
      for (const auto &component : channel) {
        if (!std::isfinite(component[i])) {
          return false;
        }
      }
    }
  }
  return std::isfinite(kTopF / lcnr->sample[lcnr->num - 1]);
}

// XYZ tables to xyY above black; maxY keeps the luminance of each channel's top, to which the tables are then scaled.
inline int make_relative(vexo *panel) {
  for (int c = 0; c < 3; c++) {
    float *columns[3] = {panel->data[c][0], panel->data[c][1], panel->data[c][2]};
    if (XYZ_xyY_array(kLevels, columns) != 0) {
      return -1;
    }
    panel->maxY[c] = panel->data[c][2][kTop];
  }
  for (int c = 0; c < 3; c++) {
    for (float &Y : panel->data[c][2]) {
      Y /= panel->maxY[c];
    }
  }
  return 0;
}

inline int data_lcnr_generate(vexo *panel, vexo_lcnr *lcnr) {
  if (!usable(lcnr)) {
    return -1;
  }
  const float sample_scale = kTopF / lcnr->sample[lcnr->num - 1];
  int levels[kRows];
  for (int i = 0; i < lcnr->num; i++) {
    levels[i] = static_cast<int>(std::lround(lcnr->sample[i] * sample_scale));
  }
  for (int c = 0; c < 3; c++) {
    for (int m = 0; m < 3; m++) {
      interpolate_linear(lcnr->num, levels, lcnr->data[c][m], panel->data[c][m]);
    }
  }
  return make_relative(panel);
}

// Absolute XYZ above black of every level of a channel.
inline void absolute_XYZ(Table &XYZ, const Table &xyY, float maxY) {
  for (int k = 0; k < kLevels; k++) {
    const float x = xyY[0][k];
    const float y = xyY[1][k];
    if (y == 0.0F) {
      XYZ[0][k] = XYZ[1][k] = XYZ[2][k] = 0.0F;
      continue;
    }
    const float S = maxY * xyY[2][k] / y;
    const float X = x * S;
    const float Y = y * S;
    const float Z = S - X - Y;
    XYZ[0][k] = X;
    XYZ[1][k] = Y;
    XYZ[2][k] = Z < 0.0F ? 0.0F : Z;
  }
}

// Rebuilds the tables as the panel would measure through the LUTs.
inline int data_regenerate(vexo *panel, vexo_lut *lut) {
  for (int c = 0; c < 3; c++) {
    Table XYZ;
    absolute_XYZ(XYZ, panel->data[c], panel->maxY[c]);
    for (int k = 0; k < kLevels; k++) {
      const float level = lut[c].d[k] * kTopF;
      for (int m = 0; m < 3; m++) {
        panel->data[c][m][k] = table_at(XYZ[m], kTop, level);
      }
    }
  }
  return make_relative(panel);
}

inline vexo_vector data_index_vector(const Column *T, float idx) {
  return vexo_vector{{table_at(T[0], kTop, idx), table_at(T[1], kTop, idx), table_at(T[2], kTop, idx)}};
}

inline vexo_vector entry(const Column *T, int level) { return vexo_vector{{T[0][level], T[1][level], T[2][level]}}; }

// Absolute xyY of channel c at a fractional level.
inline vexo_vector channel_xyY(const vexo *panel, int c, float level) {
  vexo_vector v = data_index_vector(panel->data[c], level);
  v.d[2] *= panel->maxY[c];
  return v;
}

// Squared distance in the chromaticity diagram, differences in x counting twice.
inline float color_distance(const vexo_vector *c1, const vexo_vector *c2) {
  const float dx = 2.0F * (c1->d[0] - c2->d[0]);
  const float dy = c1->d[1] - c2->d[1];
  return dx * dx + dy * dy;
}

// Entries 0 to t - 1 become a straight line from 0 towards entry t.
inline void lut_linearity(vexo_lut *lut, int t) {
  for (int c = 0; c < 3; c++) {
    const float slope = lut[c].d[t] * (1.0F / static_cast<float>(t));
    for (int n = 0; n < t; n++) {
      lut[c].d[n] = slope * static_cast<float>(n);
    }
  }
}

inline float data_Y_xyY(vexo_vector *v, float data[3][1024], float luma) {
  const Column *T = data;
  if (T[2][kTop] <= luma) {
    *v = entry(T, kTop);
    return kTopF;
  }
  if (luma <= T[2][0]) {
    *v = entry(T, 0);
    return 0.0F;
  }
  int j = 0;
  while (j < kTop && !(luma <= T[2][j + 1])) {
    j++;
  }
  if (j == kTop) {
    return -1.0F;
  }
  const float idx = (luma - T[2][j]) / (T[2][j + 1] - T[2][j]) + static_cast<float>(j);
  if (T[1][j] == 0.0F || T[1][j + 1] == 0.0F) {
    *v = entry(T, j);
    return idx;
  }
  float X[2];
  float Z[2];
  for (int side = 0; side < 2; side++) {
    const vexo_vector xyY = entry(T, j + side);
    const float S = xyY.d[2] / xyY.d[1];
    X[side] = S * xyY.d[0];
    Z[side] = S * (1.0F - xyY.d[0] - xyY.d[1]);
  }
  const float f = idx - static_cast<float>(j);
  *v = vexo_vector{{blend(X[0], X[1], f), luma, blend(Z[0], Z[1], f)}};
  XYZ_xyY(v);
  return idx;
}

// Searches the red and blue of gray level ng that come nearest to the target at the luminance that the LUTs give the
// level, below the entries of the level above. mixed keeps the last mixture: one that fails leaves it as it was.
inline void track_level(vexo_lut *lut, vexo *panel, const vexo_vector *target, int ng, vexo_vector *mixed) {
  float &red_entry = lut[0].d[ng];
  float &blue_entry = lut[2].d[ng];
  const float red_above = lut[0].d[ng + 1] * kTopF;
  const float blue_above = lut[2].d[ng + 1] * kTopF;
  const float Yr = table_at(panel->data[0][2], kTop, red_entry * kTopF);
  const float Yb = table_at(panel->data[2][2], kTop, blue_entry * kTopF);
  vexo_vector vg = channel_xyY(panel, 1, lut[1].d[ng] * kTopF);
  const float Ytot = vg.d[2] + Yr * panel->maxY[0] + Yb * panel->maxY[2];

  float best = kFarthest;
  for (float red = red_above - kRedStep; red >= 0.0F; red -= kRedStep) {
    vexo_vector vr = channel_xyY(panel, 0, red);
    vexo_vector vb = {};
    const float need = (Ytot - vr.d[2] - vg.d[2]) / panel->maxY[2];
    const float blue = data_Y_xyY(&vb, panel->data[2], need);
    if (blue < 0.0F || blue_above <= blue) { // below 0: no blue can be told
      break;
    }
    vb.d[2] *= panel->maxY[2];
    xyY_mix_3(&vr, &vg, &vb, mixed);
    const float distance = color_distance(target, mixed);
    if (distance < best) {
      best = distance;
      red_entry = red / kTopF;
      blue_entry = blue / kTopF;
    }
  }
}

inline int gray_tracking(vexo_lut *lut, vexo *panel, vexo_vector *wb) {
  vexo_vector target = *wb;
  if (XYZ_xyY(&target) != 0) {
    return -1;
  }
  vexo_vector mixed = {};
  for (int ng = kLevels - 2; ng >= kToe; ng--) {
    track_level(lut, panel, &target, ng, &mixed);
  }
  lut_linearity(lut, kToe);
  return 0;
}

inline int get_xyY(vexo_vector *v, vexo *panel, float r, float g, float b) {
  vexo_vector vr = channel_xyY(panel, 0, r);
  vexo_vector vg = channel_xyY(panel, 1, g);
  vexo_vector vb = channel_xyY(panel, 2, b);
  xyY_mix_3(&vr, &vg, &vb, v);
  return 0;
}

// One pass of the peak white search: the candidates from level n down, in whole levels, highest red, green, blue first.
// Lowers best and moves m when one comes nearer to ref. mixed keeps the last prediction, as in track_level().
inline void search_white(vexo *panel, vexo_vector *ref, const int n[3], int m[3], float *best, vexo_vector *mixed) {
  for (int r = n[0]; r >= n[0] - kWhiteRange && r >= 0; r--) {
    for (int g = n[1]; g >= n[1] - kWhiteRange && g >= 0; g--) {
      for (int b = n[2]; b >= n[2] - kWhiteRange && b >= 0; b--) {
        get_xyY(mixed, panel, static_cast<float>(r), static_cast<float>(g), static_cast<float>(b));
        const float distance = color_distance(mixed, ref);
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
  bool lower_face = true;
  while (lower_face) { // each further pass starts lower, so the search ends
    lower_face = false;
    for (int c = 0; c < 3; c++) {
      n[c] = m[c];
    }
    search_white(panel, ref, n, m, &best, &mixed);
    for (int c = 0; c < 3; c++) {
      lower_face = lower_face || m[c] == n[c] - kWhiteRange;
    }
  }
  for (int c = 0; c < 3; c++) {
    v->d[c] = static_cast<float>(static_cast<double>(m[c]) / 1023.0);
  }
  return 0;
}

struct Ratios {
  float rg;
  float bg;
};
inline Ratios ratios(const vexo_vector &XYZ) { return Ratios{XYZ.d[0] / XYZ.d[1], XYZ.d[2] / XYZ.d[1]}; }

inline int lut_adjust_wb(vexo_lut *lut, vexo *panel, vexo_vector *ref) {
  vexo_vector gain;
  peak_white_adjust(&gain, panel, ref);
  for (int c = 0; c < 3; c++) {
    for (int i = 0; i < lut[0].size; i++) {
      lut[c].d[i] *= gain.d[c];
    }
  }
  return 0;
}

inline int lut_adjust_wb_2(vexo_lut *lut, vexo *panel, vexo_vector *ref) {
  vexo_vector gain;
  peak_white_adjust(&gain, panel, ref);
  vexo_vector white = {};
  get_xyY(&white, panel, kTopF, kTopF, kTopF);
  xyY_XYZ(&white);
  const Ratios full = ratios(white);
  for (int i = 0; i < lut[0].size; i++) {
    vexo_vector gray = {};
    const float level = static_cast<float>(i);
    get_xyY(&gray, panel, level, level, level);
    if (xyY_XYZ(&gray) == 0 && gray.d[1] != 0.0F) {
      const Ratios here = ratios(gray);
      lut[0].d[i] *= full.rg / here.rg * gain.d[0];
      lut[1].d[i] *= gain.d[1];
      lut[2].d[i] *= full.bg / here.bg * gain.d[2];
    } else {
      lut[0].d[i] = lut[1].d[i] = lut[2].d[i] = 0.0F;
    }
  }
  return 0;
}

// Three LUTs of a table level's entries.
class Luts {
public:
  Luts() : d_(3 * kLevels) {
    for (int c = 0; c < 3; c++) {
      lut[c] = vexo_lut{kLevels, &d_[static_cast<size_t>(c) * kLevels]};
    }
  }
  Luts(const Luts &) = delete;
  Luts &operator=(const Luts &) = delete;

  vexo_lut lut[3];

private:
  std::vector<float> d_;
};

inline void make_ramps(Luts *luts) {
  vexo_gamma linear = {0.0F, 0.0F, 1.0F, 0.0F};
  for (vexo_lut &lut : luts->lut) {
    for (int i = 0; i < kLevels; i++) {
      lut.d[i] = vexo_gamma_evaluate(&linear, normalised_input(i, kLevels));
    }
  }
}

inline void invert_lcnr(Luts *curve, vexo *panel, vexo_gamma *camera, vexo_gamma *system) {
  for (int c = 0; c < 3; c++) {
    vexo_lut response = {kLevels, panel->data[c][2]};
    gamma_lut_invert(&curve->lut[c], camera, system, &response);
  }
}

inline void merge(Luts *curve, Luts *balance, vexo_lut *lut) {
  for (int c = 0; c < 3; c++) {
    lut_merge(&curve->lut[c], &balance->lut[c], &lut[c]);
  }
}

inline int generate_lut(vexo_lut *lut, vexo *panel, vexo_gamma *camera, vexo_gamma *system, vexo_vector *wt) {
  Luts curve;
  Luts balance;
  make_ramps(&balance);
  if (data_lcnr_generate(panel, &panel->lcnr) != 0) {
    return -1;
  }
  invert_lcnr(&curve, panel, camera, system);
  lut_adjust_wb(balance.lut, panel, wt);
  merge(&curve, &balance, lut);
  return gray_tracking(lut, panel, wt);
}

inline int data_alignment(vexo_lut *lut, vexo *panel, vexo_gamma *camera, vexo_gamma *system, vexo_vector *wb) {
  Luts curve;
  Luts balance;
  make_ramps(&balance);
  vexo_lcnr_normalize(&panel->lcnr);
  if (data_lcnr_generate(panel, &panel->lcnr) != 0) {
    return -1;
  }
  lut_adjust_wb_2(balance.lut, panel, wb);
  if (data_regenerate(panel, balance.lut) != 0) {
    return -1;
  }
  invert_lcnr(&curve, panel, camera, system);
  if (gray_tracking(curve.lut, panel, wb) != 0) {
    return -1;
  }
  merge(&curve, &balance, lut);
  return 0;
}

} // namespace plain

#endif
