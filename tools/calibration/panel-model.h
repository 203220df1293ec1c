// What a panel shows at any three drives, predicted from measurements. Every prediction of the tool comes from here.
//
// The channels add: S(d) is the sum of the three channels, each driven alone, linear in X, Y and Z between the 1024
// levels of the library's tables. Real panels do not add. Measured grays tell by how much: at the gray level
// t = cbrt(r g b) the panel shows D(t) more than S(t, t, t). The model adds, component by component,
//
//   XYZ(d) = S(d) + D(t) sqrt(S(d) / S(t, t, t)).
//
// It shows a measured gray exactly. Near gray the residual grows with the root of the light, halfway between a residual
// that stays and one in proportion to the light. Where a channel is dark it vanishes. D is linear between measured
// levels and 0 at 0.
//
// All light is above black, in the probe's unit. Everything is double precision but the tables.
#ifndef VEXO_TOOLS_PANEL_MODEL_H
#define VEXO_TOOLS_PANEL_MODEL_H

#include <array>
#include <memory>
#include <optional>
#include <vector>

#include "calibration/triple.h"
#include "vexo.h"

// A light that was measured at three drives of 0..1.
struct MeasuredLight {
  Triple drives;
  Triple XYZ; // above black
};

// The gray level of three drives: their geometric mean.
double gray_level(const Triple &drives);

class PanelModel {
public:
  static constexpr int kTopLevel = 1023; // full drive in the tables

  // The additive model. None when the library makes no tables of the measurements.
  static std::optional<PanelModel> of(const vexo_lcnr &measurements);

  // Makes the model show lights that were measured at drives near gray. Their gray levels rise from above 0. What the
  // model has learnt from other grays stays, and these correct it.
  void learn_grays(const std::vector<MeasuredLight> &lights);

  // The light of drives of 0..1. Outside, the lines at that end go on.
  Triple XYZ(const Triple &drives) const;

  // S, the sum of the channels.
  Triple additive(const Triple &drives) const;

  // The change of S with the drive of each channel, a column each. At a table level it is that of the line below.
  Eigen::Matrix3d additive_slopes(const Triple &drives) const;

  // The S that shows XYZ at a gray level: the inverse of the formula above.
  Triple additive_part(const Triple &XYZ, double gray_level) const;

  bool knows_grays() const { return !residuals_.empty(); }

  // The lowest gray level above black at which anything was measured.
  double lowest_level() const { return lowest_level_; }

  const vexo_lcnr &measurements() const { return measurements_; }

private:
  // One D: levels that begin with 0, and the residual of each.
  struct Residual {
    std::vector<double> levels;
    std::vector<Triple> values;
  };

  explicit PanelModel(const vexo &context);
  Triple residual(double gray_level) const;
  Triple relative_residual(double gray_level) const;

  vexo_lcnr measurements_;
  double lowest_level_;
  std::array<std::vector<Triple>, 3> channels_; // XYZ of each channel alone at each table level
  std::vector<Residual> residuals_;             // their sum is D
};

// The light of the panel with all drives at 0: the mean of the three readings, as X, Y, Z.
Triple black_of(const vexo_lcnr &measurements);

// White with the black in it over black. Infinite where black reads no light.
double contrast(double white_above_black, double black);

// A context of the library whose tables describe the panel; null when the library makes none of the measurements.
std::unique_ptr<vexo> bare_context(const vexo_lcnr &measurements);

#endif
