/**
 * @file vexo-gamma.h
 * Transfer curves, one-dimensional look-up tables (1D LUTs) and their text files.
 *
 * Signals, drives and relative light are normalised to 0 to 1.
 *
 * These rules hold unless a comment says otherwise:
 * - Pointers must not be null. They are not checked.
 * - Two curves may be the same object. Two tables must be different objects with different storage.
 * - Status results are 0 for success and -1 for failure.
 * - A stream belongs to the caller. It is read or written from its current position and is never closed. Readers read
 *   line by line, as fgets() does. Write errors are not detected: check ferror() and fclose().
 * - Numbers in files have a decimal point in every locale.
 */
#ifndef VEXO_GAMMA_H
#define VEXO_GAMMA_H

#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * A transfer curve with a linear segment and a power segment, as in ITU-R BT.709 and IEC 61966-2-1:
 * y = slope x for x < transition, y = (1 + offset) x^gamma - offset for x >= transition.
 * It is not checked that the two segments meet. A pure power law has slope = transition = offset = 0.
 */
typedef struct vexo_gamma {
  float slope;      /**< slope of the linear segment */
  float transition; /**< smallest input of the power segment */
  float gamma;      /**< exponent of the power segment */
  float offset;     /**< offset of the power segment */
} vexo_gamma;

/** Sets the power law y = x^g. */
void vexo_gamma_init(vexo_gamma *gamma, float g);

/**
 * Evaluates the curve. The power segment is computed in double and rounded to float once.
 * @return y at the input x. Exactly 0 for x <= 0 and exactly 1 for x >= 1.
 */
float vexo_gamma_evaluate(vexo_gamma *gamma, float x);

/**
 * Evaluates the inverse curve. The linear segment is used for y < slope transition. With a slope of 0 it is never
 * used.
 * @return x at the output y. Exactly 0 for y <= 0 and exactly 1 for y >= 1. -1 when gamma is 0 and y lies on the power
 * segment, because that segment then has no inverse.
 */
float vexo_gamma_inverse(vexo_gamma *gamma, float y);

/**
 * A 1D LUT. Entry i belongs to the normalised input i / (size - 1).
 *
 * The record owns the entries from vexo_lut_init() or a reader until vexo_lut_destroy(). A copy of the record copies
 * the pointer only. Functions for three channels take an array of three records: red, green, blue.
 */
typedef struct vexo_lut {
  int size; /**< number of entries */
  float *d; /**< the entries, on the heap */
} vexo_lut;

/**
 * Allocates size entries. Their values are undefined. Entries that lut already holds are not freed; the pointer to
 * them is lost.
 * @return 0 on success. -1 when the entries cannot be allocated or size is negative: lut->size is then size, lut->d is
 * null, and a line is printed on standard error.
 */
int vexo_lut_init(vexo_lut *lut, int size);

/** As vexo_lut_init(), and sets all entries to 0. */
int vexo_lut_init_zero(vexo_lut *lut, int size);

/** Frees the entries and sets size to 0 and d to null. d may be null before. */
void vexo_lut_destroy(vexo_lut *lut);

/** Copies lut->size floats from data into the table. */
void vexo_lut_set_data(vexo_lut *lut, float *data);

/** Sets entry i to the curve at i / (size - 1). A table with fewer than 2 entries does not change. */
void vexo_lut_by_gamma(vexo_gamma *gamma, vexo_lut *lut);

/** Sets the identity: entry i is i / (size - 1). A table with fewer than 2 entries does not change. */
void vexo_lut_by_linear_gamma(vexo_lut *lut);

/** Sets entry i to the inverse curve at i / (size - 1). A table with fewer than 2 entries does not change. */
void vexo_lut_inverse_gamma(vexo_gamma *gamma, vexo_lut *lut);

/** Calls vexo_lut_init() and sets the power law x^g; a single entry at the input 0. @return as vexo_lut_init(). */
int vexo_lut_init_with_gamma(vexo_lut *lut, int size, float g);

