// Panel calibration: measurement tables, white balance with its peak white search, the two recipes that make correction
// LUTs. Gray tracking, their last step, is in vexo-gray.cpp.
// Colours are single precision. Tables are read between levels by the shared blend.
#include "vexo.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "base/exact.h"
#include "base/locale.h"
#include "base/search.h"
#include "vexo-cs.h"
#include "vexo-rows.h"
#include "vexo-tables.h"
#include "vexo-xyY.h"

using vexo_internal::channel_xyY;
using vexo_internal::color_distance;
using vexo_internal::Column;
using vexo_internal::first_reached;
using vexo_internal::kFarthest;
using vexo_internal::kLevels;
using vexo_internal::kRows;
using vexo_internal::kTop;
using vexo_internal::kTopF;
using vexo_internal::level_of_luminance;
using vexo_internal::level_sized;
using vexo_internal::level_XZ;
using vexo_internal::Light;
using vexo_internal::make_tables;
using vexo_internal::mix;
using vexo_internal::panel_rgb_matrix;
using vexo_internal::rows_of;
using vexo_internal::table_at;
using vexo_internal::track_gray;

namespace {

const int kWhiteRange = 32; // levels that one pass of the peak white search goes down

// The measurements make tables when at least two rows rise from level 0 and every value is finite.
bool usable(const vexo_lcnr *lcnr) {
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

// Turns XYZ tables into xyY above black. maxY becomes the luminance of each channel's top level, and the luminances in
// the tables become relative to it.
int make_relative(vexo *panel) {
  for (int c = 0; c < 3; c++) {
    float *columns[3] = {panel->data[c][0], panel->data[c][1], panel->data[c][2]};
    if (vexo_XYZ_xyY_array(kLevels, columns) != 0) {
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

// Absolute XYZ above black of every level of a channel.
void absolute_XYZ(Column *XYZ, const Column *xyY, float maxY) {
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
int remake_tables(vexo *panel, const vexo_lut *lut) {
  for (int c = 0; c < 3; c++) {
    Column XYZ[3];
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

// The lights of one channel that a pass of the peak white search tries: those of level top and the 32 below it, but of
// none below level 0.
struct Shades {
  Shades(const vexo *panel, int c, int top) : count(std::min(top, kWhiteRange) + 1) {
    for (int i = 0; i < count; i++) {
      light[i] = Light(channel_xyY(panel, c, static_cast<float>(top - i)));
    }
  }
  int count;
  Light light[kWhiteRange + 1];
};

// One pass of the peak white search:
//   Searched: whole levels, each channel from level n down to 32 below it.
//   Order: red outermost, then green, then blue, from the highest down; of equal candidates the first stands.
//   End: after the last candidate, 35937 at most.
//   Result: best is lowered and m moved when a mixture comes nearer to ref.
// Red and green that do not mix leave the prediction before them, which has been judged.
void search_white(const vexo *panel, const vexo_vector &ref, const int n[3], int m[3], float *best) {
  const Shades red(panel, 0, n[0]);
  const Shades green(panel, 1, n[1]);
  const Shades blue(panel, 2, n[2]);
  for (int r = 0; r < red.count; r++) {
    for (int g = 0; g < green.count; g++) {
      if (!red.light[r].valid || !green.light[g].valid) {
        continue;
      }
      const Light yellow(mix(red.light[r], green.light[g]));
      for (int b = 0; b < blue.count; b++) {
        const float distance = color_distance(mix(yellow, blue.light[b]), ref);
        if (distance < *best) {
          *best = distance;
          m[0] = n[0] - r;
          m[1] = n[1] - g;
          m[2] = n[2] - b;
        }
      }
    }
  }
}

// X/Y and Z/Y of an XYZ.
struct Ratios {
  float rg;
  float bg;
};
Ratios ratios(const vexo_vector &XYZ) { return Ratios{XYZ.d[0] / XYZ.d[1], XYZ.d[2] / XYZ.d[1]}; }

// The six LUTs that a recipe works on.
class WorkingLuts {
public:
  WorkingLuts() = default;
  ~WorkingLuts() {
    for (int c = 0; c < 3; c++) {
      vexo_lut_destroy(&curve[c]);
      vexo_lut_destroy(&balance[c]);
    }
  }
  WorkingLuts(const WorkingLuts &) = delete;
  WorkingLuts &operator=(const WorkingLuts &) = delete;

  bool create() {
    for (int c = 0; c < 3; c++) {
      if (vexo_lut_init(&curve[c], kLevels) != 0 || vexo_lut_init_with_gamma(&balance[c], kLevels, 1.0F) != 0) {
        return false;
      }
    }
    return true;
  }

  void merge_into(vexo_lut *lut) {
    for (int c = 0; c < 3; c++) {
      vexo_lut_merge(&curve[c], &balance[c], &lut[c]);
    }
  }

  vexo_lut curve[3] = {};
  vexo_lut balance[3] = {};
};

} // namespace

static_assert(sizeof(vexo_lcnr) == 4 * (9 * 64 + 64 + 1), "part of the binary interface");
static_assert(sizeof(vexo) == sizeof(vexo_lcnr) + 4 * (9 * 1024 + 3), "part of the binary interface");

int vexo_internal::make_tables(vexo *panel) {
  vexo_lcnr *lcnr = &panel->lcnr;
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
      vexo_interpolate_linear(lcnr->num, levels, lcnr->data[c][m], panel->data[c][m]);
    }
  }
  return make_relative(panel);
}

int vexo_internal::panel_rgb_matrix(vexo_matrix *m, const float *R, const float *G, const float *B, const float *W,
                                    const float *D) {
  vexo_cs panel;
  return vexo_cs_init_XYZ(&panel, R, G, B, W, D) != 0 ? -1 : vexo_matrix_invert(m, &panel.npm);
}

int vexo_lcnr_normalize(vexo_lcnr *lcnr) {
  int count = 0;
  for (auto &channel : lcnr->data) {
    for (auto &component : channel) {
      for (int i = rows_of(lcnr) - 1; i > 0; i--) {
        if (component[i - 1] > component[i]) {
          component[i - 1] = component[i];
          count++;
        }
      }
    }
  }
  return count;
}

void vexo_data_dump(FILE *f, float data[3][3][1024], char *prefix) {
  const vexo_internal::NumberLocale locale;
  if (prefix != nullptr) {
    fprintf(f, "%s VEXO(%p) DATA:\n", prefix, static_cast<void *>(data));
  } else {
    fprintf(f, "VEXO(%p) DATA:\n", static_cast<void *>(data));
  }
  for (int k = 0; k < kLevels; k++) {
    fprintf(f, "\t%d\t", k);
    for (int c = 0; c < 3; c++) {
      for (int m = 0; m < 3; m++) {
        fprintf(f, "\t%0.8lf", static_cast<double>(data[c][m][k]));
      }
    }
    fputc('\n', f);
  }
}

float vexo_data_Y_xyY(vexo_vector *v, float data[3][1024], float luma) {
  const Column *T = data;
  return level_of_luminance(
      v, T, luma, [T](float Y) { return 1 + first_reached(T[2] + 1, kTop, Y); },
      [T](int level) { return level_XZ(T, level); });
}

int vexo_get_xyY(vexo_vector *v, vexo *panel, float r, float g, float b) {
  vexo_vector vr = channel_xyY(panel, 0, r);
  vexo_vector vg = channel_xyY(panel, 1, g);
  vexo_vector vb = channel_xyY(panel, 2, b);
  vexo_xyY_mix_3(&vr, &vg, &vb, v);
  return 0;
}

int vexo_lut_get_xyY(vexo_vector *v, vexo *panel, vexo_lut *lut, float r, float g, float b) {
  return vexo_get_xyY(v, panel, vexo_lut_evaluate(&lut[0], r) * kTopF, vexo_lut_evaluate(&lut[1], g) * kTopF,
                      vexo_lut_evaluate(&lut[2], b) * kTopF);
}

int vexo_peak_white_adjust(vexo_vector *v, vexo *panel, vexo_vector *ref) {
  vexo_vector full = {}; // the first candidate: black where red and green do not mix
  vexo_get_xyY(&full, panel, kTopF, kTopF, kTopF);
  const float distance = color_distance(full, *ref);
  float best = distance < kFarthest ? distance : kFarthest;
  int n[3];
  int m[3] = {kTop, kTop, kTop};
  do { // a further pass begins 32 levels lower in one channel or more, and higher in none: at most 94 passes
    std::copy(m, m + 3, n);
    search_white(panel, *ref, n, m, &best);
  } while (m[0] == n[0] - kWhiteRange || m[1] == n[1] - kWhiteRange || m[2] == n[2] - kWhiteRange);
  for (int c = 0; c < 3; c++) {
    v->d[c] = static_cast<float>(static_cast<double>(m[c]) / 1023.0);
  }
  return 0;
}

int vexo_lut_adjust_wb(vexo_lut *lut, vexo *panel, vexo_vector *ref) {
  vexo_vector gain;
  if (vexo_peak_white_adjust(&gain, panel, ref) != 0) {
    return -1;
  }
  for (int c = 0; c < 3; c++) {
    for (int i = 0; i < lut[0].size; i++) {
      lut[c].d[i] *= gain.d[c];
    }
  }
  return 0;
}

int vexo_lut_adjust_wb_2(vexo_lut *lut, vexo *panel, vexo_vector *ref) {
  vexo_vector gain;
  if (vexo_peak_white_adjust(&gain, panel, ref) != 0) {
    return -1;
  }
  vexo_vector white = {};
  vexo_get_xyY(&white, panel, kTopF, kTopF, kTopF);
  vexo_xyY_XYZ(&white);
  const Ratios full = ratios(white);
  for (int i = 0; i < lut[0].size; i++) {
    vexo_vector gray = {};
    const float level = static_cast<float>(i);
    vexo_get_xyY(&gray, panel, level, level, level);
    if (vexo_xyY_XYZ(&gray) == 0 && gray.d[1] != 0.0F) {
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

int vexo_adjust_wb(const float *R, const float *G, const float *B, const float *W, const float *D, float level,
                   vexo_vector *rgb) {
  vexo_matrix to_rgb;
  if (panel_rgb_matrix(&to_rgb, R, G, B, W, D) != 0) {
    return -1;
  }
  vexo_matrix_transform(&to_rgb, rgb);
  vexo_vector_scale(rgb, level / W[1]);
  return 0;
}

int vexo_generate_lcnr_invert_lut(vexo_lut *lut, float data[3][3][1024], vexo_gamma *camera, vexo_gamma *system) {
  for (int c = 0; c < 3; c++) {
    vexo_lut response = {kLevels, data[c][2]};
    vexo_gamma_lut_invert(&lut[c], camera, system, &response);
  }
  return 0;
}

int vexo_generate_lut(vexo_lut *lut, vexo *panel, vexo_gamma *camera, vexo_gamma *system, vexo_vector *wt) {
  WorkingLuts work;
  if (!work.create() || make_tables(panel) != 0 ||
      vexo_generate_lcnr_invert_lut(work.curve, panel->data, camera, system) != 0 ||
      vexo_lut_adjust_wb(work.balance, panel, wt) != 0) {
    return -1;
  }
  work.merge_into(lut);
  return track_gray(lut, panel, *wt);
}

int vexo_data_alignment(vexo_lut *lut, vexo *panel, vexo_gamma *camera, vexo_gamma *system, vexo_vector *wb) {
  WorkingLuts work;
  if (!work.create()) {
    return -1;
  }
  if (vexo_lcnr_normalize(&panel->lcnr) != 0) {
    fputs("Warning: lcnr data not normalized\n", stderr);
  }
  if (make_tables(panel) != 0 || vexo_lut_adjust_wb_2(work.balance, panel, wb) != 0 ||
      remake_tables(panel, work.balance) != 0 ||
      vexo_generate_lcnr_invert_lut(work.curve, panel->data, camera, system) != 0 || !level_sized(lut) ||
      track_gray(work.curve, panel, *wb) != 0) {
    return -1;
  }
  work.merge_into(lut);
  return 0;
}
