// vexo delta: the difference of two colours.
#include "command/cli.h"
#include "command/colour-options.h"
#include "command/commands.h"
#include "text/json.h"
#include "vexo-cs.h"

namespace {

struct DeltaOptions {
  std::string first;
  std::string second;
  ColourOptions colour;
};

struct Differences {
  float ab;
  float uv;
  float de2000;
};

Differences differences(vexo_vector a, vexo_vector b, vexo_vector white) {
  return {vexo_XYZ_DEab(&a, &b, &white), vexo_XYZ_DEuv(&a, &b, &white), vexo_XYZ_DE2000(&a, &b, &white)};
}

void run(const DeltaOptions &options) {
  const vexo_vector white = reference_white(options.colour);
  const Differences d = differences(parse_colour("COLOR1", options.first, options.colour),
                                    parse_colour("COLOR2", options.second, options.colour), white);
  if (options.colour.json) {
    print_json({{"white", json_vector(white)},
                {"DEab", json_number(d.ab)},
                {"DEuv", json_number(d.uv)},
                {"DE2000", json_number(d.de2000)}});
    return;
  }
  std::printf("White      X %.6g, Y %.6g, Z %.6g (%s)\n", white.d[0], white.d[1], white.d[2],
              options.colour.white.c_str());
  std::printf("dE*ab      %.6f\ndE*uv      %.6f\nCIEDE2000  %.6f\n", d.ab, d.uv, d.de2000);
}

} // namespace

void add_delta(CLI::App &app) {
  auto [command, options] =
      add_command<DeltaOptions>(app, "delta", "Compare two colours: dE*ab, dE*uv, CIEDE2000", run);
  command->add_option("COLOR1", options.first, "Three numbers, a,b,c")->required();
  command->add_option("COLOR2", options.second, "Three numbers, a,b,c")->required();
  add_colour_options(command, options.colour);
  command->footer("Example: vexo delta 50,2.6772,-79.7751 50,0,-82.7485 --in Lab");
}
