// CIE coordinates (CIE 15): XYZ, xyz, xyY and u'v'Y, and additive mixing; correlated colour temperature; perceptual
// spaces and colour differences. Single precision, with the widening to double visible where a step takes one;
// declared in vexo-cs.h.
#include "vexo-cs.h"

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "base/codes.h"
#include "vexo-xyY.h"

using vexo_internal::mix_weighted;
using vexo_internal::valid_xyY;
using vexo_internal::weight;

namespace {

// Robertson's isotemperature lines (A. R. Robertson, "Computation of correlated color temperature and distribution
// temperature", J. Opt. Soc. Am. 58, 1968): where each crosses the Planckian locus in the CIE 1960 diagram, and its
// slope.
struct UVT {
  float u;
  float v;
  float t;
};
const int kLines = 31;
// The u of 325 per megakelvin is printed 0.24702 in the published table and in most programs made from it. 0.24792
// fits its neighbours better and moves results by up to some 23 K around 3100 K: kept, so that temperatures agree.
const UVT uvt[kLines] = {
    // u, v, t; reciprocal temperature per megakelvin
    {0.18006F, 0.26352F, -0.24341F}, // 0
    {0.18066F, 0.26589F, -0.25479F}, // 10
    {0.18133F, 0.26846F, -0.26876F}, // 20
    {0.18208F, 0.27119F, -0.28539F}, // 30
    {0.18293F, 0.27407F, -0.30470F}, // 40
    {0.18388F, 0.27709F, -0.32675F}, // 50
    {0.18494F, 0.28021F, -0.35156F}, // 60
    {0.18611F, 0.28342F, -0.37915F}, // 70
    {0.18740F, 0.28668F, -0.40955F}, // 80
    {0.18880F, 0.28997F, -0.44278F}, // 90
    {0.19032F, 0.29326F, -0.47888F}, // 100
    {0.19462F, 0.30141F, -0.58204F}, // 125
    {0.19962F, 0.30921F, -0.70471F}, // 150
    {0.20525F, 0.31647F, -0.84901F}, // 175
    {0.21142F, 0.32312F, -1.0182F},  // 200
    {0.21807F, 0.32909F, -1.2168F},  // 225
    {0.22511F, 0.33439F, -1.4512F},  // 250
    {0.23247F, 0.33904F, -1.7298F},  // 275
    {0.24010F, 0.34308F, -2.0637F},  // 300
    {0.24702F, 0.34655F, -2.4681F},  // 325
    {0.25591F, 0.34951F, -2.9641F},  // 350
    {0.26400F, 0.35200F, -3.5814F},  // 375
    {0.27218F, 0.35407F, -4.3633F},  // 400
    {0.28039F, 0.35577F, -5.3762F},  // 425
    {0.28863F, 0.35714F, -6.7262F},  // 450
    {0.29685F, 0.35823F, -8.5955F},  // 475
    {0.30505F, 0.35907F, -11.324F},  // 500
    {0.31320F, 0.35968F, -15.628F},  // 525
    {0.32129F, 0.36011F, -23.325F},  // 550
    {0.32931F, 0.36038F, -40.770F},  // 575
    {0.33724F, 0.36051F, -116.45F},  // 600
};

// Reciprocal temperatures of the lines, 1/K. The first is not 0, so that its own reciprocal stays finite.
const float rt[kLines] = {1e-16F,   1e-05F,    2e-05F, 3e-05F,    4e-05F,   5e-05F,    6e-05F, 7e-05F,
                          8e-05F,   9e-05F,    1e-04F, 1.25e-04F, 1.5e-04F, 1.75e-04F, 2e-04F, 2.25e-04F,
                          2.5e-04F, 2.75e-04F, 3e-04F, 3.25e-04F, 3.5e-04F, 3.75e-04F, 4e-04F, 4.25e-04F,
                          4.5e-04F, 4.75e-04F, 5e-04F, 5.25e-04F, 5.5e-04F, 5.75e-04F, 6e-04F};

// sqrt(1 + t^2) of the lines in double, from t^2 in single precision.
const double steepness[kLines] = {1.0291979559429039, 1.0319486187898508, 1.0354863270340853, 1.0399266535944576,
                                  1.045390874122708,  1.0520292620722953, 1.0599973740860065, 1.0694646888457169,
                                  1.0806161254531643, 1.0936425905621345, 1.1087497641725514, 1.1570525348361755,
                                  1.2233626546169605, 1.3117995209446,    1.4271409749365458, 1.5749927444896397,
                                  1.7623794568551543, 1.9980510513992886, 2.2932199473776564, 2.6629904102836064,
                                  3.1282403549280997, 3.718390182910901,  4.476425514987975,  5.468411854780232,
                                  6.800129990176716,  8.653474548707976,  11.368068721211854, 15.65996137475406,
                                  23.34642722265015,  40.78226321777719,  116.45428958393933};

// The distance at a right angle to a line, from the difference in v at one u.
float normalised(float distance, int line) {
  return static_cast<float>(static_cast<double>(distance) / steepness[line]);
}

// Kelvin above 0 to the nearest integer, halves away from zero; INT_MAX stands for everything above it.
int whole_kelvin(float kelvin) { return kelvin < 2147483648.0F ? vexo_internal::nearest(kelvin) : INT_MAX; }

// x to the power 0.3333333333333333, rounded to single precision, for x > 0. Of a first guess that divides the exponent
// by three (3.3 % off at worst) two of Halley's steps make one that is 1e-14 off; the exponent, a little below a third,
// moves a float by 1.7e-15. Where 2e-14 cannot round to another float, that saves the power function. NaN and infinity
// do not compare equal on the way and so take it.
float cube_root(double x) {
  uint64_t guess;
  memcpy(&guess, &x, sizeof guess);
  guess = guess / 3 + 0x2A9F7893782DA1CE;
  double y;
  memcpy(&y, &guess, sizeof y);
  for (int step = 0; step < 2; step++) {
    const double cube = y * y * y;
    y *= (cube + 2.0 * x) / (2.0 * cube + x);
  }
  const float low = static_cast<float>(y * (1.0 - 2e-14));
  if (low == static_cast<float>(y * (1.0 + 2e-14))) {
    return low;
  }
  return static_cast<float>(std::pow(x, 0.3333333333333333));
}

// The lightness function f of CIE 15: cube root, with a straight line below the ratio (6/29)^3.
float vexo_XYZ_uniformity(float X, float Xn) {
  const float node = 0.008856452F; // (6/29)^3
  const float scale = 7.787037F;   // (29/6)^2 / 3
  const float var = X / Xn;
  if (var < node) {
    return static_cast<float>(static_cast<double>(var * scale) + 0.13793103448275862); // 16/116
  }
  return cube_root(static_cast<double>(var));
}

// L* from f(Y / Yn).
float lightness(float f, float Yn) { return Yn <= 0.0F ? 100.0F : 116.0F * f - 16.0F; }

float distance(const vexo_vector &a, const vexo_vector &b) {
  const float d0 = a.d[0] - b.d[0];
  const float d1 = a.d[1] - b.d[1];
  const float d2 = a.d[2] - b.d[2];
  return std::sqrt(d1 * d1 + d0 * d0 + d2 * d2);
}

const double kPi = 3.141592653589793;
const double kTwoPi = 6.283185307179586;

float chroma(float a, float b) { return std::sqrt(b * b + a * a); }

// CIEDE2000's measure of how strong a chroma is, 0..1: sqrt(C^7 / (C^7 + 25^7)).
double strength(double C7) { return std::sqrt(C7 / (C7 + 6103515625.0)); }

// scale strength(C^7) + offset, rounded to single precision, for a scale of at most 2 either way. The power by
// multiplications is right to 4 roundings and pow() to one; with those of the steps after it, halved by the root, the
// results differ by less than 1.8e-15. Where that cannot round to another float, it saves the power function.
float scaled_strength(float C, double scale, double offset) {
  const double C1 = static_cast<double>(C);
  const double C3 = C1 * C1 * C1;
  const double value = scale * strength(C3 * C3 * C1) + offset;
  const double error = 1.8e-15;
  const float low = static_cast<float>(value - error);
  if (low == static_cast<float>(value + error)) {
    return low;
  }
  return static_cast<float>(scale * strength(std::pow(C1, 7.0)) + offset);
}

// Hue angle, 0 to 2 pi, rounded to single precision before the turn is added.
float hue(float a, float b) {
  const float h = static_cast<float>(std::atan2(static_cast<double>(b), static_cast<double>(a)));
  return h < 0.0F ? static_cast<float>(static_cast<double>(h) + kTwoPi) : h;
}

// More than half a turn lies between two hues: their difference and mean then go the other way round.
bool far_apart(float hp1, float hp2) { return std::fabs(static_cast<double>(hp2 - hp1)) > kPi; }

float hue_difference(float hp1, float hp2) {
  const float dhp = hp2 - hp1;
  if (!far_apart(hp1, hp2)) {
    return dhp;
  }
  return static_cast<float>(hp1 > hp2 ? static_cast<double>(dhp) + kTwoPi : static_cast<double>(dhp) - kTwoPi);
}

float mean_hue(float hp1, float hp2) {
  const float sum = hp1 + hp2;
  const float half = sum * 0.5F;
  if (!far_apart(hp1, hp2)) {
    return half;
  }
  const double turn = static_cast<double>(sum) < kTwoPi ? kPi : -kPi;
  return static_cast<float>(static_cast<double>(half) + turn);
}

// T: how the weight of a hue difference depends on the hue. The angles are 30, 6 and 63 degrees.
float hue_weight(float hpbar) {
  const double h1 = static_cast<double>(hpbar);
  const double h2 = static_cast<double>(2.0F * hpbar);
  const double h3 = static_cast<double>(3.0F * hpbar);
  const double h4 = static_cast<double>(4.0F * hpbar);
  return static_cast<float>(1.0 - 0.17 * std::cos(h1 - 0.5235987755982988) + 0.24 * std::cos(h2) +
                            0.32 * std::cos(h3 + 0.10471975511965977) - 0.20 * std::cos(h4 - 1.0995574287564276));
}

// R_T: ties chroma and hue differences together in the blues, around 275 degrees.
float rotation(float hpbar, float Cpbar) {
  const float RC = scaled_strength(Cpbar, 2.0, 0.0);
  const double z = (static_cast<double>(hpbar * 180.0F) / kPi - 275.0) / 25.0;
  const float dtheta = static_cast<float>(30.0 * std::exp(-(z * z)));
  return static_cast<float>(-std::sin(2.0 * static_cast<double>(dtheta) * kPi / 180.0) * static_cast<double>(RC));
}

} // namespace

