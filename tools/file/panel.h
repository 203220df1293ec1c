// A panel's measurements from an LCNR file, checked so that every problem has a file, a line and a row.
#ifndef VEXO_TOOLS_PANEL_FILE_H
#define VEXO_TOOLS_PANEL_FILE_H

#include <string>
#include <vector>

#include "text/channels.h"
#include "vexo.h"

// Rows of an LCNR file.
const size_t kPanelRows = sizeof vexo_lcnr::sample / sizeof(float);

struct Panel {
  std::string path;
  vexo_lcnr lcnr = {};
  std::vector<int> lines; // line of the file on which each row's LEVEL begins
};

// Reads the file and checks that it holds 2 to 64 rows of ten finite numbers, levels rising from 0, and light at full
// drive. Throws a Failure (input).
Panel read_panel(const std::string &path);

// Writes an LCNR file whole or not at all. Throws a Failure (output).
void write_panel(const std::string &path, vexo_lcnr lcnr);

// A channel's X, Y, Z in a row minus those of black.
vexo_vector above_black(const vexo_lcnr &lcnr, int channel, int row);

// "FILE:LINE: row N (level L)", rows counted from 0.
std::string row_name(const Panel &panel, int row);

// Why the library makes no tables of measurements that read_panel() accepted: the first row, bottom up, without a
// usable colour above black, in words. Measurements are those in panel.lcnr, as the recipe left them.
std::string unusable_row(const Panel &panel);

#endif
