// Correlated colour temperature against Planck's law, perceptual spaces, colour differences and gamut geometry.
#include "vexo-cs.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <utility>

#include "bits.h"

namespace {

const float kNaN = std::nanf("");
const float kInf = HUGE_VALF;

void expect_same(const vexo_vector &v, const vexo_vector &expected) {
  for (int i = 0; i < 3; i++) {
    EXPECT_EQ(bits(v.d[i]), bits(expected.d[i])) << v.d[i] << " for " << expected.d[i];
  }
}

vexo_vector white_D65() { return vexo_vector{{95.047F, 100.0F, 108.883F}}; }

int temperature_of_xy(double x, double y) {
  float xyz[3] = {static_cast<float>(x), static_cast<float>(y), static_cast<float>(1.0 - x - y)};
  return vexo_xyz_cct(xyz);
}

struct Uv {
  double u;
  double v;
};

int temperature_of_uv(Uv c) {
  const double d = 2.0 * c.u - 8.0 * c.v + 4.0;
  return temperature_of_xy(3.0 * c.u / d, 2.0 * c.v / d);
}

// CIE 1931 colour matching functions, 380 to 780 nm in steps of 10 nm.
const double kObserver[41][3] = {
    {0.001368, 0.000039, 0.00645}, {0.004243, 0.00012, 0.02005}, {0.01431, 0.000396, 0.06785},
    {0.04351, 0.00121, 0.2074},    {0.13438, 0.004, 0.6456},     {0.2839, 0.0116, 1.3856},
    {0.34828, 0.023, 1.74706},     {0.3362, 0.038, 1.77211},     {0.2908, 0.06, 1.6692},
    {0.19536, 0.09098, 1.28764},   {0.09564, 0.13902, 0.81295},  {0.03201, 0.20802, 0.46518},
    {0.0049, 0.323, 0.272},        {0.0093, 0.503, 0.1582},      {0.06327, 0.71, 0.07825},
    {0.1655, 0.862, 0.04216},      {0.2904, 0.954, 0.0203},      {0.43345, 0.99495, 0.00875},
    {0.5945, 0.995, 0.0039},       {0.7621, 0.952, 0.0021},      {0.9163, 0.87, 0.00165},
    {1.0263, 0.757, 0.0011},       {1.0622, 0.631, 0.0008},      {1.0026, 0.503, 0.00034},
    {0.85445, 0.381, 0.00019},     {0.6424, 0.265, 0.00005},     {0.4479, 0.175, 0.00002},
    {0.2835, 0.107, 0.0},          {0.1649, 0.061, 0.0},         {0.0874, 0.032, 0.0},
    {0.04677, 0.017, 0.0},         {0.0227, 0.00821, 0.0},       {0.011359, 0.004102, 0.0},
    {0.00579, 0.002091, 0.0},      {0.002899, 0.001047, 0.0},    {0.00144, 0.00052, 0.0},
    {0.00069, 0.000249, 0.0},      {0.000332, 0.00012, 0.0},     {0.000166, 0.00006, 0.0},
    {0.000083, 0.00003, 0.0},      {0.000042, 0.000015, 0.0}};

// The Planckian radiator of a reciprocal temperature per megakelvin in the CIE 1960 diagram; c2 as in Robertson's day.
Uv planckian(double mired) {
  double XYZ[3] = {};
  for (int i = 0; i < 41; i++) {
    const double nm = 380.0 + 10.0 * i;
    const double power = std::pow(nm / 560.0, -5.0) / std::expm1(1.4388e-2 * 1e3 * mired / nm);
    for (int k = 0; k < 3; k++) {
      XYZ[k] += kObserver[i][k] * power;
    }
  }
  const double d = XYZ[0] + 15.0 * XYZ[1] + 3.0 * XYZ[2];
  return Uv{4.0 * XYZ[0] / d, 6.0 * XYZ[1] / d};
}

// A point at a right angle to the Planckian locus.
Uv beside_locus(double mired, double distance) {
  const Uv here = planckian(mired);
  const Uv after = planckian(mired + 0.01);
  const double scale = distance / std::hypot(after.u - here.u, after.v - here.v);
  return Uv{here.u - scale * (after.v - here.v), here.v + scale * (after.u - here.u)};
}

} // namespace

