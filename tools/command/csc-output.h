// What vexo csc prints.
#ifndef VEXO_TOOLS_CSC_OUTPUT_H
#define VEXO_TOOLS_CSC_OUTPUT_H

#include <optional>

#include "calibration/test-colours.h"
#include "signal/conversion.h"
#include "text/json.h"

// A triple of input codes and what becomes of it.
struct Applied {
  vexo_vector in;
  vexo_vector out;
};

struct CscResult {
  SignalInSpace from;
  SignalInSpace to;
  vexo_csc conversion;
  Registers registers;
  std::optional<Applied> applied;
  std::optional<ChartEffect> effect; // of the conversion, on a panel
};

// The registers only where asked for.
void print_text(const CscResult &r, bool registers);

Json json_of(const CscResult &r);

#endif
