#include "vexo-matrix.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "bits.h"
#include "text.h"

// Bit patterns below were computed outside the library, one rounding an operation, and differ for other orders of
// summation, for double-precision intermediates and for fused multiply-add.

namespace {

const float kNaN = std::numeric_limits<float>::quiet_NaN();
const vexo_matrix kA = {{{1.2F, 7.1F, 3.3F}, {0.5F, 8.7F, 1.0F}, {1.1F, 0.3F, 5.8F}}};

TEST(Matrix, InitRowsAndColumns) {
  vexo_matrix m = kA;
  vexo_vector v = {{7.0F, 8.0F, 9.0F}};
  vexo_matrix_init(&m);
  EXPECT_EQ(bits_of(m), bits_of(vexo_matrix{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}}));
  vexo_matrix_set_column(&m, &v, 2);
  EXPECT_EQ(bits_of(m), bits_of(vexo_matrix{{{1, 0, 7}, {0, 1, 8}, {0, 0, 9}}}));
  vexo_matrix_set_row(&m, &v, 1);
  EXPECT_EQ(bits_of(m), bits_of(vexo_matrix{{{1, 0, 7}, {7, 8, 9}, {0, 0, 9}}}));
  vexo_matrix_get_row(&m, &v, 0);
  EXPECT_EQ(bits_of(v), bits_of(vexo_vector{{1, 0, 7}}));
  vexo_vector u;
  vexo_vector_copy(&u, &v);
  EXPECT_EQ(bits_of(u), bits_of(v));
  vexo_vector_init(&v);
  EXPECT_EQ(bits_of(v), bits_of(vexo_vector{{0, 0, 0}}));
  vexo_matrix copy;
  vexo_matrix_copy(&copy, &m);
  EXPECT_EQ(bits_of(copy), bits_of(m));
}

TEST(Matrix, ProductsSumFromTheLeftAndApplyTheRightFactorFirst) {
  vexo_matrix m = {{{9.2F, 4.0F, 7.7F}, {4.8F, 4.8F, 7.7F}, {9.9F, 6.4F, 5.2F}}};
  const vexo_matrix n = {{{6.9F, 1.4F, 8.8F}, {3.3F, 1.8F, 8.7F}, {2.2F, 2.0F, 1.4F}}};
  vexo_vector v = {{0.1F, 9.6F, 5.0F}};
  vexo_matrix_transform(&m, &v);
  EXPECT_EQ(bits_of(v), bits_of(vexo_vector{{0x1.3747aep6F, 0x1.543d7p6F, 0x1.61b854p6F}}));
  vexo_matrix_multiply(&m, &n);
  EXPECT_EQ(bits_of(m), bits_of(vexo_matrix{{{0x1.767ae2p6F, 0x1.1bd708p5F, 0x1.fa28f4p6F},
                                             {0x1.07999ap6F, 0x1.ec28f6p4F, 0x1.7b1eb8p6F},
                                             {0x1.937ae2p6F, 0x1.1e3d7p5F, 0x1.2c28f4p7F}}}));
  vexo_matrix square = {{{1, 2, 3}, {0, 1, 4}, {5, 6, 0}}};
  vexo_matrix_multiply(&square, &square);
  EXPECT_EQ(bits_of(square), bits_of(vexo_matrix{{{16, 22, 11}, {20, 25, 4}, {5, 16, 39}}}));
  // (1 + 2^-12)^2 loses its last bit before 1 + 2^-11 is taken away; a fused operation would keep it.
  vexo_matrix fused = {{{-1.0F, 0x1.001p0F, 0}, {0, 0, 0}, {0, 0, 0}}};
  vexo_vector w = {{0x1.002p0F, 0x1.001p0F, 0}};
  vexo_matrix_transform(&fused, &w);
  EXPECT_EQ(bits_of(w), bits_of(vexo_vector{{0, 0, 0}}));
}

