#include "report/limits.h"

#include <algorithm>
#include <cmath>

#include "file/input.h"
#include "report/figure-list.h"
#include "text/failure.h"
#include "text/format.h"
#include "text/grammar.h"
#include "text/json.h"

namespace {

const double kNo = std::nan("");

// One figure of a published tolerance. A bound that it does not have is NaN.
struct Tolerance {
  const char *name;
  const char *figure;
  double min;
  double max;
  const char *source;
};

// The project's reading of these documents. A report that keeps to them is no certificate.
const Tolerance kTolerances[] = {
    {"ebu-grade1", "uv_star_worst", kNo, 0.5, "EBU Tech 3320 v4.1, gray scale reproduction, grade 1"},
    {"ebu-grade1", "gamma_min", 2.3, kNo, "EBU Tech 3320 v4.1, gamma 2.4 +- 0.10 from 10 to 90 %"},
    {"ebu-grade1", "gamma_max", kNo, 2.5, "EBU Tech 3320 v4.1, gamma 2.4 +- 0.10 from 10 to 90 %"},
    {"ebu-grade1", "white_uv_star", kNo, 1.3, "EBU Tech 3320 v4.1, reference white, grade 1"},
    {"ebu-grade1", "black", kNo, 0.05, "EBU Tech 3320 v4.1, black level, grade 1"},
    {"ebu-grade1", "luminance", 70.0, kNo, "EBU Tech 3320 v4.1, white of 70 to 100 cd/m2 or more, grade 1"},
    {"ebu-grade1", "contrast", 2000.0, kNo, "EBU Tech 3320 v4.1, full-screen contrast, grade 1"},
    {"ebu-grade2", "uv_star_worst", kNo, 1.0, "EBU Tech 3320 v4.1, gray scale reproduction, grade 2"},
    {"ebu-grade2", "gamma_min", 2.3, kNo, "EBU Tech 3320 v4.1, gamma 2.4 +- 0.10 from 10 to 90 %"},
    {"ebu-grade2", "gamma_max", kNo, 2.5, "EBU Tech 3320 v4.1, gamma 2.4 +- 0.10 from 10 to 90 %"},
    {"ebu-grade2", "white_uv_star", kNo, 4.0, "EBU Tech 3320 v4.1, reference white, grade 2"},
    {"ebu-grade2", "black", kNo, 0.4, "EBU Tech 3320 v4.1, black level, grade 2"},
    {"ebu-grade2", "luminance", 70.0, 200.0, "EBU Tech 3320 v4.1, white, grade 2"},
    {"ebu-grade2", "contrast", 500.0, kNo, "EBU Tech 3320 v4.1, full-screen contrast, grade 2"},
    {"ebu-grade3", "uv_star_worst", kNo, 1.5, "EBU Tech 3320 v4.1, gray scale reproduction, grade 3"},
    {"ebu-grade3", "white_uv_star", kNo, 4.0, "EBU Tech 3320 v4.1, reference white, grade 3"},
    {"ebu-grade3", "black", kNo, 0.7, "EBU Tech 3320 v4.1, black level, grade 3"},
    {"ebu-grade3", "luminance", 70.0, 250.0, "EBU Tech 3320 v4.1, white, grade 3"},
    {"ebu-grade3", "contrast", 300.0, kNo, "EBU Tech 3320 v4.1, full-screen contrast, grade 3"},
    {"dci", "light_error_dark", kNo, 5.0, "DCI compliance test plan 1.4.3, steps of 0.121 and 0.731 cd/m2"},
    {"dci", "light_error_bright", kNo, 3.0, "DCI compliance test plan 1.4.3, steps of 2.098 to 47.999 cd/m2"},
    {"dci", "luminance", 44.5, 51.5, "DCI compliance test plan 1.4.3, white 48 +- 3.5 cd/m2"},
    {"dci", "white_x", 0.312, 0.316, "DCI compliance test plan 1.4.3, white x 0.314 +- 0.002"},
    {"dci", "white_y", 0.349, 0.353, "DCI compliance test plan 1.4.3, white y 0.351 +- 0.002"},
    {"netflix", "de2000_mean", kNo, 1.0, "Netflix display calibration, gray"},
    {"netflix", "color_de2000_mean", kNo, 1.0, "Netflix display calibration, colour"},
    {"netflix", "luminance", 95.0, 105.0, "Netflix display calibration, 100 cd/m2; the 5 % are the project's"},
    {"netflix", "black", kNo, 0.05, "Netflix display calibration, black"},
    {"netflix", "contrast", 2000.0, kNo, "Netflix display calibration, contrast"},
    {"displaycal", "de2000_mean", kNo, 1.5, "DisplayCAL, nominal mean of a calibration report"},
    {"displaycal", "de2000_worst", kNo, 4.0, "DisplayCAL, nominal worst of a calibration report"},
    {"displaycal", "de2000_white", kNo, 2.0, "DisplayCAL, nominal white of a calibration report"},
};

std::vector<std::string> names() {
  std::vector<std::string> list = names_of(kTolerances);
  list.erase(std::unique(list.begin(), list.end()), list.end());
  return list;
}

std::optional<double> bound(double value) { return std::isnan(value) ? std::nullopt : std::optional(value); }

LimitResult judge(const Report &report, LimitResult limit) {
  limit.value = figure_named(limit.figure)->value(report, judged(report));
  const bool kept = limit.value >= limit.min.value_or(limit.value) && limit.value <= limit.max.value_or(limit.value);
  limit.state = std::isnan(limit.value) ? LimitResult::kNotJudged : kept ? LimitResult::kPassed : LimitResult::kMissed;
  return limit;
}

std::vector<LimitResult> limits_of_tolerance(const std::string &name) {
  std::vector<LimitResult> limits;
  for (const Tolerance &t : kTolerances) {
    if (lower(name) == t.name) {
      limits.push_back({t.figure, bound(t.min), bound(t.max), t.source, 0.0, LimitResult::kNotJudged});
    }
  }
  return limits;
}

// One member of a file. where: "FILE: limit 'NAME'"
LimitResult limit_of_member(const std::string &where, const NamedFigure &figure, const Json &member) {
  LimitResult limit = {figure.name, {}, {}, "", 0.0, LimitResult::kNotJudged};
  if (member.is_number() && figure.bound == Bound::kMost) {
    limit.max = member.get<double>();
    return limit;
  }
  if (!member.is_object() || member.empty()) {
    refuse_input(where, figure.bound == Bound::kMost ? "expected a number, or {\"min\": a, \"max\": b}"
                                                     : "expected {\"min\": a, \"max\": b}, one or both");
  }
  for (const auto &[side, value] : member.items()) {
    if (side != "min" && side != "max") {
      refuse_input(where, "'" + side + "' is neither min nor max");
    }
    if (!value.is_number()) {
      refuse_input(where, "expected a number as " + side);
    }
    (side == "min" ? limit.min : limit.max) = value.get<double>();
  }
  if (limit.min && limit.max && *limit.min > *limit.max) {
    refuse_input(where, format("min %g is above max %g", *limit.min, *limit.max));
  }
  return limit;
}

std::string figure_names() {
  std::string list;
  for (const NamedFigure &figure : kNamedFigures) {
    list += std::string(" ") + figure.name;
  }
  return list;
}

std::vector<LimitResult> limits_of_file(const std::string &path) {
  const std::string file = input_name(path);
  const std::string expected = "a JSON object of limits by figure";
  const Json members = parse_json(file, read_text(path, "JSON limits"), expected);
  if (!members.is_object()) {
    refuse_input(file, "expected " + expected);
  }
  std::vector<LimitResult> limits;
  for (const auto &[name, member] : members.items()) {
    const NamedFigure *figure = figure_named(name);
    if (figure == nullptr) {
      refuse_input(file, "no figure '" + name + "', expected one of" + figure_names());
    }
    limits.push_back(limit_of_member(file + ": limit '" + name + "'", *figure, member));
    limits.back().source = file;
  }
  return limits;
}

} // namespace

