// vexo report: the calibration report for LUTs that exist already.
#include <CLI/CLI.hpp>

#include "command/cli.h"
#include "command/commands.h"
#include "command/lut3d-input.h"
#include "command/shared-options.h"
#include "file/apart.h"
#include "file/input.h"
#include "report/colour-section.h"
#include "report/verdict.h"
#include "text/failure.h"
#include "text/format.h"

namespace {

struct ReportCommandOptions {
  PanelOptions panel;
  std::string luts;
  TargetOptions target;
  ReportOptions report;
  bool patches = false;
  std::string lut3d;
  std::optional<Space> space; // BT.709 where colours are judged without it
  std::string verify_colors;
};

void run(const ReportCommandOptions &options, const std::string &command_line) {
  ReportSource source;
  const TargetOptions target_options = complete(options.target);
  require_apart(options.panel, target_options, options.report, {options.luts, options.lut3d, options.verify_colors},
                "");
  const Target target = parse_target(target_options);
  const PanelInput input = read_panel_input(options.panel);
  LutSet luts = read_luts(options.luts);
  const PanelModel model = model_of(input);
  require_light(model, luts, options.luts);
  source.target = on_panel(target, model);
  source.panel = &input.panel;
  source.model = &model;
  source.notes = input.notes;
  source.recipe = "not known: the LUTs were read from a file";
  source.luts = &luts;
  source.luts_name = options.luts;
  source.command_line = command_line;
  source.verify = options.report.verify;
  source.limits = options.report.limits;
  source.luts_text = read_text(options.luts, "LUTs");
  source.target_options = given(target_options);
  source.labels = options.report.labels;
  source.additivity = input.additivity;
  Lut3d cube;
  if (!options.lut3d.empty()) {
    Lut3dInput file;
    file.path = options.lut3d;
    cube = read_with_warnings(file).lut;
  }
  if (options.patches || options.space || cube != nullptr || !options.verify_colors.empty()) {
    require_channels(model, luts, options.luts);
    source.colours = ColourSource{options.space.value_or(parse_space("", "bt709")), cube.get(), options.verify_colors};
  }
  const Report report = make_report(source);
  write_reports(options.report, report);
  write_verdict(report, options.report.to_stdout() ? stderr : stdout);
  if (const int missing = report.colours ? missing_colours(*report.colours) : 0; missing > 0) {
    warn(format("%s lacks %d of the 24 colours, so that limits for colours are not judged",
                input_name(options.verify_colors).c_str(), missing));
  }
  const std::string worse = worse_than_without(report);
  if (!worse.empty()) {
    warn(worse);
  }
  judge_limits(report.limits, options.report.html + " was written");
}

} // namespace

void add_report(CLI::App &app, const std::string &command_line) {
  const auto options = std::make_shared<ReportCommandOptions>();
  CLI::App *command = app.add_subcommand("report", "Write the calibration report of a panel and its LUTs");
  add_panel_options(command, options->panel);
  command->add_option("LUTS.txt", options->luts, "LUT file: three columns of codes, or a cube for .cube")->required();
  command->add_option("-o,--output", options->report.html, "HTML file to write; - for standard output")->required();
  add_target_options(command, options->target);
  add_from_option(command, options->target);
  add_report_options(command, options->report);
  command->add_flag("--patches", options->patches,
                    "Judge colours as well: the 24 of the ColorChecker chart, skin tones, saturation sweeps");
  command->add_option("--lut3d", options->lut3d, "3D LUT in front of the 1D LUTs; includes --patches");
  add_parsed(command, "--space", options->space, parse_space,
             "Colour space of the signal by name, or rx,ry,gx,gy,bx,by,wx,wy; includes --patches")
      ->type_name(words_among_others(space_names()))
      ->default_str("bt709");
  command->add_option(
      "--verify-colors", options->verify_colors,
      "Colours measured through all LUTs (CSV of r,g,b,X,Y,Z or x,y,Y; .ti3), signals in the unit of the panel "
      "file; includes --patches");
  command->add_flag_callback(
      "--list-limits",
      [] {
        list_limits(stdout);
        throw CLI::Success();
      },
      "Print the tolerances that --limits names and every figure, then exit");
  command->footer(
      "Example: vexo report panel.xml luts.txt -o report.html --from calibration.json --limits ebu-grade1\n\n"
      "Exit status: 0 done; 1 a limit is missed (the report is written); 2 usage; 3 input unreadable or invalid;\n"
      "4 output failed.");
  command->callback([options, command_line] { run(*options, command_line); });
}
