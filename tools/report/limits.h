// Limits for the figures of a report: published tolerances by name, and files of a user's own.
#ifndef VEXO_TOOLS_LIMITS_H
#define VEXO_TOOLS_LIMITS_H

#include <cstdio>
#include <optional>
#include <string>
#include <vector>

struct Report;

struct LimitResult {
  enum State { kPassed, kMissed, kNotJudged };
  std::string figure;
  std::optional<double> min;
  std::optional<double> max;
  std::string source; // who asks for it
  double value;       // NaN where the report does not know it
  State state;
};

// "at most 1", "at least 200" or "200 to 300"
std::string describe(const LimitResult &limit);

const char *state_name(LimitResult::State state); // "pass", "FAIL" or "not judged"

// Judges the figures by a tolerance's name, or by a JSON file: an object whose members are named as figures. A number
// is the most allowed; {"min": a, "max": b} has one or both. Throws a Failure (input; usage for a name that is
// neither).
std::vector<LimitResult> check_limits(const Report &report, const std::string &name_or_file);

// "PASS", "FAIL" or "no limits given"; how many are not judged.
std::string outcome(const std::vector<LimitResult> &limits);

std::string tolerance_names();

// Each tolerance with its figures and sources, then every figure that a file of limits can name.
void list_limits(std::FILE *f);

#endif
