/**
 * @file vexo-cs.h
 * Colorimetry: CIE 1931 and 1976 coordinates (CIE 15), correlated colour temperature, perceptual spaces and colour
 * differences, and RGB colour spaces given by primaries and white.
 *
 * Conversions work in place on one vector; the caller knows from the last call which coordinates it holds:
 * XYZ (X, Y, Z), xyz (x, y, z), xyY (x, y, Y) or uvY (u', v', Y). Y keeps the caller's unit. All arithmetic
 * is single precision unless a comment says otherwise. Status results are 0 for success and -1 for failure;
 * a failing conversion leaves its vector as it was unless a comment says otherwise. Nothing is printed.
 *
 * An XYZ triple is valid when no component is negative; an xyY triple when 0 <= x < 1, 0 <= y < 1 and
 * Y >= 0. A NaN makes either invalid.
 */
#ifndef VEXO_CS_H
#define VEXO_CS_H

#include <stdio.h>

#include "vexo-matrix.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @return 1 when XYZ is a valid tristimulus triple, else 0 (a truth value, not a status). */
int vexo_XYZ_valid(vexo_vector *XYZ);

/** XYZ to xyz. Negative components pass. @return -1 unless X + Y + Z > 0. */
int vexo_XYZ_xyz(vexo_vector *XYZ);

/** XYZ to xyY. Negative components pass. @return -1 unless X + Y + Z > 0. */
int vexo_XYZ_xyY(vexo_vector *XYZ);

/**
 * Turns a table of size samples, sample i being (XYZ[0][i], XYZ[1][i], XYZ[2][i]), into xyY relative to
 * its first sample, the black: that becomes (0, 0, 0), every other sample the xyY of itself minus black.
 * @return 0, or -1 at the first sample whose difference has no chromaticity: the samples before it are
 * converted, it and the later ones still hold XYZ. A size below 1 returns -1 with nothing touched.
 */
int vexo_XYZ_xyY_array(int size, float **XYZ);

/** XYZ to u'v'Y (CIE 1976 UCS); (0, 0, 0) stays as it is, with status 0. @return -1 for an invalid XYZ. */
int vexo_XYZ_uvY(vexo_vector *XYZ);

/** xyY to XYZ; y = 0 gives (0, 0, 0) with status 0. @return -1 for an invalid xyY. */
int vexo_xyY_XYZ(vexo_vector *xyY);

/** xyY to u'v'Y (CIE 1976 UCS). @return -1 for an invalid xyY. */
int vexo_xyY_uvY(vexo_vector *xyY);

/** Not provided. @return always -1, with nothing written. */
int vexo_uvY_XYZ(vexo_vector *uvY, vexo_vector *XYZ);

/** Additive mixture XYZ = XYZ1 + XYZ2. @return -1, XYZ untouched, when either is invalid. */
int vexo_XYZ_mix(vexo_vector *XYZ1, vexo_vector *XYZ2, vexo_vector *XYZ);

/**
 * Additive mixture of two colours by the centre-of-gravity law, each chromaticity weighted by Y/y.
 * y = 0 is not a special case: the weight is then infinite, or NaN for black.
 * @return 0, or -1 with xyY set to (0, 0, 0) when either colour is invalid.
 */
int vexo_xyY_mix(vexo_vector *xyY1, vexo_vector *xyY2, vexo_vector *xyY);

/**
 * Additive mixture of three colours: the first two, then the result with the third.
 * @return 0; -1 with xyY untouched when the first mixture fails; -1 with xyY (0, 0, 0) when the second does.
 */
int vexo_xyY_mix_3(vexo_vector *xyY1, vexo_vector *xyY2, vexo_vector *xyY3, vexo_vector *xyY);

/**
 * Correlated colour temperature of the tristimulus values xyz[0..2] (X, Y, Z in any unit) by Robertson's method. His
 * table reaches from 1667 K to infinity; around 3100 K its historic u of 0.24702 costs up to some 23 K.
 * @return kelvin, rounded to nearest; INT_MAX for a temperature above it; -1 for black (every component below 1e-20)
 * and for a chromaticity that no two neighbouring lines of the table enclose, such as saturated red or blue.
 */
int vexo_xyz_cct(float *xyz);

/** @return vexo_xyz_cct() of the vector. */
int vexo_XYZ_CCT(vexo_vector *XYZ);

/** @return CIE 1976 lightness of the vector's Y against the white's luminance Yn; 100 when Yn <= 0. */
float vexo_XYZ_Lstar(vexo_vector *XYZ, float Yn);

/**
 * XYZ to CIE 1976 L*u*v* against the white REF, an XYZ in the same unit. When either has no u'v' because a component
 * is negative or NaN, u* and v* are 0.
 * @return always 0.
 */
int vexo_XYZ_Luv(vexo_vector *XYZ, vexo_vector *REF);

/** @return the colour difference CIE 1976 Delta E*uv against the white REF. */
float vexo_XYZ_DEuv(vexo_vector *XYZ1, vexo_vector *XYZ2, vexo_vector *REF);

/**
 * XYZ to CIE 1976 L*a*b* against the white REF, an XYZ in the same unit. Nothing is checked: a component 0 of the
 * white makes a* or b* infinite or NaN.
 * @return always 0.
 */
int vexo_XYZ_Lab(vexo_vector *XYZ, vexo_vector *REF);

/** @return the colour difference CIE 1976 Delta E*ab against the white REF. */
float vexo_XYZ_DEab(vexo_vector *XYZ1, vexo_vector *XYZ2, vexo_vector *REF);

/**
 * L*a*b* to L*, chroma C* and hue h = arctan(b* / a*) in radians. h has no quadrant: it lies in -pi/2..pi/2 and
 * opposite colours share it; a* = b* = 0 gives NaN.
 * @return always 0.
 */
