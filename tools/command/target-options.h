// The options that say what a gray ramp should be.
#ifndef VEXO_TOOLS_TARGET_OPTIONS_H
#define VEXO_TOOLS_TARGET_OPTIONS_H

#include <string>
#include <utility>
#include <vector>

#include "calibration/target.h"

namespace CLI {
class App;
}

// What the gray ramp should follow, as it stands on the command line; empty where not given.
struct TargetOptions {
  std::string from; // JSON file of a calibration
  std::string white;
  std::string curve;
  std::string gamma; // a curve that is a power law
  std::string luminance;
  std::string camera;
  std::string system;
};

void add_target_options(CLI::App *command, TargetOptions &options);

// --from: the target options of a calibration's JSON file, for commands that follow one.
void add_from_option(CLI::App *command, TargetOptions &options);

// Takes the options that were not given by hand from the file of --from. Prints those given by hand that differ from
// it. Throws a Failure (input).
TargetOptions complete(TargetOptions options);

// Throws a Failure (usage).
Target parse_target(const TargetOptions &options);

// The options that are given, by name.
std::vector<std::pair<std::string, std::string>> given(const TargetOptions &options);

#endif
