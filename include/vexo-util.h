/**
 * @file vexo-util.h
 * Linear interpolation between two values, over the corners of a square and over the corners of a cube.
 *
 * Fractions run from 0 (first value) to 1 (second value); outside that range the values are extended, not clamped.
 * Corner arrays are nested with the first fraction's index outermost. The innermost index is interpolated first.
 */
#ifndef VEXO_UTIL_H
#define VEXO_UTIL_H

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @return v[0] (1 - target) + v[1] target, exactly v[0] at 0 and v[1] at 1 when both are finite. The second product is
 * formed in single precision, the first and the sum in double, rounded once.
 */
float linear_inter(float target, float *v);

/** @return the value at (target[0], target[1]) between the 2x2 corners v[i][j], by linear_inter() along j, then i. */
float bilinear_inter(float *target, float v[][2]);

/** @return the value at target[0..2] between the 2x2x2 corners v[i][j][k], by linear_inter() along k, j, then i. */
float trilinear_inter(float *target, float v[][2][2]);

#ifdef __cplusplus
}
#endif

#endif
