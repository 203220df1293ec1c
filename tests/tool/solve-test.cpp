// Conditioning and the solve recipe on simulated panels with the troubles of real ones. Judged by what the panel really
// shows through the LUTs, not by the model that made them.
#include <array>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "panel-model.h"
#include "tool/tool.h"
#include "tool/truth.h"

namespace {

using panel_model::Color;
using panel_model::Panel;

const int kMaxCode = 65535;

// A panel whose channels do nothing below one drive and nothing more above another.
struct Troubled {
  Panel panel = panel_model::desktop_panel();
  std::array<double, 3> cut = {0.0, 0.0, 0.0};
  std::array<double, 3> clip = {1.0, 1.0, 1.0};

  Color light(Color drive) const {
    for (size_t c = 0; c < 3; c++) {
      drive[c] = std::clamp((drive[c] - cut[c]) / (clip[c] - cut[c]), 0.0, 1.0);
    }
    return panel_model::light(panel, drive);
  }

  // Rows spread evenly over levels 0 to 255. Black is read once.
  vexo_lcnr measure(int rows, const panel_model::Noise &noise = {}) const {
    vexo_lcnr lcnr = {};
    lcnr.num = rows;
    panel_model::Normal normal;
    for (int i = 0; i < rows; i++) {
      lcnr.sample[i] = static_cast<float>(255.0 * i / (rows - 1));
      for (size_t c = 0; c < 3; c++) {
        Color drive = {};
        drive[c] = static_cast<double>(i) / (rows - 1);
        const Color shown = light(drive);
        for (size_t m = 0; m < 3; m++) {
          const double value = (panel.black[m] + shown[m]) * (1.0 + noise.relative * normal()) + noise.read * normal();
          lcnr.data[c][m][i] = i == 0 && c > 0 ? lcnr.data[0][m][0] : static_cast<float>(value);
        }
      }
    }
    return lcnr;
  }
};

Panel with_drift(Panel panel, double factor) {
  for (auto &channel : panel.channel) {
    for (double &d : channel.drift) {
      d *= factor;
    }
  }
  return panel;
}

// A figure of the summary: mean and worst before, mean and worst after.
double figure(const std::string &text, const std::string &label, int column) {
  std::istringstream in(text.substr(text.find(label) + label.size()));
  double value = std::nan("");
  for (int i = 0; i <= column; i++) {
    in >> value;
  }
  return value;
}

class Solve : public Tool {
protected:
  Result calibrate(vexo_lcnr lcnr, const std::string &options) const {
    vexo_store_lcnr_xml(&lcnr, path("troubled.xml").c_str());
    std::remove(path("luts.txt").c_str());
    const bool depth = has(options, "--bits");
    return run("calibrate troubled.xml -o luts.txt " + options + (depth ? "" : " --bits 16"));
  }

  std::vector<std::vector<int>> codes() const { return ::codes(contents(path("luts.txt"))); }

  // What the last LUTs make of the true panel, from an input up to below another.
  Differences shown(const Troubled &troubled, double from = 0.1, double to = 2.0) const {
    return differences(troubled, codes(), from, to);
  }

  // The same without LUTs, at the luminance that they leave.
  Differences bare(const Troubled &troubled) const { return differences(troubled, {}, 0.1, 2.0); }

private:
  Differences differences(const Troubled &troubled, const std::vector<std::vector<int>> &luts, double from,
                          double to) const {
    const auto top = codes().back();
    const double peak =
        troubled.light({top[0] / double{kMaxCode}, top[1] / double{kMaxCode}, top[2] / double{kMaxCode}})[1];
    return true_differences([&](const Color &drive) { return troubled.light(drive); }, luts, kMaxCode, peak, from, to);
  }
};

} // namespace

