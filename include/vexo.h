/**
 * @file vexo.h
 * Panel calibration: from probe measurements of a panel to three correction LUTs, with the adjustment of single gray
 * points and dumps of the gray ramp.
 *
 * The panel is taken to be additive: each channel was measured alone, its XYZ is linear in the drive
 * between measured levels, and any drive triple shows the sum of the three, all above the black level.
 * Channels are numbered 0 red, 1 green, 2 blue; tristimulus components 0 X, 1 Y, 2 Z. Luminance is in the
 * probe's unit (normally cd/m2). Status results are 0 for success and -1 for failure.
 *
 * No operation keeps state outside the records passed in: different records may be used on different threads.
 */
#ifndef VEXO_H
#define VEXO_H

#include <stdio.h>

#include "vexo-gamma.h"
#include "vexo-matrix.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Ramp measurements of a panel (the content of an LCNR file). */
typedef struct vexo_lcnr {
  float data[3][3][64]; /**< data[c][m][i]: component m of channel c driven alone at row i, black included */
  float sample[64];     /**< drive level of row i in any unit: rising, row 0 black (level 0), the last full drive */
  int num;              /**< rows in use, 0..64 */
} vexo_lcnr;

/** The calibration context: measurements and the tables built from them. Allocated by the caller. */
typedef struct vexo {
  vexo_lcnr lcnr;         /**< the measurements, filled by the caller */
  float data[3][3][1024]; /**< data[c][m][k]: chromaticity x (m = 0), y (m = 1) and relative luminance (m = 2; 1
                               at the top) of channel c at drive k / 1023, black removed; level 0 is (0, 0, 0) */
  float maxY[3];          /**< luminance of each channel at full drive, black removed */
} vexo;

/**
 * Makes every measured column non-decreasing by lowering rows to the minimum of the rows above them.
 * @return the number of values lowered (0 when the data rise already).
 */
int vexo_lcnr_normalize(vexo_lcnr *lcnr);

/** Prints the 3x3x1024 tables, a line a level, under "PREFIX VEXO(ADDRESS) DATA:"; prefix may be null. */
void vexo_data_dump(FILE *f, float data[3][3][1024], char *prefix);

/**
 * The level (0..1023, fractional) at which one channel's relative luminance reaches luma; v receives the xyY
 * there, interpolated in XYZ. data is one channel's tables (data[c] of a context). Luminance beyond the table
 * gives its end, 0 or 1023.
 * @return the level; -1 with v untouched when luma or the table's top is NaN and no level can be told.
 */
float vexo_data_Y_xyY(vexo_vector *v, float data[3][1024], float luma);

/**
 * v = the predicted xyY (Y absolute, above black) of the drives r, g, b in table levels 0..1023, clamped to that
 * range (NaN counts as 0). When the mixture fails (see vexo_xyY_mix_3()) v holds what it left.
 * @return always 0.
 */
int vexo_get_xyY(vexo_vector *v, vexo *panel, float r, float g, float b);

/**
 * As vexo_get_xyY() through three LUTs: r, g, b are index positions (0..size - 1) in lut[0..2], whose values are
 * drives 0..1.
 */
int vexo_lut_get_xyY(vexo_vector *v, vexo *panel, vexo_lut *lut, float r, float g, float b);

/**
 * Searches, down from full drive in whole levels, the drives whose mixture comes closest to the chromaticity
 * ref->d[0], ref->d[1] (x, y). v = the three gains, 0..1.
 * @return always 0.
 */
int vexo_peak_white_adjust(vexo_vector *v, vexo *panel, vexo_vector *ref);

/**
 * Multiplies three LUTs by the gains of vexo_peak_white_adjust() for ref. The first record's size counts for all.
 * @return 0.
 */
int vexo_lut_adjust_wb(vexo_lut *lut, vexo *panel, vexo_vector *ref);

/**
 * As vexo_lut_adjust_wb(), and pulls X/Y and Z/Y of each gray level to those of full white by red and blue. Entry
 * i belongs to level i, so the LUTs have at most 1024 entries. Entries of levels that show nothing become 0.
 * @return 0.
 */
int vexo_lut_adjust_wb_2(vexo_lut *lut, vexo *panel, vexo_vector *ref);

/**
 * Turns the target XYZ in rgb into linear RGB of the primaries R, G, B, scaled by level / W[1]. R, G, B, W and
 * D (black) are measured XYZ, three floats each.
 * @return 0, or -1 with rgb unchanged when the measurements make no colour space (see vexo_cs_init_XYZ()).
 */
int vexo_adjust_wb(const float *R, const float *G, const float *B, const float *W, const float *D, float level,
                   vexo_vector *rgb);

/**
 * Fills three LUTs with the drives at which each channel of the tables data follows system(camera^-1(input)).
 * @return always 0.
 */
int vexo_generate_lcnr_invert_lut(vexo_lut *lut, float data[3][3][1024], vexo_gamma *camera, vexo_gamma *system);

