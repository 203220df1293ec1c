// vexo lut1d: look at, check, convert and compare 1D LUT files.
#include <algorithm>
#include <optional>

#include "command/cli.h"
#include "command/commands.h"
#include "command/difference-limit.h"
#include "command/lut1d-input.h"
#include "file/apart.h"
#include "file/lut1d-output.h"
#include "lut/lut1d-faults.h"
#include "lut/lut1d-statistics.h"
#include "text/channels.h"
#include "text/failure.h"
#include "text/format.h"

namespace {

struct Lut1dOptions {
  Lut1dInput input;
  Lut1dOutput output;
  std::string other; // the second input of diff
  std::optional<int> entries;
  std::optional<int> bits;
  DifferenceLimit limit;
};

const int kDefaultBits = 10; // of codes made from a column or a cube, which has no depth

void print_figures(const char *name, const vexo_lut &lut, const vexo_lut &identity) {
  const auto [low, high] = std::minmax_element(lut.d, lut.d + lut.size);
  const int fall = first_fall(lut);
  const Lut1dStep step = largest_step(lut);
  const Lut1dDifference from_identity = difference(lut, identity);
  std::printf("%-10s %.6f to %.6f, lowest %.6f, highest %.6f, %s\n", name, lut.d[0], lut.d[lut.size - 1], *low, *high,
              fall > 0 ? format("falls at entry %d", fall).c_str() : "never falls");
  std::printf("           largest step %.6f to entry %d, from the identity mean %.6f, largest %.6f at entry %d\n",
              step.height, step.entry, from_identity.mean, from_identity.largest, from_identity.entry);
}

void info(const Lut1dOptions &options) {
  Lut1dFile in = read_with_warnings(options.input);
  std::printf("File       %s\nLayout     %s\n", input_name(options.input.path).c_str(), summary(in.scan).c_str());
  LutSet identity = identity_luts(in.luts.size());
  const bool column = in.scan.layout == "column";
  for (int c = 0; c < (column ? 1 : 3); c++) {
    print_figures(column ? "Column" : kChannels[c], in.luts.get()[c], identity.get()[c]);
  }
}

void check(const Lut1dOptions &options) {
  const LutScan scan = scan_luts(options.input.path, options.input.layout);
  const std::vector<LutIssue> found = faults(scan);
  for (const LutIssue &fault : found) {
    std::printf("%s\n", issue_text(scan, fault).c_str());
  }
  const std::string count = format("%zu faults", found.size());
  std::printf("%s: %s: %s\n", input_name(options.input.path).c_str(), summary(scan).c_str(), count.c_str());
  if (!found.empty()) {
    throw Failure(kLimitMissed, input_name(options.input.path) + ": " + count);
  }
}

void convert(const Lut1dOptions &options) {
  Lut1dOutput output = options.output;
  output.layout = output.layout.empty() ? lut1d_layout_of(output.path) : output.layout;
  if (options.bits && !holds_codes(output.layout)) {
    throw Failure(kUsageError, "--bits: the layout " + output.layout + " holds decimal numbers, not codes");
  }
  require_apart({options.input.path}, {output.path});
  Lut1dFile in = read_with_warnings(options.input);
  LutSet luts = resampled(in.luts, options.entries.value_or(in.luts.size()));
  output.bits = options.bits.value_or(in.scan.bits > 0 ? in.scan.bits : kDefaultBits);
  write_luts(output, luts);
  const bool to_stdout = output.path == "-";
  std::fprintf(to_stdout ? stderr : stdout, "%s: %s\n%s: %s, %d entries%s\n", input_name(options.input.path).c_str(),
               summary(in.scan).c_str(), to_stdout ? "standard output" : output.path.c_str(), output.layout.c_str(),
               luts.size(), holds_codes(output.layout) ? format(" of %d bits", output.bits).c_str() : "");
}

void diff(const Lut1dOptions &options) {
  require_apart({options.input.path, options.other}, {});
  LutSet a = read_with_warnings(options.input).luts;
  LutSet b = read_with_warnings({options.other, options.input.layout}).luts;
  if (a.size() != b.size()) {
    std::printf("%d and %d entries: the smaller is resampled\n", a.size(), b.size());
    LutSet &smaller = a.size() < b.size() ? a : b;
    smaller = resampled(smaller, std::max(a.size(), b.size()));
  }
  double largest[3];
  for (int c = 0; c < 3; c++) {
    const Lut1dDifference d = difference(a.get()[c], b.get()[c]);
    std::printf("%-6s mean %.6f, largest %.6f at entry %d\n", kChannels[c], d.mean, d.largest, d.entry);
    largest[c] = d.largest;
  }
  check_differences(options.limit, largest);
}

void add_convert(CLI::App &lut1d) {
  auto [command, options] =
      add_command<Lut1dOptions>(lut1d, "convert", "Write a LUT file in another layout, size or depth", convert);
  add_input(command, "FILE", options.input);
  command->add_option("OUT", options.output.path, "File to write; - for standard output")->required();
  command->add_option("--to", options.output.layout, "Layout of the output (default: cube for .cube, else integer)")
      ->check(one_of(lut1d_output_layouts()));
  command->add_option("--entries", options.entries, "Resample to this many entries")->check(whole_number(2, 65536));
  command->add_option("--bits", options.bits, "Depth of the codes (default: that of the input; 10 where it has none)")
      ->check(whole_number(1, 30));
  command->add_option("--channel", options.output.channel, "Channel of a listing that holds one")
      ->check(one_of({std::begin(kChannels), std::end(kChannels)}))
      ->capture_default_str();
  command->footer("Example: vexo lut1d convert luts.txt luts12.txt --bits 12 --entries 4096");
}

} // namespace

void add_lut1d(CLI::App &app) {
  CLI::App &lut1d = *app.add_subcommand("lut1d", "Look at, check, convert and compare 1D LUT files");
  lut1d.require_subcommand(1);
  lut1d.footer("Layouts that can be read:\n"
               "  integer       the three columns of codes that calibrate writes\n"
               "  decimal       three columns of codes with fractions; its size line gives the base-2 logarithm of\n"
               "                the number of entries\n"
               "  cube          three columns of fractions, as in .cube files with LUT_1D_SIZE\n"
               "  column        one column of any numbers; reading makes it rise from 0 to 1\n"
               "Layouts that can be written:\n"
               "  integer, cube as above\n"
               "  listing       for people: one channel, decimals\n"
               "  listing-int   for people: one channel, codes\n"
               "  listing-int3  for people: three channels, codes");
  {
    auto [command, options] =
        add_command<Lut1dOptions>(lut1d, "info", "Print the layout and figures of a LUT file", info);
    add_input(command, "FILE", options.input);
    command->footer("Example: vexo lut1d info luts.txt");
  }
  {
    auto [command, options] =
        add_command<Lut1dOptions>(lut1d, "check", "Name every faulty line, code and fall of a LUT file", check);
    add_input(command, "FILE", options.input);
    command->footer("Example: vexo lut1d check luts.txt\n\nExit status: 0 no fault, 1 faults, 3 not a LUT file.");
  }
  add_convert(lut1d);
  {
    auto [command, options] = add_command<Lut1dOptions>(lut1d, "diff", "Compare two LUT files entry by entry", diff);
    add_input(command, "A", options.input);
    command->add_option("B", options.other, "LUT file")->required();
    add_difference_limit(command, options.limit);
    command->footer("Example: vexo lut1d diff before.txt after.txt --limit 0.001");
  }
}
