// vexo measure import: measurements made from other programs' files.
#include <CLI/CLI.hpp>

#include <cstdio>

#include "command/commands.h"
#include "file/apart.h"
#include "file/import.h"
#include "file/input.h"
#include "file/panel.h"

namespace {

struct ImportOptions {
  std::string input;
  std::string output;
};

void print(const ImportOptions &options, const Import &result) {
  std::FILE *f = options.output == "-" ? stderr : stdout;
  std::fprintf(f, "%s: %zu readings\n", input_name(options.input).c_str(), result.readings);
  for (const std::string &note : result.notes) {
    std::fprintf(f, "  %s\n", note.c_str());
  }
  std::fprintf(f, "%s: %d rows, levels 0 to %g\n", options.output == "-" ? "standard output" : options.output.c_str(),
               result.lcnr.num, result.lcnr.sample[result.lcnr.num - 1]);
}

void run(const ImportOptions &options) {
  require_apart({options.input}, {options.output});
  const Import result = import_measurements(options.input);
  write_panel(options.output, result.lcnr);
  print(options, result);
}

} // namespace

void add_import(CLI::App &measure) {
  const auto options = std::make_shared<ImportOptions>();
  CLI::App *command = measure.add_subcommand("import", "Make an LCNR file from another program's readings");
  command->add_option("FILE", options->input, "CGATS (.ti3) or CSV file; - for standard input")->required();
  command->add_option("-o,--output", options->output, "LCNR file to write; - for standard output")->required();
  command->footer(
      "CGATS: a table of RGB drives and XYZ.\n"
      "CSV: columns in any order, with a heading: level,channel,X,Y,Z (channel red, green, blue, r, g, b or black),\n"
      "r,g,b,X,Y,Z, or level,Xr,Yr,Zr,Xg,Yg,Zg,Xb,Yb,Zb. x,y,Y may stand for X,Y,Z. Commas, semicolons or tabs\n"
      "separate the cells. -v says how a table was read.\n\n"
      "Takes the ramps of red, green and blue, each driven alone, and says what it leaves out.\n"
      "Repeated readings are averaged. Of more than 64 levels an evenly spaced choice is kept.\n\n"
      "Example: vexo measure import readings.ti3 -o panel.xml");
  command->callback([options] { run(*options); });
}
