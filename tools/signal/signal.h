// A video signal: RGB or YCbCr, its range, its bit depth, and the order in which its components travel.
#ifndef VEXO_TOOLS_SIGNAL_H
#define VEXO_TOOLS_SIGNAL_H

#include <string>

#include "vexo-csc.h"

struct Signal {
  std::string name; // as the user gave it
  bool ycbcr;       // else RGB
  color_range range;
  int bits;
  int order[3]; // order[i]: the component (0 R or Y, 1 G or Cb, 2 B or Cr) that travels i-th
};

// "FORMAT:RANGE:BITS[:ORDER]", such as ycbcr:video:10 or rgb:full:12:gbr. Throws a Failure (usage).
Signal parse_signal(const std::string &option, const std::string &text);

#endif
