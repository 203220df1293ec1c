// Panel calibration against simulated panels, whose true light is known in double precision, and the prescribed
// single-precision steps by bits.
#include "vexo.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "../examples/panel-model.h"
#include "bits.h"
#include "stderr.h"
#include "text.h"
#include "vexo-cs.h"

namespace {

using panel_model::Color;
using panel_model::desktop_panel;
using panel_model::light;
using panel_model::measure;
using panel_model::Panel;

const float kNaN = std::numeric_limits<float>::quiet_NaN();
const float kInf = std::numeric_limits<float>::infinity();
const float kUntouched = -7.0F;

using Tables = float[3][3][1024];
using Recipe = decltype(&vexo_generate_lut);

struct Luts {
  explicit Luts(int size = 1024, float value = kUntouched) {
    for (vexo_lut &l : lut) {
      vexo_lut_init(&l, size);
      std::fill(l.d, l.d + size, value);
    }
  }
  ~Luts() {
    for (vexo_lut &l : lut) {
      vexo_lut_destroy(&l);
    }
  }
  Luts(const Luts &) = delete;
  Luts &operator=(const Luts &) = delete;

  void make_ramps() {
    for (vexo_lut &l : lut) {
      vexo_lut_by_linear_gamma(&l);
    }
  }
  bool untouched() const {
    return all([](float x) { return x == kUntouched; });
  }
  template <typename Test> bool all(Test test) const {
    return std::all_of(lut, lut + 3, [&](const vexo_lut &l) { return std::all_of(l.d, l.d + l.size, test); });
  }

