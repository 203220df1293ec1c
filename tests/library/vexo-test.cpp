// Panel calibration, judged by the true light of simulated panels and, where the arithmetic is prescribed, by bits.
#include "vexo.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "bits.h"
#include "panel-model.h"
#include "text.h"
#include "vexo-cs.h"

namespace {

using panel_model::Color;
using panel_model::desktop_panel;
using panel_model::light;
using panel_model::Panel;
using panel_model::sample_panel;

const float kNaN = std::numeric_limits<float>::quiet_NaN();
const float kInf = std::numeric_limits<float>::infinity();

struct Target {
  float x, y;
  vexo_gamma camera = {0.0F, 0.0F, 1.0F, 0.0F};
  vexo_gamma system = {0.0F, 0.0F, 2.2F, 0.0F};
  vexo_vector white() const { return vexo_vector{{x, y, 1.0F - x - y}}; }
};
const Target kD65 = {0.3127F, 0.3290F};

struct Luts {
  explicit Luts(int size = 1024, float value = -7.0F) : d(3 * static_cast<size_t>(size), value) {
    for (int c = 0; c < 3; c++) {
      lut[c] = vexo_lut{size, &d[static_cast<size_t>(c * size)]};
    }
  }
  Luts(const Luts &) = delete;
  Luts &operator=(const Luts &) = delete;

  std::vector<float> d;
  vexo_lut lut[3];
};

// A recipe run on records of its own.
using Recipe = decltype(&vexo_generate_lut);
struct Trial {
  Trial(Recipe recipe, const vexo_lcnr &lcnr, Target target = kD65, int size = 1024) : out(size) {
    context.lcnr = lcnr;
    calibrate(recipe, target);
  }
  void calibrate(Recipe recipe, Target target) {
    vexo_vector white = target.white();
    status = recipe(out.lut, &context, &target.camera, &target.system, &white);
  }

