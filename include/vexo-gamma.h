/**
 * @file vexo-gamma.h
 * Transfer curves, one-dimensional look-up tables (LUTs) and their text files.
 *
 * Signals, drives and relative light are normalised to 0..1. Status results are 0 for success and -1 for
 * failure. Numbers in files are read and written with a decimal point, whatever locale the application set.
 */
#ifndef VEXO_GAMMA_H
#define VEXO_GAMMA_H

#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * A transfer curve: a straight toe joined to an offset power law, as BT.709 or IEC 61966-2-1 give theirs:
 * y = slope x below transition, y = (1 + offset) x^gamma - offset from there on.
 * Nothing checks that the two segments meet. A pure power law has slope = transition = offset = 0.
 */
typedef struct vexo_gamma {
  float slope;      /**< slope of the toe */
  float transition; /**< input at and above which the power segment applies */
  float gamma;      /**< exponent of the power segment */
  float offset;     /**< offset of the power segment */
} vexo_gamma;

/** Sets the power law y = x^g. */
void vexo_gamma_init(vexo_gamma *gamma, float g);

/**
 * @return the curve at x, exactly 0 for x <= 0 and 1 for x >= 1. The power segment is computed in double and
 * rounded once. A toe of slope 0 is 0.
 */
float vexo_gamma_evaluate(vexo_gamma *gamma, float x);

/**
 * @return the x at which the curve reaches y, exactly 0 for y <= 0 and 1 for y >= 1. A toe of slope 0 is never
 * entered. A curve of exponent 0 has no inverse: -1 wherever its power segment would be needed.
 */
float vexo_gamma_inverse(vexo_gamma *gamma, float y);

/**
 * A one-dimensional LUT: entry i stands for the normalised input i / (size - 1).
 * The record owns d from vexo_lut_init() (or a reader) to vexo_lut_destroy(); copying the record copies the
 * pointer only. Operations on the three channels take an array of three records, red, green, blue.
 */
typedef struct vexo_lut {
  int size; /**< number of entries */
  float *d; /**< the entries, on the heap */
} vexo_lut;

/**
 * Allocates size entries with undefined contents. Storage that lut already holds is lost, not freed.
 * @return 0; -1 with a line on standard error, size set and d null, when the entries cannot be allocated
 * (a negative size never can).
 */
int vexo_lut_init(vexo_lut *lut, int size);

/** As vexo_lut_init(), with every entry 0. */
int vexo_lut_init_zero(vexo_lut *lut, int size);

/** Frees the entries and empties the record (size 0, d null). A record without storage may be destroyed. */
void vexo_lut_destroy(vexo_lut *lut);

/** Copies lut->size floats from data into the table. */
void vexo_lut_set_data(vexo_lut *lut, float *data);

/** Entry i = the curve at i / (size - 1). A table of fewer than two entries stays as it is. */
void vexo_lut_by_gamma(vexo_gamma *gamma, vexo_lut *lut);

/** Entry i = i / (size - 1), the identity. A table of fewer than two entries stays as it is. */
void vexo_lut_by_linear_gamma(vexo_lut *lut);

/** Entry i = the inverse curve at i / (size - 1). A table of fewer than two entries stays as it is. */
void vexo_lut_inverse_gamma(vexo_gamma *gamma, vexo_lut *lut);

/** vexo_lut_init(), then the power law x^g. @return as vexo_lut_init(). */
int vexo_lut_init_with_gamma(vexo_lut *lut, int size, float g);

/**
 * @return the table at index position x (0..size - 1, not normalised), linear between entries, clamped at
 * both ends; a NaN reads the first entry. An empty table gives -1.
 */
float vexo_lut_evaluate(const vexo_lut *lut, float x);

/**
 * @return the normalised input at which a non-decreasing table reaches x: 0 for x <= 0; 1 for x >= 1, for an x
 * above every entry after the first, for a NaN, and for a table of fewer than two entries. Below the first entry
 * the first segment is extended, so the result is negative there; -1 when that segment is flat.
 */
float vexo_lut_inverse(vexo_lut *lut, float x);

/**
 * Resamples src to dst's size, entry i at position i (src->size - 1) / (dst->size - 1).
 * With dst below two entries or src empty nothing is written. @return always 0.
 */
int vexo_lut_dup(vexo_lut *dst, const vexo_lut *src);

/**
 * Resamples src to dst's size with both end entries kept exactly; equal sizes go through vexo_lut_dup().
 * With an empty table on either side nothing is written.
 */
void vexo_convert_lut(vexo_lut *dst, vexo_lut *src);

/**
 * dst = src1 after src0: dst(u) = src1(src0(u)). Values of src0 outside 0..1 read the nearest end of src1, a NaN
 * its first entry. When any of the three tables has fewer than two entries nothing is written.
 */
void vexo_lut_merge(vexo_lut *src0, vexo_lut *src1, vexo_lut *dst);

/**
 * Fills the float array lut between num knots: lut[nx[k]] = ny[k], straight lines between neighbouring knots.
 * Pairs with falling or equal nx write nothing, and nothing outside the knots' span is written; num below 1
 * writes nothing at all.
 */
