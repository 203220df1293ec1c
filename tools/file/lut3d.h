// 3D LUT files of every format, read with warnings about what a format says and the reader passes over, and written
// only when the format can carry them.
#ifndef VEXO_TOOLS_LUT3D_FILE_H
#define VEXO_TOOLS_LUT3D_FILE_H

#include <memory>
#include <string>
#include <vector>

#include "vexo-3dlut.h"

struct DestroyLut {
  void operator()(vexo_3dlut *lut) const { vexo_3dlut_destroy(lut); }
};
using Lut3d = std::unique_ptr<vexo_3dlut, DestroyLut>;

// How to read a file. Zero and empty mean: find out.
struct Lut3dInput {
  std::string path;
  std::string format;  // name of a format
  int size = 0;        // grid points of a format that does not say
  int max_size = 256;  // larger tables are refused
  bool strict = false; // warnings become errors
};

// The inputs of the first and the last grid point, red, green and blue.
struct Lut3dDomain {
  std::vector<float> min = {0.0F, 0.0F, 0.0F};
  std::vector<float> max = {1.0F, 1.0F, 1.0F};
};

bool operator==(const Lut3dDomain &a, const Lut3dDomain &b);

// "0 0 0 to 1 1 1"
std::string describe(const Lut3dDomain &domain);

struct Lut3dFile {
  Lut3d lut;
  Lut3dDomain domain;
  std::string format;
  int bits = 0;                      // 0 where the format has no codes
  unsigned version = 0;              // 0 where the format has none
  std::vector<std::string> warnings; // complete lines, without "vexo: "
};

// Throws a Failure (input; usage for a format that cannot be read or told). Inputs that the reader would take for
// another table are refused: a shaper before the table, rows behind it, and values that are not finite.
Lut3dFile read_lut3d(const Lut3dInput &input);

// How to write a file.
struct Lut3dOutput {
  std::string path;
  std::string format; // name of a format; empty: by the path's extension
  int bits = 0;       // 0: the format's own
  Lut3dDomain domain = {};
  std::string source = {};  // the file that the table is from, in messages; empty: none
  bool title_given = false; // on the command line; else it is that of the source
};

// The format's name and whether it can carry the table. Throws a Failure (usage; input for the domain of the source)
// otherwise; nothing is written.
void check_output(const Lut3dOutput &output, int size);

// Throws a Failure (usage, input for the title of the source; nothing is written then; output).
void write_lut3d(const Lut3dOutput &output, vexo_3dlut *lut);

// A LUT of the given size, or a Failure when there is no memory for it.
Lut3d new_lut3d(int size, const std::string &title);

// src resampled to size grid points.
Lut3d resampled(vexo_3dlut *src, int size);

std::vector<std::string> lut3d_input_formats();
std::vector<std::string> lut3d_output_formats();

#endif