std::string describe(const LimitResult &limit) {
  if (limit.min && limit.max) {
    return format("%g to %g", *limit.min, *limit.max);
  }
  return limit.max ? format("at most %g", *limit.max) : format("at least %g", limit.min.value_or(0.0));
}

const char *state_name(LimitResult::State state) {
  const char *const kNames[] = {"pass", "FAIL", "not judged"};
  return kNames[state];
}

std::vector<LimitResult> check_limits(const Report &report, const std::string &name_or_file) {
  std::vector<LimitResult> limits = limits_of_tolerance(name_or_file);
  if (limits.empty() && name_or_file.find_first_of("./") == std::string::npos && name_or_file != "-") {
    reject("--limits", name_or_file, "one of " + tolerance_names() + ", or a file FILE.json", names());
  }
  if (limits.empty()) {
    limits = limits_of_file(name_or_file);
  }
  for (LimitResult &limit : limits) {
    limit = judge(report, limit);
  }
  return limits;
}

std::string outcome(const std::vector<LimitResult> &limits) {
  const auto count = [&](LimitResult::State state) {
    return std::count_if(limits.begin(), limits.end(), [state](const LimitResult &l) { return l.state == state; });
  };
  if (limits.empty()) {
    return "no limits given";
  }
  const auto open = count(LimitResult::kNotJudged);
  return std::string(count(LimitResult::kMissed) > 0 ? "FAIL" : "PASS") +
         (open > 0 ? format(", %ld of %zu limits not judged", static_cast<long>(open), limits.size()) : "");
}

std::string tolerance_names() { return join(names()); }

void list_limits(std::FILE *f) {
  for (const Tolerance &t : kTolerances) {
    const LimitResult limit = {t.figure, bound(t.min), bound(t.max), "", 0.0, LimitResult::kNotJudged};
    std::fprintf(f, "%-11s %-18s %-16s %s\n", t.name, t.figure, describe(limit).c_str(), t.source);
  }
  std::fprintf(f, "\nFigures that a file of limits can name:\n");
  for (const NamedFigure &figure : kNamedFigures) {
    std::fprintf(f, "  %-18s %s\n", figure.name, figure.meaning);
  }
}
