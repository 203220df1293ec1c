#include "calibration/target.h"

#include <vector>

#include "text/format.h"
#include "text/grammar.h"

namespace {

struct NamedWhite {
  const char *name;
  float xy[2];
};

// CIE 15 daylight illuminants and E; D93 as broadcast monitors use it; DCI of SMPTE RP 431-2.
const NamedWhite kWhites[] = {
    {"D50", {0.3457F, 0.3585F}},       {"D55", {0.3324F, 0.3474F}}, {"D65", {0.3127F, 0.3290F}},
    {"D75", {0.2990F, 0.3149F}},       {"D93", {0.2831F, 0.2971F}}, {"DCI", {0.3140F, 0.3510F}},
    {"E", {1.0F / 3.0F, 1.0F / 3.0F}},
};

struct NamedCurve {
  const char *name;
  vexo_gamma gamma; // slope, transition, gamma, offset
};

// Encoding curves: linear light to signal.
const NamedCurve kCurves[] = {
    {"linear", {0.0F, 0.0F, 1.0F, 0.0F}},
    {"bt709", {4.5F, 0.018F, 0.45F, 0.099F}},            // BT.709, BT.601, BT.2020 at 10 bits
    {"bt2020", {4.5F, 0.0181F, 0.45F, 0.0993F}},         // BT.2020 at 12 bits
    {"bt1886", {0.0F, 0.0F, 1.0F / 2.4F, 0.0F}},         // inverse of BT.1886 over a black of 0
    {"srgb", {12.92F, 0.0031308F, 1.0F / 2.4F, 0.055F}}, // IEC 61966-2-1
    {"smpte240m", {4.0F, 0.0228F, 0.45F, 0.1115F}},      // SMPTE 240M
    {"adobe", {0.0F, 0.0F, 256.0F / 563.0F, 0.0F}},      // Adobe RGB (1998)
    {"dci", {0.0F, 0.0F, 1.0F / 2.6F, 0.0F}},            // SMPTE ST 428-1
};

// Whether slope, transition, gamma and offset make a curve that has an inverse.
bool is_curve(const std::vector<float> &v) {
  return v.size() == 4 && v[0] >= 0.0F && v[1] >= 0.0F && v[1] < 1.0F && v[2] > 0.0F && v[3] >= 0.0F &&
         (v[0] > 0.0F || v[1] == 0.0F);
}

} // namespace

Curve power_curve(float exponent, const std::string &name) {
  Curve curve = {name, {}};
  vexo_gamma_init(&curve.gamma, exponent);
  return curve;
}

Triple white_XYZ(const White &white, double luminance) {
  const double x = white.xyz.d[0];
  const double y = white.xyz.d[1];
  return {x / y * luminance, luminance, (1.0 - x - y) / y * luminance};
}

double target_light(const Target &target, double input) {
  vexo_gamma camera = target.camera.gamma;
  vexo_gamma system = target.system.gamma;
  return vexo_gamma_evaluate(&system, vexo_gamma_inverse(&camera, static_cast<float>(input)));
}

White parse_white(const std::string &option, const std::string &text) {
  White white = {text, {}};
  if (const NamedWhite *named = find_name(kWhites, text)) {
    white.name = named->name;
    vexo_vector_set_xy(&white.xyz, named->xy);
    return white;
  }
  const std::vector<float> xy = number_list(text);
  if (xy.size() != 2 || !(xy[0] > 0.0F) || !(xy[1] > 0.0F) || !(xy[0] + xy[1] < 1.0F)) {
    reject(option, text, "one of " + white_names() + ", or a chromaticity x,y such as 0.3127,0.3290",
           names_of(kWhites));
  }
  vexo_vector_set_xy(&white.xyz, xy.data());
  return white;
}

Curve parse_curve(const std::string &option, const std::string &text) {
  if (const NamedCurve *named = find_name(kCurves, text)) {
    return Curve{named->name, named->gamma};
  }
  const std::vector<float> values = number_list(text);
  if (values.size() == 1 && values[0] > 0.0F) {
    return power_curve(values[0], "power law " + text);
  }
  if (is_curve(values)) {
    return Curve{"custom", {values[0], values[1], values[2], values[3]}};
  }
  reject(option, text,
         "one of " + curve_names() + ", an exponent above 0, or slope,transition,gamma,offset " +
             "(slope above 0 where there is a toe, transition below 1, gamma above 0, offset not below 0)",
         names_of(kCurves));
}

std::string white_names() { return join(names_of(kWhites)); }

std::string curve_names() { return join(names_of(kCurves)); }

std::string describe(const Curve &curve) {
  const vexo_gamma &g = curve.gamma;
  return format("%s (slope %.9g, transition %.9g, gamma %.9g, offset %.9g)", curve.name.c_str(), g.slope, g.transition,
                g.gamma, g.offset);
}
