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

// Why a recipe cannot use the rows, in words; empty when it can.
struct RecipeCheck {
  const char *recipe;
  std::string obstacle;
};

// How far a measured gray ramp is from what the additive model predicts, both above black, over the judged levels.
// Without a judged level everything is 0.
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

// From the rows of the panel file, except the additivity and the mixtures.
struct Check {
  Panel panel;
  std::vector<Finding> findings;
  std::string obstacle;               // to calibrate with its default options, conditioning included; empty: none
  std::array<RecipeCheck, 2> recipes; // to the library's recipes, without conditioning
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
