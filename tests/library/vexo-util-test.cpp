#include "vexo-util.h"

#include <gtest/gtest.h>

#include "bits.h"

TEST(Interpolation, LinearMeetsItsEndsAndExtends) {
  const struct {
    float t, a, b, expected;
  } cases[] = {
      {0.0F, 0.1F, 0.7F, 0.1F}, {1.0F, 0.1F, 0.7F, 0.7F},  {0.25F, 0.0F, 8.0F, 2.0F},
      {1.5F, 0.0F, 2.0F, 3.0F}, {-0.5F, 1.0F, 2.0F, 0.5F},
  };
  for (const auto &c : cases) {
    float v[2] = {c.a, c.b};
    EXPECT_EQ(linear_inter(c.t, v), c.expected) << c.t;
  }
}

// Bits worked out with exact fractions. In each case a product kept in double, or a sum formed in single precision,
// gives another last bit.
TEST(Interpolation, LinearRoundsEachStepToItsOwnType) {
  const uint32_t cases[][4] = {
      {0x3f3b4e5c, 0x3f732600, 0x3f2161d9, 0x3f3752b1},
      {0x3ef458a9, 0x3f310144, 0x3f383d5f, 0x3f347529},
      {0x3ef173a8, 0x3e67ac24, 0x3d5dc510, 0x3e14909e},
  };
  for (const auto &c : cases) {
    float v[2] = {from_bits(c[1]), from_bits(c[2])};
    EXPECT_EQ(bits(linear_inter(from_bits(c[0]), v)), c[3]);
  }
}

TEST(Interpolation, CornersBelongToTheirFractions) {
  float square[2][2] = {{1.0F, 2.0F}, {4.0F, 8.0F}};
  float cube[2][2][2] = {{{1.0F, 2.0F}, {4.0F, 8.0F}}, {{16.0F, 32.0F}, {64.0F, 128.0F}}};
  for (int i = 0; i < 2; i++) {
    for (int j = 0; j < 2; j++) {
      float t2[2] = {static_cast<float>(i), static_cast<float>(j)};
      EXPECT_EQ(bilinear_inter(t2, square), square[i][j]);
      for (int k = 0; k < 2; k++) {
        float t3[3] = {static_cast<float>(i), static_cast<float>(j), static_cast<float>(k)};
        EXPECT_EQ(trilinear_inter(t3, cube), cube[i][j][k]);
      }
    }
  }
  float half[3] = {0.5F, 0.5F, 0.5F};
  EXPECT_EQ(bilinear_inter(half, square), 15.0F / 4.0F);
  EXPECT_EQ(trilinear_inter(half, cube), 255.0F / 8.0F);
}

// Bits worked out with exact fractions; any other order of the axes gives another last bit.
TEST(Interpolation, InnermostIndexFirst) {
  float t2[2] = {from_bits(0x3eb3c57d), from_bits(0x3f64ba41)};
  float square[2][2] = {{from_bits(0x3a786031), from_bits(0x3ddd044a)}, {from_bits(0x3f10d90e), from_bits(0x3f1d7ba7)}};
  EXPECT_EQ(bits(bilinear_inter(t2, square)), 0x3e8db63fU);

  float t3[3] = {from_bits(0x3f691174), from_bits(0x3f0e0d54), from_bits(0x3f1ef1d9)};
  float cube[2][2][2] = {
      {{from_bits(0x3e86c846), from_bits(0x3f0d3a98)}, {from_bits(0x3e82253a), from_bits(0x3f4025ec)}},
      {{from_bits(0x3f0459d5), from_bits(0x3e08fdd9)}, {from_bits(0x3e700be1), from_bits(0x3ebe0fc7)}}};
  EXPECT_EQ(bits(trilinear_inter(t3, cube)), 0x3ea3d866U);
}