  vexo_lut lut[3];
};

bool same_bits(const Luts &a, const Luts &b) {
  return std::equal(a.lut, a.lut + 3, b.lut, [](const vexo_lut &x, const vexo_lut &y) {
    return std::memcmp(x.d, y.d, static_cast<size_t>(x.size) * sizeof(float)) == 0;
  });
}

bool same_bits(const vexo_vector &a, const vexo_vector &b) { return std::memcmp(&a, &b, sizeof a) == 0; }

vexo_vector white_of(double x, double y) {
  return vexo_vector{{static_cast<float>(x), static_cast<float>(y), static_cast<float>(1.0 - x - y)}};
}

vexo_gamma power(float g) { return vexo_gamma{0.0F, 0.0F, g, 0.0F}; }

struct Target {
  double x, y;
  vexo_gamma camera, system;
};

Target d65() { return Target{0.3127, 0.3290, power(1.0F), power(2.2F)}; }

int calibrate(Recipe recipe, vexo *context, Luts *out, Target target) {
  vexo_vector white = white_of(target.x, target.y);
  return recipe(out->lut, context, &target.camera, &target.system, &white);
}

std::unique_ptr<vexo> context_of(const vexo_lcnr &lcnr) {
  auto context = std::make_unique<vexo>();
  context->lcnr = lcnr;
  return context;
}

// A context whose tables describe the bare panel.
std::unique_ptr<vexo> generated(const vexo_lcnr &lcnr) {
  auto context = context_of(lcnr);
  Luts out;
  EXPECT_EQ(calibrate(vexo_generate_lut, context.get(), &out, d65()), 0);
  return context;
}

// CIE 1976 coordinates.
struct UV {
  double u, v;
};
double distance(UV a, UV b) { return std::hypot(a.u - b.u, a.v - b.v); }
UV uv(const Color &c) {
  const double sum = c[0] + 15.0 * c[1] + 3.0 * c[2];
  return UV{4.0 * c[0] / sum, 9.0 * c[1] / sum};
}
UV uv(const Target &t) { return uv(Color{t.x, t.y, 1.0 - t.x - t.y}); }

Color drive_of(const Luts &luts, int i) {
  return Color{static_cast<double>(luts.lut[0].d[i]), static_cast<double>(luts.lut[1].d[i]),
               static_cast<double>(luts.lut[2].d[i])};
}

Panel without_drift(Panel panel) {
  for (auto &channel : panel.channel) {
    channel.drift = {};
  }
  return panel;
}

// A panel of pure power laws, such as a cathode-ray tube.
Panel power_panel(double red, double green, double blue) {
  Panel panel = without_drift(desktop_panel());
  const double exponents[3] = {red, green, blue};
  for (int c = 0; c < 3; c++) {
    panel.channel[c].gamma = exponents[c];
    panel.channel[c].s = 0.0;
  }
  return panel;
}

// The true gray ramp through the LUTs, judged where every drive lies above the first few measured intervals.
//
// Interpolation: between rows that are h apart a chord lies above a convex response by at most h^2/8 of its second
// derivative; for a power law of exponent g up to 2.4 that is g (g - 1) h^2 / (8 d^2) <= 0.42 (h / d)^2 of the light
// at drive d. It errs in the light by that much, and in u'v' by at most a tenth of it: the white moves by less than
// 0.08 when one primary of these panels changes by a unit of itself.
// Search: red is right to half of 1/16 level, g / (32 1023 d) of its light, and blue, with a third of the red's
// luminance, makes up for it: less than 0.05 + 3 0.08 in u'v' together, 2.2e-5 / d.
// Peak white: whole levels leave half a level, g / 2046, in each channel: 1e-4 in u'v' each, 2e-4 for three at worst
// angles.
// Drift: red and blue at a given luminance cannot undo it. What it moves the gray at these drives remains at worst,
// twice over in u'v', because the search judges in (2x, y), whose unit is 0.32 to 0.67 of u'v' at these whites.
void expect_on_target(const Panel &panel, int rows, const Luts &luts, Target target) {
  const double h = 1.0 / (rows - 1);
  const double white = light(panel, drive_of(luts, 1023))[1];
  int judged = 0;
  for (int i = 16; i < 1024; i++) { // the entries below are the linear toe
    const Color drive = drive_of(luts, i);
    const double d = *std::min_element(drive.begin(), drive.end());
    if (d < 0.05 || d < 4.0 * h) {
      continue;
    }
    judged++;
    const double chord = 0.42 * h * h / (d * d);
    const Color shown = light(panel, drive);
    const double drift = distance(uv(shown), uv(light(without_drift(panel), drive)));
    EXPECT_LE(distance(uv(shown), uv(target)), 2e-4 + 2.2e-5 / d + 0.1 * chord + 2.1 * drift) << "entry " << i;
    const float scene = vexo_gamma_inverse(&target.camera, static_cast<float>(i) / 1023.0F);
    const double curve = static_cast<double>(vexo_gamma_evaluate(&target.system, scene));
    EXPECT_NEAR(shown[1] / white / curve, 1.0, 1e-3 + chord) << "entry " << i;
  }
  EXPECT_GT(judged, 500);
}

TEST(Calibration, TrueGrayRampLandsOnWhiteAndCurve) {
  const vexo_gamma bt709 = {4.5F, 0.018F, 0.45F, 0.099F};
  const Target targets[] = {d65(),
                            {0.3457, 0.3585, power(1.0F), power(2.4F)},
                            {0.2831, 0.2971, power(1.0F), power(1.0F)},
                            {0.3140, 0.3510, bt709, power(1.2F)}};
  const struct {
    const char *name;
    Panel panel;
    int rows;
    bool power_law; // one gain then means one loss of light on all levels, which the direct recipe relies on
  } panels[] = {{"alike", power_panel(2.2, 2.2, 2.2), 64, true},
                {"power", power_panel(2.4, 2.2, 2.0), 64, true},
                {"few rows", power_panel(2.0, 2.2, 2.4), 17, true},
                {"lcd", without_drift(desktop_panel()), 64, false},
                {"drifting", desktop_panel(), 33, false}};
  for (const auto &p : panels) {
    for (const Target &target : targets) {
      for (const Recipe recipe : {vexo_data_alignment, vexo_generate_lut}) {
        if (recipe == vexo_generate_lut && !p.power_law) {
          continue;
        }
        SCOPED_TRACE(std::string(p.name) + (recipe == vexo_generate_lut ? " direct" : " aligned") + " x " +
                     std::to_string(target.x));
        const auto context = context_of(measure(p.panel, p.rows));
        Luts out;
        ASSERT_EQ(calibrate(recipe, context.get(), &out, target), 0);
        expect_on_target(p.panel, p.rows, out, target);
      }
    }
  }
}

TEST(Calibration, AlignedRecipeBringsEveryPanelNearer) {
  const Panel cold = power_panel(2.6, 2.2, 1.8);
  Panel leaky = desktop_panel();
  leaky.black = {2.9, 3.0, 4.2};
  const vexo_lcnr measured[] = {panel_model::sample_panel(), measure(cold, 64), measure(leaky, 9, {0.001, 0.01})};
  const Panel panels[] = {desktop_panel(), cold, leaky};
  for (int p = 0; p < 3; p++) {
    const auto context = context_of(measured[p]);
    Luts out;
    ASSERT_EQ(calibrate(vexo_data_alignment, context.get(), &out, d65()), 0);
    double before = 0.0;
    double after = 0.0;
    for (int i = 100; i < 1024; i++) {
      const double bare = i / 1023.0;
      before += distance(uv(light(panels[p], {bare, bare, bare})), uv(d65()));
      after += distance(uv(light(panels[p], drive_of(out, i))), uv(d65()));
    }
    EXPECT_LT(after, before / 4.0) << p;
  }
}

// An exact copy of the blend between neighbouring table entries.
float blend(float a, float b, float t) {
  return static_cast<float>(static_cast<double>(t * b) + static_cast<double>(a) * (1.0 - static_cast<double>(t)));
}

float read(const float *table, float level) {
  const int n = static_cast<int>(level);
  return n >= 1023 ? table[1023] : blend(table[n], table[n + 1], level - static_cast<float>(n));
}

vexo_vector channel_light(const vexo *context, int c, float level) {
  const auto &T = context->data[c];
  return vexo_vector{{read(T[0], level), read(T[1], level), read(T[2], level) * context->maxY[c]}};
}

float squared_distance(const vexo_vector &a, const vexo_vector &b) {
  const float dx = 2.0F * (a.d[0] - b.d[0]);
  const float dy = a.d[1] - b.d[1];
  return dx * dx + dy * dy;
}

// What the direct recipe gives before gray tracking.
void merge_curve_and_gains(vexo *context, Target target, Luts *merged) {
  Luts curve;
  Luts balance;
  balance.make_ramps();
  vexo_vector white = white_of(target.x, target.y);
  ASSERT_EQ(vexo_generate_lcnr_invert_lut(curve.lut, context->data, &target.camera, &target.system), 0);
  ASSERT_EQ(vexo_lut_adjust_wb(balance.lut, context, &white), 0);
  for (int c = 0; c < 3; c++) {
    vexo_lut_merge(&curve.lut[c], &balance.lut[c], &merged->lut[c]);
  }
}

// The red and blue of one gray level: red down in sixteenths below the level above, blue for the level's luminance.
struct RedBlue {
  float red, blue;
};
RedBlue track(vexo *context, const vexo_vector &white, const Luts &merged, const Luts &above, int ng) {
  RedBlue found = {merged.lut[0].d[ng], merged.lut[2].d[ng]};
  vexo_vector green = channel_light(context, 1, merged.lut[1].d[ng] * 1023.0F);
  const float total = green.d[2] + channel_light(context, 0, found.red * 1023.0F).d[2] +
                      channel_light(context, 2, found.blue * 1023.0F).d[2];
  float best = 2.0F;
  for (float r = above.lut[0].d[ng + 1] * 1023.0F - 0.0625F; r >= 0.0F; r -= 0.0625F) {
    vexo_vector red = channel_light(context, 0, r);
    vexo_vector blue;
    const float b = vexo_data_Y_xyY(&blue, context->data[2], (total - red.d[2] - green.d[2]) / context->maxY[2]);
    if (above.lut[2].d[ng + 1] * 1023.0F <= b) {
      break;
    }
    blue.d[2] *= context->maxY[2];
    vexo_vector mixed;
    vexo_xyY_mix_3(&red, &green, &blue, &mixed);
    if (squared_distance(white, mixed) < best) {
      best = squared_distance(white, mixed);
      found = RedBlue{r / 1023.0F, b / 1023.0F};
    }
  }
  return found;
}

TEST(Calibration, DirectRecipeTracksTheMergedCurvesWithRedAndBlue) {
  const auto context = context_of(panel_model::sample_panel());
  Luts out;
  ASSERT_EQ(calibrate(vexo_generate_lut, context.get(), &out, d65()), 0);
  Luts merged;
  merge_curve_and_gains(context.get(), d65(), &merged);
  for (int c = 0; c < 3; c++) {
    EXPECT_EQ(out.lut[c].d[1023], merged.lut[c].d[1023]) << c;
    for (int n = 0; n < 16; n++) {
      EXPECT_EQ(out.lut[c].d[n], out.lut[c].d[16] * 0.0625F * static_cast<float>(n)) << c << ' ' << n;
    }
  }
  EXPECT_TRUE(std::equal(out.lut[1].d + 16, out.lut[1].d + 1024, merged.lut[1].d + 16));
  const vexo_vector white = white_of(d65().x, d65().y);
  for (const int ng : {1022, 1021, 700, 300, 60, 16}) {
    const RedBlue expected = track(context.get(), white, merged, out, ng);
    EXPECT_EQ(bits(out.lut[0].d[ng]), bits(expected.red)) << ng;
    EXPECT_EQ(bits(out.lut[2].d[ng]), bits(expected.blue)) << ng;
  }
}

TEST(Calibration, LutsRiseToTheGainsAndRepeat) {
  for (const Recipe recipe : {vexo_data_alignment, vexo_generate_lut}) {
    const auto bare = generated(panel_model::sample_panel());
    vexo_vector white = white_of(d65().x, d65().y);
    vexo_vector gains;
    vexo_peak_white_adjust(&gains, bare.get(), &white);
    const auto context = context_of(panel_model::sample_panel());
    Luts out;
    ASSERT_EQ(calibrate(recipe, context.get(), &out, d65()), 0);
    for (int c = 0; c < 3; c++) {
      const vexo_lut &l = out.lut[c];
      EXPECT_EQ(l.d[0], 0.0F);
      EXPECT_EQ(l.d[1023], gains.d[c]);
      EXPECT_TRUE(std::is_sorted(l.d, l.d + 1024)) << c;
    }
    Luts again;
    ASSERT_EQ(calibrate(recipe, context.get(), &again, d65()), 0);
    EXPECT_TRUE(same_bits(out, again));
  }
}

TEST(Calibration, ContextDescribesBarePanelOrPanelThroughBalance) {
  const auto bare = generated(panel_model::sample_panel());
  const auto context = context_of(panel_model::sample_panel());
  Target warm = d65();
  warm.x = 0.36;
  Luts out;
  ASSERT_EQ(calibrate(vexo_data_alignment, context.get(), &out, warm), 0);

  Luts balance;
  balance.make_ramps();
  vexo_vector white = white_of(warm.x, warm.y);
  ASSERT_EQ(vexo_lut_adjust_wb_2(balance.lut, bare.get(), &white), 0);
  for (int c = 0; c < 3; c++) {
    for (const int k : {1023, 1, 2, 40, 512, 1000}) {
      const float level = balance.lut[c].d[k] * 1023.0F;
      const int n = std::min(static_cast<int>(level), 1022);
      float side[2][3];
      for (int s = 0; s < 2; s++) {
        const auto &T = bare->data[c];
        const float x = T[0][n + s];
        const float y = T[1][n + s];
        const float S = y == 0.0F ? 0.0F : bare->maxY[c] * T[2][n + s] / y;
        side[s][0] = x * S;
        side[s][1] = y * S;
        side[s][2] = std::max(0.0F, S - x * S - y * S);
      }
      vexo_vector v;
      for (int m = 0; m < 3; m++) {
        v.d[m] = blend(side[0][m], side[1][m], level - static_cast<float>(n));
      }
      ASSERT_EQ(vexo_XYZ_xyY(&v), 0);
      if (k == 1023) {
        EXPECT_EQ(bits(context->maxY[c]), bits(v.d[2]));
      }
      v.d[2] /= context->maxY[c];
      for (int m = 0; m < 3; m++) {
        EXPECT_EQ(bits(context->data[c][m][k]), bits(v.d[m])) << c << ' ' << m << ' ' << k;
      }
    }
  }

  ASSERT_EQ(calibrate(vexo_generate_lut, context.get(), &out, warm), 0);
  EXPECT_EQ(std::memcmp(context->data, bare->data, sizeof bare->data), 0);
  EXPECT_EQ(std::memcmp(context->maxY, bare->maxY, sizeof bare->maxY), 0);
}

TEST(Calibration, TablesAreBlackRelativeStraightLinesBetweenRows) {
  vexo_lcnr lcnr = measure(desktop_panel(), 3);
  lcnr.sample[1] = 128.0F; // 128 1023 / 255 = 513.506, table level 514
  lcnr.sample[2] = 255.0F;
  const int knots[] = {0, 514, 1023};
  const auto context = generated(lcnr);
  for (int c = 0; c < 3; c++) {
    for (const int k : {1023, 1, 2, 513, 514, 515, 1022}) {
      const int row = k < 514 ? 0 : 1;
      vexo_vector v;
      for (int m = 0; m < 3; m++) {
        const float *column = lcnr.data[c][m];
        const float step = (column[row + 1] - column[row]) / static_cast<float>(knots[row + 1] - knots[row]);
        const float XYZ = k == 1023 ? column[2] : column[row] + static_cast<float>(k - knots[row]) * step;
        v.d[m] = XYZ - column[0];
      }
      const float sum = v.d[0] + v.d[1] + v.d[2];
      const float Y = lcnr.data[c][1][2] - lcnr.data[c][1][0];
      EXPECT_EQ(bits(context->maxY[c]), bits(Y));
      EXPECT_EQ(bits(context->data[c][0][k]), bits(v.d[0] / sum)) << c << ' ' << k;
      EXPECT_EQ(bits(context->data[c][1][k]), bits(v.d[1] / sum)) << c << ' ' << k;
      EXPECT_EQ(bits(context->data[c][2][k]), bits(v.d[1] / Y)) << c << ' ' << k;
    }
    for (int m = 0; m < 3; m++) {
      EXPECT_EQ(context->data[c][m][0], 0.0F);
    }
    EXPECT_EQ(context->data[c][2][1023], 1.0F);
  }
}

TEST(Calibration, NormalizeLowersRowsToTheMinimumAbove) {
  const struct {
    int num, lowered;
    std::vector<float> before, after;
  } cases[] = {{4, 1, {1, 3, 2, 5}, {1, 2, 2, 5}},
               {4, 1, {5, 1, 1, 1}, {1, 1, 1, 1}},
               {4, 3, {4, 3, 2, 1}, {1, 1, 1, 1}},
               {4, 0, {1, 1, 2, 3}, {1, 1, 2, 3}},
               {2, 0, {1, 3, 2, 5}, {1, 3, 2, 5}}, // rows beyond num do not count
               {1, 0, {3, 2}, {3, 2}},
               {-1, 0, {3, 2}, {3, 2}}};
  for (const auto &t : cases) {
    for (int column = 0; column < 9; column++) {
      vexo_lcnr lcnr = {};
      lcnr.num = t.num;
      std::copy(t.before.begin(), t.before.end(), lcnr.data[column / 3][column % 3]);
      lcnr.sample[0] = 9.0F;
      EXPECT_EQ(vexo_lcnr_normalize(&lcnr), t.lowered);
      EXPECT_TRUE(std::equal(t.after.begin(), t.after.end(), lcnr.data[column / 3][column % 3]));
      EXPECT_EQ(lcnr.sample[0], 9.0F);
    }
  }
}

TEST(Calibration, DumpPrintsALineALevel) {
  auto context = std::make_unique<vexo>();
  for (int n = 0; n < 9; n++) {
    context->data[n / 3][n % 3][1023] = static_cast<float>(n) + 0.5F;
  }
  char prefix[] = "panel";
  char header[64];
  std::snprintf(header, sizeof header, "VEXO(%p) DATA:\n", static_cast<void *>(context->data));
  const std::string named = printed([&](FILE *f) { vexo_data_dump(f, context->data, prefix); });
  const std::string plain = printed([&](FILE *f) { vexo_data_dump(f, context->data, nullptr); });
  EXPECT_EQ(named, "panel " + plain);
  EXPECT_EQ(plain.rfind(header, 0), 0U);
  EXPECT_EQ(std::count(plain.begin(), plain.end(), '\n'), 1025);
  const std::string last = "\n\t1023\t\t0.50000000\t1.50000000\t2.50000000\t3.50000000\t4.50000000\t5.50000000"
                           "\t6.50000000\t7.50000000\t8.50000000\n";
  EXPECT_EQ(plain.substr(plain.size() - last.size()), last);
}

// One channel whose light rises as (k / 1024)^2, exactly, while its chromaticity moves.
void fill_channel(float (*T)[1024]) {
  for (int k = 0; k < 1024; k++) {
    const float u = static_cast<float>(k) / 1024.0F;
    T[0][k] = 0.25F + 0.125F * u;
    T[1][k] = 0.5F - 0.25F * u;
    T[2][k] = u * u;
  }
}

TEST(Calibration, LevelOfALuminanceInvertsTheTable) {
  auto context = std::make_unique<vexo>();
  auto &T = context->data[0];
  fill_channel(T);
  vexo_vector v;
  for (const int k : {1, 5, 512, 1022}) {
    EXPECT_EQ(vexo_data_Y_xyY(&v, T, T[2][k]), static_cast<float>(k));
    EXPECT_EQ(v.d[2], T[2][k]);
    EXPECT_NEAR(v.d[0], T[0][k], 1e-6F);
  }
  // Midway in luminance between levels 600 and 601, X and Z are the means of the two.
  const float luma = 0.5F * (T[2][600] + T[2][601]);
  EXPECT_EQ(vexo_data_Y_xyY(&v, T, luma), 600.5F);
  vexo_vector mean;
  for (int m = 0; m < 3; m += 2) {
    float end[2];
    for (int s = 0; s < 2; s++) {
      const float S = T[2][600 + s] / T[1][600 + s];
      end[s] = S * (m == 0 ? T[0][600 + s] : 1.0F - T[0][600 + s] - T[1][600 + s]);
    }
    mean.d[m] = blend(end[0], end[1], 0.5F);
  }
  mean.d[1] = luma;
  ASSERT_EQ(vexo_XYZ_xyY(&mean), 0);
  EXPECT_TRUE(same_bits(v, mean));

  T[1][300] = 0.0F; // no chromaticity there: the lower level's entry stands
  for (const int k : {299, 300}) {
    EXPECT_EQ(vexo_data_Y_xyY(&v, T, 0.5F * (T[2][k] + T[2][k + 1])), static_cast<float>(k) + 0.5F);
    EXPECT_TRUE(same_bits(v, vexo_vector{{T[0][k], T[1][k], T[2][k]}}));
  }

  const struct {
    float luma, level;
    int entry;
  } ends[] = {{T[2][1023], 1023.0F, 1023},
              {2.0F, 1023.0F, 1023},
              {kInf, 1023.0F, 1023},
              {0.0F, 0.0F, 0},
              {-1.0F, 0.0F, 0},
              {-kInf, 0.0F, 0}};
  for (const auto &t : ends) {
    EXPECT_EQ(vexo_data_Y_xyY(&v, T, t.luma), t.level) << t.luma;
    EXPECT_TRUE(same_bits(v, vexo_vector{{T[0][t.entry], T[1][t.entry], T[2][t.entry]}}));
  }

  const vexo_vector before = v;
  EXPECT_EQ(vexo_data_Y_xyY(&v, T, kNaN), -1.0F);
  T[2][1023] = kNaN;
  EXPECT_EQ(vexo_data_Y_xyY(&v, T, 2.0F), -1.0F);
  EXPECT_TRUE(same_bits(v, before));
}

TEST(Calibration, PredictionMixesTheChannelsAtClampedLevels) {
  auto context = std::make_unique<vexo>();
  for (int c = 0; c < 3; c++) {
    fill_channel(context->data[c]);
    context->data[c][2][0] = 0.001F; // some light at level 0 shows which level was read
    context->maxY[c] = 10.0F * static_cast<float>(c + 1);
  }
  Luts luts(3);
  for (vexo_lut &l : luts.lut) {
    l.d[0] = 0.0F;
    l.d[1] = 0.25F;
    l.d[2] = 1.0F;
  }
  const float half = 0.5F * 0.25F * 1023.0F; // from position 0.5 of the LUTs
  const struct {
    float drive[3];
    float read[3];
    bool through_luts;
  } cases[] = {{{1022.5F, 1023.0F, 0.0F}, {1022.5F, 1023.0F, 0.0F}, false},
               {{300.25F, 0.75F, 511.5F}, {300.25F, 0.75F, 511.5F}, false},
               {{-0.5F, 1023.5F, 5000.0F}, {0.0F, 1023.0F, 1023.0F}, false},
               {{-kInf, kInf, kNaN}, {0.0F, 1023.0F, 0.0F}, false},
               {{-1e30F, 1e30F, -0.0F}, {0.0F, 1023.0F, 0.0F}, false},
               {{0.5F, 2.0F, 1.0F}, {half, 1023.0F, 255.75F}, true},
               {{-1.0F, 7.0F, kNaN}, {0.0F, 1023.0F, 0.0F}, true}};
  for (const auto &t : cases) {
    vexo_vector light_of[3];
    for (int c = 0; c < 3; c++) {
      light_of[c] = channel_light(context.get(), c, t.read[c]);
    }
    vexo_vector expected;
    ASSERT_EQ(vexo_xyY_mix_3(&light_of[0], &light_of[1], &light_of[2], &expected), 0);
    vexo_vector v;
    const auto &d = t.drive;
    EXPECT_EQ(t.through_luts ? vexo_lut_get_xyY(&v, context.get(), luts.lut, d[0], d[1], d[2])
                             : vexo_get_xyY(&v, context.get(), d[0], d[1], d[2]),
              0);
    EXPECT_TRUE(same_bits(v, expected)) << d[0] << ' ' << d[1] << ' ' << d[2];
  }

  const auto dark = generated(panel_model::sample_panel()); // black has no chromaticity to mix
  vexo_vector v = {{1.0F, 2.0F, 3.0F}};
  EXPECT_EQ(vexo_get_xyY(&v, dark.get(), 1023.0F, 0.0F, 0.0F), 0);
  EXPECT_EQ(v.d[2], 0.0F);
}

TEST(Calibration, PeakWhiteIsTheNearestOfTheSearchedCubes) {
  const auto context = generated(panel_model::sample_panel());
  vexo_vector target = white_of(0.3150, 0.3250); // yellower than the panel: blue goes down by more than 32 levels
  int top[3] = {1023, 1023, 1023};
  int best[3] = {1023, 1023, 1023};
  float least = 2.0F;
  int passes = 0;
  for (bool again = true; again; passes++) {
    for (int r = top[0]; r >= top[0] - 32; r--) {
      for (int g = top[1]; g >= top[1] - 32; g--) {
        for (int b = top[2]; b >= top[2] - 32; b--) {
          vexo_vector v;
          vexo_get_xyY(&v, context.get(), static_cast<float>(r), static_cast<float>(g), static_cast<float>(b));
          if (squared_distance(v, target) < least) {
            least = squared_distance(v, target);
            best[0] = r;
            best[1] = g;
            best[2] = b;
          }
        }
      }
    }
    again = best[0] == top[0] - 32 || best[1] == top[1] - 32 || best[2] == top[2] - 32;
    std::copy(best, best + 3, top);
  }
  EXPECT_EQ(passes, 2);
  vexo_vector gains;
  EXPECT_EQ(vexo_peak_white_adjust(&gains, context.get(), &target), 0);
  for (int c = 0; c < 3; c++) {
    EXPECT_EQ(bits(gains.d[c]), bits(static_cast<float>(best[c] / 1023.0))) << c;
  }
}

TEST(Calibration, PeakWhiteKeepsTheBrightestAndEndsAtZero) {
  const auto context = generated(panel_model::sample_panel());
  vexo_vector gains;
  vexo_vector red = {{context->data[0][0][1023], context->data[0][1][1023], 0.0F}};
  vexo_peak_white_adjust(&gains, context.get(), &red);
  EXPECT_EQ(gains.d[0], 1.0F);
  EXPECT_LT(gains.d[1], 0.01F);
  EXPECT_LT(gains.d[2], 0.01F);

  for (auto &channel : context->data) { // all channels alike: every candidate is equally near
    std::fill(channel[0], channel[0] + 1024, 0.25F);
    std::fill(channel[1], channel[1] + 1024, 0.5F);
  }
  for (vexo_vector far : {red, vexo_vector{{kNaN, 0.3F, 0.0F}}, vexo_vector{{9.0F, 0.3F, 0.0F}}}) {
    vexo_peak_white_adjust(&gains, context.get(), &far);
    EXPECT_TRUE(same_bits(gains, vexo_vector{{1.0F, 1.0F, 1.0F}}));
  }
}

TEST(Calibration, BalanceScalesByGainsAndPullsGraysToWhite) {
  const auto context = generated(panel_model::sample_panel());
  vexo_vector target = white_of(0.3457, 0.3585);
  vexo_vector gains;
  vexo_peak_white_adjust(&gains, context.get(), &target);
  Luts scaled(1024, 0.7F);
  Luts pulled(1024, 0.7F);
  EXPECT_EQ(vexo_lut_adjust_wb(scaled.lut, context.get(), &target), 0);
  EXPECT_EQ(vexo_lut_adjust_wb_2(pulled.lut, context.get(), &target), 0);
  vexo_vector white;
  vexo_get_xyY(&white, context.get(), 1023.0F, 1023.0F, 1023.0F);
  vexo_xyY_XYZ(&white);
  for (const int i : {1, 16, 500, 1023}) {
    const float level = static_cast<float>(i);
    vexo_vector gray;
    vexo_get_xyY(&gray, context.get(), level, level, level);
    vexo_xyY_XYZ(&gray);
    const float red = white.d[0] / white.d[1] / (gray.d[0] / gray.d[1]);
    const float blue = white.d[2] / white.d[1] / (gray.d[2] / gray.d[1]);
    const float pull[3] = {red * gains.d[0], gains.d[1], blue * gains.d[2]};
    for (int c = 0; c < 3; c++) {
      EXPECT_EQ(bits(scaled.lut[c].d[i]), bits(0.7F * gains.d[c])) << c << ' ' << i;
      EXPECT_EQ(bits(pulled.lut[c].d[i]), bits(0.7F * pull[c])) << c << ' ' << i;
    }
  }
  for (int c = 0; c < 3; c++) {
    EXPECT_EQ(bits(scaled.lut[c].d[0]), bits(0.7F * gains.d[c]));
    EXPECT_EQ(bits(pulled.lut[c].d[0]), bits(0.0F)); // black shows nothing
  }
}

TEST(Calibration, AdjustWbFindsLinearRgb) {
  const float D[3] = {0.29F, 0.30F, 0.42F};
  const Panel panel = without_drift(desktop_panel());
  float primary[4][3]; // red, green, blue and white above black, read with the black
  const Color patches[4] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 1, 1}};
  for (size_t p = 0; p < 4; p++) {
    const Color shown = light(panel, patches[p]);
    for (size_t m = 0; m < 3; m++) {
      primary[p][m] = static_cast<float>(shown[m] + static_cast<double>(D[m]));
    }
  }
  const auto &[R, G, B, W] = primary;
  const double mix[3] = {0.2, 0.5, 0.9};
  vexo_vector rgb = {};
  for (int m = 0; m < 3; m++) {
    for (size_t c = 0; c < 3; c++) {
      rgb.d[m] += static_cast<float>(mix[c] * panel.channel[c].full[static_cast<size_t>(m)] / 301.0);
    }
  }
  EXPECT_EQ(vexo_adjust_wb(R, G, B, W, D, 2.0F * W[1], &rgb), 0);
  for (int c = 0; c < 3; c++) {
    EXPECT_NEAR(static_cast<double>(rgb.d[c]), 2.0 * mix[c], 1e-5) << c;
  }

  const vexo_vector before = rgb;
  EXPECT_EQ(vexo_adjust_wb(D, G, B, W, D, 1.0F, &rgb), -1); // red shows nothing
  EXPECT_EQ(vexo_adjust_wb(R, G, G, W, D, 1.0F, &rgb), -1); // two primaries alike
  EXPECT_TRUE(same_bits(rgb, before));
}