TEST(ColourTemperature, OfKnownColours) {
  const struct {
    const char *name;
    float XYZ[3];
    int kelvin;
  } cases[] = {
      {"A", {109.85F, 100.0F, 35.585F}, 2856},
      {"D50", {96.422F, 100.0F, 82.521F}, 5002},
      {"D65", {95.047F, 100.0F, 108.883F}, 6502},
      {"D65 at another scale", {0.95047F, 1.0F, 1.08883F}, 6502},
      {"equal energy", {100.0F, 100.0F, 100.0F}, 5454},
      {"C", {98.074F, 100.0F, 118.232F}, 6774},
      {"black", {0.0F, 0.0F, 0.0F}, -1},
      {"nearly black", {9e-21F, 9e-21F, 9e-21F}, -1},
      {"dark, but not black", {0.95047e-20F, 1e-20F, 1.08883e-20F}, 6502},
      {"Z alone", {0.0F, 0.0F, 1.0F}, -1},
      {"all negative", {-1.0F, -1.0F, -1.0F}, -1},
      {"on the line of infinite temperature", {0.23987104F, 0.234036133F, 0.526092827F}, INT_MAX},
      {"within int near it", {0.257487983F, 0.22193262F, 0.520579398F}, 2100821376},
      {"beyond it", {0.248831213F, 0.227880046F, 0.523288727F}, -1},
      {"NaN", {kNaN, 1.0F, 1.0F}, -1},
      {"infinite", {1.0F, kInf, 1.0F}, -1},
      {"no denominator", {3.0F, 0.0F, -1.0F}, -1},
  };
  for (const auto &c : cases) {
    vexo_vector v = {{c.XYZ[0], c.XYZ[1], c.XYZ[2]}};
    EXPECT_EQ(vexo_XYZ_CCT(&v), c.kelvin) << c.name;
  }
  EXPECT_EQ(temperature_of_xy(0.3127, 0.3290), 6504);
  EXPECT_EQ(temperature_of_xy(0.2831, 0.2971), 9303);
  EXPECT_EQ(temperature_of_xy(0.4619, 0.2835), 1671); // purple, where the slope of the last line counts
  EXPECT_EQ(temperature_of_xy(0.60, 0.38), -1);       // cooler than the last line
  EXPECT_EQ(temperature_of_xy(0.15, 0.06), -1);       // hotter than the first
}

// Every line of the table, its slope included: radiators and points on either side of them have their own temperature,
// but for the lines around 325 per megakelvin, where the table has its historic value.
TEST(ColourTemperature, FollowsPlancksLaw) {
  for (double mired = 2.0; mired <= 598.0; mired += 4.0) {
    for (const double distance : {-0.01, 0.0, 0.01}) {
      const double found = 1e6 / temperature_of_uv(beside_locus(mired, distance));
      EXPECT_NEAR(found, mired, mired > 300.0 && mired < 350.0 ? 2.6 : 0.4) << mired << " at " << distance;
    }
  }
  EXPECT_NEAR(temperature_of_uv(planckian(325.0)) - 1e6 / 325.0, -21.0, 2.0);
  EXPECT_EQ(temperature_of_uv(planckian(602.0)), -1);
}

TEST(PerceptualSpaces, OfKnownColours) {
  const struct {
    vexo_vector XYZ;
    vexo_vector Lab;
    vexo_vector Luv;
  } cases[] = {
      {{{95.047F, 100.0F, 108.883F}}, {{100.0F, 0.0F, 0.0F}}, {{100.0F, 0.0F, 0.0F}}},
      {{{0.0F, 0.0F, 0.0F}}, {{0.0F, 0.0F, 0.0F}}, {{0.0F, -0.0F, -0.0F}}},
      {{{41.24F, 21.26F, 1.93F}}, {{53.2328796F, 80.1093292F, 67.2200775F}}, {{53.2328796F, 175.053055F, 37.7505035F}}},
      {{{0.3F, 0.8F, 0.1F}}, {{7.22637177F, -18.8589096F, 11.0289097F}}, {{7.22637177F, -9.63869572F, 9.68478394F}}},
      {{{0.5F, 1.0F, 2.0F}}, {{8.99144173F, -18.2741432F, -9.68124866F}}, {{8.99144173F, -12.2518749F, -5.81306887F}}},
      {{{-1.0F, 2.0F, 3.0F}}, {{15.4872437F, -107.719505F, -6.11815453F}}, {{15.4872437F, 0.0F, 0.0F}}},
  };
  for (const auto &c : cases) {
    vexo_vector white = white_D65();
    vexo_vector Lab = c.XYZ;
    vexo_vector Luv = c.XYZ;
    EXPECT_EQ(vexo_XYZ_Lab(&Lab, &white), 0);
    EXPECT_EQ(vexo_XYZ_Luv(&Luv, &white), 0);
    expect_same(Lab, c.Lab);
    expect_same(Luv, c.Luv);
  }
}

