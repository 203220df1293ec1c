// Adjustment of single gray points, sample codes, and the dumps of gray ramps.
#include "vexo.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "text.h"

namespace {

const float kNaN = std::nanf("");

// A BT.709 panel of 100 cd/m2 whose channels follow a pure power law of 2.2.
std::unique_ptr<vexo> power_law_panel() {
  const float xy[3][2] = {{0.64F, 0.33F}, {0.30F, 0.60F}, {0.15F, 0.06F}};
  const float maxY[3] = {21.26F, 71.52F, 7.22F};
  auto panel = std::make_unique<vexo>();
  for (int c = 0; c < 3; c++) {
    panel->maxY[c] = maxY[c];
    for (int k = 1; k < 1024; k++) {
      panel->data[c][0][k] = xy[c][0];
      panel->data[c][1][k] = xy[c][1];
      panel->data[c][2][k] = static_cast<float>(std::pow(k / 1023.0, 2.2));
    }
  }
  return panel;
}

// Identity LUTs of one size; the three channels share the entries.
struct IdentityLuts {
  explicit IdentityLuts(int size) : entries(static_cast<size_t>(size)) {
    for (vexo_lut &lut : d) {
      lut = vexo_lut{size, entries.data()};
    }
    vexo_lut_by_linear_gamma(&d[0]);
  }
  std::vector<float> entries;
  vexo_lut d[3];
};

// What a dump prints, with the addresses of records taken out.
template <typename Dump> std::string dumped(Dump dump) {
  std::string text = printed([&](FILE *f) { EXPECT_EQ(dump(f), 0); });
  for (size_t at = 0; (at = text.find("(0x", at)) != std::string::npos; at++) {
    text.erase(at + 1, text.find(')', at) - at - 1);
  }
  return text;
}

std::string dumped_gamma(vexo *panel, int size) {
  IdentityLuts luts(size);
  return dumped([&](FILE *f) { return vexo_lut_dump_gray_gamma(f, panel, luts.d); });
}

std::string dumped_gray(vexo *panel, int size) {
  IdentityLuts luts(size);
  return dumped([&](FILE *f) { return vexo_lut_dump_gray(f, panel, luts.d); });
}

std::string dumped_bare(vexo *panel) {
  return dumped([&](FILE *f) { return vexo_dump_gray(f, panel); });
}

void expect_same(const float (&codes)[3], const float (&expected)[3], const char *name) {
  for (int k = 0; k < 3; k++) {
    EXPECT_EQ(codes[k], expected[k]) << name << " " << k;
  }
}

} // namespace

TEST(GrayPoint, MovesHalfwayAndKeepsTheLimits) {
  struct Case {
    const char *name;
    float gray[3];
    float target[3];
    float lut[3];
    float expected[3];
  };
  Case cases[] = {
      {"on target", {95.047F, 100, 108.883F}, {95.047F, 100, 108.883F}, {1, 2, 3}, {1, 2, 3}},
      {"proportional", {95.047F, 100, 108.883F}, {47.5235F, 50, 54.4415F}, {7, 8, 1023}, {7, 8, 1023}},
      {"too blue", {50, 100, 200}, {50, 100, 100}, {512, 512, 512}, {512, 512, 384}},
      {"too red", {200, 100, 50}, {100, 100, 50}, {512, 512, 512}, {384, 512, 512}},
      {"too green", {50, 100, 50}, {100, 100, 100}, {512, 512, 512}, {512, 384, 512}},
      {"red above", {1, 1, 1}, {1, 1, 1}, {1100, 900, 800}, {1023, 837, 744}},
      {"green above, then blue", {1, 1, 1}, {1, 1, 1}, {550, 1100, 2200}, {511.5F, 1023, 2046}},
      {"blue above", {1, 1, 1}, {1, 1, 1}, {900, 800, 1100}, {837, 744, 1023}},
      {"above, rounded beside the limit", {1, 1, 1}, {1, 1, 1}, {1023.09375F, 0, 0}, {1022.99994F, 0, 0}},
  };
  unsigned short max[3] = {1023, 1023, 1023};
  for (Case &c : cases) {
    EXPECT_EQ(vexo_panel_gray_point_adjust(c.gray, c.target, c.lut, max), 0);
    expect_same(c.lut, c.expected, c.name);
  }
  float no_blue[3] = {1, 1, 0};
  float lut[3] = {10, 10, 10};
  EXPECT_EQ(vexo_panel_gray_point_adjust(no_blue, cases[5].target, lut, max), 0);
  EXPECT_TRUE(std::isnan(lut[2])); // an infinite code, scaled to its limit
}

