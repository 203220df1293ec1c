// Panels whose channels do not add, in several ways: calibrated from a measured gray ramp, then refined from the ramp
// that they show through the LUTs. Judged by what the panel really shows.
#include <functional>
#include <string>
#include <vector>

#include "panel-model.h"
#include "tool/tool.h"
#include "tool/truth.h"

namespace {

using panel_model::Color;

const panel_model::Noise kNoise = {0.002, 0.002};

// The three channels at three drives: the light of each alone, as a part of its full light, and their sum.
struct Mixture {
  Color drives;
  Color given;
  Color sum;
};

struct Kind {
  const char *name;
  std::function<Color(const Mixture &)> show; // what the panel makes of a mixture
  double additive;                            // the least mean CIEDE2000 where the channels are taken to add
  double with_grays;                          // the most with measured grays
  double refined;                             // the most after one refinement from noisy readings
};

double lerp(double a, double b, double t) { return a + (b - a) * t; }

// The channels' light scaled by factors that depend on a load of 0..1.
Color scaled(const Mixture &m, double load, const Color &at_full) {
  return {m.sum[0] * lerp(1.0, at_full[0], load), m.sum[1] * lerp(1.0, at_full[1], load),
          m.sum[2] * lerp(1.0, at_full[2], load)};
}

double at_least_two(const Color &g) {
  return std::max({std::min(g[0], g[1]), std::min(g[1], g[2]), std::min(g[0], g[2])});
}

const Kind kKinds[] = {
    {"the light of the whole picture limits the power",
     [](const Mixture &m) {
       const double load = std::max((m.given[0] + m.given[1] + m.given[2] - 1.0) / 2.0, 0.0);
       return scaled(m, load, {0.75, 0.75, 0.75});
     },
     1.0, 0.3, 0.6},
    {"white is tinted in proportion to the weighted drive",
     [](const Mixture &m) {
       const double u = 0.25 * m.drives[0] + 0.6 * m.drives[1] + 0.15 * m.drives[2];
       return at_least_two(m.given) > 0.0 ? scaled(m, u, {1.05, 0.96, 1.10}) : m.sum;
     },
     2.0, 0.65, 0.65},
    {"neighbours lend each other light",
     [](const Mixture &m) {
       const double pair = std::sqrt(m.given[0] * m.given[1]);
       return Color{m.sum[0] + 4.0 * pair, m.sum[1] + 7.0 * pair, m.sum[2] - 5.0 * std::sqrt(m.given[1] * m.given[2])};
     },
     1.0, 0.2, 0.5},
    {"a white pixel helps in the highlights",
     [](const Mixture &m) {
       const double white = std::min({m.given[0], m.given[1], m.given[2]});
       const double help = 60.0 * std::max(white - 0.4, 0.0);
       return Color{m.sum[0] + 0.93 * help, m.sum[1] + help, m.sum[2] + 1.2 * help};
     },
     1.0, 0.3, 0.5},
    {"the channels add", [](const Mixture &m) { return m.sum; }, 0.0, 0.15, 0.35},
};

class Refine : public Tool {
protected:
  static Color light(const Kind &kind, const Color &drives) {
    const panel_model::Panel panel = panel_model::desktop_panel();
    Mixture m = {drives, {}, panel_model::light(panel, drives)};
    for (size_t c = 0; c < 3; c++) {
      m.given[c] = panel_model::response(panel.channel[c], drives[c]);
    }
    return kind.show(m);
  }

  // A gray ramp of count levels, 0..255, bare or through luts.txt-like codes.
  void measure(const Kind &kind, const std::string &file, const std::vector<std::vector<int>> &luts, int count,
               const panel_model::Noise &noise) const {
    panel_model::Normal normal;
    std::string text = "level,X,Y,Z\n";
    for (int i = 0; i < count; i++) {
      const double input = static_cast<double>(i) / (count - 1);
      Color shown = light(kind, drives(luts, input));
      text += std::to_string(255.0 * input);
      for (size_t m = 0; m < 3; m++) {
        shown[m] += panel_model::desktop_panel().black[m];
        text += "," + std::to_string(shown[m] * (1.0 + noise.relative * normal()) + noise.read * normal());
      }
      text += "\n";
    }
    save(path(file), text);
  }

  static Color drives(const std::vector<std::vector<int>> &luts, double input) {
    if (luts.empty()) {
      return {input, input, input};
    }
    const double position = input * static_cast<double>(luts.size() - 1);
    const size_t n = std::min(static_cast<size_t>(position), luts.size() - 2);
    Color drive;
    for (size_t c = 0; c < 3; c++) {
      drive[c] = lerp(luts[n][c], luts[n + 1][c], position - static_cast<double>(n)) / 1023.0;
    }
    return drive;
  }

