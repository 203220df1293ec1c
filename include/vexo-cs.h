/**
 * @file vexo-cs.h
 * Colorimetry and RGB colour spaces.
 *
 * The first part holds CIE 1931 and CIE 1976 coordinates (CIE 15), correlated colour temperature, CIE 1976 perceptual
 * spaces and colour differences. The second part, from #vexo_cs on, holds RGB colour spaces given by primaries and
 * white.
 *
 * A conversion replaces the content of its vector. The caller must know which coordinates a vector holds: XYZ
 * (X, Y, Z), xyz (x, y, z), xyY (x, y, Y) or uvY (u', v', Y). Y keeps the unit of the caller, for example cd/m2.
 *
 * An XYZ triple is valid when no component is negative. An xyY triple is valid when 0 <= x < 1, 0 <= y < 1 and Y >= 0.
 * A triple with a NaN is not valid.
 *
 * These rules hold unless a comment says otherwise:
 * - Arithmetic is single precision.
 * - Pointers must not be null. They are not checked.
 * - Vector arguments may be the same object.
 * - Status results are 0 for success and -1 for failure. A call that fails does not change its vectors.
 * - Nothing is printed on standard error.
 */
#ifndef VEXO_CS_H
#define VEXO_CS_H

#include <stdio.h>

#include "vexo-matrix.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @return 1 when XYZ is a valid triple, else 0. This is a truth value and not a status. */
int vexo_XYZ_valid(vexo_vector *XYZ);

/** Converts XYZ to xyz. Negative components are accepted. @return 0, or -1 unless X + Y + Z > 0. */
int vexo_XYZ_xyz(vexo_vector *XYZ);

/** Converts XYZ to xyY. Negative components are accepted. @return 0, or -1 unless X + Y + Z > 0. */
int vexo_XYZ_xyY(vexo_vector *XYZ);

/**
 * Converts a table of XYZ samples to xyY above black. XYZ points to three columns of size floats; sample i is
 * (XYZ[0][i], XYZ[1][i], XYZ[2][i]). Sample 0 is black. It becomes (0, 0, 0). Every other sample becomes the xyY of
 * its XYZ minus the XYZ of black. The columns must not overlap.
 * @return 0 on success. -1 at the first sample whose difference does not have X + Y + Z > 0: sample 0 and the samples
 * before it are converted, that sample and the later ones still hold XYZ. -1 with nothing written when size is below 1.
 */
int vexo_XYZ_xyY_array(int size, float **XYZ);

/** Converts XYZ to u'v'Y (CIE 1976 UCS). (0, 0, 0) stays (0, 0, 0). @return 0, or -1 when XYZ is not valid. */
int vexo_XYZ_uvY(vexo_vector *XYZ);

/** Converts xyY to XYZ. A colour with y = 0 becomes (0, 0, 0). @return 0, or -1 when xyY is not valid. */
int vexo_xyY_XYZ(vexo_vector *xyY);

/** Converts xyY to u'v'Y (CIE 1976 UCS). @return 0, or -1 when xyY is not valid. */
int vexo_xyY_uvY(vexo_vector *xyY);

/** This conversion is not provided. @return always -1, with nothing written. */
int vexo_uvY_XYZ(vexo_vector *uvY, vexo_vector *XYZ);

/** Computes the additive mixture XYZ = XYZ1 + XYZ2. @return 0, or -1 when XYZ1 or XYZ2 is not valid. */
int vexo_XYZ_mix(vexo_vector *XYZ1, vexo_vector *XYZ2, vexo_vector *XYZ);

/**
 * Computes the additive mixture of two colours by the centre-of-gravity law: each chromaticity has the weight Y / y.
 * y = 0 is not a special case. The weight is then infinite, or NaN when Y is 0 as well.
 * @return 0, or -1 with xyY set to (0, 0, 0) when xyY1 or xyY2 is not valid.
 */
int vexo_xyY_mix(vexo_vector *xyY1, vexo_vector *xyY2, vexo_vector *xyY);

/**
 * Computes the additive mixture of three colours: vexo_xyY_mix() of the first two, then of the result and the third.
 * @return 0 on success. -1 with xyY unchanged when the first mixture fails. -1 with xyY (0, 0, 0) when the second
 * mixture fails.
 */
int vexo_xyY_mix_3(vexo_vector *xyY1, vexo_vector *xyY2, vexo_vector *xyY3, vexo_vector *xyY);

