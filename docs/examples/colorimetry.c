/* A probe's reading in the usual coordinates, and how far it is from D65 at the same luminance. */
#include <stdio.h>

#include "vexo-cs.h"

int main(void) {
  vexo_vector reading = {{94.2F, 98.6F, 110.0F}}; /* X, Y, Z in cd/m2 */
  vexo_vector white = {{95.047F, 100.0F, 108.883F}};
  vexo_vector xyY = reading, uvY = reading, Lab = reading;

  if (vexo_XYZ_xyY(&xyY) != 0 || vexo_XYZ_uvY(&uvY) != 0) {
    return 1; /* black has no chromaticity */
  }
  vexo_XYZ_Lab(&Lab, &white);
  printf("x %.4f, y %.4f, %.1f cd/m2\n", (double)xyY.d[0], (double)xyY.d[1], (double)xyY.d[2]);
  printf("u' %.4f, v' %.4f, %d K\n", (double)uvY.d[0], (double)uvY.d[1], vexo_XYZ_CCT(&reading));
  printf("L* %.2f, a* %.2f, b* %.2f\n", (double)Lab.d[0], (double)Lab.d[1], (double)Lab.d[2]);
  printf("dE*ab %.2f, dE00 %.2f\n", (double)vexo_XYZ_DEab(&reading, &white, &white),
         (double)vexo_XYZ_DE2000(&reading, &white, &white));
  return 0;
}
