#include "command/lut1d-input.h"

#include <map>

#include "command/cli.h"
#include "text/format.h"

void add_input(CLI::App *command, const char *name, Lut1dInput &input) {
  command->add_option(name, input.path, "LUT file; - for standard input")->required();
  command->add_option("--from", input.layout, "Layout of the input (default: told by its name and lines)")
      ->check(one_of({"integer", "decimal", "cube", "column"}));
}

namespace {

const int kMostRepeats = 5; // of a warning with the same text

void print_warnings(const LutScan &scan) {
  std::map<std::string, int> counts;
  for (const LutIssue &issue : scan.issues) {
    if (++counts[issue.text] <= kMostRepeats) {
      std::fprintf(stderr, "vexo: warning: %s\n", issue_text(scan, issue).c_str());
    }
  }
  for (const auto &[text, count] : counts) {
    if (count > kMostRepeats) {
      std::fprintf(stderr, "vexo: warning: %s: %d more lines: %s\n", input_name(scan.path).c_str(),
                   count - kMostRepeats, text.c_str());
    }
  }
}

} // namespace

Lut1dFile read_with_warnings(const Lut1dInput &input) {
  Lut1dFile file = {scan_luts(input.path, input.layout), {}};
  file.luts = load_luts(file.scan);
  print_warnings(file.scan);
  return file;
}

std::string summary(const LutScan &scan) {
  return scan.layout + ", " + std::to_string(scan.size) + " entries" +
         (scan.bits > 0             ? format(" of %d bits", scan.bits)
          : scan.layout == "column" ? ", read as a table rising from 0 to 1"
                                    : "");
}
