// Trilinear interpolation in a grid of the unit cube.
#ifndef VEXO_TOOLS_TRILINEAR_H
#define VEXO_TOOLS_TRILINEAR_H

#include <cstddef>

#include "colour/triple.h"

// at(r, g, b) gives the Triple at a node; an axis has size of them. Outside, the value at the nearest face.
template <typename At> Triple trilinear(const Triple &point, ptrdiff_t size, At at) {
  const Triple position = point.cwiseMax(0.0).cwiseMin(1.0) * static_cast<double>(size - 1);
  const Eigen::Array<ptrdiff_t, 3, 1> cell = position.array().cast<ptrdiff_t>().min(size - 2);
  const Triple f = position - cell.matrix().cast<double>();
  const auto between = [](const Triple &low, const Triple &high, double t) -> Triple { return low + (high - low) * t; };
  const auto along_red = [&](ptrdiff_t g, ptrdiff_t b) {
    return between(at(cell[0], cell[1] + g, cell[2] + b), at(cell[0] + 1, cell[1] + g, cell[2] + b), f[0]);
  };
  const auto along_green = [&](ptrdiff_t b) { return between(along_red(0, b), along_red(1, b), f[1]); };
  return between(along_green(0), along_green(1), f[2]);
}

#endif
