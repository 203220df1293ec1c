// The 1D LUT of a cube file: LUT_1D_SIZE, then three fractions per line.
#ifndef VEXO_TOOLS_LUT1D_CUBE_H
#define VEXO_TOOLS_LUT1D_CUBE_H

#include <cstdio>

#include "file/luts.h"

// Reads the file into the scan. Inputs and values from 0 to 1 are expected, and as many lines as the size says. Throws
// a Failure (input) where the size is missing or wrong.
void scan_cube1d(LutScan &scan, std::FILE *f);

void write_cube1d(std::FILE *f, const vexo_lut *luts);

#endif
