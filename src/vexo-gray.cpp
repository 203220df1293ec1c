// Gray tracking, the adjustment of single gray points, the dumps of gray ramps. It calls the predictions of vexo.cpp.
// Colours are single precision. Tables are read between levels by the shared blend; powers and logarithms are double.
#include "vexo.h"

#include <cmath>
#include <cstdio>

#include "base/codes.h"
#include "base/exact.h"
#include "base/locale.h"
#include "vexo-cs.h"
#include "vexo-tables.h"
#include "vexo-xyY.h"

using vexo_internal::channel_xyY;
using vexo_internal::color_distance;
using vexo_internal::Column;
using vexo_internal::kFarthest;
using vexo_internal::kLevels;
using vexo_internal::kTop;
using vexo_internal::kTopF;
using vexo_internal::level_of_luminance;
using vexo_internal::level_XZ;
using vexo_internal::Light;
using vexo_internal::max_code;
using vexo_internal::mix;
using vexo_internal::panel_rgb_matrix;
using vexo_internal::table_at;
using vexo_internal::valid_depth;
using vexo_internal::XZ;

namespace {

const float kRedStep = 0.0625F; // gray tracking tries red in sixteenths of a level
const int kToe = 16;            // entries below this one form the linear toe

// The blue channel, read at many luminances as vexo_data_Y_xyY() reads it. X and Z of each level are computed once.
//
// The search for the first level that reaches a luminance:
//   Searched: the running maximum of the luminance. It never falls, and it reaches a value where the table first does.
//   Order: from the last answer upward, then downward: the candidates of gray tracking lie near each other.
//   End: the maximum reaches the luminance at this level, but not at the level below.
//   Result: that level, or kLevels when none reaches the luminance.
class BlueChannel {
public:
  explicit BlueChannel(const Column *T) : T_(T) {
    highest_[0] = NAN; // ends the walk downward: no luminance is at most NaN
    XZ_[0] = level_XZ(T, 0);
    for (int k = 1; k < kLevels; k++) {
      highest_[k] = std::fmax(highest_[k - 1], T[2][k]); // passes over NaN
      XZ_[k] = level_XZ(T, k);
    }
  }

  float level_of(vexo_vector *v, float luma) {
    return level_of_luminance(
        v, T_, luma, [this](float Y) { return first(Y); }, [this](int level) { return XZ_[level]; });
  }

private:
  int first(float luma) {
    while (at_ < kLevels && !(luma <= highest_[at_])) {
      at_++;
    }
    while (luma <= highest_[at_ - 1]) {
      at_--;
    }
    return at_;
  }

  const Column *T_;
  float highest_[kLevels];
  XZ XZ_[kLevels];
  int at_ = 1;
};

// Gray tracking of level ng:
//   Searched: levels of red, and for each the level of blue that keeps the luminance of the gray.
//   Order: from just below the red of the level above down, in steps of 1/16; of equal candidates the first stands.
//   End: blue would not stay below the blue of the level above, or red falls below level 0.
//   Result: the entries of red and blue whose mixture with green comes nearest to the target. Green stays.
// shown is the last mixture. A candidate whose red and green do not mix is judged by the mixture before it.
void track_level(vexo_lut *lut, const vexo *panel, const vexo_vector &target, int ng, BlueChannel *blue,
                 vexo_vector *shown) {
  float &red_entry = lut[0].d[ng];
  float &blue_entry = lut[2].d[ng];
  const float red_above = lut[0].d[ng + 1] * kTopF;
  const float blue_above = lut[2].d[ng + 1] * kTopF;
  const float Yr = table_at(panel->data[0][2], kTop, red_entry * kTopF);
  const float Yb = table_at(panel->data[2][2], kTop, blue_entry * kTopF);
  const Light green(channel_xyY(panel, 1, lut[1].d[ng] * kTopF));
  const float Y = green.xyY.d[2] + Yr * panel->maxY[0] + Yb * panel->maxY[2];

  float nearest = kFarthest;
  // An entry is a drive of at most 1: at most 16368 steps.
  for (float red = red_above - kRedStep; red >= 0.0F; red -= kRedStep) {
    const Light vr(channel_xyY(panel, 0, red));
    vexo_vector vb = {};
    const float level = blue->level_of(&vb, (Y - vr.xyY.d[2] - green.xyY.d[2]) / panel->maxY[2]);
    if (level < 0.0F || blue_above <= level) { // below 0: blue never reaches the luminance
      break;
    }
    vb.d[2] *= panel->maxY[2];
    if (vr.valid && green.valid) {
      *shown = mix(Light(mix(vr, green)), Light(vb));
    }
    const float distance = color_distance(target, *shown);
    if (distance < nearest) {
      nearest = distance;
      red_entry = red / kTopF;
      blue_entry = level / kTopF;
    }
  }
}

// Entries below kToe become a straight line from 0 towards entry kToe.
void make_toe_linear(vexo_lut *lut) {
  const float slope = lut->d[kToe] * (1.0F / static_cast<float>(kToe));
  for (int n = 0; n < kToe; n++) {
    lut->d[n] = slope * static_cast<float>(n);
  }
}

// Brings the first channel above its highest code down to that code, and the others in proportion.
void limit_codes(float *lut, const unsigned short *maxValue) {
  for (int c = 0; c < 3; c++) {
    const float limit = static_cast<float>(maxValue[c]);
    const float code = lut[c];
    if (code > limit) {
      for (int k = 0; k < 3; k++) {
        lut[k] = limit * lut[k] / code;
      }
      return;
    }
  }
}

// Half of a correction factor's way from 1.
float damped(float factor) { return (factor + 1.0F) * 0.5F; }

// Gray as XYZ at one level of all channels; black where the mixture fails.
vexo_vector gray_XYZ(vexo *panel, float level) {
  vexo_vector gray = {};
  vexo_get_xyY(&gray, panel, level, level, level);
  vexo_xyY_XYZ(&gray);
  return gray;
}

// Gray as xyY at one position of all LUTs; black where the mixture fails.
vexo_vector gray_through(vexo *panel, vexo_lut *lut, int position) {
  const float p = static_cast<float>(position);
  vexo_vector gray = {};
  vexo_lut_get_xyY(&gray, panel, lut, p, p, p);
  return gray;
}

// Prints the gamma of each position between black and the last, and returns the mean of those that show light.
float dump_step_gammas(FILE *f, vexo *panel, vexo_lut *lut, int last) {
  const float black = gray_through(panel, lut, 0).d[2];
  const float range = gray_through(panel, lut, last).d[2] - black;
  float sum = 0.0F;
  int count = 0;
  for (int i = 1; i < last; i++) {
    const float x = (gray_through(panel, lut, i).d[2] - black) / range;
    float g = 0.0F;
    if (x > 0.0F) {
      const float position = static_cast<float>(i) / static_cast<float>(last);
      g = static_cast<float>(std::log(static_cast<double>(x)) / std::log(static_cast<double>(position)));
      count++;
    }
    sum += g;
    fprintf(f, "[%4d] (%0.10lf)\n", i, static_cast<double>(g));
  }
  return count > 0 ? sum / static_cast<float>(count) : sum;
}

} // namespace

