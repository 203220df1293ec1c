// vexo refine: better LUTs from a gray ramp that was measured through the LUTs so far.
#include <CLI/CLI.hpp>

#include "calibration/recipe.h"
#include "calibration/refine.h"
#include "command/commands.h"
#include "command/delivery.h"
#include "file/input.h"
#include "text/failure.h"
#include "text/format.h"

namespace {

const int kBitsOfFractions = 16; // of LUTs in a cube file
const double kOtherRamp = 3.0;   // mean CIEDE2000 between ramps that are not the same
const double kTimesNearer = 4.0; // by this factor, a ramp of the bare panel is nearer to its prediction

struct RefineOptions {
  PanelOptions panel;
  std::string luts;
  std::string output;
  TargetOptions target;
  ReportOptions report; // verify: the measured ramp
};

// A ramp of the bare panel, given by mistake or measured without the LUTs, would lead far off.
void refuse_bare_ramp(const RefineOptions &options, const GrayRamp &ramp, LutSet &luts, const PanelModel &model) {
  const double through = prediction_error(ramp, luts.get(), model);
  const double bare = prediction_error(ramp, nullptr, model);
  if (through > kOtherRamp && bare < through / kTimesNearer) {
    refuse_input(input_name(ramp.path),
                 format("it is near the bare panel (mean CIEDE2000 %.2f), not near what %s leads to (%.2f): expected a "
                        "ramp measured through these LUTs",
                        bare, input_name(options.luts).c_str(), through));
  }
}

// Keeps the LUTs as they are when the new ones are no better by more than the readings can tell. Throws a Failure
// (limit) when the new ones are worse by more than that.
bool keeps(const RefineOptions &options, const GrayRamp &ramp, const Target &target, LutSet &before,
           Correction &correction) {
  const double old_error = predicted_error(correction.model, before, target).mean;
  const double new_error = predicted_error(correction.model, correction.luts, target).mean;
  const double noise = noise_difference(ramp, target.white);
  if (new_error - old_error > noise) {
    throw Failure(kLimitMissed,
                  format("the refined LUTs would be worse: mean CIEDE2000 %.4f, %s has %.4f; no LUTs were "
                         "written",
                         new_error, options.luts.c_str(), old_error));
  }
  if (old_error - new_error > noise) {
    return false;
  }
  correction.remarks = {
      format("the LUTs stay as in %s: refined ones would gain %.4f CIEDE2000, these readings can tell "
             "%.4f",
             options.luts.c_str(), std::max(old_error - new_error, 0.0), noise)};
  return true;
}

void run(const RefineOptions &options, const std::string &command_line) {
  const TargetOptions target_options = complete(options.target);
  Target target = parse_target(target_options);
  require_apart(options.panel, target_options, options.report, {options.luts}, options.output);
  PanelInput input = read_panel_input(options.panel);
  LutScan scan = scan_luts(options.luts, three_channel_layout(options.luts));
  LutSet before = load_luts(scan);
  const GrayRamp ramp = read_gray_ramp(options.report.verify, input.panel);
  const std::string gap = sparse(ramp, input.panel.lcnr);
  if (!gap.empty()) {
    throw Failure(kInputError, gap);
  }
  const PanelModel model = model_of(input);
  require_channels(model, before, options.luts);
  refuse_bare_ramp(options, ramp, before, model);
  input.evidence.grays.push_back(believed_grays(ramp, before.get(), model));
  if (input.evidence.grays.back().empty()) {
    refuse_input(input_name(options.luts), "no gray through these LUTs is near gray: expected those of a calibration");
  }
  target = on_panel(target, model_of(input));
  const RecipeJob job = {&recipe_named("solve"),
                         target,
                         options.panel.conditions(),
                         before.size(),
                         scan.bits > 0 ? scan.bits : kBitsOfFractions,
                         input.evidence};
  Correction correction = correct(input.panel, job);
  const bool kept = keeps(options, ramp, target, before, correction);
  if (kept) {
    correction.luts = resampled(before, before.size());
    correction.exact = resampled(before, before.size());
  }
  deliver({&input, &job, &correction, options.output, target_options, options.report, kept ? "" : options.luts,
           command_line});
}

} // namespace

void add_refine(CLI::App &app, const std::string &command_line) {
  const auto options = std::make_shared<RefineOptions>();
  CLI::App *command = app.add_subcommand("refine", "Make better LUTs from a gray ramp measured through LUTs");
  add_panel_options(command, options->panel);
  command
      ->add_option("LUTS.txt", options->luts,
                   "LUTs that the ramp was measured through: three columns of codes, or a cube for .cube")
      ->required();
  command
      ->add_option("MEASURED.csv", options->report.verify,
                   "Gray ramp measured through LUTS.txt (CSV of level,X,Y,Z or x,y,Y; .ti3); a level stands for the "
                   "input, in the unit of the panel file")
      ->required();
  command
      ->add_option("-o,--output", options->output,
                   "LUT file to write: three columns of codes, or a cube for .cube; - for standard output")
      ->required();
  add_target_options(command, options->target);
  add_from_option(command, options->target);
  command->add_option("--report", options->report.html, "HTML report to write; - for standard output");
  add_figure_options(command, options->report);
  command->footer(
      "Example: vexo refine panel.xml luts.txt measured.csv -o refined.txt --gray bare.csv\n\n"
      "Give the same target as to calibrate, or --from with the JSON file of the calibration. The readings are taken\n"
      "to have a noise of 0.2 % and 0.002 cd/m2. Where they cannot tell better LUTs from the present ones, the\n"
      "present ones are written.\n\n"
      "Exit status: 0 done; 1 the LUTs would be worse (none are written), the gray ramp is worse than without\n"
      "LUTs, or a limit is missed; 2 usage; 3 input unreadable or invalid; 4 output failed.");
  command->callback([options, command_line] { run(*options, command_line); });
}
