// The recipes that turn measurements into LUTs, and what happens to a recipe's drives until a file can hold them.
#ifndef VEXO_TOOLS_RECIPE_H
#define VEXO_TOOLS_RECIPE_H

#include <optional>
#include <string>
#include <vector>

#include "calibration/panel-model.h"
#include "calibration/target.h"
#include "file/luts.h"
#include "file/panel.h"

// What a recipe works on.
struct RecipeTask {
  vexo_lcnr measurements; // a recipe may lower values that fall
  Target target;
  const Evidence *evidence;
  int full_row;                     // no drive is above the level of this row
  std::vector<std::string> remarks; // what the recipe says about its work
};

struct Recipe {
  const char *name;
  const char *meaning;
  bool (*run)(LutSet &luts, RecipeTask &task); // fills LUTs of 1024 entries; false: the measurements make no tables
};

std::vector<std::string> recipe_names();
const Recipe &recipe_named(const std::string &name); // one of those

struct RecipeJob {
  const Recipe *recipe;
  Target target;
  bool below_clip; // use no drive above the lowest that gives full light
  int entries;
  int bits;
  Evidence evidence;
};

// The result of a recipe.
struct Correction {
  PanelModel model; // of the measurements as the recipe left them
  double gains[3];  // drives of white
  LutSet exact;     // drives of 0..1
  LutSet luts;      // the same, rounded to codes
  std::vector<std::string> remarks;
  std::vector<std::string> warnings;
};

// The model of measurements that has learnt the evidence. None when the library makes no tables of the measurements.
std::optional<PanelModel> model_of(const vexo_lcnr &measurements, const Evidence &evidence);

// Runs the recipe. Throws a Failure: input where the measurements make no LUTs, limit where the LUTs do not show the
// target white.
Correction correct(const Panel &panel, const RecipeJob &job);

// Why a recipe makes no LUTs of the panel's rows, in words; empty when it does.
std::string obstacle(const Recipe &recipe, const Panel &panel);

#endif
