#include "vexo-matrix.h"

#include <gtest/gtest.h>

TEST(Matrix, InitIsTheIdentity) {
  vexo_matrix m;
  vexo_matrix_init(&m);
  for (int i = 0; i < 3; i++) {
    for (int j = 0; j < 3; j++) {
      EXPECT_EQ(m.d[i][j], i == j ? 1.0F : 0.0F);
    }
  }
}
