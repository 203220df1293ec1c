// vexo calibrate: from a panel's measurements to three correction LUTs.
#include <CLI/CLI.hpp>

#include "calibration/recipe.h"
#include "command/cli.h"
#include "command/commands.h"
#include "command/delivery.h"
#include "report/verdict.h"
#include "text/failure.h"
#include "text/format.h"

namespace {

struct CalibrateOptions {
  PanelOptions panel;
  std::string output; // empty where not given
  TargetOptions target;
  std::string recipe = "solve";
  int bits = 10;
  int entries = 1024;
  ReportOptions report;
};

// Says when the solve recipe would earn a better grade.
void compare_with_solve(const PanelInput &input, const RecipeJob &job, Correction &correction) {
  if (job.recipe == &recipe_named("solve")) {
    return;
  }
  RecipeJob other = job;
  other.recipe = &recipe_named("solve");
  Correction solved = correct(input.panel, other);
  const Spread ours = predicted_error(correction.model, correction.luts, job.target);
  const Spread theirs = predicted_error(solved.model, solved.luts, job.target);
  if (grade(theirs) < grade(ours)) {
    correction.warnings.push_back(format("%s with the %s recipe (mean CIEDE2000 %.2f), %s with --recipe solve (%.2f)",
                                         grade_name(grade(ours)), job.recipe->name, ours.mean,
                                         grade_name(grade(theirs)), theirs.mean));
  }
}

void run(const CalibrateOptions &options, const std::string &command_line) {
  const Target target = parse_target(options.target);
  require_apart(options.panel, options.target, options.report, {}, options.output);
  const PanelInput input = read_panel_input(options.panel);
  const RecipeJob job = {&recipe_named(options.recipe),
                         on_panel(target, model_of(input)),
                         options.panel.conditions(),
                         options.entries,
                         options.bits,
                         input.evidence};
  Correction correction = correct(input.panel, job);
  compare_with_solve(input, job, correction);
  deliver({&input, &job, &correction, options.output, options.target, options.report, "", command_line});
}

} // namespace

void add_calibrate(CLI::App &app, const std::string &command_line) {
  const auto options = std::make_shared<CalibrateOptions>();
  CLI::App *command = app.add_subcommand("calibrate", "Turn a panel's measurements into three correction LUTs");
  add_panel_options(command, options->panel);
  command->add_option("-o,--output", options->output,
                      "LUT file to write: three columns of codes, or a cube for .cube; - for standard output");
  add_target_options(command, options->target);
  command->add_option("--recipe", options->recipe, "How the LUTs are found")
      ->check(one_of(recipe_names()))
      ->capture_default_str();
  command
      ->add_option("--condition", options->panel.condition,
                   "on: leave out or mend rows that are noise; off: take the rows as measured")
      ->check(one_of({"on", "off"}))
      ->capture_default_str();
  command->add_option("--bits", options->bits, "Depth of the codes")->check(whole_number(1, 30))->capture_default_str();
  command->add_option("--entries", options->entries, "Entries of each LUT")
      ->check(whole_number(2, 65536))
      ->capture_default_str();
  command->add_option("--report", options->report.html, "HTML report to write; - for standard output");
  add_report_options(command, options->report);
  command->footer(
      "Example: vexo calibrate panel.xml --gray bare.csv -o luts.txt --white D65 --gamma 2.4\n\n"
      "Recipes: solve finds the three drives of each gray for the target's X, Y and Z. aligned and direct are those\n"
      "of the library; they assume that the channels add.\n"
      "Conditioning leaves out rows that are not credibly above black, raises components at or below black, and\n"
      "lowers values that fall. -v names each change.\n\n"
      "Exit status: 0 done; 1 the panel cannot show the target white or its luminance (no LUTs are written), or the\n"
      "LUTs make the gray ramp worse or miss a limit (LUTs are written; the last line on standard error says which);\n"
      "2 usage; 3 input unreadable or invalid; 4 output failed.");
  command->callback([options, command_line] { run(*options, command_line); });
}
