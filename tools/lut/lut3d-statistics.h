// Figures of 3D LUTs.
#ifndef VEXO_TOOLS_LUT3D_STATISTICS_H
#define VEXO_TOOLS_LUT3D_STATISTICS_H

#include <array>

#include "vexo-3dlut.h"

// A grid point.
struct Lut3dIndex {
  int bi;
  int gi;
  int ri;
};

// The mean and the largest of some magnitude over the entries, and where the largest is. NaN is the largest.
class Lut3dExtent {
public:
  void add(double magnitude, Lut3dIndex index);
  double mean() const { return count_ > 0 ? sum_ / static_cast<double>(count_) : 0.0; }
  double largest() const { return largest_; }
  Lut3dIndex where() const { return where_; }

private:
  double sum_ = 0.0;
  long count_ = 0;
  double largest_ = 0.0;
  Lut3dIndex where_ = {0, 0, 0};
};

using Lut3dExtents = std::array<Lut3dExtent, 3>; // red, green, blue

// Absolute differences of two tables of one size, entry by entry.
Lut3dExtents difference(vexo_3dlut *a, vexo_3dlut *b);

// Absolute steps from each entry to its neighbours on the three axes.
Lut3dExtents neighbour_steps(vexo_3dlut *lut);

// The values of the entries.
struct Lut3dRange {
  float lowest[3];
  float highest[3];
};

Lut3dRange value_range(vexo_3dlut *lut);

// The entries of equal red, green and blue input.
struct Lut3dGrayAxis {
  Lut3dExtent spread; // of the components of an entry
  int first_fall[3];  // the first index below the one before it, for each channel; 0 for none

  bool neutral() const { return spread.largest() < 0.5 / 1023.0; } // half a code of 10 bits
  bool monotonic() const { return first_fall[0] == 0 && first_fall[1] == 0 && first_fall[2] == 0; }
};

Lut3dGrayAxis gray_axis(vexo_3dlut *lut);

#endif