/**
 * Computes the correlated colour temperature by Robertson's method (J. Opt. Soc. Am. 58, 1968). xyz[0..2] are the
 * tristimulus values X, Y, Z in any unit. The table of isotemperature lines goes from 1667 K to infinity. Its line at
 * 325 per megakelvin keeps the published u = 0.24702; this changes results near 3100 K by up to about 23 K.
 * @return the temperature in kelvin, rounded to the nearest integer. INT_MAX when it is above INT_MAX. -1 for black
 * (every component below 1e-20). -1 when no two neighbouring lines enclose the chromaticity, as for saturated red or
 * blue.
 */
int vexo_xyz_cct(float *xyz);

/** @return vexo_xyz_cct() of the three components. */
int vexo_XYZ_CCT(vexo_vector *XYZ);

/** @return the CIE 1976 lightness L* of the vector's Y. Yn is the luminance of the white. 100 when Yn <= 0. */
float vexo_XYZ_Lstar(vexo_vector *XYZ, float Yn);

/**
 * Converts XYZ to CIE 1976 L*u*v*. REF is the white, an XYZ in the same unit. u* and v* are 0 when XYZ or REF is not
 * valid.
 * @return always 0.
 */
int vexo_XYZ_Luv(vexo_vector *XYZ, vexo_vector *REF);

/** @return the colour difference CIE 1976 Delta E*uv of two XYZ colours. REF is the white, as in vexo_XYZ_Luv(). */
float vexo_XYZ_DEuv(vexo_vector *XYZ1, vexo_vector *XYZ2, vexo_vector *REF);

/**
 * Converts XYZ to CIE 1976 L*a*b*. REF is the white, an XYZ in the same unit. Nothing is checked: when a component of
 * the white is 0, a* or b* is infinite or NaN.
 * @return always 0.
 */
int vexo_XYZ_Lab(vexo_vector *XYZ, vexo_vector *REF);

/** @return the colour difference CIE 1976 Delta E*ab of two XYZ colours. REF is the white, as in vexo_XYZ_Lab(). */
float vexo_XYZ_DEab(vexo_vector *XYZ1, vexo_vector *XYZ2, vexo_vector *REF);

/**
 * Converts L*a*b* to L*, chroma C* and hue h in radians. h is the arctangent of the quotient b* / a*. It lies in
 * -pi/2 to pi/2, so opposite colours have the same h. h is NaN when a* and b* are both 0.
 * @return always 0.
 */
int vexo_Lab_LCH(vexo_vector *Lab);

/** Converts XYZ to L*C*h: vexo_XYZ_Lab() with the white XYZn, then vexo_Lab_LCH(). @return always 0. */
int vexo_XYZ_LCH(vexo_vector *XYZ, vexo_vector *XYZn);

/**
 * Computes the colour difference CIEDE2000 (CIE 142) of two L*a*b* colours. The parametric factors are 1.
 *
 * The formula has two cases for the mean hue: a hue difference of at most 180 degrees, and a larger one. Exactly 180
 * degrees is the border. The hues are rounded to single precision before they are compared, so this rounding selects
 * the case near the border. Pair 14 of the data of Sharma, Wu and Dalal (2005) lies on the border: (50, -0.001, 2.49)
 * and (50, 0.001, -2.49). Its result is the published 4.8045; the other case gives 4.7461.
 * @return the difference.
 */
float vexo_Lab_DE2000(vexo_vector *Lab1, vexo_vector *Lab2);

/** @return vexo_Lab_DE2000() of two XYZ colours. XYZn is the white, as in vexo_XYZ_Lab(). */
float vexo_XYZ_DE2000(vexo_vector *XYZ1, vexo_vector *XYZ2, vexo_vector *XYZn);

/** An RGB colour space. The record is a plain value of the caller. Chromaticities are (x, y, z) with z = 1 - x - y. */
typedef struct vexo_cs {
  vexo_vector r;   /**< red primary */
  vexo_vector g;   /**< green primary */
  vexo_vector b;   /**< blue primary */
  vexo_vector w;   /**< reference white */
  vexo_matrix npm; /**< normalised primary matrix (SMPTE RP 177): XYZ = npm RGB for linear RGB in 0 to 1, with the
                        white at Y = 1. Row 1 holds the luma weights. Only vexo_cs_init(), vexo_cs_init_XYZ() and
                        vexo_cs_load() set it. */
} vexo_cs;

/** Sets the red primary to the chromaticity (x, y). z = (1 - x) - y is computed in double. npm does not change. */
void vexo_cs_set_r(vexo_cs *cs, float x, float y);

