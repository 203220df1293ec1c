// What a panel shows at any three drives, predicted from measurements of each channel driven alone. Every prediction of
// the tool comes from here.
//
// The channels add. Each one is linear in X, Y and Z between the 1024 levels of the library's tables, and so between
// level 1 and black. All light is above black, in the probe's unit. Everything is double precision but the tables.
#ifndef VEXO_TOOLS_PANEL_MODEL_H
#define VEXO_TOOLS_PANEL_MODEL_H

#include <array>
#include <memory>
#include <optional>
#include <vector>

#include "calibration/triple.h"
#include "vexo.h"

class PanelModel {
public:
  static constexpr int kTopLevel = 1023; // full drive in the tables

  // None when the library makes no tables of the measurements.
  static std::optional<PanelModel> of(const vexo_lcnr &measurements);

  // The light of drives of 0..1. Outside, the line at that end goes on.
  Triple XYZ(const Triple &drives) const;

  // The change of XYZ with the drive of each channel. At a table level it is that of the line below the level.
  std::array<Triple, 3> slopes(const Triple &drives) const;

  const vexo_lcnr &measurements() const { return measurements_; }

private:
  explicit PanelModel(const vexo &context);

  vexo_lcnr measurements_;
  std::array<std::vector<Triple>, 3> channels_; // XYZ of each channel alone at each table level
};

// The light of the panel with all drives at 0: the mean of the three readings, as X, Y, Z.
Triple black_of(const vexo_lcnr &measurements);

// White with the black in it over black. Infinite where black reads no light.
double contrast(double white_above_black, double black);

// A context of the library whose tables describe the panel; null when the library makes none of the measurements.
std::unique_ptr<vexo> bare_context(const vexo_lcnr &measurements);

#endif
