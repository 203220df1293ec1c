// Digital cinema coding against published codes and matrices, and its conversions against one another.
#include "vexo-dcine.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

namespace {

vexo_vector vector(const float (&d)[3]) { return vexo_vector{{d[0], d[1], d[2]}}; }

void expect_near(const vexo_vector &v, const vexo_vector &expected, float tolerance) {
  for (int i = 0; i < 3; i++) {
    EXPECT_NEAR(v.d[i], expected.d[i], tolerance) << i;
  }
}

void expect_same(const vexo_vector &v, const vexo_vector &expected) { expect_near(v, expected, 0.0F); }

} // namespace

// Each conversion from codes in 12 bits with its inverse.
TEST(Dcine, ConvertsThereAndBack) {
  using Convert = void (*)(vexo_vector *, unsigned int);
  const struct {
    Convert there;
    Convert back;
    float result[3];  // of the codes 4095, 2048, 100
    float inverse[3]; // of 1, 0.5, 0.1
  } pairs[] = {
      {vexo_dcine_XYZq_xyz,
       vexo_dcine_xyz_XYZq,
       {1.09104168F, 0.180069074F, 7.01425161e-05F},
       {3960.03979F, 3033.32373F, 1633.36841F}},
      {vexo_dcine_RGBq_rgb,
       vexo_dcine_rgb_RGBq,
       {1.0F, 0.165043265F, 6.42894956e-05F},
       {4095.0F, 3136.70117F, 1689.03455F}},
      {vexo_dcine_XYZq_XYZ,
       vexo_dcine_XYZ_XYZq,
       {4095.0F, 675.852173F, 0.263265491F},
       {167.080383F, 127.980766F, 68.9144135F}},
      {vexo_dcine_RGBq_RGB,
       vexo_dcine_RGB_RGBq,
       {4095.0F, 675.852173F, 0.263265491F},
       {167.080383F, 127.980766F, 68.9144135F}},
      {vexo_dcine_XYZ_xyz,
       vexo_dcine_xyz_XYZ,
       {1.09104168F, 0.545654058F, 0.026643265F},
       {3753.29395F, 1876.64697F, 375.329407F}},
      {vexo_dcine_RGB_rgb, vexo_dcine_rgb_RGB, {1.0F, 0.50012213F, 0.0244200267F}, {4095.0F, 2047.5F, 409.5F}},
  };
  for (const auto &p : pairs) {
    SCOPED_TRACE(&p - pairs);
    vexo_vector v = {{4095.0F, 2048.0F, 100.0F}};
    p.there(&v, 12);
    expect_same(v, vector(p.result));
    v = vexo_vector{{1.0F, 0.5F, 0.1F}};
    p.back(&v, 12);
    expect_same(v, vector(p.inverse));
    for (const unsigned int no_depth : {0U, 32U, 44U, ~0U}) {
      p.there(&v, no_depth);
      p.back(&v, no_depth);
      expect_same(v, vector(p.inverse));
    }
    for (int code = 0; code <= 4095; code++) {
      const float c = static_cast<float>(code);
      v = vexo_vector{{c, c, c}};
      p.there(&v, 12);
      p.back(&v, 12);
      ASSERT_NEAR(v.d[0], c, 1e-3F);
    }
  }
}

// SMPTE ST 428-1: a white of 48 cd/m2 has the code 3960 of 4095, which stands for 52.37 cd/m2.
TEST(Dcine, ReferenceWhite) {
  EXPECT_EQ(dcine_gamma, 2.6F);
  EXPECT_EQ(dcine_v, 52.37F);
  EXPECT_EQ(dcine_l, 48.0F);
  const struct {
    unsigned int nbits;
    float code;
  } depths[] = {{1, 0.967042685F}, {10, 989.284668F}, {12, 3960.03979F}, {31, 2076708350.0F}};
  for (const auto &d : depths) {
    vexo_vector white = {{1.0F, 1.0F, 1.0F}};
    vexo_dcine_xyz_XYZq(&white, d.nbits);
    expect_same(white, {{d.code, d.code, d.code}});
  }
}

TEST(Dcine, NothingIsClamped) {
  vexo_vector v = {{-1.0F, 8190.0F, 0.0F}};
  vexo_dcine_XYZq_XYZ(&v, 12);
  EXPECT_TRUE(std::isnan(v.d[0]));
  EXPECT_GT(v.d[1], 4095.0F);
  vexo_vector spreading = {{HUGE_VALF, 1.0F, 1.0F}};
  vexo_dcine_RGB_rgb(&spreading, 12);
  EXPECT_TRUE(std::isnan(spreading.d[1])); // a matrix product, as every linear step
}

// SMPTE RP 431-2: the matrix of the P3 primaries and white.
TEST(Dcine, P3Primaries) {
  const vexo_vector published[3] = {
      {{0.4451698F, 0.2094917F, 0.0F}}, {{0.2771344F, 0.7215953F, 0.0470606F}}, {{0.1722827F, 0.0689131F, 0.9073554F}}};
  for (int primary = 0; primary < 3; primary++) {
    vexo_vector rgb = {};
    rgb.d[primary] = 1.0F;
    vexo_vector v = rgb;
    EXPECT_EQ(vexo_dcine_rgb_xyz(&v), 0);
    expect_near(v, published[primary], 5e-7F);
    EXPECT_EQ(vexo_dcine_xyz_rgb(&v), 0);
    expect_near(v, rgb, 1e-6F);
  }
  vexo_vector codes = {{750.0F, 500.0F, 100.0F}};
  EXPECT_EQ(vexo_dcine_RGBq_XYZq(&codes, 12), 0);
  expect_same(codes, {{573.325378F, 538.608826F, 164.779388F}});
  EXPECT_EQ(vexo_dcine_XYZq_RGBq(&codes, 12), 0);
  expect_near(codes, {{750.0F, 500.0F, 100.0F}}, 1e-3F);
  for (const unsigned int no_depth : {0U, 32U}) {
    vexo_vector v = codes;
    EXPECT_EQ(vexo_dcine_RGBq_XYZq(&v, no_depth), -1);
    EXPECT_EQ(vexo_dcine_XYZq_RGBq(&v, no_depth), -1);
    expect_same(v, codes);
  }
}

TEST(Dcine, MatricesOfCodes) {
  const vexo_matrix exact[2] = {{{{2.97351885F, -1.1106838F, -0.480236471F},
                                  {-0.86756146F, 1.84356821F, 0.0247090366F},
                                  {0.044996649F, -0.0956178829F, 1.20116007F}}},
                                {{{0.408022732F, 0.254009008F, 0.157906577F},
                                  {0.192010701F, 0.66138196F, 0.0631626248F},
                                  {0.0F, 0.0431336202F, 0.831641257F}}}};
  vexo_matrix to_rgb;
  vexo_matrix to_xyz;
  ASSERT_EQ(vexo_dcine_XYZ_RGB_matrix(&to_rgb, 12), 0);
  ASSERT_EQ(vexo_dcine_RGB_XYZ_matrix(&to_xyz, 12), 0);
  for (const unsigned int no_depth : {0U, 32U}) {
    EXPECT_EQ(vexo_dcine_XYZ_RGB_matrix(&to_rgb, no_depth), -1);
    EXPECT_EQ(vexo_dcine_RGB_XYZ_matrix(&to_xyz, no_depth), -1);
  }
  EXPECT_EQ(std::memcmp(&to_rgb, &exact[0], sizeof to_rgb), 0);
  EXPECT_EQ(std::memcmp(&to_xyz, &exact[1], sizeof to_xyz), 0);
}
