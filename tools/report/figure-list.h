// The figures of a ramp by name: what the page, JSON and limits show, in one table.
#ifndef VEXO_TOOLS_FIGURE_LIST_H
#define VEXO_TOOLS_FIGURE_LIST_H

#include "report/report.h"

enum class Bound { kMost, kNamed }; // a single number is the largest allowed value; or the limit must name min or max

struct NamedFigure {
  const char *name;
  const char *meaning; // with its unit
  int decimals;
  Bound bound;
  bool on_page;
  double (*value)(const Report &report, const Ramp &ramp); // NaN where a report cannot know it
};

extern const std::vector<NamedFigure> kNamedFigures;

// The figure of that name; null for none.
const NamedFigure *figure_named(const std::string &name);

#endif
