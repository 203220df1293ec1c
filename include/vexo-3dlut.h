/**
 * @file vexo-3dlut.h
 * Three-dimensional look-up tables (3D LUTs): the table, its resampling, and its exchange and hardware formats.
 *
 * A 3D LUT stores one output triple (red, green, blue) for every node of a regular grid of input colours. The blue,
 * green and red axis have the same number of nodes, the size. Node i of an axis belongs to the normalised input
 * i / (size - 1). Indexes are given as (bi, gi, ri). The red index varies fastest and the blue index slowest, in memory
 * and in files. Values are normalised to 0 to 1 by convention. The library does not limit them.
 *
 * These rules hold unless a comment says otherwise:
 * - vexo_3dlut_create(), vexo_3dlut_dup() and the readers make a LUT. The caller owns it and releases it with
 *   vexo_3dlut_destroy().
 * - Pointers must not be null. They are not checked.
 * - Status results are 0 for success and -1 for failure.
 * - Different threads may use different LUTs.
 * - A stream belongs to the caller. It is read or written from its current position and is never closed. A reader reads
 *   nothing after its last entry.
 * - Writers do not check the stream: check ferror() and fclose(). They return counts; a count above INT_MAX is returned
 *   as INT_MAX.
 * - Numbers in text files have a decimal point in every locale.
 */
#ifndef VEXO_3DLUT_H
#define VEXO_3DLUT_H

#include <stdint.h>
#include <stdio.h>

#include "vexo-matrix.h"

