// vexo gray: without a measured gray ramp, the panel is the sum of its channels, on straight lines between the rows.
#include <array>
#include <sstream>
#include <string>
#include <vector>

#include "tool/tool.h"
#include "vexo.h"

namespace {

struct Gray {
  double x;
  double y;
  double Y;
};

// The table that vexo gray prints.
std::vector<Gray> grays(const std::string &text) {
  std::vector<Gray> rows;
  std::istringstream in(text.substr(text.find("gamma\n") + 6));
  std::string rest;
  std::string percent;
  for (Gray g = {}; in >> rest >> percent >> g.x >> g.y >> g.Y; std::getline(in, rest)) {
    rows.push_back(g);
  }
  return rows;
}

// X, Y, Z above black of a row of each channel times a factor, summed.
std::array<double, 3> mixture(const vexo_lcnr &lcnr, int row, const std::array<double, 3> &factors) {
  std::array<double, 3> sum = {};
  for (size_t c = 0; c < 3; c++) {
    for (size_t m = 0; m < 3; m++) {
      sum[m] += factors[c] * (static_cast<double>(lcnr.data[c][m][row]) - static_cast<double>(lcnr.data[c][m][0]));
    }
  }
  return sum;
}

void expect_gray(const Gray &shown, const std::array<double, 3> &XYZ) {
  const double sum = XYZ[0] + XYZ[1] + XYZ[2];
  EXPECT_NEAR(shown.x, XYZ[0] / sum, 1e-5);
  EXPECT_NEAR(shown.y, XYZ[1] / sum, 1e-5);
  EXPECT_NEAR(shown.Y / XYZ[1], 1.0, 1e-4);
}

} // namespace

TEST_F(Tool, PredictsTheSumOfTheChannelsOnLinesBetweenRows) {
  vexo_lcnr lcnr = {};
  ASSERT_EQ(vexo_load_lcnr_xml(&lcnr, path("panel.xml").c_str()), 0);
  const std::vector<Gray> levels = grays(run("gray panel.xml --steps 1024").out);
  ASSERT_EQ(levels.size(), 1024U);
  for (int row = 1; row < lcnr.num; row++) {
    SCOPED_TRACE(row);
    const auto level = static_cast<size_t>(lcnr.sample[row]);
    const auto here = mixture(lcnr, row, {1.0, 1.0, 1.0});
    const auto below = mixture(lcnr, row - 1, {1.0, 1.0, 1.0});
    const double t = 1.0 - 8.0 / static_cast<double>(lcnr.sample[row] - lcnr.sample[row - 1]);
    expect_gray(levels[level], here);
    expect_gray(levels[level - 8], {below[0] + t * (here[0] - below[0]), below[1] + t * (here[1] - below[1]),
                                    below[2] + t * (here[2] - below[2])});
  }

  // Drives below the first table level, one of them 0.
  save(path("dark.txt"), "LUT_1D_SIZE 2\nLUT_1D_BITS 16\n0 0 0\n64 0 16\n");
  const std::vector<Gray> dark = grays(run("gray panel.xml dark.txt --steps 3").out);
  ASSERT_EQ(dark.size(), 3U);
  const double part = 1023.0 / 65535.0 / 32.0;
  expect_gray(dark[1], mixture(lcnr, 1, {32.0 * part, 0.0, 8.0 * part}));
  expect_gray(dark[2], mixture(lcnr, 1, {64.0 * part, 0.0, 16.0 * part}));
}
