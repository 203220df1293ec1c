#include "vexo-csc.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "bits.h"
#include "text.h"

namespace {

using V = vexo_vector;
using M = vexo_matrix;
using Builder = int(vexo_csc *, vexo_cs *, color_range, color_range, vexo_ccp *, int);
using FullBuilder = int(vexo_csc *, vexo_cs *, vexo_cs *, color_range, color_range, vexo_ccp *, int, int);
using OrderedBuilder = int(vexo_csc *, vexo_cs *, color_range, color_range, vexo_ccp *, int, swap_in, swap_out);

FullBuilder *const kFullBuilders[] = {_vexo_csc_rgb_ycbcr, _vexo_csc_ycbcr_rgb, _vexo_csc_rgb_rgb,
                                      _vexo_csc_ycbcr_ycbcr};
OrderedBuilder *const kOrderedBuilders[] = {vexo_csc_rgb_ycbcr2, vexo_csc_ycbcr_rgb2, vexo_csc_rgb_rgb2,
                                            vexo_csc_ycbcr_ycbcr2};
enum { kEncode, kDecode, kRgb, kYcbcr }; // their indices

const V kD65 = {{0.3127F, 0.3290F, 0.3583F}};
const M kNpm709 = {{{0.4124F, 0.3576F, 0.1805F}, {0.2126F, 0.7152F, 0.0722F}, {0.0193F, 0.1192F, 0.9505F}}};
const M kNpmP3 = {{{0.4452F, 0.2771F, 0.1723F}, {0.2095F, 0.7216F, 0.0689F}, {0, 0.0471F, 0.9074F}}};
vexo_cs bt709 = {{}, {}, {}, {{0.3125F, 0.328125F, 0.359375F}}, kNpm709};
vexo_cs dci_p3 = {{}, {}, {}, {{0.314F, 0.351F, 0.335F}}, kNpmP3};

vexo_ccp neutral() {
  vexo_ccp ccp;
  vexo_ccp_init(&ccp);
  return ccp;
}

vexo_csc build(int kind, color_range src, color_range dst, vexo_ccp ccp = neutral(), int ibits = 8, int obits = 8,
               vexo_cs *ics = &bt709, vexo_cs *ocs = &bt709) {
  vexo_csc csc;
  EXPECT_EQ(kFullBuilders[kind](&csc, ics, ocs, src, dst, &ccp, ibits, obits), 0);
  return csc;
}

V apply(vexo_csc csc, V v) {
  vexo_csc_transfrom(&csc, &v);
  return v;
}

V rounded(V v) { return {{std::round(v.d[0]), std::round(v.d[1]), std::round(v.d[2])}}; }

float distance(const V &a, const V &b) {
  return std::max({std::abs(a.d[0] - b.d[0]), std::abs(a.d[1] - b.d[1]), std::abs(a.d[2] - b.d[2])});
}

const struct {
  float kr, kb;
  float cb_divisor, cr_divisor; // Cb = (B - Y) / cb_divisor, Cr = (R - Y) / cr_divisor
  float level;                  // of the bars, as a fraction of white
  float bars[7 * 3];            // white, yellow, cyan, green, magenta, red, blue in 10-bit codes
} kStandards[] = {
    // BT.601, bars of BT.801
    {0.299F, 0.114F, 1.772F, 1.402F, 1, {940, 512, 512, 840, 64,  585, 678, 663, 64,  578, 215,
                                         137, 426, 809, 887, 326, 361, 960, 164, 960, 439}},
    // BT.709, bars of SMPTE RP 219
    {0.2126F, 0.0722F, 1.8556F, 1.5748F, 0.75F, {721, 512, 512, 674, 176, 543, 581, 589, 176, 534, 253,
                                                 207, 251, 771, 817, 204, 435, 848, 111, 848, 481}},
    // BT.2020, bars of BT.2111
    {0.2627F, 0.0593F, 1.8814F, 1.4746F, 0.75F, {721, 512, 512, 682, 176, 539, 548, 606, 176, 509, 270,
                                                 203, 276, 754, 821, 237, 418, 848, 103, 848, 485}}};

TEST(Csc, PublishedMatricesAndColourBars) {
  for (const auto &s : kStandards) {
    const float kg = 1 - s.kr - s.kb;
    vexo_cs cs = {{}, {}, {}, kD65, {{{1, 0, 0}, {s.kr, kg, s.kb}, {0, 0, 1}}}};
    const vexo_csc full = build(kEncode, RGB_GRAPHIC_RANGE, YCBCR_FULL_RANGE, neutral(), 8, 8, &cs, &cs);
    const V published[] = {{{s.kr, kg, s.kb}},
                           {{-s.kr / s.cb_divisor, -kg / s.cb_divisor, 0.5F}},
                           {{0.5F, -kg / s.cr_divisor, -s.kb / s.cr_divisor}}};
    for (int i = 0; i < 9; i++) {
      EXPECT_NEAR(full.matrix.d[i / 3][i % 3], published[i / 3].d[i % 3], 1e-6F);
    }
    const vexo_csc encode = build(kEncode, RGB_VIDEO_RANGE, YCBCR_VIDEO_RANGE, neutral(), 10, 10, &cs, &cs);
    const vexo_csc decode = build(kDecode, YCBCR_VIDEO_RANGE, RGB_VIDEO_RANGE, neutral(), 10, 10, &cs, &cs);
    const float on = 64 + 876 * s.level;
    const float *code = s.bars;
    for (int i = 0; i < 7; i++, code += 3) {
      const V rgb = {{(i & 2) != 0 ? 64 : on, i < 4 ? on : 64, (i & 1) != 0 ? 64 : on}};
      const V bar = {{code[0], code[1], code[2]}};
      EXPECT_EQ(bits_of(rounded(apply(encode, rgb))), bits_of(bar)) << s.kr << " bar " << i;
      EXPECT_LE(distance(apply(decode, bar), rgb), 1.5F) << s.kr << " bar " << i;
    }
  }
}

// Codes of black, white, 20 % gray, and the ends of Cb and Cr.
const struct {
  color_range ycbcr, rgb;
  int nbits;
  float black, white, gray, low, high;
} kRanges[] = {
    {YCBCR_VIDEO_RANGE, RGB_VIDEO_RANGE, 8, 16, 235, 60, 16, 240},
    {YCBCR_VIDEO_RANGE, RGB_VIDEO_RANGE, 10, 64, 940, 239, 64, 960},
    {YCBCR_FULL_RANGE, RGB_GRAPHIC_RANGE, 8, 0, 255, 51, 0.5F, 255.5F},
    {YCBCR_FULL_RANGE, RGB_GRAPHIC_RANGE, 10, 0, 1023, 205, 0.5F, 1023.5F},
    {YCBCR_EXTENDED_RANGE, RGB_EXTENDED_RANGE, 8, 16, 254, 64, 6.28F, 249.72F},
    {YCBCR_EXTENDED_RANGE, RGB_EXTENDED_RANGE, 10, 64, 1019, 255, 23.6F, 1000.4F},
    {YCBCR_SMPTE_FULL_RANGE, RGB_SMPTE_FULL_RANGE, 8, 1, 254, 52, -1.39F, 257.39F},
    {YCBCR_SMPTE_FULL_RANGE, RGB_SMPTE_FULL_RANGE, 10, 4, 1019, 207, -7.09F, 1031.09F},
};

TEST(Csc, EveryRangeAtEveryDepth) {
  for (const auto &r : kRanges) {
    SCOPED_TRACE(testing::Message() << "ranges " << r.ycbcr << " and " << r.rgb << " at " << r.nbits << " bits");
    const vexo_csc encode = build(kEncode, RGB_GRAPHIC_RANGE, r.ycbcr, neutral(), 8, r.nbits);
    const vexo_csc decode = build(kDecode, YCBCR_FULL_RANGE, r.rgb, neutral(), 8, r.nbits);
    const float centre = std::ldexp(1.0F, r.nbits - 1);
    const float grays[][2] = {{0, r.black}, {255, r.white}, {51, r.gray}};
    for (const auto &[in, out] : grays) {
      EXPECT_EQ(bits_of(rounded(apply(encode, {{in, in, in}}))), bits_of(V{{out, centre, centre}}));
      EXPECT_EQ(bits_of(rounded(apply(decode, {{in, 128, 128}}))), bits_of(V{{out, out, out}}));
    }
    EXPECT_NEAR(apply(encode, {{0, 0, 255}}).d[1], r.high, 0.02F);
    EXPECT_NEAR(apply(encode, {{255, 255, 0}}).d[1], r.low, 0.02F);
    EXPECT_NEAR(apply(encode, {{255, 0, 0}}).d[2], r.high, 0.02F);
    EXPECT_NEAR(apply(encode, {{0, 255, 255}}).d[2], r.low, 0.02F);
  }
}

vexo_ccp strong_controls() { return {0.3F, 1.2F, 0.9F, -0.04F, {{1.05F, 0.95F, 1.1F}}, {{0.02F, -0.01F, 0.03F}}, {}}; }

TEST(Csc, ControlsActWhereTheyBelong) {
  const auto encode = [](vexo_ccp ccp, V v) {
    return apply(build(kEncode, RGB_GRAPHIC_RANGE, YCBCR_FULL_RANGE, ccp), v);
  };
  const auto decode = [](vexo_ccp ccp, V v) {
    return apply(build(kDecode, YCBCR_FULL_RANGE, RGB_GRAPHIC_RANGE, ccp), v);
  };
  vexo_ccp turn = neutral();
  turn.hue = 1.57079633F; // Pb takes Pr, Pr takes -Pb
  const V red = encode(neutral(), {{255, 0, 0}});
  EXPECT_LE(distance(encode(turn, {{255, 0, 0}}), {{red.d[0], red.d[2], 256 - red.d[1]}}), 0.001F);

  const vexo_ccp mono = {0, 0, 2, 0.1F, {{1, 1, 1}}, {}, {}}; // decoding does not invert it, and scales the brightness
  EXPECT_LE(distance(decode(mono, {{50, 90, 200}}), {{151, 151, 151}}), 0.001F);
  EXPECT_LE(distance(encode(mono, {{50, 50, 50}}), {{125.5F, 128, 128}}), 0.001F);

  vexo_ccp gain = neutral(); // offset comes before gain when encoding, after it when decoding
  gain.gain = {{0.5F, 1, 2}};
  gain.offset = {{0.2F, 0, 0}};
  EXPECT_LE(distance(decode(gain, {{100, 128, 128}}), {{101, 100, 200}}), 0.001F);
  EXPECT_LE(distance(encode(gain, {{100, 40, 10}}), encode(neutral(), {{75.5F, 40, 20}})), 0.001F);
}

// Each letter names the component of R G B (Y Cb Cr) at its position.
const struct {
  swap_in in, in_ycbcr;
  swap_out out, out_ycbcr;
  const char *letters;
} kOrders[] = {{SWAP_IN_RGB, SWAP_IN_YCBCR, SWAP_OUT_RGB, SWAP_OUT_YCBCR, "RGB"},
               {SWAP_IN_BGR, SWAP_IN_CRCBY, SWAP_OUT_BGR, SWAP_OUT_CRCBY, "BGR"},
               {SWAP_IN_RBG, SWAP_IN_YCRCB, SWAP_OUT_RBG, SWAP_OUT_YCRCB, "RBG"},
               {SWAP_IN_GRB, SWAP_IN_CBYCR, SWAP_OUT_GRB, SWAP_OUT_CBYCR, "GRB"},
               {SWAP_IN_GBR, SWAP_IN_CBCRY, SWAP_OUT_GBR, SWAP_OUT_CBCRY, "GBR"},
               {SWAP_IN_BRG, SWAP_IN_CRYCB, SWAP_OUT_BRG, SWAP_OUT_CRYCB, "BRG"}};

V in_order(const V &v, const char *letters) {
  const std::string rgb = "RGB";
  return {{v.d[rgb.find(letters[0])], v.d[rgb.find(letters[1])], v.d[rgb.find(letters[2])]}};
}

// With one component moved at a time, the products of a permuted matrix are exact.
void expect_permuted(const vexo_csc &swapped, const vexo_csc &plain, const char *in, const char *out) {
  for (const V &v : {V{{0, 0, 0}}, V{{100, 0, 0}}, V{{0, 100, 0}}, V{{0, 0, 100}}}) {
    EXPECT_EQ(bits_of(apply(swapped, in_order(v, in))), bits_of(in_order(apply(plain, v), out))) << in << " " << out;
  }
}

TEST(Csc, ComponentOrders) {
  vexo_ccp ccp = strong_controls();
  vexo_csc swapped;
  for (int kind = 0; kind < 4; kind++) {
    const vexo_csc plain = build(kind, RGB_VIDEO_RANGE, YCBCR_FULL_RANGE, ccp, 12, 12);
    for (const auto &in : kOrders) {
      EXPECT_EQ(static_cast<int>(in.in), static_cast<int>(in.in_ycbcr));
      EXPECT_EQ(static_cast<int>(in.out), static_cast<int>(in.out_ycbcr));
      for (const auto &out : kOrders) {
        EXPECT_EQ(kOrderedBuilders[kind](&swapped, &bt709, RGB_VIDEO_RANGE, YCBCR_FULL_RANGE, &ccp, 12, in.in, out.out),
                  0);
        expect_permuted(swapped, plain, in.letters, out.letters);
      }
    }
  }
  const struct {
    Builder *ordered;
    int kind;
    const char *in, *out;
  } fixed[] = {{vexo_csc_gbr_ycbcr, kEncode, "GBR", "RGB"}, {vexo_csc_ycbcr_gbr, kDecode, "RGB", "GBR"},
               {vexo_csc_cbycr_rgb, kDecode, "GRB", "RGB"}, {vexo_csc_rgb_cbycr, kEncode, "RGB", "GRB"},
               {vexo_csc_crycb_rgb, kDecode, "BRG", "RGB"}, {vexo_csc_rgb_crycb, kEncode, "RGB", "BRG"},
               {vexo_csc_gbr_gbr, kRgb, "GBR", "GBR"},      {vexo_csc_bgr_rgb, kRgb, "BGR", "RGB"}};
  for (const auto &f : fixed) {
    EXPECT_EQ(f.ordered(&swapped, &bt709, RGB_VIDEO_RANGE, YCBCR_FULL_RANGE, &ccp, 12), 0);
    expect_permuted(swapped, build(f.kind, RGB_VIDEO_RANGE, YCBCR_FULL_RANGE, ccp, 12, 12), f.in, f.out);
  }
}

// The bits of all ranges and depths 8 to 16, as FNV-1a over words, from an evaluation outside the library with one
// rounding an operation.
TEST(Csc, EveryBitOfTheBuilders) {
  const uint64_t digests[] = {0xd62caef7c7805ae5, 0x9a9b8bf2178998a1, 0xa2beeba6938f27a1, 0x45567343bb811c57};
  for (int kind = 0; kind < 4; kind++) {
    std::vector<uint32_t> words;
    for (int i = 0; i < 8 * 8 * 9 * 9; i++) {
      const vexo_csc csc = build(kind, static_cast<color_range>(i / 648), static_cast<color_range>(i / 81 % 8),
                                 strong_controls(), 8 + i / 9 % 9, 8 + i % 9, &bt709, &dci_p3);
      const std::vector<uint32_t> more = bits_of(csc);
      words.insert(words.end(), more.begin(), more.end());
    }
    EXPECT_EQ(digest(words), digests[kind]) << kind;
  }
}

TEST(Csc, RefusesWhatIsNotDefined) {
  vexo_cs singular = {};
  vexo_ccp ccp = neutral();
  const color_range full = YCBCR_FULL_RANGE;
  const int refused[][4] = {{-1, 0, 8, 8}, {8, 0, 8, 8},  {0, -1, 8, 8}, {0, 8, 8, 8},   {0, 0, 7, 8},
                            {0, 0, 8, 7},  {0, 0, 31, 8}, {0, 0, 8, 31}, {0, 0, -60, 8}, {0, 0, 8, 1000}};
  for (int kind = 0; kind < 4; kind++) {
    const vexo_csc before = build(kind, full, full, ccp, 30, 30);
    vexo_csc csc = before;
    for (const auto &[src, dst, ibits, obits] : refused) {
      EXPECT_EQ(kFullBuilders[kind](&csc, &bt709, &bt709, static_cast<color_range>(src), static_cast<color_range>(dst),
                                    &ccp, ibits, obits),
                -1);
    }
    for (int order : {-1, 6, 1 << 30}) {
      const auto ordered = kOrderedBuilders[kind];
      EXPECT_EQ(ordered(&csc, &bt709, full, full, &ccp, 8, static_cast<swap_in>(order), SWAP_OUT_BGR), -1);
      EXPECT_EQ(ordered(&csc, &bt709, full, full, &ccp, 8, SWAP_IN_BGR, static_cast<swap_out>(order)), -1);
    }
    EXPECT_EQ(bits_of(csc), bits_of(before));
    EXPECT_EQ(kOrderedBuilders[kind](&csc, &singular, full, full, &ccp, 8, SWAP_IN_BGR, SWAP_OUT_BGR), -1);
  }
}

TEST(Csc, MatricesBeforeAndAfter) {
  vexo_csc csc = {{{{1, 2, 0}, {0, 1, 3}, {4, 0, 1}}}, {{5, 6, 7}}};
  M m = {{{2, 0, 1}, {0, 3, 0}, {1, 0, 0}}};
  const auto changed = [](void (*change)(vexo_csc *, vexo_matrix *), vexo_csc copy, vexo_matrix *by) {
    change(&copy, by != nullptr ? by : &copy.matrix); // the record's own matrix may be applied to the record
    return bits_of(copy);
  };
  const M square = {{{1, 4, 6}, {12, 1, 6}, {8, 8, 1}}};
  EXPECT_EQ(changed(vexo_csc_prev_matrix, csc, &m),
            bits_of(vexo_csc{{{{2, 6, 1}, {3, 3, 0}, {9, 0, 4}}}, {{5, 6, 7}}}));
  EXPECT_EQ(changed(vexo_csc_post_matrix, csc, &m),
            bits_of(vexo_csc{{{{6, 4, 1}, {0, 3, 9}, {1, 2, 0}}}, {{17, 18, 5}}}));
  EXPECT_EQ(changed(vexo_csc_prev_matrix, csc, nullptr), bits_of(vexo_csc{square, {{5, 6, 7}}}));
  EXPECT_EQ(changed(vexo_csc_post_matrix, csc, nullptr), bits_of(vexo_csc{square, {{17, 27, 27}}}));
  vexo_csc copy;
  vexo_csc_copy(&copy, &csc);
  EXPECT_EQ(bits_of(apply(copy, {{1, 10, 100}})), bits_of(V{{26, 316, 111}}));
}

TEST(Csc, DumpUnderAnyLocale) {
  in_both_locales([] {
    vexo_csc csc;
    vexo_csc_init(&csc);
    csc.matrix.d[1][2] = -0.5F;
    csc.offset.d[2] = 128.25F;
    const std::string body = dump_heading("CSC", "Matrix", &csc.matrix) +
                             "\tm[0][0] = 1.0000000000\tm[0][1] = 0.0000000000\tm[0][2] = 0.0000000000\t\n"
                             "\tm[1][0] = 0.0000000000\tm[1][1] = 1.0000000000\tm[1][2] = -0.5000000000\t\n"
                             "\tm[2][0] = 0.0000000000\tm[2][1] = 0.0000000000\tm[2][2] = 1.0000000000\t\n" +
                             dump_heading("Offset", "Vector", &csc.offset) +
                             "\t[0.0000000000\t0.0000000000\t128.2500000000]\n";
    char name[] = "Main";
    EXPECT_EQ(printed([&](FILE *f) { vexo_csc_dump(f, &csc, name); }), "Main CSC:" + body);
    EXPECT_EQ(printed([&](FILE *f) { vexo_csc_dump(f, &csc, nullptr); }), "CSC:" + body);
  });
}

TEST(CscRegisters, RoundHalfUpwardAndSaturate) {
  const float inf = std::numeric_limits<float>::infinity();
  const struct {
    float steps;
    short code;
  } cases[] = {{0.5F, 1},         {-0.5F, 0},     {-1.5F, -1},    {-1.51F, -2},      {8191, 8191},    {8192, 8191},
               {-8191.5F, -8191}, {-8192, -8192}, {-8193, -8192}, {65536, 8191},     {-65536, -8192}, {1e30F, 8191},
               {-1e30F, -8192},   {inf, 8191},    {-inf, -8192},  {std::nanf(""), 0}};
  for (const auto &c : cases) {
    for (int i = 0; i < 12; i++) { // one register at a time
      vexo_csc csc = {};
      (i < 9 ? csc.matrix.d[i / 3][i % 3] : csc.offset.d[i - 9]) = c.steps / (i < 9 ? 2048.0F : 4.0F);
      vexo_csc_reg expected = {{}, {}, {1023, 1023, 1023}, {}};
      (i < 9 ? expected.gain[i / 3][i % 3] : expected.offset[i - 9]) = c.code;
      vexo_csc_reg reg;
      EXPECT_EQ(vexo_csc_float_reg(&csc, &reg), 0);
      EXPECT_EQ(std::memcmp(&reg, &expected, sizeof reg), 0) << c.steps << " in register " << i;
    }
  }
}

TEST(CscRegisters, Dump) {
  vexo_csc_reg reg = {{{2048, -206, 374}, {0, 1, 2}, {3, 4, 8191}}, {64, 512, -992}, {1023, 1022, 1021}, {0, 7, -1}};
  char name[] = "csc0";
  EXPECT_EQ(printed([&](FILE *f) { vexo_csc_reg_dump(f, &reg, name); }),
            "csc0: gain[0][0] = 0x0800\ncsc0: gain[0][1] = 0xffffff32\ncsc0: gain[0][2] = 0x0176\n"
            "csc0: gain[1][0] = 0x0000\ncsc0: gain[1][1] = 0x0001\ncsc0: gain[1][2] = 0x0002\n"
            "csc0: gain[2][0] = 0x0003\ncsc0: gain[2][1] = 0x0004\ncsc0: gain[2][2] = 0x1fff\n"
            "csc0: offset[0] = 0x0040\ncsc0: offset[1] = 0x0200\ncsc0: offset[2] = 0xfffffc20\n"
            "csc0: max[0] = 0x03ff\ncsc0: max[1] = 0x03fe\ncsc0: max[2] = 0x03fd\n"
            "csc0: min[0] = 0x0000\ncsc0: min[1] = 0x0007\ncsc0: min[2] = 0xffffffff\n");
}

} // namespace