/**
 * The direct recipe: correction LUTs for the measurements in panel->lcnr. The channels follow the curves, full
 * white is scaled to the target wt = (x, y, 1 - x - y), red and blue are searched level by level for its
 * chromaticity. lut is three LUTs of 1024 entries. Afterwards the context's tables describe the bare panel.
 * @return 0; -1 with lut untouched when measurements make no tables (fewer than two rows or more than 64, levels
 * that do not rise from 0, a value not finite, a level not above black) or memory is short; -1 with lut filled
 * but not tracked, and a line on standard error, when a LUT has other than 1024 entries; -1 likewise, without
 * the line, for a target without chromaticity.
 */
int vexo_generate_lut(vexo_lut *lut, vexo *panel, vexo_gamma *camera, vexo_gamma *system, vexo_vector *wt);

/**
 * The aligned recipe: first lowers measurements that do not rise (vexo_lcnr_normalize(), with a warning on standard
 * error), balances every gray level, then follows the curves on the panel as seen through the balance and searches
 * red and blue there. wb and lut as in vexo_generate_lut(). Afterwards the context's tables describe the panel
 * seen through the balance.
 * @return 0; -1 with lut untouched in the cases of vexo_generate_lut(), a wrong LUT size included, and when the
 * balance leaves a level without light. An infinite value above finite ones is lowered like any other.
 */
int vexo_data_alignment(vexo_lut *lut, vexo *panel, vexo_gamma *camera, vexo_gamma *system, vexo_vector *wb);

/**
 * Moves the codes lut[0..2] of one gray point halfway, in ratio, towards the chromaticity of target, taking X, Y and
 * Z for the shares of red, green and blue. gray (as measured) and target are XYZ, three floats each. The median
 * channel stays; then the first channel above its maxValue is brought down onto it and the others in proportion. A
 * component 0 of gray or a median factor of 0 is not caught: the codes become what IEEE arithmetic makes of it
 * (infinite, NaN or 0).
 * @return always 0.
 */
int vexo_panel_gray_point_adjust(float *gray, float *target, float *lut, unsigned short *maxValue);

/**
 * As vexo_panel_gray_point_adjust(), with the shares taken in the colour space of the panel: R, G, B, W and D (black)
 * are measured XYZ, three floats each.
 * @return 0; -1 with lut unchanged when the measurements make no colour space (see vexo_cs_init_XYZ()) or the target
 * needs a channel at or below zero.
 */
int vexo_panel_cs_gray_point_adjust(const float *R, const float *G, const float *B, const float *W, const float *D,
                                    float *target, float *lut, unsigned short *maxValue);

/**
 * Fills samples[0..num - 1] with evenly spaced codes from 0 to 2^bits - 1, not rounded; a single sample is 0. A num
 * below 1 or a depth outside 1..30 writes nothing.
 * @return always 0.
 */
float vexo_create_samples(float *samples, int num, int bits);

/** @return the luminance of a code on a pure power law: max_luma (sample / max_sample)^gamma. */
float vexo_sample_2_luminance(float sample, float max_sample, float max_luma, float gamma);

/**
 * Prints the gray ramp of a context's tables, two lines a level: "VEXO_DUMP_GRAY Vector(ADDRESS):" and the ratios
 * X, Y, Z of the level to those of full white. Where white has a component 0, the ratios from there on stay XYZ.
 * @return always 0.
 */
int vexo_dump_gray(FILE *f, vexo *panel);

/**
 * Prints the gray ramp as seen through three LUTs, two lines a position: "[POSITION](CCT) Vector(ADDRESS):", with
 * -1 for a colour without a temperature, and xyY with absolute Y. The first record's size counts for all three.
 * @return always 0.
 */
int vexo_lut_dump_gray(FILE *f, vexo *panel, vexo_lut *lut);

/**
 * Prints the gamma of each position between the ends of the gray ramp through three LUTs, "[POSITION] (GAMMA)", and
 * their mean, "gamma = MEAN". Positions not above black show 0 and stay out of the mean. The first record's size
 * counts for all three; fewer than three entries print the mean alone, as 0.
 * @return always 0.
 */
int vexo_lut_dump_gray_gamma(FILE *f, vexo *panel, vexo_lut *lut);

/**
 * Reads an LCNR file: XML in which each LEVEL element holds ten numbers, the level and X, Y, Z of red, green and
 * blue, separated by commas. Every piece of text inside a LEVEL counts as a row, complete or not; numbers that a row
 * lacks keep what the record held. Rows after the 64th are dropped.
 * @return 0; -1 with a line on standard error when the file cannot be read, is not XML, or memory is short.
 */
int vexo_load_lcnr_xml(vexo_lcnr *lcnr, const char *path);

/**
 * Writes an LCNR file, numbers with six decimals. Write errors are not detected.
 * @return 0, or -1 when the file cannot be opened.
 */
int vexo_store_lcnr_xml(vexo_lcnr *lcnr, const char *path);

/**
 * Looks for a measured value that falls from one row to the next.
 * @return 0; -1 with a line on standard error naming channel, component and row of the first.
 */
int vexo_lcnr_sanity_check(vexo_lcnr *lcnr);

/** Prints the measurements as a table under "PREFIX LCNR(ADDRESS):"; prefix may be null. */
void vexo_lcnr_dump(FILE *f, vexo_lcnr *lcnr, char *prefix);

#ifdef __cplusplus
}
#endif

#endif
