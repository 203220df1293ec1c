// Measured mixtures: their interpolation, and what the model gets wrong without them.
#include "calibration/mixtures.h"

#include <nlohmann/json.hpp>
#include <random>

#include "tool/tool.h"
#include "tool/truth.h"

namespace {

// Samples at points of the grid, where the grid is exact: a smooth residual and some noise.
std::vector<MixtureSample> samples(int count) {
  std::mt19937 bits; // NOLINT(cert-msc51-cpp): the same samples each time
  const auto number = [&] { return static_cast<double>(bits() % 33) / 32.0; };
  std::vector<MixtureSample> list;
  for (int i = 0; i < count; i++) {
    const Triple p(number(), number(), number());
    const Triple residual = Triple(p[0] * p[1], p[1] * p[2], -p[2] * p[0]) + Triple::Constant(0.02 * number());
    list.push_back({p, residual, i % 5 == 0 ? 0.0005 : 0.005});
  }
  return list;
}

class MixtureFile : public Tool {
protected:
  // Mean CIEDE2000 that the tool states for the first layer of the model, that of the channels.
  double error_of_channels(const std::string &options) const {
    const Result r = run("measure panel.xml --mix mix.csv --json " + options);
    EXPECT_EQ(r.code, 0) << r.err;
    return nlohmann::json::parse(r.out)["mixtures"]["layers"][0]["mean"].get<double>();
  }
};

} // namespace

TEST(Mixtures, LeavesOutAsSolvingAnewWould) {
  const std::vector<MixtureSample> all = samples(40);
  const Mixtures whole(all);
  for (size_t i = 0; i < all.size(); i++) {
    std::vector<MixtureSample> others = all;
    others.erase(others.begin() + static_cast<std::ptrdiff_t>(i));
    EXPECT_LT((Mixtures(others).at(all[i].point) - whole.left_out()[i]).norm(), 1e-9) << i;
  }
}

TEST(Mixtures, ShowsExactSamplesAndIsZeroAtBlack) {
  std::vector<MixtureSample> all = samples(40);
  for (MixtureSample &sample : all) {
    sample.noise = 1e-9;
  }
  const Mixtures mixtures(all);
  EXPECT_LT(mixtures.at(Triple::Zero()).norm(), 1e-12);
  for (const MixtureSample &sample : all) {
    EXPECT_LT((mixtures.at(sample.point) - sample.residual).norm(), 1e-6);
  }
}

TEST(Mixtures, OneAloneFadesWithDistance) {
  const Triple point(0.5, 0.5, 0.75);
  const Mixtures mixtures({{point, Triple::Ones(), 0.0}});
  EXPECT_LT((mixtures.at(point) - Triple::Ones()).norm(), 1e-9);
  EXPECT_LT(mixtures.at({0.5, 0.5, 0.25})[0], 0.8);
  EXPECT_LT(mixtures.at({0.25, 0.25, 0.375})[0], mixtures.at({0.375, 0.375, 0.5625})[0]);
}

// With five rows, the lines between them are the error. A fine gray ramp tells the shape; half of it is believed.
TEST_F(MixtureFile, GraysShapeChannelsBetweenRows) {
  const Light light = [](const Color &drive) { return panel_model::light(panel_model::desktop_panel(), drive); };
  vexo_lcnr rows = measured_channels(light, 5);
  vexo_store_lcnr_xml(&rows, path("panel.xml").c_str());
  save(path("gray.csv"), measured_grays(light, {}, 86));
  std::string mixtures = "r,g,b,X,Y,Z\n";
  for (const Color &drive : {Color{0.7, 0.4, 0.0}, Color{0.3, 0.9, 0.5}, Color{0.0, 0.6, 0.35}, Color{0.9, 0.1, 0.6}}) {
    const Color shown = light(drive);
    for (const double d : drive) {
      mixtures += std::to_string(255.0 * d) + ",";
    }
    mixtures += std::to_string(kBlack[0] + shown[0]) + "," + std::to_string(kBlack[1] + shown[1]) + "," +
                std::to_string(kBlack[2] + shown[2]) + "\n";
  }
  save(path("mix.csv"), mixtures);
  EXPECT_LT(error_of_channels("--gray gray.csv"), 0.6 * error_of_channels(""));
}
