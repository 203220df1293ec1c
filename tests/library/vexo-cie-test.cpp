// Correlated colour temperature against Planck's law.
#include <gtest/gtest.h>

#include <cmath>

#include "vexo-cs.h"

namespace {

struct Uv {
  double u, v;
};

int temperature_of_uv(Uv c) {
  const double d = 2.0 * c.u - 8.0 * c.v + 4.0;
  const double x = 3.0 * c.u / d;
  const double y = 2.0 * c.v / d;
  float xyz[3] = {static_cast<float>(x), static_cast<float>(y), static_cast<float>(1.0 - x - y)};
  return vexo_xyz_cct(xyz);
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
