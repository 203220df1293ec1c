/*
 * A calibration run: measurements of a panel in, three 10-bit correction LUTs out. The corrected panel follows a
 * power law of 2.2 and shows D65 on every gray.
 *
 *   calibrate PANEL.xml LUTS.txt
 *
 * Exit codes: 0 done, 1 failed (with a line on standard error), 2 wrong usage.
 */
#include <stdio.h>

#include "vexo.h"

static int fail(const char *path, const char *what) {
  fprintf(stderr, "calibrate: %s: %s\n", path, what);
  return 1;
}

static int store(vexo_lut *lut, const char *path) {
  FILE *f = fopen(path, "w");
  if (f == NULL) {
    return fail(path, "cannot be written");
  }
  int bad = vexo_luts_store_int(f, lut, 10) != 0 || ferror(f) != 0;
  bad = fclose(f) != 0 || bad; /* a full disk may show only here */
  return bad ? fail(path, "writing failed") : 0;
}

static int run(vexo *panel, vexo_lut *lut, const char *measurements, const char *result) {
  const float d65[2] = {0.3127F, 0.3290F};
  vexo_gamma camera, system;
  vexo_vector target, white;

  if (vexo_load_lcnr_xml(&panel->lcnr, measurements) != 0) {
    return fail(measurements, "cannot be read");
  }
  if (vexo_lcnr_sanity_check(&panel->lcnr) != 0) {
    return fail(measurements, "a reading falls while the drive rises; measure again");
  }
  for (int c = 0; c < 3; c++) {
    if (vexo_lut_init(&lut[c], 1024) != 0) {
      return 1;
    }
  }
  vexo_gamma_init(&camera, 1.0F);
  vexo_gamma_init(&system, 2.2F);
  vexo_vector_set_xy(&target, d65); /* x, y, 1 - x - y */
  if (vexo_data_alignment(lut, panel, &camera, &system, &target) != 0) {
    return fail(measurements, "no calibration: levels must rise from 0 and readings lie above black");
  }
  if (store(lut, result) != 0) {
    return 1;
  }
  vexo_get_xyY(&white, panel, 1023.0F, 1023.0F, 1023.0F); /* the tables now describe the balanced panel */
  printf("white: x %.4f, y %.4f, %.1f above black\n", (double)white.d[0], (double)white.d[1], (double)white.d[2]);
  return 0;
}

int main(int argc, char **argv) {
  if (argc != 3) {
    fputs("usage: calibrate PANEL.xml LUTS.txt\n", stderr);
    return 2;
  }
  static vexo panel; /* about 40 KB: too much for a small stack */
  vexo_lut lut[3] = {{0, NULL}, {0, NULL}, {0, NULL}};
  const int status = run(&panel, lut, argv[1], argv[2]);
  for (int c = 0; c < 3; c++) {
    vexo_lut_destroy(&lut[c]);
  }
  return status;
}