void vexo_interpolate_linear(int num, int *nx, float *ny, float *lut);

/**
 * Makes data strictly increasing without touching its ends: entries that dip, repeat or overshoot the last
 * are replaced by the straight line between the good entries around them. Entries of a line whose ends are too
 * near for single precision come out equal.
 * @return 0, or -1 with the data unchanged unless the last entry is above the first.
 */
int vexo_data_normalize(float *data, int size);

/** vexo_data_normalize(), then rescaled to exactly 0..1. @return as vexo_data_normalize(). */
int vexo_lut_data_normalize(float *data, int size);

/**
 * Prints the table as decimal numbers under the heading "PREFIX LUT(SIZE):"; prefix may be null.
 * @return 0, or -1 with nothing printed for a table of one entry, which has no normalised input.
 */
int vexo_lut_dump(FILE *f, vexo_lut *lut, char *prefix);

/**
 * Codes of nbits (1..30): value times 2^nbits - 1, rounded to nearest, halves away from zero, negative values to 0; the
 * low 16 bits go to data[0..size - 1]. A NaN gives 0.
 * @return 0, or -1 with nothing written for another depth.
 */
int vexo_lut_to_uint(vexo_lut *lut, unsigned short *data, int nbits);

/**
 * Writes one channel as codes of nbits (1..30; nothing is written for another depth), under "TITLE: title"
 * (unless title is null), "LUT_1D_SIZE" and "LUT_1D_BITS". Codes are rounded to nearest, halves away from zero,
 * and not clamped: values outside 0..1 give codes outside the depth, limited only by int; a NaN gives 0.
 */
void vexo_lut_dump_int(FILE *f, vexo_lut *lut, int nbits, char *title);

/**
 * Prints three channels as codes of nbits (see vexo_lut_dump_int()) under the heading
 * "PREFIX LUT(SIZE x NBITS):"; prefix may be null. The first record's size counts for all three.
 */
void vexo_lut_dump_int3(FILE *f, vexo_lut *lut, int nbits, char *prefix);

/**
 * Writes the three-channel integer file: "LUT_1D_SIZE", "LUT_1D_BITS", then a line of three codes an entry (see
 * vexo_lut_dump_int()). The first record's size counts for all three. Write errors are the caller's to check.
 * @return 0, or -1 with nothing written for a depth outside 1..30.
 */
int vexo_luts_store_int(FILE *f, vexo_lut *lut, int nbits);

/**
 * Reads the three-channel integer file into three records that hold no storage; without its header lines 1024
 * entries of 16 bits are read. A line that is not three codes leaves its entry 0. The caller destroys all three
 * records, whatever the result.
 * @return 0; -1 for an empty file, a file without its data, a depth outside 1..30 or failed allocation (all with
 * the records as they were or as vexo_lut_init() leaves them), and for a file with too few lines.
 */
int vexo_luts_load_int(FILE *f, vexo_lut *lut);

/**
 * Reads the three-channel decimal file, as vexo_luts_load_int() with these differences: numbers are codes
 * that may have fractions, the default depth is 8, and the number after "LUT_1D_SIZE" is the base-2 logarithm of
 * the entry count (0..30, another gives -1). Without that line there are 1024 entries.
 */
int vexo_luts_load_file(FILE *f, vexo_lut *lut);

/**
 * Reads the first 1024 numbers of a one-column file, one a line, lines without a number skipped, and brings them
 * to a strictly increasing table from 0 to 1 (vexo_lut_data_normalize()). lut must hold no storage; the caller
 * destroys it, whatever the result.
 * @return 0, or -1 when there is no number, the last is not above the first, or allocation fails.
 */
int vexo_lut_load_custom(FILE *f, vexo_lut *lut);

/**
 * The correction table of a panel: entry i = the drive at which the response table panel gives the light
 * system(camera^-1(i / (size - 1))), by vexo_lut_inverse(). Nothing is written when lut or panel has fewer
 * than two entries.
 */
void vexo_gamma_lut_invert(vexo_lut *lut, vexo_gamma *camera, vexo_gamma *system, vexo_lut *panel);

/**
 * The same correction by forward mapping: each drive of panel is placed at the code camera(system^-1(light)) that
 * it serves (codes beyond the last entry count as the last), drives on one code are averaged, straight lines
 * join the codes reached. Entries after the last code reached are not written; where the lowest drive already
 * maps above code 0, entry 0 is 0.
 * @return 0, or -1 with lut untouched when the work arrays cannot be allocated or a table has fewer than two entries.
 */
int vexo_gamma_lut_invert_2(vexo_lut *lut, vexo_gamma *camera, vexo_gamma *system, vexo_lut *panel);

/**
 * Entry i = out^-1(in(i / (size - 1))): a signal coded for the curve in becomes what the curve out needs for the same
 * light. A table of fewer than two entries stays as it is.
 */
void vexo_gamma_generate_lut(vexo_gamma *in, vexo_gamma *out, vexo_lut *lut);

#ifdef __cplusplus
}
#endif

#endif
