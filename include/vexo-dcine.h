/**
 * @file vexo-dcine.h
 * Digital cinema coding: X'Y'Z' of the distribution master (SMPTE ST 428-1), RGB coded by the same power law, and
 * DCI-P3 primaries (SMPTE RP 431-2) with the white (0.314, 0.351).
 *
 * Conversions work in place on one vector, between these forms, M being the largest code 2^nbits - 1:
 *
 * | Form | Content                  | Range        | Definition                      |
 * |------|--------------------------|--------------|---------------------------------|
 * | XYZq | coded X'Y'Z'             | 0..M         | M (xyz 48 / 52.37)^(1/2.6)      |
 * | XYZ  | linear XYZ in code units | 0..M         | M (XYZq / M)^2.6                |
 * | xyz  | relative XYZ, white Y = 1| 0..1.0910417 | XYZ / M 52.37 / 48              |
 * | RGBq | coded RGB                | 0..M         | M rgb^(1/2.6)                   |
 * | RGB  | linear RGB in code units | 0..M         | M (RGBq / M)^2.6                |
 * | rgb  | linear DCI-P3 RGB        | 0..1         | RGB / M                         |
 *
 * Codes stay floats: nothing is rounded to integers or clamped, and a negative component gives NaN in a power law.
 * nbits is 1 to 31 (12 in a distribution master); any other depth leaves the vector or matrix as it was, and is -1
 * where there is a status. Status results are 0 for success and -1 for failure.
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

/** Coded X'Y'Z' to relative XYZ. */
void vexo_dcine_XYZq_xyz(vexo_vector *v, unsigned int nbits);

/** Relative XYZ to coded X'Y'Z'. */
void vexo_dcine_xyz_XYZq(vexo_vector *v, unsigned int nbits);

/** Coded RGB to linear RGB, 0..1. */
void vexo_dcine_RGBq_rgb(vexo_vector *v, unsigned int nbits);

/** Linear RGB, 0..1, to coded RGB. */
void vexo_dcine_rgb_RGBq(vexo_vector *v, unsigned int nbits);

/** Linear P3 RGB, 0..1, to relative XYZ. @return 0 (the primaries are fixed and make a colour space). */
int vexo_dcine_rgb_xyz(vexo_vector *v);

/** Relative XYZ to linear P3 RGB, 0..1. @return 0, as vexo_dcine_rgb_xyz(). */
int vexo_dcine_xyz_rgb(vexo_vector *v);

/** Coded P3 RGB to coded X'Y'Z'. @return 0, or -1 for a depth that makes no codes. */
int vexo_dcine_RGBq_XYZq(vexo_vector *v, unsigned int nbits);

/** Coded X'Y'Z' to coded P3 RGB. @return 0, or -1 for a depth that makes no codes. */
int vexo_dcine_XYZq_RGBq(vexo_vector *v, unsigned int nbits);

/** Coded X'Y'Z' to linear XYZ in code units. */
void vexo_dcine_XYZq_XYZ(vexo_vector *v, unsigned int nbits);

/** Linear XYZ in code units to coded X'Y'Z'. */
void vexo_dcine_XYZ_XYZq(vexo_vector *v, unsigned int nbits);

/** Coded RGB to linear RGB in code units. */
void vexo_dcine_RGBq_RGB(vexo_vector *v, unsigned int nbits);

/** Linear RGB in code units to coded RGB. */
void vexo_dcine_RGB_RGBq(vexo_vector *v, unsigned int nbits);

/** Linear XYZ in code units to relative XYZ. This and the next three are matrix products: inf and NaN spread. */
void vexo_dcine_XYZ_xyz(vexo_vector *v, unsigned int nbits);

/** Relative XYZ to linear XYZ in code units. */
void vexo_dcine_xyz_XYZ(vexo_vector *v, unsigned int nbits);

/** Linear RGB in code units to linear RGB, 0..1. */
void vexo_dcine_RGB_rgb(vexo_vector *v, unsigned int nbits);

/** Linear RGB, 0..1, to linear RGB in code units. */
void vexo_dcine_rgb_RGB(vexo_vector *v, unsigned int nbits);

/** m = the matrix from linear XYZ to linear P3 RGB, both in code units. @return 0, or -1 with m untouched. */
int vexo_dcine_XYZ_RGB_matrix(vexo_matrix *m, unsigned int nbits);

/** m = the matrix from linear P3 RGB to linear XYZ, both in code units. @return 0, or -1 with m untouched. */
int vexo_dcine_RGB_XYZ_matrix(vexo_matrix *m, unsigned int nbits);

#ifdef __cplusplus
}
#endif

#endif
