// A 1D LUT file as the lut1d commands read it.
#ifndef VEXO_TOOLS_LUT1D_INPUT_H
#define VEXO_TOOLS_LUT1D_INPUT_H

#include <string>

#include "file/luts.h"

namespace CLI {
class App;
}

struct Lut1dInput {
  std::string path;
  std::string layout; // empty: find out
};

// name: of the argument that holds the path.
void add_input(CLI::App *command, const char *name, Lut1dInput &input);

struct Lut1dFile {
  LutScan scan;
  LutSet luts;
};

// Warns of all that the reader passes over. Throws a Failure (input).
Lut1dFile read_with_warnings(const Lut1dInput &input);

// "LAYOUT, N entries of B bits"
std::string summary(const LutScan &scan);

#endif
