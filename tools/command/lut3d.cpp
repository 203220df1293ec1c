// vexo lut3d: look at, convert, make and compare 3D LUTs.
#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
#include <limits>

#include "command/commands.h"
#include "file/lut3d.h"
#include "text/channels.h"
#include "text/failure.h"
#include "text/grammar.h"
#include "text/text.h"

namespace {

// Options as they stand on the command line; empty where not given.
struct Options {
  std::string first;
  std::string second;
  std::string size;
  std::string bits;
  std::string title;
  bool has_title = false;
  std::string from;
  std::string to;
  std::string from_size;
  std::string max_size = "256";
  std::string limit;
  bool strict = false;
};

int optional_integer(const std::string &option, const std::string &text, int min, int max) {
  return text.empty() ? 0 : parse_integer(option, text, min, max);
}

Lut3dInput input_of(const Options &options, const std::string &path) {
  Lut3dInput input;
  input.path = path;
  input.format = options.from;
  input.size = optional_integer("--from-size", options.from_size, 1, 1024);
  input.max_size = parse_integer("--max-size", options.max_size, 1, 1024);
  input.strict = options.strict;
  return input;
}

Lut3dFile read_with_warnings(const Lut3dInput &input) {
  Lut3dFile file = read_lut3d(input);
  for (const std::string &warning : file.warnings) {
    std::fprintf(stderr, "vexo: warning: %s\n", warning.c_str());
  }
  return file;
}

struct Index {
  int bi;
  int gi;
  int ri;
};

// Calls visit(index, entry) for every entry in order.
template <typename Visit> void for_each_entry(vexo_3dlut *lut, Visit visit) {
  const int size = vexo_3dlut_size(lut);
  for (int bi = 0; bi < size; bi++) {
    for (int gi = 0; gi < size; gi++) {
      for (int ri = 0; ri < size; ri++) {
        visit(Index{bi, gi, ri}, *vexo_3dlut_item(lut, bi, gi, ri));
      }
    }
  }
}

// The largest and the mean of some magnitude over the entries of one channel, and where the largest is.
struct Extent {
  double sum = 0.0;
  long count = 0;
  double largest = 0.0;
  Index where = {0, 0, 0};

