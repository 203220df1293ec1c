// vexo gray: the gray ramp of a panel, bare or through LUTs.
#include <CLI/CLI.hpp>

#include "calibration/figures.h"
#include "command/commands.h"
#include "command/shared-options.h"
#include "file/apart.h"
#include "file/luts.h"
#include "text/failure.h"

namespace {

struct GrayOptions {
  PanelOptions panel;
  std::string luts;
  int steps = 21;
  bool raw = false;
};

// The library's own prints.
void print_dumps(const Panel &panel, LutSet &luts) {
  const auto context = bare_context(panel.lcnr);
  vexo_dump_gray(stdout, context.get());
  vexo_lut_dump_gray(stdout, context.get(), luts.get());
  vexo_lut_dump_gray_gamma(stdout, context.get(), luts.get());
}

void print_table(const std::vector<GrayFigure> &grays) {
  std::printf("   input          x          y    luminance      CCT    gamma\n");
  for (const GrayFigure &gray : grays) {
    std::printf("%6.2f %%   %8.5f   %8.5f   %10.5g", gray.input * 100.0, gray.xyY.d[0], gray.xyY.d[1], gray.xyY.d[2]);
    gray.cct > 0 ? std::printf("   %6d", gray.cct) : std::printf("        -");
    gray.gamma > 0.0 ? std::printf("   %6.3f\n", gray.gamma) : std::printf("        -\n");
  }
}

void run(const GrayOptions &options) {
  require_apart({options.panel.panel, options.panel.gray, options.panel.mix, options.luts}, {});
  const PanelInput input = read_panel_input(options.panel);
  LutSet luts = options.luts.empty() ? identity_luts(1024) : read_luts(options.luts);
  const PanelModel model = model_of(input);
  if (options.raw) {
    print_dumps(input.panel, luts);
    return;
  }
  std::printf("Gray ramp of %s%s%s, predicted above black\n", input_name(options.panel.panel).c_str(),
              options.luts.empty() ? "" : " through ", options.luts.c_str());
  print_table(predict(model, options.luts.empty() ? nullptr : luts.get(), Triple::Zero(), options.steps));
}

} // namespace

void add_gray(CLI::App &app) {
  const auto options = std::make_shared<GrayOptions>();
  CLI::App *command = app.add_subcommand("gray", "Predict a panel's gray ramp, bare or through LUTs");
  add_panel_options(command, options->panel);
  command->add_option("LUTS.txt", options->luts, "LUT file: three columns of codes, or a cube for .cube");
  command->add_option("--steps", options->steps, "Rows of the table")
      ->check(CLI::Range(2, 1024))
      ->capture_default_str();
  command->add_flag("--raw", options->raw, "Print the library's three dumps instead");
  command->footer("Example: vexo gray panel.xml luts.txt --steps 11");
  command->callback([options] { run(*options); });
}
