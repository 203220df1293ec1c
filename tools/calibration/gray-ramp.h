// The gray ramp of a panel as the library's additive model predicts it.
#ifndef VEXO_TOOLS_GRAY_RAMP_H
#define VEXO_TOOLS_GRAY_RAMP_H

#include <memory>
#include <vector>

#include "text/grammar.h"
#include "vexo.h"

// The distance of two colours in u'v'; NaN where one has no chromaticity.
float uv_distance(vexo_vector xyY, vexo_vector reference_xyY);

// A context whose tables describe the bare panel; null when the library makes none of these measurements.
std::unique_ptr<vexo> bare_context(const vexo_lcnr &lcnr);

// What the gray ramp should follow.
struct Target {
  White white;
  Curve camera;
  Curve system;
};

// The relative light that an input should give: the system curve after the inverse camera curve.
float target_light(const Target &target, float input);

struct GrayStep {
  float input;       // 0..1
  vexo_vector xyY;   // predicted, luminance absolute and above black
  float white_error; // distance to the target white in u'v'
  float curve_error; // relative light against the target curve, as a fraction of the target
  float delta_e;     // CIEDE2000 against the target white and curve
};

// The ramp at count inputs from 0 to 1, through the LUTs or, when luts is null, of the bare panel. The context's tables
// describe the bare panel. CIEDE2000 is against the target white at the luminance reference; 0 stands for the ramp's
// own peak.
std::vector<GrayStep> gray_ramp(vexo *bare, vexo_lut *luts, const Target &target, int count, float reference);

// The exponent that takes an input to its light relative to white; NaN where there is none, as at both ends.
double effective_gamma(double relative, double input);

struct Spread {
  double mean;
  double worst;
};

// Mean and worst of one error over the steps at inputs from <= input < to.
Spread spread(const std::vector<GrayStep> &ramp, float GrayStep::*error, float from, float to = 2.0F);

#endif
