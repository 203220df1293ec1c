// Interpolation of measured mixtures.
#include "calibration/mixtures.h"

#include <gtest/gtest.h>

#include <random>

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
