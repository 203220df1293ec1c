#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
#include <memory>

#include "calibration/condition.h"
#include "calibration/gray-ramp.h"
#include "calibration/solve.h"
#include "command/commands.h"
#include "command/shared-options.h"
#include "file/luts.h"
#include "file/output.h"
#include "file/panel.h"
#include "text/failure.h"
#include "text/text.h"
#include "text/verbose.h"
#include "vexo-cs.h"

namespace {

// Options as they stand on the command line; empty where not given.
struct CalibrateOptions {
  std::string panel;
  std::string output;
  TargetOptions target;
  std::string recipe = "aligned";
  std::string condition = "on";
  std::string bits = "10";
  std::string entries = "1024";
  ReportOptions report;
};

const int kLevels = 1024;             // entries that the recipes fill
const float kWhiteTolerance = 0.004F; // distance in u'v' at which two whites are just told apart side by side
const int kSteps = 1001;              // of the gray ramp that the figures describe
const float kDark = 0.1F;             // the figures leave out inputs below this one, where a probe reads noise

// What a recipe works on, and what it says about its work.
struct Task {
  Target target;
  vexo_lcnr lcnr;
  std::vector<std::string> remarks;
};

// Fills three LUTs of kLevels entries. False when the measurements make no tables.
using Recipe = bool (*)(LutSet &luts, Task &task);

struct NamedRecipe {
  const char *name;
  Recipe run;
  const char *meaning;
};

using LibraryRecipe = int (*)(vexo_lut *, vexo *, vexo_gamma *, vexo_gamma *, vexo_vector *);

// Measurements that the recipe lowers are lowered in the task.
bool run(LibraryRecipe recipe, LutSet &luts, Task &task) {
  Target &target = task.target;
  auto context = std::make_unique<vexo>();
  context->lcnr = task.lcnr;
  const int status = recipe(luts.get(), context.get(), &target.camera.gamma, &target.system.gamma, &target.white.xyz);
  task.lcnr = context->lcnr;
  return status == 0;
}

bool aligned(LutSet &luts, Task &task) { return run(vexo_data_alignment, luts, task); }

bool direct(LutSet &luts, Task &task) { return run(vexo_generate_lut, luts, task); }

bool solved(LutSet &luts, Task &task) {
  const auto bare = bare_context(task.lcnr);
  if (bare == nullptr) {
    return false;
  }
  const Solved result = solve(luts.get(), *bare, task.target);
  task.remarks.push_back(format("below %.1f %% input, straight lines to 0", result.toe / 10.23));
  if (result.held > 0) {
    task.remarks.push_back(
        format("%d entries, %.1f to %.1f %% input, keep the target's luminance but cannot show its white", result.held,
               static_cast<double>(result.held_from) * 100.0, static_cast<double>(result.held_to) * 100.0));
  }
  return true;
}

const NamedRecipe kRecipes[] = {
    {"aligned", aligned, "balances every gray level, then follows the curve"},
    {"direct", direct, "follows the curve, then scales full white"},
    {"solve", solved, "solves every gray level for the target's X, Y and Z"},
};

struct Job {
  Target target;
  const NamedRecipe *recipe;
  bool condition;
  int bits;
  int entries;
};

const NamedRecipe *parse_recipe(const std::string &text) {
  for (const NamedRecipe &recipe : kRecipes) {
    if (text == recipe.name) {
      return &recipe;
    }
  }
  throw Failure(kUsageError, "--recipe '" + text + "': expected aligned, direct or solve");
}

bool parse_condition(const std::string &text) {
  if (text != "on" && text != "off") {
    throw Failure(kUsageError, "--condition '" + text + "': expected on or off");
  }
  return text == "on";
}

Job parse(const CalibrateOptions &options) {
  Job job;
  job.target = parse_target(options.target);
  job.recipe = parse_recipe(options.recipe);
  job.condition = parse_condition(options.condition);
  job.bits = parse_integer("--bits", options.bits, 1, 30);
  job.entries = parse_integer("--entries", options.entries, 2, 65536);
  return job;
}

// Runs the recipe on the drives up to the lowest that gives full light: the library's search for white sees nothing
// change above it. A clipped panel has less than all.
bool run_below_clip(const Job &job, LutSet &luts, Task &task) {
  const int num = task.lcnr.num;
  const int full = job.condition ? clip_row(task.lcnr) : num - 1;
  task.lcnr.num = full + 1;
  const bool done = job.recipe->run(luts, task);
  task.lcnr.num = num;
  if (full < num - 1) {
    const float level = task.lcnr.sample[full];
    task.remarks.push_back(
        format("no drive above level %g, which gives full light already", static_cast<double>(level)));
    for (int c = 0; c < 3; c++) {
      const vexo_lut &lut = luts.get()[c];
      for (int i = 0; i < lut.size; i++) {
        lut.d[i] = std::min(lut.d[i], 1.0F) * (level / task.lcnr.sample[num - 1]);
      }
    }
  }
  return done;
}

// Limits drives to what the panel has. How many were beyond it.
int limit(LutSet &luts) {
  int limited = 0;
  for (int c = 0; c < 3; c++) {
    const vexo_lut &lut = luts.get()[c];
    for (int i = 0; i < lut.size; i++) {
      if (!std::isfinite(lut.d[i])) {
        throw Failure(kInputError, format("no drive can be computed for input %d of %d", i, lut.size - 1));
      }
      limited += lut.d[i] < 0.0F || lut.d[i] > 1.0F ? 1 : 0;
      lut.d[i] = std::clamp(lut.d[i], 0.0F, 1.0F);
    }
  }
  return limited;
}

void warn(const std::string &text) { std::fprintf(stderr, "vexo: %s\n", text.c_str()); }

void warn_of_falls(LutSet &luts) {
  for (int c = 0; c < 3; c++) {
    const vexo_lut &lut = luts.get()[c];
    int falls = 0;
    int first = 0;
    for (int i = lut.size - 1; i > 0; i--) {
      if (lut.d[i] < lut.d[i - 1]) {
        falls++;
        first = i;
      }
    }
    if (falls > 0) {
      warn(format("the LUT of %s falls at %d entries, the first is %d", kChannels[c], falls, first));
    }
  }
}

void write(const CalibrateOptions &options, const Job &job, LutSet &luts) {
  OutputFile file(options.output);
  vexo_luts_store_int(file.stream(), luts.get(), job.bits);
  file.commit();
}

// Whether the solve recipe shows the target white where another does not: a search in steps stops where one channel
// alone is clipped.
bool solve_reaches_white(Job job, Task task, vexo *bare) {
  LutSet luts(kLevels);
  job.recipe = parse_recipe("solve");
  return run_below_clip(job, luts, task) &&
         gray_ramp(bare, luts.get(), job.target, 2, 0.0F).back().white_error <= kWhiteTolerance;
}

void check_white(const CalibrateOptions &options, const Job &job, const Task &task, vexo *bare, const GrayStep &white) {
  if (white.white_error <= kWhiteTolerance) {
    return;
  }
  if (solve_reaches_white(job, task, bare)) {
    throw Failure(kLimitMissed,
                  format("%s: the %s recipe did not find white %s, --recipe solve does; no LUTs were written",
                         options.panel.c_str(), job.recipe->name, job.target.white.name.c_str()));
  }
  const auto &target = job.target.white.xyz.d;
  throw Failure(
      kLimitMissed,
      format("%s: the panel cannot show white %s (x %.4f, y %.4f): it reached x %.4f, y %.4f, %.4f away in u'v' "
             "where %.4f is allowed; no LUTs were written",
             options.panel.c_str(), job.target.white.name.c_str(), static_cast<double>(target[0]),
             static_cast<double>(target[1]), static_cast<double>(white.xyY.d[0]), static_cast<double>(white.xyY.d[1]),
             static_cast<double>(white.white_error), static_cast<double>(kWhiteTolerance)));
}

std::string describe_white(const vexo_vector &xyY) {
  return format("x %.4f, y %.4f, luminance %.4g", static_cast<double>(xyY.d[0]), static_cast<double>(xyY.d[1]),
                static_cast<double>(xyY.d[2]));
}

void print_figures(std::FILE *f, const char *title, const Spread &before, const Spread &after, double unit,
                   const char *unit_name) {
  std::fprintf(f, "  %-26s %9.4f %9.4f    %9.4f %9.4f   %s\n", title, before.mean * unit, before.worst * unit,
               after.mean * unit, after.worst * unit, unit_name);
}

struct Ramps {
  std::vector<GrayStep> before;
  std::vector<GrayStep> unrounded; // after, but for the rounding to codes
  std::vector<GrayStep> after;
};

void print_ramps(std::FILE *f, const Job &job, const Ramps &ramps) {
  std::fputs("\nGray ramp, a prediction of the additive panel model from these measurements, not a reading:\n"
             "             target            before                     after\n"
             "  input    luminance   luminance  white error   luminance  white error\n",
             f);
  const size_t steps = ramps.before.size() - 1;
  for (size_t tenth = 1; tenth <= 10; tenth++) {
    const GrayStep &before = ramps.before[tenth * steps / 10];
    const GrayStep &after = ramps.after[tenth * steps / 10];
    const float target = target_light(job.target, after.input) * ramps.after.back().xyY.d[2];
    std::fprintf(f, "  %4.0f %%   %9.4g   %9.4g   %9.4f     %9.4g   %9.4f\n", static_cast<double>(after.input) * 100.0,
                 static_cast<double>(target), static_cast<double>(before.xyY.d[2]),
                 static_cast<double>(before.white_error), static_cast<double>(after.xyY.d[2]),
                 static_cast<double>(after.white_error));
  }
  std::fprintf(f,
               "\nFrom %.0f %% input up:           before              after\n"
               "                                mean     worst         mean     worst\n",
               static_cast<double>(kDark) * 100.0);
  const auto figures = [&](const char *title, float GrayStep::*error, double unit, const char *unit_name) {
    print_figures(f, title, spread(ramps.before, error, kDark), spread(ramps.after, error, kDark), unit, unit_name);
  };
  figures("distance to target white", &GrayStep::white_error, 1.0, "u'v'");
  figures("distance to target curve", &GrayStep::curve_error, 100.0, "% of the target's light");
  figures("colour difference", &GrayStep::delta_e, 1.0, "CIEDE2000");
  const Spread unrounded = spread(ramps.unrounded, &GrayStep::delta_e, kDark);
  std::fprintf(f, "    before rounding to codes                         %9.4f %9.4f   CIEDE2000\n", unrounded.mean,
               unrounded.worst);
  print_figures(f, "  below that, near black", spread(ramps.before, &GrayStep::delta_e, 0.0F, kDark),
                spread(ramps.after, &GrayStep::delta_e, 0.0F, kDark), 1.0, "CIEDE2000");
}

void warn_when_worse(const Job &job, const Ramps &ramps) {
  const double before = spread(ramps.before, &GrayStep::delta_e, kDark).mean;
  const double after = spread(ramps.after, &GrayStep::delta_e, kDark).mean;
  if (!(after <= before)) {
    warn(format("these LUTs make the gray ramp worse: mean CIEDE2000 %.4f, without them %.4f; ", after, before) +
         (job.recipe->run == solved ? "try more --bits or --entries, or use no LUTs" : "try --recipe solve"));
  }
}

// The panel as the recipe gets it. Says what was done to it.
Panel prepare(const CalibrateOptions &options, const Job &job, std::vector<std::string> *changes) {
  Panel panel = read_panel(options.panel);
  if (job.condition) {
    *changes = condition_aloud(&panel);
  }
  return panel;
}

void calibrate(const CalibrateOptions &options, const std::string &command_line) {
  const Job job = parse(options);
  std::vector<std::string> changes;
  const Panel panel = prepare(options, job, &changes);

  Task task = {job.target, panel.lcnr, {}};
  LutSet luts(kLevels);
  say(std::string("runs the recipe ") + job.recipe->name);
  if (!run_below_clip(job, luts, task)) {
    throw Failure(kInputError, unusable_row(Panel{panel.path, task.lcnr, panel.lines}));
  }
  LutSet written(job.entries);
  for (int c = 0; c < 3; c++) {
    vexo_convert_lut(written.get() + c, luts.get() + c);
  }
  const int limited = limit(written);
  if (limited > 0) {
    task.remarks.push_back(format("%d entries asked for more than full drive and are limited to it", limited));
  }

  say("predicts the gray ramp");
  const auto bare = bare_context(task.lcnr);
  vexo_vector white = job.target.white.xyz;
  Ramps ramps;
  ramps.unrounded = gray_ramp(bare.get(), written.get(), job.target, kSteps, 0.0F);
  round_to_codes(written, job.bits);
  ramps.after = gray_ramp(bare.get(), written.get(), job.target, kSteps, 0.0F);
  ramps.before = gray_ramp(bare.get(), nullptr, job.target, kSteps, ramps.after.back().xyY.d[2]);
  check_white(options, job, task, bare.get(), ramps.after.back());
  warn_of_falls(written);
  warn_when_worse(job, ramps);
  if (!options.output.empty()) {
    write(options, job, written);
  }

  std::FILE *f = options.output == "-" ? stderr : stdout;
  const int top = panel.lcnr.num - 1;
  std::fprintf(f, "Panel         %s, %d rows, levels 0 to %g\n", options.panel.c_str(), panel.lcnr.num,
               static_cast<double>(panel.lcnr.sample[top]));
  std::fprintf(f, "Conditioning  %s\n",
               !job.condition    ? "off"
               : changes.empty() ? "nothing to do"
                                 : format("%zu changes, listed on standard error", changes.size()).c_str());
  std::fprintf(f, "Panel white   %s\n", describe_white(ramps.before.back().xyY).c_str());
  std::fprintf(f, "Target white  x %.4f, y %.4f (%s)\n", static_cast<double>(white.d[0]),
               static_cast<double>(white.d[1]), job.target.white.name.c_str());
  std::fprintf(f, "White after   %s\n", describe_white(ramps.after.back().xyY).c_str());
  std::fprintf(f, "Camera curve  %s\n", describe(job.target.camera).c_str());
  std::fprintf(f, "System curve  %s\n", describe(job.target.system).c_str());
  std::fprintf(f, "Recipe        %s: %s\n", job.recipe->name, job.recipe->meaning);
  const auto gain = [&](int c) { return static_cast<double>(luts.get()[c].d[kLevels - 1]); };
  std::fprintf(f, "Gains         red %.4f, green %.4f, blue %.4f\n", gain(0), gain(1), gain(2));
  std::fprintf(f, "LUTs          %s, 3 x %d entries of %d bits\n",
               options.output.empty()  ? "not written (give -o FILE)"
               : options.output == "-" ? "standard output"
                                       : options.output.c_str(),
               job.entries, job.bits);
  for (const std::string &remark : task.remarks) {
    std::fprintf(f, "              %s\n", remark.c_str());
  }
  print_ramps(f, job, ramps);

  if (options.report.any()) {
    ReportSource source;
    source.panel = &panel;
    source.used = task.lcnr;
    source.notes = changes;
    source.notes.insert(source.notes.end(), task.remarks.begin(), task.remarks.end());
    source.target = job.target;
    source.recipe = std::string(job.recipe->name) + ": " + job.recipe->meaning;
    source.luts = &written;
    source.luts_name = options.output.empty() ? "not written" : options.output;
    source.command_line = command_line;
    write_reports(options.report, source);
  }
}

} // namespace