int vexo_XYZ_valid(vexo_vector *XYZ) { return XYZ->d[0] >= 0.0F && XYZ->d[1] >= 0.0F && XYZ->d[2] >= 0.0F; }

int vexo_XYZ_xyz(vexo_vector *XYZ) {
  const float sum = XYZ->d[0] + XYZ->d[1] + XYZ->d[2];
  if (!(sum > 0.0F)) {
    return -1;
  }
  *XYZ = vexo_vector{{XYZ->d[0] / sum, XYZ->d[1] / sum, XYZ->d[2] / sum}};
  return 0;
}

int vexo_XYZ_xyY(vexo_vector *XYZ) {
  const float sum = XYZ->d[0] + XYZ->d[1] + XYZ->d[2];
  if (!(sum > 0.0F)) {
    return -1;
  }
  *XYZ = vexo_vector{{XYZ->d[0] / sum, XYZ->d[1] / sum, XYZ->d[1]}};
  return 0;
}

int vexo_XYZ_xyY_array(int size, float **XYZ) {
  if (size < 1) {
    return -1;
  }
  const float black[3] = {XYZ[0][0], XYZ[1][0], XYZ[2][0]};
  XYZ[0][0] = XYZ[1][0] = XYZ[2][0] = 0.0F;
  for (int i = 1; i < size; i++) {
    vexo_vector v = {{XYZ[0][i] - black[0], XYZ[1][i] - black[1], XYZ[2][i] - black[2]}};
    if (vexo_XYZ_xyY(&v) != 0) {
      return -1;
    }
    for (int m = 0; m < 3; m++) {
      XYZ[m][i] = v.d[m];
    }
  }
  return 0;
}

