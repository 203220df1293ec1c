// Video colour space conversion: signal ranges, picture controls, the builders of conversions, registers.
// Matrices and vectors are single precision. Spans and black levels of the signal ranges, and the sine and cosine of
// the hue, are formed in double and rounded once.
#include "vexo-csc.h"

#include <algorithm>
#include <cmath>

#include "base/exact.h"

namespace {

enum class Kind { kYCbCr, kRgb };

// A signal range, in units of u = 2^(nbits - 8) codes. The first component spans peak u - cut codes, the other two
// chroma_num / chroma_den of that. Black lies at (black u, black_rest u, black_rest u).
struct RangeRule {
  Kind kind;
  double peak;
  double cut;
  double chroma_num;
  double chroma_den;
  double black;
  double black_rest;
};

const int kRanges = 8;

// By the value of color_range.
const RangeRule kRangeRules[kRanges] = {
    {Kind::kYCbCr, 219.0, 0.0, 224.0, 219.0, 16.0, 128.0}, // YCBCR_VIDEO_RANGE
    {Kind::kYCbCr, 256.0, 1.0, 1.0, 1.0, 0.0, 128.0},      // YCBCR_FULL_RANGE
    {Kind::kRgb, 256.0, 1.0, 1.0, 1.0, 0.0, 0.0},          // RGB_GRAPHIC_RANGE
    {Kind::kRgb, 219.0, 0.0, 1.0, 1.0, 16.0, 16.0},        // RGB_VIDEO_RANGE
    {Kind::kYCbCr, 239.0, 1.0, 224.0, 219.0, 16.0, 128.0}, // YCBCR_EXTENDED_RANGE
    {Kind::kYCbCr, 254.0, 1.0, 224.0, 219.0, 1.0, 128.0},  // YCBCR_SMPTE_FULL_RANGE
    {Kind::kRgb, 239.0, 1.0, 1.0, 1.0, 16.0, 16.0},        // RGB_EXTENDED_RANGE
    {Kind::kRgb, 254.0, 1.0, 1.0, 1.0, 1.0, 1.0},          // RGB_SMPTE_FULL_RANGE
};

bool valid_signal(color_range range, int nbits) { return range >= 0 && range < kRanges && nbits >= 8 && nbits <= 30; }

double unit(int nbits) { return static_cast<double>(1 << (nbits - 8)); }

// The codes from black to white of the first component.
float span(color_range range, int nbits) {
  const RangeRule &rule = kRangeRules[range];
  return static_cast<float>(rule.peak * unit(nbits) - rule.cut);
}

// The same for a control that acts on one kind of signal only.
float control_span(Kind kind, color_range range, int nbits) {
  return kRangeRules[range].kind == kind ? span(range, nbits) : 0.0F;
}

// From normalised values to codes above black.
vexo_matrix scale_matrix(color_range range, int nbits) {
  const RangeRule &rule = kRangeRules[range];
  const float first = span(range, nbits);
  const float rest = static_cast<float>(static_cast<double>(first) * rule.chroma_num / rule.chroma_den);
  return vexo_matrix{{{first, 0.0F, 0.0F}, {0.0F, rest, 0.0F}, {0.0F, 0.0F, rest}}};
}

vexo_vector black_level(color_range range, int nbits) {
  const RangeRule &rule = kRangeRules[range];
  const float rest = static_cast<float>(rule.black_rest * unit(nbits));
  return vexo_vector{{static_cast<float>(rule.black * unit(nbits)), rest, rest}};
}

// Hue, saturation and contrast, on Y, Pb, Pr.
vexo_matrix hsc_matrix(const vexo_ccp &ccp) {
  const double chroma = static_cast<double>(ccp.contrast * ccp.saturation);
  const float cosine = static_cast<float>(chroma * std::cos(static_cast<double>(ccp.hue)));
  const float sine = static_cast<float>(chroma * std::sin(static_cast<double>(ccp.hue)));
  return vexo_matrix{{{ccp.contrast, 0.0F, 0.0F}, {0.0F, cosine, sine}, {0.0F, -sine, cosine}}};
}

vexo_matrix gain_matrix(const vexo_ccp &ccp) {
  const auto &gain = ccp.gain.d;
  return vexo_matrix{{{gain[0], 0.0F, 0.0F}, {0.0F, gain[1], 0.0F}, {0.0F, 0.0F, gain[2]}}};
}

// The offset control in codes of an RGB range.
vexo_vector offset_codes(const vexo_ccp &ccp, color_range range, int nbits) {
  vexo_vector v = ccp.offset;
  vexo_vector_scale(&v, control_span(Kind::kRgb, range, nbits));
  return v;
}

// The brightness control in codes of a YCbCr range.
vexo_vector brightness_codes(const vexo_ccp &ccp, color_range range, int nbits) {
  return vexo_vector{{ccp.brightness * control_span(Kind::kYCbCr, range, nbits), 0.0F, 0.0F}};
}

// Normalised R'G'B' to Y'PbPr: Pb = (B - Y) / (2 (1 - Kb)), Pr = (R - Y) / (2 (1 - Kr)). The luma weights Kr, Kg, Kb
// are the Y row of the colour space's matrix.
vexo_matrix rgb_ypbpr(const vexo_cs &cs) {
  const auto &K = cs.npm.d[1];
  const float nb = 0.5F / (1.0F - K[2]);
  const float nr = 0.5F / (1.0F - K[0]);
  return vexo_matrix{{{K[0], K[1], K[2]},
                      {(0.0F - K[0]) * nb, (0.0F - K[1]) * nb, (1.0F - K[2]) * nb},
                      {(1.0F - K[0]) * nr, (0.0F - K[1]) * nr, (0.0F - K[2]) * nr}}};
}

// Puts m before the conversion.
void multiply_in(vexo_csc *csc, const vexo_matrix &m) { vexo_matrix_multiply(&csc->matrix, &m); }

// One side of a conversion: its coding, and the codes by which a control shifts it.
struct Signal {
  color_range range;
  int nbits;
  vexo_vector shift;
};

// Completes a conversion whose matrix leads from normalised input to output codes: input codes are shifted and
// normalised before the matrix, and the black level and the shift of the output are added after it.
void between_codes(vexo_csc *csc, const Signal &in, Signal out) {
  const vexo_matrix scale = scale_matrix(in.range, in.nbits);
  vexo_matrix normalise;
  vexo_matrix_invert(&normalise, &scale); // spans are never zero
  multiply_in(csc, normalise);

  vexo_vector black = black_level(in.range, in.nbits);
  csc->offset = in.shift;
  vexo_vector_sub(&csc->offset, &black);
  vexo_matrix_transform(&csc->matrix, &csc->offset);
  black = black_level(out.range, out.nbits);
  vexo_vector_add(&csc->offset, &black);
  vexo_vector_add(&csc->offset, &out.shift);
}

// csc becomes the conversion that applies first, then csc.
void follow(vexo_csc *csc, const vexo_csc &first) {
  vexo_vector t = first.offset;
  vexo_matrix_transform(&csc->matrix, &t);
  vexo_vector_add(&csc->offset, &t);
  multiply_in(csc, first.matrix);
}

const int kOrders = 6;

// Component orders by the value of swap_in, applied to the input, or of swap_out, applied to the output.
const vexo_matrix kOrderMatrices[kOrders] = {
    {{{1.0F, 0.0F, 0.0F}, {0.0F, 1.0F, 0.0F}, {0.0F, 0.0F, 1.0F}}},
    {{{0.0F, 0.0F, 1.0F}, {0.0F, 1.0F, 0.0F}, {1.0F, 0.0F, 0.0F}}},
    {{{1.0F, 0.0F, 0.0F}, {0.0F, 0.0F, 1.0F}, {0.0F, 1.0F, 0.0F}}},
    {{{0.0F, 1.0F, 0.0F}, {1.0F, 0.0F, 0.0F}, {0.0F, 0.0F, 1.0F}}},
    {{{0.0F, 0.0F, 1.0F}, {1.0F, 0.0F, 0.0F}, {0.0F, 1.0F, 0.0F}}},
    {{{0.0F, 1.0F, 0.0F}, {0.0F, 0.0F, 1.0F}, {1.0F, 0.0F, 0.0F}}},
};

bool valid_order(int order) { return order >= 0 && order < kOrders; }

void reorder(vexo_csc *csc, swap_in swap_colons, swap_out swap_rows) {
  if (swap_colons != 0) {
    multiply_in(csc, kOrderMatrices[swap_colons]);
  }
  if (swap_rows != 0) {
    vexo_matrix m = kOrderMatrices[swap_rows];
    vexo_csc_post_matrix(csc, &m);
  }
}

using Builder = int(vexo_csc *, vexo_cs *, color_range, color_range, vexo_ccp *, int);

int build_swapped(Builder *build, vexo_csc *csc, vexo_cs *cs, color_range src_range, color_range dst_range,
                  vexo_ccp *ccp, int nbits, swap_in swap_colons, swap_out swap_rows) {
  if (!valid_order(swap_colons) || !valid_order(swap_rows)) {
    return -1;
  }
  const int status = build(csc, cs, src_range, dst_range, ccp, nbits);
  if (status == 0) {
    reorder(csc, swap_colons, swap_rows);
  }
  return status;
}

// The register of a value in register steps. Halves round upward, unlike those of codes. A NaN is 0.
short register_of(float value) {
  const double limit = 0x1fff;
  const double whole = std::floor(static_cast<double>(value) + 0.5);
  return std::isnan(whole) ? short{0} : static_cast<short>(std::clamp(whole, -limit - 1.0, limit));
}

void dump_row(FILE *f, const char *prefix, const char *name, const short row[3]) {
  for (int i = 0; i < 3; i++) {
    fprintf(f, "%s: %s[%d] = 0x%04x\n", prefix, name, i, static_cast<unsigned>(row[i]));
  }
}

} // namespace

