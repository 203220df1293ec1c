// The solve recipe: every gray level by solving for the three drives whose mixture is the target.
//
// A channel's light s is its X + Y + Z above black; its colour at s follows the measurements, drift included. The
// target of a level, XYZ, is the sum of three such lights: three equations, solved by Newton's method with steps that
// are halved until they help. From s to the drive the channel's table is read backwards, lowest drive first.
//
// - White: the brightest light of the target white at which no channel needs more than it has.
// - Levels: from the top down, no drive above that of the level above. A level that the panel cannot reach so (a
//   channel would have to rise again, or fall below nothing) keeps its luminance and lets its chromaticity go: a step
//   in luminance shows as a band, a small error of chromaticity does not.
// - Near black: below the lowest measured row nothing is known of a channel but that it goes to black, and its colour
//   there is mostly noise. From the highest level at which some channel is that low, at most from 10 % input, the
//   three drives go down to 0 in straight lines, as those of a power law would.
#ifndef VEXO_TOOLS_SOLVE_H
#define VEXO_TOOLS_SOLVE_H

#include "calibration/gray-ramp.h"

struct Solved {
  int toe;         // entries below this one are straight lines to 0
  int held;        // how many entries from there up keep their luminance alone
  float held_from; // the lowest input of those
  float held_to;   // and the highest
};

// Fills three LUTs of 1024 entries for the panel that the context's tables describe.
Solved solve(vexo_lut *lut, const vexo &bare, const Target &target);

#endif
