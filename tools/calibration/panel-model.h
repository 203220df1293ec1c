// What a panel shows at any three drives, predicted from measurements. Every prediction of the tool comes from here.
//
// The channels add: S(d) is the sum of the three channels, each driven alone, linear in X, Y and Z between the 1024
// levels of the library's tables, which are lines between rows. Where grays were measured between two rows, the
// channels follow the mean of the line and the shape of the grays. Real panels do not add. Measured grays tell by how
// much: at the gray level t, the mean of r, g and b, the panel shows D(t) more than S(t, t, t). The model adds,
// component by component,
//
//   XYZ(d) = S(d) + D(t) sqrt(S(d) / S(t, t, t)) g,   g = r g b / t^3.
//
// It shows a measured gray exactly. Near gray the residual grows with the root of the light, halfway between a residual
// that stays and one in proportion to the light. Away from gray g falls below 1, and where a channel is dark the
// residual vanishes. D is linear between measured levels and 0 at 0.
//
// Measured mixtures of the channels tell the rest. With the white W, the sum of the full channels, the model adds
//
//   r W cbrt(S(d)_Y / W_Y)
//
// where r is interpolated between the mixtures (mixtures.h). The cube root gives r the same size for dark and bright.
//
// All light is above black, in the probe's unit. Everything is double precision but the tables.
#ifndef VEXO_TOOLS_PANEL_MODEL_H
#define VEXO_TOOLS_PANEL_MODEL_H

#include <array>
#include <memory>
#include <optional>
#include <vector>

#include "calibration/mixtures.h"
#include "colour/triple.h"
#include "vexo.h"

// A light that was measured at three drives of 0..1.
struct MeasuredLight {
  Triple drives;
  Triple XYZ; // above black
};

// What was measured of a panel beside its channels.
struct Evidence {
  std::vector<MeasuredLight> ramp;               // the bare grays as they were read
  std::vector<std::vector<MeasuredLight>> grays; // in the order in which the model learns them
  std::shared_ptr<const Mixtures> mixtures;      // null for none
};

// The gray level of three drives: their mean.
double gray_level(const Triple &drives);

// g: 1 at gray, nearly 1 close to it, 0 where a channel is dark.
double grayness(const Triple &drives);

class PanelModel {
public:
  static constexpr int kTopLevel = 1023; // full drive in the tables

  // The additive model. None when the library makes no tables of the measurements.
  static std::optional<PanelModel> of(const vexo_lcnr &measurements);

  // Where a gray ramp of the bare panel has several readings between two rows, the channels follow the mean of a line
  // and the shape of the ramp: red its X, green its Y, blue its Z. Elsewhere they follow the line.
  void shape_channels(const std::vector<MeasuredLight> &ramp);

  // Makes the model show lights that were measured at drives near gray. Their gray levels rise from above 0. What the
  // model has learnt from other grays stays, and these correct it.
  void learn_grays(const std::vector<MeasuredLight> &lights);

  // What the mixtures tell beyond this model of channels and grays.
  std::shared_ptr<const Mixtures> solve_mixtures(const std::vector<MeasuredLight> &lights) const;

  // Makes the model show them. They correct the model that they were solved for. Grays that it learns afterwards are
  // added to that.
  void learn_mixtures(std::shared_ptr<const Mixtures> mixtures) { mixtures_ = std::move(mixtures); }

  // The light of drives of 0..1. Outside, the lines at that end go on.
  Triple XYZ(const Triple &drives) const;

  // S, the sum of the channels.
  Triple additive(const Triple &drives) const;

  // The light without what mixtures add.
  Triple unmixed(const Triple &drives) const;

  // The light that a residual r of 1 stands for.
  Triple mixture_scale(const Triple &drives) const;

  bool knows_grays() const { return !residuals_.empty(); }
  const Mixtures *mixtures() const { return mixtures_.get(); } // null for none

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
  double level_of(int row) const;
  Eigen::Matrix3d alone(const Triple &drives) const;
  Triple place(const Eigen::Matrix3d &lights) const;
  Triple scale_of(const Triple &sum) const;
  Triple with_grays(const Triple &sum, const Triple &drives) const;
  Triple residual(double gray_level) const;
  Triple relative_residual(double gray_level) const;

  vexo_lcnr measurements_;
  double lowest_level_;
  std::array<std::vector<Triple>, 3> channels_; // XYZ of each channel alone at each table level
  Triple full_;                                 // X + Y + Z of each at full drive
  Triple white_ = Triple::Zero();               // sum of the channels at full drive
  std::vector<Residual> residuals_;             // their sum is D
  std::shared_ptr<const Mixtures> mixtures_;    // null where none were measured
};

// The light of the panel with all drives at 0: the mean of the three readings, as X, Y, Z.
Triple black_of(const vexo_lcnr &measurements);

// White with the black in it over black. Infinite where black reads no light.
double contrast(double white_above_black, double black);

// A context of the library whose tables describe the panel; null when the library makes none of the measurements.
std::unique_ptr<vexo> bare_context(const vexo_lcnr &measurements);

#endif