#ifdef __cplusplus
extern "C" {
#endif

/** A 3D LUT. Its layout is private to the library. */
typedef struct vexo_3dlut vexo_3dlut;

/**
 * Makes a LUT of size^3 entries, all (0, 0, 0), with a copy of title. title may be null. When the title cannot be
 * copied, the LUT has no title.
 * @return the LUT. Null when size is below 1 or the entries cannot be allocated.
 */
vexo_3dlut *vexo_3dlut_create(int size, const char *title);

/** Releases the LUT, its title and its entries. */
void vexo_3dlut_destroy(vexo_3dlut *lut);

/** Sets the identity: entry (bi, gi, ri) is (ri, gi, bi) / (size - 1). With size 1 it sets 0. @return always 0. */
int vexo_3dlut_init_unit(vexo_3dlut *lut);

/** @return a pointer to entry (bi, gi, ri), valid as long as the LUT. Null when an index is outside 0 to size - 1. */
vexo_vector *vexo_3dlut_item(vexo_3dlut *lut, int bi, int gi, int ri);

/** Copies v to entry (bi, gi, ri). @return 0, or -1 with nothing written when an index is outside 0 to size - 1. */
int vexo_3dlut_set_item(vexo_3dlut *lut, vexo_vector *v, int bi, int gi, int ri);

/** @return the size, the number of nodes per axis. */
int vexo_3dlut_size(vexo_3dlut *lut);

/**
 * @return the title, which belongs to the LUT. It is valid until the next vexo_3dlut_set_title() or
 * vexo_3dlut_destroy(). Null when the LUT has no title.
 */
char *vexo_3dlut_title(vexo_3dlut *lut);

/**
 * Replaces the title by a copy of title. title may be null (no title) or the LUT's own title. A title for a cube file
 * must not hold a double quote or a line feed. The writer does not check this. A reader ends the title there and reads
 * a new line after the line feed.
 * @return 0, or -1 when the title cannot be copied. The LUT then has no title.
 */
int vexo_3dlut_set_title(vexo_3dlut *lut, const char *title);

/**
 * Makes a copy of src with size nodes per axis, resampled by trilinear interpolation. A size of 0 means the size of
 * src; the copy is then exact. A size of 1 takes the first entry. title is copied; null means the title of src.
 *
 * On each axis target node i lies at the single-precision position i / s of the source, with the scale
 * s = (size - 1) / (source size - 1). Each component is interpolated along red, then green, then blue, with
 * linear_inter(). An axis at the last source node is not interpolated.
 *
 * The call allocates intermediate tables of 12 bytes per entry. For a target size T and a source size S they have up to
 * T S S and T T S entries.
 * @return the copy. Null when memory cannot be allocated or size is negative.
 */
vexo_3dlut *vexo_3dlut_dup(vexo_3dlut *src, int size, const char *title);

/**
 * Reads a cube file. The header has lines with the keywords TITLE and LUT_3D_SIZE. After the size line, each line of
 * three numbers is an entry: red, green, blue. Header lines that begin with '#' are comments. All other lines are
 * skipped. A line longer than 255 characters counts as several lines. A NUL ends the line it stands in. The title is
 * "cube" when no title line stands before the size line.
 * @return the LUT. Null when there is no size line, when its size is below 1 or too large, when there are too few
 * entries, or when memory cannot be allocated.
 */
vexo_3dlut *vexo_3dlut_load_cube(FILE *f);

/**
 * Reads a cube file by its path, as vexo_3dlut_load_cube().
 * @return the LUT. Null with a line on standard error when the file cannot be opened. Else as vexo_3dlut_load_cube().
 */
vexo_3dlut *vexo_3dlut_cube_load_file(const char *path);

/**
 * Reads a cube file from memory. buf is text that ends with a NUL. It is changed: line feeds that were read become
 * NULs. An entry line that begins at or after buf + len ends the data. Header lines are read up to the NUL.
 *
 * Differences from vexo_3dlut_load_cube(): lines may have any length. A title is cut to 255 characters. '#' has no
 * meaning. A line with TITLE is never the size line.
 * @return as vexo_3dlut_load_cube().
 */
vexo_3dlut *vexo_3dlut_cube_load_buf(char *buf, int len);

/**
 * Writes a cube file, numbers with eight decimals. A missing title is written as "". The title must not hold a double
 * quote or a line feed, see vexo_3dlut_set_title().
 * @return the number of characters written.
 */
int vexo_3dlut_dump_cube(vexo_3dlut *lut, FILE *f);

/**
 * Writes the cfe form of the cube file. It has author, model and version instead of the title. model may be null and is
 * then "KX600". version may be null and is then "2.0.0".
 * @return the number of characters written in entry lines.
 */
int vexo_3dlut_dump_cfe(vexo_3dlut *lut, FILE *f, const char *model, const char *version);

/**
 * The 128-byte header of a packed file, byte by byte as in the file. Integers are little-endian on every host. Texts
 * are padded with NULs; a text that fills its field has no NUL. Fields marked "not used" are written as zero and are
 * not read. One word per entry follows the header, most significant byte first.
 */
typedef struct vexo_dat_3dlut_header {
  uint32_t magic;       /**< 0x42340299 */
  uint32_t ver;         /**< 0x02000000: 32-bit words; 0x03000000: 64-bit words; 0x01000003: old lattice */
  char model[16];       /**< the first 16 characters of the title */
  char version[16];     /**< not used */
  uint32_t data_cs;     /**< not used */
  uint32_t length;      /**< not used */
  char description[16]; /**< not used */
  uint32_t nbits;       /**< bits per component */
  char name[16];        /**< not used */
  char reserved[42];    /**< not used */
  uint8_t size;         /**< nodes per axis, low 8 bits; one less in the old lattice */
  uint8_t header_cs;    /**< not used */
} vexo_dat_3dlut_header;

/**
 * Reads a packed file of 32-bit words. A word has three fields of nbits bits, red lowest. Code k is the value
 * k / (2^nbits - 1). The title is the model of the header.
 * @return the LUT. Null for a short file, a version below 0x02000000 or equal to 0x03000000, and nbits outside 1 to 10.
 * Null with a line on standard error for a wrong magic number, and when the LUT cannot be allocated or has size 0.
 */
vexo_3dlut *vexo_3dlut_load_dat(FILE *f);

/** Reads a packed file by its path, as vexo_3dlut_load_dat(). @return also null when the file cannot be opened. */
vexo_3dlut *vexo_3dlut_dat_load_file(const char *path);

/**
 * Reads a packed file from len bytes in memory, as vexo_3dlut_load_dat() but without messages. The version is not
 * checked, so it also reads the old lattice: as a LUT with one node less per axis, whose codes are taken as
 * k / (2^nbits - 1).
 * @return the LUT, or null as vexo_3dlut_load_dat().
 */
vexo_3dlut *vexo_3dlut_dat_load_buf(uint8_t *buf, int len);

/**
 * Writes a packed file of 32-bit words with nbits bits per component, 1 to 10. Codes are rounded to nearest, halves
 * away from zero, and limited to 0 and 2^nbits - 1. A NaN gives 0. The header has only the low 8 bits of the size: a
 * LUT with more than 255 nodes per axis cannot be read back.
 * @return the number of items written: 1 for the header and 1 per entry. -1 with nothing written for another nbits.
 */
int vexo_3dlut_dump_dat(vexo_3dlut *lut, FILE *f, int nbits);

/**
 * Writes the packed variant of 64-bit words with 16 bits per component. Size must be 33 and nbits 12. Codes are as in
 * vexo_3dlut_dump_dat(). No reader of the library reads this variant.
 * @return the number of items written. -1 with nothing written for another size or nbits.
 */
int vexo_3dlut_dump_dat_12bit(vexo_3dlut *lut, FILE *f, int nbits);

/**
 * Writes the old lattice. It leaves out the last plane of every axis: with N = size - 1 it has N^3 words. A code is the
 * value times 2^nbits, limited to 0 and 2^nbits - 2^(nbits - k) with k = floor(log2 N). A NaN gives 0. The scale and
 * the limit are printed on standard error. Only vexo_3dlut_dat_load_buf() reads this variant. A LUT of size 1 has no
 * words and k = 0: only the header is written, and nothing reads it.
 * @return the number of items written. -1 with nothing written or printed for nbits outside 1 to 10 or below k.
 */
int vexo_3dlut_dump_old_dat(vexo_3dlut *lut, FILE *f, int nbits);

/**
 * Reads an eeColor file. A line of six numbers is an entry: the last three are red, green and blue. Other lines are
 * skipped. Long lines are split as in vexo_3dlut_load_cube(). The file does not contain its size, so the caller passes
 * it.
 * @return the LUT, without a title. Null when it cannot be allocated or there are too few entries.
 */
vexo_3dlut *vexo_3dlut_load_eecolor(FILE *f, int size);

/** Reads an eeColor file by its path, as vexo_3dlut_load_eecolor(). @return also null when it cannot be opened. */
vexo_3dlut *vexo_3dlut_eecolor_load_file(const char *path, int size);

/**
 * Writes two COE memory images of hexadecimal words red | green << 10 | blue << 20. With n = size - 1, an image has the
 * main block of n^3 entries, then the last green plane and the last red plane. The blue indexes are 0 to n - 1 in the
 * first image and 1 to n in the second. A plane has 2n lines along its red or green index; words outside the table are
 * 0. A code is the value times 2^nbits, rounded to nearest, halves away from zero, limited to 0 and 2^nbits - 1. A NaN
 * gives 0. With nbits 0 every word is 0.
 * @return 0, or -1 with nothing written for nbits outside 0 to 10.
 */
int vexo_3dlut_dump_coe(vexo_3dlut *lut, FILE *f, int nbits);

/**
 * Lists all entries as codes. A code is the value times 2^nbits - 1, rounded to nearest, halves away from zero. It is
 * converted to an unsigned 32-bit number and printed as a signed number. It is limited to the range of that number and
 * not to the depth. Negative values and NaN give 0. With nbits 0 every code is 0.
 * @return the number of characters written. -1 with nothing written for nbits outside 0 to 30.
 */
int vexo_3dlut_dump_debug(vexo_3dlut *lut, FILE *f, int nbits);

/** Lists the entries of the gray axis, (i, i, i), as vexo_3dlut_dump_debug(). @return as vexo_3dlut_dump_debug(). */
int vexo_3dlut_dump_1dlut_debug(vexo_3dlut *lut, FILE *f, int nbits);

#ifdef __cplusplus
}
#endif

#endif
