// A simulated display panel, in double precision: the truth that a calibration works towards. Three channels add above
// a black that leaks into every reading; no channel follows a pure power law or keeps its chromaticity as it dims.
#ifndef VEXO_EXAMPLES_PANEL_MODEL_H
#define VEXO_EXAMPLES_PANEL_MODEL_H

#include <array>
#include <cmath>
#include <random>

#include "vexo.h"

namespace panel_model {

using Color = std::array<double, 3>; // X, Y, Z in cd/m2

struct Channel {
  Color full;   // XYZ above black at full drive
  Color drift;  // XYZ that the light gains, per unit of response, on the way from full drive to none
  double gamma; // exponent of the power law in the response
  double s;     // share of the S curve of a liquid crystal in the response, 0..1
};

struct Panel {
  Channel channel[3]; // red, green, blue
  Color black;        // in every reading
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
  for (size_t c = 0; c < 3; c++) {
    const Channel &channel = panel.channel[c];
    for (size_t m = 0; m < 3; m++) {
      sum[m] += response(channel, drive[c]) * (channel.full[m] + channel.drift[m] * (1.0 - drive[c]));
    }
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

// A desktop liquid-crystal panel: 300 cd/m2, contrast 1000:1, its white at x 0.310, y 0.319.
inline Panel desktop_panel() {
  return Panel{{{{132.0, 68.5, 5.2}, {-2.0, -0.5, 1.5}, 2.25, 0.10},
                {{101.0, 209.0, 33.0}, {-3.0, -5.0, 4.0}, 2.20, 0.15},
                {{59.0, 23.5, 312.0}, {2.0, 1.5, -8.0}, 2.10, 0.20}},
               {0.29, 0.30, 0.42}};
}

// The content of sample-panel.xml: little enough noise that every column rises.
inline vexo_lcnr sample_panel() { return measure(desktop_panel(), 33, Noise{0.0005, 0.0002}); }

} // namespace panel_model

#endif
