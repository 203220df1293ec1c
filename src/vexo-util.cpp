// Interpolation over the corners of a lattice cell. Each step is the library's shared blend.
#include "vexo-util.h"

#include "base/exact.h"

float linear_inter(float target, float *v) { return vexo_internal::lerp(v[0], v[1], target); }

float bilinear_inter(float *target, float v[][2]) {
  float ends[2] = {linear_inter(target[1], v[0]), linear_inter(target[1], v[1])};
  return linear_inter(target[0], ends);
}

float trilinear_inter(float *target, float v[][2][2]) {
  float ends[2] = {bilinear_inter(target + 1, v[0]), bilinear_inter(target + 1, v[1])};
  return linear_inter(target[0], ends);
}
