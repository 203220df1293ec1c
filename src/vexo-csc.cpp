// Video colour space conversion. Matrices and vectors are single precision; spans and black levels of the signal
// ranges and the sine and cosine of the hue are formed in double and rounded once.
#include "vexo-csc.h"

#include <algorithm>
#include <cmath>

#include "base/exact.h"

namespace {

enum class Kind { kYCbCr, kRgb, kNone };

// A signal range at u = 2^(nbits - 8): the first component spans peak u - cut codes, the others
// chroma_num / chroma_den of that; black lies at (black u, black_rest u, black_rest u).
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

// By the value of color_range; anything else has the identity as its scale, and black at zero.
const RangeRule kRangeRules[kRanges + 1] = {
    {Kind::kYCbCr, 219.0, 0.0, 224.0, 219.0, 16.0, 128.0}, // YCBCR_VIDEO_RANGE
    {Kind::kYCbCr, 256.0, 1.0, 1.0, 1.0, 0.0, 128.0},      // YCBCR_FULL_RANGE
    {Kind::kRgb, 256.0, 1.0, 1.0, 1.0, 0.0, 0.0},          // RGB_GRAPHIC_RANGE
    {Kind::kRgb, 219.0, 0.0, 1.0, 1.0, 16.0, 16.0},        // RGB_VIDEO_RANGE
    {Kind::kYCbCr, 239.0, 1.0, 224.0, 219.0, 16.0, 128.0}, // YCBCR_EXTENDED_RANGE
    {Kind::kYCbCr, 254.0, 1.0, 224.0, 219.0, 1.0, 128.0},  // YCBCR_SMPTE_FULL_RANGE
    {Kind::kRgb, 239.0, 1.0, 1.0, 1.0, 16.0, 16.0},        // RGB_EXTENDED_RANGE
    {Kind::kRgb, 254.0, 1.0, 1.0, 1.0, 1.0, 1.0},          // RGB_SMPTE_FULL_RANGE
    {Kind::kNone, 0.0, -1.0, 1.0, 1.0, 0.0, 0.0},
};

const RangeRule &rule_of(color_range range) {
  return kRangeRules[range >= 0 && range < kRanges ? static_cast<int>(range) : kRanges];
}

bool valid_signal(color_range range, int nbits) {
  return rule_of(range).kind != Kind::kNone && nbits >= 8 && nbits <= 30;
}

double unit(int nbits) { return static_cast<double>(1 << (nbits - 8)); }

// The codes from black to white of the first component.
float comp1_scale(color_range range, int nbits) {
  const RangeRule &rule = rule_of(range);
  return static_cast<float>(rule.peak * unit(nbits) - rule.cut);
}

// The same for a control that acts on one kind of signal only.
float control_scale(Kind kind, color_range range, int nbits) {
  return rule_of(range).kind == kind ? comp1_scale(range, nbits) : 0.0F;
}

void vexo_csc_scale_matrix(vexo_matrix *m, color_range range, int nbits) {
  const RangeRule &rule = rule_of(range);
  const float scale = comp1_scale(range, nbits);
  vexo_matrix_init(m);
  m->d[0][0] = scale;
  m->d[1][1] = static_cast<float>(static_cast<double>(scale) * rule.chroma_num / rule.chroma_den);
  m->d[2][2] = m->d[1][1];
}

void vexo_csc_black_level_vector(vexo_vector *b, color_range range, int nbits) {
  const RangeRule &rule = rule_of(range);
  const float rest = static_cast<float>(rule.black_rest * unit(nbits));
  *b = vexo_vector{{static_cast<float>(rule.black * unit(nbits)), rest, rest}};
}

void vexo_ccp_hsc_matrix(vexo_ccp *ccp, vexo_matrix *m) {
  const float cs = ccp->contrast * ccp->saturation;
  double sine;
  double cosine;
  sincos(static_cast<double>(ccp->hue), &sine, &cosine);
  vexo_matrix_init(m);
  m->d[0][0] = ccp->contrast;
  m->d[1][1] = static_cast<float>(static_cast<double>(cs) * cosine);
  m->d[2][2] = m->d[1][1];
  m->d[1][2] = static_cast<float>(static_cast<double>(cs) * sine);
  m->d[2][1] = -m->d[1][2];
}

void vexo_ccp_gain_matrix(vexo_ccp *ccp, vexo_matrix *m) {
  vexo_matrix_init(m);
  for (int i = 0; i < 3; i++) {
    m->d[i][i] = ccp->gain.d[i];
  }
}

void vexo_ccp_offset_vector(vexo_ccp *ccp, vexo_vector *v, color_range range, int nbits) {
  *v = ccp->offset;
  vexo_vector_scale(v, control_scale(Kind::kRgb, range, nbits));
}

void vexo_ccp_brightness_vector(vexo_ccp *ccp, vexo_vector *v, color_range range, int nbits) {
  *v = vexo_vector{{ccp->brightness * control_scale(Kind::kYCbCr, range, nbits), 0.0F, 0.0F}};
}

// Normalised R'G'B' to Y'PbPr: Pb = (B - Y) / (2 (1 - Kb)), Pr = (R - Y) / (2 (1 - Kr)).
void rgb01_ypbpr(vexo_vector *luma, vexo_matrix *m) {
  vexo_vector b = {{0.0F, 0.0F, 1.0F}};
  vexo_vector r = {{1.0F, 0.0F, 0.0F}};
  vexo_vector_sub(&b, luma);
  vexo_vector_sub(&r, luma);
  const float nb = 0.5F / b.d[2];
  const float nr = 0.5F / r.d[0];
  vexo_vector_scale(&b, nb);
  vexo_vector_scale(&r, nr);
  vexo_matrix_set_row(m, luma, 0);
  vexo_matrix_set_row(m, &b, 1);
  vexo_matrix_set_row(m, &r, 2);
}

// The luma weights of a colour space are the Y row of its matrix.
void luma_matrix(vexo_cs *cs, vexo_matrix *m) {
  vexo_vector luma;
  vexo_matrix_get_row(&cs->npm, &luma, 1);
  rgb01_ypbpr(&luma, m);
}

// One side of a conversion: its coding and the control that shifts it, in codes.
struct Signal {
  color_range range;
  int nbits;
  vexo_vector shift;
};

// Completes a matrix from normalised input to output codes: input codes are shifted and normalised before it, black and
// shift of the output come after it.
void between_codes(vexo_csc *csc, Signal in, Signal out) {
  vexo_matrix scale;
  vexo_matrix normalise;
  vexo_csc_scale_matrix(&scale, in.range, in.nbits);
  vexo_matrix_invert(&normalise, &scale); // spans are never zero
  vexo_csc_prev_matrix(csc, &normalise);

  vexo_vector black;
  vexo_csc_black_level_vector(&black, in.range, in.nbits);
  csc->offset = in.shift;
  vexo_vector_sub(&csc->offset, &black);
  vexo_matrix_transform(&csc->matrix, &csc->offset);
  vexo_csc_black_level_vector(&black, out.range, out.nbits);
  vexo_vector_add(&csc->offset, &black);
  vexo_vector_add(&csc->offset, &out.shift);
}

// c1 becomes c1 after c2.
void vexo_csc_mult(vexo_csc *c1, vexo_csc *c2) {
  vexo_vector t = c2->offset;
  vexo_matrix_transform(&c1->matrix, &t);
  vexo_vector_add(&c1->offset, &t);
  vexo_matrix_multiply(&c1->matrix, &c2->matrix);
}

const int kOrders = 6;

// By the value of swap_in, applied before a conversion, or of swap_out, applied after it.
const vexo_matrix kOrderMatrices[kOrders] = {
    {{{1.0F, 0.0F, 0.0F}, {0.0F, 1.0F, 0.0F}, {0.0F, 0.0F, 1.0F}}},
    {{{0.0F, 0.0F, 1.0F}, {0.0F, 1.0F, 0.0F}, {1.0F, 0.0F, 0.0F}}},
    {{{1.0F, 0.0F, 0.0F}, {0.0F, 0.0F, 1.0F}, {0.0F, 1.0F, 0.0F}}},
    {{{0.0F, 1.0F, 0.0F}, {1.0F, 0.0F, 0.0F}, {0.0F, 0.0F, 1.0F}}},
    {{{0.0F, 0.0F, 1.0F}, {1.0F, 0.0F, 0.0F}, {0.0F, 1.0F, 0.0F}}},
    {{{0.0F, 1.0F, 0.0F}, {0.0F, 0.0F, 1.0F}, {1.0F, 0.0F, 0.0F}}},
};

bool valid_order(int order) { return order >= 0 && order < kOrders; }

void vexo_csc_swap(vexo_csc *csc, swap_in swap_colons, swap_out swap_rows) {
  if (swap_colons != 0) {
    vexo_matrix m = kOrderMatrices[swap_colons];
    vexo_csc_prev_matrix(csc, &m);
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
    vexo_csc_swap(csc, swap_colons, swap_rows);
  }
  return status;
}

const double csc_limit = 0x1fff;

// A register from a value in its steps, halves rounded upward.
short saturated(float value) {
  const double rounded = std::floor(static_cast<double>(value) + 0.5);
  return std::isnan(rounded) ? short{0} : static_cast<short>(std::clamp(rounded, -csc_limit - 1.0, csc_limit));
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
  vexo_csc_scale_matrix(&csc->matrix, ycbcr_range, obits);
  vexo_matrix m;
  vexo_ccp_hsc_matrix(ccp, &m);
  vexo_csc_prev_matrix(csc, &m);
  luma_matrix(ocs, &m);
  vexo_csc_prev_matrix(csc, &m);
  vexo_ccp_gain_matrix(ccp, &m);
  vexo_csc_prev_matrix(csc, &m);
  if (vexo_cs_chad_transform(&m, ocs, ics) != 0) {
    return -1;
  }
  vexo_csc_prev_matrix(csc, &m);

  Signal in = {rgb_range, ibits, {}};
  Signal out = {ycbcr_range, obits, {}};
  vexo_ccp_offset_vector(ccp, &in.shift, rgb_range, ibits);
  vexo_ccp_brightness_vector(ccp, &out.shift, ycbcr_range, obits);
  between_codes(csc, in, out);
  return 0;
}

int _vexo_csc_ycbcr_rgb(vexo_csc *csc, vexo_cs *ics, vexo_cs *ocs, color_range ycbcr_range, color_range rgb_range,
                        vexo_ccp *ccp, int ibits, int obits) {
  if (!valid_signal(ycbcr_range, ibits) || !valid_signal(rgb_range, obits)) {
    return -1;
  }
  vexo_csc_scale_matrix(&csc->matrix, rgb_range, obits);
  vexo_matrix m;
  vexo_ccp_gain_matrix(ccp, &m);
  vexo_csc_prev_matrix(csc, &m);
  if (vexo_cs_chad_transform(&m, ocs, ics) != 0) {
    return -1;
  }
  vexo_csc_prev_matrix(csc, &m);
  vexo_matrix encode;
  luma_matrix(ics, &encode);
  vexo_matrix_invert(&m, &encode); // no colour space with a green weight fails here
  vexo_csc_prev_matrix(csc, &m);
  vexo_ccp_hsc_matrix(ccp, &m);
  vexo_csc_prev_matrix(csc, &m);

  Signal in = {ycbcr_range, ibits, {}};
  Signal out = {rgb_range, obits, {}};
  vexo_ccp_brightness_vector(ccp, &in.shift, ycbcr_range, ibits);
  vexo_ccp_offset_vector(ccp, &out.shift, rgb_range, obits);
  between_codes(csc, in, out);
  return 0;
}

int _vexo_csc_rgb_rgb(vexo_csc *csc, vexo_cs *ics, vexo_cs *ocs, color_range src_range, color_range dst_range,
                      vexo_ccp *ccp, int ibits, int obits) {
  vexo_ccp tmp_ccp;
  vexo_csc tmp_csc;
  vexo_ccp_init(&tmp_ccp);
  if (_vexo_csc_rgb_ycbcr(&tmp_csc, ics, ocs, src_range, YCBCR_FULL_RANGE, ccp, ibits, obits) != 0 ||
      _vexo_csc_ycbcr_rgb(csc, ocs, ocs, YCBCR_FULL_RANGE, dst_range, &tmp_ccp, obits, obits) != 0) {
    return -1;
  }
  vexo_csc_mult(csc, &tmp_csc);
  return 0;
}

int _vexo_csc_ycbcr_ycbcr(vexo_csc *csc, vexo_cs *ics, vexo_cs *ocs, color_range src_range, color_range dst_range,
                          vexo_ccp *ccp, int ibits, int obits) {
  vexo_ccp tmp_ccp;
  vexo_csc tmp_csc;
  vexo_ccp_init(&tmp_ccp);
  if (_vexo_csc_ycbcr_rgb(&tmp_csc, ics, ocs, src_range, RGB_VIDEO_RANGE, ccp, ibits, obits) != 0 ||
      _vexo_csc_rgb_ycbcr(csc, ocs, ocs, RGB_VIDEO_RANGE, dst_range, &tmp_ccp, obits, obits) != 0) {
    return -1;
  }
  vexo_csc_mult(csc, &tmp_csc);
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
      reg->gain[i][j] = saturated(csc->matrix.d[i][j] * 2048.0F);
    }
    reg->offset[i] = saturated(csc->offset.d[i] * 4.0F);
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
