#include "report/verdict.h"

#include "text/format.h"

namespace {

// Charts mark the same two differences: 1 is just visible side by side, 3 is visible.
struct Grade {
  const char *name;
  double mean; // the most CIEDE2000
  double worst;
  const char *meaning;
};

const Grade kGrades[] = {
    {"Good", 1.0, 3.0, "on average, the difference to the target is at most just visible side by side"},
    {"Fair", 3.0, 6.0, "differences to the target are visible side by side"},
};
const char *const kPoor = "differences to the target are visible at a glance";

const char *meaning(int grade) { return grade < 2 ? kGrades[grade].meaning : kPoor; }

std::string figures(const Spread &de) { return format("CIEDE2000 mean %.2f, worst %.2f", de.mean, de.worst); }

std::string measured_verdict(const Report &report) {
  const Spread &de = report.measured->summary.de2000;
  return format("%s, measured: %s (%s)", grade_name(grade(de)), meaning(grade(de)), figures(de).c_str());
}

std::string predicted_verdict(const Report &report) {
  const Spread &de = report.after.summary.de2000;
  return format(report.source.model->knows_grays() ? "%s, %s (%s)" : "%s only if the channels add: %s (%s)",
                grade_name(grade(de)), prediction_basis(report), figures(de).c_str());
}

} // namespace

int grade(const Spread &de2000) {
  int result = 0;
  while (result < 2 && !(de2000.mean <= kGrades[result].mean && de2000.worst <= kGrades[result].worst)) {
    result++;
  }
  return result;
}

const char *grade_name(int grade) { return grade < 2 ? kGrades[grade].name : "Poor"; }

const char *prediction_basis(const Report &report) {
  return report.source.model->knows_grays() ? "predicted from measured grays" : "predicted, channels assumed to add";
}

const char *basis(const Report &report) { return judges_measured(report) ? "measured" : prediction_basis(report); }

std::string verdict(const Report &report) {
  if (!report.measured) {
    return predicted_verdict(report);
  }
  if (judges_measured(report)) {
    return measured_verdict(report);
  }
  return "Through " + report.source.measured_through + ": " + measured_verdict(report) + ". Through " +
         report.source.luts_name + ": " + predicted_verdict(report);
}

std::string next_step(const Report &report) {
  if (judges_measured(report)) {
    return "";
  }
  return report.source.model->knows_grays() ? "measure the gray ramp through these LUTs, which shows what a viewer sees"
                                            : "measure the gray ramp of the bare panel and give it with --gray, for "
                                              "the channels of real panels do not add";
}

bool makes_worse(const Report &report) { return is_worse(judged(report).summary.de2000, report.before.summary.de2000); }
