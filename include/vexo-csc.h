/**
 * @file vexo-csc.h
 * Video colour space conversion: the affine map between two integer signals (RGB or YCbCr, ITU-R BT.601, BT.709,
 * BT.2020 and any other primaries) in eight signal ranges at 8 to 30 bits, with picture controls folded in, and its
 * fixed-point image for the hardware converter.
 *
 * All records are plain values that the caller owns. Arithmetic is single precision in the order of the formulas,
 * unless a comment says otherwise. Status results are 0 for success and -1 for failure; pointers are not tested.
 */
#ifndef VEXO_CSC_H
#define VEXO_CSC_H

#include <stdio.h>

#include "vexo-cs.h"
#include "vexo-matrix.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Without a stated type, a C++ enumeration cannot hold the wrong values of a C caller that are to be refused. */
#ifdef __cplusplus
#define VEXO_CSC_ANY_INT : int
#else
#define VEXO_CSC_ANY_INT
#endif

/** A conversion of code triples, out = matrix in + offset. RGB is (R, G, B), YCbCr is (Y, Cb, Cr) unless swapped. */
typedef struct vexo_csc {
  vexo_matrix matrix; /**< linear part */
  vexo_vector offset; /**< added after the matrix, in output codes */
} vexo_csc;

/**
 * Signal ranges. With u = 2^(bits - 8), nominal black to nominal white is 16 u to 235 u (video), 0 to 256 u - 1 (full,
 * graphic), 16 u to 255 u - 1 (extended) or u to 255 u - 1 (SMPTE full). Cb and Cr are centred on 128 u and span
 * 224/219 of luma, in YCBCR_FULL_RANGE as much as luma.
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

/** The order in which the output components leave. The two cyclic orders have each other's value of swap_in. */
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

/** Picture controls. The neutral value is given in brackets. */
typedef struct vexo_ccp {
  float hue;          /**< rotation of the (Pb, Pr) plane in radians [0] */
  float saturation;   /**< gain on Pb and Pr, on top of contrast [1] */
  float contrast;     /**< gain on Y, Pb and Pr [1] */
  float brightness;   /**< luma offset, as a fraction of the luma span of the YCbCr range [0] */
  vexo_vector gain;   /**< gains on normalised R, G, B [1] */
  vexo_vector offset; /**< offsets on normalised R, G, B, as fractions of the span of the RGB range [0] */
  vexo_matrix matrix; /**< read by no operation [identity] */
} vexo_ccp;

/** The registers of the hardware converter. */
typedef struct vexo_csc_reg {
  short gain[3][3];  /**< coefficients in steps of 1/2048 */
  short offset[3];   /**< offsets in steps of 1/4 output code */
  short clip_max[3]; /**< upper output clip */
  short clip_min[3]; /**< lower output clip */
} vexo_csc_reg;

/** Sets the conversion that changes nothing. */
void vexo_csc_init(vexo_csc *csc);

/** dst = src. */
void vexo_csc_copy(vexo_csc *dst, vexo_csc *src);

/** Puts m before the conversion: matrix = matrix m. m may be the record's own matrix. */
void vexo_csc_prev_matrix(vexo_csc *csc, vexo_matrix *m);

/** Puts m after the conversion: matrix = m matrix, offset = m offset. m may be the record's own matrix. */
void vexo_csc_post_matrix(vexo_csc *csc, vexo_matrix *m);

/** v = matrix v + offset; v is not the record's own offset. The spelling of the name is historical. */
void vexo_csc_transfrom(vexo_csc *csc, vexo_vector *v);

/** Prints matrix and offset (see vexo_matrix_dump()) after "PREFIX CSC:" on the same line; prefix may be null. */
void vexo_csc_dump(FILE *f, vexo_csc *csc, char *prefix);

/** Sets the neutral controls. */
void vexo_ccp_init(vexo_ccp *ccp);

