#include "calibration/mixture-readings.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>

#include "calibration/figures.h"
#include "file/input.h"
#include "file/readings.h"
#include "text/failure.h"
#include "text/format.h"

namespace {

const size_t kMostMixtures = 3000; // the model takes the cube of their number in time
const double kMeanFactor = 1.5;    // what mean luminances of one panel may differ by
const double kMeanHolds = 1.5;     // CIEDE2000 up to which the model holds
const double kMostHolds = 3.0;
const double kOddTimesMean = 4.0; // from here on a reading is an outlier,
const double kOddFrom = 2.0;      // and never below
const size_t kMostOdd = 10;

struct Mean {
  Triple sum = Triple::Zero();
  int count = 0;

  void add(const Triple &XYZ) {
    sum += XYZ;
    count++;
  }
  Triple value() const { return sum / count; }
};

Triple drives_of(const Reading &reading, double top) {
  return Triple(reading.drive[0], reading.drive[1], reading.drive[2]) / top;
}

void check_drives(const Reading &reading, double top) {
  const Triple drives = drives_of(reading, top);
  if (drives.minCoeff() < 0.0 || drives.maxCoeff() > 1.0 + 1e-6) {
    refuse_input(reading.place, format("drives %g, %g, %g, expected 0 to %g", reading.drive[0], reading.drive[1],
                                       reading.drive[2], top));
  }
}

bool is_gray(const Triple &drives) { return drives[0] == drives[1] && drives[1] == drives[2]; }

GrayRamp ramp_of(const std::string &path, const std::map<double, Mean> &levels, const Triple &black, bool own_black) {
  GrayRamp ramp = {path, black, own_black, {}};
  for (const auto &[input, mean] : levels) {
    ramp.grays.push_back({input, mean.value()});
  }
  return ramp;
}

// Readings of other units or of another panel are far from what the channels sum up to.
void check_unit(const MixtureReadings &readings, const Panel &panel) {
  const auto model = PanelModel::of(panel.lcnr);
  if (!model) {
    return; // said elsewhere
  }
  double measured = 0.0;
  double predicted = 0.0;
  for (const MeasuredLight &light : readings.lights) {
    measured += light.XYZ[1];
    predicted += model->XYZ(light.drives)[1];
  }
  const double ratio = measured / predicted;
  if (!(ratio < kMeanFactor && ratio > 1.0 / kMeanFactor)) {
    refuse_input(input_name(readings.path), format("its mixtures have %.3g times the luminance of the panel file's "
                                                   "channels together, expected the same unit and panel",
                                                   ratio));
  }
}

struct Errors {
  std::string layer;
  std::vector<double> de2000;
};

LayerError summary(const Errors &errors, const std::vector<std::string> &places) {
  const std::vector<double> &de = errors.de2000;
  std::vector<double> sorted = de;
  std::sort(sorted.begin(), sorted.end());
  const auto worst = std::max_element(de.begin(), de.end());
  const double count = static_cast<double>(de.size());
  return {errors.layer, std::accumulate(de.begin(), de.end(), 0.0) / count,
          sorted[static_cast<size_t>(std::ceil(0.95 * count)) - 1], *worst,
          places[static_cast<size_t>(worst - de.begin())]};
}

// Readings that the others do not predict, the worst first.
std::vector<std::string> odd_readings(const std::vector<double> &de, double mean, const MixtureReadings &readings) {
  std::vector<size_t> odd;
  for (size_t i = 0; i < de.size(); i++) {
    if (de[i] > std::max(kOddFrom, kOddTimesMean * mean)) {
      odd.push_back(i);
    }
  }
  std::sort(odd.begin(), odd.end(), [&](size_t a, size_t b) { return de[a] > de[b]; });
  odd.resize(std::min(odd.size(), kMostOdd));
  std::vector<std::string> lines;
  for (const size_t i : odd) {
    const Triple percent = readings.lights[i].drives * 100.0;
    lines.push_back(format("%s: drives %.4g, %.4g, %.4g %%: CIEDE2000 %.2f from the prediction by the other readings",
                           readings.places[i].c_str(), percent[0], percent[1], percent[2], de[i]));
  }
  return lines;
}

} // namespace

MixtureReadings read_mixtures(const std::string &path, const Panel &panel) {
  const Readings file = read_readings(path, "measured mixtures");
  const double top = file.full.value_or(panel.lcnr.sample[panel.lcnr.num - 1]);
  MixtureReadings result = {path, {}, {}, {}, file.notes};
  Mean black;
  std::map<double, Mean> grays;
  size_t alone = 0;
  for (const Reading &reading : file.list) {
    check_drives(reading, top);
    const Triple drives = drives_of(reading, top);
    const Triple XYZ = triple(reading.XYZ);
    if (drives.isZero(0.0)) {
      black.add(XYZ);
    } else if (is_gray(drives)) {
      grays[drives[0]].add(XYZ);
    } else if ((drives.array() > 0.0).count() == 1) {
      alone++;
    } else {
      result.lights.push_back({drives, XYZ});
      result.places.push_back(reading.place);
    }
  }
  if (result.lights.empty() || result.lights.size() > kMostMixtures) {
    refuse_input(input_name(path), format("%zu readings with two or three channels driven differently, expected 1 to "
                                          "%zu",
                                          result.lights.size(), kMostMixtures));
  }
  if (alone > 0) {
    result.notes.push_back(format("%s: %zu readings of channels driven alone are left out: %s has them",
                                  input_name(path).c_str(), alone, input_name(panel.path).c_str()));
  }
  const Triple shown_black = black.count > 0 ? black.value() : black_of(panel.lcnr);
  for (MeasuredLight &light : result.lights) {
    light.XYZ -= shown_black;
  }
  if (!grays.empty()) {
    result.grays = ramp_of(path, grays, shown_black, black.count > 0);
  }
  check_unit(result, panel);
  return result;
}

CrossValidation cross_validate(const MixtureReadings &readings, const PanelModel &model) {
  const vexo_vector white = single(model.XYZ({1.0, 1.0, 1.0}));
  Errors channels = {"channels that add", {}};
  Errors grays = {"with measured grays", {}};
  Errors mixtures = {"with the other mixtures", {}};
  for (size_t i = 0; i < readings.lights.size(); i++) {
    const auto &[drives, XYZ] = readings.lights[i];
    const auto error = [&, measured = single(XYZ)](const Triple &predicted) {
      return de2000(single(predicted), measured, white);
    };
    const Triple unmixed = model.unmixed(drives);
    channels.de2000.push_back(error(model.additive(drives)));
    grays.de2000.push_back(error(unmixed));
    mixtures.de2000.push_back(
        error(unmixed + model.mixtures()->left_out()[i].cwiseProduct(model.mixture_scale(drives))));
  }
  CrossValidation result = {readings.lights.size(), {summary(channels, readings.places)}, mixtures.de2000, {}, false};
  if (model.knows_grays()) {
    result.layers.push_back(summary(grays, readings.places));
  }
  result.layers.push_back(summary(mixtures, readings.places));
  const LayerError &whole = result.layers.back();
  result.odd = odd_readings(mixtures.de2000, whole.mean, readings);
  result.holds = whole.mean <= kMeanHolds && whole.most <= kMostHolds;
  return result;
}

std::string doubt(const CrossValidation &validation) {
  const LayerError &whole = validation.layers.back();
  return validation.holds
             ? ""
             : format("the model does not hold this panel: mixtures left out are missed by a mean CIEDE2000 of %.2f, "
                      "95 %% of them by up to %.2f, expected at most %g and %g",
                      whole.mean, whole.most, kMeanHolds, kMostHolds);
}
