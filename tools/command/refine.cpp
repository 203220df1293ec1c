// vexo refine: better LUTs from a gray ramp that was measured through the LUTs so far.
#include <CLI/CLI.hpp>

#include "calibration/recipe.h"
#include "calibration/refine.h"
#include "command/commands.h"
#include "command/shared-options.h"
#include "file/output.h"
#include "text/failure.h"
#include "text/format.h"

namespace {

struct Options {
  PanelOptions panel;
  std::string luts;
  std::string measured;
  std::string output;
  TargetOptions target;
};

double mean_error(const PanelModel &model, LutSet &luts, const Target &target) {
  std::vector<GrayFigure> grays = predict(model, luts.get());
  const double peak = grays.back().XYZ.d[1];
  return GrayTarget(target, primaries_of(model), peak).judge(std::move(grays)).summary.de2000.mean;
}

void run(const Options &options) {
  PanelInput input = read_panel_input(options.panel);
  const Target target = parse_target(options.target);
  LutScan scan = scan_luts(options.luts, "integer");
  LutSet before = load_luts(scan);
  const GrayRamp ramp = read_gray_ramp(options.measured, input.panel);
  input.grays.push_back(believed_grays(ramp, before.get(), model_of(input)));
  const RecipeJob job = {&recipe_named("solve"), target, true, before.size(), scan.bits, input.grays};
  Correction correction = correct(input.panel, job);
  const double old_error = mean_error(correction.model, before, target);
  const double new_error = mean_error(correction.model, correction.luts, target);
  const double noise = noise_difference(ramp, target.white);
  std::printf("old %.4f new %.4f noise %.4f\n", old_error, new_error, noise);
  if (new_error - old_error > noise) {
    throw Failure(kLimitMissed, "worse");
  }
  const bool keep = old_error - new_error < noise;
  OutputFile file(options.output);
  vexo_luts_store_int(file.stream(), (keep ? before : correction.luts).get(), scan.bits);
  file.commit();
}

} // namespace

void add_refine(CLI::App &app) {
  const auto options = std::make_shared<Options>();
  CLI::App *command = app.add_subcommand("refine", "Make better LUTs from a gray ramp measured through LUTs");
  add_panel_options(command, options->panel);
  command->add_option("LUTS.txt", options->luts, "Three-channel integer LUT file")->required();
  command->add_option("MEASURED.csv", options->measured, "Gray ramp")->required();
  command->add_option("-o,--output", options->output, "LUT file to write")->required();
  add_target_options(command, options->target);
  command->callback([options] { run(*options); });
}
