// What several commands share: options, and the steps that those ask for.
#ifndef VEXO_TOOLS_SHARED_OPTIONS_H
#define VEXO_TOOLS_SHARED_OPTIONS_H

#include <string>
#include <vector>

#include "calibration/target.h"
#include "file/panel.h"
#include "report/report.h"

namespace CLI {
class App;
}

// What the gray ramp should follow, as it stands on the command line; empty where not given.
struct TargetOptions {
  std::string white = "D65";
  std::string gamma;
  std::string camera;
  std::string system;
};

void add_target_options(CLI::App *command, TargetOptions &options);
Target parse_target(const TargetOptions &options);

// Reads a panel and conditions it. Prints each change on standard error and adds it to the notes.
Panel read_conditioned(const std::string &path, std::vector<std::string> *notes);

// Where the figures of a report go; empty where not given.
struct ReportOptions {
  std::string html;
  std::string json;
  std::string csv;
  std::string verify;
  std::string limits;
};

// All but the option for the HTML file, which each command names itself.
void add_report_options(CLI::App *command, ReportOptions &options);

// Writes the files that the options name.
void write_reports(const ReportOptions &options, const Report &report);

// Prints each limit on standard error. Throws a Failure (limit) when one is missed.
void judge_limits(const std::vector<LimitResult> &limits);

// "vexo: TEXT" on standard error.
void warn(const std::string &text);

#endif
