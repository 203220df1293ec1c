// Panel calibration, judged by the true light of simulated panels and, where the arithmetic is prescribed, by bits.
#include "vexo.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "bits.h"
#include "library/calls.h"
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

std::vector<float> values(const vexo_vector &v) { return std::vector<float>(v.d, v.d + 3); }

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

float at(float *table, float level) {
  const vexo_lut lut = {1024, table};
  return vexo_lut_evaluate(&lut, level);
}

vexo_vector entry(float (*T)[1024], float level) {
  return vexo_vector{{at(T[0], level), at(T[1], level), at(T[2], level)}};
}

vexo_vector gains_for(vexo *context, vexo_vector target) {
  vexo_vector gains;
  EXPECT_EQ(vexo_peak_white_adjust(&gains, context, &target), 0);
  return gains;
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

TEST(Calibration, LevelOfALuminanceInvertsTheTable) {
  float T[3][1024]; // light that rises as (k / 1024)^2, exactly, while its chromaticity moves
  for (int k = 0; k < 1024; k++) {
    const float u = static_cast<float>(k) / 1024.0F;
    T[0][k] = 0.3F + 0.1F * u;
    T[1][k] = 0.6F - 0.3F * u;
    T[2][k] = u * u;
  }
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
    EXPECT_EQ(values(v), values(entry(T, static_cast<float>(t.shown)))) << t.luma;
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
  EXPECT_EQ(values(v), values(before));
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
    EXPECT_EQ(values(gains_for(&trial.context, target)), values(vexo_vector{{1.0F, 1.0F, 1.0F}}));
  }
}

TEST(Calibration, UnusableMeasurementsLeaveTheLutsAlone) {
  const vexo_lcnr good = panel_model::measure(desktop_panel(), 64);
  std::vector<vexo_lcnr> unusable;
  std::vector<vexo_lcnr> falling; // an infinite reading with others above it, which the aligned recipe lowers
  const struct {
    int num, row;
    float level;
  } levels[] = {{0, 0, 0.0F},   {1, 0, 0.0F},  {-5, 0, 0.0F},  {65, 0, 0.0F},           {2, 1, 0.0F},
                {2, 1, 1e-38F}, {64, 0, 1.0F}, {64, 0, -1.0F}, {64, 5, good.sample[4]}, {64, 5, good.sample[7]}};
  for (const auto &t : levels) {
    unusable.push_back(good);
    unusable.back().num = t.num;
    unusable.back().sample[t.row] = t.level;
  }
  for (int n = 0; n < 9 * 10; n++) { // the columns of readings, and that of levels
    const int row = n % 3 * 31;
    const float bad = n / 3 % 3 == 0 ? kNaN : n / 3 % 3 == 1 ? kInf : -kInf;
    auto &list = n < 81 && bad == kInf && row < 62 ? falling : unusable;
    list.push_back(good);
    list.back().num = 63;
    (&list.back().data[0][0][0])[n / 9 * 64 + row] = bad;
  }
  for (auto &channel : good.data) { // one that shows no more than black at row 1
    unusable.push_back(good);
    for (int m = 0; m < 3; m++) {
      unusable.back().data[&channel - good.data][m][1] = channel[m][0];
    }
  }
  unusable.push_back(good); // a reading and a level that would lead far away
  unusable.back().data[0][0][0] = kNaN;
  unusable.back().sample[5] = -3e9F;
  const auto expect_refused = [](Recipe recipe, const std::vector<vexo_lcnr> &list) {
    for (const vexo_lcnr &lcnr : list) {
      const Trial trial(recipe, lcnr);
      EXPECT_EQ(trial.status, -1) << &lcnr - list.data();
      EXPECT_EQ(trial.out.d, Luts().d) << &lcnr - list.data();
    }
  };
  diagnostics([&] { // readings that fall are reported
    expect_refused(vexo_generate_lut, unusable);
    expect_refused(vexo_generate_lut, falling);
    expect_refused(vexo_data_alignment, unusable);
  });
}

TEST(Calibration, WrongSizeOrTargetFailsAfterTheDirectMergeAndBeforeTheAligned) {
  const std::string size_error = "vexo_gray_tracking: LUT size error.\n";
  const struct {
    int size;
    Target target;
    std::string message;
  } cases[] = {{1023, kD65, size_error}, {1025, kD65, size_error}, {1024, {kNaN, 0.3F}, ""}};
  for (const auto &t : cases) {
    for (const Recipe recipe : {vexo_generate_lut, vexo_data_alignment}) {
      EXPECT_EQ(diagnostics([&] {
                  const Trial trial(recipe, sample_panel(), t.target, t.size);
                  EXPECT_EQ(trial.status, -1) << t.size;
                  EXPECT_EQ(trial.out.d == Luts(t.size).d, recipe == vexo_data_alignment) << t.size;
                }),
                t.message)
          << t.size;
    }
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
      EXPECT_EQ(bits(trial.context.lcnr), bits(rising));
    });
  };
  EXPECT_EQ(message(rising), "");
  EXPECT_EQ(message(falling), "Warning: lcnr data not normalized\n");
}

} // namespace