TEST(Calibration, CurveLutsInvertEachChannel) {
  auto context = std::make_unique<vexo>();
  for (int c = 0; c < 3; c++) {
    for (int k = 0; k < 1024; k++) {
      context->data[c][2][k] = static_cast<float>(std::pow(k / 1023.0, c + 1.0));
    }
  }
  Luts luts;
  vexo_gamma camera = power(0.5F);
  vexo_gamma system = power(1.5F);
  EXPECT_EQ(vexo_generate_lcnr_invert_lut(luts.lut, context->data, &camera, &system), 0);
  for (int c = 0; c < 3; c++) {
    for (const int i : {0, 300, 700, 1023}) {
      const double light_wanted = std::pow(i / 1023.0, 2.0 * 1.5);
      EXPECT_NEAR(static_cast<double>(luts.lut[c].d[i]), std::pow(light_wanted, 1.0 / (c + 1.0)), 1e-5)
          << c << ' ' << i;
    }
  }
}

TEST(Calibration, UnusableMeasurementsLeaveTheLutsAlone) {
  struct Case {
    std::string name;
    std::function<void(vexo_lcnr *)> spoil;
    bool repairable = false; // an infinite reading below another is lowered like any that falls
  };
  std::vector<Case> cases = {{"no row", [](vexo_lcnr *l) { l->num = 0; }},
                             {"one row", [](vexo_lcnr *l) { l->num = 1; }},
                             {"negative count", [](vexo_lcnr *l) { l->num = -5; }},
                             {"65 rows", [](vexo_lcnr *l) { l->num = 65; }},
                             {"last level 0", [](vexo_lcnr *l) { l->num = 2, l->sample[1] = 0.0F; }},
                             {"level scale infinite", [](vexo_lcnr *l) { l->num = 2, l->sample[1] = 1e-38F; }},
                             {"first level above 0", [](vexo_lcnr *l) { l->sample[0] = 1.0F; }},
                             {"first level below 0", [](vexo_lcnr *l) { l->sample[0] = -1.0F; }},
                             {"equal levels", [](vexo_lcnr *l) { l->sample[5] = l->sample[4]; }},
                             {"falling levels", [](vexo_lcnr *l) { std::swap(l->sample[5], l->sample[6]); }}};
  for (const int row : {0, 7, 32}) {
    for (const float bad : {kNaN, kInf, -kInf}) {
      const std::string where = std::to_string(bad) + " in row " + std::to_string(row);
      cases.push_back({where + ", level", [=](vexo_lcnr *l) { l->sample[row] = bad; }});
      for (int n = 0; n < 9; n++) {
        cases.push_back({where + ", column " + std::to_string(n),
                         [=](vexo_lcnr *l) { l->data[n / 3][n % 3][row] = bad; }, bad == kInf && row < 32});
      }
    }
  }
  for (int c = 0; c < 3; c++) {
    cases.push_back({"black in row 1, channel " + std::to_string(c), [=](vexo_lcnr *l) {
                       for (auto &component : l->data[c]) {
                         component[1] = component[0];
                       }
                     }});
  }
  for (const Recipe recipe : {vexo_generate_lut, vexo_data_alignment}) {
    for (const Case &t : cases) {
      if (recipe == vexo_data_alignment && t.repairable) {
        continue;
      }
      const auto context = context_of(panel_model::sample_panel());
      t.spoil(&context->lcnr);
      Luts out;
      CaptureStderr messages;
      EXPECT_EQ(calibrate(recipe, context.get(), &out, d65()), -1) << t.name;
      EXPECT_TRUE(out.untouched()) << t.name;
      if (recipe == vexo_generate_lut) {
        EXPECT_EQ(messages.text(), "") << t.name;
      }
    }
  }
}

