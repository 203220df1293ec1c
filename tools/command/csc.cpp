// vexo csc: the conversion between two video signals, and the registers of the hardware converter.
#include <CLI/CLI.hpp>

#include <optional>

#include "command/commands.h"
#include "command/csc-output.h"
#include "signal/conversion.h"
#include "text/grammar.h"

namespace {

// As they stand on the command line; empty where not given.
struct Options {
  std::string from;
  std::string to;
  std::string space = "bt709";
  std::string from_space; // empty where not given
  std::string to_space;
  vexo_ccp controls;
  float hue = 0.0F; // in degrees
  std::optional<vexo_vector> apply;
  bool registers = false;
  bool json = false;
};

CscResult convert(const Options &options) {
  const auto space = [&](const std::string &option, const std::string &text) {
    return text.empty() ? parse_space("--space", options.space) : parse_space(option, text);
  };
  CscResult r = {{parse_signal("FROM", options.from), {}}, {parse_signal("TO", options.to), {}}, {}, {}, {}};
  r.from.space = space("--from-space", options.from_space);
  r.to.space = space("--to-space", options.to_space);
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

void run(const Options &options) {
  const CscResult r = convert(options);
  for (const SaturatedRegister &s : r.registers.saturated) {
    if (options.registers) {
      std::fprintf(stderr, "vexo: warning: %s: %g is beyond the register, which saturates at %g\n", s.name.c_str(),
                   s.value, s.stored);
    }
  }
  options.json ? print_json(json_of(r)) : print_text(r, options.registers);
}

void add_spaces(CLI::App *command, Options &options) {
  CLI::Option *both = command->add_option("--space", options.space,
                                          "Colour space of both: " + space_names() + ", or rx,ry,gx,gy,bx,by,wx,wy");
  CLI::Option *from = command->add_option("--from-space", options.from_space, "Colour space of the input");
  CLI::Option *to =
      command->add_option("--to-space", options.to_space, "Colour space of the output; whites are adapted (Bradford)");
  both->capture_default_str()->excludes(from)->excludes(to);
  from->needs(to);
  to->needs(from);
}

void add_controls(CLI::App *command, Options &options) {
  const auto number = [&](const std::string &name, float &value, const char *help) {
    command->add_option_function<std::string>(
        name, [name, &value](const std::string &text) { value = parse_number(name, text); }, help);
  };
  const auto triple = [&](const std::string &name, vexo_vector &value, const char *help) {
    command->add_option_function<std::string>(
        name, [name, &value](const std::string &text) { value = parse_triple(name, text); }, help);
  };
  vexo_ccp &controls = options.controls;
  vexo_ccp_init(&controls);
  number("--hue", options.hue, "Rotation of the colour differences in degrees");
  number("--saturation", controls.saturation, "Gain on the colour differences, on top of the contrast");
  number("--contrast", controls.contrast, "Gain on luma and colour differences");
  number("--brightness", controls.brightness, "Luma offset as a fraction of the luma span");
  triple("--gain", controls.gain, "Gains on R,G,B");
  triple("--offset", controls.offset, "Offsets on R,G,B as fractions of the RGB span");
}

} // namespace

void add_csc(CLI::App &app) {
  const auto options = std::make_shared<Options>();
  CLI::App *command = app.add_subcommand("csc", "Build the conversion between two video signals");
  command->add_option("FROM", options->from, "Input signal, FORMAT:RANGE:BITS[:ORDER]")->required();
  command->add_option("TO", options->to, "Output signal, in the same form")->required();
  add_spaces(command, *options);
  add_controls(command, *options);
  command->add_flag("--registers", options->registers, "Print the registers of the hardware converter as well");
  command->add_option_function<std::string>(
      "--apply", [options](const std::string &text) { options->apply = parse_triple("--apply", text); },
      "Convert the triple a,b,c of input codes");
  command->add_flag("--json", options->json, "Print everything as JSON");
  command->footer("Signals: FORMAT is rgb or ycbcr. RANGE is video, full, extended or smpte-full. BITS is 8 to 30.\n"
                  "ORDER names the components as they travel, such as gbr or cbycr.\n\n"
                  "Example: vexo csc rgb:full:10 ycbcr:video:10 --space bt2020 --registers");
  command->callback([options] { run(*options); });
}
