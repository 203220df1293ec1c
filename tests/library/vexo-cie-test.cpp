#include <gtest/gtest.h>

#include <cmath>

#include "bits.h"
#include "vexo-cs.h"

// Bit patterns were computed outside the library in single precision; comments give the published values they round.

namespace {

using V = vexo_vector;

const V kD65 = {{95.047F, 100, 108.883F}}; // XYZ, ASTM E308
const V kRed = {{0.64F, 0.33F, 21.26F}};   // xyY, BT.709 primaries at 100 cd/m2 white
const V kGreen = {{0.30F, 0.60F, 71.52F}};
const V kBlue = {{0.15F, 0.06F, 7.22F}};
const V kBlack = {{0, 0, 0}};
const V kSentinel = {{7, 7, 7}};

TEST(Cie, Conversions) {
  const struct {
    int (*convert)(V *);
    V in, out;
  } rows[] = {
      {vexo_XYZ_xyz, kD65, {{0x1.403b68p-2F, 0x1.50eb72p-2F, 0x1.6ed928p-2F}}}, // (0.31273, 0.32902, 0.35825)
      {vexo_XYZ_xyz, {{-1, 2, 0}}, {{-1, 2, 0}}},
      {vexo_XYZ_xyY, {{109.85F, 100, 35.585F}}, {{0x1.ca507ep-2F, 0x1.a137eap-2F, 100}}}, // A (0.44757, 0.40744)
      {vexo_XYZ_xyY, {{2, -1, 1}}, {{1, -0.5F, -1}}},
      {vexo_XYZ_uvY, kD65, {{0x1.952d0ap-3F, 0x1.df938cp-2F, 100}}},      // D65 (0.1978, 0.4683)
      {vexo_XYZ_uvY, {{1, 1, 1}}, {{0x1.af286cp-3F, 0x1.e50d7ap-2F, 1}}}, // E (4/19, 9/19)
      {vexo_XYZ_uvY, kBlack, kBlack},
      {vexo_xyY_XYZ, {{0.3127F, 0.3290F, 100}}, {{0x1.7c2eb2p6F, 100, 0x1.b39f88p6F}}}, // (95.046, 100, 108.906)
      {vexo_xyY_XYZ, {{0.5F, 0, 10}}, kBlack},
      {vexo_xyY_uvY, {{0.3127F, 0.3290F, 100}}, {{0x1.9527e6p-3F, 0x1.df8f48p-2F, 100}}},
      {vexo_xyY_uvY, {{0.5F, 0, 10}}, {{1, 0, 10}}}};
  for (const auto &row : rows) {
    V v = row.in;
    EXPECT_EQ(row.convert(&v), 0);
    EXPECT_EQ(bits_of(v), bits_of(row.out)) << "row " << &row - rows;
  }
}

TEST(Cie, RefusedColoursStayAsTheyAre) {
  const auto expect_refused = [](int (*convert)(V *), const V &in) {
    V v = in;
    EXPECT_EQ(convert(&v), -1) << in.d[0] << ' ' << in.d[1] << ' ' << in.d[2];
    EXPECT_EQ(bits_of(v), bits_of(in));
  };
  for (const V &in : {kBlack, V{{1, -2, 0.5F}}, V{{1, NAN, 1}}}) { // no positive sum
    expect_refused(vexo_XYZ_xyz, in);
    expect_refused(vexo_XYZ_xyY, in);
  }
  for (V in : {V{{-1, 2, 0}}, V{{1, -0x1p-149F, 1}}, V{{1, 1, -1}}, V{{NAN, 1, 1}}, V{{1, NAN, 1}}, V{{1, 1, NAN}}}) {
    EXPECT_EQ(vexo_XYZ_valid(&in), 0);
    expect_refused(vexo_XYZ_uvY, in);
  }
  for (V valid : {kBlack, kD65}) {
    EXPECT_EQ(vexo_XYZ_valid(&valid), 1);
  }
  for (const V &in : {V{{1, 0.3F, 9}}, V{{0.3F, 1, 9}}, V{{-0x1p-149F, 0.3F, 9}}, V{{0.3F, -0.1F, 9}},
                      V{{0.3F, 0.3F, -1}}, V{{NAN, 0.3F, 9}}, V{{0.3F, NAN, 9}}, V{{0.3F, 0.3F, NAN}}}) {
    expect_refused(vexo_xyY_XYZ, in);
    expect_refused(vexo_xyY_uvY, in);
  }
  V untouched = kSentinel;
  expect_refused([](V *uvY) { return vexo_uvY_XYZ(uvY, uvY); }, {{0.1978F, 0.4683F, 1}});
  V invalid = {{1, -1, 1}};
  V valid = kD65;
  EXPECT_EQ(vexo_XYZ_mix(&valid, &invalid, &untouched), -1);
  EXPECT_EQ(vexo_XYZ_mix(&invalid, &valid, &untouched), -1);
  EXPECT_EQ(bits_of(untouched), bits_of(kSentinel));
}

TEST(Cie, TablesBecomeRelativeToTheirBlack) {
  const struct {
    int size, status;
    float in[9], out[9]; // three X, three Y, three Z
  } rows[] = {{3,
               0,
               {0.1F, 1, 10.5F, 0.2F, 2, 20.25F, 0.3F, 3, 5},
               {0, 0x1.555556p-3F, 0x1.2ef9dp-2F, 0, 0x1.555556p-2F, 0x1.240d1cp-1F, 0, 0x1.ccccccp0F, 0x1.40ccccp4F}},
              {3, -1, {1, 1, 2, 1, 1, 2, 1, 1, 2}, {0, 1, 2, 0, 1, 2, 0, 1, 2}}, // sample 1 is black
              {3, -1, {1, 2, 1, 1, 2, 1, 1, 3, 1}, {0, 0.25F, 1, 0, 0.25F, 1, 0, 1, 1}},
              {1, 0, {1, 2, 3, 1, 2, 3, 1, 2, 3}, {0, 2, 3, 0, 2, 3, 0, 2, 3}},
              {0, -1, {1, 2, 3, 1, 2, 3, 1, 2, 3}, {1, 2, 3, 1, 2, 3, 1, 2, 3}},
              {-1, -1, {1, 2, 3, 1, 2, 3, 1, 2, 3}, {1, 2, 3, 1, 2, 3, 1, 2, 3}}};
  for (auto row : rows) {
    float *columns[] = {row.in, row.in + 3, row.in + 6};
    EXPECT_EQ(vexo_XYZ_xyY_array(row.size, columns), row.status) << "size " << row.size;
    EXPECT_EQ(bits(row.in, 9), bits(row.out, 9)) << "size " << row.size;
  }
}

TEST(Cie, Mixtures) {
  const V yellow = {{0x1.ad59fp-2F, 0x1.02b2ep-1F, 0x1.731eb8p6F}}; // (0.4193, 0.5053, 92.78)
  const V white = {{0x1.402f3cp-2F, 0x1.50e39cp-2F, 100}};          // (0.3127, 0.3290, 100)
  const V flat = {{0.25F, 0, 2}};                                   // y = 0: its weight is infinite
  const V invalid = {{1, 0.5F, 1}};
  const V dim_red = {{0.64F, 0.33F, 2}};
  const struct {
    V a, b, c;
    int pair_status;
    V pair; // a and b
    int status;
    V all; // a, b and c
  } rows[] = {{kRed, kGreen, kBlue, 0, yellow, 0, white},
              {flat, kGreen, invalid, 0, {{0.25F, 0, 73.52F}}, -1, kBlack},
              {kBlack, kBlack, kBlack, 0, {{NAN, NAN, 0}}, -1, kBlack},
              {kBlack, kGreen, kBlue, 0, {{NAN, NAN, 71.52F}}, -1, kBlack},
              {dim_red, dim_red, kBlack, 0, {{0.64F, 0.33F, 4}}, 0, {{NAN, NAN, 4}}},
              {invalid, kGreen, kBlue, -1, kBlack, -1, kSentinel},
              {kRed, {{0.5F, 0.25F, NAN}}, kBlue, -1, kBlack, -1, kSentinel}};
  const auto expect = [](const V &got, const V &want) {
    for (int i = 0; i < 3; i++) { // the sign of a NaN is the processor's
      EXPECT_TRUE(bits(got.d[i]) == bits(want.d[i]) || (std::isnan(got.d[i]) && std::isnan(want.d[i])))
          << i << ": " << got.d[i] << ", not " << want.d[i];
    }
  };
  for (auto row : rows) {
    V out = kSentinel;
    EXPECT_EQ(vexo_xyY_mix_3(&row.a, &row.b, &row.c, &out), row.status);
    expect(out, row.all);
    EXPECT_EQ(vexo_xyY_mix(&row.a, &row.b, &row.a), row.pair_status); // the output may be an input
    expect(row.a, row.pair);
  }
  // Grassmann: the mixture has the chromaticity of the summed XYZ.
  for (float luminance : {0.001F, 0.3F, 1.0F, 250.0F}) {
    V a = kRed;
    V b = {{0.21F, 0.07F, luminance}};
    V mixed;
    ASSERT_EQ(vexo_xyY_mix(&a, &b, &mixed), 0);
    ASSERT_EQ(vexo_xyY_XYZ(&a) + vexo_xyY_XYZ(&b) + vexo_XYZ_mix(&a, &b, &b) + vexo_XYZ_xyY(&b), 0);
    for (int i = 0; i < 3; i++) {
      EXPECT_NEAR(mixed.d[i] / b.d[i], 1.0F, 1e-6F);
    }
  }
}

} // namespace