/** Sets the green primary, as vexo_cs_set_r(). */
void vexo_cs_set_g(vexo_cs *cs, float x, float y);

/** Sets the blue primary, as vexo_cs_set_r(). */
void vexo_cs_set_b(vexo_cs *cs, float x, float y);

/** Sets the reference white, as vexo_cs_set_r(). */
void vexo_cs_set_w(vexo_cs *cs, float x, float y);

/**
 * Computes the normalised primary matrix m of the four chromaticities in cs. m may be cs->npm.
 * @return 0 on success. -1 with the primaries in the columns of m when these lie on a line (see vexo_matrix_invert()).
 * Else -1 with m unchanged when the white has y = 0.
 */
int vexo_cs_matrix(vexo_cs *cs, vexo_matrix *m);

/**
 * Fills cs. data holds the (x, y) of red, green, blue and white.
 * @return the status of vexo_cs_matrix() for npm.
 */
int vexo_cs_init(vexo_cs *cs, float data[4][2]);

/**
 * Fills cs from measurements. r, g, b, w and d are the XYZ of the red, green, blue, white and black patch: three
 * floats each, all in one unit. Black is subtracted from the others.
 * @return 0 on success. -1 with cs unchanged when a patch does not have X + Y + Z above that of black. Else the status
 * of vexo_cs_matrix() for npm.
 */
int vexo_cs_init_XYZ(vexo_cs *cs, const float *r, const float *g, const float *b, const float *w, const float *d);

/**
 * Computes the matrix m from linear RGB of src to linear RGB of dst. It does not adapt one white to the other. m must
 * not be the npm of either colour space.
 * @return 0, or -1 with m unchanged when the npm of dst has no inverse.
 */
int vexo_cs_transform(vexo_matrix *m, vexo_cs *src, vexo_cs *dst);

/**
 * @return the area of the gamut triangle in the CIE 1931 xy diagram. It is positive when red, green and blue run
 * counter-clockwise, as for real displays, else negative. 0 when a primary does not have x + y + z > 0.
 */
float vexo_cs_area(vexo_cs *cs);

/**
 * Computes the chromaticities (x, y, 1 - x - y) of the secondary colours. A secondary is the point where the line from
 * a primary through the white crosses the opposite side of the gamut triangle. sr is opposite to red (cyan), sg to
 * green (magenta), sb to blue (yellow). cs, sr, sg and sb may be null; a null output is skipped. The outputs must not
 * lie in cs.
 *
 * A side parallel to the y axis divides by zero, and so does a primary with the y of the white. The result is then
 * what IEEE arithmetic gives, in most cases NaN.
 * @return 0, or -1 when cs is null.
 */
int vexo_cs_secondary(const vexo_cs *cs, vexo_vector *sr, vexo_vector *sg, vexo_vector *sb);

/**
 * Computes the linear Bradford adaptation m: from XYZ under the white src to XYZ under the white dst. The whites may be
 * XYZ in any unit or xyz. They are scaled to Y = 1; a white with Y = 0 is used as it is. When a cone response of src is
 * 0, m has infinite or NaN elements.
 * @return always 0.
 */
int vexo_chad_transform(vexo_matrix *m, vexo_vector *src, vexo_vector *dst);

/**
 * Computes the matrix m from linear RGB of target to linear RGB of native with the same colour, where the white of
 * target is adapted to the white of native. This is vexo_cs_transform() from target to native with
 * vexo_chad_transform() in between. m must not be the npm of either colour space.
 * @return 0, or -1 with m unchanged when the npm of native has no inverse.
 */
int vexo_cs_chad_transform(vexo_matrix *m, vexo_cs *native, vexo_cs *target);

/** Prints primaries, white and npm below the heading "PREFIX Color Space (ADDRESS):". prefix may be null. */
void vexo_cs_dump(FILE *f, vexo_cs *cs, char *prefix);

/**
 * Writes r, g, b and w as 48 bytes: four vectors as vexo_vector_store() writes them. npm is not stored.
 * @return 0, or -1 at the first vector that the stream did not take completely.
 */
int vexo_cs_store(FILE *f, vexo_cs *cs);

/**
 * Reads the 48 bytes that vexo_cs_store() writes and computes npm.
 * @return 0 on success. -1 when the stream had fewer bytes; the vectors before that point are overwritten. Else the
 * status of vexo_cs_matrix() for npm.
 */
int vexo_cs_load(FILE *f, vexo_cs *cs);

#ifdef __cplusplus
}
#endif

#endif
