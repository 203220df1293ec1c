// Three numbers in double precision.
#ifndef VEXO_TOOLS_TRIPLE_H
#define VEXO_TOOLS_TRIPLE_H

#include <array>

#include "vexo-matrix.h"

using Triple = std::array<double, 3>; // X, Y, Z of a light, or something of red, green and blue

// As the library takes it.
inline vexo_vector single(const Triple &v) {
  return {{static_cast<float>(v[0]), static_cast<float>(v[1]), static_cast<float>(v[2])}};
}

#endif