void add_calibrate(CLI::App &app, const std::string &command_line) {
  const auto shared = std::make_shared<CalibrateOptions>();
  CalibrateOptions &options = *shared;
  CLI::App *command = app.add_subcommand("calibrate", "Turn a panel's measurements into three correction LUTs");
  command->add_option("PANEL.xml", options.panel, "LCNR file: ramps of red, green and blue, each driven alone")
      ->required();
  command->add_option("-o,--output", options.output,
                      "LUT file to write, three columns of codes; - for standard output");
  add_target_options(command, options.target);
  command->add_option("--recipe", options.recipe, "aligned (default), direct or solve");
  command->add_option("--condition", options.condition,
                      "on (default): leave out and mend rows that are noise, each named; off: as measured");
  command->add_option("--bits", options.bits, "Depth of the codes, 1 to 30 (default 10)");
  command->add_option("--entries", options.entries, "Entries of each LUT, 2 to 65536 (default 1024)");
  command->add_option("--report", options.report.html, "HTML report to write; - for standard output");
  add_report_options(command, options.report);
  command->footer(
      "Example: vexo calibrate panel.xml -o luts.txt --white D65 --gamma 2.4\n\n"
      "Recipes: aligned and direct are the library's; solve finds the three drives of each gray for the target's X, Y\n"
      "and Z. Conditioning leaves out rows that are not credibly above black, raises components at or below black and\n"
      "lowers values that fall, each named on standard error. docs/recipes.md has the rules and figures.\n\n"
      "Exit status: 0 done, 1 the panel cannot show the target white, 2 usage, 3 input unreadable or invalid,\n"
      "4 output failed.");
  command->callback([shared, command_line] { calibrate(*shared, command_line); });
}
