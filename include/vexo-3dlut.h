/**
 * @file vexo-3dlut.h
 * Three-dimensional look-up tables (3D LUTs): the table, its resampling, and its exchange and hardware formats.
 *
 * A LUT holds one output triple (red, green, blue) for every point of a regular grid of input colours, with the same
 * number of grid points (size) on the blue, green and red axis. Grid index i stands for the normalised input
 * i / (size - 1). Indexes are given as (bi, gi, ri); in memory and in files the red index varies fastest, the blue
 * index slowest. Values are normalised to 0..1 by convention; the library keeps any value.
 *
 * A LUT is created by vexo_3dlut_create(), vexo_3dlut_dup() or a reader, and released by the caller with
 * vexo_3dlut_destroy(). Unless a comment says otherwise a LUT passed in must not be null. Different LUTs may be used
 * on different threads.
 *
 * Streams belong to the caller: they are read and written from their current position and never closed, and a
 * reader takes nothing after its last entry. Writers do not check the stream; their counts beyond the range of int
 * are limited to it. Numbers in text files have a decimal point, whatever locale the application set.
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
 * @return a new LUT of size^3 entries, all (0, 0, 0), with its own copy of title; title may be null, and a title that
 * cannot be copied leaves the LUT without one. Null when size is below 1 or the entries cannot be allocated.
 */
vexo_3dlut *vexo_3dlut_create(int size, const char *title);

/** Releases the LUT with its title and entries. */
void vexo_3dlut_destroy(vexo_3dlut *lut);

/** Fills the identity: entry (bi, gi, ri) = (ri, gi, bi) / (size - 1); all zero for size 1. @return always 0. */
int vexo_3dlut_init_unit(vexo_3dlut *lut);

/** @return the entry (bi, gi, ri), which lives as long as the LUT, or null when an index is outside 0..size - 1. */
vexo_vector *vexo_3dlut_item(vexo_3dlut *lut, int bi, int gi, int ri);

/** Copies v into entry (bi, gi, ri). @return 0, or -1 with nothing stored when an index is outside 0..size - 1. */
int vexo_3dlut_set_item(vexo_3dlut *lut, vexo_vector *v, int bi, int gi, int ri);

/** @return the grid points per axis. */
int vexo_3dlut_size(vexo_3dlut *lut);

/** @return the LUT's own title, valid until the next vexo_3dlut_set_title() or the destruction; may be null. */
char *vexo_3dlut_title(vexo_3dlut *lut);

/**
 * Replaces the title by a copy of title, which may be null (no title) or the LUT's own.
 * @return 0, or -1 when title cannot be copied; the LUT is then without a title.
 */
int vexo_3dlut_set_title(vexo_3dlut *lut, const char *title);

/**
 * @return a copy of src resampled by trilinear interpolation to size grid points per axis (0: as many as src, an
 * exact copy), titled title (null: as src); null when it or the working memory (two planes of it) cannot be allocated.
 * A size of 1 takes the first entry. Each axis is read at the single-precision position i / s with the scale s = (size
 * - 1) / (source size - 1); components are interpolated along red, then green, then blue, each step as linear_inter()
 * does, and an axis on the source's last index is not interpolated.
 */
vexo_3dlut *vexo_3dlut_dup(vexo_3dlut *src, int size, const char *title);

/**
 * Reads a cube file: lines with the keywords TITLE and LUT_3D_SIZE, then a line of three numbers (red, green, blue) an
 * entry. Header lines beginning with '#' are comments; other lines that are neither are skipped, before and after the
 * size line. A line longer than 255 characters counts as several, and ends for the reader at a NUL. Without a title
 * line before the size line the title is "cube".
 * @return a new LUT; null when the size line is missing or its size below 1 or too large, when there are too few
 * entries, or on failed allocation.
 */
vexo_3dlut *vexo_3dlut_load_cube(FILE *f);

/** As vexo_3dlut_load_cube() from a file. A file that cannot be opened gives null and a line on standard error. */
vexo_3dlut *vexo_3dlut_cube_load_file(const char *path);

/**
 * As vexo_3dlut_load_cube() from text in memory, with these differences: lines may have any length, a title is cut to
 * 255 characters, '#' means nothing, and a line with TITLE is never the size line. buf ends with a NUL and is
 * changed: line feeds that were read become NULs. An entry line that begins at or after buf + len ends the data;
 * header lines may lie beyond.
 */
vexo_3dlut *vexo_3dlut_cube_load_buf(char *buf, int len);

/** Writes a cube file, numbers with eight decimals, a missing title as "". @return the characters written. */
int vexo_3dlut_dump_cube(vexo_3dlut *lut, FILE *f);

/**
 * Writes the cfe form of the cube file: author, model and version instead of the title. model and version may be
 * null and are then "KX600" and "2.0.0".
 * @return the characters written in entry lines.
 */
int vexo_3dlut_dump_cfe(vexo_3dlut *lut, FILE *f, const char *model, const char *version);

