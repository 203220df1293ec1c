/**
 * @file vexo.h
 * Panel calibration. The measurements of a probe become three correction LUTs. Single gray points can be adjusted, and
 * the gray ramp can be printed.
 *
 * The panel model is additive. Each channel is measured alone. Between measured levels its XYZ is linear in the drive.
 * The colour of a drive triple is the sum of the three channels, each above black.
 *
 * Channels are numbered 0 red, 1 green, 2 blue. Tristimulus components are numbered 0 X, 1 Y, 2 Z. Luminance has the
 * unit of the probe, usually cd/m2. Arithmetic is single precision.
 *
 * These rules hold unless a comment says otherwise:
 * - Pointers must not be null. They are not checked.
 * - Vectors may be the same object. The three LUTs of a call must have different storage.
 * - Status results are 0 for success and -1 for failure.
 * - A stream belongs to the caller. It is never closed. Write errors are not detected: check ferror() and fclose().
 * - No call keeps state outside the records of the caller. Different threads may use different records.
 */
#ifndef VEXO_H
#define VEXO_H

#include <stdio.h>

#include "vexo-gamma.h"
#include "vexo-matrix.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Ramp measurements of a panel, the content of an LCNR file. */
typedef struct vexo_lcnr {
  float data[3][3][64]; /**< data[c][m][i]: component m of channel c driven alone at row i, black included */
  float sample[64];     /**< drive level of row i in any unit, rising; row 0 is black (level 0), the last full drive */
  int num;              /**< number of rows in use, 0 to 64 */
} vexo_lcnr;

/**
 * The calibration context: the measurements and the tables made from them. The caller allocates it and fills lcnr. A
 * recipe fills data and maxY.
 */
typedef struct vexo {
  vexo_lcnr lcnr;         /**< the measurements */
  float data[3][3][1024]; /**< data[c][m][k]: channel c at drive k / 1023, black subtracted. m = 0 is the chromaticity
                               x, m = 1 is y, m = 2 is the relative luminance, 1 at the top. Level 0 is (0, 0, 0) */
  float maxY[3];          /**< luminance of each channel at full drive, black subtracted */
} vexo;

/**
 * Makes every measured column non-decreasing. A value that is above a later row is lowered to the minimum of the later
 * rows.
 * @return the number of lowered values. 0 when the columns do not fall.
 */
int vexo_lcnr_normalize(vexo_lcnr *lcnr);

/** Prints the 3x3x1024 tables, one line per level, below "PREFIX VEXO(ADDRESS) DATA:". prefix may be null. */
void vexo_data_dump(FILE *f, float data[3][3][1024], char *prefix);

/**
 * Finds the level at which the relative luminance of one channel reaches luma. data holds the tables of that channel,
 * data[c] of a context. v receives the xyY there, interpolated in XYZ. A luma below or above the table gives the first
 * or last level.
 * @return the level, 0 to 1023 with a fraction. -1 with v unchanged when no level is found because luma or the top of
 * the table is NaN.
 */
float vexo_data_Y_xyY(vexo_vector *v, float data[3][1024], float luma);

/**
 * Predicts the colour of the drives r, g, b. These are table levels, 0 to 1023 with a fraction. Levels outside are
 * clamped; a NaN counts as 0. v receives xyY with absolute Y above black. When the mixture fails, v holds what
 * vexo_xyY_mix_3() leaves in it.
 * @return always 0.
 */
int vexo_get_xyY(vexo_vector *v, vexo *panel, float r, float g, float b);

/**
 * Predicts the colour as vexo_get_xyY() does, but through three LUTs. r, g, b are index positions in lut[0..2], 0 to
 * size - 1. The LUT values are drives from 0 to 1.
 */
int vexo_lut_get_xyY(vexo_vector *v, vexo *panel, vexo_lut *lut, float r, float g, float b);

/**
 * Searches the gains for a target white. ref->d[0] and ref->d[1] are its chromaticity x, y. v receives the three gains,
 * 0 to 1.
 *
 * The search looks for the drives whose mixture has the smallest distance (2 dx)^2 + dy^2 to the target. It starts at
 * full drive and goes down in whole table levels. A pass tries 33 levels of each channel. When the best of them is the
 * lowest of a channel, another pass starts there. Of equal distances the first is taken: the highest red, then green,
 * then blue.
 *
 * A target outside the gamut gives the nearest colour found. A target so far away that no tried mixture has a distance
 * below 2 gives gains of 1, and so does a NaN.
 * @return always 0.
 */