static_assert(sizeof(vexo_csc) == 48 && sizeof(vexo_ccp) == 76 && sizeof(vexo_csc_reg) == 36,
              "part of the binary interface");
static_assert(sizeof(color_range) == 4 && sizeof(swap_in) == 4 && sizeof(swap_out) == 4,
              "part of the binary interface");

void vexo_csc_init(vexo_csc *csc) {
  vexo_matrix_init(&csc->matrix);
  vexo_vector_init(&csc->offset);
}

void vexo_csc_copy(vexo_csc *dst, vexo_csc *src) { *dst = *src; }

void vexo_csc_prev_matrix(vexo_csc *csc, vexo_matrix *m) { vexo_matrix_multiply(&csc->matrix, m); }

void vexo_csc_post_matrix(vexo_csc *csc, vexo_matrix *m) {
  vexo_matrix_transform(m, &csc->offset); // first: m may be csc->matrix
  vexo_matrix product = *m;
  vexo_matrix_multiply(&product, &csc->matrix);
  csc->matrix = product;
}

void vexo_csc_transfrom(vexo_csc *csc, vexo_vector *v) {
  vexo_matrix_transform(&csc->matrix, v);
  vexo_vector_add(v, &csc->offset);
}

void vexo_csc_dump(FILE *f, vexo_csc *csc, char *prefix) {
  if (prefix != nullptr) {
    fprintf(f, "%s CSC:", prefix);
  } else {
    fputs("CSC:", f);
  }
  char csc_prefix[] = "CSC";
  vexo_matrix_dump(f, &csc->matrix, csc_prefix);
  vexo_vector_dump(f, &csc->offset, "Offset");
}

