// vexo lut3d make: a 3D LUT that makes a panel show the colours of a signal.
#include <unistd.h>

#include <cmath>
#include <limits>
#include <optional>

#include "calibration/cube.h"
#include "calibration/test-colours.h"
#include "command/cli.h"
#include "command/commands.h"
#include "command/shared-options.h"
#include "file/apart.h"
#include "text/failure.h"
#include "text/format.h"
#include "text/verbose.h"

namespace {

const double kGraysFollow = 1.0;    // mean CIEDE2000 of grays that follow their target
const double kSameLuminance = 0.02; // parts that two luminances of one white may differ by

struct MakeOptions {
  PanelOptions panel;
  std::string luts;
  TargetOptions target;
  Space space = parse_space("--space", "bt709");
  int size = 33;
  Lut3dOutput output;
  std::optional<std::string> title;
  bool clip = false;
};

void show_progress(double part) {
  if (isatty(STDERR_FILENO) != 0) {
    std::fprintf(stderr, part < 1.0 ? "\r%3.0f %%" : "\r     \r", part * 100.0);
  }
}

void warn_of_grays(const PanelModel &model, LutSet &luts, const Target &target) {
  const double error = predicted_error(model, luts, target).mean;
  if (error > kGraysFollow) {
    warn(format("the grays through the 1D LUTs are a mean CIEDE2000 of %.2f from this target: expected the white and "
                "curve that the LUTs were made for",
                error));
  }
}

// 1D LUTs decide how bright white is. white: with black in it.
void warn_of_luminance(double white, const Target &target) {
  if (target.luminance && std::fabs(white / *target.luminance - 1.0) > kSameLuminance) {
    warn(format("white through the 1D LUTs has %.4g cd/m2, the target has %.4g: the 3D LUT takes that of the 1D LUTs",
                white, *target.luminance));
  }
}

// Without 1D LUTs, the 3D LUT has to show white.
void check_white(const PanelInputs &panel, const Triple &inputs, const Target &target, const Triple &black) {
  const Triple XYZ = panel.shown(inputs) + black;
  const std::string missed = missed_white(gray_figure(1.0, XYZ, {XYZ[1], black[1]}), target.white);
  if (!missed.empty()) {
    throw Failure(kLimitMissed, missed + "; no 3D LUT was written");
  }
}

size_t nearest_reading(const std::vector<MeasuredLight> &lights, const Triple &drives) {
  const auto distance = [&](const MeasuredLight &light) { return (light.drives - drives).norm(); };
  const auto nearest = std::min_element(lights.begin(), lights.end(),
                                        [&](const auto &a, const auto &b) { return distance(a) < distance(b); });
  return static_cast<size_t>(nearest - lights.begin());
}

ChartEffect print_colours(const PanelInputs &panel, const SignalColours &colours, vexo_3dlut *lut, std::FILE *f) {
  const auto error = [&](const Triple &signal, const Triple &inputs) {
    return colour_error(panel.shown(inputs), signal, colours);
  };
  const ChartEffect effect = chart_effect(
      colours, [&](const Triple &signal) { return through(lut, signal); }, error);
  std::fprintf(f, "24 colours    CIEDE2000 mean %.2f, worst %.2f; without the 3D LUT %.2f, %.2f (predicted)\n",
               effect.with.mean, effect.with.worst, effect.without.mean, effect.without.worst);
  int outside = 0;
  const Spread inside = chart_error(colours, [&](const Triple &signal) {
    if (in_gamut(panel, colours.XYZ(signal))) {
      return error(signal, through(lut, signal));
    }
    outside++;
    return std::numeric_limits<double>::quiet_NaN();
  });
  if (outside > 0) {
    std::fprintf(
        f, "              %d of them out of gamut%s\n", outside,
        std::isnan(inside.mean) ? "" : format("; the others mean %.2f, worst %.2f", inside.mean, inside.worst).c_str());
  }
  return effect;
}

// How far the model can be trusted there: its error at the readings nearest to the colours.
void print_trust(const MixtureReadings &readings, const CrossValidation &validation, const SignalColours &colours,
                 const vexo_lut *luts, vexo_3dlut *lut, std::FILE *f) {
  const Spread spread = chart_error(colours, [&](const Triple &signal) {
    return validation.de2000[nearest_reading(readings.lights, drives_at(luts, through(lut, signal)))];
  });
  std::fprintf(f, "Model         CIEDE2000 mean %.2f, worst %.2f at the measured mixtures nearest to these, left out\n",
               spread.mean, spread.worst);
}

void print_clipped(const OutOfGamut &clipped, int size, bool details, std::FILE *f) {
  const double all = std::pow(size, 3);
  std::fprintf(f, "Out of gamut  %.1f %% of the nodes\n", static_cast<double>(clipped.nodes) / all * 100.0);
  if (details && clipped.nodes > 0) {
    const Triple &at = clipped.worst_signal;
    std::fprintf(f, "              %ld nodes, clipped by CIEDE2000 mean %.2f, worst %.2f at signal %.4g, %.4g, %.4g\n",
                 clipped.nodes, clipped.mean, clipped.worst, at[0], at[1], at[2]);
  }
}

void make(const MakeOptions &options) {
  const TargetOptions given = complete(options.target);
  const Target wished = parse_target(given);
  check_output(options.output, options.size);
  require_apart({options.panel.panel, options.panel.gray, options.panel.mix, options.luts, given.from, given.curve},
                {options.output.path});
  const PanelInput input = read_panel_input(options.panel);
  const PanelModel model = model_of(input);
  const Target target = on_panel(wished, model);
  LutSet luts = options.luts.empty() ? LutSet() : read_luts(options.luts);
  const vexo_lut *between = options.luts.empty() ? nullptr : luts.get();
  if (between != nullptr) {
    require_channels(model, luts, options.luts);
    warn_of_grays(model, luts, target);
    warn_of_luminance((model.XYZ(drives_at(between, 1.0)) + black_of(model.measurements()))[1], target);
  }
  const PanelInputs panel(model, between);
  const Triple black = included_black(target.curve, model);
  const double white = between != nullptr ? panel.shown(Triple::Ones())[1] + black[1] : white_luminance(panel, target);
  const SignalColours colours(options.space, target, white, black);
  say("solves the nodes");
  Cube cube = make_cube(panel, colours, options.size, between != nullptr, show_progress);
  if (between == nullptr) {
    check_white(panel, through(cube.lut.get(), Triple::Ones()), target, black);
  }
  vexo_3dlut_set_title(cube.lut.get(), options.title.value_or(options.space.name).c_str());
  write_lut3d(options.output, cube.lut.get());
  std::FILE *f = options.output.path == "-" ? stderr : stdout;
  print_clipped(cube.clipped, options.size, options.clip, f);
  const ChartEffect effect = print_colours(panel, colours, cube.lut.get(), f);
  if (input.more.mixtures) {
    const CrossValidation validation = cross_validate(*input.more.mixtures, model);
    print_trust(*input.more.mixtures, validation, colours, between, cube.lut.get(), f);
    if (!validation.holds) {
      warn(doubt(validation));
    }
  }
  if (is_worse(effect.with, effect.without)) {
    throw Failure(kLimitMissed,
                  format("the 3D LUT makes the 24 colours worse: mean CIEDE2000 %.4f, without it %.4f (predicted); %s "
                         "was written",
                         effect.with.mean, effect.without.mean, options.output.path.c_str()));
  }
}

} // namespace

