#include "command/lut3d-input.h"

#include "command/cli.h"

void add_input(CLI::App *command, const char *name, Lut3dInput &input) {
  command->add_option(name, input.path, "3D LUT to read; - for standard input")->required();
  command->add_option("--from", input.format, "Format of the input (default: told by its name)")
      ->check(one_of(lut3d_input_formats()));
  command->add_option("--from-size", input.size, "Grid points of an eeColor input (default: from its number of lines)")
      ->check(whole_number(1, 1024));
  command->add_option("--max-size", input.max_size, "Refuse tables of more grid points")
      ->check(whole_number(1, 1024))
      ->capture_default_str();
  command->add_flag("--strict", input.strict, "Refuse what would only give a warning");
}

Lut3dFile read_with_warnings(const Lut3dInput &input) {
  Lut3dFile file = read_lut3d(input);
  for (const std::string &warning : file.warnings) {
    std::fprintf(stderr, "vexo: warning: %s\n", warning.c_str());
  }
  return file;
}
