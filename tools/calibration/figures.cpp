#include "calibration/figures.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numeric>

#include "text/failure.h"
#include "vexo-cs.h"

namespace {

const double kNone = std::numeric_limits<double>::quiet_NaN();

vexo_vector scaled_to(vexo_vector XYZ, float Y) {
  vexo_vector_scale(&XYZ, Y / XYZ.d[1]);
  return XYZ;
}

double mean(const std::vector<double> &values) {
  return values.empty() ? kNone
                        : std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

// One figure of the steps from an input up, those that have it.
std::vector<double> collect(const std::vector<GrayFigure> &ramp, double from, double GrayFigure::*figure) {
  std::vector<double> values;
  for (const GrayFigure &step : ramp) {
    if (step.input >= from - 1e-6 && std::isfinite(step.*figure)) {
      values.push_back(step.*figure);
    }
  }
  return values;
}

double worst(const std::vector<double> &values) {
  return values.empty() ? kNone : *std::max_element(values.begin(), values.end());
}

} // namespace

GrayTarget::GrayTarget(const Target &target, const vexo_cs &primaries, float peak) : target_(target) {
  white_ = vexo_vector{{target.white.xyz.d[0], target.white.xyz.d[1], peak}};
  vexo_xyY_XYZ(&white_);
  vexo_cs cs = primaries;
  vexo_cs_set_w(&cs, target.white.xyz.d[0], target.white.xyz.d[1]);
  if (vexo_cs_matrix(&cs, &cs.npm) != 0 || vexo_matrix_invert(&balance_, &cs.npm) != 0) {
    throw Failure(kInputError, "the panel's primaries span no triangle");
  }
}

vexo_vector GrayTarget::XYZ(double input) const {
  vexo_vector XYZ = white_;
  vexo_vector_scale(&XYZ, light(input));
  return XYZ;
}

float GrayTarget::light(double input) const { return target_light(target_, static_cast<float>(input)); }

int GrayTarget::cct() const {
  vexo_vector white = white_;
  return vexo_XYZ_CCT(&white);
}

GrayFigure GrayTarget::figure(double input, const vexo_vector &xyY, float white) const {
  GrayFigure f = {input, xyY, xyY, xyY, -1, kNone, {kNone, kNone, kNone}, kNone, kNone, kNone};
  if (vexo_xyY_XYZ(&f.XYZ) != 0 || !(f.XYZ.d[1] > 0.0F)) {
    vexo_vector_init(&f.XYZ);
    vexo_vector_init(&f.uvY);
    return f;
  }
  vexo_xyY_uvY(&f.uvY);
  f.cct = vexo_XYZ_CCT(&f.XYZ);
  f.gamma = effective_gamma(static_cast<double>(xyY.d[2]) / static_cast<double>(white), input);

  vexo_vector reference = white_;
  vexo_XYZ_uvY(&reference);
  f.duv =
      std::hypot(static_cast<double>(f.uvY.d[0] - reference.d[0]), static_cast<double>(f.uvY.d[1] - reference.d[1]));

  vexo_matrix to_balance = balance_;
  vexo_vector shares = scaled_to(f.XYZ, 100.0F);
  vexo_matrix_transform(&to_balance, &shares);
  std::copy_n(shares.d, 3, f.balance);

  vexo_vector target = XYZ(input);
  vexo_vector reference_white = white_;
  f.de2000 = static_cast<double>(vexo_XYZ_DE2000(&f.XYZ, &target, &reference_white));
  vexo_vector same_luminance = scaled_to(f.XYZ, target.d[1]);
  f.de2000_chroma = static_cast<double>(vexo_XYZ_DE2000(&same_luminance, &target, &reference_white));
  return f;
}

Summary summarise(const std::vector<GrayFigure> &ramp, double from) {
  Summary s;
  std::vector<double> de = collect(ramp, from, &GrayFigure::de2000);
  s.de2000_mean = mean(de);
  s.de2000_worst = worst(de);
  std::sort(de.begin(), de.end(), std::greater<double>());
  de.resize((de.size() + 9) / 10);
  s.de2000_worst_tenth = mean(de);
  const std::vector<double> chroma = collect(ramp, from, &GrayFigure::de2000_chroma);
  s.chroma_mean = mean(chroma);
  s.chroma_worst = worst(chroma);
  s.duv_worst = worst(collect(ramp, from, &GrayFigure::duv));
  const std::vector<double> gamma = collect(ramp, from, &GrayFigure::gamma);
  s.gamma_mean = mean(gamma);
  s.gamma_spread = gamma.empty() ? kNone : worst(gamma) - *std::min_element(gamma.begin(), gamma.end());
  const GrayFigure &white = ramp.back();
  s.white_x = static_cast<double>(white.xyY.d[0]);
  s.white_y = static_cast<double>(white.xyY.d[1]);
  s.white_Y = static_cast<double>(white.xyY.d[2]);
  s.white_cct = white.cct;
  return s;
}
