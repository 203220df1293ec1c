/* Mixes two colours through a matrix and back, and reads between the corners of a square. */
#include <stdio.h>

#include "vexo-matrix.h"
#include "vexo-util.h"

int main(void) {
  vexo_matrix m = {{{0.5F, 0.5F, 0.0F}, {0.0F, 1.0F, 0.0F}, {0.0F, 0.25F, 0.75F}}}, inverse;
  vexo_vector v = {{1.0F, 0.5F, 0.0F}};
  float corners[2][2] = {{0.0F, 1.0F}, {2.0F, 3.0F}}, at[2] = {0.5F, 0.25F};

  vexo_matrix_transform(&m, &v);
  printf("%g %g %g\n", (double)v.d[0], (double)v.d[1], (double)v.d[2]);
  if (vexo_matrix_invert(&inverse, &m) != 0) {
    return 1; /* singular */
  }
  vexo_matrix_transform(&inverse, &v);
  printf("%g %g %g\n", (double)v.d[0], (double)v.d[1], (double)v.d[2]);
  printf("%g\n", (double)bilinear_inter(at, corners));
  return 0;
}