void vexo_ccp_init(vexo_ccp *ccp) {
  *ccp = vexo_ccp{0.0F, 1.0F, 1.0F, 0.0F, {{1.0F, 1.0F, 1.0F}}, {}, {}};
  vexo_matrix_init(&ccp->matrix);
}

int _vexo_csc_rgb_ycbcr(vexo_csc *csc, vexo_cs *ics, vexo_cs *ocs, color_range rgb_range, color_range ycbcr_range,
                        vexo_ccp *ccp, int ibits, int obits) {
  if (!valid_signal(rgb_range, ibits) || !valid_signal(ycbcr_range, obits)) {
    return -1;
  }
  csc->matrix = scale_matrix(ycbcr_range, obits);
  multiply_in(csc, hsc_matrix(*ccp));
  multiply_in(csc, rgb_ypbpr(*ocs));
  multiply_in(csc, gain_matrix(*ccp));
  vexo_matrix m;
  if (vexo_cs_chad_transform(&m, ocs, ics) != 0) {
    return -1;
  }
  multiply_in(csc, m);
  between_codes(csc, Signal{rgb_range, ibits, offset_codes(*ccp, rgb_range, ibits)},
                Signal{ycbcr_range, obits, brightness_codes(*ccp, ycbcr_range, obits)});
  return 0;
}

int _vexo_csc_ycbcr_rgb(vexo_csc *csc, vexo_cs *ics, vexo_cs *ocs, color_range ycbcr_range, color_range rgb_range,
                        vexo_ccp *ccp, int ibits, int obits) {
  if (!valid_signal(ycbcr_range, ibits) || !valid_signal(rgb_range, obits)) {
    return -1;
  }
  csc->matrix = scale_matrix(rgb_range, obits);
  multiply_in(csc, gain_matrix(*ccp));
  vexo_matrix m;
  if (vexo_cs_chad_transform(&m, ocs, ics) != 0) {
    return -1;
  }
  multiply_in(csc, m);
  const vexo_matrix encode = rgb_ypbpr(*ics);
  vexo_matrix_invert(&m, &encode); // leaves m as it is for a colour space without a green weight
  multiply_in(csc, m);
  multiply_in(csc, hsc_matrix(*ccp));
  between_codes(csc, Signal{ycbcr_range, ibits, brightness_codes(*ccp, ycbcr_range, ibits)},
                Signal{rgb_range, obits, offset_codes(*ccp, rgb_range, obits)});
  return 0;
}

