// vexo measure: a look at a panel's measurements.
#include <CLI/CLI.hpp>

#include "command/commands.h"
#include "command/shared-options.h"
#include "file/apart.h"
#include "report/measurements.h"
#include "text/failure.h"
#include "text/json.h"

namespace {

struct MeasureOptions {
  std::string panel;
  std::string gray;
  std::string mix;
  std::string condition;
  bool json = false;
};

void run(const MeasureOptions &options) {
  if (options.panel.empty()) {
    throw Failure(kUsageError, "PANEL.xml is required");
  }
  require_apart({options.panel, options.gray, options.mix}, {options.condition, options.json ? "-" : ""});
  const Check c = check(read_panel(options.panel), options.gray, options.mix);
  if (options.json) {
    print_json(json_check(c));
  } else if (options.condition != "-") {
    print_check(c);
  }
  if (!options.condition.empty()) {
    write_panel(options.condition, read_panel_input({options.panel, "", "", "on"}).panel.lcnr);
    return;
  }
  if (!c.obstacle.empty()) {
    throw Failure(kLimitMissed, c.obstacle);
  }
}

} // namespace

void add_measure(CLI::App &app) {
  const auto options = std::make_shared<MeasureOptions>();
  CLI::App *command = app.add_subcommand("measure", "Check a panel's measurements, or import them");
  CLI::Option *panel = command->add_option("PANEL.xml", options->panel, "LCNR file; - for standard input");
  CLI::Option *gray =
      command->add_option("--gray", options->gray,
                          "Gray ramp of the bare panel (CSV of level,X,Y,Z or x,y,Y; .ti3): says how far the "
                          "channels add");
  CLI::Option *mix = command->add_option("--mix", options->mix,
                                         "Measured mixtures (CSV of r,g,b,X,Y,Z or x,y,Y; .ti3): says how well "
                                         "the panel model predicts mixtures that it has not seen");
  CLI::Option *json = command->add_flag("--json", options->json, "Print JSON");
  CLI::Option *conditioned = command->add_option("--condition", options->condition,
                                                 "LCNR file to write: the measurements as vexo calibrate conditions "
                                                 "them; - for standard output, without the check");
  command->footer(
      "Example: vexo measure panel.xml --gray gray.csv\n\n"
      "Exit status: 0 vexo calibrate can use it, warnings or not; 1 it cannot; 2 usage; 3 input unreadable or\n"
      "invalid; 4 output failed.");
  add_import(*command);
  CLI::App *nested = command->get_subcommand("import");
  for (CLI::Option *option : {panel, gray, mix, json, conditioned}) {
    nested->excludes(option);
  }
  command->callback([options, command] {
    if (command->get_subcommands().empty()) {
      run(*options);
    }
  });
}
