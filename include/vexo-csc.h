/**
 * @file vexo-csc.h
 * Video colour space conversion (CSC): a matrix and an offset that convert one integer signal to another, and the
 * fixed-point registers of the hardware converter.
 *
 * A signal is RGB or YCbCr with the primaries of ITU-R BT.601, BT.709, BT.2020 or any others. It has one of eight
 * ranges and 8 to 30 bits. The conversion contains the picture controls.
 *
 * These rules hold unless a comment says otherwise:
 * - All records are plain values of the caller.
 * - Arithmetic is single precision, in the order of the formulas.
 * - Pointers must not be null. They are not checked.
 * - The result record must differ from the input records. Two input records may be the same object.
 * - Status results are 0 for success and -1 for failure.
 * - Nothing is printed on standard error.
 */
#ifndef VEXO_CSC_H
#define VEXO_CSC_H

#include <stdio.h>

#include "vexo-cs.h"
#include "vexo-matrix.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A C caller may pass a value that no enumerator has. With int as its type, a C++ enumeration can hold that value, so
   that the library can refuse it. */
#ifdef __cplusplus
#define VEXO_CSC_ANY_INT : int
#else
#define VEXO_CSC_ANY_INT
#endif

/**
 * A conversion of code triples: out = matrix in + offset. The order of the components is R, G, B or Y, Cb, Cr, unless
 * the conversion was built with another component order.
 */
typedef struct vexo_csc {
  vexo_matrix matrix; /**< linear part */
  vexo_vector offset; /**< added after the matrix; unit: output codes */
} vexo_csc;

/**
 * Signal ranges. With u = 2^(bits - 8), nominal black and white have these codes:
 *
 * | Range         | Black | White     |
 * |---------------|-------|-----------|
 * | video         | 16 u  | 235 u     |
 * | full, graphic | 0     | 256 u - 1 |
 * | extended      | 16 u  | 255 u - 1 |
 * | SMPTE full    | u     | 255 u - 1 |
 *
 * Cb and Cr have the centre 128 u. Their span is 224/219 of the luma span. In YCBCR_FULL_RANGE it equals the luma
 * span.
 */
typedef enum color_range VEXO_CSC_ANY_INT {
  YCBCR_VIDEO_RANGE = 0,
  YCBCR_FULL_RANGE = 1,
  RGB_GRAPHIC_RANGE = 2,
  RGB_VIDEO_RANGE = 3,
  YCBCR_EXTENDED_RANGE = 4,
  YCBCR_SMPTE_FULL_RANGE = 5,
  RGB_EXTENDED_RANGE = 6,
  RGB_SMPTE_FULL_RANGE = 7
} color_range;

/** The order in which the input components arrive. */
typedef enum swap_in VEXO_CSC_ANY_INT {
  SWAP_IN_RGB = 0,
  SWAP_IN_BGR = 1,
  SWAP_IN_RBG = 2,
  SWAP_IN_GRB = 3,
  SWAP_IN_GBR = 4,
  SWAP_IN_BRG = 5,
  SWAP_IN_YCBCR = 0,
  SWAP_IN_CRCBY = 1,
  SWAP_IN_YCRCB = 2,
  SWAP_IN_CBYCR = 3,
  SWAP_IN_CBCRY = 4,
  SWAP_IN_CRYCB = 5
} swap_in;

/**
 * The order in which the output components leave. GBR and BRG have the values 5 and 4 here, 4 and 5 in swap_in; CbCrY
 * and CrYCb likewise.
 */
typedef enum swap_out VEXO_CSC_ANY_INT {
  SWAP_OUT_RGB = 0,
  SWAP_OUT_BGR = 1,
  SWAP_OUT_RBG = 2,
  SWAP_OUT_GRB = 3,
  SWAP_OUT_BRG = 4,
  SWAP_OUT_GBR = 5,
  SWAP_OUT_YCBCR = 0,
  SWAP_OUT_CRCBY = 1,
  SWAP_OUT_YCRCB = 2,
  SWAP_OUT_CBYCR = 3,
  SWAP_OUT_CRYCB = 4,
  SWAP_OUT_CBCRY = 5
} swap_out;

#undef VEXO_CSC_ANY_INT

/** Picture controls. The neutral value of each stands in brackets. */
typedef struct vexo_ccp {
  float hue;          /**< rotation of the (Pb, Pr) plane in radians [0] */
  float saturation;   /**< gain on Pb and Pr, on top of contrast [1] */
  float contrast;     /**< gain on Y, Pb and Pr [1] */
  float brightness;   /**< luma offset, as a fraction of the luma span of the YCbCr range [0] */
  vexo_vector gain;   /**< gains on normalised R, G, B [1] */
  vexo_vector offset; /**< offsets on normalised R, G, B, as fractions of the span of the RGB range [0] */
  vexo_matrix matrix; /**< not used by the library [identity] */
} vexo_ccp;

/** The registers of the hardware converter. */
typedef struct vexo_csc_reg {
  short gain[3][3];  /**< coefficients in steps of 1/2048 */
  short offset[3];   /**< offsets in steps of 1/4 output code */
  short clip_max[3]; /**< upper output clip */
  short clip_min[3]; /**< lower output clip */
} vexo_csc_reg;