int vexo_XYZ_uvY(vexo_vector *XYZ) {
  if (vexo_XYZ_valid(XYZ) == 0) {
    return -1;
  }
  const float X = XYZ->d[0];
  const float Y = XYZ->d[1];
  const float Z = XYZ->d[2];
  const float denom = X + 15.0F * Y + 3.0F * Z;
  if (denom > 0.0F) {
    *XYZ = vexo_vector{{4.0F * X / denom, 9.0F * Y / denom, Y}};
  }
  return 0;
}

int vexo_xyY_XYZ(vexo_vector *xyY) {
  if (!valid_xyY(*xyY)) {
    return -1;
  }
  const float x = xyY->d[0];
  const float y = xyY->d[1];
  const float Y = xyY->d[2];
  if (!(y > 0.0F)) {
    vexo_vector_init(xyY);
    return 0;
  }
  const float t = Y / y;
  const float X = t * x;
  *xyY = vexo_vector{{X, Y, t - X - Y}};
  return 0;
}

int vexo_xyY_uvY(vexo_vector *xyY) {
  if (!valid_xyY(*xyY)) {
    return -1;
  }
  const float x = xyY->d[0];
  const float y = xyY->d[1];
  const float denom = 12.0F * y - 2.0F * x + 3.0F;
  xyY->d[0] = 4.0F * x / denom;
  xyY->d[1] = 9.0F * y / denom;
  return 0;
}

