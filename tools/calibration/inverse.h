// The inputs for which a panel shows a colour: the inverse of the panel model, with 1D LUTs in between or without.
//
// The unknowns are the lights of the three channels, X + Y + Z of each as a part of its light at the highest input. In
// these lights, what the panel shows is nearly linear. Broyden's method solves it: Newton's, with slopes that each step
// corrects. Where a step does not halve the error, it begins anew from the slopes of channels that add, then from
// measured slopes, coarse and fine.
#ifndef VEXO_TOOLS_INVERSE_H
#define VEXO_TOOLS_INVERSE_H

#include <array>
#include <vector>

#include "calibration/panel-model.h"
#include "calibration/target.h"
#include "vexo-gamma.h"

// A panel that is driven by inputs of 0..1.
class PanelInputs {
public:
  // luts: three, between the inputs and the drives; null for none. No input is above the highest.
  PanelInputs(const PanelModel &model, const vexo_lut *luts, double highest = 1.0);

  const PanelModel &model() const { return model_; }

  // The lowest inputs at which the channels give these lights, within 0..1.
  Triple inputs(const Triple &lights) const;

  // What the panel shows above black. Outside of 0..1 a channel goes on in its full colour.
  Triple XYZ(const Triple &lights) const;
  Triple shown(const Triple &inputs) const;

  // The light of each channel at one of the entries of the LUTs, or of 1024 without LUTs.
  Triple lights_at(size_t entry) const { return {light_[0][entry], light_[1][entry], light_[2][entry]}; }

  // XYZ of each channel alone at its highest input, a column each.
  const Eigen::Matrix3d &full() const { return full_; }

private:
  double input(size_t channel, double light) const;

  const PanelModel &model_;
  const vexo_lut *luts_;
  double last_;                              // entry of input 1
  std::array<std::vector<double>, 3> light_; // at inputs spread evenly; it rises even where LUTs or measurements fall
  Eigen::Matrix3d full_;
};

// Solves one colour after the other. Each starts from the one before.
class Inverse {
public:
  // precision: the error that may stay, as a part of the colour.
  Inverse(const PanelInputs &panel, double precision);

  // The lights that show a colour. If it is out of the panel's gamut, some are below 0 or above 1.
  Triple lights(const Triple &XYZ);

private:
  void measure_slopes(double difference);
  bool take(const Triple &step, double part, const Triple &XYZ, Triple *miss);

  const PanelInputs &panel_;
  double precision_;
  Triple lights_;
  Eigen::Matrix3d slopes_;
};

// The luminance of white: that of the target, or the brightest target white that the panel can show; with the black
// that figures include. Throws a Failure (limit) where the panel cannot show the luminance of the target.
double white_luminance(const PanelInputs &panel, const Target &target);

#endif
