// Measurements made fit for calibration. Near black a probe reads noise. A row whose light above black is noise has no
// colour that tables or recipes could use. The rules, in the order in which they are applied:
//
// 1. Leave out a row between black and the top in which some channel is not credibly above black. Two components count:
//    Y, and the component that is strongest at the channel's full drive. Each must exceed black's by more than
//    - twice the deepest reading of that component below black in the whole file (light cannot be negative, so this
//      depth is noise), and
//    - a hundredth of black times the row's share of full drive.
//    Leave out a row whose level is nearer to black than half of 1/1023 of full drive. Black and the top row always
//    stay.
// 2. Raise a component until it exceeds black's by a ten-thousandth of the strongest in its channel and row, and by a
//    thousandth of black times the row's share of full drive.
// 3. Lower a component that is above the same one in the next row, from the top down (vexo_lcnr_normalize()).
//
// Afterwards X, Y and Z of every row exceed black's, and none falls towards the top.
#ifndef VEXO_TOOLS_CONDITION_H
#define VEXO_TOOLS_CONDITION_H

#include <string>
#include <vector>

#include "colour/triple.h"
#include "file/panel.h"

struct Conditioned {
  Panel panel;                      // the rows that stay
  std::vector<std::string> notes;   // every change, one sentence each; empty: the panel as it was, bit for bit
  std::vector<std::string> summary; // one line per kind of change and channel
};

Conditioned condition(const Panel &panel);

// How far the deepest reading of X, Y and Z lies below black. Light is not negative: this is noise.
Triple noise_floor(const vexo_lcnr &lcnr);

// The lowest row at which every channel gives the X + Y + Z of full drive, within half a percent. It is the top row
// unless the panel is clipped. Drives above it do nothing.
int clip_row(const vexo_lcnr &lcnr);

#endif