bool vexo_internal::level_sized(const vexo_lut *lut) {
  if (lut[0].size == kLevels && lut[1].size == kLevels && lut[2].size == kLevels) {
    return true;
  }
  fputs("vexo_gray_tracking: LUT size error.\n", stderr);
  return false;
}

int vexo_internal::track_gray(vexo_lut *lut, vexo *panel, const vexo_vector &white) {
  vexo_vector target = white;
  if (!level_sized(lut) || vexo_XYZ_xyY(&target) != 0) {
    return -1;
  }
  BlueChannel blue(panel->data[2]);
  vexo_vector shown = {};
  for (int ng = kTop - 1; ng >= kToe; ng--) {
    track_level(lut, panel, target, ng, &blue, &shown);
  }
  for (int c = 0; c < 3; c++) {
    make_toe_linear(&lut[c]);
  }
  return 0;
}

int vexo_panel_gray_point_adjust(float *gray, float *target, float *lut, unsigned short *maxValue) {
  vexo_vector m;
  for (int k = 0; k < 3; k++) {
    m.d[k] = target[k] * gray[1] / gray[k];
  }
  const float mid = vexo_vector_get_middle(&m);
  for (int k = 0; k < 3; k++) {
    lut[k] *= damped(m.d[k] / mid);
  }
  limit_codes(lut, maxValue);
  return 0;
}

int vexo_panel_cs_gray_point_adjust(const float *R, const float *G, const float *B, const float *W, const float *D,
                                    float *target, float *lut, unsigned short *maxValue) {
  vexo_matrix to_rgb;
  if (panel_rgb_matrix(&to_rgb, R, G, B, W, D) != 0) {
    return -1;
  }
  vexo_vector v;
  vexo_vector_set_xyz(&v, target);
  vexo_matrix_transform(&to_rgb, &v);
  if (!(v.d[0] > 0.0F && v.d[1] > 0.0F && v.d[2] > 0.0F)) {
    return -1;
  }
  vexo_vector_scale(&v, 1.0F / vexo_vector_get_middle(&v));
  for (int k = 0; k < 3; k++) {
    lut[k] *= damped(v.d[k]);
  }
  limit_codes(lut, maxValue);
  return 0;
}

float vexo_create_samples(float *samples, int num, int bits) {
  if (num < 1 || !valid_depth(bits)) {
    return 0.0F;
  }
  if (num == 1) {
    samples[0] = 0.0F;
    return 0.0F;
  }
  const float step = max_code(bits) / static_cast<float>(num - 1);
  for (int i = 0; i < num; i++) {
    samples[i] = static_cast<float>(i) * step;
  }
  return 0.0F;
}

float vexo_sample_2_luminance(float sample, float max_sample, float max_luma, float gamma) {
  const float ratio = sample / max_sample;
  return static_cast<float>(static_cast<double>(max_luma) *
                            std::pow(static_cast<double>(ratio), static_cast<double>(gamma)));
}

int vexo_dump_gray(FILE *f, vexo *panel) {
  vexo_vector white = gray_XYZ(panel, kTopF);
  for (int k = 0; k < kLevels; k++) {
    vexo_vector gray = gray_XYZ(panel, static_cast<float>(k));
    vexo_vector_div(&gray, &white);
    vexo_vector_dump(f, &gray, "VEXO_DUMP_GRAY");
  }
  return 0;
}

int vexo_lut_dump_gray(FILE *f, vexo *panel, vexo_lut *lut) {
  for (int i = 0; i < lut[0].size; i++) {
    vexo_vector gray = gray_through(panel, lut, i);
    vexo_vector XYZ = gray;
    vexo_xyY_XYZ(&XYZ);
    char label[128];
    snprintf(label, sizeof label, "[%4d](%5d)", i, vexo_XYZ_CCT(&XYZ));
    vexo_vector_dump(f, &gray, label);
  }
  return 0;
}

int vexo_lut_dump_gray_gamma(FILE *f, vexo *panel, vexo_lut *lut) {
  const vexo_internal::NumberLocale locale;
  const float average = lut[0].size > 2 ? dump_step_gammas(f, panel, lut, lut[0].size - 1) : 0.0F;
  fprintf(f, "gamma = %lf\n", static_cast<double>(average));
  return 0;
}
