// What a panel's gray ramp should be: a white and a tone curve.
#ifndef VEXO_TOOLS_TARGET_H
#define VEXO_TOOLS_TARGET_H

#include <optional>
#include <string>

#include "calibration/curve.h"
#include "calibration/panel-model.h"
#include "vexo-matrix.h"

struct White {
  std::string name; // as the user gave it
  vexo_vector xyz;  // x, y, z = 1 - x - y; the panel's own where all are 0

  bool is_native() const { return xyz.d[1] == 0.0F; }
};

struct Target {
  White white;
  ToneCurve curve;
  std::optional<double> luminance; // of white, cd/m2, black included; none: the most that the panel has
};

// X, Y, Z of the white at a luminance.
Triple white_XYZ(const White &white, double luminance);

inline const White kD65 = {"D65", {{0.3127F, 0.3290F, 1.0F - 0.3127F - 0.3290F}}};

// D50 D55 D65 D75 D93 DCI E, native, a temperature such as 6500K (daylight) or 6500P (Planck), or "x,y". Throws a
// Failure (usage) that names the option.
White parse_white(const std::string &option, const std::string &text);
std::string white_names();

// The target with the panel's own white where it asks for that.
Target on_panel(Target target, const PanelModel &model);

// What the figures of a ramp add to the light above black: black, or nothing where the curve is about light above
// black. Components of black that read below 0 are noise and count as 0.
Triple included_black(const ToneCurve &curve, const Triple &black);
Triple included_black(const ToneCurve &curve, const PanelModel &model);

// The gray ramp that a target asks for, once the luminance of its white and the black are known.
class TargetRamp {
public:
  // Both with what included_black() returns.
  TargetRamp(const Target &target, double white_luminance, const Triple &black);

  // What a viewer should see: the target white on the curve; black itself at input 0.
  Triple XYZ(double input) const;

  // The light above black that leads there. It compensates for the colour of black. X, Y and Z keep at least three
  // tenths of those without this compensation, because no drives show a light without one of them.
  Triple above_black(double input) const;

  // A light with this compensation: with black in it, its colour is right.
  Triple without_black(const Triple &light) const;

  // The light above black of an input, as a part of that of white.
  double part(double input) const;

private:
  double luminance(double input) const;

  Target target_;
  LightRange range_;
  Triple white_; // at luminance 1
  Triple black_;
};

// The gamma of the BT.1886 form that leads to a luminance at an input between 0 and 1. Without black it is the exponent
// of a power law. NaN where there is none.
double effective_gamma(double input, double luminance, const LightRange &range);

#endif
