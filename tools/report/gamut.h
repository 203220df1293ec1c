// How much of the standard colour spaces a panel covers.
#ifndef VEXO_TOOLS_GAMUT_H
#define VEXO_TOOLS_GAMUT_H

#include <string>
#include <vector>

#include "vexo-cs.h"

struct Coverage {
  std::string space; // a name of parse_space()
  vexo_cs cs;
  double xy; // percent of the space's triangle that the panel's triangle covers
  double uv; // the same in u'v'
};

// BT.709, P3-D65 and BT.2020.
std::vector<Coverage> coverages(const vexo_cs &panel);

// One primary of a panel beside that of a space, both at the space's white.
struct PrimaryDistance {
  vexo_vector panel; // x, y
  vexo_vector space;
  double de2000;
};

struct NearestSpace {
  std::string space;
  PrimaryDistance primaries[3];
};

// The space of those above whose primaries are nearest in CIEDE2000. Every triangle is scaled to the same white.
NearestSpace nearest_space(const vexo_cs &panel);

#endif
