/* A panel whose light follows the power 1.8 of its drive shows BT.709 camera signal with a system power of 1.2. */
#include <stdio.h>

#include "vexo-gamma.h"

int main(void) {
  vexo_gamma camera = {4.5F, 0.018F, 0.45F, 0.099F}, system; /* slope, transition, exponent, offset */
  vexo_lut panel = {0, NULL}, lut[3] = {{0, NULL}, {0, NULL}, {0, NULL}};
  int status = vexo_lut_init_with_gamma(&panel, 1024, 1.8F);

  vexo_gamma_init(&system, 1.2F); /* scene light to display light */
  for (int c = 0; c < 3 && status == 0; c++) {
    status = vexo_lut_init(&lut[c], 5);
  }
  if (status == 0) {
    for (int c = 0; c < 3; c++) {
      vexo_gamma_lut_invert(&lut[c], &camera, &system, &panel);
    }
    status = vexo_luts_store_int(stdout, lut, 10);
  }
  for (int c = 0; c < 3; c++) {
    vexo_lut_destroy(&lut[c]);
  }
  vexo_lut_destroy(&panel);
  return status == 0 ? 0 : 1;
}
