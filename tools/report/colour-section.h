// The colour section of a report: test colours as they are shown, against what the signal asks for.
#ifndef VEXO_TOOLS_COLOUR_SECTION_H
#define VEXO_TOOLS_COLOUR_SECTION_H

#include <string>
#include <vector>

#include "calibration/test-colours.h"
#include "text/json.h"

// The input of the section.
struct ColourSource {
  Space space;
  vexo_3dlut *cube = nullptr; // in front of the 1D LUTs; null for none
  std::string verify;         // file of measured colours; empty: none
};

// A colour as it is shown. NaN where it was not measured.
struct ShownColour {
  Triple XYZ;
  double de2000;
};

struct ColourRow {
  Patch patch;
  Triple wanted; // XYZ
  bool in_gamut; // whether the panel can show it, by the model
  std::vector<ShownColour> shown;
};

struct ColourSection {
  std::vector<std::string> ways; // in which the colours are shown: a column each
  size_t judged;                 // the way that limits are about: as measured, else with the 3D LUT, else the 1D LUTs
  Triple white;
  White target_white;
  std::vector<ColourRow> rows;
};

// luts: three, or null for none. Throws a Failure (input) where none of the test colours was measured.
ColourSection judge_colours(const ColourSource &source, const PanelModel &model, const vexo_lut *luts,
                            const Target &target);

// CIEDE2000 of one way, over the patches of a group, or of all groups if it is empty. Patches without it are left out.
Spread colour_spread(const ColourSection &section, size_t way, const std::string &group);

// How many of the 24 colours lack a figure in the way that is judged.
int missing_colours(const ColourSection &section);

std::string html_of(const ColourSection &section);
Json json_of(const ColourSection &section);

#endif