TEST(PerceptualSpaces, HueHasNoQuadrantAndWhiteMayBeUnusable) {
  const float quarter = static_cast<float>(std::acos(-1.0) / 4.0);
  const vexo_vector cases[][2] = {
      {{{50.0F, 1.0F, 1.0F}}, {{50.0F, std::sqrt(2.0F), quarter}}},
      {{{50.0F, -1.0F, -1.0F}}, {{50.0F, std::sqrt(2.0F), quarter}}},
      {{{50.0F, 0.0F, -5.0F}}, {{50.0F, 5.0F, -2.0F * quarter}}},
  };
  for (const auto &c : cases) {
    vexo_vector v = c[0];
    EXPECT_EQ(vexo_Lab_LCH(&v), 0);
    expect_same(v, c[1]);
  }
  vexo_vector colour = {{20.0F, 30.0F, 40.0F}};
  vexo_vector unusable = {{-1.0F, 30.0F, 1.0F}};
  EXPECT_EQ(vexo_XYZ_Lstar(&colour, 0.0F), 100.0F);
  EXPECT_EQ(vexo_XYZ_Luv(&colour, &unusable), 0);
  expect_same(colour, {{100.0F, 0.0F, 0.0F}});
  vexo_vector gray = {{50.0F, 0.0F, 0.0F}};
  vexo_Lab_LCH(&gray);
  EXPECT_TRUE(std::isnan(gray.d[2]));
  vexo_vector red = {{41.24F, 21.26F, 1.93F}};
  vexo_vector white = white_D65();
  EXPECT_EQ(vexo_XYZ_LCH(&red, &white), 0);
  expect_same(red, {{53.2328796F, 104.575539F, 0.698134422F}});
}

