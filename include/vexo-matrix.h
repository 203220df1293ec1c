/**
 * @file vexo-matrix.h
 * The 3-vector and the 3x3 matrix on which all colour arithmetic of the library runs.
 *
 * Both records are plain values that the caller owns; copy them by assignment. Arithmetic is IEEE-754
 * single precision, in the order that each operation states. No operation checks an index or a pointer.
 * Unless a comment says otherwise, arguments may be the same object.
 */
#ifndef VEXO_MATRIX_H
#define VEXO_MATRIX_H

#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif

/** A colour triple (XYZ, xyz, xyY, u'v'Y, RGB, YCbCr ...); its meaning is set by whoever filled it last. */
typedef struct vexo_vector {
  float d[3]; /**< the components */
} vexo_vector;

/** A 3x3 matrix, d[row][column], applied to column vectors: component i of M v is the sum of d[i][j] v[j]. */
typedef struct vexo_matrix {
  float d[3][3]; /**< the elements, row by row */
} vexo_matrix;

/** Sets all three components to 0. */
void vexo_vector_init(vexo_vector *v);

/** Sets m to the identity. */
void vexo_matrix_init(vexo_matrix *m);

/** dst = src. */
void vexo_matrix_copy(vexo_matrix *dst, vexo_matrix *src);

/** dst = src. */
void vexo_vector_copy(vexo_vector *dst, vexo_vector *src);

/** m = m n: the product applies n first. Each element is (a + b) + c over the columns of m, left to right. */
void vexo_matrix_multiply(vexo_matrix *m, const vexo_matrix *n);

/** v = m v, each component summed as (a + b) + c. */
void vexo_matrix_transform(vexo_matrix *m, vexo_vector *v);

/** Column c (0..2) of m = v. */
void vexo_matrix_set_column(vexo_matrix *m, vexo_vector *v, int c);

/** Row r (0..2) of m = v. */
void vexo_matrix_set_row(vexo_matrix *m, vexo_vector *v, int r);

/** v = row r (0..2) of m. */
void vexo_matrix_get_row(vexo_matrix *m, vexo_vector *v, int r);

/** Completes a chromaticity pair: v = (x, y, (1 - x) - y). */
void vexo_vector_set_xy(vexo_vector *v, const float *xy);

/** v = the three floats at xyz. */
void vexo_vector_set_xyz(vexo_vector *v, const float *xyz);

/** v = v + u, component by component. */
void vexo_vector_add(vexo_vector *v, vexo_vector *u);

/** v = v - u, component by component. */
void vexo_vector_sub(vexo_vector *v, vexo_vector *u);

/**
 * v = v / u, component by component, first to last.
 * @return 0, or -1 at the first component of u that is 0: the components before it are divided already.
 */
int vexo_vector_div(vexo_vector *v, vexo_vector *u);

/** v = s v. */
void vexo_vector_scale(vexo_vector *v, float s);

/**
 * Mode 1 divides the matrix by its largest row sum; any other mode does nothing.
 * A matrix of which no row sum is above 0 stays as it is.
 */
void vexo_matrix_normalize(vexo_matrix *m, int mode);

/**
 * Mode 1 divides v by its largest component (signed), mode 2 by its second component, which becomes
 * exactly 1 (an XYZ with Y = 1); any other mode does nothing. A divisor of 0 leaves v as it is.
 */
void vexo_vector_normalize(vexo_vector *v, int mode);

/**
 * n = the inverse of m, by the adjugate. n and m must be different objects.
 * @return 0, or -1 for a singular matrix (determinant 0 or below 1e-15 in magnitude); n is then untouched.
 */
int vexo_matrix_invert(vexo_matrix *n, const vexo_matrix *m);

/** Prints m under the heading "PREFIX Matrix(ADDRESS):"; prefix may be null. */
void vexo_matrix_dump(FILE *f, vexo_matrix *m, char *prefix);

/** Prints v in one bracketed line, led by a heading "PREFIX Vector(ADDRESS):" unless prefix is null. */
void vexo_vector_dump(FILE *f, vexo_vector *v, const char *prefix);

/**
 * Writes the 36-byte image of m: nine IEEE-754 singles, row by row, in host byte order.
 * @return 0, or -1 when the stream did not take the whole image.
 */
int vexo_matrix_store(FILE *f, vexo_matrix *m);

/**
 * Reads the 36-byte image that vexo_matrix_store() writes.
 * @return 0, or -1 when the stream did not hold a whole image; m may then be partly overwritten.
 */
int vexo_matrix_load(FILE *f, vexo_matrix *m);

/**
 * Writes the 12-byte image of v: three IEEE-754 singles in host byte order.
 * @return 0, or -1 when the stream did not take the whole image.
 */
int vexo_vector_store(FILE *f, vexo_vector *v);

/**
 * Reads the 12-byte image that vexo_vector_store() writes.
 * @return 0, or -1 when the stream did not hold a whole image; v may then be partly overwritten.
 */
int vexo_vector_load(FILE *f, vexo_vector *v);

/** @return (v[0] + v[1]) + v[2]. */
float vexo_vector_sum(vexo_vector *v);

/** @return the median of the three components. */
float vexo_vector_get_middle(vexo_vector *v);

#ifdef __cplusplus
}
#endif

#endif
