// Figures of 1D LUTs, whose values are drives of 0..1.
#ifndef VEXO_TOOLS_LUT1D_STATISTICS_H
#define VEXO_TOOLS_LUT1D_STATISTICS_H

#include "vexo-gamma.h"

// Absolute differences of two tables of one size, entry by entry.
struct Lut1dDifference {
  double mean = 0.0;
  double largest = 0.0;
  int entry = 0; // where the largest is
};

Lut1dDifference difference(const vexo_lut &a, const vexo_lut &b);

struct Lut1dStep {
  float height; // absolute
  int entry;    // to which it leads
};

// The largest step between neighbours of a table of two entries or more; the first of equal ones.
Lut1dStep largest_step(const vexo_lut &lut);

// The first entry below the one before it; 0 for none.
int first_fall(const vexo_lut &lut);

#endif
