#include "calibration/target.h"

#include <cmath>
#include <limits>
#include <vector>

#include "text/format.h"
#include "text/grammar.h"

namespace {

const double kLeast = 0.3; // of a light's X, Y, Z that stays where it makes up for the colour of black

struct NamedWhite {
  const char *name;
  float xy[2]; // 0, 0: the panel's own
};

// CIE 15 daylight illuminants and E; D93 as broadcast monitors use it; DCI of SMPTE RP 431-2.
const NamedWhite kWhites[] = {
    {"D50", {0.3457F, 0.3585F}},       {"D55", {0.3324F, 0.3474F}}, {"D65", {0.3127F, 0.3290F}},
    {"D75", {0.2990F, 0.3149F}},       {"D93", {0.2831F, 0.2971F}}, {"DCI", {0.3140F, 0.3510F}},
    {"E", {1.0F / 3.0F, 1.0F / 3.0F}}, {"native", {0.0F, 0.0F}},
};

struct Chromaticity {
  double x;
  double y;
};

// CIE 15: the daylight locus.
Chromaticity daylight(double kelvin) {
  const double t = 1000.0 / kelvin;
  const double x = kelvin <= 7000.0 ? ((-4.6070 * t + 2.9678) * t + 0.09911) * t + 0.244063
                                    : ((-2.0064 * t + 1.9018) * t + 0.24748) * t + 0.237040;
  return {x, (-3.0 * x + 2.870) * x - 0.275};
}

// The Planckian locus in u, v of 1960 (Krystek 1985).
Chromaticity planck(double t) {
  const double u =
      (0.860117757 + 1.54118254e-4 * t + 1.28641212e-7 * t * t) / (1.0 + 8.42420235e-4 * t + 7.08145163e-7 * t * t);
  const double v =
      (0.317398726 + 4.22806245e-5 * t + 4.20481691e-8 * t * t) / (1.0 - 2.89741816e-5 * t + 1.61456053e-7 * t * t);
  const double d = 2.0 * u - 8.0 * v + 4.0;
  return {3.0 * u / d, 2.0 * v / d};
}

struct Locus {
  const char *name; // letter after the temperature
  double lowest;    // kelvin
  double highest;
  Chromaticity (*at)(double kelvin);
};

const Locus kLoci[] = {{"K", 4000.0, 25000.0, daylight}, {"P", 1000.0, 15000.0, planck}};

// A chromaticity on a locus, such as 6500K; none where the text is not of that form or out of range.
std::optional<Chromaticity> on_locus(const std::string &text) {
  const Locus *locus = text.empty() ? nullptr : find_name(kLoci, text.substr(text.size() - 1));
  const auto kelvin = locus == nullptr ? std::nullopt : finite_number(text.substr(0, text.size() - 1));
  if (!kelvin || *kelvin < locus->lowest || *kelvin > locus->highest) {
    return std::nullopt;
  }
  return locus->at(double{*kelvin});
}

} // namespace

Triple white_XYZ(const White &white, double luminance) {
  const double x = white.xyz.d[0];
  const double y = white.xyz.d[1];
  return {x / y * luminance, luminance, (1.0 - x - y) / y * luminance};
}

White parse_white(const std::string &option, const std::string &text) {
  White white = {text, {}};
  if (const NamedWhite *named = find_name(kWhites, text)) {
    white.name = named->name;
    if (named->xy[1] > 0.0F) {
      vexo_vector_set_xy(&white.xyz, named->xy);
    }
    return white;
  }
  std::vector<float> xy = number_list(text);
  if (const auto c = on_locus(text)) {
    xy = {static_cast<float>(c->x), static_cast<float>(c->y)};
  }
  if (xy.size() != 2 || !(xy[0] > 0.0F) || !(xy[1] > 0.0F) || !(xy[0] + xy[1] < 1.0F)) {
    reject(
        option, text,
        "one of " + white_names() +
            ", a daylight of 4000K to 25000K, a Planckian radiator of 1000P to 15000P, or a chromaticity x,y such as "
            "0.3127,0.3290",
        names_of(kWhites));
  }
  vexo_vector_set_xy(&white.xyz, xy.data());
  return white;
}

std::string white_names() { return join(names_of(kWhites)); }

Target on_panel(Target target, const PanelModel &model) {
  if (target.white.is_native()) {
    const Triple XYZ = model.XYZ(Triple::Ones()) + included_black(target.curve, model);
    const float xy[2] = {static_cast<float>(XYZ[0] / XYZ.sum()), static_cast<float>(XYZ[1] / XYZ.sum())};
    vexo_vector_set_xy(&target.white.xyz, xy);
  }
  return target;
}

Triple included_black(const ToneCurve &curve, const Triple &black) {
  return curve.refers_to_black ? Triple(black.cwiseMax(0.0)) : Triple(Triple::Zero());
}

Triple included_black(const ToneCurve &curve, const PanelModel &model) {
  return included_black(curve, black_of(model.measurements()));
}

TargetRamp::TargetRamp(const Target &target, double white_luminance, const Triple &black)
    : target_(target), range_{white_luminance, black[1]}, white_(white_XYZ(target.white, 1.0)), black_(black) {}

double TargetRamp::luminance(double input) const {
  return std::min(target_.curve.luminance(input, range_), range_.white);
}

Triple TargetRamp::XYZ(double input) const { return input > 0.0 ? Triple(white_ * luminance(input)) : black_; }

Triple TargetRamp::above_black(double input) const {
  const double Y = luminance(input);
  if (!(input > 0.0 && Y > range_.black)) {
    return Triple::Zero();
  }
  return without_black(white_ * (Y - range_.black));
}

Triple TargetRamp::without_black(const Triple &light) const {
  const Triple tint = black_ - white_ * range_.black;
  double part = 1.0;
  for (Eigen::Index m = 0; m < 3; m++) {
    part = tint[m] > 0.0 ? std::min(part, (1.0 - kLeast) * light[m] / tint[m]) : part;
  }
  return light - part * tint;
}

double TargetRamp::part(double input) const {
  const double Y = input > 0.0 ? luminance(input) : 0.0;
  return std::max(Y - range_.black, 0.0) / (range_.white - range_.black);
}

// By bisection: the luminance falls as the gamma grows.
double effective_gamma(double input, double luminance, const LightRange &range) {
  if (!(input > 0.0 && input < 1.0 && luminance > range.black)) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  if (range.black == 0.0) {
    return std::log(luminance / range.white) / std::log(input);
  }
  double low = 0.01;
  double high = 100.0;
  for (int i = 0; i < 60; i++) {
    const double gamma = (low + high) / 2.0;
    const double black = std::pow(range.black / range.white, 1.0 / gamma);
    const double part = std::pow((1.0 - black) * input + black, gamma);
    (part * range.white > luminance ? low : high) = gamma;
  }
  return low;
}
