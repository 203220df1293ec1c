/**
 * @file vexo-dcine.h
 * Digital cinema coding: X'Y'Z' of the distribution master (SMPTE ST 428-1), RGB coded with the same power law, and
 * the DCI-P3 primaries (SMPTE RP 431-2) with the white (0.314, 0.351).
 *
 * A conversion replaces the content of its vector. There are six forms. M is the largest code, 2^nbits - 1.
 *
 * | Form | Content                   | Range          | Definition                 |
 * |------|---------------------------|----------------|----------------------------|
 * | XYZq | coded X'Y'Z'              | 0 to M         | M (xyz 48 / 52.37)^(1/2.6) |
 * | XYZ  | linear XYZ in code units  | 0 to M         | M (XYZq / M)^2.6           |
 * | xyz  | relative XYZ, white Y = 1 | 0 to 1.0910417 | XYZ / M 52.37 / 48         |
 * | RGBq | coded RGB                 | 0 to M         | M rgb^(1/2.6)              |
 * | RGB  | linear RGB in code units  | 0 to M         | M (RGBq / M)^2.6           |
 * | rgb  | linear DCI-P3 RGB         | 0 to 1         | RGB / M                    |
 *
 * Codes are floats. They are not rounded to integers and not clamped. A power of a negative component is NaN. A power
 * and the factors after it are computed in double and rounded to float once.
 *
 * nbits is the depth of the codes, 1 to 31; a distribution master has 12. With any other depth a call does not change
 * its vector or matrix, and returns -1 if it returns a status.
 *
 * Status results are 0 for success and -1 for failure. Pointers must not be null; they are not checked.
 */
#ifndef VEXO_DCINE_H
#define VEXO_DCINE_H

#include "vexo-matrix.h"

#ifdef __cplusplus
extern "C" {
#endif

extern const float dcine_gamma; /**< exponent of the coding, 2.6 */
extern const float dcine_v;     /**< luminance of the largest code, 52.37 cd/m2 */
extern const float dcine_l;     /**< luminance of the reference white, 48 cd/m2 */

/** Converts coded X'Y'Z' to relative XYZ. */
void vexo_dcine_XYZq_xyz(vexo_vector *v, unsigned int nbits);

/** Converts relative XYZ to coded X'Y'Z'. */
void vexo_dcine_xyz_XYZq(vexo_vector *v, unsigned int nbits);

/** Converts coded RGB to linear RGB in 0 to 1. */
void vexo_dcine_RGBq_rgb(vexo_vector *v, unsigned int nbits);

/** Converts linear RGB in 0 to 1 to coded RGB. */
void vexo_dcine_rgb_RGBq(vexo_vector *v, unsigned int nbits);

/** Converts linear P3 RGB in 0 to 1 to relative XYZ. @return always 0: the primaries are fixed and have a matrix. */
int vexo_dcine_rgb_xyz(vexo_vector *v);

/** Converts relative XYZ to linear P3 RGB in 0 to 1. @return always 0, as vexo_dcine_rgb_xyz(). */
int vexo_dcine_xyz_rgb(vexo_vector *v);

/** Converts coded P3 RGB to coded X'Y'Z'. @return 0, or -1 for a depth outside 1 to 31. */
int vexo_dcine_RGBq_XYZq(vexo_vector *v, unsigned int nbits);

/** Converts coded X'Y'Z' to coded P3 RGB. @return 0, or -1 for a depth outside 1 to 31. */
int vexo_dcine_XYZq_RGBq(vexo_vector *v, unsigned int nbits);

/** Converts coded X'Y'Z' to linear XYZ in code units. */
void vexo_dcine_XYZq_XYZ(vexo_vector *v, unsigned int nbits);

/** Converts linear XYZ in code units to coded X'Y'Z'. */
void vexo_dcine_XYZ_XYZq(vexo_vector *v, unsigned int nbits);

/** Converts coded RGB to linear RGB in code units. */
void vexo_dcine_RGBq_RGB(vexo_vector *v, unsigned int nbits);

/** Converts linear RGB in code units to coded RGB. */
void vexo_dcine_RGB_RGBq(vexo_vector *v, unsigned int nbits);

/**
 * Converts linear XYZ in code units to relative XYZ. This conversion and the next three multiply the vector by a
 * diagonal matrix. One infinite or NaN component therefore makes the other components NaN.
 */
void vexo_dcine_XYZ_xyz(vexo_vector *v, unsigned int nbits);

/** Converts relative XYZ to linear XYZ in code units. */
void vexo_dcine_xyz_XYZ(vexo_vector *v, unsigned int nbits);

/** Converts linear RGB in code units to linear RGB in 0 to 1. */
void vexo_dcine_RGB_rgb(vexo_vector *v, unsigned int nbits);

/** Converts linear RGB in 0 to 1 to linear RGB in code units. */
void vexo_dcine_rgb_RGB(vexo_vector *v, unsigned int nbits);

/**
 * Computes the matrix m from linear XYZ to linear P3 RGB, both in code units.
 * @return 0, or -1 with m unchanged for a depth outside 1 to 31.
 */
int vexo_dcine_XYZ_RGB_matrix(vexo_matrix *m, unsigned int nbits);

/**
 * Computes the matrix m from linear P3 RGB to linear XYZ, both in code units.
 * @return 0, or -1 with m unchanged for a depth outside 1 to 31.
 */
int vexo_dcine_RGB_XYZ_matrix(vexo_matrix *m, unsigned int nbits);

#ifdef __cplusplus
}
#endif

#endif
