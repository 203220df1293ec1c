// vexo dci: a digital cinema colour in another form.
#include "colour/dci.h"
#include "command/commands.h"
#include "command/option-checks.h"
#include "text/grammar.h"
#include "text/json.h"

namespace {

struct Options {
  std::string value;
  std::string from;
  std::string to;
  int bits = 12;
  bool json = false;
};

void run(const Options &options) {
  const vexo_vector in = parse_triple("VALUE", options.value);
  const vexo_vector out = dci_convert(in, options.from, options.to, static_cast<unsigned>(options.bits));
  if (options.json) {
    print_json({{"bits", options.bits},
                {"from", {{"form", options.from}, {"value", json_vector(in)}}},
                {"to", {{"form", options.to}, {"value", json_vector(out)}}}});
    return;
  }
  std::printf("%s %.9g %.9g %.9g\n", options.to.c_str(), out.d[0], out.d[1], out.d[2]);
}

} // namespace

void add_dci(CLI::App &app) {
  const auto options = std::make_shared<Options>();
  CLI::App *command = app.add_subcommand("dci", "Convert between the forms of a digital cinema colour");
  command->add_option("VALUE", options->value, "Three numbers, a,b,c")->required();
  command->add_option("--from", options->from, "Form of the input")->required()->check(one_of(dci_forms()));
  command->add_option("--to", options->to, "Form of the output")->required()->check(one_of(dci_forms()));
  command->add_option("--bits", options->bits, "Depth of the codes")->check(whole_number(1, 31))->capture_default_str();
  command->add_flag("--json", options->json, "Print JSON");
  command->footer("Forms: XYZq coded X'Y'Z', XYZ linear in code units, xyz relative to the reference white;\n"
                  "RGBq, RGB and rgb likewise for P3.\n\n"
                  "Example: vexo dci 1,1,1 --from xyz --to XYZq");
  command->callback([options] { run(*options); });
}
