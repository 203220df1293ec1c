// vexo calibrate: from a panel's measurements to three correction LUTs.
#include <CLI/CLI.hpp>

#include "calibration/recipe.h"
#include "command/commands.h"
#include "command/shared-options.h"
#include "file/output.h"
#include "text/failure.h"
#include "text/format.h"
#include "text/verbose.h"

namespace {

struct Options {
  PanelOptions panel;
  std::string output; // empty where not given
  TargetOptions target;
  std::string recipe = "solve";
  int bits = 10;
  int entries = 1024;
  ReportOptions report;
};

ReportSource source_of(const Options &options, const RecipeJob &job, const PanelInput &input, Correction &correction) {
  ReportSource source;
  source.panel = &input.panel;
  source.model = &correction.model;
  source.notes = input.notes;
  source.notes.insert(source.notes.end(), correction.remarks.begin(), correction.remarks.end());
  source.target = job.target;
  source.recipe = std::string(job.recipe->name) + ": " + job.recipe->meaning;
  source.luts = &correction.luts;
  source.exact = &correction.exact;
  source.luts_name = options.output.empty() ? "not written" : options.output;
  source.verify = options.report.verify;
  source.limits = options.report.limits;
  return source;
}

void warn_when_worse(const Options &options, const Report &report) {
  const double before = report.before.summary.de2000.mean;
  const double after = report.after.summary.de2000.mean;
  if (!(after <= before)) {
    warn(format("these LUTs make the gray ramp worse: mean CIEDE2000 %.4f, without them %.4f; ", after, before) +
         (options.recipe == "solve" ? "try more --bits or --entries, or use no LUTs" : "try --recipe solve"));
  }
}

void write_luts(const Options &options, LutSet &luts) {
  OutputFile file(options.output);
  vexo_luts_store_int(file.stream(), luts.get(), options.bits);
  file.commit();
}

std::string describe_white(const Ramp &ramp) {
  const vexo_vector &xyY = ramp.summary.white;
  return format("x %.4f, y %.4f, luminance %.4g", xyY.d[0], xyY.d[1], xyY.d[2]);
}

void print(const Options &options, const Report &report, const Correction &correction, size_t changes) {
  std::FILE *f = options.output == "-" ? stderr : stdout;
  const vexo_lcnr &rows = report.source.panel->lcnr;
  const Target &target = report.source.target;
  std::fprintf(f, "Panel         %s, %d rows, levels 0 to %g\n", options.panel.panel.c_str(), rows.num,
               rows.sample[rows.num - 1]);
  std::fprintf(f, "Conditioning  %s\n",
               !options.panel.conditions() ? "off"
               : changes == 0              ? "nothing to do"
                                           : format("%zu changes, listed on standard error", changes).c_str());
  std::fprintf(f, "Panel white   %s\n", describe_white(report.before).c_str());
  std::fprintf(f, "Target white  x %.4f, y %.4f (%s)\n", target.white.xyz.d[0], target.white.xyz.d[1],
               target.white.name.c_str());
  std::fprintf(f, "White after   %s\n", describe_white(report.after).c_str());
  std::fprintf(f, "Camera curve  %s\n", describe(target.camera).c_str());
  std::fprintf(f, "System curve  %s\n", describe(target.system).c_str());
  std::fprintf(f, "Recipe        %s\n", report.source.recipe.c_str());
  std::fprintf(f, "Gains         red %.4f, green %.4f, blue %.4f\n", correction.gains[0], correction.gains[1],
               correction.gains[2]);
  std::fprintf(f, "LUTs          %s, 3 x %d entries of %d bits\n",
               options.output.empty()  ? "not written (give -o FILE)"
               : options.output == "-" ? "standard output"
                                       : options.output.c_str(),
               options.entries, options.bits);
  for (const std::string &remark : correction.remarks) {
    std::fprintf(f, "              %s\n", remark.c_str());
  }
  write_gray_ramp(report, f);
}

void run(const Options &options, const std::string &command_line) {
  const PanelInput input = read_panel_input(options.panel);
  const RecipeJob job = {&recipe_named(options.recipe),
                         parse_target(options.target),
                         options.panel.conditions(),
                         options.entries,
                         options.bits,
                         input.grays};
  Correction correction = correct(input.panel, job);
  say("predicts the gray ramp");
  ReportSource source = source_of(options, job, input, correction);
  source.command_line = command_line;
  const Report report = make_report(source);
  for (const std::string &warning : correction.warnings) {
    warn(warning);
  }
  warn_when_worse(options, report);
  if (!options.output.empty()) {
    write_luts(options, correction.luts);
  }
  print(options, report, correction, input.notes.size());
  write_reports(options.report, report);
  judge_limits(report.limits);
}

} // namespace

void add_calibrate(CLI::App &app, const std::string &command_line) {
  const auto options = std::make_shared<Options>();
  CLI::App *command = app.add_subcommand("calibrate", "Turn a panel's measurements into three correction LUTs");
  add_panel_options(command, options->panel);
  command->add_option("-o,--output", options->output,
                      "LUT file to write, three columns of codes; - for standard output");
  add_target_options(command, options->target);
  command->add_option("--recipe", options->recipe, "How the LUTs are found")
      ->check(CLI::IsMember(recipe_names()))
      ->capture_default_str();
  command
      ->add_option("--condition", options->panel.condition,
                   "on: leave out and mend rows that are noise, each named; off: as measured")
      ->check(CLI::IsMember({"on", "off"}))
      ->capture_default_str();
  command->add_option("--bits", options->bits, "Depth of the codes")->check(CLI::Range(1, 30))->capture_default_str();
  command->add_option("--entries", options->entries, "Entries of each LUT")
      ->check(CLI::Range(2, 65536))
      ->capture_default_str();
  command->add_option("--report", options->report.html, "HTML report to write; - for standard output");
  add_report_options(command, options->report);
  command->footer(
      "Example: vexo calibrate panel.xml -o luts.txt --white D65 --gamma 2.4\n\n"
      "Recipes: aligned and direct are the library's; solve finds the three drives of each gray for the target's X, Y\n"
      "and Z. Conditioning leaves out rows that are not credibly above black, raises components at or below black and\n"
      "lowers values that fall, each named on standard error. docs/recipes.md has the rules and figures.\n\n"
      "Exit status: 0 done, 1 the panel cannot show the target white, 2 usage, 3 input unreadable or invalid,\n"
      "4 output failed.");
  command->callback([options, command_line] { run(*options, command_line); });
}