/** Sets the identity conversion: identity matrix, zero offset. */
void vexo_csc_init(vexo_csc *csc);

/** Copies src to dst. */
void vexo_csc_copy(vexo_csc *dst, vexo_csc *src);

/** Applies m before the conversion: matrix = matrix m. The offset does not change. m may be csc->matrix. */
void vexo_csc_prev_matrix(vexo_csc *csc, vexo_matrix *m);

/** Applies m after the conversion: matrix = m matrix, offset = m offset. m may be csc->matrix. */
void vexo_csc_post_matrix(vexo_csc *csc, vexo_matrix *m);

/** Converts v: v = matrix v + offset. v must not be csc->offset. The spelling of the name is historical. */
void vexo_csc_transfrom(vexo_csc *csc, vexo_vector *v);

/**
 * Prints the heading "PREFIX CSC:" without a line break, then matrix and offset as vexo_matrix_dump() and
 * vexo_vector_dump() do. prefix may be null.
 */
void vexo_csc_dump(FILE *f, vexo_csc *csc, char *prefix);

/** Sets all controls to their neutral values. */
void vexo_ccp_init(vexo_ccp *ccp);

/**
 * Builds the conversion csc from RGB in rgb_range at ibits bits to YCbCr in ycbcr_range at obits bits. ics is the
 * colour space of the input, ocs that of the output. The white of ics is adapted to the white of ocs, see
 * vexo_cs_chad_transform(). ccp holds the picture controls. ics and ocs may be the same object.
 *
 * The luma weights are row 1 of npm of the colour space on the YCbCr side. Normalised Y, R, G, B run from 0 to 1,
 * normalised Pb, Pr from -0.5 to 0.5. With these,
 *
 *     encoding:  YPbPr = hsc (RGB to YPbPr) gain adaptation (RGB + offset) + brightness
 *     decoding:  RGB = gain adaptation (YPbPr to RGB) hsc (YPbPr + brightness) + offset
 *
 * hsc scales Y by contrast, scales Pb and Pr by contrast saturation and rotates (Pb, Pr) by the angle hue. Decoding
 * uses the same hsc; it is not inverted.
 *
 * A range of the other kind, such as an RGB range for YCbCr, is converted with its own spans and black level. Offset
 * or brightness then has no effect on that side. A colour space whose green luma weight is 0 cannot be decoded; the
 * result is then undefined.
 *
 * @return 0 on success. -1 with csc unchanged when a range is none of the eight or a depth is outside 8 to 30. -1 with
 * csc undefined when npm of ocs has no inverse.
 */
int _vexo_csc_rgb_ycbcr(vexo_csc *csc, vexo_cs *ics, vexo_cs *ocs, color_range rgb_range, color_range ycbcr_range,
                        vexo_ccp *ccp, int ibits, int obits);

/** Builds the conversion from YCbCr to RGB, as _vexo_csc_rgb_ycbcr(). */
int _vexo_csc_ycbcr_rgb(vexo_csc *csc, vexo_cs *ics, vexo_cs *ocs, color_range ycbcr_range, color_range rgb_range,
                        vexo_ccp *ccp, int ibits, int obits);

/**
 * Builds the conversion from RGB to RGB in two stages. The signal in between is YCbCr in YCBCR_FULL_RANGE of ocs at
 * obits bits. The controls act in the first stage only. The rest is as in _vexo_csc_rgb_ycbcr().
 */
int _vexo_csc_rgb_rgb(vexo_csc *csc, vexo_cs *ics, vexo_cs *ocs, color_range src_range, color_range dst_range,
                      vexo_ccp *ccp, int ibits, int obits);

/**
 * Builds the conversion from YCbCr to YCbCr in two stages. The signal in between is RGB in RGB_VIDEO_RANGE of ocs at
 * obits bits. The controls act in the first stage only. The rest is as in _vexo_csc_rgb_ycbcr().
 */
int _vexo_csc_ycbcr_ycbcr(vexo_csc *csc, vexo_cs *ics, vexo_cs *ocs, color_range src_range, color_range dst_range,
                          vexo_ccp *ccp, int ibits, int obits);

/** Builds the conversion from RGB to YCbCr in one colour space at nbits bits. @return as _vexo_csc_rgb_ycbcr(). */
int vexo_csc_rgb_ycbcr(vexo_csc *csc, vexo_cs *cs, color_range rgb_range, color_range ycbcr_range, vexo_ccp *ccp,
                       int nbits);

/** Builds the conversion from YCbCr to RGB in one colour space at nbits bits. @return as _vexo_csc_rgb_ycbcr(). */
int vexo_csc_ycbcr_rgb(vexo_csc *csc, vexo_cs *cs, color_range ycbcr_range, color_range rgb_range, vexo_ccp *ccp,
                       int nbits);

/** Builds the conversion from RGB to RGB in one colour space at nbits bits. @return as _vexo_csc_rgb_ycbcr(). */
int vexo_csc_rgb_rgb(vexo_csc *csc, vexo_cs *cs, color_range src_range, color_range dst_range, vexo_ccp *ccp,
                     int nbits);