  void add(double magnitude, Index index) {
    sum += magnitude;
    count++;
    if (magnitude > largest || (std::isnan(magnitude) && !std::isnan(largest))) {
      largest = magnitude;
      where = index;
    }
  }
  double mean() const { return count > 0 ? sum / static_cast<double>(count) : 0.0; }
};

struct Extents {
  Extent channel[3];
};

// Two tables of one size, entry by entry.
Extents difference(vexo_3dlut *a, vexo_3dlut *b) {
  Extents result;
  for_each_entry(a, [&](Index i, const vexo_vector &entry) {
    const vexo_vector &other = *vexo_3dlut_item(b, i.bi, i.gi, i.ri);
    for (int c = 0; c < 3; c++) {
      result.channel[c].add(std::fabs(static_cast<double>(entry.d[c]) - static_cast<double>(other.d[c])), i);
    }
  });
  return result;
}

// The steps from each entry to its neighbours on the three axes.
Extents neighbour_steps(vexo_3dlut *lut) {
  Extents result;
  for_each_entry(lut, [&](Index i, const vexo_vector &entry) {
    for (const vexo_vector *next :
         {vexo_3dlut_item(lut, i.bi + 1, i.gi, i.ri), vexo_3dlut_item(lut, i.bi, i.gi + 1, i.ri),
          vexo_3dlut_item(lut, i.bi, i.gi, i.ri + 1)}) {
      for (int c = 0; c < 3 && next != nullptr; c++) {
        result.channel[c].add(std::fabs(static_cast<double>(next->d[c]) - static_cast<double>(entry.d[c])), i);
      }
    }
  });
  return result;
}

std::string at(Index i) { return format("blue %d, green %d, red %d", i.bi, i.gi, i.ri); }

void print_extents(const char *title, const Extents &extents) {
  for (int c = 0; c < 3; c++) {
    const Extent &e = extents.channel[c];
    std::printf("%s%-6s mean %.6f, largest %.6f at %s\n", title, kChannels[c], e.mean(), e.largest,
                at(e.where).c_str());
  }
}

void print_ranges(vexo_3dlut *lut) {
  float lowest[3];
  float highest[3];
  std::fill_n(lowest, 3, std::numeric_limits<float>::infinity());
  std::fill_n(highest, 3, -std::numeric_limits<float>::infinity());
  long odd = 0;
  for_each_entry(lut, [&](Index, const vexo_vector &entry) {
    for (int c = 0; c < 3; c++) {
      lowest[c] = std::min(lowest[c], entry.d[c]);
      highest[c] = std::max(highest[c], entry.d[c]);
      odd += std::isfinite(entry.d[c]) ? 0 : 1;
    }
  });
  for (int c = 0; c < 3; c++) {
    std::printf("Range      %-6s %.8g to %.8g\n", kChannels[c], static_cast<double>(lowest[c]),
                static_cast<double>(highest[c]));
  }
  if (odd > 0) {
    std::printf("           %ld values are not finite\n", odd);
  }
}

void print_gray_axis(vexo_3dlut *lut) {
  const double half_code = 0.5 / 1023.0; // less than half a code of 10 bits apart counts as neutral
  Extent spread;
  int falls[3] = {0, 0, 0};
  const vexo_vector *before = nullptr;
  for (int i = 0; i < vexo_3dlut_size(lut); i++) {
    const vexo_vector *gray = vexo_3dlut_item(lut, i, i, i);
    const auto [low, high] = std::minmax({gray->d[0], gray->d[1], gray->d[2]});
    spread.add(static_cast<double>(high) - static_cast<double>(low), Index{i, i, i});
    for (int c = 0; c < 3 && before != nullptr; c++) {
      falls[c] = falls[c] == 0 && !(gray->d[c] >= before->d[c]) ? i : falls[c];
    }
    before = gray;
  }
  std::printf("Gray axis  %s: components differ by at most %.6f (index %d)\n",
              spread.largest < half_code ? "neutral" : "not neutral", spread.largest, spread.where.ri);
  bool monotonic = true;
  for (int c = 0; c < 3; c++) {
    if (falls[c] > 0) {
      std::printf("           %s falls at index %d\n", kChannels[c], falls[c]);
      monotonic = false;
    }
  }
  std::printf("           %s\n", monotonic ? "monotonic" : "not monotonic");
}

void info(const Options &options) {
  const Lut3dFile file = read_with_warnings(input_of(options, options.first));
  vexo_3dlut *lut = file.lut.get();
  const int size = vexo_3dlut_size(lut);
  const char *title = vexo_3dlut_title(lut);
  std::printf("File       %s\n", options.first.c_str());
  std::printf("Format     %s%s%s\n", file.format.c_str(), file.bits > 0 ? format(", %d bits", file.bits).c_str() : "",
              file.version > 0 ? format(", version 0x%08x", file.version).c_str() : "");
  std::printf("Title      %s\n", title != nullptr ? title : "(none)");
  std::printf("Size       %d x %d x %d\n", size, size, size);
  print_ranges(lut);
  print_extents("Step       ", neighbour_steps(lut));
  const Lut3d identity = new_lut3d(size, "");
  vexo_3dlut_init_unit(identity.get());
  print_extents("Identity   ", difference(lut, identity.get()));
  print_gray_axis(lut);
}

Lut3dOutput output_of(const Options &options, const std::string &path) {
  return Lut3dOutput{path, options.to, optional_integer("--bits", options.bits, 1, 30)};
}

void convert(const Options &options) {
  const int size = optional_integer("--size", options.size, 1, 1024);
  const Lut3dOutput output = output_of(options, options.second);
  Lut3dFile file = read_with_warnings(input_of(options, options.first));
  check_output(output, size > 0 ? size : vexo_3dlut_size(file.lut.get()));
  if (size > 0) {
    file.lut = resampled(file.lut.get(), size);
  }
  if (options.has_title) {
    vexo_3dlut_set_title(file.lut.get(), options.title.c_str());
  }
  write_lut3d(output, file.lut.get());
}

void identity(const Options &options) {
  const int size = parse_integer("--size", options.size, 2, 1024);
  const Lut3dOutput output = output_of(options, options.first);
  check_output(output, size);
  const Lut3d lut = new_lut3d(size, options.has_title ? options.title : "identity");
  vexo_3dlut_init_unit(lut.get());
  write_lut3d(output, lut.get());
}

void diff(const Options &options) {
  const double limit = options.limit.empty() ? 0.0 : static_cast<double>(parse_not_negative("--limit", options.limit));
  Lut3d a = read_with_warnings(input_of(options, options.first)).lut;
  Lut3d b = read_with_warnings(input_of(options, options.second)).lut;
  const int size_a = vexo_3dlut_size(a.get());
  const int size_b = vexo_3dlut_size(b.get());
  if (size_a != size_b) {
    Lut3d &smaller = size_a < size_b ? a : b;
    smaller = resampled(smaller.get(), std::max(size_a, size_b));
    std::printf("Sizes %d and %d: the smaller is resampled\n", size_a, size_b);
  }
  const Extents extents = difference(a.get(), b.get());
  print_extents("", extents);
  for (int c = 0; c < 3 && !options.limit.empty(); c++) {
    if (!(extents.channel[c].largest <= limit)) {
      throw Failure(kLimitMissed, format("%s differs by %.6f, the limit is %s", kChannels[c],
                                         extents.channel[c].largest, options.limit.c_str()));
    }
  }
}

void add_input_options(CLI::App *command, Options &options) {
  command->add_option("--from", options.from, "Format of the input (default: by its name): cube cfe dat eecolor");
  command->add_option("--from-size", options.from_size,
                      "Grid points of an eeColor input (default: from its number of lines)");
  command->add_option("--max-size", options.max_size, "Refuse tables of more grid points (default 256)");
  command->add_flag("--strict", options.strict, "Refuse what would only give a warning");
}

void add_output_options(CLI::App *command, Options &options) {
  command->add_option("--to", options.to, "Format of the output (default: by its name): " + lut3d_format_names());
  command->add_option("--bits", options.bits, "Depth of the codes, where the format has codes");
  command->add_option_function<std::string>(
      "--title",
      [&options](const std::string &title) {
        options.title = title;
        options.has_title = true;
      },
      "Title of the output");
}

} // namespace

