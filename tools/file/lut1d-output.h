// The layouts in which 1D LUTs are written: integer, three columns of codes, and listings for people.
#ifndef VEXO_TOOLS_LUT1D_OUTPUT_H
#define VEXO_TOOLS_LUT1D_OUTPUT_H

#include <string>
#include <vector>

#include "file/luts.h"

struct Lut1dOutput {
  std::string path;
  std::string layout = "integer";
  std::string channel = "red"; // of a listing that holds one
  int bits = 0;                // of the codes
};

// integer listing listing-int listing-int3
std::vector<std::string> lut1d_output_layouts();

// Whether the layout holds codes; else decimals.
bool holds_codes(const std::string &layout);

// Throws a Failure (output).
void write_luts(const Lut1dOutput &output, LutSet &luts);

#endif
