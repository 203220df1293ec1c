// The option --limit of the commands that compare LUTs.
#ifndef VEXO_TOOLS_DIFFERENCE_LIMIT_H
#define VEXO_TOOLS_DIFFERENCE_LIMIT_H

#include <string>

namespace CLI {
class App;
}

struct DifferenceLimit {
  std::string text; // as the user gave it; empty for no limit
  float value = 0.0F;
};

void add_difference_limit(CLI::App *command, DifferenceLimit &limit);

// Throws a Failure (limit) for the first channel whose largest difference is above the limit or NaN.
void check_differences(const DifferenceLimit &limit, const double (&largest)[3]);

#endif