// G. Sharma, W. Wu, E. N. Dalal, "The CIEDE2000 color-difference formula: implementation notes, supplementary test
// data, and mathematical observations", Color Res. Appl. 30, 2005: all pairs with the published differences, and the
// single-precision results.
TEST(ColourDifference, CIEDE2000OfThePublishedPairs) {
  const struct {
    vexo_vector Lab1;
    vexo_vector Lab2;
    double published;
    float exact;
  } pairs[] = {
      {{{50.0F, 2.6772F, -79.7751F}}, {{50.0F, 0.0F, -82.7485F}}, 2.0425, 2.04245424F},
      {{{50.0F, 3.1571F, -77.2803F}}, {{50.0F, 0.0F, -82.7485F}}, 2.8615, 2.86151719F},
      {{{50.0F, 2.8361F, -74.02F}}, {{50.0F, 0.0F, -82.7485F}}, 3.4412, 3.44118118F},
      {{{50.0F, -1.3802F, -84.2814F}}, {{50.0F, 0.0F, -82.7485F}}, 1.0, 1.00000238F},
      {{{50.0F, -1.1848F, -84.8006F}}, {{50.0F, 0.0F, -82.7485F}}, 1.0, 1.00000095F},
      {{{50.0F, -0.9009F, -85.5211F}}, {{50.0F, 0.0F, -82.7485F}}, 1.0, 1.00000978F},
      {{{50.0F, 0.0F, 0.0F}}, {{50.0F, -1.0F, 2.0F}}, 2.3669, 2.36685872F},
      {{{50.0F, -1.0F, 2.0F}}, {{50.0F, 0.0F, 0.0F}}, 2.3669, 2.36685872F},
      {{{50.0F, 2.49F, -0.001F}}, {{50.0F, -2.49F, 0.0009F}}, 7.1792, 7.17917204F},
      {{{50.0F, 2.49F, -0.001F}}, {{50.0F, -2.49F, 0.001F}}, 7.1792, 7.17916203F},
      {{{50.0F, 2.49F, -0.001F}}, {{50.0F, -2.49F, 0.0011F}}, 7.2195, 7.21947193F},
      {{{50.0F, 2.49F, -0.001F}}, {{50.0F, -2.49F, 0.0012F}}, 7.2195, 7.21947336F},
      {{{50.0F, -0.001F, 2.49F}}, {{50.0F, 0.0009F, -2.49F}}, 4.8045, 4.80452204F},
      {{{50.0F, -0.001F, 2.49F}}, {{50.0F, 0.001F, -2.49F}}, 4.8045, 4.8045249F},
      {{{50.0F, -0.001F, 2.49F}}, {{50.0F, 0.0011F, -2.49F}}, 4.7461, 4.74607134F},
      {{{50.0F, 2.5F, 0.0F}}, {{50.0F, 0.0F, -2.5F}}, 4.3065, 4.30648232F},
      {{{50.0F, 2.5F, 0.0F}}, {{73.0F, 25.0F, -18.0F}}, 27.1492, 27.149231F},
      {{{50.0F, 2.5F, 0.0F}}, {{61.0F, -5.0F, 29.0F}}, 22.8977, 22.8976917F},
      {{{50.0F, 2.5F, 0.0F}}, {{56.0F, -27.0F, -3.0F}}, 31.903, 31.9030056F},
      {{{50.0F, 2.5F, 0.0F}}, {{58.0F, 24.0F, 15.0F}}, 19.4535, 19.4535217F},
      {{{50.0F, 2.5F, 0.0F}}, {{50.0F, 3.1736F, 0.5854F}}, 1.0, 1.00002611F},
      {{{50.0F, 2.5F, 0.0F}}, {{50.0F, 3.2972F, 0.0F}}, 1.0, 0.999972582F},
      {{{50.0F, 2.5F, 0.0F}}, {{50.0F, 1.8634F, 0.5757F}}, 1.0, 1.00004971F},
      {{{50.0F, 2.5F, 0.0F}}, {{50.0F, 3.2592F, 0.335F}}, 1.0, 1.00003505F},
      {{{60.2574F, -34.0099F, 36.2677F}}, {{60.4626F, -34.1751F, 39.4387F}}, 1.2644, 1.26442254F},
      {{{63.0109F, -31.0961F, -5.8663F}}, {{62.8187F, -29.7946F, -4.0864F}}, 1.263, 1.26295996F},
      {{{61.2901F, 3.7196F, -5.3901F}}, {{61.4292F, 2.248F, -4.962F}}, 1.8731, 1.87306964F},
      {{{35.0831F, -44.1164F, 3.7933F}}, {{35.0232F, -40.0716F, 1.5901F}}, 1.8645, 1.86449647F},
      {{{22.7233F, 20.0904F, -46.694F}}, {{23.0331F, 14.973F, -42.5619F}}, 2.0373, 2.03725529F},
      {{{36.4612F, 47.858F, 18.3852F}}, {{36.2715F, 50.5065F, 21.2231F}}, 1.4146, 1.41457689F},
      {{{90.8027F, -2.0831F, 1.441F}}, {{91.1528F, -1.6435F, 0.0447F}}, 1.4441, 1.44412923F},
      {{{90.9257F, -0.5406F, -0.9208F}}, {{88.6381F, -0.8985F, -0.7239F}}, 1.5381, 1.53811574F},
      {{{6.7747F, -0.2908F, -2.4247F}}, {{5.8714F, -0.0985F, -2.2286F}}, 0.6377, 0.637727976F},
      {{{2.0776F, 0.0795F, -1.135F}}, {{0.9033F, -0.0636F, -0.5514F}}, 0.9082, 0.908232749F},
  };
  for (const auto &p : pairs) {
    SCOPED_TRACE(&p - pairs + 1);
    vexo_vector a = p.Lab1;
    vexo_vector b = p.Lab2;
    EXPECT_EQ(vexo_Lab_DE2000(&a, &b), p.exact);
    EXPECT_EQ(vexo_Lab_DE2000(&b, &a), p.exact);
    EXPECT_NEAR(static_cast<double>(p.exact), p.published, 0.5e-4);
    EXPECT_EQ(vexo_Lab_DE2000(&a, &a), 0.0F);
  }
}

