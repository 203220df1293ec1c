// The charts of a report.
#ifndef VEXO_TOOLS_CHARTS_H
#define VEXO_TOOLS_CHARTS_H

#include <vector>

#include "report/chart.h"
#include "report/report.h"

// In the order of the page.
std::vector<Chart> charts(const Report &report);

#endif
