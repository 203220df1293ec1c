// Readings of a display, as a probe's program writes them: each with the drives that showed its colour.
#ifndef VEXO_TOOLS_READINGS_H
#define VEXO_TOOLS_READINGS_H

#include <optional>
#include <string>
#include <vector>

#include "vexo-matrix.h"

struct Reading {
  float drive[3]; // red, green, blue, in the unit of the file; all 0 is black
  vexo_vector XYZ;
  std::string place; // "FILE:LINE", or the data set
  std::optional<int> channel =
      std::nullopt; // whose ramp the file counts it to; a black without one is that of all channels
};

struct Readings {
  std::vector<Reading> list;      // in the order of the file
  std::vector<std::string> notes; // about the values: one sentence each
};

// Each throws a Failure (input) that names the file, and the line or data set.

// The text of a CGATS file: a table with the columns RGB_R RGB_G RGB_B XYZ_X XYZ_Y XYZ_Z.
Readings read_cgats(const std::string &path, const std::string &text);

// Whether a file's name or text says that it is a CGATS file.
bool is_cgats(const std::string &path, const std::string &text);

// The text of a CSV file: lines of r,g,b,X,Y,Z.
Readings read_mixture_csv(const std::string &path, const std::string &text);

// The text of a CSV file: lines of level,channel,X,Y,Z or level,Xr,Yr,Zr,Xg,Yg,Zg,Xb,Yb,Zb.
Readings read_csv(const std::string &path, const std::string &text);

#endif
