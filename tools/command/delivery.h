// What calibrate and refine do with the LUTs that they made: files, a report, text, and the exit status.
#ifndef VEXO_TOOLS_DELIVERY_H
#define VEXO_TOOLS_DELIVERY_H

#include <string>

#include "calibration/recipe.h"
#include "command/shared-options.h"

struct Delivery {
  const PanelInput *input;
  const RecipeJob *job;
  Correction *correction;
  std::string output; // LUT file; empty: none
  TargetOptions target;
  ReportOptions report;
  std::string measured_through; // LUTs through which report.verify was measured; empty: these
  std::string command_line;
};

// Writes the LUTs and the reports and prints the figures. Throws a Failure (limit) where the LUTs leave the gray ramp
// worse than it is without them, or a limit is missed; all is written before.
void deliver(const Delivery &delivery);

#endif
