/**
 * @file vexo-util.h
 * Linear interpolation (lerp) between two values, between the 4 corners of a square and between the 8 corners of a
 * cube.
 *
 * A fraction of 0 selects the first value, a fraction of 1 the second value. Fractions outside 0 to 1 extrapolate:
 * they are not clamped.
 *
 * Corner arrays are nested. The outermost index belongs to the first fraction. The innermost index is interpolated
 * first.
 *
 * Pointers must not be null; they are not checked. Nothing is written.
 */
#ifndef VEXO_UTIL_H
#define VEXO_UTIL_H

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Interpolates between v[0] and v[1]. The product target v[1] is rounded to single precision. The product
 * v[0] (1 - target) and the sum are computed in double. The sum is rounded to float once.
 * @return the value. For finite v it is exactly v[0] at target 0 and exactly v[1] at target 1.
 */
float linear_inter(float target, float *v);

/** @return the value at the fractions target[0], target[1] between the corners v[i][j]. Lerps along j, then along i. */
float bilinear_inter(float *target, float v[][2]);

/** @return the value at the fractions target[0..2] between the corners v[i][j][k]. Lerps along k, then j, then i. */
float trilinear_inter(float *target, float v[][2][2]);

#ifdef __cplusplus
}
#endif

#endif