/**
 * The full builders: csc becomes the conversion from the first range at ibits in the colour space ics to the second
 * range at obits in ocs, the white of ics adapted to that of ocs (see vexo_cs_chad_transform()). The luma weights are
 * row 1 of npm of the colour space on the YCbCr side. Inside, normalised Y, R, G, B run from 0 to 1 and Pb, Pr from
 * -0.5 to 0.5, with
 *
 *   YPbPr = hsc (RGB to YPbPr) gain adaptation (RGB + offset), plus brightness,        encoding
 *   RGB = gain adaptation (YPbPr to RGB) hsc (YPbPr + brightness), plus offset,        decoding
 *
 * where hsc scales Y by contrast and turns (Pb, Pr) scaled by contrast saturation through the angle hue; decoding
 * applies it as it stands, not inverted. A range of the other kind (RGB where YCbCr belongs, or the reverse) is
 * converted by its own spans and black level, and the offset or brightness does not act on it. Decoding a colour space
 * without a green luma weight has no defined result.
 *
 * @return 0; -1 with csc untouched when a range is none of the eight or a depth is not 8..30; -1 with csc undefined
 * when npm of ocs cannot be inverted.
 */
int _vexo_csc_rgb_ycbcr(vexo_csc *csc, vexo_cs *ics, vexo_cs *ocs, color_range rgb_range, color_range ycbcr_range,
                        vexo_ccp *ccp, int ibits, int obits);

/** YCbCr to RGB, as _vexo_csc_rgb_ycbcr(). */
int _vexo_csc_ycbcr_rgb(vexo_csc *csc, vexo_cs *ics, vexo_cs *ocs, color_range ycbcr_range, color_range rgb_range,
                        vexo_ccp *ccp, int ibits, int obits);

/**
 * RGB to RGB through YCBCR_FULL_RANGE of ocs at obits; the controls act in the first stage only. As
 * _vexo_csc_rgb_ycbcr() otherwise.
 */
int _vexo_csc_rgb_rgb(vexo_csc *csc, vexo_cs *ics, vexo_cs *ocs, color_range src_range, color_range dst_range,
                      vexo_ccp *ccp, int ibits, int obits);

/**
 * YCbCr to YCbCr through RGB_VIDEO_RANGE of ocs at obits; the controls act in the first stage only. As
 * _vexo_csc_rgb_ycbcr() otherwise.
 */
int _vexo_csc_ycbcr_ycbcr(vexo_csc *csc, vexo_cs *ics, vexo_cs *ocs, color_range src_range, color_range dst_range,
                          vexo_ccp *ccp, int ibits, int obits);

/** RGB to YCbCr within one colour space at one depth. @return as _vexo_csc_rgb_ycbcr(). */
int vexo_csc_rgb_ycbcr(vexo_csc *csc, vexo_cs *cs, color_range rgb_range, color_range ycbcr_range, vexo_ccp *ccp,
                       int nbits);

/** YCbCr to RGB within one colour space at one depth. @return as _vexo_csc_rgb_ycbcr(). */
int vexo_csc_ycbcr_rgb(vexo_csc *csc, vexo_cs *cs, color_range ycbcr_range, color_range rgb_range, vexo_ccp *ccp,
                       int nbits);

/** RGB to RGB within one colour space at one depth. @return as _vexo_csc_rgb_ycbcr(). */
int vexo_csc_rgb_rgb(vexo_csc *csc, vexo_cs *cs, color_range src_range, color_range dst_range, vexo_ccp *ccp,
                     int nbits);

/** YCbCr to YCbCr within one colour space at one depth. @return as _vexo_csc_rgb_ycbcr(). */
int vexo_csc_ycbcr_ycbcr(vexo_csc *csc, vexo_cs *cs, color_range src_range, color_range dst_range, vexo_ccp *ccp,
                         int nbits);

/**
 * vexo_csc_rgb_ycbcr() that reads the input in the order swap_colons and leaves the output in the order swap_rows.
 * @return as _vexo_csc_rgb_ycbcr(); -1 with csc untouched for an order outside 0..5.
 */
