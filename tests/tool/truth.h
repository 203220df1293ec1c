// The gray ramp that a simulated panel really shows through LUTs: what a calibration is for, whatever a model predicts.
#ifndef VEXO_TESTS_TRUTH_H
#define VEXO_TESTS_TRUTH_H

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <vector>

#include "vexo-cs.h"

// XYZ above black at three drives of 0..1.
using TruePanel = std::function<std::array<double, 3>(const std::array<double, 3> &)>;

struct Differences {
  double mean = 0.0;
  double worst = 0.0;
};

// CIEDE2000 of the ramp at a thousand inputs from `from` to below `to` (0..1) against D65 and the power law 2.2 at the
// luminance peak. codes holds as many rows of three codes as entries; empty is the bare panel.
inline Differences true_differences(const TruePanel &panel, const std::vector<std::vector<int>> &codes, int max_code,
                                    double peak, double from, double to) {
  Differences result;
  int count = 0;
  const auto as_vector = [](const std::array<double, 3> &XYZ) {
    return vexo_vector{{static_cast<float>(XYZ[0]), static_cast<float>(XYZ[1]), static_cast<float>(XYZ[2])}};
  };
  const std::array<double, 3> D65 = {0.3127 / 0.3290, 1.0, 0.3583 / 0.3290};
  for (int i = 1; i <= 1000; i++) {
    const double input = i / 1000.0;
    if (input < from || input >= to) {
      continue;
    }
    std::array<double, 3> drive = {input, input, input};
    if (!codes.empty()) {
      const double position = input * static_cast<double>(codes.size() - 1);
      const auto n = std::min(static_cast<size_t>(position), codes.size() - 2);
      const double f = position - static_cast<double>(n);
      for (size_t c = 0; c < 3; c++) {
        drive[c] = (codes[n][c] * (1.0 - f) + codes[n + 1][c] * f) / max_code;
      }
    }
    const double light = peak * std::pow(input, 2.2);
    vexo_vector shown = as_vector(panel(drive));
    vexo_vector wanted = as_vector({D65[0] * light, D65[1] * light, D65[2] * light});
    vexo_vector white = as_vector({D65[0] * peak, D65[1] * peak, D65[2] * peak});
    const double difference = static_cast<double>(vexo_XYZ_DE2000(&shown, &wanted, &white));
    result.mean += difference;
    result.worst = std::max(result.worst, difference);
    count++;
  }
  result.mean /= count;
  return result;
}

#endif
