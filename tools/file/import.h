// Measurements of other programs, turned into the rows of an LCNR file.
#ifndef VEXO_TOOLS_IMPORT_H
#define VEXO_TOOLS_IMPORT_H

#include <string>
#include <vector>

#include "vexo.h"

struct Import {
  vexo_lcnr lcnr = {};
  size_t readings = 0;            // in the file
  std::vector<std::string> notes; // what was left out, averaged or chosen: one sentence each
};

// Reads a CGATS file (.ti3; RGB in percent against XYZ) or a CSV file (level,channel,X,Y,Z or
// level,Xr,Yr,Zr,Xg,Yg,Zg,Xb,Yb,Zb). Takes black and the ramps of red, green and blue, each driven alone, out of it.
// Throws a Failure (input).
Import import_measurements(const std::string &path);

#endif