/**
 * Reads the table at the index position x, 0 to size - 1. This input is not normalised. Values between two entries are
 * interpolated linearly. Positions outside read the first or last entry; a NaN reads the first entry.
 * @return the value, or -1 when the table is empty.
 */
float vexo_lut_evaluate(const vexo_lut *lut, float x);

/**
 * Finds the normalised input at which a non-decreasing table reaches the value x.
 * @return the input. 0 for x <= 0. 1 for x >= 1, for an x above every entry after the first, for a NaN, and for a table
 * with fewer than 2 entries. An x below the first entry extrapolates the first segment and gives a negative input; it
 * gives -1 when the first two entries are equal.
 */
float vexo_lut_inverse(vexo_lut *lut, float x);

/**
 * Resamples src to the size of dst: entry i of dst is src at the position i (src->size - 1) / (dst->size - 1). Nothing
 * is written when dst has fewer than 2 entries or src is empty.
 * @return always 0.
 */
int vexo_lut_dup(vexo_lut *dst, const vexo_lut *src);

/**
 * Resamples src to the size of dst. The first and last entry of dst are exactly those of src. With equal sizes it calls
 * vexo_lut_dup(). Nothing is written when src or dst is empty.
 */
void vexo_convert_lut(vexo_lut *dst, vexo_lut *src);

/**
 * Chains two tables: dst(u) = src1(src0(u)). A value of src0 outside 0 to 1 reads the first or last entry of src1; a
 * NaN reads the first entry. src0 and src1 may be the same table. Nothing is written when a table has fewer than 2
 * entries.
 */
void vexo_lut_merge(vexo_lut *src0, vexo_lut *src1, vexo_lut *dst);

/**
 * Fills the float array lut between num knots. Knot k sets lut[nx[k]] = ny[k]. Neighbouring knots are connected with
 * straight lines. A pair of knots with nx[k] >= nx[k + 1] writes nothing. Entries before the first and after the last
 * knot do not change. Nothing is written when num is below 1. lut and ny must not overlap. Indexes are not checked.
 */
void vexo_interpolate_linear(int num, int *nx, float *ny, float *lut);

/**
 * Makes data strictly increasing. The first and the last value do not change. A value is bad when it is not above the
 * good value before it or not below the last value. Bad values are replaced by the straight line between the good
 * values around them. Values on a line can be equal when its ends are too close for single precision.
 * @return 0, or -1 with data unchanged unless the last value is above the first.
 */
int vexo_data_normalize(float *data, int size);

/** Calls vexo_data_normalize() and rescales data to exactly 0 to 1. @return as vexo_data_normalize(). */
int vexo_lut_data_normalize(float *data, int size);

/**
 * Prints the table as decimal numbers below the heading "PREFIX LUT(SIZE):". prefix may be null. A single entry is
 * printed at the input 0.
 * @return always 0.
 */
int vexo_lut_dump(FILE *f, vexo_lut *lut, char *prefix);

/**
 * Converts the table to codes of nbits bits, 1 to 30. A code is the value times 2^nbits - 1, rounded to nearest, halves
 * away from zero. Negative values and NaN give 0. The low 16 bits of a code go to data[0..size - 1].
 * @return 0, or -1 with nothing written for another depth.
 */
int vexo_lut_to_uint(vexo_lut *lut, unsigned short *data, int nbits);

/**
 * Writes one channel as codes of nbits bits, 1 to 30. The header lines are "TITLE: title", "LUT_1D_SIZE" and
 * "LUT_1D_BITS". title may be null; the title line is then left out. Codes are rounded to nearest, halves away from
 * zero. They are limited to the range of int and not to the depth: values outside 0 to 1 give codes outside the depth.
 * A NaN gives 0. Nothing is written for another depth.
 */