int vexo_uvY_XYZ(vexo_vector * /*uvY*/, vexo_vector * /*XYZ*/) { return -1; }

int vexo_XYZ_mix(vexo_vector *XYZ1, vexo_vector *XYZ2, vexo_vector *XYZ) {
  if (vexo_XYZ_valid(XYZ1) == 0 || vexo_XYZ_valid(XYZ2) == 0) {
    return -1;
  }
  *XYZ = vexo_vector{{XYZ1->d[0] + XYZ2->d[0], XYZ1->d[1] + XYZ2->d[1], XYZ1->d[2] + XYZ2->d[2]}};
  return 0;
}

int vexo_xyY_mix(vexo_vector *xyY1, vexo_vector *xyY2, vexo_vector *xyY) {
  if (!valid_xyY(*xyY1) || !valid_xyY(*xyY2)) {
    vexo_vector_init(xyY);
    return -1;
  }
  *xyY = mix_weighted(*xyY1, weight(*xyY1), *xyY2, weight(*xyY2));
  return 0;
}

int vexo_xyY_mix_3(vexo_vector *xyY1, vexo_vector *xyY2, vexo_vector *xyY3, vexo_vector *xyY) {
  vexo_vector mixed;
  if (vexo_xyY_mix(xyY1, xyY2, &mixed) != 0) {
    return -1;
  }
  return vexo_xyY_mix(&mixed, xyY3, xyY);
}

int vexo_xyz_cct(float *xyz) {
  const double X = static_cast<double>(xyz[0]);
  const double Y = static_cast<double>(xyz[1]);
  const double Z = static_cast<double>(xyz[2]);
  if (X < 1e-20 && Y < 1e-20 && Z < 1e-20) {
    return -1;
  }
  const double den = X + 15.0 * Y + 3.0 * Z;
  const float us = static_cast<float>(4.0 * X / den);
  const float vs = static_cast<float>(6.0 * Y / den);

  const auto distance = [us, vs](int i) { return vs - uvt[i].v - uvt[i].t * (us - uvt[i].u); };
  float dm = distance(0);
  for (int i = 1; i < kLines; i++) {
    const float di = distance(i);
    if ((di < 0.0F) != (dm < 0.0F) && !std::isnan(dm) && !std::isnan(di)) {
      const float before = normalised(dm, i - 1);
      const float p = before / (before - normalised(di, i));
      return whole_kelvin(1.0F / (rt[i - 1] + (rt[i] - rt[i - 1]) * p));
    }
    dm = di;
  }
  return -1;
}

int vexo_XYZ_CCT(vexo_vector *XYZ) { return vexo_xyz_cct(XYZ->d); }

float vexo_XYZ_Lstar(vexo_vector *XYZ, float Yn) { return lightness(vexo_XYZ_uniformity(XYZ->d[1], Yn), Yn); }

int vexo_XYZ_Luv(vexo_vector *XYZ, vexo_vector *REF) {
  const float Lstar = vexo_XYZ_Lstar(XYZ, REF->d[1]);
  vexo_vector white = *REF;
  if (vexo_XYZ_uvY(&white) != 0 || vexo_XYZ_uvY(XYZ) != 0) {
    *XYZ = vexo_vector{{Lstar, 0.0F, 0.0F}};
    return 0;
  }
  const float ustar = 13.0F * Lstar * (XYZ->d[0] - white.d[0]);
  const float vstar = 13.0F * Lstar * (XYZ->d[1] - white.d[1]);
  *XYZ = vexo_vector{{Lstar, ustar, vstar}};
  return 0;
}

