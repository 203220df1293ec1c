// What several commands share: options, and the steps that those ask for.
#ifndef VEXO_TOOLS_SHARED_OPTIONS_H
#define VEXO_TOOLS_SHARED_OPTIONS_H

#include <optional>
#include <string>
#include <vector>

#include "calibration/evidence.h"
#include "calibration/recipe.h"
#include "command/target-options.h"
#include "file/panel.h"
#include "report/report.h"

namespace CLI {
class App;
}

// The measurements of a panel, as they stand on the command line.
struct PanelOptions {
  std::string panel;
  std::string gray; // empty where not given
  std::string mix;  // empty where not given
  std::string condition = "on";

  bool conditions() const { return condition == "on"; }
};

// PANEL.xml, --gray and --mix.
void add_panel_options(CLI::App *command, PanelOptions &options);

// What was read of a panel.
struct PanelInput {
  Panel panel; // conditioned if asked for
  MoreReadings more;
  Evidence evidence;
  std::vector<std::string> notes;   // every change, and every warning
  std::optional<Spread> additivity; // of the grays, in CIEDE2000
};

// Reads and conditions. Prints one line per kind of change on standard error, every change with -v.
PanelInput read_panel_input(const PanelOptions &options);

// The model that has learnt all of it. Throws a Failure (input) where the library makes no tables.
PanelModel model_of(const PanelInput &input);

// Throws a Failure (input) where the panel gives no light at the highest input through LUTs of a file.
void require_light(const PanelModel &model, LutSet &luts, const std::string &path);

// The same for each channel alone.
void require_channels(const PanelModel &model, LutSet &luts, const std::string &path);

// Where the figures of a report go; empty where not given.
struct ReportOptions {
  ReportLabels labels;
  std::string html;
  std::string json;
  std::string csv;
  std::string verify;
  std::vector<std::string> limits; // tolerances by name, and files

  // Whether standard output belongs to a file, so that texts for people go elsewhere.
  bool to_stdout() const { return html == "-" || json == "-" || csv == "-"; }
};

// All files of a command are different ones: those of the options, others that it reads, and the LUTs that it writes;
// empty for none. Throws a Failure (usage).
void require_apart(const PanelOptions &panel, const TargetOptions &target, const ReportOptions &report,
                   std::vector<std::string> inputs, const std::string &luts_out);

// --json, --csv, --limits, and the texts for the record.
void add_figure_options(CLI::App *command, ReportOptions &options);

// These and --verify. The option for the HTML file each command names itself.
void add_report_options(CLI::App *command, ReportOptions &options);

// Writes the files that the options name.
void write_reports(const ReportOptions &options, const Report &report);

// Prints each limit on standard error. Throws a Failure (limit) when one is missed; written says what became of the
// output.
void judge_limits(const std::vector<LimitResult> &limits, const std::string &written);

// "the LUTs make the gray ramp worse: ...", with the figures and what they rest on; empty when they do not.
std::string worse_than_without(const Report &report);

// "vexo: TEXT" on standard error.
void warn(const std::string &text);

#endif
