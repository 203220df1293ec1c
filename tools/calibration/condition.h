// Measurements made fit for calibration. Near black a probe reads noise: a row whose light above black is noise has no
// colour that tables or recipes could use. The rules, in the order in which they are applied:
//
// 1. Leave out a row between black and the top in which some channel is not credibly above black. Two components count:
//    the one that is strongest at the channel's full drive, and Y. Each has to exceed black's by more than twice the
//    deepest reading of that component below black in the whole file (light cannot be negative, so that is noise) and
//    by a hundredth of black's own times the row's share of full drive. A row whose level is nearer to black than half
//    of 1/1023 of full drive goes too. Black and the top row always stay.
// 2. Raise a component that does not exceed black's by a ten-thousandth of the strongest in its channel and row, and by
//    a thousandth of black's own times the row's share of full drive, until it does.
// 3. Lower a component that is above the same one in the next row to it, from the top down (vexo_lcnr_normalize()).
//
// Above black every X, Y and Z then exceeds black's and none falls towards the top.
#ifndef VEXO_TOOLS_CONDITION_H
#define VEXO_TOOLS_CONDITION_H

#include <string>
#include <vector>

#include "file/panel.h"

struct Conditioned {
  vexo_lcnr lcnr;
  std::vector<int> lines;         // line of the file on which each row that stays begins
  std::vector<std::string> notes; // what was done, a sentence each; empty: lcnr is the panel's, bit for bit
};

Conditioned condition(const Panel &panel);

// Conditions the panel in place, says each change on standard error and returns them.
std::vector<std::string> condition_aloud(Panel *panel);

// The lowest row that shows, in every channel, full drive's X + Y + Z but for half a percent: the top one unless the
// panel is clipped. Drives above it do nothing.
int clip_row(const vexo_lcnr &lcnr);

#endif
