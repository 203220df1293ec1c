// Conditioning and the recipes on simulated panels with the troubles of real ones. Judged by what the panel really
// shows through the LUTs, not by the model that made them.
#include <map>

#include "tool/tool.h"
#include "tool/truth.h"

namespace {

// A desktop panel whose channels do nothing below one drive and nothing more above another, and whose colours drift as
// many times as much as usual.
Light panel(const Color &cut = {0.0, 0.0, 0.0}, double clip = 1.0, double drift = 1.0) {
  panel_model::Panel model = panel_model::desktop_panel();
  for (auto &channel : model.channel) {
    for (double &d : channel.drift) {
      d *= drift;
    }
  }
  return [=](Color drive) {
    for (size_t c = 0; c < 3; c++) {
      drive[c] = std::clamp((drive[c] - cut[c]) / (clip - cut[c]), 0.0, 1.0);
    }
    return panel_model::light(model, drive);
  };
}

const char *const kRecipes[] = {"aligned", "direct", "solve"};

class Solve : public Tool {
protected:
  Result calibrate(vexo_lcnr lcnr, const std::string &options = "") const {
    vexo_store_lcnr_xml(&lcnr, path("troubled.xml").c_str());
    return run("calibrate troubled.xml -o luts.txt --bits 16 " + options);
  }

  Luts luts() const { return luts_of(contents(path("luts.txt"))); }

  // What the last LUTs make of the true panel.
  Differences shown(const Light &light, double from = 0.1, double to = 2.0) const {
    return differences(light, luts(), peak_of(light, luts()), from, to);
  }

  // The same without LUTs, at the luminance that they leave.
  Differences bare(const Light &light) const { return differences(light, {}, peak_of(light, luts())); }
};

// A figure of the summary: mean and worst before, mean and worst after.
double figure(const std::string &text, const std::string &label, int column) {
  std::istringstream in(text.substr(text.find(label) + label.size()));
  double value = std::nan("");
  for (int i = 0; i <= column; i++) {
    in >> value;
  }
  return value;
}

} // namespace

TEST_F(Solve, EveryTroubledPanelCalibratesTowardsTheTarget) {
  const Light clean = panel();
  const Light cut = panel({0.0, 0.2, 0.0});
  const Light clipped = panel({0.0, 0.0, 0.0}, 0.9);
  const Light both = panel({0.1, 0.15, 0.05}, 0.9);
  vexo_lcnr below = measured_channels(clean, 17);
  vexo_lcnr falling = measured_channels(clean, 17, {0.002, 0.0});
  vexo_lcnr dropout = measured_channels(clean, 17);
  for (int i = 0; i < 17; i++) {
    below.data[0][2][i] = i == 0 ? 0.42F : 0.4F; // red Z
  }
  falling.data[0][2][9] = falling.data[0][2][10] * 1.01F;
  dropout.data[2][0][8] = dropout.data[2][1][8] = dropout.data[2][2][8] = 0.0F;
  const struct {
    const char *name;
    Light truth;
    vexo_lcnr lcnr;
    const char *note; // empty: nothing to do
  } cases[] = {
      {"read noise", clean, measured_channels(clean, 33, {0.0, 0.05}), "left out as noise near black"},
      {"cut off", cut, measured_channels(cut, 33, {0.0, 0.002}), "left out as noise near black"},
      {"clipped", clipped, measured_channels(clipped, 21), ""},
      {"cut off and clipped", both, measured_channels(both, 33, {0.001, 0.005}), "left out as noise near black"},
      {"component below black", clean, below, "16 values of red raised, from level 15.9375 to 255"},
      {"falling", clean, falling, "1 value of red lowered, at level 143.438"},
      {"dropout", clean, dropout, "3 rows left out as noise near black, from level 15.9375 to 127.5"},
      {"few rows", clean, measured_channels(clean, 6), ""},
      {"as it should be", clean, measured_channels(clean, 33), ""},
  };
  for (const auto &c : cases) {
    std::map<std::string, double> mean;
    for (const std::string recipe : kRecipes) {
      SCOPED_TRACE(c.name + (" " + recipe));
      const Result r = calibrate(c.lcnr, "--recipe " + recipe);
      ASSERT_EQ(r.code, 0) << r.err;
      EXPECT_EQ(r.err.empty(), *c.note == '\0') << r.err;
      EXPECT_TRUE(has(r.err, c.note)) << r.err;
      mean[recipe] = shown(c.truth).mean;
      EXPECT_LT(mean[recipe], bare(c.truth).mean / 2.0);
      EXPECT_TRUE(recipe != "solve" || rises(luts()));
      const std::string conditioned = contents(path("luts.txt"));
      if (*c.note == '\0') { // with nothing to do, conditioning does nothing
        calibrate(c.lcnr, "--condition off --recipe " + recipe);
        EXPECT_EQ(contents(path("luts.txt")), conditioned);
      }
    }
    EXPECT_LE(mean["solve"], mean["aligned"]) << c.name;
  }
}

