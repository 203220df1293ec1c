#include "calibration/gray-ramp.h"

#include <algorithm>
#include <cmath>

#include "vexo-cs.h"
#include "vexo-tables.h"

float uv_distance(vexo_vector xyY, vexo_vector reference_xyY) {
  if (vexo_xyY_uvY(&xyY) != 0 || vexo_xyY_uvY(&reference_xyY) != 0) {
    return NAN;
  }
  return std::hypot(xyY.d[0] - reference_xyY.d[0], xyY.d[1] - reference_xyY.d[1]);
}

namespace {

// CIEDE2000 between a prediction and a share of the target white of a luminance.
float delta_e(vexo_vector xyY, const Target &target, float part, float luminance) {
  const auto &xy = target.white.xyz.d;
  vexo_vector white = {{xy[0], xy[1], luminance}};
  vexo_vector wanted = {{xy[0], xy[1], luminance * part}};
  vexo_xyY_XYZ(&white);
  vexo_xyY_XYZ(&wanted);
  if (!(part > 0.0F)) {
    return 0.0F;
  }
  if (vexo_xyY_XYZ(&xyY) != 0) {
    return NAN;
  }
  return vexo_XYZ_DE2000(&xyY, &wanted, &white);
}

// The prediction at three table levels. Below level 1 the library's mixture is not linear, and none at all where a
// channel is off: it is asked for level 1, and the light that is too much is taken away.
vexo_vector predict(vexo *bare, const float (&level)[3]) {
  vexo_vector mixed = {};
  vexo_get_xyY(&mixed, bare, std::max(level[0], 1.0F), std::max(level[1], 1.0F), std::max(level[2], 1.0F));
  if (level[0] >= 1.0F && level[1] >= 1.0F && level[2] >= 1.0F) {
    return mixed;
  }
  vexo_xyY_XYZ(&mixed);
  for (int c = 0; c < 3; c++) {
    const auto &table = bare->data[c];
    vexo_vector first = {{table[0][1], table[1][1], table[2][1] * bare->maxY[c]}};
    vexo_xyY_XYZ(&first);
    for (int m = 0; m < 3; m++) {
      mixed.d[m] -= first.d[m] * std::max(1.0F - level[c], 0.0F);
    }
  }
  for (float &component : mixed.d) {
    component = std::max(component, 0.0F); // rounding
  }
  const bool colour = vexo_XYZ_xyY(&mixed) == 0 && mixed.d[1] > 0.0F && std::max(mixed.d[0], mixed.d[1]) < 1.0F;
  return colour ? mixed : vexo_vector{};
}

} // namespace

std::unique_ptr<vexo> bare_context(const vexo_lcnr &lcnr) {
  auto context = std::make_unique<vexo>();
  context->lcnr = lcnr;
  return vexo_internal::make_tables(context.get()) == 0 ? std::move(context) : nullptr;
}

float target_light(const Target &target, float input) {
  vexo_gamma camera = target.camera.gamma;
  vexo_gamma system = target.system.gamma;
  return vexo_gamma_evaluate(&system, vexo_gamma_inverse(&camera, input));
}

std::vector<GrayStep> gray_ramp(vexo *bare, vexo_lut *luts, const Target &target, int count, float reference) {
  const vexo_vector white = {{target.white.xyz.d[0], target.white.xyz.d[1], 1.0F}};
  std::vector<GrayStep> ramp;
  for (int i = 0; i < count; i++) {
    GrayStep step = {static_cast<float>(i) / static_cast<float>(count - 1), {}, 0.0F, 0.0F, 0.0F};
    float level[3];
    for (int c = 0; c < 3; c++) {
      level[c] =
          1023.0F * (luts == nullptr ? step.input
                                     : vexo_lut_evaluate(&luts[c], step.input * static_cast<float>(luts[c].size - 1)));
    }
    step.xyY = predict(bare, level);
    step.white_error = uv_distance(step.xyY, white);
    ramp.push_back(step);
  }
  const float peak = ramp.back().xyY.d[2];
  for (GrayStep &step : ramp) {
    const float wanted = target_light(target, step.input);
    step.curve_error = wanted > 0.0F ? std::fabs(step.xyY.d[2] / peak / wanted - 1.0F) : 0.0F;
    step.delta_e = delta_e(step.xyY, target, wanted, reference > 0.0F ? reference : peak);
  }
  return ramp;
}

double effective_gamma(double relative, double input) {
  const bool defined = relative > 0.0 && input > 0.0 && input < 1.0;
  return defined ? std::log(relative) / std::log(input) : std::nan("");
}

Spread spread(const std::vector<GrayStep> &ramp, float GrayStep::*error, float from, float to) {
  Spread result = {0.0, 0.0};
  int count = 0;
  for (const GrayStep &step : ramp) {
    if (step.input >= from && step.input < to) {
      const double value = static_cast<double>(step.*error);
      result.mean += value;
      result.worst = std::isnan(value) || value > result.worst ? value : result.worst;
      count++;
    }
  }
  result.mean /= count;
  return result;
}
