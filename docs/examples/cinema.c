/* The white of P3 in 12-bit X'Y'Z' codes, and the codes of full P3 red. */
#include <stdio.h>

#include "vexo-dcine.h"

int main(void) {
  vexo_vector white = {{1.0F, 1.0F, 1.0F}}, red = {{4095.0F, 0.0F, 0.0F}};

  vexo_dcine_rgb_xyz(&white); /* linear P3 to relative XYZ */
  printf("xyz %.5f %.5f %.5f\n", (double)white.d[0], (double)white.d[1], (double)white.d[2]);
  vexo_dcine_xyz_XYZq(&white, 12);
  printf("X'Y'Z' %.1f %.1f %.1f\n", (double)white.d[0], (double)white.d[1], (double)white.d[2]);
  vexo_dcine_RGBq_XYZq(&red, 12);
  printf("X'Y'Z' %.1f %.1f %.1f\n", (double)red.d[0], (double)red.d[1], (double)red.d[2]);
  return 0;
}
