// Limits that a user sets for the figures of a report.
#ifndef VEXO_TOOLS_LIMITS_H
#define VEXO_TOOLS_LIMITS_H

#include <string>
#include <utility>
#include <vector>

using NamedFigures = std::vector<std::pair<std::string, double>>;

struct LimitResult {
  std::string figure;
  std::string limit; // "at most 1" or "at least 200"
  double value;
  bool passed;
};

// Checks the figures against a JSON file: an object whose members are named as figures. A number is the largest value
// allowed; an object may have "min" and "max". Throws a Failure (input).
std::vector<LimitResult> check_limits(const NamedFigures &figures, const std::string &path);

#endif
