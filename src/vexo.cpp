// Panel calibration: measurement tables, gray tracking, white balance, the two recipes that make correction LUTs, the
// adjustment of single gray points and the dumps of gray ramps.
// Colours are single precision; reading a table between levels goes through the shared blend.
#include "vexo.h"

#include <cmath>
#include <cstdio>

#include "base/clones.h"
#include "base/exact.h"
#include "base/locale.h"
#include "base/search.h"
#include "vexo-cs.h"
#include "vexo-curve.h"
#include "vexo-rows.h"
#include "vexo-tables.h"
#include "vexo-xyY.h"

using vexo_internal::blend;
using vexo_internal::drives_of_light;
using vexo_internal::first_reached;
using vexo_internal::FirstReach;
using vexo_internal::kRows;
using vexo_internal::light_of_inputs;
using vexo_internal::mix_weighted;
using vexo_internal::rows_of;
using vexo_internal::table_at;
using vexo_internal::valid_xyY;
using vexo_internal::weight;

namespace {

const int kLevels = 1024; // table levels of a channel
const int kTop = kLevels - 1;
const float kTopF = 1023.0F;

const int kWhiteRange = 32; // levels that one pass of the peak white search goes down
const int kShades = kWhiteRange + 1;
const float kFarthest = 2.0F;   // no colour counts unless it is nearer to the target
const float kRedStep = 0.0625F; // gray tracking searches red in sixteenths of a level
const int kToe = 16;            // entries below this one form the linear toe

using Column = float[kLevels];
using Table = Column[3]; // one channel: x, y, relative Y (or X, Y, Z on the way there)

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

// XYZ tables to xyY above black; maxY keeps the luminance of each channel's top, to which the tables are then scaled.
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

int vexo_data_lcnr_generate(vexo *panel, vexo_lcnr *lcnr) {
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

// Absolute XYZ above black of every level of a channel.
void absolute_XYZ(Table &XYZ, const Table &xyY, float maxY) {
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
int vexo_data_regenerate(vexo *panel, vexo_lut *lut) {
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

vexo_vector data_index_vector(const Column *T, float idx) {
  return vexo_vector{{table_at(T[0], kTop, idx), table_at(T[1], kTop, idx), table_at(T[2], kTop, idx)}};
}

vexo_vector entry(const Column *T, int level) { return vexo_vector{{T[0][level], T[1][level], T[2][level]}}; }

// Absolute xyY of channel c at a fractional level.
vexo_vector channel_xyY(const vexo *panel, int c, float level) {
  vexo_vector v = data_index_vector(panel->data[c], level);
  v.d[2] *= panel->maxY[c];
  return v;
}

// Squared distance in the chromaticity diagram, differences in x counting twice.
float vexo_color_distance(const vexo_vector *c1, const vexo_vector *c2) {
  const float dx = 2.0F * (c1->d[0] - c2->d[0]);
  const float dy = c1->d[1] - c2->d[1];
  return dx * dx + dy * dy;
}

// Entries 0 to t - 1 become a straight line from 0 towards entry t.
void vexo_lut_linearity(vexo_lut *lut, int t) {
  for (int c = 0; c < 3; c++) {
    const float slope = lut[c].d[t] * (1.0F / static_cast<float>(t));
    for (int n = 0; n < t; n++) {
      lut[c].d[n] = slope * static_cast<float>(n);
    }
  }
}

// Gray tracking and the recipes work on LUTs of one entry a table level.
bool level_sized(const vexo_lut *lut) {
  if (lut[0].size == kLevels && lut[1].size == kLevels && lut[2].size == kLevels) {
    return true;
  }
  fputs("vexo_gray_tracking: LUT size error.\n", stderr);
  return false;
}

// The levels of the blue channel for reading at a luminance: X and Z of each, and where the luminance is first reached.
struct BlueLevels {
  explicit BlueLevels(const Table &table) : T(table), search(table[2] + 1, kTop) {
    for (int k = 0; k < kLevels; k++) {
      const float S = T[2][k] / T[1][k];
      X[k] = S * T[0][k];
      Z[k] = S * (1.0F - T[0][k] - T[1][k]);
      dark = dark || (k > 0 && T[1][k] == 0.0F);
    }
  }

  const Table &T;
  float X[kLevels];
  float Z[kLevels];
  bool dark = false; // a level above black has no chromaticity
  FirstReach search;
};

// What the candidates of one gray level share.
struct GrayLevel {
  vexo_vector green; // absolute
  float Y;           // luminance to keep, absolute
  float blue_above;  // blue stays below this level
  float maxY_red;
  float maxY_blue;
  vexo_vector target;
};

// Candidates of gray tracking side by side, in arrays that vectorise: all in steps of red from the first down.
const int kLanes = FirstReach::kTogether;
struct Candidates {
  float red[kLanes]; // level
  float x[kLanes];   // colour of red, absolute
  float y[kLanes];
  float Y[kLanes];
  float need[kLanes];     // relative luminance of blue
  int below[kLanes];      // level below the first that reaches it
  int apart[kLanes];      // it is not between two levels that have a chromaticity
  float blue[kLanes];     // level
  int ends[kLanes];       // red is used up, blue too high
  int mixes[kLanes];      // red and green make a colour
  float distance[kLanes]; // of the mixture to the target
};

// A segment of a channel between two table levels.
struct Segment {
  Segment(const Table &T, int below) : level(static_cast<float>(below)) {
    for (int m = 0; m < 3; m++) {
      low[m] = T[m][below];
      high[m] = T[m][below + 1];
    }
  }
  float level; // the lower
  float low[3];
  float high[3];
};

// Reads red at kLanes levels from 0 <= first < 1023 down. These span less than a level, so that they lie in two
// segments of the table; negative ones read anything. Levels below 1024 are exact in sixteenths, so that the n-th is
// what n subtractions leave.
VEXO_VECTORISED void sample_red(Candidates *__restrict lane, const Table &T, const GrayLevel &shared, float first) {
  const GrayLevel gray = shared;
  const int level = first < kTopF ? static_cast<int>(first) : kTop - 1;
  const Segment upper(T, level);
  const Segment lower(T, level > 0 ? level - 1 : 0);
  for (int i = 0; i < kLanes; i++) {
    const float red = first - static_cast<float>(i) * kRedStep;
    const bool in_upper = red >= upper.level;
    const float t = red - (in_upper ? upper.level : lower.level);
    float v[3];
    for (int m = 0; m < 3; m++) {
      v[m] = blend(in_upper ? upper.low[m] : lower.low[m], in_upper ? upper.high[m] : lower.high[m], t);
    }
    lane->red[i] = red;
    lane->x[i] = v[0];
    lane->y[i] = v[1];
    lane->Y[i] = v[2] * gray.maxY_red;
    lane->need[i] = (gray.Y - lane->Y[i] - gray.green.d[2]) / gray.maxY_blue;
  }
}

// Tells the lanes apart whose need is not between two levels that have a chromaticity.
VEXO_VECTORISED void set_apart(Candidates *__restrict lane, const BlueLevels &levels) {
  const float bottom = levels.T[2][0];
  const float top = levels.T[2][kTop];
  const int lowest = levels.dark ? kTop : 1;
  for (int i = 0; i < kLanes; i++) {
    const int below = lane->below[i];
    const bool between = (lane->need[i] > bottom) & !(top <= lane->need[i]) & (below >= lowest) & (below < kTop);
    lane->apart[i] = !between;
    lane->below[i] = between ? below : 0;
  }
}

// Mixes each red with green and with the blue between levels below and below + 1. Lanes do not depend on each other;
// what comes of one apart means nothing.
VEXO_VECTORISED void mix_lanes(Candidates *__restrict lane, const BlueLevels &levels, const GrayLevel &shared) {
  const GrayLevel gray = shared;
  const float *__restrict Y = levels.T[2];
  const float *__restrict X = levels.X;
  const float *__restrict Z = levels.Z;
  const float Sg = weight(gray.green);
  const bool green_valid = valid_xyY(gray.green);
  for (int i = 0; i < kLanes; i++) {
    const int j = lane->below[i];
    const float need = lane->need[i];
    const float blue = (need - Y[j]) / (Y[j + 1] - Y[j]) + static_cast<float>(j);
    const float t = blue - static_cast<float>(j);
    const float need_X = blend(X[j], X[j + 1], t);
    const float need_Z = blend(Z[j], Z[j + 1], t);
    const float sum = need_X + need + need_Z;
    const bool lit = sum > 0.0F; // else no chromaticity: XYZ stays
    const float x = need_X / sum;
    const float y = need / sum;
    const vexo_vector vb = {{lit ? x : need_X, lit ? y : need, (lit ? need : need_Z) * gray.maxY_blue}};
    const vexo_vector vr = {{lane->x[i], lane->y[i], lane->Y[i]}};
    const vexo_vector pair = mix_weighted(vr, weight(vr), gray.green, Sg);
    const vexo_vector mixed = mix_weighted(pair, weight(pair), vb, weight(vb));
    const bool mixes = (static_cast<int>(valid_xyY(pair)) & static_cast<int>(valid_xyY(vb))) != 0;
    const vexo_vector shown = {{mixes ? mixed.d[0] : 0.0F, mixes ? mixed.d[1] : 0.0F, 0.0F}};
    lane->blue[i] = blue;
    lane->ends[i] = !(lane->red[i] >= 0.0F) | (blue < 0.0F) | (gray.blue_above <= blue);
    lane->mixes[i] = green_valid & valid_xyY(vr);
    lane->distance[i] = vexo_color_distance(&gray.target, &shown);
  }
}

// The same for one lane apart.
void mix_lane(Candidates *lane, int i, vexo *panel, GrayLevel gray) {
  vexo_vector vr = {{lane->x[i], lane->y[i], lane->Y[i]}};
  vexo_vector vb = {};
  vexo_vector mixed = {};
  const float blue = vexo_data_Y_xyY(&vb, panel->data[2], lane->need[i]);
  vb.d[2] *= gray.maxY_blue;
  vexo_xyY_mix_3(&vr, &gray.green, &vb, &mixed);
  lane->blue[i] = blue;
  lane->ends[i] = !(lane->red[i] >= 0.0F) || blue < 0.0F || gray.blue_above <= blue; // below 0: no blue can be told
  lane->mixes[i] = valid_xyY(vr) && valid_xyY(gray.green);
  lane->distance[i] = vexo_color_distance(&gray.target, &mixed);
}

// The nearest candidate so far, and the distance of the last mixture: one that fails leaves it as it was.
struct Match {
  float distance;
  float red;
  float blue;
  float shown;
};

// Judges the candidates from first down in their order; false when there is no further one.
bool judge_lanes(Match *match, float first, BlueLevels *levels, vexo *panel, const GrayLevel &gray) {
  Candidates lane;
  sample_red(&lane, panel->data[0], gray, first);
  levels->search.first_of_each(lane.need, lane.below);
  set_apart(&lane, *levels);
  mix_lanes(&lane, *levels, gray);
  for (int i = 0; i < kLanes; i++) {
    if (lane.apart[i] != 0) {
      mix_lane(&lane, i, panel, gray);
    }
    if (lane.ends[i] != 0) {
      return false;
    }
    match->shown = lane.mixes[i] != 0 ? lane.distance[i] : match->shown;
    if (match->shown < match->distance) {
      *match = Match{match->shown, lane.red[i], lane.blue[i], match->shown};
    }
  }
  return true;
}

// Searches the red and blue of gray level ng that come nearest to the target at the luminance that the LUTs give the
// level, below the entries of the level above. Takes and returns the distance of the last mixture.
float track_level(vexo_lut *lut, vexo *panel, const vexo_vector &target, int ng, BlueLevels *levels, float shown) {
  float &red_entry = lut[0].d[ng];
  float &blue_entry = lut[2].d[ng];
  const float red_above = lut[0].d[ng + 1] * kTopF;
  const float blue_above = lut[2].d[ng + 1] * kTopF;
  const float Yr = table_at(panel->data[0][2], kTop, red_entry * kTopF);
  const float Yb = table_at(panel->data[2][2], kTop, blue_entry * kTopF);
  const vexo_vector green = channel_xyY(panel, 1, lut[1].d[ng] * kTopF);
  const float Y = green.d[2] + Yr * panel->maxY[0] + Yb * panel->maxY[2];
  const GrayLevel gray = {green, Y, blue_above, panel->maxY[0], panel->maxY[2], target};

  Match match = {kFarthest, 0.0F, 0.0F, shown};
  // Entries are at most 1, drives of a table that begins at 0 or gains: a level has 2046 steps at most.
  float first = red_above - kRedStep;
  while (first >= 0.0F && judge_lanes(&match, first, levels, panel, gray)) {
    first -= kRedStep * static_cast<float>(kLanes);
  }
  if (match.distance < kFarthest) {
    red_entry = match.red / kTopF;
    blue_entry = match.blue / kTopF;
  }
  return match.shown;
}

int vexo_gray_tracking(vexo_lut *lut, vexo *panel, vexo_vector *wb) {
  if (!level_sized(lut)) {
    return -1;
  }
  vexo_vector target = *wb;
  if (vexo_XYZ_xyY(&target) != 0) {
    return -1;
  }
  const vexo_vector black = {};
  float shown = vexo_color_distance(&target, &black);
  BlueLevels levels(panel->data[2]);
  for (int ng = kLevels - 2; ng >= kToe; ng--) {
    shown = track_level(lut, panel, target, ng, &levels, shown);
  }
  vexo_lut_linearity(lut, kToe);
  return 0;
}

// The colours of one channel at the levels that a pass of the peak white search tries, from the highest down. Levels
// below 0 repeat level 0: what is tried again never comes nearer than before.
struct Shades {
  Shades(const vexo *panel, int c, int top) {
    for (int i = 0; i < kShades; i++) {
      level[i] = top > i ? top - i : 0;
      const vexo_vector v = channel_xyY(panel, c, static_cast<float>(level[i]));
      x[i] = v.d[0];
      y[i] = v.d[1];
      Y[i] = v.d[2];
      S[i] = weight(v);
      valid[i] = valid_xyY(v);
    }
  }
  vexo_vector color(int i) const { return vexo_vector{{x[i], y[i], Y[i]}}; }

  int level[kShades];
  float x[kShades];
  float y[kShades];
  float Y[kShades];
  float S[kShades];
  int valid[kShades];
};

// The distances of a mixture of red and green with each blue to ref; whether one is below best.
VEXO_VECTORISED bool mix_blues(float (&distance)[kShades], vexo_vector pair, const Shades &blue, vexo_vector ref,
                               float best) {
  const float S = weight(pair);
  const int valid = valid_xyY(pair);
  int nearer = 0;
  for (int i = 0; i < kShades; i++) {
    const vexo_vector mixed = mix_weighted(pair, S, blue.color(i), blue.S[i]);
    const bool mixes = (valid & blue.valid[i]) != 0;
    const vexo_vector shown = {{mixes ? mixed.d[0] : 0.0F, mixes ? mixed.d[1] : 0.0F, 0.0F}};
    distance[i] = vexo_color_distance(&shown, &ref);
    nearer |= distance[i] < best;
  }
  return nearer != 0;
}

// One pass of the peak white search: the candidates from level n down, in whole levels, highest red, green, blue first.
// Lowers best and moves m when one comes nearer to ref. Red and green that do not mix leave the prediction before them,
// which has been judged.
void search_white(const vexo *panel, const vexo_vector *ref, const int n[3], int m[3], float *best) {
  const Shades red(panel, 0, n[0]);
  const Shades green(panel, 1, n[1]);
  const Shades blue(panel, 2, n[2]);
  float distance[kShades];
  for (int r = 0; r < kShades; r++) {
    for (int g = 0; g < kShades; g++) {
      if (!red.valid[r] || !green.valid[g]) {
        continue;
      }
      const vexo_vector pair = mix_weighted(red.color(r), red.S[r], green.color(g), green.S[g]);
      if (!mix_blues(distance, pair, blue, *ref, *best)) {
        continue;
      }
      for (int b = 0; b < kShades; b++) {
        if (distance[b] < *best) {
          *best = distance[b];
          m[0] = red.level[r];
          m[1] = green.level[g];
          m[2] = blue.level[b];
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

// The first channel above its highest code is brought down onto it, the others in proportion.
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

// Half of a correction, in ratio.
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

static_assert(sizeof(vexo_lcnr) == 4 * (9 * 64 + 64 + 1), "part of the binary interface");
static_assert(sizeof(vexo) == sizeof(vexo_lcnr) + 4 * (9 * 1024 + 3), "part of the binary interface");

int vexo_internal::make_tables(vexo *panel) { return vexo_data_lcnr_generate(panel, &panel->lcnr); }

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
  if (T[2][kTop] <= luma) {
    *v = entry(T, kTop);
    return kTopF;
  }
  if (luma <= T[2][0]) {
    *v = entry(T, 0);
    return 0.0F;
  }
  const int j = first_reached(T[2] + 1, kTop, luma);
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
  vexo_XYZ_xyY(v);
  return idx;
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
  const float distance = vexo_color_distance(&full, ref);
  float best = distance < kFarthest ? distance : kFarthest;
  int n[3];
  int m[3] = {kTop, kTop, kTop};
  bool lower_face = true;
  while (lower_face) { // a further pass starts 32 levels lower in a channel and higher in none: 94 passes at most
    lower_face = false;
    for (int c = 0; c < 3; c++) {
      n[c] = m[c];
    }
    search_white(panel, ref, n, m, &best);
    for (int c = 0; c < 3; c++) {
      lower_face = lower_face || m[c] == n[c] - kWhiteRange;
    }
  }
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
  vexo_cs primaries;
  vexo_matrix to_rgb;
  if (vexo_cs_init_XYZ(&primaries, R, G, B, W, D) != 0 || vexo_matrix_invert(&to_rgb, &primaries.npm) != 0) {
    return -1;
  }
  vexo_matrix_transform(&to_rgb, rgb);
  vexo_vector_scale(rgb, level / W[1]);
  return 0;
}

int vexo_generate_lcnr_invert_lut(vexo_lut *lut, float data[3][3][1024], vexo_gamma *camera, vexo_gamma *system) {
  for (int c = 0; c < 3; c++) {
    if (c > 0 && lut[c].size == lut[0].size) {
      vexo_lut_set_data(&lut[c], lut[0].d); // the light asked for is the same
    } else if (lut[c].size >= 2) {
      light_of_inputs(&lut[c], camera, system);
    }
  }
  for (int c = 0; c < 3; c++) {
    const vexo_lut response = {kLevels, data[c][2]};
    if (lut[c].size >= 2) {
      drives_of_light(&lut[c], &response);
    }
  }
  return 0;
}

int vexo_generate_lut(vexo_lut *lut, vexo *panel, vexo_gamma *camera, vexo_gamma *system, vexo_vector *wt) {
  WorkingLuts work;
  if (!work.create() || vexo_internal::make_tables(panel) != 0 ||
      vexo_generate_lcnr_invert_lut(work.curve, panel->data, camera, system) != 0 ||
      vexo_lut_adjust_wb(work.balance, panel, wt) != 0) {
    return -1;
  }
  work.merge_into(lut);
  return vexo_gray_tracking(lut, panel, wt);
}

int vexo_data_alignment(vexo_lut *lut, vexo *panel, vexo_gamma *camera, vexo_gamma *system, vexo_vector *wb) {
  WorkingLuts work;
  if (!work.create()) {
    return -1;
  }
  if (vexo_lcnr_normalize(&panel->lcnr) != 0) {
    fputs("Warning: lcnr data not normalized\n", stderr);
  }
  if (vexo_internal::make_tables(panel) != 0 || vexo_lut_adjust_wb_2(work.balance, panel, wb) != 0 ||
      vexo_data_regenerate(panel, work.balance) != 0 ||
      vexo_generate_lcnr_invert_lut(work.curve, panel->data, camera, system) != 0 || !level_sized(lut) ||
      vexo_gray_tracking(work.curve, panel, wb) != 0) {
    return -1;
  }
  work.merge_into(lut);
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
  vexo_cs primaries;
  vexo_matrix to_rgb;
  if (vexo_cs_init_XYZ(&primaries, R, G, B, W, D) != 0 || vexo_matrix_invert(&to_rgb, &primaries.npm) != 0) {
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
  if (num < 1 || bits < 1 || bits > 30) {
    return 0.0F;
  }
  if (num == 1) {
    samples[0] = 0.0F;
    return 0.0F;
  }
  const float max_value = static_cast<float>(static_cast<double>(1 << bits) - 1.0);
  const float step = max_value / static_cast<float>(num - 1);
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