float vexo_XYZ_DEuv(vexo_vector *XYZ1, vexo_vector *XYZ2, vexo_vector *REF) {
  vexo_vector Luv1 = *XYZ1;
  vexo_vector Luv2 = *XYZ2;
  vexo_XYZ_Luv(&Luv1, REF);
  vexo_XYZ_Luv(&Luv2, REF);
  return distance(Luv1, Luv2);
}

int vexo_XYZ_Lab(vexo_vector *XYZ, vexo_vector *REF) {
  const float fX = vexo_XYZ_uniformity(XYZ->d[0], REF->d[0]);
  const float fY = vexo_XYZ_uniformity(XYZ->d[1], REF->d[1]);
  const float fZ = vexo_XYZ_uniformity(XYZ->d[2], REF->d[2]);
  *XYZ = vexo_vector{{lightness(fY, REF->d[1]), (fX - fY) * 500.0F, (fY - fZ) * 200.0F}};
  return 0;
}

float vexo_XYZ_DEab(vexo_vector *XYZ1, vexo_vector *XYZ2, vexo_vector *REF) {
  vexo_vector Lab1 = *XYZ1;
  vexo_vector Lab2 = *XYZ2;
  vexo_XYZ_Lab(&Lab1, REF);
  vexo_XYZ_Lab(&Lab2, REF);
  return distance(Lab1, Lab2);
}

int vexo_Lab_LCH(vexo_vector *Lab) {
  const float a = Lab->d[1];
  const float b = Lab->d[2];
  const float h = static_cast<float>(std::atan(static_cast<double>(b / a)));
  *Lab = vexo_vector{{Lab->d[0], chroma(a, b), h}};
  return 0;
}

int vexo_XYZ_LCH(vexo_vector *XYZ, vexo_vector *XYZn) {
  vexo_XYZ_Lab(XYZ, XYZn);
  return vexo_Lab_LCH(XYZ);
}

// Names as in CIE 142 with the parametric factors 1; angles in radians.
float vexo_Lab_DE2000(vexo_vector *Lab1, vexo_vector *Lab2) {
  const auto &c1 = Lab1->d;
  const auto &c2 = Lab2->d;
  const float Cbar = (chroma(c1[1], c1[2]) + chroma(c2[1], c2[2])) * 0.5F;
  const float G = scaled_strength(Cbar, -0.5, 0.5);
  const float ap1 = (1.0F + G) * c1[1];
  const float ap2 = (1.0F + G) * c2[1];
  const float Cp1 = chroma(ap1, c1[2]);
  const float Cp2 = chroma(ap2, c2[2]);
  const float hp1 = hue(ap1, c1[2]);
  const float hp2 = hue(ap2, c2[2]);

  const float dLp = c2[0] - c1[0];
  const float dCp = Cp2 - Cp1;
  const double half_dhp = static_cast<double>(hue_difference(hp1, hp2)) * 0.5;
  const float dHp = static_cast<float>(2.0 * std::sqrt(static_cast<double>(Cp1 * Cp2)) * std::sin(half_dhp));

  const float hpbar = mean_hue(hp1, hp2);
  const float T = hue_weight(hpbar);
  const float from50 = (c1[0] + c2[0]) * 0.5F - 50.0F;
  const double from50sq = static_cast<double>(from50 * from50);
  const float SL = static_cast<float>(1.0 + 0.015 * from50sq / std::sqrt(20.0 + from50sq));
  const float Cpbar = (Cp1 + Cp2) * 0.5F;
  const float SC = static_cast<float>(1.0 + 0.045 * static_cast<double>(Cpbar));
  const float SH = static_cast<float>(1.0 + 0.015 * static_cast<double>(Cpbar) * static_cast<double>(T));

  const float L = dLp / SL;
  const float C = dCp / SC;
  const float H = dHp / SH;
  return std::sqrt(L * L + C * C + H * H + rotation(hpbar, Cpbar) * C * H);
}

float vexo_XYZ_DE2000(vexo_vector *XYZ1, vexo_vector *XYZ2, vexo_vector *XYZn) {
  vexo_vector Lab1 = *XYZ1;
  vexo_vector Lab2 = *XYZ2;
  vexo_XYZ_Lab(&Lab1, XYZn);
  vexo_XYZ_Lab(&Lab2, XYZn);
  return vexo_Lab_DE2000(&Lab1, &Lab2);
}
