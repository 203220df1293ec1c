// vexo lut1d: look at, check, convert and compare 1D LUT files.
#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>

#include "command/commands.h"
#include "file/luts.h"
#include "file/output.h"
#include "text/channels.h"
#include "text/failure.h"
#include "text/grammar.h"
#include "text/text.h"

namespace {

// Options as they stand on the command line; empty where not given.
struct Options {
  std::string first;
  std::string second;
  std::string from;
  std::string to = "integer";
  std::string entries;
  std::string bits;
  std::string channel = "red";
  std::string limit;
};

const int kColumnBits = 10; // of codes made from a column, which has no depth

const char *const kFromHelp = "Layout of the input (default: found out): integer decimal column";

// A layout that can be written.
struct Writer {
  const char *name;
  void (*write)(std::FILE *f, vexo_lut *luts, int channel, int bits);
};

const Writer kWriters[] = {
    {"integer", [](std::FILE *f, vexo_lut *luts, int /*channel*/, int bits) { vexo_luts_store_int(f, luts, bits); }},
    {"listing", [](std::FILE *f, vexo_lut *luts, int c, int /*bits*/) { vexo_lut_dump(f, luts + c, nullptr); }},
    {"listing-int",
     [](std::FILE *f, vexo_lut *luts, int c, int bits) { vexo_lut_dump_int(f, luts + c, bits, nullptr); }},
    {"listing-int3",
     [](std::FILE *f, vexo_lut *luts, int /*channel*/, int bits) { vexo_lut_dump_int3(f, luts, bits, nullptr); }},
};

const Writer &find_writer(const std::string &name) {
  for (const Writer &writer : kWriters) {
    if (name == writer.name) {
      return writer;
    }
  }
  throw Failure(kUsageError, "--to '" + name + "': " +
                                 (name == "decimal" || name == "column" ? "this layout can be read only, " : "") +
                                 "expected integer, listing, listing-int or listing-int3");
}

int parse_channel(const std::string &name) {
  const auto *channel = std::find(kChannels, kChannels + 3, name);
  if (channel == kChannels + 3) {
    throw Failure(kUsageError, "--channel '" + name + "': expected red, green or blue");
  }
  return static_cast<int>(channel - kChannels);
}

int columns(const LutScan &scan) { return scan.layout == "column" ? 1 : 3; }

std::string summary(const LutScan &scan) {
  return scan.layout + ", " + std::to_string(scan.size) + " entries" +
         (scan.bits > 0 ? format(" of %d bits", scan.bits) : ", read as a table rising from 0 to 1");
}

struct Loaded {
  LutScan scan;
  LutSet luts;
};

// With a warning for all that the reader passes over.
Loaded load(const std::string &path, const std::string &layout) {
  Loaded loaded = {scan_luts(path, layout), {}};
  loaded.luts = load_luts(loaded.scan);
  for (const LutIssue &issue : loaded.scan.issues) {
    std::fprintf(stderr, "vexo: warning: %s\n", issue_text(loaded.scan, issue).c_str());
  }
  return loaded;
}

// The first entry that falls, or 0.
int first_fall(const vexo_lut &lut) {
  int i = 1;
  while (i < lut.size && lut.d[i] >= lut.d[i - 1]) {
    i++;
  }
  return i < lut.size ? i : 0;
}

// The largest and the mean difference of two tables of one size.
struct Difference {
  double mean = 0.0;
  double largest = 0.0;
  int entry = 0;
};

Difference difference(const vexo_lut &a, const vexo_lut &b) {
  Difference result;
  for (int i = 0; i < a.size; i++) {
    const double d = std::fabs(static_cast<double>(a.d[i]) - static_cast<double>(b.d[i]));
    result.mean += d / a.size;
    if (d > result.largest) {
      result.largest = d;
      result.entry = i;
    }
  }
  return result;
}

void info(const Options &options) {
  Loaded in = load(options.first, options.from);
  std::printf("File       %s\nLayout     %s\n", input_name(options.first).c_str(), summary(in.scan).c_str());
  LutSet identity = identity_luts(in.luts.size());
  for (int c = 0; c < columns(in.scan); c++) {
    const vexo_lut &lut = in.luts.get()[c];
    const auto [low, high] = std::minmax_element(lut.d, lut.d + lut.size);
    int step = 1;
    for (int i = 2; i < lut.size; i++) {
      step = std::fabs(lut.d[i] - lut.d[i - 1]) > std::fabs(lut.d[step] - lut.d[step - 1]) ? i : step;
    }
    const Difference from_identity = difference(lut, identity.get()[c]);
    std::printf("%-10s %.6f to %.6f, lowest %.6f, highest %.6f, %s\n", columns(in.scan) == 1 ? "Column" : kChannels[c],
                static_cast<double>(lut.d[0]), static_cast<double>(lut.d[lut.size - 1]), static_cast<double>(*low),
                static_cast<double>(*high),
                first_fall(lut) > 0 ? format("falls at entry %d", first_fall(lut)).c_str() : "never falls");
    std::printf("           largest step %.6f to entry %d, from the identity mean %.6f, largest %.6f at entry %d\n",
                static_cast<double>(std::fabs(lut.d[step] - lut.d[step - 1])), step, from_identity.mean,
                from_identity.largest, from_identity.entry);
  }
}

// Entries below the one before them, each with its line.
void add_falls(LutScan &scan) {
  for (size_t i = 1; i < scan.entries.size(); i++) {
    for (int c = 0; c < 3; c++) {
      const float before = scan.entries[i - 1].value[c];
      const float now = scan.entries[i].value[c];
      if (now < before) {
        scan.issues.push_back({scan.entries[i].line, false,
                               format("%s falls from %.9g to %.9g", kChannels[c], static_cast<double>(before),
                                      static_cast<double>(now))});
      }
    }
  }
}

// Numbers of a column that the reader replaces.
void add_repairs(LutScan &scan) {
  std::vector<float> values;
  for (const LutEntry &entry : scan.entries) {
    values.push_back(entry.value[0]);
  }
  if (vexo_data_normalize(values.data(), static_cast<int>(values.size())) != 0) {
    return;
  }
  for (size_t i = 0; i < values.size(); i++) {
    const float value = scan.entries[i].value[0];
    if (values[i] != value) {
      scan.issues.push_back({scan.entries[i].line, false,
                             format("%.9g does not fit a rising table and is read as %.9g", static_cast<double>(value),
                                    static_cast<double>(values[i]))});
    }
  }
}

void check(const Options &options) {
  LutScan scan = scan_luts(options.first, options.from);
  columns(scan) == 1 ? add_repairs(scan) : add_falls(scan);
  std::stable_sort(scan.issues.begin(), scan.issues.end(),
                   [](const LutIssue &a, const LutIssue &b) { return a.line < b.line; });
  for (const LutIssue &issue : scan.issues) {
    std::printf("%s\n", issue_text(scan, issue).c_str());
  }
  std::printf("%s: %s: %zu faults\n", input_name(options.first).c_str(), summary(scan).c_str(), scan.issues.size());
  if (!scan.issues.empty()) {
    throw Failure(kLimitMissed, input_name(options.first) + format(": %zu faults", scan.issues.size()));
  }
}

void convert(const Options &options) {
  const Writer &writer = find_writer(options.to);
  const int channel = parse_channel(options.channel);
  const int entries = options.entries.empty() ? 0 : parse_integer("--entries", options.entries, 2, 65536);
  if (options.to == "listing" && !options.bits.empty()) {
    throw Failure(kUsageError, "--bits: the layout listing holds decimal numbers, not codes");
  }
  int bits = options.bits.empty() ? 0 : parse_integer("--bits", options.bits, 1, 30);
  Loaded in = load(options.first, options.from);
  LutSet luts = resampled(in.luts, entries > 0 ? entries : in.luts.size());
  if (bits == 0) {
    bits = in.scan.bits > 0 ? in.scan.bits : kColumnBits;
  }
  OutputFile file(options.second);
  writer.write(file.stream(), luts.get(), channel, bits);
  file.commit();
  std::fprintf(options.second == "-" ? stderr : stdout, "%s: %s\n%s: %s, %d entries%s\n",
               input_name(options.first).c_str(), summary(in.scan).c_str(),
               options.second == "-" ? "standard output" : options.second.c_str(), writer.name, luts.size(),
               options.to == "listing" ? "" : format(" of %d bits", bits).c_str());
}

void diff(const Options &options) {
  const double limit = options.limit.empty() ? 0.0 : static_cast<double>(parse_not_negative("--limit", options.limit));
  LutSet a = load(options.first, options.from).luts;
  LutSet b = load(options.second, options.from).luts;
  if (a.size() != b.size()) {
    std::printf("%d and %d entries: the smaller is resampled\n", a.size(), b.size());
    LutSet &smaller = a.size() < b.size() ? a : b;
    smaller = resampled(smaller, std::max(a.size(), b.size()));
  }
  std::string missed;
  for (int c = 0; c < 3; c++) {
    const Difference d = difference(a.get()[c], b.get()[c]);
    std::printf("%-6s mean %.6f, largest %.6f at entry %d\n", kChannels[c], d.mean, d.largest, d.entry);
    if (missed.empty() && d.largest > limit) {
      missed = format("%s differs by %.6f, the limit is %s", kChannels[c], d.largest, options.limit.c_str());
    }
  }
  if (!options.limit.empty() && !missed.empty()) {
    throw Failure(kLimitMissed, missed);
  }
}

} // namespace

