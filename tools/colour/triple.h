// Three numbers in double precision: X, Y, Z of a light, or something of red, green and blue.
#ifndef VEXO_TOOLS_TRIPLE_H
#define VEXO_TOOLS_TRIPLE_H

#include <Eigen/Core>

#include "vexo-matrix.h"

using Triple = Eigen::Vector3d;

// As the library takes it.
inline vexo_vector single(const Triple &v) {
  return {{static_cast<float>(v[0]), static_cast<float>(v[1]), static_cast<float>(v[2])}};
}

inline Triple triple(const vexo_vector &v) { return {v.d[0], v.d[1], v.d[2]}; }

#endif
