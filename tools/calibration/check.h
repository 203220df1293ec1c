// What an engineer should know about a panel's measurements before a calibration.
#ifndef VEXO_TOOLS_CHECK_H
#define VEXO_TOOLS_CHECK_H

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "calibration/triple.h"
#include "file/panel.h"

// Something suspicious in a row.
struct Finding {
  const char *kind;
  int row;
  int channel;
  int component; // -1 where all three are meant
  std::string text;
};

// Whether a recipe can use the rows as they are.
struct RecipeCheck {
  const char *recipe;
  std::string obstacle; // why not; empty when it can
};

// How far a measured gray ramp is from the sum of the channels, both above black. Luminance as a part of the sum's,
// colour in u'v'.
struct Additivity {
  int levels = 0; // compared
  double mean_Y = 0.0;
  double worst_Y = 0.0;
  double worst_Y_level = 0.0;
  double mean_uv = 0.0;
  double worst_uv = 0.0;
  double worst_uv_level = 0.0;
};

// All from readings, without a prediction.
struct Check {
  Panel panel;
  std::vector<Finding> findings;
  std::array<RecipeCheck, 2> recipes; // those of the library
  std::optional<Additivity> gray;
  Triple black;           // X, Y, Z: mean of the readings
  vexo_vector white;      // xyY above black of the three channels at full drive
  vexo_vector primary[3]; // xyY above black at full drive
  int cct;                // of the white, kelvin; -1 for none
  double contrast;        // white with the black in it over black; infinite where black reads no light
};

// gray: CSV file of a gray ramp; empty for none. Throws a Failure (input).
Check check(const Panel &panel, const std::string &gray);

#endif
