// Three 1D LUTs, red, green, blue.
#ifndef VEXO_TOOLS_LUT_SET_H
#define VEXO_TOOLS_LUT_SET_H

#include <string>
#include <vector>

#include "file/input.h" // input_name()
#include "vexo-gamma.h"

// Three LUTs of one size, freed with the object.
class LutSet {
public:
  LutSet() = default; // without storage
  explicit LutSet(int size);
  ~LutSet();
  LutSet(LutSet &&other) noexcept;
  LutSet &operator=(LutSet &&other) noexcept;
  LutSet(const LutSet &) = delete;
  LutSet &operator=(const LutSet &) = delete;

  vexo_lut *get() { return luts_; }
  int size() const { return luts_[0].size; }

private:
  vexo_lut luts_[3] = {};
};

// Three identity ramps.
LutSet identity_luts(int size);

// LUTs of one size resampled to another, both ends kept.
LutSet resampled(LutSet &luts, int size);

// The text layouts that can be read: "integer", three columns of codes; "decimal", three columns of codes that may have
// fractions, its size line giving the base-2 logarithm of the entry count; "cube", three columns of fractions below a
// LUT_1D_SIZE line; "column", one column of any numbers, which reading makes strictly increasing from 0 to 1.

struct LutIssue {
  long line;  // 0 for the file as a whole
  bool fatal; // an entry is wrong or missing; else something is passed over
  std::string text;
};

struct LutEntry {
  long line;
  float value[3]; // as in the file; of a column, three times the same
};

// A LUT file as its text says, line by line, and as the library reads it.
struct LutScan {
  std::string path;
  std::string layout;
  int size = 0; // entries that the file should hold
  int bits = 0; // of codes, else 0
  std::vector<LutEntry> entries;
  std::vector<LutIssue> issues;
  LutSet luts;           // as the library reads the file; a column in the first
  bool complete = false; // the library read all of it
};

// layout: empty to find out. Throws a Failure: usage for an unknown layout; input where no entry can be told.
LutScan scan_luts(const std::string &path, const std::string &layout);

// Throws a Failure (input) where a file has more than 10000 issues.
void add_issue(LutScan &scan, const LutIssue &issue);

// "FILE:LINE: what"
std::string issue_text(const LutScan &scan, const LutIssue &issue);

// Takes the LUTs of a file without fatal issues; a column three times. Throws a Failure (input).
LutSet load_luts(LutScan &scan);

// The layout of LUTs for the calibration: empty for a name that ends in .cube, else integer.
std::string three_channel_layout(const std::string &path);

// Scans and loads a file in that layout. Throws a Failure (input).
LutSet read_luts(const std::string &path);

#endif