  Differences shown(const Kind &kind, const std::string &file) const {
    const auto luts = codes(contents(path(file)));
    const double peak = light(kind, drives(luts, 1.0))[1];
    return true_differences([&](const Color &d) { return light(kind, d); }, luts, 1023, peak, 0.1, 2.0);
  }

  // The panel file: its channels alone add.
  void SetUp() override {
    Tool::SetUp();
    vexo_lcnr lcnr = panel_model::measure(panel_model::desktop_panel(), 33);
    for (float &level : lcnr.sample) {
      level *= 255.0F / 1023.0F;
    }
    vexo_store_lcnr_xml(&lcnr, path("true.xml").c_str());
  }
};

} // namespace

TEST_F(Refine, FollowsPanelsWhoseChannelsDoNotAdd) {
  for (const Kind &kind : kKinds) {
    SCOPED_TRACE(kind.name);
    measure(kind, "bare.csv", {}, 33, {});
    ASSERT_EQ(run("calibrate true.xml -o additive.txt").code, 0);
    const Result grays = run("calibrate true.xml --gray bare.csv -o luts.txt");
    ASSERT_EQ(grays.code, 0) << grays.err;
    EXPECT_TRUE(has(grays.out, "predicted from measured grays (CIEDE2000 mean 0.")) << grays.out;
    EXPECT_GE(shown(kind, "additive.txt").mean, kind.additive);
    EXPECT_LE(shown(kind, "luts.txt").mean, kind.with_grays);
    EXPECT_LE(shown(kind, "luts.txt").mean, std::max(0.15, shown(kind, "additive.txt").mean / 3.0));

    for (const char *start : {"luts.txt", "additive.txt"}) { // with and without a ramp of the bare panel
      SCOPED_TRACE(start);
      const std::string known = start == std::string("luts.txt") ? " --gray bare.csv" : "";
      measure(kind, "noisy.csv", codes(contents(path(start))), 22, kNoise);
      const Result refined = run(std::string("refine true.xml ") + start + " noisy.csv -o refined.txt" + known);
      ASSERT_EQ(refined.code, 0) << refined.err;
      EXPECT_LE(shown(kind, "refined.txt").mean, kind.refined);
    }
  }
}

TEST_F(Refine, ConvergesAndStays) {
  for (const Kind &kind : kKinds) {
    SCOPED_TRACE(kind.name);
    ASSERT_EQ(run("calibrate true.xml -o luts0.txt").code, 0);
    double before = shown(kind, "luts0.txt").mean;
    for (int i = 0; i < 3; i++) {
      const std::string from = "luts" + std::to_string(i) + ".txt";
      const std::string to = "luts" + std::to_string(i + 1) + ".txt";
      measure(kind, "exact.csv", codes(contents(path(from))), 33, {});
      ASSERT_EQ(run("refine true.xml " + from + " exact.csv -o " + to).code, 0);
      const double now = shown(kind, to).mean;
      EXPECT_LE(now, before + 0.005) << i;
      before = now;
    }
    EXPECT_LE(before, kind.refined);
    EXPECT_EQ(contents(path("luts2.txt")), contents(path("luts3.txt"))); // nothing more to learn
  }
}

TEST_F(Refine, SaysWhatItCannotUse) {
  const Kind &kind = kKinds[0];
  measure(kind, "bare.csv", {}, 9, {});
  ASSERT_EQ(run("calibrate true.xml -o luts.txt").code, 0);
  const std::string bare = contents(path("bare.csv"));
  save(path("units.csv"), "0,0,0,0\n255,3,3.1,3.4\n");
  save(path("beyond.csv"), bare + "300,1,2,3\n");
  save(path("falling.csv"), bare + "17,1,2,3\n");
  save(path("dark.csv"), "0,1,1,1\n255,1,1,1\n");
  save(path("black.csv"), "0,2,2,2\n255,300,300,300\n");
  const struct {
    const char *arguments;
    int code;
    const char *message;
  } cases[] = {
      {"calibrate true.xml --gray units.csv", 3, "units.csv: its brightest gray has 0.0103 times the luminance"},
      {"calibrate true.xml --gray beyond.csv", 3, "beyond.csv: level 300, expected 0 to 255 as in the panel file"},
      {"calibrate true.xml --gray falling.csv", 3, "falling.csv: level 17 does not rise above 255"},
      {"gray true.xml --gray dark.csv", 3, "dark.csv: no gray above black"},
      {"calibrate true.xml --gray black.csv", 0, "black.csv: black has a luminance of 2, that of the panel file 0.3"},
      {"refine true.xml luts.txt bare.csv -o out.txt --white 0.1,0.1", 1, "the panel cannot show white 0.1,0.1"},
  };
  for (const auto &c : cases) {
    const Result r = run(c.arguments);
    EXPECT_EQ(r.code, c.code) << c.arguments << r.err;
    EXPECT_TRUE(has(r.err, c.message)) << c.arguments << r.err;
  }
  EXPECT_FALSE(std::filesystem::exists(path("out.txt")));
}