TEST_F(Solve, EveryTroubledPanelCalibratesTowardsTheTarget) {
  Troubled cut;
  cut.cut = {0.0, 0.2, 0.0};
  Troubled clipped;
  clipped.clip = {0.9, 0.9, 0.9};
  Troubled both = clipped;
  both.cut = {0.1, 0.15, 0.05};
  vexo_lcnr below = Troubled().measure(17);
  vexo_lcnr falling = Troubled().measure(17, {0.002, 0.0});
  vexo_lcnr dropout = Troubled().measure(17);
  for (int i = 0; i < 17; i++) {
    below.data[0][2][i] = i == 0 ? 0.42F : 0.4F; // red Z
  }
  falling.data[0][2][9] = falling.data[0][2][10] * 1.01F;
  dropout.data[2][0][8] = dropout.data[2][1][8] = dropout.data[2][2][8] = 0.0F;
  const struct {
    const char *name;
    Troubled truth;
    vexo_lcnr lcnr;
    const char *note; // empty: nothing to do
  } cases[] = {
      {"read noise", {}, Troubled().measure(33, {0.0, 0.05}), "left out as noise near black"},
      {"cut off", cut, cut.measure(33, {0.0, 0.002}), "left out as noise near black"},
      {"clipped", clipped, clipped.measure(21), ""},
      {"cut off and clipped", both, both.measure(33, {0.001, 0.005}), "left out as noise near black"},
      {"component below black", {}, below, "16 values of red raised, from level 15.9375 to 255"},
      {"falling", {}, falling, "1 value of red lowered, at level 143.438"},
      {"dropout", {}, dropout, "3 rows left out as noise near black, from level 15.9375 to 127.5"},
      {"few rows", {}, Troubled().measure(6), ""},
  };
  for (const auto &c : cases) {
    std::map<std::string, double> mean;
    for (const std::string recipe : {"aligned", "direct", "solve"}) {
      const Result r = calibrate(c.lcnr, "--recipe " + recipe);
      ASSERT_EQ(r.code, 0) << c.name << recipe << r.err;
      EXPECT_EQ(r.err.empty(), *c.note == '\0') << c.name << r.err;
      EXPECT_TRUE(has(r.err, c.note)) << c.name << r.err;
      EXPECT_FALSE(has(r.err, "not normalized")) << c.name << r.err;
      mean[recipe] = shown(c.truth).mean;
      EXPECT_LT(mean[recipe], bare(c.truth).mean / 2.0) << c.name << recipe;
      const auto rows = codes();
      for (size_t i = 1; i < rows.size() && recipe == "solve"; i++) {
        EXPECT_TRUE(rows[i - 1][0] <= rows[i][0] && rows[i - 1][1] <= rows[i][1] && rows[i - 1][2] <= rows[i][2])
            << c.name << " entry " << i;
      }
    }
    EXPECT_LE(mean["solve"], mean["aligned"]) << c.name;
  }
}

TEST_F(Solve, FollowsDriftThatTheOtherRecipesCannot) {
  for (const double drift : {0.0, 1.0, 3.0}) {
    const Troubled truth = {with_drift(panel_model::desktop_panel(), drift)};
    std::map<std::string, Differences> all;
    std::map<std::string, double> dark;
    for (const std::string recipe : {"aligned", "direct", "solve"}) {
      const Result r = calibrate(truth.measure(33), "--recipe " + recipe);
      ASSERT_EQ(r.code, 0) << r.err;
      all[recipe] = shown(truth);
      dark[recipe] = shown(truth, 0.0, 0.1).mean;
      if (recipe == "solve") {
        EXPECT_LT(figure(r.out, "before rounding to codes", 0), 0.005) << r.out;
        EXPECT_NEAR(figure(r.out, "colour difference", 0), bare(truth).mean, 0.02) << r.out;
        EXPECT_LT(figure(r.out, "colour difference", 2), 0.05) << r.out;
      }
    }
    const double gain = drift > 0.0 ? 0.2 : 1.02; // without drift all do well
    EXPECT_LE(all["solve"].mean, gain * std::min(all["aligned"].mean, all["direct"].mean)) << drift;
    EXPECT_LE(all["solve"].worst, all["aligned"].worst * 1.02) << drift;
    EXPECT_LE(dark["solve"], dark["aligned"] * 1.02) << drift;
  }
}

TEST_F(Solve, GoesToBlackInStraightLinesBelowTheLowestRow) {
  const Troubled truth;
  ASSERT_EQ(calibrate(truth.measure(11), "--recipe aligned").code, 0);
  const double aligned = shown(truth, 0.0, 0.1).mean;
  ASSERT_EQ(calibrate(truth.measure(11), "--recipe solve").code, 0);
  EXPECT_LT(shown(truth, 0.0, 0.1).mean, 0.85 * aligned);
  const auto rows = codes();
  for (size_t c = 0; c < 3; c++) {
    EXPECT_NEAR(rows[51][c], rows[102][c] / 2.0, 1.0);
  }
}

