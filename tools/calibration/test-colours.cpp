#include "calibration/test-colours.h"

#include "colour/quantities.h"
#include "text/format.h"

namespace {

// L*a*b* under D50.
struct ChartColour {
  const char *name;
  double Lab[3];
};

// As published by the maker for charts since November 2014.
const ChartColour kColours[] = {
    {"dark skin", {37.54, 14.37, 14.92}},     {"light skin", {64.66, 19.27, 17.50}},
    {"blue sky", {49.32, -3.82, -22.54}},     {"foliage", {43.46, -12.74, 22.72}},
    {"blue flower", {54.94, 9.61, -24.79}},   {"bluish green", {70.48, -32.26, -0.37}},
    {"orange", {62.73, 35.83, 56.50}},        {"purplish blue", {39.43, 10.75, -45.17}},
    {"moderate red", {50.57, 48.64, 16.67}},  {"purple", {30.10, 22.54, -20.87}},
    {"yellow green", {71.77, -24.13, 58.19}}, {"orange yellow", {71.51, 18.24, 67.37}},
    {"blue", {28.37, 15.42, -49.80}},         {"green", {54.38, -39.72, 32.27}},
    {"red", {42.43, 51.05, 28.62}},           {"yellow", {81.80, 2.67, 80.41}},
    {"magenta", {50.63, 51.28, -14.12}},      {"cyan", {49.57, -29.71, -28.32}},
    {"white", {95.19, -1.03, 2.93}},          {"neutral 8", {81.29, -0.57, 0.44}},
    {"neutral 6.5", {66.89, -0.75, -0.06}},   {"neutral 5", {50.76, -0.13, 0.14}},
    {"neutral 3.5", {35.63, -0.46, -0.48}},   {"black", {20.64, 0.07, -0.46}},
};

const Triple kD50(0.9642, 1.0, 0.8249); // as in colour profiles (ISO 15076-1)
const int kSkinTones = 5;
const double kSweepLevel = 0.7; // of the signal; between the nodes of 3D LUTs, where they interpolate

Triple Lab_of(const ChartColour &colour) { return {colour.Lab[0], colour.Lab[1], colour.Lab[2]}; }

Triple XYZ_of_Lab(const Triple &Lab) {
  const double fy = (Lab[0] + 16.0) / 116.0;
  const Triple f(fy + Lab[1] / 500.0, fy, fy - Lab[2] / 200.0);
  return f.unaryExpr([](double v) { return cie_f_inverse(v); }).cwiseProduct(kD50);
}

// The signal of a colour under D50.
Triple signal_of_Lab(const Triple &Lab, const SignalColours &colours) {
  vexo_vector from = single(kD50);
  vexo_vector to = single(colours.white() / colours.white()[1]);
  vexo_matrix adaptation;
  vexo_chad_transform(&adaptation, &from, &to);
  vexo_vector XYZ = single(XYZ_of_Lab(Lab));
  vexo_matrix_transform(&adaptation, &XYZ);
  return colours.signal(triple(XYZ));
}

// A hue has some channels at the level; saturation takes the others down.
struct Hue {
  const char *name;
  Triple saturated;
};
const Hue kHues[] = {{"red", {1, 0, 0}},  {"yellow", {1, 1, 0}}, {"green", {0, 1, 0}},
                     {"cyan", {0, 1, 1}}, {"blue", {0, 0, 1}},   {"magenta", {1, 0, 1}}};

} // namespace

std::vector<Patch> test_colours(const SignalColours &colours) {
  std::vector<Patch> patches;
  for (const ChartColour &colour : kColours) {
    patches.push_back({kChart, colour.name, signal_of_Lab(Lab_of(colour), colours)});
  }
  const Triple dark = Lab_of(kColours[0]);
  const Triple light = Lab_of(kColours[1]);
  for (int i = 0; i < kSkinTones; i++) { // a step of these lies between the two, and one beyond each
    const double position = (i - 1) / (kSkinTones - 3.0);
    const Triple Lab = dark + (light - dark) * position;
    patches.push_back({"skin tones", format("skin, L* %.0f", Lab[0]), signal_of_Lab(Lab, colours)});
  }
  for (const Hue &hue : kHues) {
    for (int percent = 25; percent <= 100; percent += 25) {
      const Triple signal = kSweepLevel * (Triple::Ones() - percent / 100.0 * (Triple::Ones() - hue.saturated));
      patches.push_back({"saturation", format("%s %d %%", hue.name, percent), signal});
    }
  }
  return patches;
}

double colour_error(const Triple &light, const Triple &signal, const SignalColours &colours) {
  return de2000(single(light.cwiseMax(0.0)), single(colours.XYZ(signal)), single(colours.white()));
}

Spread chart_error(const SignalColours &colours, const std::function<double(const Triple &signal)> &error) {
  std::vector<double> errors;
  for (const Patch &patch : test_colours(colours)) {
    if (patch.group == kChart) {
      errors.push_back(error(patch.signal));
    }
  }
  return spread_of(errors);
}

ChartEffect chart_effect(const SignalColours &colours, const std::function<Triple(const Triple &signal)> &corrected,
                         const std::function<double(const Triple &signal, const Triple &inputs)> &error) {
  return {chart_error(colours, [&](const Triple &signal) { return error(signal, signal); }),
          chart_error(colours, [&](const Triple &signal) { return error(signal, corrected(signal)); })};
}
