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
  // The channel whose ramp it belongs to; without one, a black is that of all channels.
  std::optional<int> channel = std::nullopt;
};

struct Readings {
  std::vector<Reading> list;      // in the order of the file
  std::vector<std::string> notes; // about the values: one sentence each
  std::optional<float> full;      // the drive that is full by the format's definition
  bool ramp = false;              // one gray per line, by its level; else any colours in any order
};

// The mean of repeated readings.
class MeanXYZ {
public:
  void add(const vexo_vector &XYZ) {
    for (int m = 0; m < 3; m++) {
      sum_[m] += XYZ.d[m];
    }
    count_++;
  }
  vexo_vector XYZ() const { return {{component(0), component(1), component(2)}}; }
  int count() const { return count_; }

private:
  float component(int m) const { return static_cast<float>(sum_[m] / count_); }

  double sum_[3] = {0.0, 0.0, 0.0};
  int count_ = 0;
};

// Each throws a Failure (input) that names the file, and the line or data set.

// A CGATS file, which has the extension .ti1, .ti2 or .ti3, or holds BEGIN_DATA; else a CSV file.
Readings read_readings(const std::string &path, const char *expected);

// The text of a CGATS file: a table with the columns RGB_R RGB_G RGB_B XYZ_X XYZ_Y XYZ_Z. Values that are normalised to
// a white of Y = 100 are scaled to cd/m2 where the file tells the luminance.
Readings read_cgats(const std::string &path, const std::string &text);

// The text of a CSV file, with a colour as X,Y,Z or x,y,Y: level,channel,colour or level,Xr,Yr,Zr,Xg,Yg,Zg,Xb,Yb,Zb or
// r,g,b,colour or level,colour, which is a gray.
Readings read_csv(const std::string &path, const std::string &text);

// A gray that a probe has read.
struct GrayReading {
  float level;
  vexo_vector XYZ;
  std::string place; // of its reading, or of the first of a mean
};

// The readings of a file whose three drives are equal. full: the level of full drive, for files that have drives in
// percent. The grays of a ramp stand in the order of the file; those among other colours are sorted, and the mean is
// taken of repeated ones.
std::vector<GrayReading> read_gray(const std::string &path, float full);

#endif