TEST_F(Solve, WhiteIsTheBrightestThatThePanelHas) {
  // The search in steps is content with less.
  const Troubled truth = {with_drift(panel_model::desktop_panel(), 0.0)};
  ASSERT_EQ(calibrate(truth.measure(33), "--recipe solve").code, 0);
  const auto top = codes().back();
  EXPECT_EQ(*std::max_element(top.begin(), top.end()), kMaxCode);
  const Color shown = truth.light({top[0] / double{kMaxCode}, top[1] / double{kMaxCode}, top[2] / double{kMaxCode}});
  EXPECT_NEAR(shown[0] / shown[1], 0.3127 / 0.3290, 2e-3);
  EXPECT_NEAR(shown[2] / shown[1], 0.3583 / 0.3290, 2e-3);
}

TEST_F(Solve, LeavesCleanPanelsAlone) {
  const vexo_lcnr clean = Troubled().measure(33);
  for (const std::string recipe : {"aligned", "direct", "solve"}) {
    const Result on = calibrate(clean, "--recipe " + recipe);
    const std::string luts = contents(path("luts.txt"));
    const Result off = calibrate(clean, "--condition off --recipe " + recipe);
    EXPECT_EQ(on.err, "");
    EXPECT_EQ(luts, contents(path("luts.txt")));
  }
}

TEST_F(Solve, SaysWhatItCannotDo) {
  vexo_lcnr near = Troubled().measure(17);
  near.sample[1] = 0.1F; // of 255: no table level of its own
  EXPECT_TRUE(has(calibrate(near, "-v").err, "row 1 (level 0.1) is left out: its level is nearer to black"));

  vexo_lcnr faint = Troubled().measure(17);
  faint.data[0][2][1] = faint.data[0][2][0] - 0.05F; // so noise is that deep,
  faint.data[2][2][1] = faint.data[2][2][0] + 0.08F; // and this may be noise as well
  EXPECT_TRUE(has(calibrate(faint, "-v").err, "row 1 (level 15.9375) is left out: blue Z is 0.5, not credibly above"));

  Troubled clipped;
  clipped.clip = {0.8, 0.8, 0.8};
  const Result below = calibrate(clipped.measure(21), "");
  EXPECT_TRUE(has(below.out, "no drive above level 204, which gives full light already")) << below.out << below.err;
  for (const auto &row : codes()) {
    EXPECT_LE(*std::max_element(row.begin(), row.end()), kMaxCode * 4 / 5 + 1);
  }

  clipped.clip = {1.0, 1.0, 0.8};
  clipped.panel.channel[2].full = {80.0, 32.0, 425.0};
  const Result one = calibrate(clipped.measure(21), "--recipe aligned");
  EXPECT_EQ(one.code, 1);
  EXPECT_TRUE(has(one.err, "the aligned recipe did not find white D65, --recipe solve does")) << one.err;
  EXPECT_EQ(calibrate(clipped.measure(21), "--recipe solve").code, 0);

  const Result two = calibrate(Troubled().measure(2), "--recipe aligned");
  EXPECT_TRUE(has(two.err, "vexo: the LUT of blue falls at ")) << two.err;

  vexo_lcnr bent = Troubled().measure(17);
  bent.data[1][0][9] = bent.data[1][0][10];
  const Result held = calibrate(bent, "--recipe solve");
  EXPECT_TRUE(has(held.out, "keep the target's luminance but cannot show its white")) << held.out;
}

TEST_F(Solve, WarnsWhenThePanelWasBetterWithoutLuts) {
  const Troubled truth = {with_drift(panel_model::desktop_panel(), 3.0)};
  ASSERT_EQ(calibrate(truth.measure(33), "--recipe solve").code, 0);
  const auto luts = codes();
  vexo_lcnr through = {}; // the panel measured through its calibration
  through.num = 34;
  for (int i = 0; i < through.num; i++) {
    through.sample[i] = static_cast<float>(i);
    for (size_t c = 0; c < 3; c++) {
      Color drive = {};
      drive[c] = luts[static_cast<size_t>(i) * 31][c] / double{kMaxCode};
      const Color light = truth.light(drive);
      for (size_t m = 0; m < 3; m++) {
        through.data[c][m][i] = static_cast<float>(light[m] + truth.panel.black[m]);
      }
    }
  }
  const Result aligned = calibrate(through, "--recipe aligned");
  EXPECT_EQ(aligned.code, 1);
  EXPECT_TRUE(has(aligned.err, "the LUTs make the gray ramp worse: mean CIEDE2000 ")) << aligned.out;
  EXPECT_TRUE(has(aligned.err, "(predicted, channels assumed to add); luts.txt was written\n")) << aligned.err;
  EXPECT_EQ(calibrate(through, "").err, "");
}
