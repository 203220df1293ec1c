// vexo lut3d: look at, convert, make and compare 3D LUTs.
#include <algorithm>
#include <optional>

#include "command/cli.h"
#include "command/commands.h"
#include "command/difference-limit.h"
#include "command/lut3d-input.h"
#include "file/apart.h"
#include "file/input.h"
#include "lut/lut3d-statistics.h"
#include "text/channels.h"
#include "text/failure.h"
#include "text/format.h"

namespace {

struct Lut3dOptions {
  Lut3dInput input;
  Lut3dOutput output;
  std::string other; // the second input of diff
  std::optional<int> size;
  std::optional<std::string> title;
  DifferenceLimit limit;
};

void print_extents(const char *title, const Lut3dExtents &extents) {
  for (size_t c = 0; c < 3; c++) {
    const Lut3dIndex at = extents[c].where();
    std::printf("%s%-6s mean %.6f, largest %.6f at blue %d, green %d, red %d\n", title, kChannels[c], extents[c].mean(),
                extents[c].largest(), at.bi, at.gi, at.ri);
  }
}

void print_range(const Lut3dRange &range) {
  for (int c = 0; c < 3; c++) {
    std::printf("Range      %-6s %.8g to %.8g\n", kChannels[c], range.lowest[c], range.highest[c]);
  }
}

void print_gray_axis(const Lut3dGrayAxis &axis) {
  std::printf("Gray axis  %s: components differ by at most %.6f (index %d)\n",
              axis.neutral() ? "neutral" : "not neutral", axis.spread.largest(), axis.spread.where().ri);
  for (int c = 0; c < 3; c++) {
    if (axis.first_fall[c] > 0) {
      std::printf("           %s falls at index %d\n", kChannels[c], axis.first_fall[c]);
    }
  }
  std::printf("           %s\n", axis.monotonic() ? "monotonic" : "not monotonic");
}

void info(const Lut3dOptions &options) {
  const Lut3dFile file = read_with_warnings(options.input);
  vexo_3dlut *lut = file.lut.get();
  const int size = vexo_3dlut_size(lut);
  const char *title = vexo_3dlut_title(lut);
  std::printf("File       %s\n", input_name(options.input.path).c_str());
  std::printf("Format     %s%s%s\n", file.format.c_str(), file.bits > 0 ? format(", %d bits", file.bits).c_str() : "",
              file.version > 0 ? format(", version 0x%08x", file.version).c_str() : "");
  std::printf("Title      %s\n", title != nullptr ? visible(title).c_str() : "(none)");
  std::printf("Size       %d x %d x %d\n", size, size, size);
  const bool unit_inputs = file.domain == Lut3dDomain{};
  if (!unit_inputs) {
    std::printf("Inputs     %s\n", describe(file.domain).c_str());
  }
  print_range(value_range(lut));
  print_extents("Step       ", neighbour_steps(lut));
  if (unit_inputs) {
    const Lut3d identity = new_lut3d(size, "");
    vexo_3dlut_init_unit(identity.get());
    print_extents("Identity   ", difference(lut, identity.get()));
  }
  print_gray_axis(gray_axis(lut));
}

void convert(const Lut3dOptions &options) {
  require_apart({options.input.path}, {options.output.path});
  Lut3dFile file = read_with_warnings(options.input);
  Lut3dOutput output = options.output;
  output.domain = file.domain;
  output.source = input_name(options.input.path);
  output.title_given = options.title.has_value();
  check_output(output, options.size.value_or(vexo_3dlut_size(file.lut.get())));
  if (options.size) {
    file.lut = resampled(file.lut.get(), *options.size);
  }
  if (options.title) {
    vexo_3dlut_set_title(file.lut.get(), options.title->c_str());
  }
  write_lut3d(output, file.lut.get());
}

void identity(const Lut3dOptions &options) {
  check_output(options.output, *options.size);
  const Lut3d lut = new_lut3d(*options.size, options.title.value_or("identity"));
  vexo_3dlut_init_unit(lut.get());
  write_lut3d(options.output, lut.get());
}

void diff(const Lut3dOptions &options) {
  require_apart({options.input.path, options.other}, {});
  Lut3dInput other = options.input;
  other.path = options.other;
  Lut3dFile file_a = read_with_warnings(options.input);
  Lut3dFile file_b = read_with_warnings(other);
  if (!(file_a.domain == file_b.domain)) {
    throw Failure(kInputError, format("inputs differ: %s in %s, %s in %s", describe(file_a.domain).c_str(),
                                      input_name(options.input.path).c_str(), describe(file_b.domain).c_str(),
                                      input_name(options.other).c_str()));
  }
  Lut3d &a = file_a.lut;
  Lut3d &b = file_b.lut;
  const int size_a = vexo_3dlut_size(a.get());
  const int size_b = vexo_3dlut_size(b.get());
  if (size_a != size_b) {
    Lut3d &smaller = size_a < size_b ? a : b;
    smaller = resampled(smaller.get(), std::max(size_a, size_b));
    std::printf("Sizes %d and %d: the smaller is resampled\n", size_a, size_b);
  }
  const Lut3dExtents extents = difference(a.get(), b.get());
  print_extents("", extents);
  check_differences(options.limit, {extents[0].largest(), extents[1].largest(), extents[2].largest()});
}

void add_output(CLI::App *command, Lut3dOptions &options) {
  command->add_option("OUT", options.output.path, "File to write; - for standard output")->required();
  command->add_option("--to", options.output.format, "Format of the output (default: told by its name)")
      ->check(one_of(lut3d_output_formats()));
  command->add_option("--bits", options.output.bits, "Depth of the codes, where the format has codes")
      ->check(whole_number(1, 30));
  command->add_option("--title", options.title, "Title of the output");
}

} // namespace

void add_lut3d(CLI::App &app) {
  CLI::App &lut3d = *app.add_subcommand("lut3d", "Look at, convert, make and compare 3D LUTs");
  lut3d.require_subcommand(1);
  add_lut3d_make(lut3d);
  {
    auto [command, options] =
        add_command<Lut3dOptions>(lut3d, "info", "Print the format and figures of a 3D LUT", info);
    add_input(command, "FILE", options.input);
    command->footer("Example: vexo lut3d info film.cube");
  }
  {
    auto [command, options] =
        add_command<Lut3dOptions>(lut3d, "convert", "Write a 3D LUT in another format, size or depth", convert);
    add_input(command, "IN", options.input);
    add_output(command, options);
    command->add_option("--size", options.size, "Resample to this many grid points per axis")
        ->check(whole_number(1, 1024));
    command->footer("Example: vexo lut3d convert film.cube film.dat --size 17 --bits 10");
  }
  {
    auto [command, options] =
        add_command<Lut3dOptions>(lut3d, "identity", "Write the 3D LUT that changes nothing", identity);
    add_output(command, options);
    command->add_option("--size", options.size, "Grid points per axis")->required()->check(whole_number(2, 1024));
    command->footer("Example: vexo lut3d identity unit.cube --size 33");
  }
  {
    auto [command, options] = add_command<Lut3dOptions>(lut3d, "diff", "Compare two 3D LUTs entry by entry", diff);
    add_input(command, "A", options.input);
    command->add_option("B", options.other, "3D LUT to read")->required();
    add_difference_limit(command, options.limit);
    command->footer("Example: vexo lut3d diff film.cube film.dat --limit 0.0005");
  }
}
