// A 3D LUT that makes a panel show the colours that a signal stands for.
//
// The signal is RGB of a colour space. Its curve leads from a signal to light. White is the target white at the panel's
// peak; the colours of the space are adapted to it (Bradford). Each node of the LUT holds the inputs of the panel that
// show the node's colour. The 3D LUT belongs in front of the 1D LUTs, if there are any: these keep the grays, so the
// nodes of gray signals hold the signal itself.
//
// A colour out of the panel's gamut is moved towards the gray of the same lightness, at most of L* 85, at constant hue,
// both of CIE L*a*b*, until the panel can show it.
#ifndef VEXO_TOOLS_CUBE_H
#define VEXO_TOOLS_CUBE_H

#include <functional>

#include "calibration/inverse.h"
#include "calibration/target.h"
#include "colour/spaces.h"
#include "file/lut3d.h"

// The colours that a signal of 0..1 stands for.
class SignalColours {
public:
  // The luminance of white and the black are those that figures include. Throws a Failure (input) where the space
  // cannot be adapted to the target white.
  SignalColours(const Space &space, const Target &target, double white_luminance, const Triple &black);

  Triple white() const { return ramp_.XYZ(1.0); } // with black
  Triple XYZ(const Triple &signal) const;         // above black

  // The signal of a colour whose white has a luminance of 1, each component limited to 0..1.
  Triple signal(const Triple &XYZ) const;

private:
  TargetRamp ramp_;
  Triple black_;           // of a panel whose black has the colour of white
  Eigen::Matrix3d to_XYZ_; // from the lights of red, green and blue, white's being 1
};

// The nodes whose colours are out of the panel's gamut.
struct OutOfGamut {
  long nodes = 0;
  double mean = 0.0; // CIEDE2000 between what was asked for and what is shown instead
  double worst = 0.0;
  Triple worst_signal = Triple::Zero();
};

struct Cube {
  Lut3d lut;
  OutOfGamut clipped;
};

// keeps_grays: whether the inputs of gray signals are the signals themselves. progress is told the part that is done.
Cube make_cube(const PanelInputs &panel, const SignalColours &colours, int size, bool keeps_grays,
               const std::function<void(double)> &progress);

// Whether the panel can show a colour above black, apart from rounding.
bool in_gamut(const PanelInputs &panel, const Triple &XYZ);

// The colour space of a panel whose grays have a white. Throws a Failure (input) where its primaries span no triangle.
Space panel_space(const PanelModel &model, const White &white);

// The matrix from signals of one space to those of another, whose white may differ (Bradford). It is exact for light;
// applied to signals, it is what hardware with only a matrix can do.
Eigen::Matrix3d signal_matrix(Space from, Space to);

// What the LUT makes of a signal, by trilinear interpolation.
Triple through(vexo_3dlut *lut, const Triple &signal);

#endif