TEST(ColourDifference, OfXYZColours) {
  const struct {
    const char *name;
    float (*difference)(vexo_vector *, vexo_vector *, vexo_vector *);
    float red_blue;
  } cases[] = {
      {"uv", vexo_XYZ_DEuv, 250.442719F}, {"ab", vexo_XYZ_DEab, 176.332748F}, {"2000", vexo_XYZ_DE2000, 52.8786736F}};
  for (const auto &c : cases) {
    SCOPED_TRACE(c.name);
    vexo_vector red = {{41.24F, 21.26F, 1.93F}};
    vexo_vector blue = {{18.05F, 7.22F, 95.05F}};
    vexo_vector white = white_D65();
    EXPECT_EQ(c.difference(&red, &blue, &white), c.red_blue);
    EXPECT_EQ(c.difference(&blue, &red, &white), c.red_blue);
    EXPECT_EQ(c.difference(&red, &red, &white), 0.0F);
    EXPECT_EQ(red.d[0], 41.24F); // inputs are not converted
  }
}

// Areas worked out by hand; the secondaries are the mixtures of two primaries at full drive.
TEST(Gamut, OfStandardSpaces) {
  struct Space {
    const char *name;
    float data[4][2];
    double area;
  };
  Space spaces[] = {
      {"BT.709", {{0.64F, 0.33F}, {0.30F, 0.60F}, {0.15F, 0.06F}, {0.3127F, 0.3290F}}, 0.11205},
      {"BT.2020", {{0.708F, 0.292F}, {0.170F, 0.797F}, {0.131F, 0.046F}, {0.3127F, 0.3290F}}, 0.2118665},
      {"DCI-P3", {{0.68F, 0.32F}, {0.265F, 0.69F}, {0.15F, 0.06F}, {0.314F, 0.351F}}, 0.152},
  };
  for (Space &s : spaces) {
    SCOPED_TRACE(s.name);
    vexo_cs cs;
    ASSERT_EQ(vexo_cs_init(&cs, s.data), 0);
    EXPECT_NEAR(static_cast<double>(vexo_cs_area(&cs)), s.area, 1e-7);
    vexo_vector secondary[3];
    EXPECT_EQ(vexo_cs_secondary(&cs, &secondary[0], &secondary[1], &secondary[2]), 0);
    for (int primary = 0; primary < 3; primary++) {
      vexo_vector mixture = {{1.0F, 1.0F, 1.0F}};
      mixture.d[primary] = 0.0F;
      vexo_matrix_transform(&cs.npm, &mixture);
      vexo_XYZ_xyz(&mixture);
      for (int i = 0; i < 3; i++) {
        EXPECT_NEAR(secondary[primary].d[i], mixture.d[i], 3e-6F) << primary << " " << i;
      }
    }
    std::swap(cs.g, cs.b);
    EXPECT_NEAR(static_cast<double>(vexo_cs_area(&cs)), -s.area, 1e-7);
  }
}

TEST(Gamut, ExactAndDegenerate) {
  float bt709[4][2] = {{0.64F, 0.33F}, {0.30F, 0.60F}, {0.15F, 0.06F}, {0.3127F, 0.3290F}};
  vexo_cs cs;
  vexo_cs_init(&cs, bt709);
  EXPECT_EQ(vexo_cs_area(&cs), 0.112049997F);
  vexo_vector s[3];
  EXPECT_EQ(vexo_cs_secondary(&cs, &s[0], nullptr, nullptr), 0);
  EXPECT_EQ(vexo_cs_secondary(&cs, nullptr, &s[1], nullptr), 0);
  EXPECT_EQ(vexo_cs_secondary(&cs, nullptr, nullptr, &s[2]), 0);
  expect_same(s[0], {{0.224647492F, 0.328730971F, 0.446621507F}});
  expect_same(s[1], {{0.320893347F, 0.154165715F, 0.524940968F}});
  expect_same(s[2], {{0.41930604F, 0.50525701F, 0.0754369497F}});
  EXPECT_EQ(vexo_cs_secondary(nullptr, &s[0], &s[1], &s[2]), -1);
  EXPECT_EQ(s[0].d[0], 0.224647492F);

  vexo_cs_set_b(&cs, 0.30F, 0.06F); // the side from green to blue is parallel to the y axis
  EXPECT_EQ(vexo_cs_secondary(&cs, &s[0], nullptr, nullptr), 0);
  EXPECT_TRUE(std::isnan(s[0].d[0]));
  cs.b = vexo_vector{{0.5F, -0.5F, 0.0F}};
  EXPECT_EQ(vexo_cs_area(&cs), 0.0F);
}
