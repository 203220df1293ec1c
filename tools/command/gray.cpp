// vexo gray: the gray ramp of a panel, bare or through LUTs.
#include <CLI/CLI.hpp>

#include <cmath>

#include "calibration/condition.h"
#include "calibration/gray-ramp.h"
#include "command/commands.h"
#include "file/luts.h"
#include "file/panel.h"
#include "text/failure.h"
#include "text/grammar.h"
#include "vexo-cs.h"

namespace {

struct Options {
  std::string panel;
  std::string luts;
  std::string steps = "21";
  bool raw = false;
};

void print_dumps(vexo *panel, vexo_lut *luts) {
  vexo_dump_gray(stdout, panel);
  vexo_lut_dump_gray(stdout, panel, luts);
  vexo_lut_dump_gray_gamma(stdout, panel, luts);
}

void print_table(vexo *panel, LutSet &luts, int steps) {
  const float last = static_cast<float>(luts.size() - 1);
  vexo_vector white = {};
  vexo_lut_get_xyY(&white, panel, luts.get(), last, last, last);
  std::printf("   input          x          y    luminance      CCT    gamma\n");
  for (int i = 0; i < steps; i++) {
    const float input = static_cast<float>(i) / static_cast<float>(steps - 1);
    const float position = input * last;
    vexo_vector gray = {}; // black where the mixture fails
    vexo_lut_get_xyY(&gray, panel, luts.get(), position, position, position);
    vexo_vector XYZ = gray;
    const int cct = vexo_xyY_XYZ(&XYZ) == 0 ? vexo_XYZ_CCT(&XYZ) : -1;
    const double gamma =
        effective_gamma(static_cast<double>(gray.d[2]) / static_cast<double>(white.d[2]), static_cast<double>(input));
    std::printf("%6.2f %%   %8.5f   %8.5f   %10.5g", static_cast<double>(input) * 100.0, static_cast<double>(gray.d[0]),
                static_cast<double>(gray.d[1]), static_cast<double>(gray.d[2]));
    cct > 0 ? std::printf("   %6d", cct) : std::printf("        -");
    gamma > 0.0 ? std::printf("   %6.3f\n", gamma) : std::printf("        -\n");
  }
}

void run(const Options &options) {
  const int steps = parse_integer("--steps", options.steps, 2, 1024);
  Panel panel = read_panel(options.panel);
  condition_aloud(&panel);
  LutSet luts = options.luts.empty() ? identity_luts(1024) : read_luts(options.luts);
  const auto context = bare_context(panel.lcnr);
  if (context == nullptr) {
    throw Failure(kInputError, unusable_row(panel));
  }
  if (options.raw) {
    print_dumps(context.get(), luts.get());
    return;
  }
  std::printf("Gray ramp of %s%s%s, predicted above black\n", options.panel.c_str(),
              options.luts.empty() ? "" : " through ", options.luts.c_str());
  print_table(context.get(), luts, steps);
}

} // namespace

void add_gray(CLI::App &app) {
  const auto options = std::make_shared<Options>();
  CLI::App *command = app.add_subcommand("gray", "Predict a panel's gray ramp, bare or through LUTs");
  command->add_option("PANEL.xml", options->panel, "LCNR file")->required();
  command->add_option("LUTS.txt", options->luts, "Three-channel integer LUT file");
  command->add_option("--steps", options->steps, "Rows of the table (default 21)");
  command->add_flag("--raw", options->raw, "Print the library's three dumps instead");
  command->footer("Example: vexo gray panel.xml luts.txt --steps 11");
  command->callback([options] { run(*options); });
}
