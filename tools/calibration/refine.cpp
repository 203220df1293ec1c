#include "calibration/refine.h"

#include <algorithm>
#include <cmath>

namespace {

const double kRelativeNoise = 0.002; // of a reading
const double kReadNoise = 0.002;     // cd/m2
const double kHeldWithin = 2.0;      // times the noise
const int kPasses = 6;
const double kLeastGrayness = 0.1;    // of drives that tell of grays
const double kSmoothedNoise = 0.4015; // of six passes: the root of the sum of their squared weights

Triple noise_of(const Triple &XYZ) {
  return ((kRelativeNoise * XYZ).array().square() + kReadNoise * kReadNoise).sqrt();
}

// A difference relative to the prediction, and its noise.
struct Difference {
  Triple value;
  Triple noise;
};

std::vector<Triple> smoothed(const std::vector<Triple> &values) {
  const size_t last = values.size() - 1;
  std::vector<Triple> result = values;
  for (size_t i = 1; i < last; i++) {
    result[i] = (values[i - 1] + 2.0 * values[i] + values[i + 1]) / 4.0;
  }
  if (last > 1) {
    result[0] = (5.0 * values[0] + 2.0 * values[1] - values[2]) / 6.0;
    result[last] = (5.0 * values[last] + 2.0 * values[last - 1] - values[last - 2]) / 6.0;
  }
  return result;
}

std::vector<Triple> believed(const std::vector<Difference> &differences) {
  std::vector<Triple> values;
  for (const Difference &d : differences) {
    values.push_back(d.value);
  }
  for (int pass = 0; pass < kPasses; pass++) {
    values = smoothed(values);
    for (size_t i = 0; i < values.size(); i++) {
      const Triple most = kHeldWithin * differences[i].noise;
      values[i] = values[i].cwiseMax(differences[i].value - most).cwiseMin(differences[i].value + most);
    }
  }
  for (size_t i = 0; i < values.size(); i++) {
    const auto R2 = values[i].array().square();
    values[i] = values[i].array() * R2 / (R2 + differences[i].noise.array().square());
  }
  return values;
}

} // namespace

std::vector<MeasuredLight> believed_grays(const GrayRamp &ramp, const vexo_lut *luts, const PanelModel &model) {
  std::vector<MeasuredLight> lights; // first as predicted
  std::vector<Difference> differences;
  for (size_t i = 0; i < ramp.grays.size(); i++) {
    const Triple drives = drives_at(luts, ramp.grays[i].input);
    const Triple predicted = model.XYZ(drives);
    const bool higher = lights.empty() || gray_level(drives) > gray_level(lights.back().drives);
    if (higher && grayness(drives) > kLeastGrayness && (predicted.array() > 0.0).all()) {
      lights.push_back({drives, predicted});
      differences.push_back({ramp.above_black(i).cwiseQuotient(predicted) - Triple::Ones(),
                             noise_of(ramp.grays[i].XYZ).cwiseQuotient(predicted)});
    }
  }
  const std::vector<Triple> values = lights.empty() ? std::vector<Triple>{} : believed(differences);
  for (size_t i = 0; i < lights.size(); i++) {
    lights[i].XYZ += lights[i].XYZ.cwiseProduct(values[i]);
  }
  return lights;
}

double prediction_error(const GrayRamp &ramp, const vexo_lut *luts, const PanelModel &model) {
  const vexo_vector white = single(ramp.above_black(ramp.grays.size() - 1));
  std::vector<double> errors;
  for (size_t i = 0; i < ramp.grays.size(); i++) {
    if (is_judged(ramp.grays[i].input)) {
      const Triple predicted = model.XYZ(drives_at(luts, ramp.grays[i].input));
      errors.push_back(de2000(single(predicted), single(ramp.above_black(i)), white));
    }
  }
  return spread_of(errors).mean;
}

double noise_difference(const GrayRamp &ramp, const White &white) {
  const vexo_vector reference = single(white_XYZ(white, ramp.above_black(ramp.grays.size() - 1)[1]));
  double sum = 0.0;
  int count = 0;
  for (size_t i = 0; i < ramp.grays.size(); i++) {
    const double Y = ramp.above_black(i)[1];
    if (!is_judged(ramp.grays[i].input) || !(Y > 0.0)) {
      continue;
    }
    const Triple gray = white_XYZ(white, Y);
    const Triple noise = kSmoothedNoise * noise_of(ramp.grays[i].XYZ);
    double squares = 0.0;
    for (int m = 0; m < 3; m++) {
      const Triple moved = gray + noise.cwiseProduct(Triple::Unit(m));
      squares += std::pow(de2000(single(moved), single(gray), reference), 2.0);
    }
    sum += std::sqrt(squares);
    count++;
  }
  return count > 0 ? sum / count : 0.0;
}