  vexo context = {};
  Luts out;
  int status;
};

std::array<uint32_t, 3> bits(const vexo_vector &v) { return {::bits(v.d[0]), ::bits(v.d[1]), ::bits(v.d[2])}; }

float at(float *table, float level) {
  const vexo_lut lut = {1024, table};
  return vexo_lut_evaluate(&lut, level);
}

vexo_vector entry(float (*T)[1024], float level) {
  return vexo_vector{{at(T[0], level), at(T[1], level), at(T[2], level)}};
}

vexo_vector channel_xyY(vexo *context, int c, float level) {
  vexo_vector v = entry(context->data[c], level);
  v.d[2] *= context->maxY[c];
  return v;
}

vexo_vector gains_for(vexo *context, vexo_vector target) {
  vexo_vector gains;
  EXPECT_EQ(vexo_peak_white_adjust(&gains, context, &target), 0);
  return gains;
}

float squared_distance(const vexo_vector &a, const vexo_vector &b) {
  const float dx = 2.0F * (a.d[0] - b.d[0]);
  const float dy = a.d[1] - b.d[1];
  return dx * dx + dy * dy;
}

// The distance of two colours in u'v' (CIE 1976).
double uv_distance(const Color &a, const Color &b) {
  const double A = a[0] + 15.0 * a[1] + 3.0 * a[2];
  const double B = b[0] + 15.0 * b[1] + 3.0 * b[2];
  return std::hypot(4.0 * (a[0] / A - b[0] / B), 9.0 * (a[1] / A - b[1] / B));
}

Panel without_drift(Panel panel) {
  for (auto &channel : panel.channel) {
    channel.drift = {};
  }
  return panel;
}

// A panel of pure power laws, such as a cathode-ray tube.
Panel power_panel(const double (&exponents)[3]) {
  Panel panel = without_drift(desktop_panel());
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
// at drive d. The light errs by that much, u'v' by at most a tenth of it: the white moves by less than 0.08 when one
// primary of these panels changes by a unit of itself.
// Search: red is right to half of 1/16 level, g / (32 1023 d) of its light, and blue, with a third of the red's
// luminance, makes up for it: together less than 0.05 + 3 0.08 of that in u'v', 2.2e-5 / d.
// Peak white: whole levels leave half a level, g / 2046, in each channel: 1e-4 each in u'v', 2e-4 as they add up.
// Drift: red and blue at a given luminance cannot undo it. What it moves the gray at these drives remains at worst,
// twice over in u'v', because the search judges in (2x, y), whose unit is 0.32 to 0.67 of u'v' at these whites.
void expect_on_target(const Panel &panel, int rows, const Luts &luts, Target target) {
  const vexo_vector white = target.white();
  const Color wanted = {static_cast<double>(white.d[0]), static_cast<double>(white.d[1]),
                        static_cast<double>(white.d[2])};
  const double h = 1.0 / (rows - 1);
  double top = 0.0;
  double before = 0.0;
  double after = 0.0;
  for (int i = 1023; i >= 16; i--) { // the entries below are the linear toe
    Color drive;
    for (size_t c = 0; c < 3; c++) {
      drive[c] = static_cast<double>(luts.lut[c].d[i]);
    }
    const double d = *std::min_element(drive.begin(), drive.end());
    if (d < 0.05 || d < 4.0 * h) {
      break;
    }
    const Color shown = light(panel, drive);
    top = i == 1023 ? shown[1] : top;
    const double chord = 0.42 * h * h / (d * d);
    const double drift = uv_distance(shown, light(without_drift(panel), drive));
    EXPECT_LE(uv_distance(shown, wanted), 2e-4 + 2.2e-5 / d + 0.1 * chord + 2.1 * drift) << "entry " << i;
    const double input = i / 1023.0;
    const float scene = vexo_gamma_inverse(&target.camera, static_cast<float>(input));
    const double curve = static_cast<double>(vexo_gamma_evaluate(&target.system, scene));
    EXPECT_NEAR(shown[1] / top / curve, 1.0, 1e-3 + chord) << "entry " << i;
    before += uv_distance(light(panel, {input, input, input}), wanted);
    after += uv_distance(shown, wanted);
  }
  EXPECT_LT(after, before / 4.0);
}

TEST(Calibration, TrueGrayRampLandsOnWhiteAndCurve) {
  const vexo_gamma bt709 = {4.5F, 0.018F, 0.45F, 0.099F};
  const vexo_gamma linear = {0.0F, 0.0F, 1.0F, 0.0F};
  const Target targets[] = {kD65,
                            {0.3457F, 0.3585F, linear, linear},
                            {0.2831F, 0.2971F},
                            {0.3140F, 0.3510F, bt709, {0.0F, 0.0F, 1.2F, 0.0F}}};
  const struct {
    const char *name;
    Panel panel;
    int rows;
    bool power_law; // one gain then costs every level the same share of light, on which the direct recipe relies
  } panels[] = {{"alike", power_panel({2.2, 2.2, 2.2}), 64, true},
                {"power", power_panel({2.4, 2.2, 2.0}), 64, true},
                {"few rows", power_panel({2.0, 2.2, 2.4}), 17, true},
                {"lcd", without_drift(desktop_panel()), 64, false},
                {"drifting", desktop_panel(), 33, false}};
  for (const auto &p : panels) {
    for (const Target &target : targets) {
      for (const Recipe recipe : {vexo_data_alignment, vexo_generate_lut}) {
        const bool direct = recipe == vexo_generate_lut;
        if (!direct || p.power_law) {
          SCOPED_TRACE(p.name + std::string(direct ? " direct" : " aligned") + " x " + std::to_string(target.x));
          const Trial trial(recipe, panel_model::measure(p.panel, p.rows), target);
          ASSERT_EQ(trial.status, 0);
          expect_on_target(p.panel, p.rows, trial.out, target);
        }
      }
    }
  }
}

TEST(Calibration, LutsRiseFromZeroToTheGainsAndRepeat) {
  Trial bare(vexo_generate_lut, sample_panel());
  const vexo_vector gains = gains_for(&bare.context, kD65.white());
  for (const Recipe recipe : {vexo_data_alignment, vexo_generate_lut}) {
    Trial trial(recipe, sample_panel());
    for (int c = 0; c < 3; c++) {
      const vexo_lut &lut = trial.out.lut[c];
      EXPECT_EQ(lut.d[0], 0.0F);
      EXPECT_EQ(lut.d[1023], gains.d[c]);
      EXPECT_TRUE(std::is_sorted(lut.d, lut.d + 1024)) << c;
    }
    const std::vector<float> first = trial.out.d;
    trial.calibrate(recipe, kD65);
    EXPECT_EQ(trial.status, 0);
    EXPECT_EQ(trial.out.d, first);
  }
}

TEST(Calibration, TablesAreBlackRelativeLinesBetweenRows) {
  vexo_lcnr lcnr = panel_model::measure(desktop_panel(), 3);
  lcnr.sample[1] = 128.0F; // 128 1023 / 255 = 513.506: table level 514
  lcnr.sample[2] = 255.0F;
  const int knots[] = {0, 514, 1023};
  Trial trial(vexo_generate_lut, lcnr);
  for (int c = 0; c < 3; c++) {
    const float maxY = lcnr.data[c][1][2] - lcnr.data[c][1][0];
    EXPECT_EQ(trial.context.maxY[c], maxY);
    EXPECT_EQ(bits(entry(trial.context.data[c], 0.0F)), bits(vexo_vector{}));
    EXPECT_EQ(trial.context.data[c][2][1023], 1.0F);
    for (const int k : {1, 2, 513, 514, 515, 1022}) {
      const int row = k < 514 ? 0 : 1;
      vexo_vector v;
      for (int m = 0; m < 3; m++) {
        const float *y = lcnr.data[c][m];
        const float step = (y[row + 1] - y[row]) / static_cast<float>(knots[row + 1] - knots[row]);
        v.d[m] = y[row] + static_cast<float>(k - knots[row]) * step - y[0];
      }
      const float sum = v.d[0] + v.d[1] + v.d[2];
      EXPECT_EQ(bits(entry(trial.context.data[c], static_cast<float>(k))),
                bits(vexo_vector{{v.d[0] / sum, v.d[1] / sum, v.d[1] / maxY}}))
          << c << ' ' << k;
    }
  }
}

TEST(Calibration, NormalizeLowersRowsToTheMinimumAbove) {
  const struct {
    int num, lowered;
    std::array<float, 4> before, after;
  } cases[] = {{4, 1, {1, 3, 2, 5}, {1, 2, 2, 5}},
               {4, 1, {5, 1, 1, 1}, {1, 1, 1, 1}},
               {4, 3, {4, 3, 2, 1}, {1, 1, 1, 1}},
               {4, 0, {1, 1, 2, 3}, {1, 1, 2, 3}},
               {2, 0, {1, 3, 2, 5}, {1, 3, 2, 5}},
               {1, 0, {3, 2}, {3, 2}},
               {-1, 0, {3, 2}, {3, 2}}};
  for (const auto &t : cases) {
    vexo_lcnr lcnr = {{}, {9.0F, 8.0F}, t.num};
    vexo_lcnr expected = lcnr;
    for (int column = 0; column < 9; column++) {
      std::copy(t.before.begin(), t.before.end(), lcnr.data[column / 3][column % 3]);
      std::copy(t.after.begin(), t.after.end(), expected.data[column / 3][column % 3]);
    }
    EXPECT_EQ(vexo_lcnr_normalize(&lcnr), 9 * t.lowered);
    EXPECT_EQ(std::memcmp(&lcnr, &expected, sizeof lcnr), 0);
  }
}

TEST(Calibration, DumpPrintsALineALevel) {
  vexo context = {};
  for (int n = 0; n < 9; n++) {
    context.data[n / 3][n % 3][1023] = static_cast<float>(n) + 0.5F;
  }
  char prefix[] = "panel";
  char header[64];
  std::snprintf(header, sizeof header, "VEXO(%p) DATA:\n\t0\t\t0.00000000\t", static_cast<void *>(context.data));
  const std::string plain = printed([&](FILE *f) { vexo_data_dump(f, context.data, nullptr); });
  EXPECT_EQ(printed([&](FILE *f) { vexo_data_dump(f, context.data, prefix); }), "panel " + plain);
  EXPECT_EQ(plain.rfind(header, 0), 0U);
  EXPECT_EQ(std::count(plain.begin(), plain.end(), '\n'), 1025);
  EXPECT_EQ(plain.substr(plain.find("\n\t1023")),
            "\n\t1023\t\t0.50000000\t1.50000000\t2.50000000\t3.50000000\t4.50000000\t5.50000000\t6.50000000\t7.50000000"
            "\t8.50000000\n");
}

// One channel whose light rises as (k / 1024)^2, exactly, while its chromaticity moves.
void fill_channel(float (*T)[1024]) {
  for (int k = 0; k < 1024; k++) {
    const float u = static_cast<float>(k) / 1024.0F;
    T[0][k] = 0.3F + 0.1F * u;
    T[1][k] = 0.6F - 0.3F * u;
    T[2][k] = u * u;
  }
}

TEST(Calibration, LevelOfALuminanceInvertsTheTable) {
  float T[3][1024];
  fill_channel(T);
  T[1][300] = 0.0F; // no chromaticity: the entry of the lower level stands
  const struct {
    float luma, level;
    int shown;
  } cases[] = {{2.0F, 1023.0F, 1023},   {T[2][1023], 1023.0F, 1023},
               {kInf, 1023.0F, 1023},   {0.0F, 0.0F, 0},
               {-1.0F, 0.0F, 0},        {0.5F * (T[2][299] + T[2][300]), 299.5F, 299},
               {-kInf, 0.0F, 0},        {0.5F * (T[2][300] + T[2][301]), 300.5F, 300},
               {T[2][301], 301.0F, 300}};
  vexo_vector v;
  for (const auto &t : cases) {
    EXPECT_EQ(vexo_data_Y_xyY(&v, T, t.luma), t.level);
    EXPECT_EQ(bits(v), bits(entry(T, static_cast<float>(t.shown)))) << t.luma;
  }
  for (const float k : {1.0F, 5.0F, 600.5F, 1022.0F}) { // the table is linear in luminance between its levels
    const float luma = at(T[2], k);
    EXPECT_EQ(vexo_data_Y_xyY(&v, T, luma), k);
    EXPECT_EQ(v.d[2], luma);
  }
  const vexo_vector before = v;
  EXPECT_EQ(vexo_data_Y_xyY(&v, T, kNaN), -1.0F);
  T[2][1023] = kNaN;
  EXPECT_EQ(vexo_data_Y_xyY(&v, T, 2.0F), -1.0F);
  EXPECT_EQ(bits(v), bits(before));
}

TEST(Calibration, PredictionMixesTheChannelsAtClampedLevels) {
  vexo context = {{}, {}, {10.0F, 20.0F, 30.0F}};
  for (auto &channel : context.data) {
    fill_channel(channel);
    channel[2][0] = 0.001F; // light at level 0 tells that it was read
  }
  const struct {
    float drive[3], level[3];
  } cases[] = {{{1022.5F, 1023.0F, 0.0F}, {1022.5F, 1023.0F, 0.0F}},
               {{300.25F, 0.75F, 511.5F}, {300.25F, 0.75F, 511.5F}},
               {{-0.5F, 1023.5F, 5000.0F}, {0.0F, 1023.0F, 1023.0F}},
               {{-kInf, kInf, kNaN}, {0.0F, 1023.0F, 0.0F}}};
  vexo_vector v;
  vexo_vector expected;
  for (const auto &[drive, level] : cases) {
    vexo_vector red = channel_xyY(&context, 0, level[0]);
    vexo_vector green = channel_xyY(&context, 1, level[1]);
    vexo_vector blue = channel_xyY(&context, 2, level[2]);
    vexo_xyY_mix_3(&red, &green, &blue, &expected);
    EXPECT_EQ(vexo_get_xyY(&v, &context, drive[0], drive[1], drive[2]), 0);
    EXPECT_EQ(bits(v), bits(expected)) << drive[0];
  }
  Luts luts(3, 0.25F);
  luts.lut[0].d[0] = 0.0F;
  luts.lut[1].d[2] = 1.0F;
  luts.lut[2].d[0] = 0.5F;
  vexo_lut_get_xyY(&v, &context, luts.lut, 0.5F, 7.0F, kNaN);
  vexo_get_xyY(&expected, &context, 127.875F, 1023.0F, 511.5F);
  EXPECT_EQ(bits(v), bits(expected));

  context = vexo{};
  vexo_get_xyY(&v, &context, 0.0F, 0.0F, 0.0F);
  EXPECT_EQ(bits(v), bits(vexo_vector{}));
}

TEST(Calibration, PeakWhiteIsTheNearestOfTheSearchedCubes) {
  Trial trial(vexo_generate_lut, sample_panel());
  const struct {
    vexo_vector target;
    int passes;
  } cases[] = {
      {{{0.3096F, 0.3191F}}, 1}, {{{0.3150F, 0.3250F}}, 2}, {{{0.3200F, 0.3290F}}, 3}, {{{0.2900F, 0.3100F}}, 5}};
  for (const auto &t : cases) {
    std::array<int, 3> top;
    std::array<int, 3> nearest = {1023, 1023, 1023};
    float least = 2.0F;
    int passes = 0;
    do {
      top = nearest;
      passes++;
      for (int n = 0; n < 33 * 33 * 33; n++) { // highest red, then green, then blue first
        const std::array<int, 3> level = {top[0] - n / (33 * 33), top[1] - n / 33 % 33, top[2] - n % 33};
        vexo_vector v;
        vexo_get_xyY(&v, &trial.context, static_cast<float>(level[0]), static_cast<float>(level[1]),
                     static_cast<float>(level[2]));
        if (squared_distance(v, t.target) < least) {
          least = squared_distance(v, t.target);
          nearest = level;
        }
      }
    } while (nearest[0] == top[0] - 32 || nearest[1] == top[1] - 32 || nearest[2] == top[2] - 32);
    EXPECT_EQ(passes, t.passes);
    const vexo_vector gains = gains_for(&trial.context, t.target);
    for (size_t c = 0; c < 3; c++) {
      EXPECT_EQ(gains.d[c], static_cast<float>(nearest[c] / 1023.0)) << c;
    }
  }
}

TEST(Calibration, PeakWhiteEndsAtZeroAndKeepsTheBrightestOfEquals) {
  Trial trial(vexo_generate_lut, sample_panel());
  const vexo_vector red = entry(trial.context.data[0], 1023.0F);
  const vexo_vector gains = gains_for(&trial.context, red);
  EXPECT_EQ(gains.d[0], 1.0F);
  EXPECT_LT(std::max(gains.d[1], gains.d[2]), 0.01F);

  for (auto &channel : trial.context.data) { // all channels alike: every candidate is equally near
    std::fill(channel[0], channel[0] + 1024, 0.25F);
    std::fill(channel[1], channel[1] + 1024, 0.5F);
  }
  for (const vexo_vector target : {red, vexo_vector{{kNaN, 0.3F, 0.0F}}, vexo_vector{{9.0F, 0.3F, 0.0F}}}) {
    EXPECT_EQ(bits(gains_for(&trial.context, target)), bits(vexo_vector{{1.0F, 1.0F, 1.0F}}));
  }
}

TEST(Calibration, AdjustWbFindsLinearRgb) {
  const float R[] = {132.5F, 69.0F, 5.5F}; // all readings with the black
  const float G[] = {101.5F, 209.5F, 33.5F};
  const float B[] = {59.5F, 24.0F, 312.5F};
  const float W[] = {292.5F, 301.5F, 350.5F}; // 301 above black
  const float D[] = {0.5F, 0.5F, 0.5F};
  // A fifth of the red's light, half of the green's and nine tenths of the blue's.
  vexo_vector rgb = {{(26.4F + 50.5F + 53.1F) / 301.0F, (13.7F + 104.5F + 21.15F) / 301.0F, 298.3F / 301.0F}};
  EXPECT_EQ(vexo_adjust_wb(R, G, B, W, D, 2.0F * W[1], &rgb), 0);
  EXPECT_NEAR(rgb.d[0], 0.4F, 1e-5F);
  EXPECT_NEAR(rgb.d[1], 1.0F, 1e-5F);
  EXPECT_NEAR(rgb.d[2], 1.8F, 1e-5F);
  const vexo_vector before = rgb;
  EXPECT_EQ(vexo_adjust_wb(D, G, B, W, D, 1.0F, &rgb), -1); // red shows nothing
  EXPECT_EQ(vexo_adjust_wb(R, G, G, W, D, 1.0F, &rgb), -1); // two primaries alike
  EXPECT_EQ(bits(rgb), bits(before));
}

void expect_refused(Recipe recipe, const vexo_lcnr &lcnr, const std::string &what) {
  diagnostics([&] { // the aligned recipe may say that it lowered readings
    const Trial trial(recipe, lcnr);
    EXPECT_EQ(trial.status, -1) << what;
    EXPECT_EQ(trial.out.d, Luts().d) << what;
  });
}

TEST(Calibration, UnusableMeasurementsLeaveTheLutsAlone) {
  const vexo_lcnr good = panel_model::measure(desktop_panel(), 64);
  const struct {
    int num, row;
    float level;
  } levels[] = {{0, 0, 0.0F},   {1, 0, 0.0F},  {-5, 0, 0.0F},  {65, 0, 0.0F},           {2, 1, 0.0F},
                {2, 1, 1e-38F}, {64, 0, 1.0F}, {64, 0, -1.0F}, {64, 5, good.sample[4]}, {64, 5, good.sample[7]}};
  for (const Recipe recipe : {vexo_generate_lut, vexo_data_alignment}) {
    for (const auto &t : levels) {
      vexo_lcnr lcnr = good;
      lcnr.num = t.num;
      lcnr.sample[t.row] = t.level;
      expect_refused(recipe, lcnr, std::to_string(t.num) + " rows, level " + std::to_string(t.level));
    }
    for (const int row : {0, 7, 63}) {
      for (const float bad : {kNaN, kInf, -kInf}) {
        vexo_lcnr lcnr = good;
        lcnr.sample[row] = bad;
        expect_refused(recipe, lcnr, std::to_string(bad) + " as level");
        for (int n = 0; n < 9; n++) {
          lcnr = good;
          lcnr.data[n / 3][n % 3][row] = bad;
          // An infinite reading with others above it is one that falls, which the aligned recipe lowers.
          if (recipe == vexo_generate_lut || bad != kInf || row == 63) {
            expect_refused(recipe, lcnr, std::to_string(bad) + " in column " + std::to_string(n));
          }
        }
      }
    }
    for (int c = 0; c < 3; c++) {
      vexo_lcnr lcnr = good;
      for (auto &component : lcnr.data[c]) {
        component[1] = component[0];
      }
      expect_refused(recipe, lcnr, "a row not above black");
    }
  }
}

TEST(Calibration, WrongSizeOrTargetFailsAfterTheDirectMergeAndBeforeTheAligned) {
  const std::string size_error = "vexo_gray_tracking: LUT size error.\n";
  const struct {
    int size;
    Target target;
    std::string message;
  } cases[] = {{1023, kD65, size_error}, {1025, kD65, size_error}, {1024, {kNaN, 0.3F}, ""}};
  for (const auto &t : cases) {
    const auto direct_recipe = [&] {
      const Trial direct(vexo_generate_lut, sample_panel(), t.target, t.size);
      EXPECT_EQ(direct.status, -1) << t.size;
      EXPECT_NE(direct.out.d, Luts(t.size).d) << t.size;
    };
    const auto aligned_recipe = [&] {
      const Trial aligned(vexo_data_alignment, sample_panel(), t.target, t.size);
      EXPECT_EQ(aligned.status, -1) << t.size;
      EXPECT_EQ(aligned.out.d, Luts(t.size).d) << t.size;
    };
    EXPECT_EQ(diagnostics(direct_recipe), t.message) << t.size;
    EXPECT_EQ(diagnostics(aligned_recipe), t.message) << t.size;
  }
}

TEST(Calibration, AlignedRecipeLowersReadingsThatFallAndSaysSo) {
  vexo_lcnr rising = sample_panel();
  vexo_lcnr falling = rising;
  falling.data[1][1][20] = 1000.0F;
  rising.data[1][1][20] = rising.data[1][1][21];
  falling.data[2][0][5] = kInf;
  rising.data[2][0][5] = rising.data[2][0][6];
  const auto message = [&](const vexo_lcnr &readings) {
    return diagnostics([&] {
      const Trial trial(vexo_data_alignment, readings);
      static const std::vector<float> expected = trial.out.d; // of the first trial
      EXPECT_EQ(trial.status, 0);
      EXPECT_EQ(trial.out.d, expected);
      EXPECT_EQ(std::memcmp(&trial.context.lcnr, &rising, sizeof rising), 0);
    });
  };
  EXPECT_EQ(message(rising), "");
  EXPECT_EQ(message(falling), "Warning: lcnr data not normalized\n");
}

TEST(Calibration, SamplePanelIsWhatItsGeneratorWrites) {
  const std::string path = testing::TempDir() + "vexo-sample-panel.xml";
  vexo_lcnr made = sample_panel();
  vexo_lcnr written = {};
  vexo_lcnr committed = {};
  ASSERT_EQ(vexo_store_lcnr_xml(&made, path.c_str()), 0);
  ASSERT_EQ(vexo_load_lcnr_xml(&written, path.c_str()), 0);
  ASSERT_EQ(vexo_load_lcnr_xml(&committed, VEXO_EXAMPLES "/sample-panel.xml"), 0);
  std::remove(path.c_str());
  EXPECT_EQ(written.num, committed.num);
  EXPECT_EQ(vexo_lcnr_sanity_check(&committed), 0);
  // Mathematics libraries differ in the last bits of a double, so on another host a reading may come out as the next
  // float, or as the next of its six decimals.
  for (int i = 0; i < committed.num; i++) {
    EXPECT_EQ(written.sample[i], committed.sample[i]);
    for (int n = 0; n < 9; n++) {
      const float a = written.data[n / 3][n % 3][i];
      const float b = committed.data[n / 3][n % 3][i];
      EXPECT_TRUE(std::abs(a - b) < 1.5e-6F || std::nextafter(a, b) == b) << i << ' ' << n;
    }
  }
}

} // namespace