TEST(Vector, Arithmetic) {
  vexo_vector v = {{1.5F, -2.0F, 0x1p-24F}};
  vexo_vector u = {{0.25F, 2.0F, 1.0F}};
  vexo_vector_add(&v, &u);
  EXPECT_EQ(bits_of(v), bits_of(vexo_vector{{1.75F, 0.0F, 1.0F}}));
  vexo_vector_sub(&v, &u);
  EXPECT_EQ(bits_of(v), bits_of(vexo_vector{{1.5F, -2.0F, 0.0F}}));
  vexo_vector_scale(&v, -0.5F);
  EXPECT_EQ(bits_of(v), bits_of(vexo_vector{{-0.75F, 1.0F, -0.0F}}));
  vexo_vector_sub(&u, &u);
  EXPECT_EQ(bits_of(u), bits_of(vexo_vector{{0, 0, 0}}));
  const float xyz[] = {0.401F, 0.552F, -3.0F};
  vexo_vector_set_xyz(&v, xyz);
  EXPECT_EQ(bits_of(v), bits_of(vexo_vector{{0.401F, 0.552F, -3.0F}}));
  vexo_vector_set_xy(&v, xyz); // 1 - (x + y) and a double-precision z differ in the last bits
  EXPECT_EQ(bits_of(v), bits_of(vexo_vector{{0.401F, 0.552F, 0x1.81062p-5F}}));
  vexo_vector small_last = {{1.0F, 0x1p-24F, 0x1p-24F}};
  vexo_vector small_first = {{0x1p-24F, 0x1p-24F, 1.0F}};
  EXPECT_EQ(bits(vexo_vector_sum(&small_last)), bits(1.0F));
  EXPECT_EQ(bits(vexo_vector_sum(&small_first)), bits(0x1.000002p0F));
}

TEST(Vector, DivisionStopsAtTheFirstZero) {
  const struct {
    vexo_vector u;
    int status;
    vexo_vector quotient;
  } rows[] = {{{{2, 3, 4}}, 0, {{3, 0x1.555556p0F, 0.5F}}},
              {{{2, 0, 4}}, -1, {{3, 4, 2}}},
              {{{-0.0F, 1, 1}}, -1, {{6, 4, 2}}},
              {{{2, 8, 0}}, -1, {{3, 0.5F, 2}}},
              {{{0x1p-149F, 8, 1}}, 0, {{INFINITY, 0.5F, 2}}}};
  for (auto row : rows) {
    vexo_vector v = {{6, 4, 2}};
    EXPECT_EQ(vexo_vector_div(&v, &row.u), row.status);
    EXPECT_EQ(bits_of(v), bits_of(row.quotient));
  }
}

TEST(Vector, Normalize) {
  const vexo_vector d65 = {{0.3127F, 0.3290F, 0.3583F}};
  const struct {
    int mode;
    vexo_vector v;
    vexo_vector normalized;
  } rows[] = {{2, d65, {{0x1.e6a22ap-1F, 1, 0x1.16cc7ep0F}}}, // XYZ (0.950456, 1, 1.089058)
              {2, {{1, 0, 1}}, {{1, 0, 1}}},
              {2, {{1, INFINITY, 1}}, {{0, 1, 0}}},
              {1, {{-2, -1, -4}}, {{2, 1, 4}}},
              {1, {{3, 1, 6}}, {{0.5F, 0x1.555556p-3F, 1}}},
              {1, {{8, -4, 2}}, {{1, -0.5F, 0.25F}}},
              {1, {{-1, 0, -2}}, {{-1, 0, -2}}},
              {0, d65, d65},
              {3, d65, d65}};
  for (auto row : rows) {
    vexo_vector_normalize(&row.v, row.mode);
    EXPECT_EQ(bits_of(row.v), bits_of(row.normalized)) << "mode " << row.mode;
  }
}

TEST(Vector, MiddleIsTheMedian) {
  for (vexo_vector sorted : {vexo_vector{{1, 2, 3}}, {{1, 1, 2}}, {{-3, 2, 2}}, {{2, 2, 2}}}) {
    const float median = sorted.d[1];
    do {
      EXPECT_EQ(vexo_vector_get_middle(&sorted), median);
    } while (std::next_permutation(sorted.d, sorted.d + 3));
  }
}

TEST(Matrix, NormalizeDividesByTheLargestRowSum) {
  const vexo_matrix m = {{{1, 2, -3}, {-4, 8, 4}, {2, 1, 2}}};
  const vexo_matrix eighth = {{{0.125F, 0.25F, -0.375F}, {-0.5F, 1, 0.5F}, {0.25F, 0.125F, 0.25F}}};
  const vexo_matrix dark = {{{-1, 0, 1}, {-1, -1, 1}, {0, 0, kNaN}}}; // no row sum above 0
  const struct {
    int mode;
    vexo_matrix m;
    vexo_matrix normalized;
  } rows[] = {{1, m, eighth}, {0, m, m}, {2, m, m}, {1, dark, dark}};
  for (auto row : rows) {
    vexo_matrix_normalize(&row.m, row.mode);
    EXPECT_EQ(bits_of(row.m), bits_of(row.normalized)) << "mode " << row.mode;
  }
}