/** Builds the conversion from YCbCr to YCbCr in one colour space at nbits bits. @return as _vexo_csc_rgb_ycbcr(). */
int vexo_csc_ycbcr_ycbcr(vexo_csc *csc, vexo_cs *cs, color_range src_range, color_range dst_range, vexo_ccp *ccp,
                         int nbits);

/**
 * Builds the conversion of vexo_csc_rgb_ycbcr() with other component orders. swap_colons is the order of the input,
 * swap_rows that of the output.
 * @return as _vexo_csc_rgb_ycbcr(); also -1 with csc unchanged when an order is outside 0 to 5.
 */
int vexo_csc_rgb_ycbcr2(vexo_csc *csc, vexo_cs *cs, color_range rgb_range, color_range ycbcr_range, vexo_ccp *ccp,
                        int nbits, swap_in swap_colons, swap_out swap_rows);

/** Builds the conversion of vexo_csc_ycbcr_rgb() with other component orders, as vexo_csc_rgb_ycbcr2(). */
int vexo_csc_ycbcr_rgb2(vexo_csc *csc, vexo_cs *cs, color_range ycbcr_range, color_range rgb_range, vexo_ccp *ccp,
                        int nbits, swap_in swap_colons, swap_out swap_rows);

/** Builds the conversion of vexo_csc_rgb_rgb() with other component orders, as vexo_csc_rgb_ycbcr2(). */
int vexo_csc_rgb_rgb2(vexo_csc *csc, vexo_cs *cs, color_range src_range, color_range dst_range, vexo_ccp *ccp,
                      int nbits, swap_in swap_colons, swap_out swap_rows);

/** Builds the conversion of vexo_csc_ycbcr_ycbcr() with other component orders, as vexo_csc_rgb_ycbcr2(). */
int vexo_csc_ycbcr_ycbcr2(vexo_csc *csc, vexo_cs *cs, color_range src_range, color_range dst_range, vexo_ccp *ccp,
                          int nbits, swap_in swap_colons, swap_out swap_rows);

/** vexo_csc_rgb_ycbcr2() with the input order G, B, R. */
int vexo_csc_gbr_ycbcr(vexo_csc *csc, vexo_cs *cs, color_range rgb_range, color_range ycbcr_range, vexo_ccp *ccp,
                       int nbits);

/** vexo_csc_ycbcr_rgb2() with the output order G, B, R. */
int vexo_csc_ycbcr_gbr(vexo_csc *csc, vexo_cs *cs, color_range ycbcr_range, color_range rgb_range, vexo_ccp *ccp,
                       int nbits);

/** vexo_csc_ycbcr_rgb2() with the input order Cb, Y, Cr. */
int vexo_csc_cbycr_rgb(vexo_csc *csc, vexo_cs *cs, color_range ycbcr_range, color_range rgb_range, vexo_ccp *ccp,
                       int nbits);

/** vexo_csc_rgb_ycbcr2() with the output order Cb, Y, Cr. */
int vexo_csc_rgb_cbycr(vexo_csc *csc, vexo_cs *cs, color_range rgb_range, color_range ycbcr_range, vexo_ccp *ccp,
                       int nbits);

/** vexo_csc_ycbcr_rgb2() with the input order Cr, Y, Cb. */
int vexo_csc_crycb_rgb(vexo_csc *csc, vexo_cs *cs, color_range ycbcr_range, color_range rgb_range, vexo_ccp *ccp,
                       int nbits);

/** vexo_csc_rgb_ycbcr2() with the output order Cr, Y, Cb. */
int vexo_csc_rgb_crycb(vexo_csc *csc, vexo_cs *cs, color_range rgb_range, color_range ycbcr_range, vexo_ccp *ccp,
                       int nbits);

/** vexo_csc_rgb_rgb2() with the order G, B, R for input and output. */
int vexo_csc_gbr_gbr(vexo_csc *csc, vexo_cs *cs, color_range src_range, color_range dst_range, vexo_ccp *ccp,
                     int nbits);

/** vexo_csc_rgb_rgb2() with the input order B, G, R and the output order R, G, B. */
int vexo_csc_bgr_rgb(vexo_csc *csc, vexo_cs *cs, color_range src_range, color_range dst_range, vexo_ccp *ccp,
                     int nbits);

/**
 * Encodes csc as registers. Coefficients and offsets are rounded to their steps, halves upward, and saturated to -8192
 * to 8191. A NaN becomes 0. The clips are always 0 and 1023, at every depth.
 * @return always 0.
 */
int vexo_csc_float_reg(vexo_csc *csc, vexo_csc_reg *reg);

/**
 * Prints the 18 registers as "PREFIX: NAME[INDEX] = 0xHEX", one register per line. A negative register is printed
 * with 32 bits. prefix must not be null.
 */
void vexo_csc_reg_dump(FILE *f, vexo_csc_reg *reg, char *prefix);

#ifdef __cplusplus
}
#endif

#endif
