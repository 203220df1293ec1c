/* An identity of 17 points whose red is halved, resampled to 33 points: its size in a packed file, one entry. */
#include <stdio.h>

#include "vexo-3dlut.h"

int main(void) {
  vexo_3dlut *coarse = vexo_3dlut_create(17, "half red"), *fine;
  FILE *f = tmpfile();
  int status = 1;

  if (coarse != NULL && f != NULL) {
    vexo_3dlut_init_unit(coarse);
    for (int i = 0; i < 17 * 17 * 17; i++) {
      vexo_3dlut_item(coarse, i / 289, i / 17 % 17, i % 17)->d[0] *= 0.5F;
    }
    fine = vexo_3dlut_dup(coarse, 33, NULL);
    if (fine != NULL) {
      const vexo_vector *v = vexo_3dlut_item(fine, 0, 16, 32); /* blue, green, red index */
      printf("%s: %.4f %.4f %.4f\n", vexo_3dlut_title(fine), (double)v->d[0], (double)v->d[1], (double)v->d[2]);
      printf("%d items", vexo_3dlut_dump_dat(fine, f, 10));
      printf(", %ld bytes\n", ftell(f));
      vexo_3dlut_destroy(fine);
      status = 0;
    }
    vexo_3dlut_destroy(coarse);
  }
  if (f != NULL) {
    fclose(f);
  }
  return status;
}