void add_lut3d(CLI::App &app) {
  CLI::App *lut3d = app.add_subcommand("lut3d", "Look at, convert, make and compare 3D LUTs");
  lut3d->require_subcommand(1);
  const auto command = [&](const char *name, const char *help, void (*run)(const Options &)) {
    const auto options = std::make_shared<Options>();
    CLI::App *sub = lut3d->add_subcommand(name, help);
    sub->callback([options, run] { run(*options); });
    return std::pair<CLI::App *, Options &>(sub, *options);
  };
  {
    auto [sub, options] = command("info", "Say what a 3D LUT holds", info);
    sub->add_option("FILE", options.first, "3D LUT to read; - for standard input")->required();
    add_input_options(sub, options);
    sub->footer("Example: vexo lut3d info film.cube");
  }
  {
    auto [sub, options] = command("convert", "Write a 3D LUT in another format, size or depth", convert);
    sub->add_option("IN", options.first, "3D LUT to read; - for standard input")->required();
    sub->add_option("OUT", options.second, "File to write; - for standard output")->required();
    sub->add_option("--size", options.size, "Resample to this many grid points");
    add_input_options(sub, options);
    add_output_options(sub, options);
    sub->footer("Example: vexo lut3d convert film.cube film.dat --size 17 --bits 10");
  }
  {
    auto [sub, options] = command("identity", "Write the 3D LUT that changes nothing", identity);
    sub->add_option("OUT", options.first, "File to write; - for standard output")->required();
    sub->add_option("--size", options.size, "Grid points per axis")->required();
    add_output_options(sub, options);
    sub->footer("Example: vexo lut3d identity unit.cube --size 33");
  }
  {
    auto [sub, options] = command("diff", "Compare two 3D LUTs entry by entry", diff);
    sub->add_option("A", options.first, "3D LUT to read; - for standard input")->required();
    sub->add_option("B", options.second, "3D LUT to read")->required();
    sub->add_option("--limit", options.limit, "Exit with 1 when a channel differs by more than this");
    add_input_options(sub, options);
    sub->footer("Example: vexo lut3d diff film.cube film.dat --limit 0.0005");
  }
}
