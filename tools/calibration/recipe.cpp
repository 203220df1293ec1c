#include "calibration/recipe.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "calibration/condition.h"
#include "calibration/evidence.h"
#include "calibration/figures.h"
#include "calibration/solve.h"
#include "file/input.h"
#include "text/channels.h"
#include "text/failure.h"
#include "text/format.h"
#include "text/verbose.h"

namespace {

const int kLevels = 1024; // entries that the recipes fill

// Applies a change to every drive.
template <typename Change> void for_each_drive(LutSet &luts, Change change) {
  for (int c = 0; c < 3; c++) {
    const vexo_lut &lut = luts.get()[c];
    for (int i = 0; i < lut.size; i++) {
      change(lut.d[i], i);
    }
  }
}

// The level of the full row as a part of the highest.
float full_drive(const RecipeTask &task) {
  const vexo_lcnr &rows = task.measurements;
  return rows.sample[task.full_row] / rows.sample[rows.num - 1];
}

using LibraryRecipe = int (*)(vexo_lut *, vexo *, vexo_gamma *, vexo_gamma *, vexo_vector *);

// Runs the recipe on the rows up to the full one, then scales the drives to that row's. The library's search for white
// sees nothing change above it.
bool run_library(LibraryRecipe recipe, LutSet &luts, RecipeTask &task) {
  LibraryCurves curves = *task.target.curve.library;
  auto context = std::make_unique<vexo>();
  context->lcnr = task.measurements;
  context->lcnr.num = task.full_row + 1;
  const int status =
      recipe(luts.get(), context.get(), &curves.camera.gamma, &curves.system.gamma, &task.target.white.xyz);
  const int num = task.measurements.num;
  task.measurements = context->lcnr;
  task.measurements.num = num;
  if (task.full_row < num - 1) {
    const float share = full_drive(task);
    for_each_drive(luts, [share](float &drive, int) { drive = std::min(drive, 1.0F) * share; });
  }
  return status == 0;
}

bool aligned(LutSet &luts, RecipeTask &task) { return run_library(vexo_data_alignment, luts, task); }

bool direct(LutSet &luts, RecipeTask &task) { return run_library(vexo_generate_lut, luts, task); }

bool solved(LutSet &luts, RecipeTask &task) {
  const auto model = model_of(task.measurements, *task.evidence);
  if (!model) {
    return false;
  }
  const Solved result = solve(luts.get(), *model, task.target, double{full_drive(task)});
  task.remarks.push_back(format("below %.1f %% input, straight lines to 0", result.toe / 10.23));
  if (result.held > 0) {
    task.remarks.push_back(
        format("%d entries, %.1f to %.1f %% input, keep the target's luminance but cannot show its white", result.held,
               result.held_from * 100.0, result.held_to * 100.0));
  }
  return true;
}

const Recipe kRecipes[] = {
    {"aligned", "balances every gray level, then follows the curve", aligned},
    {"direct", "follows the curve, then scales full white", direct},
    {"solve", "solves every gray level for the target's X, Y and Z", solved},
};

// Limits drives to what the panel has.
void limit(LutSet &luts, std::vector<std::string> *remarks) {
  int limited = 0;
  for_each_drive(luts, [&](float &drive, int entry) {
    if (!std::isfinite(drive)) {
      throw Failure(kInputError, format("no drive can be computed for input %d of %d", entry, luts.size() - 1));
    }
    limited += drive < 0.0F || drive > 1.0F ? 1 : 0;
    drive = std::clamp(drive, 0.0F, 1.0F);
  });
  if (limited > 0) {
    remarks->push_back(format("%d entries asked for more than full drive and are limited to it", limited));
  }
}

// The drives of the codes that a file of that depth holds.
LutSet rounded_to_codes(LutSet &luts, int bits) {
  const float max_code = static_cast<float>((1 << bits) - 1);
  LutSet rounded = resampled(luts, luts.size());
  for_each_drive(rounded, [&](float &drive, int) { drive = std::round(drive * max_code) / max_code; });
  return rounded;
}

// Where a channel's drive falls as the input rises.
std::vector<std::string> falls(LutSet &luts) {
  std::vector<std::string> result;
  for (int c = 0; c < 3; c++) {
    const vexo_lut &lut = luts.get()[c];
    int count = 0;
    int first = 0;
    for (int i = lut.size - 1; i > 0; i--) {
      if (lut.d[i] < lut.d[i - 1]) {
        count++;
        first = i;
      }
    }
    if (count > 0) {
      result.push_back(format("the LUT of %s falls at %d entries, the first is %d", kChannels[c], count, first));
    }
  }
  return result;
}

// Runs the recipe. A clipped panel has rows above the lowest that gives full light: drives stay below them.
bool run_recipe(const RecipeJob &job, LutSet &luts, RecipeTask &task) {
  const vexo_lcnr &rows = task.measurements;
  task.full_row = job.below_clip ? clip_row(rows) : rows.num - 1;
  if (task.full_row < rows.num - 1) {
    task.remarks.push_back(
        format("no drive above level %g, which gives full light already", rows.sample[task.full_row]));
  }
  return job.recipe->run(luts, task);
}

Correction run(const Panel &panel, const RecipeJob &job) {
  RecipeTask task = {panel.lcnr, job.target, &job.evidence, 0, {}};
  LutSet luts(kLevels);
  say(std::string("runs the recipe ") + job.recipe->name);
  const bool done = run_recipe(job, luts, task);
  auto model = model_of(task.measurements, job.evidence);
  if (!done || !model) {
    throw Failure(kInputError, unusable_row(Panel{panel.path, task.measurements, panel.lines}));
  }
  const auto gain = [&](int c) { return double{luts.get()[c].d[kLevels - 1]}; };
  LutSet exact = resampled(luts, job.entries);
  limit(exact, &task.remarks);
  LutSet rounded = rounded_to_codes(exact, job.bits);
  std::vector<std::string> warnings = falls(rounded);
  return {std::move(*model),  {gain(0), gain(1), gain(2)}, std::move(exact),
          std::move(rounded), std::move(task.remarks),     std::move(warnings)};
}

// How white through the LUTs misses the target's; empty where it does not.
std::string missed_white_through(LutSet &luts, const PanelModel &model, const Target &target) {
  return missed_white(predict(model, luts.get(), included_black(target.curve, model), 2).back(), target.white);
}

// Whether the solve recipe shows the target white. Another recipe may miss it: its search in steps stops where one
// channel alone is clipped.
bool solve_shows_white(RecipeJob job, const PanelModel &model) {
  job.recipe = &recipe_named("solve");
  RecipeTask task = {model.measurements(), job.target, &job.evidence, 0, {}};
  LutSet luts(kLevels);
  return run_recipe(job, luts, task) && missed_white_through(luts, model, job.target).empty();
}

void check_white(const Panel &panel, const RecipeJob &job, Correction &correction) {
  const std::string &target = job.target.white.name;
  const std::string missed = missed_white_through(correction.luts, correction.model, job.target);
  if (missed.empty()) {
    return;
  }
  if (missed_white_through(correction.exact, correction.model, job.target).empty()) {
    throw Failure(kLimitMissed,
                  format("%s: codes of %d bits are too coarse for white %s, expected more --bits; no LUTs "
                         "were written",
                         input_name(panel.path).c_str(), job.bits, target.c_str()));
  }
  if (solve_shows_white(job, correction.model)) {
    throw Failure(kLimitMissed,
                  format("%s: the %s recipe did not find white %s, --recipe solve does; no LUTs were written",
                         input_name(panel.path).c_str(), job.recipe->name, target.c_str()));
  }
  throw Failure(kLimitMissed, input_name(panel.path) + ": " + missed + "; no LUTs were written");
}

// The library's recipes take a curve of their own form, and the white that comes of it.
void check_recipe(const RecipeJob &job) {
  const bool solves = job.recipe == &recipe_named("solve");
  const ToneCurve &curve = job.target.curve;
  if (!solves && !curve.library) {
    throw Failure(kUsageError, format("the %s recipe cannot follow the curve %s, give --recipe solve", job.recipe->name,
                                      curve.name.c_str()));
  }
  if (!solves && job.target.luminance) {
    throw Failure(kUsageError,
                  format("the %s recipe cannot aim at a luminance, give --recipe solve", job.recipe->name));
  }
}

} // namespace

