#include "gray-ramp.h"

#include <cmath>

#include "lut-set.h"
#include "vexo-cs.h"

float uv_distance(vexo_vector xyY, vexo_vector reference_xyY) {
  if (vexo_xyY_uvY(&xyY) != 0 || vexo_xyY_uvY(&reference_xyY) != 0) {
    return NAN;
  }
  return std::hypot(xyY.d[0] - reference_xyY.d[0], xyY.d[1] - reference_xyY.d[1]);
}

// The direct recipe leaves just that context behind, whatever its curves and target.
std::unique_ptr<vexo> bare_context(const vexo_lcnr &lcnr) {
  auto context = std::make_unique<vexo>();
  context->lcnr = lcnr;
  LutSet scratch(1024);
  vexo_gamma linear;
  vexo_gamma_init(&linear, 1.0F);
  vexo_vector target = {{1.0F, 1.0F, 1.0F}};
  if (vexo_generate_lut(scratch.get(), context.get(), &linear, &linear, &target) != 0) {
    return nullptr;
  }
  return context;
}

float target_light(const Target &target, float input) {
  vexo_gamma camera = target.camera.gamma;
  vexo_gamma system = target.system.gamma;
  return vexo_gamma_evaluate(&system, vexo_gamma_inverse(&camera, input));
}

std::vector<GrayStep> gray_ramp(vexo *bare, vexo_lut *luts, const Target &target, int count) {
  const vexo_vector white = {{target.white.xyz.d[0], target.white.xyz.d[1], 1.0F}};
  std::vector<GrayStep> ramp;
  for (int i = 0; i < count; i++) {
    GrayStep step = {static_cast<float>(i) / static_cast<float>(count - 1), {}, 0.0F, 0.0F};
    const float position = step.input * static_cast<float>((luts != nullptr ? luts[0].size : 1024) - 1);
    if (luts != nullptr) {
      vexo_lut_get_xyY(&step.xyY, bare, luts, position, position, position);
    } else {
      vexo_get_xyY(&step.xyY, bare, position, position, position);
    }
    step.white_error = uv_distance(step.xyY, white);
    ramp.push_back(step);
  }
  const float peak = ramp.back().xyY.d[2];
  for (GrayStep &step : ramp) {
    const float wanted = target_light(target, step.input);
    step.curve_error = wanted > 0.0F ? std::fabs(step.xyY.d[2] / peak / wanted - 1.0F) : 0.0F;
  }
  return ramp;
}

Spread spread(const std::vector<GrayStep> &ramp, float GrayStep::*error, float from) {
  Spread result = {0.0, 0.0};
  int count = 0;
  for (const GrayStep &step : ramp) {
    if (step.input >= from) {
      const double value = static_cast<double>(step.*error);
      result.mean += value;
      result.worst = std::isnan(value) || value > result.worst ? value : result.worst;
      count++;
    }
  }
  result.mean /= count;
  return result;
}
