// Options that several commands share.
#ifndef VEXO_TOOLS_SHARED_OPTIONS_H
#define VEXO_TOOLS_SHARED_OPTIONS_H

#include <string>

#include "calibration/gray-ramp.h"
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

// Where the figures of a report go; empty where not given.
struct ReportOptions {
  std::string html;
  std::string json;
  std::string csv;
  std::string verify;
  std::string limits;

  bool any() const { return !(html.empty() && json.empty() && csv.empty() && verify.empty() && limits.empty()); }
};

// All but the option for the HTML file, which each command names itself.
void add_report_options(CLI::App *command, ReportOptions &options);

// Makes the report, writes the files asked for and prints each limit. Throws a Failure (limit) when one is missed,
// after everything is written.
void write_reports(const ReportOptions &options, ReportSource source);

#endif
