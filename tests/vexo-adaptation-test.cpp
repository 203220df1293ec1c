#include <gtest/gtest.h>

#include "bits.h"
#include "vexo-cs.h"

namespace {

using V = vexo_vector;
using M = vexo_matrix;

float kBt709[4][2] = {{0.64F, 0.33F}, {0.30F, 0.60F}, {0.15F, 0.06F}, {0.3127F, 0.3290F}};
float kBt2020[4][2] = {{0.708F, 0.292F}, {0.170F, 0.797F}, {0.131F, 0.046F}, {0.3127F, 0.3290F}};
float kDciP3[4][2] = {{0.680F, 0.320F}, {0.265F, 0.690F}, {0.150F, 0.060F}, {0.314F, 0.351F}};

V kA = {{1.09850F, 1, 0.35585F}}; // XYZ of the illuminants, ASTM E308
V kD50 = {{0.96422F, 1, 0.82521F}};
V kD65 = {{0.95047F, 1, 1.08883F}};

vexo_cs space_of(float data[4][2]) {
  vexo_cs cs;
  EXPECT_EQ(vexo_cs_init(&cs, data), 0);
  return cs;
}

void expect_near(const M &m, const double (&published)[9], double tolerance) {
  for (int i = 0; i < 9; i++) {
    EXPECT_NEAR(static_cast<double>(m.d[i / 3][i % 3]), published[i], tolerance) << i;
  }
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