TEST(Calibration, WrongSizeOrTargetFailsAfterTheDirectMergeAndBeforeTheAligned) {
  const std::string size_error = "vexo_gray_tracking: LUT size error.\n";
  Target no_chromaticity = d65();
  no_chromaticity.x = std::numeric_limits<double>::quiet_NaN();
  const struct {
    int size;
    Target target;
    std::string message;
  } cases[] = {
      {1023, d65(), size_error}, {1025, d65(), size_error}, {2, d65(), size_error}, {1024, no_chromaticity, ""}};
  for (const auto &t : cases) {
    const auto context = context_of(panel_model::sample_panel());
    Luts direct(t.size);
    CaptureStderr messages;
    EXPECT_EQ(calibrate(vexo_generate_lut, context.get(), &direct, t.target), -1);
    Luts merged(t.size);
    merge_curve_and_gains(context.get(), t.target, &merged);
    EXPECT_TRUE(same_bits(direct, merged)) << t.size;
    Luts aligned(t.size);
    EXPECT_EQ(calibrate(vexo_data_alignment, context.get(), &aligned, t.target), -1);
    EXPECT_TRUE(aligned.untouched()) << t.size;
    EXPECT_EQ(messages.text(), t.message + t.message) << t.size;
  }
}

TEST(Calibration, AlignedRecipeRepairsFallingReadingsAndSaysSo) {
  const auto rising = context_of(panel_model::sample_panel());
  const auto falling = context_of(panel_model::sample_panel());
  for (const auto &[c, m, row] : {std::array<int, 3>{1, 1, 20}, std::array<int, 3>{2, 0, 5}}) {
    rising->lcnr.data[c][m][row] = rising->lcnr.data[c][m][row + 1];
    falling->lcnr.data[c][m][row] = row == 5 ? kInf : 1000.0F;
  }
  Luts expected;
  Luts repaired;
  CaptureStderr messages;
  EXPECT_EQ(calibrate(vexo_data_alignment, rising.get(), &expected, d65()), 0);
  EXPECT_EQ(messages.text(), "");
  EXPECT_EQ(calibrate(vexo_data_alignment, falling.get(), &repaired, d65()), 0);
  EXPECT_EQ(messages.text(), "Warning: lcnr data not normalized\n");
  EXPECT_TRUE(same_bits(expected, repaired));
  EXPECT_EQ(std::memcmp(&falling->lcnr, &rising->lcnr, sizeof(vexo_lcnr)), 0);
}

