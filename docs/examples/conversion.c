/* RGB at full range to BT.709 YCbCr at video range, 10 bits: white and red in codes, and the first registers. */
#include <stdio.h>

#include "vexo-csc.h"

int main(void) {
  float bt709[4][2] = {{0.64F, 0.33F}, {0.30F, 0.60F}, {0.15F, 0.06F}, {0.3127F, 0.3290F}};
  vexo_vector white = {{1023.0F, 1023.0F, 1023.0F}}, red = {{1023.0F, 0.0F, 0.0F}};
  vexo_cs cs;
  vexo_ccp neutral;
  vexo_csc csc;
  vexo_csc_reg reg;

  vexo_ccp_init(&neutral);
  if (vexo_cs_init(&cs, bt709) != 0 ||
      vexo_csc_rgb_ycbcr(&csc, &cs, RGB_GRAPHIC_RANGE, YCBCR_VIDEO_RANGE, &neutral, 10) != 0) {
    return 1;
  }
  vexo_csc_transfrom(&csc, &white);
  vexo_csc_transfrom(&csc, &red);
  printf("white %.2f %.2f %.2f\n", (double)white.d[0], (double)white.d[1], (double)white.d[2]);
  printf("red %.2f %.2f %.2f\n", (double)red.d[0], (double)red.d[1], (double)red.d[2]);
  vexo_csc_float_reg(&csc, &reg);
  printf("gain %d %d %d, offset %d\n", reg.gain[0][0], reg.gain[0][1], reg.gain[0][2], reg.offset[0]);
  return 0;
}