void add_lut1d(CLI::App &app) {
  CLI::App *lut1d = app.add_subcommand("lut1d", "Look at, check, convert and compare 1D LUT files");
  lut1d->require_subcommand(1);
  lut1d->footer(
      "Layouts that can be read: integer, the three columns that calibrate writes; decimal, three columns of\n"
      "codes with fractions, whose size line gives the base-2 logarithm of the entries; column, one column of\n"
      "any numbers, made to rise from 0 to 1. Layouts that can be written: integer, and for people listing\n"
      "(one channel, decimals), listing-int (one channel, codes) and listing-int3 (three channels, codes).");
  const auto command = [&](const char *name, const char *help, void (*run)(const Options &)) {
    const auto options = std::make_shared<Options>();
    CLI::App *sub = lut1d->add_subcommand(name, help);
    sub->add_option(std::string(name) == "diff" ? "A" : "FILE", options->first, "LUT file; - for standard input")
        ->required();
    sub->add_option("--from", options->from, kFromHelp);
    sub->callback([options, run] { run(*options); });
    return std::pair<CLI::App *, Options &>(sub, *options);
  };
  {
    auto [sub, options] = command("info", "Say what a LUT file holds", info);
    sub->footer("Example: vexo lut1d info luts.txt");
  }
  {
    auto [sub, options] = command("check", "Name every faulty line, code and fall of a LUT file", check);
    sub->footer("Example: vexo lut1d check luts.txt\n\nExit status: 0 no fault, 1 faults, 3 not a LUT file.");
  }
  {
    auto [sub, options] = command("convert", "Write a LUT file in another layout, size or depth", convert);
    sub->add_option("OUT", options.second, "File to write; - for standard output")->required();
    sub->add_option("--to", options.to, "Layout of the output: integer (default) listing listing-int listing-int3");
    sub->add_option("--entries", options.entries, "Resample to this many entries, 2 to 65536");
    sub->add_option("--bits", options.bits, "Depth of the codes, 1 to 30 (default: the input's; 10 for a column)");
    sub->add_option("--channel", options.channel, "Channel of a listing of one (default red)");
    sub->footer("Example: vexo lut1d convert luts.txt luts12.txt --bits 12 --entries 4096");
  }
  {
    auto [sub, options] = command("diff", "Compare two LUT files entry by entry", diff);
    sub->add_option("B", options.second, "LUT file")->required();
    sub->add_option("--limit", options.limit,
                    "Exit with 1 when a channel differs by more than this, full drive being 1");
    sub->footer("Example: vexo lut1d diff before.txt after.txt --limit 0.001");
  }
}
