#include "calibration/figures.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numeric>

#include "text/failure.h"
#include "text/format.h"

namespace {

const int kRampSize = 101;
const double kNone = std::numeric_limits<double>::quiet_NaN();
const double kEndless = std::numeric_limits<double>::infinity();
const double kWhiteTolerance = 0.004; // distance in u'v' at which two whites are just told apart side by side
const double kSameDifference = 1e-4;  // of CIEDE2000
const double kGammaUpTo = 0.9 + 1e-6; // a step of gamma nearer to white rests on a small difference of light

vexo_vector scaled_to(vexo_vector XYZ, float Y) {
  vexo_vector_scale(&XYZ, Y / XYZ.d[1]);
  return XYZ;
}

double mean(const std::vector<double> &values) {
  return values.empty() ? kNone
                        : std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

double worst(const std::vector<double> &values) {
  return values.empty() ? kNone : *std::max_element(values.begin(), values.end());
}

double mean_of_worst_tenth(std::vector<double> values) {
  std::sort(values.begin(), values.end(), std::greater<double>());
  values.resize((values.size() + 9) / 10);
  return mean(values);
}

// One figure of those grays that have it and are chosen.
template <typename Choose>
std::vector<double> collect(const std::vector<GrayFigure> &grays, double GrayFigure::*figure, Choose choose) {
  std::vector<double> values;
  for (const GrayFigure &gray : grays) {
    if (choose(gray) && std::isfinite(gray.*figure)) {
      values.push_back(gray.*figure);
    }
  }
  return values;
}

std::vector<double> collect(const std::vector<GrayFigure> &grays, double GrayFigure::*figure) {
  return collect(grays, figure, [](const GrayFigure &g) { return is_judged(g.input); });
}

// The largest size of a figure where the target has a luminance above low and up to high. Black itself does not count.
double worst_in_band(const std::vector<GrayFigure> &grays, double GrayFigure::*figure, double low, double high) {
  std::vector<double> values =
      collect(grays, figure, [&](const GrayFigure &g) { return g.input > 0.0 && g.target > low && g.target <= high; });
  for (double &value : values) {
    value = std::fabs(value);
  }
  return worst(values);
}

int count_falls(const std::vector<GrayFigure> &grays) {
  int falls = 0;
  for (size_t i = 1; i < grays.size(); i++) {
    falls += grays[i].light < grays[i - 1].light ? 1 : 0;
  }
  return falls;
}

// CIE 1976 L* of a light as a part of white's.
double lightness(double light) {
  return light > 216.0 / 24389.0 ? 116.0 * std::cbrt(light) - 16.0 : light * 24389.0 / 27.0;
}

// The distance of two chromaticities in u*v* at a light.
double uv_star(double light, const vexo_vector &xyY, const vexo_vector &white) {
  return 13.0 * lightness(light) * uv_distance(xyY, white);
}

Summary summarise(const std::vector<GrayFigure> &grays) {
  Summary s;
  const std::vector<double> de = collect(grays, &GrayFigure::de2000);
  s.de2000 = spread_of(de);
  s.de2000_worst_tenth = mean_of_worst_tenth(de);
  s.near_black =
      spread_of(collect(grays, &GrayFigure::de2000, [](const GrayFigure &g) { return !is_judged(g.input); }));
  s.chroma = spread_of(collect(grays, &GrayFigure::de2000_chroma));
  s.duv = spread_of(collect(grays, &GrayFigure::duv));
  s.curve = spread_of(collect(grays, &GrayFigure::curve));
  s.light_error_dark = worst_in_band(grays, &GrayFigure::light_error, 0.1, 1.0);
  s.light_error_bright = worst_in_band(grays, &GrayFigure::light_error, 1.0, kEndless);
  s.uv_star_worst = worst_in_band(grays, &GrayFigure::uv_star, 1.0, 100.0);
  const std::vector<double> gamma = collect(
      grays, &GrayFigure::gamma, [](const GrayFigure &g) { return is_judged(g.input) && g.input <= kGammaUpTo; });
  s.gamma_mean = mean(gamma);
  s.gamma_min = gamma.empty() ? kNone : *std::min_element(gamma.begin(), gamma.end());
  s.gamma_max = worst(gamma);
  s.falls = count_falls(grays);
  const GrayFigure &white = grays.back();
  s.white = white.xyY;
  s.white_cct = white.cct;
  s.white_de2000 = white.de2000;
  s.white_uv_star = 1300.0 * white.duv;
  return s;
}

} // namespace

Spread spread_of(std::vector<double> errors) {
  errors.erase(std::remove_if(errors.begin(), errors.end(), [](double e) { return std::isnan(e); }), errors.end());
  return {mean(errors), worst(errors)};
}

bool is_judged(double input) { return input >= kJudgedFrom - 1e-6; } // levels of files are single precision

std::string judged_from() { return format("%g %%", kJudgedFrom * 100.0); }

GrayFigure gray_figure(double input, const Triple &XYZ, const LightRange &range) {
  GrayFigure f = {input, {},    {},    {},    -1,    0.0,   kNone, {kNone, kNone, kNone},
                  kNone, kNone, kNone, kNone, kNone, kNone, kNone};
  if (!(XYZ[1] > 0.0)) {
    return f;
  }
  // Light is not negative: what is below 0 is rounding or the noise of a probe.
  f.XYZ = single({std::max(XYZ[0], 0.0), XYZ[1], std::max(XYZ[2], 0.0)});
  f.xyY = f.uvY = f.XYZ;
  vexo_XYZ_xyY(&f.xyY);
  vexo_XYZ_uvY(&f.uvY);
  f.cct = vexo_XYZ_CCT(&f.XYZ);
  f.light = XYZ[1] / range.white;
  f.gamma = effective_gamma(input, XYZ[1], range);
  return f;
}

Triple drives_at(const vexo_lut *luts, const Triple &inputs) {
  if (luts == nullptr) {
    return inputs;
  }
  const auto drive = [&](int c) {
    return double{vexo_lut_evaluate(&luts[c], static_cast<float>(inputs[c] * (luts[c].size - 1)))};
  };
  return {drive(0), drive(1), drive(2)};
}

Triple drives_at(const vexo_lut *luts, double input) { return drives_at(luts, Triple::Constant(input)); }

std::vector<GrayFigure> predict(const PanelModel &model, const vexo_lut *luts, const Triple &black, int count) {
  const LightRange range = {model.XYZ(drives_at(luts, 1.0))[1] + black[1], black[1]};
  std::vector<GrayFigure> grays;
  for (int i = 0; i < count; i++) {
    const double input = static_cast<double>(i) / (count - 1);
    grays.push_back(gray_figure(input, model.XYZ(drives_at(luts, input)) + black, range));
  }
  return grays;
}

std::vector<GrayFigure> predict(const PanelModel &model, const vexo_lut *luts, const Triple &black) {
  return predict(model, luts, black, kRampSize);
}

GrayTarget::GrayTarget(const Target &target, const vexo_cs &primaries, double peak, const Triple &black)
    : xyz_(target.white.xyz), wished_(target.luminance.value_or(peak)), ramp_(target, peak, black),
      white_(white_XYZ(target.white, peak)), range_{peak, black[1]} {
  vexo_cs cs = primaries;
  vexo_cs_set_w(&cs, target.white.xyz.d[0], target.white.xyz.d[1]);
  if (vexo_cs_matrix(&cs, &cs.npm) != 0 || vexo_matrix_invert(&to_balance_, &cs.npm) != 0) {
    throw Failure(kInputError, "the panel's primaries span no triangle");
  }
}

void GrayTarget::judge(GrayFigure *gray) const {
  const vexo_vector white = single(white_);
  const Triple XYZ = ramp_.XYZ(gray->input);
  const vexo_vector target = single(XYZ);
  const bool shown = gray->XYZ.d[1] > 0.0F;
  const bool wanted = target.d[1] > 0.0F;
  gray->target = XYZ[1];
  if (wanted) {
    gray->light_error = double{gray->XYZ.d[1]} / XYZ[1] * range_.white / wished_ - 1.0;
    gray->curve = std::fabs(gray->light * range_.white / XYZ[1] - 1.0);
  }
  if (shown || wanted) {
    gray->de2000 = de2000(gray->XYZ, target, white);
  }
  if (shown && wanted) {
    gray->de2000_chroma = de2000(scaled_to(gray->XYZ, target.d[1]), target, white);
  }
  if (shown) {
    gray->duv = uv_distance(gray->xyY, xyz_);
    vexo_vector balance = scaled_to(gray->XYZ, 100.0F);
    vexo_matrix to_balance = to_balance_;
    vexo_matrix_transform(&to_balance, &balance);
    std::copy_n(balance.d, 3, gray->balance);
  }
}

Ramp GrayTarget::judge(std::vector<GrayFigure> grays) const {
  for (GrayFigure &gray : grays) {
    judge(&gray);
    gray.uv_star = uv_star(gray.light, gray.xyY, grays.back().xyY);
  }
  const Summary summary = summarise(grays);
  return {std::move(grays), summary, range_};
}

Ramp GrayTarget::ideal() const {
  std::vector<GrayFigure> grays;
  for (int i = 0; i < kRampSize; i++) {
    const double input = static_cast<double>(i) / (kRampSize - 1);
    grays.push_back(gray_figure(input, ramp_.XYZ(input), range_));
  }
  return judge(std::move(grays));
}

Spread predicted_error(const PanelModel &model, LutSet &luts, const Target &target) {
  const Triple black = included_black(target.curve, model);
  std::vector<GrayFigure> grays = predict(model, luts.get(), black);
  const double peak = grays.back().XYZ.d[1];
  return GrayTarget(target, primaries_of(model), peak, black).judge(std::move(grays)).summary.de2000;
}

std::string missed_white(const GrayFigure &shown, const White &target) {
  const double distance = uv_distance(shown.xyY, target.xyz);
  return distance <= kWhiteTolerance
             ? ""
             : format("the panel cannot show white %s (x %.4f, y %.4f): it reached x %.4f, y %.4f, %.4f away in u'v' "
                      "where %.4f is allowed",
                      target.name.c_str(), target.xyz.d[0], target.xyz.d[1], shown.xyY.d[0], shown.xyY.d[1], distance,
                      kWhiteTolerance);
}

bool is_worse(const Spread &with, const Spread &without) { return !(with.mean <= without.mean + kSameDifference); }

vexo_cs primaries_of(const PanelModel &model) {
  const vexo_vector r = single(model.XYZ({1.0, 0.0, 0.0}));
  const vexo_vector g = single(model.XYZ({0.0, 1.0, 0.0}));
  const vexo_vector b = single(model.XYZ({0.0, 0.0, 1.0}));
  const vexo_vector w = single(model.XYZ({1.0, 1.0, 1.0}));
  const vexo_vector black = {};
  vexo_cs cs;
  if (vexo_cs_init_XYZ(&cs, r.d, g.d, b.d, w.d, black.d) != 0) {
    throw Failure(kInputError, "the panel's primaries span no triangle");
  }
  return cs;
}

double de2000(vexo_vector XYZ, vexo_vector target, vexo_vector white) { return vexo_XYZ_DE2000(&XYZ, &target, &white); }

double uv_distance(vexo_vector a, vexo_vector b) {
  if (!(a.d[1] > 0.0F && b.d[1] > 0.0F) || vexo_xyY_uvY(&a) != 0 || vexo_xyY_uvY(&b) != 0) {
    return kNone;
  }
  return std::hypot(double{a.d[0]} - b.d[0], double{a.d[1]} - b.d[1]);
}
