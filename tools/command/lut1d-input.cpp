#include "command/lut1d-input.h"

#include "command/cli.h"
#include "text/format.h"

void add_input(CLI::App *command, const char *name, Lut1dInput &input) {
  command->add_option(name, input.path, "LUT file; - for standard input")->required();
  command->add_option("--from", input.layout, "Layout of the input (default: told by its lines)")
      ->check(one_of({"integer", "decimal", "column"}));
}

Lut1dFile read_with_warnings(const Lut1dInput &input) {
  Lut1dFile file = {scan_luts(input.path, input.layout), {}};
  file.luts = load_luts(file.scan);
  for (const LutIssue &issue : file.scan.issues) {
    std::fprintf(stderr, "vexo: warning: %s\n", issue_text(file.scan, issue).c_str());
  }
  return file;
}

std::string summary(const LutScan &scan) {
  return scan.layout + ", " + std::to_string(scan.size) + " entries" +
         (scan.bits > 0 ? format(" of %d bits", scan.bits) : ", read as a table rising from 0 to 1");
}
