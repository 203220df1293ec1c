// Test colours: the 24 of the ColorChecker chart, skin tones, and saturation sweeps of six hues.
#ifndef VEXO_TOOLS_PATCHES_H
#define VEXO_TOOLS_PATCHES_H

#include <string>
#include <vector>

#include "calibration/cube.h"

struct Patch {
  std::string group;
  std::string name;
  Triple signal;
};

// Those of a chart are adapted from D50 to the target white (Bradford) and limited to what the signal can hold.
std::vector<Patch> test_colours(const SignalColours &colours);

// The name of the first group, the 24 colours.
inline const char *const kChart = "24 colours";

#endif
