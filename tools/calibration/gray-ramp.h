// Measured gray ramps: of the bare panel, and through LUTs.
#ifndef VEXO_TOOLS_GRAY_RAMP_H
#define VEXO_TOOLS_GRAY_RAMP_H

#include <string>
#include <vector>

#include "calibration/panel-model.h"
#include "file/panel.h"

struct GrayRamp {
  struct Gray {
    double input; // level as a part of the panel's highest
    Triple XYZ;   // with black
  };
  std::string path;
  Triple black; // its own reading of level 0, or else the panel's
  bool own_black;
  std::vector<Gray> grays; // above level 0, levels rising

  Triple above_black(size_t i) const { return grays[i].XYZ - black; }
};

// Reads a ramp whose levels are in the panel file's unit. Throws a Failure (input) where there is no gray above black,
// or levels do not rise or lie outside those of the panel.
GrayRamp read_gray_ramp(const std::string &path, const Panel &panel);

// Where grays of a ramp are so far apart that nothing is known of those between them, in words; empty for nowhere.
std::string sparse(const GrayRamp &ramp, const vexo_lcnr &panel);

// The grays above black, as they were read.
std::vector<MeasuredLight> lights_of(const GrayRamp &ramp);

// What a model learns from a ramp of the bare panel. A residual that is within twice the noise near black does not
// count: there the model keeps its own light. noise is the panel file's own noise_floor(). Throws a Failure (input)
// where the white differs from the model's by more than a factor of 1.5: these are other units, or another panel.
std::vector<MeasuredLight> bare_grays(const GrayRamp &ramp, const PanelModel &model, const Triple &noise);

// How the black of the ramp differs from the panel's, in words; empty when it does not.
std::string black_difference(const GrayRamp &ramp, const Panel &panel);

#endif