int _vexo_csc_rgb_rgb(vexo_csc *csc, vexo_cs *ics, vexo_cs *ocs, color_range src_range, color_range dst_range,
                      vexo_ccp *ccp, int ibits, int obits) {
  vexo_csc first;
  vexo_ccp neutral;
  vexo_ccp_init(&neutral);
  if (_vexo_csc_rgb_ycbcr(&first, ics, ocs, src_range, YCBCR_FULL_RANGE, ccp, ibits, obits) != 0 ||
      _vexo_csc_ycbcr_rgb(csc, ocs, ocs, YCBCR_FULL_RANGE, dst_range, &neutral, obits, obits) != 0) {
    return -1;
  }
  follow(csc, first);
  return 0;
}

int _vexo_csc_ycbcr_ycbcr(vexo_csc *csc, vexo_cs *ics, vexo_cs *ocs, color_range src_range, color_range dst_range,
                          vexo_ccp *ccp, int ibits, int obits) {
  vexo_csc first;
  vexo_ccp neutral;
  vexo_ccp_init(&neutral);
  if (_vexo_csc_ycbcr_rgb(&first, ics, ocs, src_range, RGB_VIDEO_RANGE, ccp, ibits, obits) != 0 ||
      _vexo_csc_rgb_ycbcr(csc, ocs, ocs, RGB_VIDEO_RANGE, dst_range, &neutral, obits, obits) != 0) {
    return -1;
  }
  follow(csc, first);
  return 0;
}

int vexo_csc_rgb_ycbcr(vexo_csc *csc, vexo_cs *cs, color_range rgb_range, color_range ycbcr_range, vexo_ccp *ccp,
                       int nbits) {
  return _vexo_csc_rgb_ycbcr(csc, cs, cs, rgb_range, ycbcr_range, ccp, nbits, nbits);
}

int vexo_csc_ycbcr_rgb(vexo_csc *csc, vexo_cs *cs, color_range ycbcr_range, color_range rgb_range, vexo_ccp *ccp,
                       int nbits) {
  return _vexo_csc_ycbcr_rgb(csc, cs, cs, ycbcr_range, rgb_range, ccp, nbits, nbits);
}

int vexo_csc_rgb_rgb(vexo_csc *csc, vexo_cs *cs, color_range src_range, color_range dst_range, vexo_ccp *ccp,
                     int nbits) {
  return _vexo_csc_rgb_rgb(csc, cs, cs, src_range, dst_range, ccp, nbits, nbits);
}

int vexo_csc_ycbcr_ycbcr(vexo_csc *csc, vexo_cs *cs, color_range src_range, color_range dst_range, vexo_ccp *ccp,
                         int nbits) {
  return _vexo_csc_ycbcr_ycbcr(csc, cs, cs, src_range, dst_range, ccp, nbits, nbits);
}

int vexo_csc_rgb_ycbcr2(vexo_csc *csc, vexo_cs *cs, color_range rgb_range, color_range ycbcr_range, vexo_ccp *ccp,
                        int nbits, swap_in swap_colons, swap_out swap_rows) {
  return build_swapped(vexo_csc_rgb_ycbcr, csc, cs, rgb_range, ycbcr_range, ccp, nbits, swap_colons, swap_rows);
}

int vexo_csc_ycbcr_rgb2(vexo_csc *csc, vexo_cs *cs, color_range ycbcr_range, color_range rgb_range, vexo_ccp *ccp,
                        int nbits, swap_in swap_colons, swap_out swap_rows) {
  return build_swapped(vexo_csc_ycbcr_rgb, csc, cs, ycbcr_range, rgb_range, ccp, nbits, swap_colons, swap_rows);
}

int vexo_csc_rgb_rgb2(vexo_csc *csc, vexo_cs *cs, color_range src_range, color_range dst_range, vexo_ccp *ccp,
                      int nbits, swap_in swap_colons, swap_out swap_rows) {
  return build_swapped(vexo_csc_rgb_rgb, csc, cs, src_range, dst_range, ccp, nbits, swap_colons, swap_rows);
}

