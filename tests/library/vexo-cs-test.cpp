#include "vexo-cs.h"

#include <gtest/gtest.h>

#include <cstring>

#include "bits.h"
#include "text.h"

// Bit patterns were computed outside the library, one rounding an operation.

namespace {

using V = vexo_vector;
using M = vexo_matrix;

float kBt709[4][2] = {{0.64F, 0.33F}, {0.30F, 0.60F}, {0.15F, 0.06F}, {0.3127F, 0.3290F}};
float kBt2020[4][2] = {{0.708F, 0.292F}, {0.170F, 0.797F}, {0.131F, 0.046F}, {0.3127F, 0.3290F}};
float kDciP3[4][2] = {{0.680F, 0.320F}, {0.265F, 0.690F}, {0.150F, 0.060F}, {0.314F, 0.351F}};
float kCollinear[4][2] = {{0.25F, 0.25F}, {0.5F, 0.25F}, {0.75F, 0.25F}, {0.3127F, 0.3290F}};
float kNoWhite[4][2] = {{0.64F, 0.33F}, {0.30F, 0.60F}, {0.15F, 0.06F}, {0.5F, 0.0F}};
V kA = {{1.09850F, 1, 0.35585F}}; // XYZ of the illuminants, ASTM E308
V kD50 = {{0.96422F, 1, 0.82521F}};
V kD65 = {{0.95047F, 1, 1.08883F}};
const M kCollinearColumns = {{{0.25F, 0.5F, 0.75F}, {0.25F, 0.25F, 0.25F}, {0.5F, 0.25F, 0}}};
const M kNpm709 = {{{0x1.a649c8p-2F, 0x1.6e2a9ap-2F, 0x1.719feep-3F},
                    {0x1.b37c18p-3F, 0x1.6e2a9ap-1F, 0x1.27b324p-4F},
                    {0x1.3cb756p-6F, 0x1.e838c2p-4F, 0x1.e6ac2cp-1F}}};

vexo_cs space_of(float data[4][2], int status = 0) {
  vexo_cs cs = {};
  EXPECT_EQ(vexo_cs_init(&cs, data), status);
  return cs;
}

void expect_near(const M &m, const double (&published)[9], double tolerance) {
  for (int i = 0; i < 9; i++) {
    EXPECT_NEAR(static_cast<double>(m.d[i / 3][i % 3]), published[i], tolerance) << i;
  }
}

TEST(ColorSpace, Bt709) {
  vexo_cs cs = space_of(kBt709);
  // z is formed in double precision: in single precision that of the white differs.
  const vexo_cs expected = {{{0.64F, 0.33F, 0x1.eb852p-6F}},
                            {{0.30F, 0.60F, 0x1.99999p-4F}},
                            {{0.15F, 0.06F, 0x1.947ae2p-1F}},
                            {{0.3127F, 0.3290F, 0x1.6ee632p-2F}},
                            kNpm709};
  EXPECT_EQ(bits_of(cs), bits_of(expected));
  expect_near(cs.npm, {0.4124, 0.3576, 0.1805, 0.2126, 0.7152, 0.0722, 0.0193, 0.1192, 0.9505}, 5e-5);
  V white = {{1, 1, 1}};
  vexo_matrix_transform(&cs.npm, &white);
  EXPECT_NEAR(white.d[0], 0.3127F / 0.3290F, 1e-6F);
  EXPECT_NEAR(white.d[1], 1.0F, 1e-6F);
  EXPECT_NEAR(white.d[2], 0.3583F / 0.3290F, 1e-6F);
}

TEST(ColorSpace, SettersLeaveTheMatrix) {
  vexo_cs cs = space_of(kBt709);
  vexo_cs_set_r(&cs, 0.708F, 0.292F);
  vexo_cs_set_g(&cs, 0.170F, 0.797F);
  vexo_cs_set_b(&cs, 0.131F, 0.046F);
  vexo_cs_set_w(&cs, 0.3127F, 0.3290F);
  EXPECT_EQ(bits_of(cs.npm), bits_of(kNpm709));
  EXPECT_EQ(vexo_cs_matrix(&cs, &cs.npm), 0);
  EXPECT_EQ(bits_of(cs), bits_of(space_of(kBt2020)));
}

TEST(ColorSpace, NoMatrixWithoutGamutOrWhite) {
  EXPECT_EQ(bits_of(space_of(kCollinear, -1).npm), bits_of(kCollinearColumns));
  EXPECT_EQ(bits_of(space_of(kNoWhite, -1).npm), bits_of(M{}));
  float neither[4][2] = {{0.25F, 0.25F}, {0.5F, 0.25F}, {0.75F, 0.25F}, {0.5F, 0.0F}};
  EXPECT_EQ(bits_of(space_of(neither, -1).npm), bits_of(kCollinearColumns));
}

TEST(ColorSpace, MeasuredPatchesLoseTheirBlack) {
  const float black[] = {0.5F, 0.25F, 1};
  const float patch[4][3] = {{4.5F, 2.25F, 3}, {2.5F, 4.25F, 3}, {1.5F, 1.25F, 3}, {6.5F, 4.25F, 7}};
  vexo_cs cs = {};
  EXPECT_EQ(vexo_cs_init_XYZ(&cs, patch[0], patch[1], patch[2], patch[3], black), 0);
  const vexo_cs expected = {{{0.5F, 0.25F, 0.25F}},
                            {{0.25F, 0.5F, 0.25F}},
                            {{0.25F, 0.25F, 0.5F}},
                            {{0.375F, 0.25F, 0.375F}}, // XYZ (1.5, 1, 1.5): twice red and twice blue
                            {{{1, 0, 0.5F}, {0.5F, 0, 0.5F}, {0.5F, 0, 1}}}};
  EXPECT_EQ(bits_of(cs), bits_of(expected));
  for (int dark = 0; dark < 4; dark++) {
    const float *p[] = {patch[0], patch[1], patch[2], patch[3]};
    p[dark] = black;
    EXPECT_EQ(vexo_cs_init_XYZ(&cs, p[0], p[1], p[2], p[3], black), -1);
    EXPECT_EQ(bits_of(cs), bits_of(expected));
  }
  EXPECT_EQ(vexo_cs_init_XYZ(&cs, patch[0], patch[0], patch[2], patch[3], black), -1); // two equal primaries
  EXPECT_EQ(bits_of(cs.npm), bits_of(M{{{0.5F, 0.5F, 0.25F}, {0.25F, 0.25F, 0.25F}, {0.25F, 0.25F, 0.5F}}}));
}

TEST(ColorSpace, TransformGoesFromSourceToDestination) {
  vexo_cs bt709 = space_of(kBt709);
  vexo_cs bt2020 = space_of(kBt2020);
  M m;
  EXPECT_EQ(vexo_cs_transform(&m, &bt709, &bt709), 0);
  expect_near(m, {1, 0, 0, 0, 1, 0, 0, 0, 1}, 1e-6);
  EXPECT_EQ(vexo_cs_transform(&m, &bt709, &bt2020), 0);
  const M expected = {{{0x1.413b1ap-1F, 0x1.512f9ap-2F, 0x1.62d238p-5F},
                       {0x1.1b05c8p-4F, 0x1.d6ce02p-1F, 0x1.7451ep-7F},
                       {0x1.0c8eacp-6F, 0x1.68809cp-4F, 0x1.ca8b7cp-1F}}};
  EXPECT_EQ(bits_of(m), bits_of(expected));
  vexo_cs none = {};
  EXPECT_EQ(vexo_cs_transform(&m, &bt709, &none), -1);
  EXPECT_EQ(bits_of(m), bits_of(expected));
}

TEST(ColorSpace, DumpUnderAnyLocale) {
  in_both_locales([] {
    vexo_cs cs = {{{1, 2, 3}}, {{4, 5, 6}}, {{7, 8, 9}}, {{0.5F, 0.25F, 0}}, {{{1, 2, 3}, {4, 5, 6}, {7, 8, 9.5F}}}};
    const std::string body =
        dump_heading("Red Primary", "Vector", &cs.r) + "\t[1.0000000000\t2.0000000000\t3.0000000000]\n" +
        dump_heading("Green Primary", "Vector", &cs.g) + "\t[4.0000000000\t5.0000000000\t6.0000000000]\n" +
        dump_heading("Blue Primary", "Vector", &cs.b) + "\t[7.0000000000\t8.0000000000\t9.0000000000]\n" +
        dump_heading("Reference White", "Vector", &cs.w) + "\t[0.5000000000\t0.2500000000\t0.0000000000]\n" +
        dump_heading("NPM", "Matrix", &cs.npm) +
        "\tm[0][0] = 1.0000000000\tm[0][1] = 2.0000000000\tm[0][2] = 3.0000000000\t\n"
        "\tm[1][0] = 4.0000000000\tm[1][1] = 5.0000000000\tm[1][2] = 6.0000000000\t\n"
        "\tm[2][0] = 7.0000000000\tm[2][1] = 8.0000000000\tm[2][2] = 9.5000000000\t\n";
    char name[] = "Wide";
    for (char *prefix : {name, static_cast<char *>(nullptr)}) {
      EXPECT_EQ(printed([&](FILE *f) { vexo_cs_dump(f, &cs, prefix); }),
                dump_heading(prefix, "Color Space ", &cs) + body);
    }
  });
}

TEST(ColorSpace, ImageHoldsTheChromaticities) {
  vexo_cs cs = space_of(kBt709);
  const std::string image(reinterpret_cast<const char *>(&cs), 48);
  EXPECT_EQ(printed([&](FILE *f) { EXPECT_EQ(vexo_cs_store(f, &cs), 0); }), image);
  for (size_t length = 0; length <= 48; length += 6) {
    vexo_cs loaded = {};
    FILE *in = stream_of(image.substr(0, length));
    EXPECT_EQ(vexo_cs_load(in, &loaded), length < 48 ? -1 : 0);
    std::fclose(in);
    EXPECT_EQ(std::memcmp(&loaded, &cs, length / 12 * 12), 0); // the vectors before the short one
    EXPECT_EQ(bits_of(loaded.npm), bits_of(length < 48 ? M{} : kNpm709));
    char room[49];
    FILE *out = fmemopen(room, length + 1, "wb");
    std::setvbuf(out, nullptr, _IONBF, 0);
    EXPECT_EQ(vexo_cs_store(out, &cs), length < 48 ? -1 : 0);
    std::fclose(out);
  }
  vexo_cs collinear = space_of(kCollinear, -1);
  FILE *f = stream_of(std::string(reinterpret_cast<const char *>(&collinear), 48));
  EXPECT_EQ(vexo_cs_load(f, &cs), -1);
  EXPECT_EQ(bits_of(cs.npm), bits_of(kCollinearColumns));
  std::fclose(f);
}

TEST(Adaptation, PublishedBradfordMatrices) {
  struct {
    V *src, *dst;
    double published[9];
  } cases[] = {{&kD65,
                &kD50,
                {1.0478112, 0.0228866, -0.0501270, 0.0295424, 0.9904844, -0.0170491, -0.0092345, 0.0150436, 0.7521316}},
               {&kA,
                &kD65,
                {0.8446965, -0.1179225, 0.3948108, -0.1366303, 1.1041226, 0.1291718, 0.0798489, -0.1348999, 3.1924009}},
               {&kD65, &kD65, {1, 0, 0, 0, 1, 0, 0, 0, 1}}};
  for (auto &c : cases) {
    M m;
    EXPECT_EQ(vexo_chad_transform(&m, c.src, c.dst), 0);
    expect_near(m, c.published, 2e-6);
    V white = *c.src;
    vexo_matrix_transform(&m, &white);
    for (int i = 0; i < 3; i++) {
      EXPECT_NEAR(white.d[i], c.dst->d[i], 1e-6F);
    }
  }
}

TEST(Adaptation, WhitesCountByChromaticity) {
  V src = {{0.3127F, 0.3290F, 0.3583F}};
  V dst = {{0.3457F, 0.3585F, 0.2958F}};
  V brighter = {{4 * 0.3127F, 4 * 0.3290F, 4 * 0.3583F}};
  const V before = src;
  M m;
  vexo_chad_transform(&m, &src, &dst);
  // One rounding an operation, computed outside the library.
  const M expected = {{{0x1.0c451ep+0F, 0x1.77f5ccp-6F, -0x1.9b2cc4p-5F},
                       {0x1.e56bcap-6F, 0x1.fb1a38p-1F, -0x1.17bcbp-6F},
                       {-0x1.2ee044p-7F, 0x1.ed542p-7F, 0x1.80f5acp-1F}}};
  EXPECT_EQ(bits_of(m), bits_of(expected));
  EXPECT_EQ(bits_of(src), bits_of(before));
  vexo_chad_transform(&m, &brighter, &dst);
  EXPECT_EQ(bits_of(m), bits_of(expected));
}

TEST(Adaptation, TargetIsShownOnNative) {
  vexo_cs bt709 = space_of(kBt709);
  vexo_cs bt2020 = space_of(kBt2020);
  vexo_cs dci_p3 = space_of(kDciP3);
  M m;
  EXPECT_EQ(vexo_cs_chad_transform(&m, &bt2020, &bt709), 0); // ITU-R BT.2087
  expect_near(m, {0.6274, 0.3293, 0.0433, 0.0691, 0.9195, 0.0114, 0.0164, 0.0880, 0.8956}, 5e-5);
  vexo_cs pcs = {{}, {}, {}, kD50, {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}}}; // XYZ under D50: the columns of sRGB profiles
  EXPECT_EQ(vexo_cs_chad_transform(&m, &pcs, &bt709), 0);
  expect_near(m, {0.4361, 0.3851, 0.1431, 0.2225, 0.7169, 0.0606, 0.0139, 0.0971, 0.7142}, 1e-4);
  EXPECT_EQ(vexo_cs_chad_transform(&m, &bt2020, &dci_p3), 0);
  for (const auto &row : m.d) {
    EXPECT_NEAR(row[0] + row[1] + row[2], 1.0F, 1e-6F); // white to white
  }
  const M before = m;
  vexo_cs none = {};
  EXPECT_EQ(vexo_cs_chad_transform(&m, &none, &bt709), -1);
  EXPECT_EQ(bits_of(m), bits_of(before));
}

} // namespace
