// The figures of a gray ramp against its target, all from the library's operations: the summary, the charts and the
// tables of a report read nothing else.
#ifndef VEXO_TOOLS_FIGURES_H
#define VEXO_TOOLS_FIGURES_H

#include <vector>

#include "calibration/gray-ramp.h"
#include "vexo-cs.h"

// One gray, above black. A figure that the colour does not have is NaN.
struct GrayFigure {
  double input; // 0..1
  vexo_vector XYZ;
  vexo_vector xyY;
  vexo_vector uvY;
  int cct;              // -1: none
  double gamma;         // effective: ln(Y / white) / ln(input)
  double balance[3];    // red, green, blue in percent of the target white's at the same luminance
  double de2000;        // CIEDE2000 to the target
  double de2000_chroma; // the same with the luminance set to the target's
  double duv;           // distance to the target white in u'v'
};

// What a ramp should be at each input: the target white on the target curve up to a peak.
class GrayTarget {
public:
  // The panel's primaries give the balance; peak is the luminance of the target's white.
  GrayTarget(const Target &target, const vexo_cs &primaries, float peak);

  vexo_vector XYZ(double input) const;
  float light(double input) const; // relative, 0..1
  int cct() const;
  float peak() const { return white_.d[1]; }

  // Figures of a gray given as xyY; white is the luminance of the ramp's own white.
  GrayFigure figure(double input, const vexo_vector &xyY, float white) const;

private:
  Target target_;
  vexo_vector white_; // XYZ at the peak
  vexo_matrix balance_;
};

struct Summary {
  double de2000_mean = 0.0;
  double de2000_worst = 0.0;
  double de2000_worst_tenth = 0.0; // mean over the worst tenth of the steps
  double chroma_mean = 0.0;        // CIEDE2000 without luminance
  double chroma_worst = 0.0;
  double duv_worst = 0.0;
  double gamma_mean = 0.0;
  double gamma_spread = 0.0; // largest less smallest
  double white_x = 0.0;
  double white_y = 0.0;
  double white_Y = 0.0;
  int white_cct = -1;
};

// Over the steps from an input up; the last step is white.
Summary summarise(const std::vector<GrayFigure> &ramp, double from);

#endif
