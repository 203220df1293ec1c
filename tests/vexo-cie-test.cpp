#include <gtest/gtest.h>

#include <cmath>

#include "bits.h"
#include "vexo-cs.h"

// Bit patterns were computed outside the library in single precision; comments give the published values they round.

namespace {

const vexo_vector kD65 = {{95.047F, 100, 108.883F}}; // XYZ, ASTM E308
const vexo_vector kRed = {{0.64F, 0.33F, 21.26F}};   // xyY, BT.709 primaries at 100 cd/m2 white
const vexo_vector kGreen = {{0.30F, 0.60F, 71.52F}};
const vexo_vector kBlue = {{0.15F, 0.06F, 7.22F}};
const vexo_vector kBlack = {{0, 0, 0}};
const vexo_vector kSentinel = {{7, 7, 7}};

TEST(Cie, ConversionsInPlace) {
  const struct {
    const char *what;
    int (*convert)(vexo_vector *);
    vexo_vector in;
    int status; // a failure must leave the vector as it is
    vexo_vector out;
  } rows[] = {
      {"xyz of D65", vexo_XYZ_xyz, kD65, 0, {{0x1.403b68p-2F, 0x1.50eb72p-2F, 0x1.6ed928p-2F}}},
      {"xyz of a negative component", vexo_XYZ_xyz, {{-1, 2, 0}}, 0, {{-1, 2, 0}}},
      {"xyz of black", vexo_XYZ_xyz, kBlack, -1, {}},
      {"xyz of a negative sum", vexo_XYZ_xyz, {{1, -2, 0.5F}}, -1, {}},
      {"xyz of a NaN", vexo_XYZ_xyz, {{1, NAN, 1}}, -1, {}},
      {"xyY of illuminant A", vexo_XYZ_xyY, {{109.85F, 100, 35.585F}}, 0, {{0x1.ca507ep-2F, 0x1.a137eap-2F, 100}}},
      {"xyY of a negative component", vexo_XYZ_xyY, {{2, -1, 1}}, 0, {{1, -0.5F, -1}}},
      {"xyY of black", vexo_XYZ_xyY, kBlack, -1, {}},
      {"xyY of a NaN", vexo_XYZ_xyY, {{1, 1, NAN}}, -1, {}},
      {"u'v'Y of D65 (0.1978, 0.4683)", vexo_XYZ_uvY, kD65, 0, {{0x1.952d0ap-3F, 0x1.df938cp-2F, 100}}},
      {"u'v'Y of E (4/19, 9/19)", vexo_XYZ_uvY, {{1, 1, 1}}, 0, {{0x1.af286cp-3F, 0x1.e50d7ap-2F, 1}}},
      {"u'v'Y of black", vexo_XYZ_uvY, kBlack, 0, kBlack},
      {"u'v'Y of a negative component", vexo_XYZ_uvY, {{-1, 2, 0}}, -1, {}},
      {"u'v'Y of a NaN", vexo_XYZ_uvY, {{1, 1, NAN}}, -1, {}},
      {"XYZ of D65 xyY (95.046, 100, 108.906)",
       vexo_xyY_XYZ,
       {{0.3127F, 0.3290F, 100}},
       0,
       {{0x1.7c2eb2p6F, 100, 0x1.b39f88p6F}}},
      {"XYZ of y = 0", vexo_xyY_XYZ, {{0.5F, 0, 10}}, 0, kBlack},
      {"XYZ of x = 1", vexo_xyY_XYZ, {{1, 0.3F, 10}}, -1, {}},
      {"XYZ of y = 1", vexo_xyY_XYZ, {{0.3F, 1, 10}}, -1, {}},
      {"XYZ of a negative x", vexo_xyY_XYZ, {{-0x1p-149F, 0.3F, 10}}, -1, {}},
      {"XYZ of a negative y", vexo_xyY_XYZ, {{0.3F, -0.1F, 10}}, -1, {}},
      {"XYZ of a negative Y", vexo_xyY_XYZ, {{0.3F, 0.3F, -1}}, -1, {}},
      {"XYZ of a NaN", vexo_xyY_XYZ, {{0.3F, 0.3F, NAN}}, -1, {}},
      {"u'v'Y of D65 xyY", vexo_xyY_uvY, {{0.3127F, 0.3290F, 100}}, 0, {{0x1.9527e6p-3F, 0x1.df8f48p-2F, 100}}},
      {"u'v'Y of y = 0", vexo_xyY_uvY, {{0.5F, 0, 10}}, 0, {{1, 0, 10}}},
      {"u'v'Y of x = 1", vexo_xyY_uvY, {{1, 0.3F, 10}}, -1, {}},
      {"u'v'Y of a NaN", vexo_xyY_uvY, {{NAN, 0.3F, 10}}, -1, {}},
  };
  for (const auto &row : rows) {
    vexo_vector v = row.in;
    EXPECT_EQ(row.convert(&v), row.status) << row.what;
    EXPECT_EQ(bits_of(v), bits_of(row.status == 0 ? row.out : row.in)) << row.what;
  }
}

TEST(Cie, ValidityIsATruthValue) {
  const struct {
    vexo_vector XYZ;
    int valid;
  } rows[] = {{kBlack, 1},       {kD65, 1},          {{{-0x1p-149F, 1, 1}}, 0}, {{{1, -1, 1}}, 0},
              {{{1, 1, -1}}, 0}, {{{NAN, 1, 1}}, 0}, {{{1, NAN, 1}}, 0},        {{{1, 1, NAN}}, 0}};
  for (auto row : rows) {
    EXPECT_EQ(vexo_XYZ_valid(&row.XYZ), row.valid);
  }
}

TEST(Cie, NoInverseOfUvY) {
  vexo_vector uvY = {{0.1978F, 0.4683F, 1}};
  vexo_vector XYZ = kSentinel;
  EXPECT_EQ(vexo_uvY_XYZ(&uvY, &XYZ), -1);
  EXPECT_EQ(bits_of(XYZ), bits_of(kSentinel));
  EXPECT_EQ(bits_of(uvY), bits_of(vexo_vector{{0.1978F, 0.4683F, 1}}));
}

TEST(Cie, TablesBecomeRelativeToTheirBlack) {
  const struct {
    const char *what;
    int size;
    float X[3], Y[3], Z[3];
    int status;
    float x[3], y[3], L[3];
  } rows[] = {
      {"two samples above black",
       3,
       {0.1F, 1, 10.5F},
       {0.2F, 2, 20.25F},
       {0.3F, 3, 5},
       0,
       {0, 0x1.555556p-3F, 0x1.2ef9dp-2F},
       {0, 0x1.555556p-2F, 0x1.240d1cp-1F},
       {0, 0x1.ccccccp0F, 0x1.40ccccp4F}},
      {"sample 1 is black", 3, {1, 1, 2}, {1, 1, 2}, {1, 1, 2}, -1, {0, 1, 2}, {0, 1, 2}, {0, 1, 2}},
      {"sample 2 is black", 3, {1, 2, 1}, {1, 2, 1}, {1, 3, 1}, -1, {0, 0.25F, 1}, {0, 0.25F, 1}, {0, 1, 1}},
      {"black alone", 1, {1, 2, 3}, {1, 2, 3}, {1, 2, 3}, 0, {0, 2, 3}, {0, 2, 3}, {0, 2, 3}},
      {"nothing", 0, {1, 2, 3}, {1, 2, 3}, {1, 2, 3}, -1, {1, 2, 3}, {1, 2, 3}, {1, 2, 3}},
      {"less than nothing", -1, {1, 2, 3}, {1, 2, 3}, {1, 2, 3}, -1, {1, 2, 3}, {1, 2, 3}, {1, 2, 3}},
  };
  for (auto row : rows) {
    float *columns[] = {row.X, row.Y, row.Z};
    EXPECT_EQ(vexo_XYZ_xyY_array(row.size, columns), row.status) << row.what;
    EXPECT_EQ(bits(row.X, 3), bits(row.x, 3)) << row.what;
    EXPECT_EQ(bits(row.Y, 3), bits(row.y, 3)) << row.what;
    EXPECT_EQ(bits(row.Z, 3), bits(row.L, 3)) << row.what;
  }
}

TEST(Cie, XyzMixtureIsTheSum) {
  vexo_vector a = {{1, 2, 3}};
  vexo_vector b = {{0.5F, 0, 4}};
  EXPECT_EQ(vexo_XYZ_mix(&a, &b, &a), 0);
  EXPECT_EQ(bits_of(a), bits_of(vexo_vector{{1.5F, 2, 7}}));
  EXPECT_EQ(vexo_XYZ_mix(&a, &b, &b), 0);
  EXPECT_EQ(bits_of(b), bits_of(vexo_vector{{2, 2, 11}}));
  vexo_vector invalid = {{1, -1, 1}};
  vexo_vector out = kSentinel;
  EXPECT_EQ(vexo_XYZ_mix(&a, &invalid, &out), -1);
  EXPECT_EQ(vexo_XYZ_mix(&invalid, &a, &out), -1);
  EXPECT_EQ(bits_of(out), bits_of(kSentinel));
}

TEST(Cie, XyYMixtures) {
  const vexo_vector yellow = {{0x1.ad59fp-2F, 0x1.02b2ep-1F, 0x1.731eb8p6F}}; // (0.4193, 0.5053, 92.78)
  const vexo_vector white = {{0x1.402f3cp-2F, 0x1.50e39cp-2F, 100}};          // (0.3127, 0.3290, 100)
  const vexo_vector flat = {{0.25F, 0, 2}};                                   // y = 0: its weight is infinite
  const vexo_vector invalid = {{1, 0.5F, 1}};
  const vexo_vector nan = {{NAN, NAN, 0}};
  const struct {
    vexo_vector a, b, c;
    int pair_status;
    vexo_vector pair; // a and b
    int status;
    vexo_vector all; // a, b and c
  } rows[] = {{kRed, kGreen, kBlue, 0, yellow, 0, white},
              {flat, {{0.75F, 0.5F, 1}}, invalid, 0, {{0.25F, 0, 3}}, -1, kBlack},
              {kBlack, kBlack, kBlack, 0, nan, -1, kBlack},
              {kBlack, kGreen, kBlue, 0, {{NAN, NAN, 71.52F}}, -1, kBlack},
              {{{0.64F, 0.33F, 2}}, {{0.64F, 0.33F, 3}}, kBlack, 0, {{0.64F, 0.33F, 5}}, 0, {{NAN, NAN, 5}}},
              {invalid, kGreen, kBlue, -1, kBlack, -1, kSentinel},
              {kRed, {{0.5F, 0.25F, NAN}}, kBlue, -1, kBlack, -1, kSentinel}};
  const auto expect = [](const vexo_vector &got, const vexo_vector &want) {
    for (int i = 0; i < 3; i++) {
      EXPECT_TRUE(bits(got.d[i]) == bits(want.d[i]) || (std::isnan(got.d[i]) && std::isnan(want.d[i])))
          << i << ": " << got.d[i] << ", not " << want.d[i];
    }
  };
  for (auto row : rows) {
    vexo_vector out = kSentinel;
    EXPECT_EQ(vexo_xyY_mix_3(&row.a, &row.b, &row.c, &out), row.status);
    expect(out, row.all);
    EXPECT_EQ(vexo_xyY_mix(&row.a, &row.b, &row.a), row.pair_status); // the output may be an input
    expect(row.a, row.pair);
  }
}

// Grassmann: a mixture has the chromaticity of the sum of the XYZ.
TEST(Cie, XyYMixtureAgreesWithXyz) {
  for (float weight : {0.001F, 0.3F, 1.0F, 250.0F}) {
    vexo_vector a = kRed;
    vexo_vector b = {{0.21F, 0.07F, weight}};
    vexo_vector mixed;
    ASSERT_EQ(vexo_xyY_mix(&a, &b, &mixed), 0);
    vexo_vector sum;
    ASSERT_EQ(vexo_xyY_XYZ(&a) + vexo_xyY_XYZ(&b) + vexo_XYZ_mix(&a, &b, &sum) + vexo_XYZ_xyY(&sum), 0);
    for (int i = 0; i < 3; i++) {
      EXPECT_NEAR(mixed.d[i] / sum.d[i], 1.0F, 1e-6F);
    }
  }
}

} // namespace