TEST(Matrix, Invert) {
  const vexo_matrix m = {{{7.1F, 7.8F, 9.4F}, {0.1F, 5.0F, 9.5F}, {6.6F, 1.7F, 6.7F}}};
  vexo_matrix n;
  ASSERT_EQ(vexo_matrix_invert(&n, &m), 0);
  EXPECT_EQ(bits_of(n), bits_of(vexo_matrix{{{0x1.dc48acp-5F, -0x1.f1f876p-4F, 0x1.73f7d4p-4F},
                                             {0x1.a9b458p-3F, -0x1.8d3932p-5F, -0x1.c8733ap-3F},
                                             {-0x1.c29de2p-4F, 0x1.0e7752p-3F, 0x1.dc8ef4p-4F}}}));
  vexo_matrix_multiply(&n, &m);
  for (int i = 0; i < 9; i++) {
    EXPECT_NEAR(n.d[i / 3][i % 3], i % 4 == 0 ? 1.0F : 0.0F, 1e-5F);
  }
}

TEST(Matrix, InvertRefusesSingularMatrices) {
  const struct {
    vexo_matrix m;
    int status;
  } rows[] = {{{{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}}, -1},
              {{{{0, 0, 0}, {0, 0, 0}, {0, 0, 0}}}, -1},
              {{{{1e-16F, 0, 0}, {0, 1, 0}, {0, 0, 1}}}, -1},
              {{{{1, 0, 0}, {0, -0x1.203af8p-50F, 0}, {0, 0, 1}}}, -1}, // the last float below 1e-15
              {{{{1, 0, 0}, {0, -0x1.203afap-50F, 0}, {0, 0, 1}}}, 0},  // the first above
              {{{{1e-14F, 0, 0}, {0, 1, 0}, {0, 0, 1}}}, 0}};
  for (const auto &row : rows) {
    vexo_matrix n = kA;
    EXPECT_EQ(vexo_matrix_invert(&n, &row.m), row.status);
    EXPECT_EQ(row.status != 0, bits_of(n) == bits_of(kA));
  }
}

TEST(Matrix, DumpsUnderAnyLocale) {
  in_both_locales([] {
    vexo_matrix m = {{{1, -0.5F, 0.1F}, {0, 1e-7F, 0}, {-0.0F, 1234.5F, NAN}}};
    const std::string rows = "\tm[0][0] = 1.0000000000\tm[0][1] = -0.5000000000\tm[0][2] = 0.1000000015\t\n"
                             "\tm[1][0] = 0.0000000000\tm[1][1] = 0.0000001000\tm[1][2] = 0.0000000000\t\n"
                             "\tm[2][0] = -0.0000000000\tm[2][1] = 1234.5000000000\tm[2][2] = nan\t\n";
    vexo_vector v = {{0.25F, -3, 0.1F}};
    const std::string line = "[0.2500000000\t-3.0000000000\t0.1000000015]\n";
    char name[] = "Panel";
    for (char *prefix : {name, static_cast<char *>(nullptr)}) {
      EXPECT_EQ(printed([&](FILE *f) { vexo_matrix_dump(f, &m, prefix); }), dump_heading(prefix, "Matrix", &m) + rows);
      EXPECT_EQ(printed([&](FILE *f) { vexo_vector_dump(f, &v, prefix); }),
                prefix != nullptr ? dump_heading(prefix, "Vector", &v) + "\t" + line : line);
    }
  });
}

TEST(Matrix, ImagesAreTheFloatsInOrder) {
  const float in[] = {1, 2, 3, 4, 5, 6, 7, 8, kNaN};
  const std::string image(reinterpret_cast<const char *>(in), sizeof in);
  for (size_t length : {36U, 35U, 12U, 11U, 0U}) {
    vexo_matrix m = kA;
    vexo_vector v = {};
    FILE *f = stream_of(image.substr(0, length));
    EXPECT_EQ(vexo_matrix_load(f, &m), length >= 36 ? 0 : -1);
    std::rewind(f);
    EXPECT_EQ(vexo_vector_load(f, &v), length >= 12 ? 0 : -1);
    std::fclose(f);
    if (length == 36) {
      EXPECT_EQ(bits_of(m), bits(in, 9));
      EXPECT_EQ(bits_of(v), bits(in, 3));
      EXPECT_EQ(printed([&](FILE *g) { EXPECT_EQ(vexo_matrix_store(g, &m), 0); }), image);
      EXPECT_EQ(printed([&](FILE *g) { EXPECT_EQ(vexo_vector_store(g, &v), 0); }), image.substr(0, 12));
    }
  }
  FILE *unwritable = std::fopen("/dev/null", "r");
  vexo_matrix m = kA;
  vexo_vector v = {};
  EXPECT_EQ(vexo_matrix_store(unwritable, &m), -1);
  EXPECT_EQ(vexo_vector_store(unwritable, &v), -1);
  std::fclose(unwritable);
}

} // namespace
