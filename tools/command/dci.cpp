// vexo dci: a digital cinema colour in another form.
#include "colour/dci.h"
#include "command/cli.h"
#include "command/commands.h"
#include "text/grammar.h"
#include "text/json.h"

namespace {

struct DciOptions {
  vexo_vector value;
  std::string from;
  std::string to;
  int bits = 12;
  bool json = false;
};

void run(const DciOptions &options) {
  const vexo_vector out = dci_convert(options.value, options.from, options.to, static_cast<unsigned>(options.bits));
  if (options.json) {
    print_json({{"bits", options.bits},
                {"from", {{"form", options.from}, {"value", json_vector(options.value)}}},
                {"to", {{"form", options.to}, {"value", json_vector(out)}}}});
    return;
  }
  std::printf("%s %.9g %.9g %.9g\n", options.to.c_str(), out.d[0], out.d[1], out.d[2]);
}

} // namespace

void add_dci(CLI::App &app) {
  auto [command, options] =
      add_command<DciOptions>(app, "dci", "Convert between the forms of a digital cinema colour", run);
  add_parsed(command, "VALUE", options.value, parse_triple, "Three numbers, a,b,c")->required();
  command->add_option("--from", options.from, "Form of the input")->required()->check(one_of(dci_forms()));
  command->add_option("--to", options.to, "Form of the output")->required()->check(one_of(dci_forms()));
  command->add_option("--bits", options.bits, "Depth of the codes")->check(whole_number(1, 31))->capture_default_str();
  command->add_flag("--json", options.json, "Print JSON");
  command->footer("Forms: XYZq coded X'Y'Z', XYZ linear in code units, xyz relative to the reference white;\n"
                  "RGBq, RGB and rgb likewise for P3.\n\n"
                  "Example: vexo dci 1,1,1 --from xyz --to XYZq");
}