TEST(GrayPoint, ThroughTheColourSpace) {
  // Primaries on the axes above a black of (1, 1, 1): the target's XYZ are its RGB.
  const float R[3] = {3, 1, 1};
  const float G[3] = {1, 3, 1};
  const float B[3] = {1, 1, 3};
  const float W[3] = {3, 3, 3};
  const float D[3] = {1, 1, 1};
  struct Case {
    const char *name;
    const float *green;
    const float *white;
    float target[3];
    int status;
    float expected[3];
  };
  Case cases[] = {
      {"proportional, red above", G, W, {4, 4, 4}, 0, {1000, 500, 250}},
      {"less blue", G, W, {2, 2, 1}, 0, {1000, 500, 187.5F}},
      {"no blue", G, W, {1, 1, 0}, -1, {1200, 600, 300}},
      {"negative green", G, W, {1, -1, 1}, -1, {1200, 600, 300}},
      {"NaN", G, W, {kNaN, 1, 1}, -1, {1200, 600, 300}},
      {"two equal primaries", R, W, {1, 1, 1}, -1, {1200, 600, 300}},
      {"white at black", G, D, {1, 1, 1}, -1, {1200, 600, 300}},
  };
  unsigned short max[3] = {1000, 1000, 1000};
  for (Case &c : cases) {
    float lut[3] = {1200, 600, 300};
    EXPECT_EQ(vexo_panel_cs_gray_point_adjust(R, c.green, B, c.white, D, c.target, lut, max), c.status) << c.name;
    expect_same(lut, c.expected, c.name);
  }
}

TEST(GrayPoint, SamplesAndTheirLuminance) {
  const struct {
    int num;
    int bits;
    float expected[5];
  } cases[] = {
      {5, 10, {0.0F, 255.75F, 511.5F, 767.25F, 1023.0F}},
      {2, 30, {0.0F, 1073741824.0F, -1, -1, -1}},
      {4, 1, {0.0F, 0.333333343F, 0.666666687F, 1.0F, -1}},
      {1, 8, {0.0F, -1, -1, -1, -1}},
      {-7, 8, {-1, -1, -1, -1, -1}},
      {5, 0, {-1, -1, -1, -1, -1}},
      {1, 31, {-1, -1, -1, -1, -1}},
  };
  for (const auto &c : cases) {
    float samples[5] = {-1, -1, -1, -1, -1};
    EXPECT_EQ(vexo_create_samples(samples, c.num, c.bits), 0.0F);
    for (int i = 0; i < 5; i++) {
      EXPECT_EQ(samples[i], c.expected[i]) << c.num << " samples of " << c.bits << " bits, " << i;
    }
  }
  EXPECT_EQ(vexo_sample_2_luminance(512.0F, 1023.0F, 100.0F, 2.2F), 21.8105946F);
  EXPECT_EQ(vexo_sample_2_luminance(1.0F, 2.0F, 100.0F, 2.0F), 25.0F);
  EXPECT_TRUE(std::isnan(vexo_sample_2_luminance(-1.0F, 2.0F, 100.0F, 2.2F)));
}

TEST(GrayDumps, OfAPowerLawPanel) {
  const auto panel = power_law_panel();
  const std::string bare = dumped_bare(panel.get());
  const std::string heading = "VEXO_DUMP_GRAY Vector():\n";
  EXPECT_EQ(std::count(bare.begin(), bare.end(), '\n'), 2 * 1024);
  EXPECT_EQ(bare.substr(0, 2 * 67), heading + "\t[0.0000000000\t0.0000000000\t0.0000000000]\n" + heading +
                                        "\t[0.0000002389\t0.0000002389\t0.0000002389]\n");
  EXPECT_EQ(bare.substr(bare.size() - 67), heading + "\t[1.0000000000\t1.0000000000\t1.0000000000]\n");
  EXPECT_EQ(dumped_gray(panel.get(), 5), "[   0](   -1) Vector():\n\t[0.0000000000\t0.0000000000\t0.0000000000]\n"
                                         "[   1]( 6505) Vector():\n\t[0.3126801848\t0.3289932609\t4.7366318703]\n"
                                         "[   2]( 6505) Vector():\n\t[0.3126801848\t0.3289932609\t21.7637920380]\n"
                                         "[   3]( 6505) Vector():\n\t[0.3126801848\t0.3289932609\t53.1049385071]\n"
                                         "[   4]( 6505) Vector():\n\t[0.3126801848\t0.3289932609\t100.0000000000]\n");
  EXPECT_EQ(dumped_gamma(panel.get(), 5),
            "[   1] (2.1999974251)\n[   2] (2.1999981403)\n[   3] (2.1999990940)\ngamma = 2.199998\n");
}

TEST(GrayDumps, WithoutLightOrEntries) {
  const auto panel = power_law_panel();
  for (int size : {0, 1, 2}) {
    const std::string text = dumped_gray(panel.get(), size);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2 * size);
    EXPECT_EQ(dumped_gamma(panel.get(), size), "gamma = 0.000000\n");
  }
  // No mixture takes a negative chromaticity: that level counts as black. The middle of three entries reads it.
  panel->data[0][0][511] = panel->data[0][0][512] = -0.1F;
  EXPECT_EQ(dumped_gamma(panel.get(), 3), "[   1] (0.0000000000)\ngamma = 0.000000\n");
  EXPECT_EQ(dumped_gamma(panel.get(), 5), "[   1] (2.1999974251)\n[   2] (0.0000000000)\n[   3] (2.1999990940)\n"
                                          "gamma = 2.199998\n");
  EXPECT_EQ(dumped_gray(panel.get(), 3).substr(66, 23), "[   1](   -1) Vector():");
}

TEST(GrayDumps, UseADecimalPointInAnyLocale) {
  const auto panel = power_law_panel();
  const auto all = [&] {
    return dumped_bare(panel.get()) + dumped_gray(panel.get(), 5) + dumped_gamma(panel.get(), 5);
  };
  const std::string expected = all();
  in_both_locales([&] { EXPECT_EQ(all(), expected); });
}
