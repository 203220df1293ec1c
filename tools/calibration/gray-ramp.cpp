#include "calibration/gray-ramp.h"

#include <cmath>

#include "file/input.h"
#include "file/readings.h"
#include "text/failure.h"
#include "text/format.h"

namespace {

const double kUnitFactor = 1.5;  // what two readings of one white may differ by
const double kNoiseMargin = 2.0; // times the noise: what counts as read
const double kBlackDiffers = 0.2;
const double kFarApart = 0.35; // of full drive, from one gray to the next

double top_level(const vexo_lcnr &lcnr) { return lcnr.sample[lcnr.num - 1]; }

void check_level(const GrayRamp &ramp, const GrayReading &reading, double top) {
  const double before = ramp.grays.empty() ? 0.0 : ramp.grays.back().input * top;
  if (reading.level < 0.0F || reading.level > top * (1.0 + 1e-6)) {
    refuse_input(reading.place, format("level %g, expected 0 to %g as in the panel file", reading.level, top));
  }
  if (!(reading.level > before) && (reading.level > 0.0F || ramp.own_black || !ramp.grays.empty())) {
    refuse_input(reading.place, format("level %g, expected more than %g", reading.level, before));
  }
}

// The noise of the darkest readings: the panel's and the ramp's below black, and what two readings of black differ by.
Triple noise_near_black(const GrayRamp &ramp, const PanelModel &model, const Triple &panel_noise) {
  Triple noise = panel_noise.cwiseMax((ramp.black - black_of(model.measurements())).cwiseAbs());
  for (size_t i = 0; i < ramp.grays.size(); i++) {
    noise = noise.cwiseMax(-ramp.above_black(i));
  }
  return noise;
}

} // namespace

GrayRamp read_gray_ramp(const std::string &path, const Panel &panel) {
  const double top = top_level(panel.lcnr);
  GrayRamp ramp = {path, black_of(panel.lcnr), false, {}};
  for (const GrayReading &reading : read_gray(path, static_cast<float>(top))) {
    check_level(ramp, reading, top);
    if (reading.level == 0.0F) {
      ramp.black = triple(reading.XYZ);
      ramp.own_black = true;
    } else {
      ramp.grays.push_back({reading.level / top, triple(reading.XYZ)});
    }
  }
  if (ramp.grays.empty() || !(ramp.above_black(ramp.grays.size() - 1)[1] > 0.0)) {
    throw Failure(kInputError, input_name(path) + ": no gray above black");
  }
  return ramp;
}

std::string sparse(const GrayRamp &ramp, const vexo_lcnr &panel) {
  const double top = top_level(panel);
  double before = 0.0;
  const auto gap = [&](double input) {
    return input - before <= kFarApart ? ""
                                       : format("%s: no gray between the levels %g and %g, expected none further apart "
                                                "than a third of full drive",
                                                input_name(ramp.path).c_str(), before * top, input * top);
  };
  for (const GrayRamp::Gray &gray : ramp.grays) {
    std::string found = gap(gray.input);
    if (!found.empty()) {
      return found;
    }
    before = gray.input;
  }
  return gap(1.0);
}

std::vector<MeasuredLight> lights_of(const GrayRamp &ramp) {
  std::vector<MeasuredLight> lights;
  for (size_t i = 0; i < ramp.grays.size(); i++) {
    lights.push_back({Triple::Constant(ramp.grays[i].input), ramp.above_black(i)});
  }
  return lights;
}

std::vector<MeasuredLight> bare_grays(const GrayRamp &ramp, const PanelModel &model, const Triple &noise) {
  const double whitest = ramp.grays.back().input;
  const double ratio = ramp.above_black(ramp.grays.size() - 1)[1] / model.XYZ({whitest, whitest, whitest})[1];
  if (!(ratio < kUnitFactor && ratio > 1.0 / kUnitFactor)) {
    throw Failure(kInputError,
                  format("%s: its brightest gray has %.3g times the luminance of the panel file's channels "
                         "together, expected the same unit and panel",
                         input_name(ramp.path).c_str(), ratio));
  }
  const Triple least = kNoiseMargin * noise_near_black(ramp, model, noise);
  std::vector<MeasuredLight> lights;
  for (size_t i = 0; i < ramp.grays.size(); i++) {
    const double t = ramp.grays[i].input;
    const Triple predicted = model.XYZ({t, t, t});
    const Triple missing = ramp.above_black(i) - predicted;
    const Triple credible = (missing.cwiseAbs().array() > least.array()).select(missing, 0.0);
    lights.push_back({{t, t, t}, predicted + credible});
  }
  return lights;
}

std::string black_difference(const GrayRamp &ramp, const Panel &panel) {
  const double ours = black_of(panel.lcnr)[1];
  const double theirs = ramp.black[1];
  if (std::fabs(theirs - ours) <= kBlackDiffers * std::max(std::fabs(ours), std::fabs(theirs))) {
    return "";
  }
  return format("%s: black has a luminance of %g, that of the panel file %g", input_name(ramp.path).c_str(), theirs,
                ours);
}
