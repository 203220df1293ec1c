// The solve recipe: each gray level by solving for the three drives whose mixture is the target.
//
// - White is the brightest light of the target white that the channels can give, or as bright as the target says.
// - Levels are solved from the top down. No drive is above that of the level above. Where that bound, or black, keeps
//   the panel from the target, the level keeps its luminance and gives up its chromaticity: an error of luminance
//   shows as a band in a ramp, a small error of chromaticity does not.
// - Near black, below the lowest measured level, a channel's colour is unknown. All that is known is that it goes to
//   black. From the highest entry at which some channel is that low, at most from 10 % input, the three drives go down
//   in straight lines, as the drives of a power law would, to 0 at the highest input whose target is black.
#ifndef VEXO_TOOLS_SOLVE_H
#define VEXO_TOOLS_SOLVE_H

#include "calibration/panel-model.h"
#include "calibration/target.h"

struct Solved {
  int toe;          // entries below this one are straight lines to 0
  int held;         // number of entries from there up that keep only their luminance
  double held_from; // the lowest input of those
  double held_to;   // the highest
};

// Fills three LUTs of 1024 entries with drives of 0 to the most. Throws a Failure (limit) where white cannot be as
// bright as the target says.
Solved solve(vexo_lut *lut, const PanelModel &model, const Target &target, double most);

#endif
