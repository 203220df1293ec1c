// vexo csc: the conversion between two video signals, and the registers of the hardware converter.
#include <optional>

#include "calibration/test-colours.h"
#include "command/cli.h"
#include "command/commands.h"
#include "command/csc-output.h"
#include "command/shared-options.h"
#include "file/input.h"
#include "signal/conversion.h"
#include "text/failure.h"
#include "text/grammar.h"

namespace {

// As they stand on the command line; empty where not given.
struct CscOptions {
  Signal from;
  Signal to;
  Space space = parse_space("--space", "bt709"); // of both
  std::optional<Space> from_space;
  std::string to_space; // or a panel's file
  std::string white;    // of that panel
  std::string luma = "primaries";
  vexo_ccp controls;
  float hue = 0.0F; // in degrees
  std::optional<vexo_vector> apply;
  bool registers = false;
  bool json = false;
};

bool is_panel(const std::string &space) { return has_extension(space, ".xml"); }

// The panel's primaries at the target's white.
Space panel_output(const CscOptions &options, Target *target) {
  const PanelModel model = model_of(read_panel_input({options.to_space, "", "", "on"}));
  *target = on_panel(*target, model);
  Space space = panel_space(model, target->white);
  space.name = options.to_space + " at white " + target->white.name;
  return space;
}

// The 24 colours on a panel whose channels add and follow the target's curve.
ChartEffect effect_of_matrix(const Space &from, const Space &panel, const Target &target) {
  const SignalColours wanted(from, target, 1.0, Triple::Zero());
  const SignalColours shown(panel, target, 1.0, Triple::Zero());
  const Eigen::Matrix3d matrix = signal_matrix(from, panel);
  const auto error = [&](const Triple &signal, const Triple &inputs) {
    return colour_error(shown.XYZ(inputs.cwiseMax(0.0).cwiseMin(1.0)), signal, wanted);
  };
  return chart_effect(
      wanted, [&](const Triple &signal) -> Triple { return matrix * signal; }, error);
}

CscResult convert(const CscOptions &options) {
  const Space both = options.luma == "bt601" ? with_bt601_luma(options.space) : options.space;
  CscResult r = {{options.from, options.from_space.value_or(both)}, {options.to, both}, {}, {}, {}, {}};
  if (is_panel(options.to_space)) {
    Target target = {options.white.empty() ? kD65 : parse_white("--white", options.white), power_law(2.2F), {}};
    r.to.space = panel_output(options, &target);
    r.effect = effect_of_matrix(r.from.space, r.to.space, target);
  } else if (!options.white.empty()) {
    throw Failure(kUsageError, "--white: expected a panel's file as --to-space");
  } else if (!options.to_space.empty()) {
    r.to.space = parse_space("--to-space", options.to_space);
  }
  vexo_ccp controls = options.controls;
  controls.hue = static_cast<float>(options.hue * 3.141592653589793 / 180.0);
  r.conversion = build_conversion(r.from, r.to, controls);
  r.registers = encode_registers(r.conversion, r.from.signal.bits, r.to.signal.bits);
  if (options.apply) {
    r.applied = Applied{*options.apply, *options.apply};
    vexo_csc_transfrom(&r.conversion, &r.applied->out);
  }
  return r;
}

void run(const CscOptions &options) {
  const CscResult r = convert(options);
  for (const SaturatedRegister &s : r.registers.saturated) {
    if (options.registers) {
      std::fprintf(stderr, "vexo: warning: %s: %g is beyond the register, which saturates at %g\n", s.name.c_str(),
                   s.value, s.stored);
    }
  }
  options.json ? print_json(json_of(r)) : print_text(r, options.registers);
}

void add_spaces(CLI::App *command, CscOptions &options) {
  CLI::Option *both = add_parsed(command, "--space", options.space, parse_space,
                                 "Colour space of both signals by name, or rx,ry,gx,gy,bx,by,wx,wy");
  CLI::Option *from = add_parsed(command, "--from-space", options.from_space, parse_space, "Colour space of the input");
  CLI::Option *to =
      command->add_option("--to-space", options.to_space,
                          "Colour space of the output, or PANEL.xml: the primaries of the panel with --white; "
                          "whites are adapted (Bradford)");
  command->add_option("--white", options.white, "White of the panel's grays: a name, x,y, 6500K or 2856P")
      ->type_name(words_among_others(white_names()))
      ->default_str("D65")
      ->needs(to);
  both->default_str(options.space.name)->excludes(from)->excludes(to);
  for (CLI::Option *space : {both, from, to}) {
    space->type_name(words_among_others(space_names()));
  }
  from->needs(to);
  to->needs(from);
  command
      ->add_option("--luma", options.luma,
                   "Luma weights of YCbCr: those of the primaries, or bt601 (0.299, 0.587, 0.114)")
      ->check(one_of({"primaries", "bt601"}))
      ->capture_default_str()
      ->excludes(from)
      ->excludes(to);
}

void add_controls(CLI::App *command, CscOptions &options) {
  vexo_ccp &controls = options.controls;
  vexo_ccp_init(&controls);
  add_parsed(command, "--hue", options.hue, parse_number, "Rotation of the colour differences in degrees");
  add_parsed(command, "--saturation", controls.saturation, parse_number,
             "Gain on the colour differences, on top of the contrast");
  add_parsed(command, "--contrast", controls.contrast, parse_number, "Gain on luma and colour differences");
  add_parsed(command, "--brightness", controls.brightness, parse_number, "Luma offset as a fraction of the luma span");
  add_parsed(command, "--gain", controls.gain, parse_triple, "Gains on R,G,B");
  add_parsed(command, "--offset", controls.offset, parse_triple, "Offsets on R,G,B as fractions of the RGB span");
}

} // namespace

void add_csc(CLI::App &app) {
  auto [command, options] = add_command<CscOptions>(app, "csc", "Build the conversion between two video signals", run);
  add_parsed(command, "FROM", options.from, parse_signal, "Input signal, FORMAT:RANGE:BITS[:ORDER]")->required();
  add_parsed(command, "TO", options.to, parse_signal, "Output signal, in the same form")->required();
  add_spaces(command, options);
  add_controls(command, options);
  command->add_flag("--registers", options.registers, "Print the registers of the hardware converter as well");
  add_parsed(command, "--apply", options.apply, parse_triple, "Convert the triple a,b,c of input codes");
  command->add_flag("--json", options.json, "Print everything as JSON");
  command->footer(
      "Signals: FORMAT is rgb or ycbcr. RANGE is video, full, extended or smpte-full. BITS is 8 to 30.\n"
      "ORDER names the components as they travel, such as gbr or cbycr.\n"
      "Luma weights come from the primaries of the space unless --luma says otherwise; for BT.601 video, and\n"
      "for JPEG, give --luma bt601.\n\n"
      "Example: vexo csc rgb:full:10 ycbcr:video:10 --space bt2020 --registers");
}
