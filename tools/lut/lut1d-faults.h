// What is wrong with a 1D LUT file beyond its text.
#ifndef VEXO_TOOLS_LUT1D_FAULTS_H
#define VEXO_TOOLS_LUT1D_FAULTS_H

#include <vector>

#include "file/luts.h"

// The issues of the text, and entries below the one before them or, in a column, numbers that the reader replaces. In
// the order of their lines.
std::vector<LutIssue> faults(const LutScan &scan);

#endif
