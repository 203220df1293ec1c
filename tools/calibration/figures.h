// The figures of a gray ramp. Console, reports and limits print these and compute none of their own.
//
// A ramp has one gray for each percent of input, and a summary of the grays that are judged. Where the target's curve
// refers to black, colours are those that a viewer sees, with black in them; else they are those above black. They are
// in the library's single precision; the panel model predicts them in double.
#ifndef VEXO_TOOLS_FIGURES_H
#define VEXO_TOOLS_FIGURES_H

#include <string>
#include <vector>

#include "calibration/panel-model.h"
#include "calibration/target.h"
#include "file/luts.h"
#include "vexo-cs.h"

// Grays are judged from this input up. Below it, much of what a probe reads is noise.
const double kJudgedFrom = 0.1;

bool is_judged(double input);
std::string judged_from(); // "10 %"

// One gray. A figure that it does not have is NaN.
struct GrayFigure {
  double input;    // 0..1
  vexo_vector XYZ; // all 0 where it shows no light
  vexo_vector xyY;
  vexo_vector uvY;
  int cct;      // kelvin; -1: none
  double light; // as a part of the ramp's own white
  double gamma; // effective_gamma()
  // Against a target, after GrayTarget has judged the gray:
  double balance[3];    // red, green, blue in percent of the target white's at the same luminance
  double target;        // luminance, cd/m2
  double curve;         // distance of light to the target curve, as a part of the target's light
  double light_error;   // luminance / target's - 1; the target has the luminance of white that it names, if any
  double duv;           // distance to the target white in u'v'
  double uv_star;       // distance to the ramp's own white in u*v*
  double de2000;        // CIEDE2000
  double de2000_chroma; // CIEDE2000 with the luminance set to the target's
};

// The figures of a light, in a ramp of that range.
GrayFigure gray_figure(double input, const Triple &XYZ, const LightRange &range);

// The drives of inputs: through LUTs or, where luts is null, the inputs themselves.
Triple drives_at(const vexo_lut *luts, const Triple &inputs);

// The drives of an input of all channels: through LUTs or, where luts is null, the input itself.
Triple drives_at(const vexo_lut *luts, double input);

// The grays of a panel at `count` inputs from 0 to 1, through LUTs or, where luts is null, without. black is what the
// figures include.
std::vector<GrayFigure> predict(const PanelModel &model, const vexo_lut *luts, const Triple &black, int count);

// The same at each percent of input.
std::vector<GrayFigure> predict(const PanelModel &model, const vexo_lut *luts, const Triple &black);

// Of errors that are numbers; NaN where none is.
struct Spread {
  double mean;
  double worst;
};

Spread spread_of(std::vector<double> errors);

// Over the grays that are judged and have the figure.
struct Summary {
  Spread de2000;
  double de2000_worst_tenth; // mean over the worst tenth of the grays
  Spread near_black;         // CIEDE2000 of the grays that are not judged
  Spread chroma;             // CIEDE2000 without luminance
  Spread duv;
  Spread curve;
  double light_error_dark;   // worst where the target has 0.1 to 1 cd/m2
  double light_error_bright; // worst where it has more
  double uv_star_worst;      // where the target has 1 to 100 cd/m2, whether judged or not
  double gamma_mean;         // of the judged grays up to 90 % input
  double gamma_min;
  double gamma_max;
  int falls;         // how many grays have less light than the one before
  vexo_vector white; // xyY
  int white_cct;     // -1: none
  double white_de2000;
  double white_uv_star; // distance to the target white in u*v*
};

struct Ramp {
  std::vector<GrayFigure> grays; // the last is white
  Summary summary;
  LightRange seen; // white and black
};

// The target that ramps are judged against: at each input the target white on the target curve, up to a peak. The
// target white at the peak is also the reference white of CIEDE2000.
//
// The peak of a ramp through LUTs, predicted or measured, is the luminance of its own white: luminance that LUTs give
// up for the white is no error. The ramp without LUTs is judged at the same peak, so that the figures can be compared.
class GrayTarget {
public:
  // The primaries are those of the panel: they give the balance. black is what the figures include.
  GrayTarget(const Target &target, const vexo_cs &primaries, double peak, const Triple &black);

  Ramp judge(std::vector<GrayFigure> grays) const;

  // What the ramp should be, at each percent of input.
  Ramp ideal() const;

private:
  void judge(GrayFigure *gray) const;

  vexo_vector xyz_; // of the target white
  double wished_;   // the luminance of white that light_error is about
  TargetRamp ramp_;
  Triple white_; // XYZ at the peak
  LightRange range_;
  vexo_matrix to_balance_;
};

// CIEDE2000 of the ramp that the model predicts through LUTs, against the target at its own peak.
Spread predicted_error(const PanelModel &model, LutSet &luts, const Target &target);

// How a panel misses the target white, in words; empty where the two cannot be told apart side by side.
std::string missed_white(const GrayFigure &shown, const White &target);

// Whether a mean CIEDE2000 is above another by more than rounding.
bool is_worse(const Spread &with, const Spread &without);

// The primaries and the white of the panel at full drive. Throws a Failure (input) where they span no triangle.
vexo_cs primaries_of(const PanelModel &model);

// CIEDE2000 of two lights; white is the reference of L*a*b*.
double de2000(vexo_vector XYZ, vexo_vector target, vexo_vector white);

// The distance of two colours, given as xyY, in u'v'; NaN where one has no chromaticity.
double uv_distance(vexo_vector a, vexo_vector b);

#endif
