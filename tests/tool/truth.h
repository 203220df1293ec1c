// Panels whose truth is known: what a probe reads of them, and what a viewer sees through LUTs, whatever a model
// predicts.
#ifndef VEXO_TESTS_TRUTH_H
#define VEXO_TESTS_TRUTH_H

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "panel-model.h"
#include "vexo-cs.h"

using panel_model::Color;
using panel_model::Noise;

// XYZ above black at three drives of 0..1.
using Light = std::function<Color(const Color &)>;

// The drives of each entry; none is the bare panel.
using Luts = std::vector<Color>;

inline const Color kBlack = panel_model::desktop_panel().black;

// Of a three-channel integer LUT file.
inline Luts luts_of(const std::string &file) {
  std::istringstream in(file);
  std::string keyword;
  int size = 0;
  int bits = 0;
  in >> keyword >> size >> keyword >> bits;
  Luts luts;
  for (Color row; in >> row[0] >> row[1] >> row[2];) {
    for (double &code : row) {
      code /= std::pow(2.0, bits) - 1.0;
    }
    luts.push_back(row);
  }
  EXPECT_EQ(luts.size(), static_cast<size_t>(size));
  return luts;
}

inline bool rises(const Luts &luts) {
  for (size_t i = 1; i < luts.size(); i++) {
    for (size_t c = 0; c < 3; c++) {
      if (luts[i][c] < luts[i - 1][c]) {
        return false;
      }
    }
  }
  return true;
}

inline Color drives(const Luts &luts, double input) {
  if (luts.empty()) {
    return {input, input, input};
  }
  const double position = input * static_cast<double>(luts.size() - 1);
  const size_t n = std::min(static_cast<size_t>(position), luts.size() - 2);
  const double t = position - static_cast<double>(n);
  Color drive;
  for (size_t c = 0; c < 3; c++) {
    drive[c] = luts[n][c] + (luts[n + 1][c] - luts[n][c]) * t;
  }
  return drive;
}

inline Color read(const Color &light, const Noise &noise, panel_model::Normal *normal) {
  Color reading;
  for (size_t m = 0; m < 3; m++) {
    reading[m] = (kBlack[m] + light[m]) * (1.0 + noise.relative * (*normal)()) + noise.read * (*normal)();
  }
  return reading;
}

// The channels, each driven alone, in rows spread evenly over levels 0 to 255. Black is read once.
inline vexo_lcnr measured_channels(const Light &light, int rows, const Noise &noise = {}) {
  vexo_lcnr lcnr = {};
  lcnr.num = rows;
  panel_model::Normal normal;
  for (int i = 0; i < rows; i++) {
    lcnr.sample[i] = static_cast<float>(255.0 * i / (rows - 1));
    for (size_t c = 0; c < 3; c++) {
      Color drive = {};
      drive[c] = static_cast<double>(i) / (rows - 1);
      const Color reading = read(light(drive), noise, &normal);
      for (size_t m = 0; m < 3; m++) {
        lcnr.data[c][m][i] = i == 0 && c > 0 ? lcnr.data[0][m][0] : static_cast<float>(reading[m]);
      }
    }
  }
  return lcnr;
}

// A gray ramp through LUTs in rows spread evenly over levels 0 to 255, as CSV.
inline std::string measured_grays(const Light &light, const Luts &luts, int rows, const Noise &noise = {}) {
  panel_model::Normal normal;
  std::string csv = "level,X,Y,Z\n";
  for (int i = 0; i < rows; i++) {
    const double input = static_cast<double>(i) / (rows - 1);
    csv += std::to_string(255.0 * input);
    for (const double value : read(light(drives(luts, input)), noise, &normal)) {
      csv += "," + std::to_string(value);
    }
    csv += "\n";
  }
  return csv;
}

// The target: D65 and the power law 2.2 up to a peak luminance.
inline Color target(double input, double peak) {
  const double Y = peak * std::pow(input, 2.2);
  return {0.3127 / 0.3290 * Y, Y, 0.3583 / 0.3290 * Y};
}

// BT.1886 annex 1, as it stands there: L = a max(V + b, 0)^2.4.
inline double bt1886(double V, double white, double black) {
  const double root = std::pow(white, 1.0 / 2.4) - std::pow(black, 1.0 / 2.4);
  const double a = std::pow(root, 2.4);
  const double b = std::pow(black, 1.0 / 2.4) / root;
  return a * std::pow(std::max(V + b, 0.0), 2.4);
}

inline vexo_vector vector_of(const Color &c) {
  return {{static_cast<float>(c[0]), static_cast<float>(c[1]), static_cast<float>(c[2])}};
}

inline double de2000(const Color &a, const Color &b, const Color &white) {
  vexo_vector va = vector_of(a);
  vexo_vector vb = vector_of(b);
  vexo_vector vw = vector_of(white);
  return static_cast<double>(vexo_XYZ_DE2000(&va, &vb, &vw));
}

struct Differences {
  double mean = 0.0;
  double worst = 0.0;
};

// CIEDE2000 to the target with this peak, at a thousand inputs from `from` to below `to`.
inline Differences differences(const Light &light, const Luts &luts, double peak, double from = 0.1, double to = 2.0) {
  Differences result;
  int count = 0;
  for (int i = 1; i <= 1000; i++) {
    const double input = i / 1000.0;
    if (input >= from && input < to) {
      const double difference = de2000(light(drives(luts, input)), target(input, peak), target(1.0, peak));
      result.mean += difference;
      result.worst = std::max(result.worst, difference);
      count++;
    }
  }
  result.mean /= count;
  return result;
}

inline double peak_of(const Light &light, const Luts &luts) { return light(drives(luts, 1.0))[1]; }

#endif