std::vector<std::string> recipe_names() {
  std::vector<std::string> names;
  for (const Recipe &recipe : kRecipes) {
    names.emplace_back(recipe.name);
  }
  return names;
}

const Recipe &recipe_named(const std::string &name) {
  return *std::find_if(std::begin(kRecipes), std::end(kRecipes), [&](const Recipe &r) { return name == r.name; });
}

std::optional<PanelModel> model_of(const vexo_lcnr &measurements, const Evidence &evidence) {
  auto model = PanelModel::of(measurements);
  if (model) {
    learn(&*model, evidence);
  }
  return model;
}

Correction correct(const Panel &panel, const RecipeJob &job) {
  check_recipe(job);
  Correction correction = run(panel, job);
  check_white(panel, job, correction);
  return correction;
}

std::string obstacle(const Recipe &recipe, const Panel &panel) {
  const Evidence none;
  const Target any = {kD65, power_law(2.2F), std::nullopt};
  RecipeTask task = {panel.lcnr, any, &none, panel.lcnr.num - 1, {}};
  if (recipe.run == aligned) {
    vexo_lcnr_normalize(&task.measurements); // the recipe does it too, but with a message
  }
  LutSet luts(kLevels);
  return recipe.run(luts, task) ? "" : unusable_row(Panel{panel.path, task.measurements, panel.lines});
}
