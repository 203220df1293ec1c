// The layouts in which 1D LUTs are written: integer, three columns of codes; cube, three columns of fractions; and
// listings for people.
#ifndef VEXO_TOOLS_LUT1D_OUTPUT_H
#define VEXO_TOOLS_LUT1D_OUTPUT_H

#include <string>
#include <vector>

#include "file/luts.h"

struct Lut1dOutput {
  std::string path;
  std::string layout;          // its name
  std::string channel = "red"; // of a listing that holds one
  int bits = 0;                // of the codes
};

// integer cube listing listing-int listing-int3
std::vector<std::string> lut1d_output_layouts();

// The layout that a file has by its name.
std::string lut1d_layout_of(const std::string &path);

// Whether the layout holds codes; else decimals.
bool holds_codes(const std::string &layout);

// The text alone, whatever the path.
void store_luts(std::FILE *f, const Lut1dOutput &output, LutSet &luts);

// Throws a Failure (output).
void write_luts(const Lut1dOutput &output, LutSet &luts);

#endif
