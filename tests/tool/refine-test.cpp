// Panels whose channels do not add, in several ways: calibrated from a measured gray ramp, then refined from the ramp
// that they show through the LUTs. Judged by what the panel really shows.
#include "tool/tool.h"
#include "tool/truth.h"

namespace {

const Noise kNoise = {0.002, 0.002};

// The three channels at three drives: the light of each alone, as a part of its full light, and their sum.
struct Mixture {
  Color drives;
  Color given;
  Color sum;
};

struct Kind {
  const char *name;
  Color (*show)(const Mixture &); // what the panel makes of a mixture
  double additive;                // the least mean CIEDE2000 where the channels are taken to add
  double with_grays;              // the most with measured grays
  double refined;                 // the most after one refinement from noisy readings

  Color light(const Color &drives) const {
    const panel_model::Panel panel = panel_model::desktop_panel();
    Mixture m = {drives, {}, panel_model::light(panel, drives)};
    for (size_t c = 0; c < 3; c++) {
      m.given[c] = panel_model::response(panel.channel[c], drives[c]);
    }
    return show(m);
  }
};

// The channels' light scaled by factors that depend on a load of 0..1.
Color scaled(const Mixture &m, double load, const Color &at_full) {
  return {m.sum[0] * (1.0 + (at_full[0] - 1.0) * load), m.sum[1] * (1.0 + (at_full[1] - 1.0) * load),
          m.sum[2] * (1.0 + (at_full[2] - 1.0) * load)};
}

double second_largest(Color g) {
  std::sort(g.begin(), g.end());
  return g[1];
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
       return second_largest(m.given) > 0.0 ? scaled(m, u, {1.05, 0.96, 1.10}) : m.sum;
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
       const double help = 60.0 * std::max(*std::min_element(m.given.begin(), m.given.end()) - 0.4, 0.0);
       return Color{m.sum[0] + 0.93 * help, m.sum[1] + help, m.sum[2] + 1.2 * help};
     },
     1.0, 0.3, 0.5},
    {"the channels add", [](const Mixture &m) { return m.sum; }, 0.0, 0.15, 0.35},
};

// The panel file true.xml holds the channels alone, which all kinds have in common.
class Refine : public Tool {
protected:
  void SetUp() override {
    Tool::SetUp();
    vexo_lcnr lcnr = measured_channels([](const Color &d) { return kKinds[4].light(d); }, 33);
    vexo_store_lcnr_xml(&lcnr, path("true.xml").c_str());
    out("calibrate true.xml -o additive.txt");
  }

  Luts luts(const std::string &file) const { return luts_of(contents(path(file))); }

  void measure(const Kind &kind, const std::string &csv, const Luts &through, int rows, const Noise &noise = {}) const {
    save(path(csv), measured_grays([&](const Color &d) { return kind.light(d); }, through, rows, noise));
  }

  double shown(const Kind &kind, const std::string &file) const {
    const Light light = [&](const Color &d) { return kind.light(d); };
    return differences(light, luts(file), peak_of(light, luts(file))).mean;
  }
};

} // namespace

TEST_F(Refine, FollowsPanelsWhoseChannelsDoNotAdd) {
  for (const Kind &kind : kKinds) {
    SCOPED_TRACE(kind.name);
    measure(kind, "bare.csv", {}, 33);
    out("calibrate true.xml --gray bare.csv -o luts.txt");
    const double additive = shown(kind, "additive.txt");
    EXPECT_GE(additive, kind.additive);
    EXPECT_LE(shown(kind, "luts.txt"), kind.with_grays);
    EXPECT_LE(shown(kind, "luts.txt"), std::max(0.15, additive / 3.0));
    for (const std::string start : {"luts.txt --gray bare.csv", "additive.txt"}) { // with and without a bare ramp
      measure(kind, "noisy.csv", luts(start.substr(0, start.find(' '))), 22, kNoise);
      out("refine true.xml " + start + " noisy.csv -o refined.txt");
      EXPECT_LE(shown(kind, "refined.txt"), kind.refined) << start;
    }
  }
}

TEST_F(Refine, ConvergesAndStays) {
  for (const Kind &kind : kKinds) {
    SCOPED_TRACE(kind.name);
    std::filesystem::copy(path("additive.txt"), path("luts0.txt"), std::filesystem::copy_options::overwrite_existing);
    double before = shown(kind, "luts0.txt");
    for (int i = 0; i < 3; i++) {
      const std::string from = "luts" + std::to_string(i) + ".txt";
      const std::string to = "luts" + std::to_string(i + 1) + ".txt";
      measure(kind, "exact.csv", luts(from), 33);
      out("refine true.xml " + from + " exact.csv -o " + to);
      const double now = shown(kind, to);
      EXPECT_LE(now, before + 0.005) << i;
      before = now;
    }
    EXPECT_LE(before, kind.refined);
    EXPECT_EQ(contents(path("luts2.txt")), contents(path("luts3.txt"))); // nothing more to learn
  }
}
