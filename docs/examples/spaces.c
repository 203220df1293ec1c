/* BT.709 red shown on a P3-D65 display, and the luma weights of BT.709. */
#include <stdio.h>

#include "vexo-cs.h"

int main(void) {
  float bt709[4][2] = {{0.64F, 0.33F}, {0.30F, 0.60F}, {0.15F, 0.06F}, {0.3127F, 0.3290F}};
  float p3_d65[4][2] = {{0.680F, 0.320F}, {0.265F, 0.690F}, {0.150F, 0.060F}, {0.3127F, 0.3290F}};
  vexo_cs source, display;
  vexo_matrix m;
  vexo_vector rgb = {{1.0F, 0.0F, 0.0F}}, luma;

  if (vexo_cs_init(&source, bt709) != 0 || vexo_cs_init(&display, p3_d65) != 0 ||
      vexo_cs_chad_transform(&m, &display, &source) != 0) {
    return 1; /* primaries on a line */
  }
  vexo_matrix_get_row(&source.npm, &luma, 1);
  vexo_matrix_transform(&m, &rgb);
  printf("luma weights %.4f %.4f %.4f\n", (double)luma.d[0], (double)luma.d[1], (double)luma.d[2]);
  printf("linear P3 %.4f %.4f %.4f\n", (double)rgb.d[0], (double)rgb.d[1], (double)rgb.d[2]);
  printf("areas %.4f %.4f\n", (double)vexo_cs_area(&source), (double)vexo_cs_area(&display));
  return 0;
}
