// Comma-separated values with decimal points, in any locale.
#ifndef VEXO_TOOLS_CSV_H
#define VEXO_TOOLS_CSV_H

#include <string>
#include <vector>

#include "vexo-matrix.h"

struct CsvLine {
  int number;                      // in the file, from 1
  std::vector<std::string> fields; // without the blanks around them
};

// The lines that hold anything, without comments (#) and without a heading, which is a first line whose first field is
// not a number.
std::vector<CsvLine> csv_lines(const std::string &text);

// A field as a finite number, or a Failure (input) that names file, line and column.
float csv_number(const std::string &path, const CsvLine &line, size_t column);

// "FILE:LINE"
std::string csv_place(const std::string &path, const CsvLine &line);

// A gray that a probe has read.
struct GrayReading {
  float level;
  vexo_vector XYZ;
};

// A measured gray ramp, level,X,Y,Z per line. Throws a Failure (input) where a line is anything else.
std::vector<GrayReading> read_gray(const std::string &path);

#endif