int vexo_peak_white_adjust(vexo_vector *v, vexo *panel, vexo_vector *ref);

/**
 * Multiplies three LUTs by the gains of vexo_peak_white_adjust() for ref. The size of the first record is used for all
 * three.
 * @return always 0.
 */
int vexo_lut_adjust_wb(vexo_lut *lut, vexo *panel, vexo_vector *ref);

/**
 * Multiplies three LUTs by the gains of vexo_peak_white_adjust() for ref and balances each gray level. The red and the
 * blue entry are also multiplied so that X/Y and Z/Y of the level become those of the panel's full white. Entry i
 * belongs to table level i, so the LUTs have at most 1024 entries. The entries of a level without light become 0; this
 * includes a level whose channels do not mix. The size of the first record is used for all three.
 * @return always 0.
 */
int vexo_lut_adjust_wb_2(vexo_lut *lut, vexo *panel, vexo_vector *ref);

/**
 * Converts a target XYZ in rgb to linear RGB of the primaries R, G, B and multiplies it by level / W[1]. R, G, B, W
 * (white) and D (black) are measured XYZ, three floats each. rgb must not overlap W.
 * @return 0, or -1 with rgb unchanged when the measurements give no colour space (see vexo_cs_init_XYZ()).
 */
int vexo_adjust_wb(const float *R, const float *G, const float *B, const float *W, const float *D, float level,
                   vexo_vector *rgb);

/**
 * Computes three correction LUTs without white balance. data holds the tables of a context. Entry i of lut[c] is the
 * drive at which the relative luminance of channel c is system(camera^-1(i / (size - 1))). A LUT with fewer than 2
 * entries does not change.
 * @return always 0.
 */
int vexo_generate_lcnr_invert_lut(vexo_lut *lut, float data[3][3][1024], vexo_gamma *camera, vexo_gamma *system);

/**
 * The direct recipe: computes correction LUTs from the measurements in panel->lcnr. It makes the channels follow the
 * curves, multiplies the LUTs by the gains of vexo_peak_white_adjust(), and then searches red and blue of each level
 * for the chromaticity of the target. Entries 0 to 15 become a straight line from 0.
 *
 * lut points to three LUTs of 1024 entries. They receive drives from 0 to 1. wt is the target white (x, y, 1 - x - y).
 * Afterwards the tables of the context describe the panel without LUTs.
 *
 * Not checked: a channel whose Y is 0 in every row. It still has tables. Its relative luminance is NaN, the result is
 * 0, and its LUT has no meaning.
 * @return 0 on success. -1 with lut unchanged when memory cannot be allocated or the measurements give no tables: fewer
 * than 2 rows or more than 64, levels that do not rise from 0, a value that is not finite, or a level whose X + Y + Z
 * is not above that of black. -1 and a line on standard error when a LUT does not have 1024 entries; the LUTs are then
 * filled but red and blue are not searched. -1 with the LUTs in the same state, without a line, when wt has no
 * chromaticity.
 */
int vexo_generate_lut(vexo_lut *lut, vexo *panel, vexo_gamma *camera, vexo_gamma *system, vexo_vector *wt);

/**
 * The aligned recipe: computes correction LUTs from the measurements in panel->lcnr. First it lowers measurements that
 * fall (see vexo_lcnr_normalize()) and prints a warning on standard error if there are any. Then it balances every gray
 * level (see vexo_lut_adjust_wb_2()) and makes the channels of the balanced panel follow the curves. Last it searches
 * red and blue of each level for the chromaticity of the target.
 *
 * lut and wb are as lut and wt in vexo_generate_lut(). Afterwards the tables of the context describe the panel seen
 * through the balance.
 * @return 0 on success. -1 with lut unchanged in the cases in which vexo_generate_lut() fails, a wrong LUT size
 * included, and when the balance leaves a level without light. An infinite value above finite ones is lowered like any
 * other value and is then no error.
 */
int vexo_data_alignment(vexo_lut *lut, vexo *panel, vexo_gamma *camera, vexo_gamma *system, vexo_vector *wb);

