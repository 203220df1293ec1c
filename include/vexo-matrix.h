/**
 * @file vexo-matrix.h
 * The 3-vector and the 3x3 matrix. All colour arithmetic of the library uses them.
 *
 * Both records are plain values of the caller. Copy them by assignment. They own no memory.
 *
 * Arithmetic is IEEE 754 single precision. A sum of three terms is (a + b) + c.
 *
 * These rules hold unless a comment says otherwise:
 * - Pointers must not be null. Row and column indexes must be 0, 1 or 2. Neither is checked.
 * - Arguments may be the same object.
 * - Status results are 0 for success and -1 for failure.
 * - Nothing is printed on standard error.
 */
#ifndef VEXO_MATRIX_H
#define VEXO_MATRIX_H

#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * A colour triple: XYZ, xyz, xyY, u'v'Y, L*a*b*, RGB, YCbCr and others. The record does not store which of these it
 * holds. The last call that wrote it decides.
 */
typedef struct vexo_vector {
  float d[3]; /**< the components */
} vexo_vector;

/** A 3x3 matrix d[row][column]. It multiplies column vectors: component i of M v is the sum of d[i][j] v[j] over j. */
typedef struct vexo_matrix {
  float d[3][3]; /**< the elements, row by row */
} vexo_matrix;

/** Sets all three components to 0. */
void vexo_vector_init(vexo_vector *v);

/** Sets m to the identity matrix. */
void vexo_matrix_init(vexo_matrix *m);

/** Copies src to dst. */
void vexo_matrix_copy(vexo_matrix *dst, vexo_matrix *src);

/** Copies src to dst. */
void vexo_vector_copy(vexo_vector *dst, vexo_vector *src);

/**
 * Computes m = m n. The product applied to a vector applies n first, then the old m. Each element is the sum
 * (m[i][0] n[0][j] + m[i][1] n[1][j]) + m[i][2] n[2][j].
 */
void vexo_matrix_multiply(vexo_matrix *m, const vexo_matrix *n);

/** Computes v = m v. Each component is the sum (m[i][0] v[0] + m[i][1] v[1]) + m[i][2] v[2]. */
void vexo_matrix_transform(vexo_matrix *m, vexo_vector *v);

/** Copies v into column c of m. */
void vexo_matrix_set_column(vexo_matrix *m, vexo_vector *v, int c);

/** Copies v into row r of m. */
void vexo_matrix_set_row(vexo_matrix *m, vexo_vector *v, int r);

/** Copies row r of m into v. */
void vexo_matrix_get_row(vexo_matrix *m, vexo_vector *v, int r);

/** Sets v to the chromaticity (x, y, z) of the pair xy[0], xy[1]. z is (1 - x) - y. */
void vexo_vector_set_xy(vexo_vector *v, const float *xy);

/** Copies the three floats at xyz into v. */
void vexo_vector_set_xyz(vexo_vector *v, const float *xyz);

/** Computes v = v + u, component by component. */
void vexo_vector_add(vexo_vector *v, vexo_vector *u);

/** Computes v = v - u, component by component. */
void vexo_vector_sub(vexo_vector *v, vexo_vector *u);

/**
 * Computes v = v / u, component by component, from the first to the last.
 * @return 0, or -1 when a component of u is 0. The division stops there. The components of v before it are already
 * divided, the others are unchanged.
 */
int vexo_vector_div(vexo_vector *v, vexo_vector *u);

/** Multiplies all components of v by s. */
void vexo_vector_scale(vexo_vector *v, float s);

/**
 * Mode 1 divides all elements of m by the largest row sum. When no row sum is above 0, m does not change. Other modes
 * do nothing.
 */
void vexo_matrix_normalize(vexo_matrix *m, int mode);

/**
 * Divides v by one of its own components. Mode 1 divides by the largest component; the comparison is signed. Mode 2
 * divides by the second component and sets that component to exactly 1, as for an XYZ with Y = 1. Other modes do
 * nothing. When the divisor is 0, v does not change.
 */
void vexo_vector_normalize(vexo_vector *v, int mode);

/**
 * Computes n = the inverse of m, as the adjugate divided by the determinant. n and m must be different objects.
 * @return 0, or -1 when m is singular: the determinant is 0 or its magnitude is below 1e-15. n does not change then.
 */
int vexo_matrix_invert(vexo_matrix *n, const vexo_matrix *m);

/** Prints m below the heading "PREFIX Matrix(ADDRESS):". prefix may be null. */
void vexo_matrix_dump(FILE *f, vexo_matrix *m, char *prefix);

/** Prints v as one line in brackets, below the heading "PREFIX Vector(ADDRESS):". No heading when prefix is null. */
void vexo_vector_dump(FILE *f, vexo_vector *v, const char *prefix);

/**
 * Writes m as 36 bytes: nine IEEE 754 single-precision numbers, row by row, in the byte order of the host.
 * @return 0, or -1 when the stream did not take all bytes.
 */
int vexo_matrix_store(FILE *f, vexo_matrix *m);

/**
 * Reads the 36 bytes that vexo_matrix_store() writes.
 * @return 0, or -1 when the stream had fewer bytes. m may then be partly overwritten.
 */
int vexo_matrix_load(FILE *f, vexo_matrix *m);

/**
 * Writes v as 12 bytes: three IEEE 754 single-precision numbers in the byte order of the host.
 * @return 0, or -1 when the stream did not take all bytes.
 */
int vexo_vector_store(FILE *f, vexo_vector *v);

/**
 * Reads the 12 bytes that vexo_vector_store() writes.
 * @return 0, or -1 when the stream had fewer bytes. v may then be partly overwritten.
 */
int vexo_vector_load(FILE *f, vexo_vector *v);

/** @return the sum (v[0] + v[1]) + v[2]. */
float vexo_vector_sum(vexo_vector *v);

/** @return the median of the three components. */
float vexo_vector_get_middle(vexo_vector *v);

#ifdef __cplusplus
}
#endif

#endif
