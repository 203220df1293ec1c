// Test colours: the 24 of the ColorChecker chart, skin tones, and saturation sweeps of six hues.
#ifndef VEXO_TOOLS_TEST_COLOURS_H
#define VEXO_TOOLS_TEST_COLOURS_H

#include <functional>
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

// The errors of the 24 colours. error(signal) is that of one; NaN leaves it out.
Spread chart_error(const SignalColours &colours, const std::function<double(const Triple &signal)> &error);

// The errors of the 24 colours when signals are shown as they are, and when they are corrected first.
struct ChartEffect {
  Spread without;
  Spread with;
};

// error(signal, inputs) tells the error of a signal that is shown by these inputs.
ChartEffect chart_effect(const SignalColours &colours, const std::function<Triple(const Triple &signal)> &corrected,
                         const std::function<double(const Triple &signal, const Triple &inputs)> &error);

#endif