/**
 * Moves the codes of one gray point towards the chromaticity of target. lut[0..2] holds the codes of red, green and
 * blue. gray (measured) and target are XYZ, three floats each. X counts as the share of red, Y of green, Z of blue. A
 * code is multiplied by half of the correction, (m / median(m) + 1) / 2 with m = target / gray, so the median channel
 * does not change.
 *
 * Then the codes are limited. maxValue[0..2] holds the largest codes. The first channel above its limit is set to the
 * limit, and all codes are scaled by the same factor. Later channels are not checked again.
 *
 * Not checked: a component of gray that is 0 and a median of 0. The codes become what IEEE arithmetic gives: infinite,
 * NaN or 0.
 * @return always 0.
 */
int vexo_panel_gray_point_adjust(float *gray, float *target, float *lut, unsigned short *maxValue);

/**
 * Moves the codes of one gray point as vexo_panel_gray_point_adjust(), but m is the linear RGB of target in the colour
 * space of the panel. R, G, B, W (white) and D (black) are measured XYZ, three floats each.
 * @return 0 on success. -1 with lut unchanged when the measurements give no colour space (see vexo_cs_init_XYZ()) or
 * when a component of the linear RGB is not above 0.
 */
int vexo_panel_cs_gray_point_adjust(const float *R, const float *G, const float *B, const float *W, const float *D,
                                    float *target, float *lut, unsigned short *maxValue);

/**
 * Fills samples[0..num - 1] with evenly spaced codes from 0 to 2^bits - 1. They are not rounded. A single sample is 0.
 * Nothing is written when num is below 1 or bits is outside 1 to 30.
 * @return always 0.
 */
float vexo_create_samples(float *samples, int num, int bits);

/** @return the luminance of a code on a pure power law: max_luma (sample / max_sample)^gamma. */
float vexo_sample_2_luminance(float sample, float max_sample, float max_luma, float gamma);

/**
 * Prints the gray ramp of the context's tables, two lines per level: "VEXO_DUMP_GRAY Vector(ADDRESS):", then X, Y and Z
 * of the level divided by those of full white. When a component of white is 0, this component and the ones after it are
 * not divided. A gray whose channels do not mix counts as black.
 * @return always 0.
 */
int vexo_dump_gray(FILE *f, vexo *panel);

/**
 * Prints the gray ramp through three LUTs, two lines per position: "[POSITION](CCT) Vector(ADDRESS):", then xyY with
 * absolute Y. CCT is in kelvin, -1 for a colour without a temperature. A gray whose channels do not mix counts as
 * black. The size of the first record is used for all three.
 * @return always 0.
 */
int vexo_lut_dump_gray(FILE *f, vexo *panel, vexo_lut *lut);

/**
 * Prints the gamma of each position between the ends of the gray ramp through three LUTs: "[POSITION] (GAMMA)". Then it
 * prints their mean: "gamma = MEAN". A position that is not above black prints 0 and is not part of the mean. A gray
 * whose channels do not mix counts as black. With fewer than 3 entries only the mean is printed, as 0. The size of the
 * first record is used for all three.
 * @return always 0.
 */
int vexo_lut_dump_gray_gamma(FILE *f, vexo *panel, vexo_lut *lut);

/**
 * Reads an LCNR file. This is XML in which each LEVEL element holds ten numbers separated by commas: the level, then X,
 * Y, Z of red, green and blue. Every piece of text in a LEVEL element is a row, even when it is not complete. A field
 * without a number keeps its old value in the record. Rows after the 64th are dropped. Do not use the record after -1.
 * @return 0 on success. -1 with a line on standard error when the file cannot be read, when it is not XML, or when
 * memory cannot be allocated.
 */
int vexo_load_lcnr_xml(vexo_lcnr *lcnr, const char *path);

/**
 * Writes an LCNR file, numbers with six decimals. Write errors are not detected.
 * @return 0, or -1 when the file cannot be opened.
 */
int vexo_store_lcnr_xml(vexo_lcnr *lcnr, const char *path);

/**
 * Looks for a measured value that falls from one row to the next.
 * @return 0 on success. -1 at the first such value; a line on standard error then names its channel, component and row.
 */
int vexo_lcnr_sanity_check(vexo_lcnr *lcnr);

/** Prints the measurements as a table below "PREFIX LCNR(ADDRESS):". prefix may be null. */
void vexo_lcnr_dump(FILE *f, vexo_lcnr *lcnr, char *prefix);

#ifdef __cplusplus
}
#endif

#endif