int vexo_csc_ycbcr_ycbcr2(vexo_csc *csc, vexo_cs *cs, color_range src_range, color_range dst_range, vexo_ccp *ccp,
                          int nbits, swap_in swap_colons, swap_out swap_rows) {
  return build_swapped(vexo_csc_ycbcr_ycbcr, csc, cs, src_range, dst_range, ccp, nbits, swap_colons, swap_rows);
}

int vexo_csc_gbr_ycbcr(vexo_csc *csc, vexo_cs *cs, color_range rgb_range, color_range ycbcr_range, vexo_ccp *ccp,
                       int nbits) {
  return vexo_csc_rgb_ycbcr2(csc, cs, rgb_range, ycbcr_range, ccp, nbits, SWAP_IN_GBR, SWAP_OUT_YCBCR);
}

int vexo_csc_ycbcr_gbr(vexo_csc *csc, vexo_cs *cs, color_range ycbcr_range, color_range rgb_range, vexo_ccp *ccp,
                       int nbits) {
  return vexo_csc_ycbcr_rgb2(csc, cs, ycbcr_range, rgb_range, ccp, nbits, SWAP_IN_YCBCR, SWAP_OUT_GBR);
}

int vexo_csc_cbycr_rgb(vexo_csc *csc, vexo_cs *cs, color_range ycbcr_range, color_range rgb_range, vexo_ccp *ccp,
                       int nbits) {
  return vexo_csc_ycbcr_rgb2(csc, cs, ycbcr_range, rgb_range, ccp, nbits, SWAP_IN_CBYCR, SWAP_OUT_RGB);
}

int vexo_csc_rgb_cbycr(vexo_csc *csc, vexo_cs *cs, color_range rgb_range, color_range ycbcr_range, vexo_ccp *ccp,
                       int nbits) {
  return vexo_csc_rgb_ycbcr2(csc, cs, rgb_range, ycbcr_range, ccp, nbits, SWAP_IN_RGB, SWAP_OUT_CBYCR);
}

int vexo_csc_crycb_rgb(vexo_csc *csc, vexo_cs *cs, color_range ycbcr_range, color_range rgb_range, vexo_ccp *ccp,
                       int nbits) {
  return vexo_csc_ycbcr_rgb2(csc, cs, ycbcr_range, rgb_range, ccp, nbits, SWAP_IN_CRYCB, SWAP_OUT_RGB);
}

int vexo_csc_rgb_crycb(vexo_csc *csc, vexo_cs *cs, color_range rgb_range, color_range ycbcr_range, vexo_ccp *ccp,
                       int nbits) {
  return vexo_csc_rgb_ycbcr2(csc, cs, rgb_range, ycbcr_range, ccp, nbits, SWAP_IN_RGB, SWAP_OUT_CRYCB);
}

int vexo_csc_gbr_gbr(vexo_csc *csc, vexo_cs *cs, color_range src_range, color_range dst_range, vexo_ccp *ccp,
                     int nbits) {
  return vexo_csc_rgb_rgb2(csc, cs, src_range, dst_range, ccp, nbits, SWAP_IN_GBR, SWAP_OUT_GBR);
}

int vexo_csc_bgr_rgb(vexo_csc *csc, vexo_cs *cs, color_range src_range, color_range dst_range, vexo_ccp *ccp,
                     int nbits) {
  return vexo_csc_rgb_rgb2(csc, cs, src_range, dst_range, ccp, nbits, SWAP_IN_BGR, SWAP_OUT_RGB);
}

int vexo_csc_float_reg(vexo_csc *csc, vexo_csc_reg *reg) {
  for (int i = 0; i < 3; i++) {
    for (int j = 0; j < 3; j++) {
      reg->gain[i][j] = register_of(csc->matrix.d[i][j] * 2048.0F);
    }
    reg->offset[i] = register_of(csc->offset.d[i] * 4.0F);
    reg->clip_max[i] = 0x3ff;
    reg->clip_min[i] = 0;
  }
  return 0;
}

void vexo_csc_reg_dump(FILE *f, vexo_csc_reg *reg, char *prefix) {
  for (int i = 0; i < 3; i++) {
    for (int j = 0; j < 3; j++) {
      fprintf(f, "%s: gain[%d][%d] = 0x%04x\n", prefix, i, j, static_cast<unsigned>(reg->gain[i][j]));
    }
  }
  dump_row(f, prefix, "offset", reg->offset);
  dump_row(f, prefix, "max", reg->clip_max);
  dump_row(f, prefix, "min", reg->clip_min);
}