TEST_F(Solve, FollowsDriftThatTheOtherRecipesCannot) {
  for (const double drift : {0.0, 1.0, 3.0}) {
    const Light truth = panel({0.0, 0.0, 0.0}, 1.0, drift);
    std::map<std::string, Differences> all;
    std::map<std::string, double> dark;
    for (const std::string recipe : kRecipes) {
      const Result r = calibrate(measured_channels(truth, 33), "--recipe " + recipe);
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
  const Light truth = panel();
  ASSERT_EQ(calibrate(measured_channels(truth, 11), "--recipe aligned").code, 0);
  const double aligned = shown(truth, 0.0, 0.1).mean;
  ASSERT_EQ(calibrate(measured_channels(truth, 11)).code, 0);
  EXPECT_LT(shown(truth, 0.0, 0.1).mean, 0.85 * aligned);
  for (size_t c = 0; c < 3; c++) {
    EXPECT_NEAR(luts()[51][c], luts()[102][c] / 2.0, 1.0 / 65535.0);
  }
}

// The search in steps of the library's recipes is content with less.
TEST_F(Solve, WhiteIsTheBrightestThatThePanelHas) {
  const Light truth = panel({0.0, 0.0, 0.0}, 1.0, 0.0);
  ASSERT_EQ(calibrate(measured_channels(truth, 33)).code, 0);
  const Color top = luts().back();
  EXPECT_EQ(*std::max_element(top.begin(), top.end()), 1.0);
  const Color white = truth(top);
  EXPECT_NEAR(white[0] / white[1], target(1.0, 1.0)[0], 2e-3);
  EXPECT_NEAR(white[2] / white[1], target(1.0, 1.0)[2], 2e-3);
}

TEST_F(Solve, DrivesNoChannelBeyondItsFullLight) {
  const Light clipped = panel({0.0, 0.0, 0.0}, 0.8);
  ASSERT_EQ(calibrate(measured_channels(clipped, 21)).code, 0);
  const Luts rows = luts();
  for (size_t i = 0; i < rows.size(); i++) {
    EXPECT_LE(*std::max_element(rows[i].begin(), rows[i].end()), 0.8 + 1.0 / 65535.0) << i;
  }
}

TEST_F(Solve, WarnsWhenThePanelWasBetterWithoutLuts) {
  const Light truth = panel({0.0, 0.0, 0.0}, 1.0, 3.0);
  ASSERT_EQ(calibrate(measured_channels(truth, 33)).code, 0);
  const Luts rows = luts();
  const auto through = [&](const Color &drive) { // the panel with its LUTs in the hardware
    return truth({drives(rows, drive[0])[0], drives(rows, drive[1])[1], drives(rows, drive[2])[2]});
  };
  const Result aligned = calibrate(measured_channels(through, 34), "--recipe aligned");
  EXPECT_EQ(aligned.code, 1);
  EXPECT_TRUE(has(aligned.err, "the LUTs make the gray ramp worse: mean CIEDE2000 ")) << aligned.out;
  EXPECT_TRUE(has(aligned.err, "(predicted, channels assumed to add); luts.txt was written\n")) << aligned.err;
  EXPECT_EQ(calibrate(measured_channels(through, 34)).err, "");
}