void vexo_lut_dump_int(FILE *f, vexo_lut *lut, int nbits, char *title);

/**
 * Prints three channels as codes of nbits bits, see vexo_lut_dump_int(). The heading is "PREFIX LUT(SIZE x NBITS):".
 * prefix may be null. The size of the first record is used for all three.
 */
void vexo_lut_dump_int3(FILE *f, vexo_lut *lut, int nbits, char *prefix);

/**
 * Writes the three-channel integer file: "LUT_1D_SIZE", "LUT_1D_BITS", then one line of three codes per entry. Codes
 * are as in vexo_lut_dump_int(). The size of the first record is used for all three.
 * @return 0, or -1 with nothing written for a depth outside 1 to 30.
 */
int vexo_luts_store_int(FILE *f, vexo_lut *lut, int nbits);

/**
 * Reads the three-channel integer file into three records. The records must hold no entries before the call. The caller
 * destroys all three records, whatever the result is. A file without header lines has 1024 entries of 16 bits. A line
 * that does not begin with three codes leaves its entry 0.
 *
 * The reader reads one line beyond the last entry. A read error in that line does not change the result: check
 * ferror().
 * @return 0 on success. -1 for an empty file, a file without its data, a depth outside 1 to 30, or failed allocation:
 * the records are then unchanged or as vexo_lut_init() leaves them. -1 for a file with too few lines.
 */
int vexo_luts_load_int(FILE *f, vexo_lut *lut);

/**
 * Reads the three-channel decimal file. It works as vexo_luts_load_int() with three differences. The numbers are codes
 * that may have a fraction. The default depth is 8. The number after "LUT_1D_SIZE" is the base-2 logarithm of the entry
 * count, 0 to 30; any other number gives -1. A file without that line has 1024 entries.
 */
int vexo_luts_load_file(FILE *f, vexo_lut *lut);

/**
 * Reads a file with one column: one number per line. Lines that do not begin with a number are skipped. Reading stops
 * after 1024 numbers. The numbers become a strictly increasing table from 0 to 1, see vexo_lut_data_normalize(). lut
 * must hold no entries before the call. The caller destroys it, whatever the result is. A read error is treated as the
 * end of the file: check ferror().
 * @return 0, or -1 when there is no number, when the last number is not above the first, or when allocation fails.
 */
int vexo_lut_load_custom(FILE *f, vexo_lut *lut);

/**
 * Computes the correction table of a panel. panel is the response of the panel: relative light per drive. Entry i of
 * lut is the drive that gives the light system(camera^-1(i / (size - 1))), found by vexo_lut_inverse(). lut and panel
 * must be two different tables. Nothing is written when one of them has fewer than 2 entries.
 */
void vexo_gamma_lut_invert(vexo_lut *lut, vexo_gamma *camera, vexo_gamma *system, vexo_lut *panel);

/**
 * Computes the same correction by forward mapping. Each drive of panel belongs to the code camera(system^-1(light)) and
 * so to one entry of lut. Codes beyond the last entry belong to the last entry. A drive with a lower code than the
 * drive before it belongs to the same entry as that one. The value of an entry is the mean of its drives. Straight
 * lines connect these entries. Entries after the last of them do not change. Entry 0 is 0 when the lowest drive belongs
 * to a later entry.
 * @return 0, or -1 with lut unchanged when working memory cannot be allocated or a table has fewer than 2 entries.
 */
int vexo_gamma_lut_invert_2(vexo_lut *lut, vexo_gamma *camera, vexo_gamma *system, vexo_lut *panel);

/**
 * Converts from one curve to another: entry i is out^-1(in(i / (size - 1))). A signal coded for the curve in becomes
 * the signal that gives the same light through the curve out. A table with fewer than 2 entries does not change.
 */
void vexo_gamma_generate_lut(vexo_gamma *in, vexo_gamma *out, vexo_lut *lut);

#ifdef __cplusplus
}
#endif

#endif