void add_lut3d_make(CLI::App &lut3d) {
  auto [command, options] =
      add_command(lut3d, "make", "Make the 3D LUT that gives a panel the colours of a signal", make);
  add_panel_options(command, options.panel);
  command->add_option(
      "--luts", options.luts,
      "1D LUTs between the 3D LUT and the panel, which correct the grays: three columns of codes, or a cube for "
      ".cube");
  add_parsed(command, "--space", options.space, parse_space,
             "Colour space of the signal by name, or rx,ry,gx,gy,bx,by,wx,wy")
      ->type_name(words_among_others(space_names()))
      ->default_str(options.space.name);
  add_target_options(command, options.target);
  add_from_option(command, options.target);
  command->add_option("--size", options.size, "Grid points per axis")
      ->check(whole_number(2, 129))
      ->capture_default_str();
  command->add_option("-o,--output", options.output.path, "3D LUT to write; - for standard output")->required();
  command->add_option("--to", options.output.format, "Format of the output (default: told by its name)")
      ->check(one_of(lut3d_output_formats()));
  command->add_option("--bits", options.output.bits, "Depth of the codes, where the format has codes")
      ->check(whole_number(1, 30));
  command->add_option("--title", options.title, "Title of the output (default: the colour space)");
  command->add_flag("--clip", options.clip, "Say how many nodes are out of the panel's gamut, and how far");
  command->footer(
      "Example: vexo lut3d make panel.xml --luts luts.txt --gray bare.csv --mix mix.csv -o bt709.cube\n\n"
      "Give the same target as to calibrate. Gray signals pass the 3D LUT unchanged when there are --luts.\n\n"
      "Exit status: 0 done; 1 the panel cannot show white or its luminance (no 3D LUT is written), or the 3D LUT\n"
      "makes the 24 colours worse (it is written); 2 usage; 3 input unreadable or invalid; 4 output failed.");
}
