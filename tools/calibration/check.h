// What an engineer should know about a panel's measurements before a calibration.
#ifndef VEXO_TOOLS_CHECK_H
#define VEXO_TOOLS_CHECK_H

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "calibration/gray-ramp.h"
#include "calibration/mixture-readings.h"
#include "file/panel.h"

// Something suspicious in a row.
struct Finding {
  const char *kind;
  int row;
  int channel;
  int component; // -1 where all three are meant
  std::string text;
};

// What stands in the way of a recipe, in words; empty when it can use the rows.
struct RecipeCheck {
  const char *recipe;
  std::string obstacle;
};

// How far a measured gray ramp is from what the additive model predicts, both above black, over the judged levels. All
// is 0 where the ramp has none.
struct Additivity {
  struct Distance {
    double mean = 0.0;
    double worst = 0.0;
    double worst_level = 0.0;
  };
  int levels = 0;
  Distance de2000;    // the measured white is the reference
  Distance luminance; // as a part of the prediction
  Distance uv;        // in u'v'
};

Additivity additivity(const GrayRamp &ramp, const PanelModel &model);

// All from readings but for the additivity and the mixtures.
struct Check {
  Panel panel;
  std::vector<Finding> findings;
  std::string obstacle;               // to calibrate as it is by default, conditioning included; empty: none
  std::array<RecipeCheck, 2> recipes; // to the library's recipes on the rows as they are
  std::optional<Additivity> gray;
  std::optional<CrossValidation> mixtures;
  Triple black;           // X, Y, Z: mean of the readings
  vexo_vector white;      // xyY above black of the three channels at full drive
  vexo_vector primary[3]; // xyY above black at full drive
  int cct;                // of the white, kelvin; -1 for none
  double contrast;        // white with the black in it over black; infinite where black reads no light
};

// gray: file of a gray ramp, mix: file of mixtures; empty for none. Throws a Failure (input).
Check check(const Panel &panel, const std::string &gray, const std::string &mix);

#endif