TEST(Calibration, SamplePanelIsWhatItsGeneratorWrites) {
  const std::string path = testing::TempDir() + "vexo-sample-panel.xml";
  vexo_lcnr made = panel_model::sample_panel();
  ASSERT_EQ(vexo_store_lcnr_xml(&made, path.c_str()), 0);
  vexo_lcnr written = {};
  vexo_lcnr committed = {};
  ASSERT_EQ(vexo_load_lcnr_xml(&written, path.c_str()), 0);
  ASSERT_EQ(vexo_load_lcnr_xml(&committed, VEXO_EXAMPLES "/sample-panel.xml"), 0);
  std::remove(path.c_str());
  ASSERT_EQ(written.num, committed.num);
  EXPECT_EQ(vexo_lcnr_sanity_check(&committed), 0);
  // Mathematics libraries differ in the last bits of a double: a reading may round to the next float, or to the next of
  // the six decimals, on another host.
  const auto near = [](float a, float b) { return std::abs(a - b) < 1.5e-6F || std::nextafter(a, b) == b; };
  for (int i = 0; i < committed.num; i++) {
    EXPECT_EQ(written.sample[i], committed.sample[i]);
    for (int n = 0; n < 9; n++) {
      EXPECT_TRUE(near(written.data[n / 3][n % 3][i], committed.data[n / 3][n % 3][i])) << "row " << i << ' ' << n;
    }
  }
}

} // namespace