int vexo_csc_rgb_ycbcr2(vexo_csc *csc, vexo_cs *cs, color_range rgb_range, color_range ycbcr_range, vexo_ccp *ccp,
                        int nbits, swap_in swap_colons, swap_out swap_rows);

/** vexo_csc_ycbcr_rgb() with component orders, as vexo_csc_rgb_ycbcr2(). */
int vexo_csc_ycbcr_rgb2(vexo_csc *csc, vexo_cs *cs, color_range ycbcr_range, color_range rgb_range, vexo_ccp *ccp,
                        int nbits, swap_in swap_colons, swap_out swap_rows);

/** vexo_csc_rgb_rgb() with component orders, as vexo_csc_rgb_ycbcr2(). */
int vexo_csc_rgb_rgb2(vexo_csc *csc, vexo_cs *cs, color_range src_range, color_range dst_range, vexo_ccp *ccp,
                      int nbits, swap_in swap_colons, swap_out swap_rows);

/** vexo_csc_ycbcr_ycbcr() with component orders, as vexo_csc_rgb_ycbcr2(). */
int vexo_csc_ycbcr_ycbcr2(vexo_csc *csc, vexo_cs *cs, color_range src_range, color_range dst_range, vexo_ccp *ccp,
                          int nbits, swap_in swap_colons, swap_out swap_rows);

/** vexo_csc_rgb_ycbcr2() from G B R. */
int vexo_csc_gbr_ycbcr(vexo_csc *csc, vexo_cs *cs, color_range rgb_range, color_range ycbcr_range, vexo_ccp *ccp,
                       int nbits);

/** vexo_csc_ycbcr_rgb2() to G B R. */
int vexo_csc_ycbcr_gbr(vexo_csc *csc, vexo_cs *cs, color_range ycbcr_range, color_range rgb_range, vexo_ccp *ccp,
                       int nbits);

/** vexo_csc_ycbcr_rgb2() from Cb Y Cr. */
int vexo_csc_cbycr_rgb(vexo_csc *csc, vexo_cs *cs, color_range ycbcr_range, color_range rgb_range, vexo_ccp *ccp,
                       int nbits);

/** vexo_csc_rgb_ycbcr2() to Cb Y Cr. */
int vexo_csc_rgb_cbycr(vexo_csc *csc, vexo_cs *cs, color_range rgb_range, color_range ycbcr_range, vexo_ccp *ccp,
                       int nbits);

/** vexo_csc_ycbcr_rgb2() from Cr Y Cb. */
int vexo_csc_crycb_rgb(vexo_csc *csc, vexo_cs *cs, color_range ycbcr_range, color_range rgb_range, vexo_ccp *ccp,
                       int nbits);

/** vexo_csc_rgb_ycbcr2() to Cr Y Cb. */
int vexo_csc_rgb_crycb(vexo_csc *csc, vexo_cs *cs, color_range rgb_range, color_range ycbcr_range, vexo_ccp *ccp,
                       int nbits);

/** vexo_csc_rgb_rgb2() from G B R to G B R. */
int vexo_csc_gbr_gbr(vexo_csc *csc, vexo_cs *cs, color_range src_range, color_range dst_range, vexo_ccp *ccp,
                     int nbits);

/** vexo_csc_rgb_rgb2() from B G R to R G B. */
int vexo_csc_bgr_rgb(vexo_csc *csc, vexo_cs *cs, color_range src_range, color_range dst_range, vexo_ccp *ccp,
                     int nbits);

/**
 * Encodes csc: coefficients and offsets rounded half upward to their steps and saturated to -8192..8191, a NaN as 0;
 * the clips are 0 and 1023 whatever the depth. @return always 0.
 */
int vexo_csc_float_reg(vexo_csc *csc, vexo_csc_reg *reg);

/**
 * Prints the 18 registers as "PREFIX: NAME[INDEX] = 0xHEX", one a line; a negative register prints as 32 bits.
 * prefix must not be null.
 */
void vexo_csc_reg_dump(FILE *f, vexo_csc_reg *reg, char *prefix);

#ifdef __cplusplus
}
#endif

#endif
