// Options of the commands that take colours.
#ifndef VEXO_TOOLS_COLOUR_OPTIONS_H
#define VEXO_TOOLS_COLOUR_OPTIONS_H

#include <string>

#include "vexo-matrix.h"

namespace CLI {
class App;
}

// As they stand on the command line.
struct ColourOptions {
  std::string form = "XYZ";
  std::string white = "D65";
  std::string luminance = "100";
  bool json = false;
};

void add_colour_options(CLI::App *command, ColourOptions &options);

// XYZ of the reference white.
vexo_vector reference_white(const ColourOptions &options);

// XYZ of the colour that an argument gives. Throws a Failure: usage for a text that is not a triple, input for a triple
// that is not a colour.
vexo_vector parse_colour(const std::string &argument, const std::string &text, const ColourOptions &options);

#endif
