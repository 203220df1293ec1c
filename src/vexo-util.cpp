// Interpolation over the corners of a lattice cell, each step the library's shared blend.
#include "vexo-util.h"

#include "base/exact.h"

using vexo_internal::blend;

float linear_inter(float target, float *v) { return blend(v[0], v[1], target); }

float bilinear_inter(float *target, float v[][2]) {
  const float a = linear_inter(target[1], v[0]);
  const float b = linear_inter(target[1], v[1]);
  return blend(a, b, target[0]);
}

float trilinear_inter(float *target, float v[][2][2]) {
  const float a = bilinear_inter(target + 1, v[0]);
  const float b = bilinear_inter(target + 1, v[1]);
  return blend(a, b, target[0]);
}
