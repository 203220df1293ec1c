#include "command/target-options.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iterator>

#include "command/cli.h"
#include "command/shared-options.h"
#include "file/input.h"
#include "text/failure.h"
#include "text/format.h"
#include "text/grammar.h"
#include "text/json.h"

namespace {

const char *const kDefaultWhite = "D65";
const char *const kDefaultCurve = "2.2";

// An option of a target, by its name on the command line and in JSON.
struct TargetOption {
  const char *name;
  std::string TargetOptions::*text;
  bool curve; // one of those that name the curve
};

const TargetOption kTargetOptions[] = {
    {"white", &TargetOptions::white, false},  {"curve", &TargetOptions::curve, true},
    {"gamma", &TargetOptions::gamma, true},   {"camera", &TargetOptions::camera, true},
    {"system", &TargetOptions::system, true}, {"luminance", &TargetOptions::luminance, false}};

bool names_curve(const TargetOptions &options) {
  return std::any_of(std::begin(kTargetOptions), std::end(kTargetOptions),
                     [&](const TargetOption &o) { return o.curve && !(options.*o.text).empty(); });
}

ToneCurve parse_two_steps(const TargetOptions &options) {
  const LibraryCurve camera = options.camera.empty() ? kLinear : parse_camera_curve("--camera", options.camera);
  const LibraryCurve system = options.system.empty() ? kLinear : parse_system_curve("--system", options.system);
  return two_steps(camera, system);
}

bool in_steps(const TargetOptions &options) { return !options.camera.empty() || !options.system.empty(); }

void warn_of_steps(const ToneCurve &curve) {
  const double middle = curve.luminance(0.5, {1.0, 0.0});
  if (middle > 0.5) {
    warn(format("at 50 %% input the target has %.1f %% of white's light, an effective gamma of %.2f: displays have one "
                "above 1",
                middle * 100.0, effective_gamma(0.5, middle, {1.0, 0.0})));
  }
}

// The one tone curve that the options name.
ToneCurve parse_curve(const TargetOptions &options) {
  if (!options.curve.empty() + !options.gamma.empty() + in_steps(options) > 1) {
    throw Failure(kUsageError, "expected one of --curve, --gamma, and --camera with --system");
  }
  if (in_steps(options)) {
    return parse_two_steps(options);
  }
  if (!options.gamma.empty()) {
    return power_law(parse_positive("--gamma", options.gamma));
  }
  return parse_tone_curve("--curve", options.curve.empty() ? kDefaultCurve : options.curve);
}

Target target_of(const TargetOptions &options) {
  Target target = {parse_white("--white", options.white.empty() ? kDefaultWhite : options.white), parse_curve(options),
                   std::nullopt};
  target.luminance = target.curve.peak;
  if (!options.luminance.empty() && target.luminance) {
    throw Failure(kUsageError, "--luminance and the peak of --curve " + target.curve.name + ": expected one of them");
  }
  if (!options.luminance.empty()) {
    target.luminance = parse_positive("--luminance", options.luminance);
  }
  return target;
}

// The target options that a calibration left in its JSON file.
TargetOptions read_target_options(const std::string &path) {
  const std::string expected = "the JSON of vexo calibrate --json, with target/options";
  const Json document = parse_json(input_name(path), read_text(path, "a calibration's JSON"), expected);
  const Json::json_pointer place("/target/options");
  if (!document.is_object() || !document.contains(place) || !document[place].is_object()) {
    refuse_input(input_name(path), "expected " + expected);
  }
  TargetOptions options;
  for (const TargetOption &option : kTargetOptions) {
    const auto member = document[place].find(option.name);
    if (member != document[place].end() && !member->is_string()) {
      refuse_input(input_name(path), std::string("target/options/") + option.name + ": expected a text");
    }
    options.*option.text = member == document[place].end() ? "" : visible(member->get<std::string>());
  }
  try {
    target_of(options);
  } catch (const Failure &failure) {
    if (failure.code == kUsageError) { // a curve's file may be missing where another curve is given by hand
      refuse_input(input_name(path), "target/options: " + failure.text);
    }
  }
  return options;
}

} // namespace

void add_target_options(CLI::App *command, TargetOptions &options) {
  command
      ->add_option("--white", options.white,
                   "Target white by name, x,y, a daylight such as 6500K, or a Planckian radiator such as "
                   "2856P")
      ->type_name(words_among_others(white_names()))
      ->default_str(kDefaultWhite);
  command->add_option("--curve", options.curve, "Target curve from the signal to light: " + tone_curve_names())
      ->type_name(words_among_others(tone_curve_words()))
      ->default_str(kDefaultCurve);
  command->add_option("--gamma", options.gamma, "Short form of --curve EXPONENT");
  command
      ->add_option("--camera", options.camera,
                   "The curve in two steps, in place of --curve. First step: the curve that encoded the signal, by "
                   "name, an exponent, or slope,transition,gamma,offset")
      ->type_name(words_among_others(camera_curve_names()));
  command->add_option("--system", options.system,
                      "Second step: the curve from scene light to display light: linear, an exponent, or "
                      "slope,transition,gamma,offset");
  command->add_option("--luminance", options.luminance,
                      "Luminance of white in cd/m2, with black in it; default: the most that the panel has");
}

void add_from_option(CLI::App *command, TargetOptions &options) {
  command->add_option("--from", options.from,
                      "Take the target from the JSON file of a calibration; an option given by hand wins");
}

TargetOptions complete(TargetOptions options) {
  if (options.from.empty()) {
    return options;
  }
  const TargetOptions left = read_target_options(options.from);
  const bool own_curve = names_curve(options);
  for (const TargetOption &option : kTargetOptions) {
    std::string &text = options.*option.text;
    const std::string &theirs = left.*option.text;
    if (!text.empty() && text != theirs) {
      warn(format("--%s %s is given by hand, %s has %s", option.name, text.c_str(), options.from.c_str(),
                  theirs.empty() ? "another target" : theirs.c_str()));
    }
    if (text.empty() && !(option.curve && own_curve)) {
      text = theirs;
    }
  }
  return options;
}

std::vector<std::pair<std::string, std::string>> given(const TargetOptions &options) {
  std::vector<std::pair<std::string, std::string>> list;
  for (const TargetOption &option : kTargetOptions) {
    const std::string &text = options.*option.text;
    if (!text.empty()) {
      list.emplace_back(option.name, text);
    }
  }
  if (options.white.empty()) {
    list.emplace_back("white", kDefaultWhite);
  }
  if (!names_curve(options)) {
    list.emplace_back("curve", kDefaultCurve);
  }
  return list;
}

Target parse_target(const TargetOptions &options) {
  Target target = target_of(options);
  if (in_steps(options)) {
    warn_of_steps(target.curve);
  }
  return target;
}