/**
 * The 128-byte header of a packed file, byte by byte as it lies in the file: integers are little-endian on every host,
 * texts are padded with NULs and end without one when they fill their field. One word an entry follows, most
 * significant byte first. Fields marked unused are written as zero and ignored.
 */
typedef struct vexo_dat_3dlut_header {
  uint32_t magic;       /**< 0x42340299 */
  uint32_t ver;         /**< 0x02000000: 32-bit words; 0x03000000: 64-bit words; 0x01000003: old lattice */
  char model[16];       /**< the first 16 characters of the title */
  char version[16];     /**< unused */
  uint32_t data_cs;     /**< unused */
  uint32_t length;      /**< unused */
  char description[16]; /**< unused */
  uint32_t nbits;       /**< bits of a component's code */
  char name[16];        /**< unused */
  char reserved[42];    /**< unused */
  uint8_t size;         /**< grid points per axis, low 8 bits; one less in the old lattice */
  uint8_t header_cs;    /**< unused */
} vexo_dat_3dlut_header;

/**
 * Reads a packed file of 32-bit words: fields of nbits, red lowest, code k standing for k / (2^nbits - 1).
 * @return a new LUT titled with the header's model; null for a short file, a version below 0x02000000 or equal to
 * 0x03000000, and nbits outside 1..10; null with a line on standard error for a wrong magic number and when the LUT
 * cannot be created.
 */
vexo_3dlut *vexo_3dlut_load_dat(FILE *f);

/** As vexo_3dlut_load_dat() from a file. A file that cannot be opened gives null. */
vexo_3dlut *vexo_3dlut_dat_load_file(const char *path);

/** As vexo_3dlut_load_dat() from len bytes in memory, without regard to the version and without messages. */
vexo_3dlut *vexo_3dlut_dat_load_buf(uint8_t *buf, int len);

/**
 * Writes a packed file of 32-bit words with nbits (1..10) a component. Codes are rounded to nearest, halves away from
 * zero, and limited to 0 and 2^nbits - 1; a NaN gives 0. The header holds the low 8 bits of the size, so tables of
 * more than 255 grid points per axis cannot be read back.
 * @return the items written, 1 for the header and 1 an entry; -1 with nothing written for other nbits.
 */
int vexo_3dlut_dump_dat(vexo_3dlut *lut, FILE *f, int nbits);

/**
 * Writes the variant of 64-bit words, a component in 16 bits, for tables of 33 grid points and nbits 12. Codes as in
 * vexo_3dlut_dump_dat(). No reader of the library takes it.
 * @return the items written; -1 with nothing written for another size or depth.
 */
int vexo_3dlut_dump_dat_12bit(vexo_3dlut *lut, FILE *f, int nbits);

/**
 * Writes the old lattice, which leaves out the last plane of every axis: with N = size - 1, N^3 words of codes
 * value times 2^nbits, limited to 0 and 2^nbits - 2^(nbits - k), k = floor(log2 N); a NaN gives 0. Prints the scale
 * and the limit on standard error.
 * @return the items written; -1 with nothing written or printed for a size below 2, nbits outside 1..10 or below k.
 */
int vexo_3dlut_dump_old_dat(vexo_3dlut *lut, FILE *f, int nbits);

/**
 * Reads an eeColor file: six numbers a line, of which the last three are red, green and blue of an entry; other lines
 * are skipped. Lines are split as in vexo_3dlut_load_cube(). The file does not tell its size.
 * @return a new LUT without a title; null when it cannot be created or there are too few entries.
 */
vexo_3dlut *vexo_3dlut_load_eecolor(FILE *f, int size);

/** As vexo_3dlut_load_eecolor() from a file. A file that cannot be opened gives null. */
vexo_3dlut *vexo_3dlut_eecolor_load_file(const char *path, int size);

/**
 * Writes two COE memory images (hexadecimal words red | green << 10 | blue << 20) of the table: with n = size - 1 the
 * main block of n^3 entries, then the faces of the last green and of the last red plane, blue indexes 0..n - 1 in the
 * first image and 1..n in the second. Faces are 2n lines long; words past the table are 0. Codes are value times
 * 2^nbits, rounded to nearest, halves away from zero, limited to 0 and 2^nbits - 1; a NaN gives 0.
 * @return 0; -1 with nothing written for nbits outside 1..10.
 */
int vexo_3dlut_dump_coe(vexo_3dlut *lut, FILE *f, int nbits);

/**
 * Lists all entries as codes: value times 2^nbits - 1, rounded to nearest, halves away from zero, converted to an
 * unsigned 32-bit number (limited to its range, a NaN gives 0) and printed as a signed one.
 * @return the characters written; -1 with nothing written for nbits outside 1..30.
 */
int vexo_3dlut_dump_debug(vexo_3dlut *lut, FILE *f, int nbits);

/** As vexo_3dlut_dump_debug() for the gray axis only, entries (i, i, i). */
int vexo_3dlut_dump_1dlut_debug(vexo_3dlut *lut, FILE *f, int nbits);

#ifdef __cplusplus
}
#endif

#endif
