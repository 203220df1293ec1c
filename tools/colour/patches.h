// Test colours: the 24 of the ColorChecker chart, skin tones, and saturation sweeps of six hues.
#ifndef VEXO_TOOLS_PATCHES_H
#define VEXO_TOOLS_PATCHES_H

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "calibration/cube.h"
#include "calibration/figures.h"

struct Patch {
  std::string group;
  std::string name;
  Triple signal;
};

// Those of a chart are adapted from D50 to the target white (Bradford) and limited to what the signal can hold.
std::vector<Patch> test_colours(const SignalColours &colours);

// The name of the first group, the 24 colours.
inline const char *const kChart = "24 colours";

// CIEDE2000 of a light above black to what a signal asks for.
double colour_error(const Triple &light, const Triple &signal, const SignalColours &colours);

// The errors of the 24 colours; error(signal) tells that of one, and NaN leaves it out.
template <typename Error> Spread chart_error(const SignalColours &colours, Error error) {
  Spread spread = {0.0, 0.0};
  int count = 0;
  for (const Patch &patch : test_colours(colours)) {
    if (patch.group == kChart) {
      if (const double e = error(patch.signal); !std::isnan(e)) {
        spread.mean += (e - spread.mean) / ++count;
        spread.worst = std::max(spread.worst, e);
      }
    }
  }
  return spread;
}

#endif