int vexo_Lab_LCH(vexo_vector *Lab);

/** XYZ to L*C*h against the white XYZn: vexo_XYZ_Lab(), then vexo_Lab_LCH(). @return always 0. */
int vexo_XYZ_LCH(vexo_vector *XYZ, vexo_vector *XYZn);

/** @return the colour difference CIEDE2000 (CIE 142) of two L*a*b* colours, with parametric factors of 1. */
float vexo_Lab_DE2000(vexo_vector *Lab1, vexo_vector *Lab2);

/** @return the colour difference CIEDE2000 of two XYZ colours against the white XYZn. */
float vexo_XYZ_DE2000(vexo_vector *XYZ1, vexo_vector *XYZ2, vexo_vector *XYZn);

/** An RGB colour space: chromaticities (x, y, z = 1 - x - y) of primaries and white, and the matrix they imply. */
typedef struct vexo_cs {
  vexo_vector r;   /**< red primary */
  vexo_vector g;   /**< green primary */
  vexo_vector b;   /**< blue primary */
  vexo_vector w;   /**< reference white */
  vexo_matrix npm; /**< normalised primary matrix (SMPTE RP 177): XYZ = npm RGB, linear RGB in 0..1, white at
                        Y = 1; row 1 holds the luma weights. Set by the initialisers and vexo_cs_load() only. */
} vexo_cs;

/** Sets the red primary; z = (1 - x) - y is formed in double precision. npm stays as it is. */
void vexo_cs_set_r(vexo_cs *cs, float x, float y);

/** Sets the green primary, as vexo_cs_set_r(). */
void vexo_cs_set_g(vexo_cs *cs, float x, float y);

/** Sets the blue primary, as vexo_cs_set_r(). */
void vexo_cs_set_b(vexo_cs *cs, float x, float y);

/** Sets the reference white, as vexo_cs_set_r(). */
void vexo_cs_set_w(vexo_cs *cs, float x, float y);

/**
 * m = the normalised primary matrix of the four chromaticities in cs.
 * @return 0; -1 with m holding the primaries in its columns when these lie on a line (see
 * vexo_matrix_invert()); -1 with m untouched when the white has y = 0.
 */
int vexo_cs_matrix(vexo_cs *cs, vexo_matrix *m);

/** Fills cs from (x, y) pairs: red, green, blue, white. @return the status of vexo_cs_matrix() on its npm. */
int vexo_cs_init(vexo_cs *cs, float data[4][2]);

/**
 * Fills cs from the XYZ (three floats each, one unit) measured on the red, green, blue and white patches and
 * on black (d), which is subtracted from the others.
 * @return 0; -1 with cs untouched when a patch is not above black (X + Y + Z); else as vexo_cs_matrix().
 */
int vexo_cs_init_XYZ(vexo_cs *cs, const float *r, const float *g, const float *b, const float *w, const float *d);

/**
 * m = the matrix from linear RGB of src to linear RGB of dst, without adaptation between different whites.
 * @return 0, or -1 with m untouched when dst has no invertible npm.
 */
int vexo_cs_transform(vexo_matrix *m, vexo_cs *src, vexo_cs *dst);

/**
 * @return the area of the gamut triangle in the CIE 1931 xy diagram, positive when red, green and blue run
 * counter-clockwise (real displays), else negative; 0 when a primary has no chromaticity (x + y + z not above 0).
 */
float vexo_cs_area(vexo_cs *cs);

/**
 * Chromaticities (x, y, 1 - x - y) of the secondaries: where the line from a primary through the white meets the
 * opposite side. sr is opposite red (cyan), sg opposite green (magenta), sb opposite blue (yellow); each may be null
 * and none may lie in cs. A side parallel to the y axis or a primary at the white's y divides by zero: the result is
 * then what IEEE arithmetic makes of it, mostly NaN.
 * @return 0, or -1 when cs is null.
 */
int vexo_cs_secondary(const vexo_cs *cs, vexo_vector *sr, vexo_vector *sg, vexo_vector *sb);

/**
 * m = the linear Bradford adaptation of XYZ seen under the white src to XYZ seen under the white dst. The whites may be
 * XYZ in any unit or xyz, and are brought to Y = 1; one with Y = 0 is used as it stands, and one without a cone
 * response in src gives infinities or NaNs.
 * @return always 0.
 */
int vexo_chad_transform(vexo_matrix *m, vexo_vector *src, vexo_vector *dst);

/**
 * m = the matrix from linear RGB of target to the linear RGB of native that shows the same colour, the white of target
 * adapted to the white of native: vexo_cs_transform() from target to native with vexo_chad_transform() in between.
 * m must not be part of either colour space.
 * @return 0, or -1 with m untouched when native has no invertible npm.
 */
int vexo_cs_chad_transform(vexo_matrix *m, vexo_cs *native, vexo_cs *target);

/** Prints primaries, white and npm under the heading "PREFIX Color Space (ADDRESS):"; prefix may be null. */
void vexo_cs_dump(FILE *f, vexo_cs *cs, char *prefix);

/**
 * Writes the 48-byte image: r, g, b, w as vector images (see vexo_vector_store()); npm is not stored.
 * @return 0, or -1 at the first vector that the stream did not take whole.
 */
int vexo_cs_store(FILE *f, vexo_cs *cs);

/**
 * Reads the 48-byte image and rebuilds npm.
 * @return 0; -1 on a short read, with the vectors read before it overwritten; else as vexo_cs_matrix().
 */
int vexo_cs_load(FILE *f, vexo_cs *cs);

#ifdef __cplusplus
}
#endif

#endif
