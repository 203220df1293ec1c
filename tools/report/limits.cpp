#include "report/limits.h"

#include <algorithm>

#include "file/input.h"
#include "text/failure.h"
#include "text/format.h"
#include "text/json.h"

namespace {

// One member of the file.
struct Limit {
  std::string path;
  std::string figure;
  double value;
};

LimitResult check_bound(const Limit &limit, const Json &bound, bool upper) {
  if (!bound.is_number()) {
    throw Failure(kInputError,
                  limit.path + ": limit '" + limit.figure + "': expected a number, or {\"min\": a, \"max\": b}");
  }
  const double b = bound.get<double>();
  return {limit.figure, format("at %s %g", upper ? "most" : "least", b), limit.value,
          upper ? limit.value <= b : limit.value >= b};
}

void check_limit(std::vector<LimitResult> *results, const Limit &limit, const Json &bounds) {
  if (!bounds.is_object()) {
    results->push_back(check_bound(limit, bounds, true));
    return;
  }
  for (const auto &[side, bound] : bounds.items()) {
    if (side != "min" && side != "max") {
      throw Failure(kInputError, limit.path + ": limit '" + limit.figure + "': '" + side + "' is neither min nor max");
    }
    results->push_back(check_bound(limit, bound, side == "max"));
  }
}

double figure_named(const NamedFigures &figures, const std::string &name, const std::string &path) {
  std::string known;
  for (const auto &[figure, value] : figures) {
    if (figure == name) {
      return value;
    }
    known += " " + figure;
  }
  throw Failure(kInputError, path + ": no figure '" + name + "', expected one of" + known);
}

} // namespace

std::vector<LimitResult> check_limits(const NamedFigures &figures, const std::string &path) {
  const File f = open_input(path, "JSON limits");
  const Json limits = Json::parse(f.get(), nullptr, false);
  const std::string name_of_file = input_name(path);
  if (!limits.is_object()) {
    throw Failure(kInputError, name_of_file + ": expected a JSON object of limits by figure");
  }
  std::vector<LimitResult> results;
  for (const auto &[name, bounds] : limits.items()) {
    check_limit(&results, {name_of_file, name, figure_named(figures, name, name_of_file)}, bounds);
  }
  return results;
}
