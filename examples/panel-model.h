// A simulated display panel, in double precision: the truth that a calibration works towards. A black leaks into every
// reading. No channel follows a pure power law or keeps its chromaticity as it dims. Where several channels give light,
// the panel limits its power and the channels disturb each other: they do not add.
#ifndef VEXO_EXAMPLES_PANEL_MODEL_H
#define VEXO_EXAMPLES_PANEL_MODEL_H

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <vector>

#include "vexo.h"

namespace panel_model {

using Color = std::array<double, 3>; // X, Y, Z in cd/m2

struct Channel {
  Color full;   // XYZ above black at full drive
  Color drift;  // XYZ that the light gains, per unit of response, on the way from full drive to none
  double gamma; // exponent of the power law in the response
  double s;     // share of the S curve of a liquid crystal in the response, 0..1
};

// What happens where several channels give light, at its strongest in white.
struct Interaction {
  double limit; // the part of the light that power limiting takes
  Color cross;  // XYZ that crosstalk adds
};

struct Panel {
  Channel channel[3]; // red, green, blue
  Color black;        // in every reading
  Interaction interaction;
};

// Standard deviations of what the probe adds to a reading.
struct Noise {
  double relative; // as a fraction of the reading
  double read;     // in cd/m2
};

// The share of its full light that a channel gives at a drive of 0..1.
inline double response(const Channel &channel, double drive) {
  const double s_curve = drive * drive * (3.0 - 2.0 * drive);
  return (1.0 - channel.s) * std::pow(drive, channel.gamma) + channel.s * s_curve;
}

// What the panel shows above black at three drives of 0..1.
inline Color light(const Panel &panel, const Color &drive) {
  Color sum = {};
  Color given = {};
  for (size_t c = 0; c < 3; c++) {
    const Channel &channel = panel.channel[c];
    given[c] = response(channel, drive[c]);
    for (size_t m = 0; m < 3; m++) {
      sum[m] += given[c] * (channel.full[m] + channel.drift[m] * (1.0 - drive[c]));
    }
  }
  const double together = (given[0] * given[1] + given[1] * given[2] + given[2] * given[0]) / 3.0;
  for (size_t m = 0; m < 3; m++) {
    sum[m] += panel.interaction.cross[m] * together - panel.interaction.limit * together * sum[m];
  }
  return sum;
}

// Normally distributed numbers by Box and Muller: std::normal_distribution differs from one library to the next.
class Normal {
public:
  double operator()() {
    const double radius = std::sqrt(-2.0 * std::log(uniform()));
    return radius * std::cos(6.283185307179586 * uniform());
  }

private:
  double uniform() { return (static_cast<double>(bits_()) + 0.5) / 4294967296.0; }
  std::mt19937 bits_; // always starts from the same seed
};

// Reads the ramps of the three channels, each driven alone, at rows (2..64) levels spread evenly over 0..1023.
inline vexo_lcnr measure(const Panel &panel, int rows, const Noise &noise = {}) {
  vexo_lcnr lcnr = {};
  lcnr.num = rows;
  Normal normal;
  for (int i = 0; i < rows; i++) {
    const double level = std::round(1023.0 * i / (rows - 1));
    lcnr.sample[i] = static_cast<float>(level);
    for (size_t c = 0; c < 3; c++) {
      Color drive = {};
      drive[c] = level / 1023.0;
      const Color above_black = light(panel, drive);
      for (size_t m = 0; m < 3; m++) {
        const double shown = panel.black[m] + above_black[m];
        const double relative_error = noise.relative * normal();
        const double read_error = noise.read * normal();
        lcnr.data[c][m][i] = static_cast<float>(shown * (1.0 + relative_error) + read_error);
      }
    }
  }
  return lcnr;
}

// A gray that a probe has read. Its level stands for the input.
struct GrayReading {
  double level; // 0..1023
  Color XYZ;
};

// Reads a gray ramp at count levels spread evenly over 0..1023. drives(input) leads from an input of 0..1 to the
// drives.
template <typename Drives>
std::vector<GrayReading> measure_grays(const Panel &panel, int count, const Noise &noise, Drives drives) {
  std::vector<GrayReading> ramp;
  Normal normal;
  for (int i = 0; i < count; i++) {
    const double level = std::round(1023.0 * i / (count - 1));
    GrayReading reading = {level, light(panel, drives(level / 1023.0))};
    for (size_t m = 0; m < 3; m++) {
      reading.XYZ[m] = (reading.XYZ[m] + panel.black[m]) * (1.0 + noise.relative * normal()) + noise.read * normal();
    }
    ramp.push_back(reading);
  }
  return ramp;
}

// A mixture of the channels that a probe has read.
struct MixtureReading {
  Color drive; // 0..1023
  Color XYZ;
};

// Reads every combination of the levels 0, 341, 682 and 1023 in which two or three channels are driven, but no grays.
inline std::vector<MixtureReading> measure_mixtures(const Panel &panel, const Noise &noise) {
  std::vector<MixtureReading> mixtures;
  Normal normal;
  for (int i = 0; i < 64; i++) {
    const std::array<int, 3> step = {i / 16, i / 4 % 4, i % 4};
    const auto driven = 3 - std::count(step.begin(), step.end(), 0);
    if (driven < 2 || (step[0] == step[1] && step[1] == step[2])) {
      continue;
    }
    const Color part = {step[0] / 3.0, step[1] / 3.0, step[2] / 3.0};
    MixtureReading reading = {{part[0] * 1023.0, part[1] * 1023.0, part[2] * 1023.0}, light(panel, part)};
    for (size_t m = 0; m < 3; m++) {
      reading.XYZ[m] = (reading.XYZ[m] + panel.black[m]) * (1.0 + noise.relative * normal()) + noise.read * normal();
    }
    mixtures.push_back(reading);
  }
  return mixtures;
}

// A desktop liquid-crystal panel: 300 cd/m2, contrast 1000:1, its white at x 0.310, y 0.319. Its channels add.
inline Panel desktop_panel() {
  return Panel{{{{132.0, 68.5, 5.2}, {-2.0, -0.5, 1.5}, 2.25, 0.10},
                {{101.0, 209.0, 33.0}, {-3.0, -5.0, 4.0}, 2.20, 0.15},
                {{59.0, 23.5, 312.0}, {2.0, 1.5, -8.0}, 2.10, 0.20}},
               {0.29, 0.30, 0.42},
               {}};
}

// The panel of the sample files: the same, but its channels do not add.
inline Panel real_panel() {
  Panel panel = desktop_panel();
  panel.interaction = {0.20, {4.0, -10.0, 30.0}};
  return panel;
}

// The probe of the sample files: little enough noise that every column rises.
inline Noise sample_noise() { return {0.0005, 0.0002}; }

// The content of sample-panel.xml.
inline vexo_lcnr sample_panel() { return measure(real_panel(), 33, sample_noise()); }

} // namespace panel_model

#endif
