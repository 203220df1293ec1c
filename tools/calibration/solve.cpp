#include "calibration/solve.h"

#include <algorithm>
#include <cmath>

#include "calibration/balance.h"
#include "text/failure.h"
#include "text/format.h"

namespace {

const int kTop = PanelModel::kTopLevel;
const int kDemandSteps = 100;
const int kToeEnd = 102;          // the toe may reach up to this entry, 10 % input
const double kMet = 1e-10;        // error of a demand
const double kSlack = 1.0 + 1e-6; // an overshoot of a bound that is rounding

// The least and the most light that each channel may give.
struct Bounds {
  Triple lowest;
  Triple highest;
};

Triple limited(const Triple &s, const Bounds &bounds) { return s.cwiseMin(bounds.highest).cwiseMax(bounds.lowest); }

bool within(const Triple &s, const Bounds &bounds) {
  return (s.array() >= bounds.lowest.array()).all() && (s.array() <= bounds.highest.array() * kSlack).all();
}

using Held = Eigen::Array<bool, 3, 1>;

// The lights with those that are not held multiplied by the factor at which the luminance is Y, by bisection.
Triple scaled_to_luminance(const PanelByLight &panel, const Triple &s, const Held &held, double Y) {
  const auto scaled = [&](double factor) -> Triple { return held.select(s, s * factor); };
  double low = 0.0;
  double high = 2.0;
  for (int i = 0; i < 60; i++) {
    const double middle = (low + high) / 2.0;
    (panel.model().XYZ(panel.drives(scaled(middle)))[1] < Y ? low : high) = middle;
  }
  return scaled(high);
}

// Lights within bounds, at the luminance Y if they can give it. A light out of bounds is held there, the others change
// in proportion.
Triple keep_luminance(const PanelByLight &panel, Triple s, const Bounds &bounds, double Y) {
  Held held = Held::Constant(false);
  for (int pass = 0; pass < 3; pass++) {
    held = held || !(s.array() > bounds.lowest.array() && s.array() < bounds.highest.array());
    s = scaled_to_luminance(panel, limited(s, bounds), held, Y);
  }
  return limited(s, bounds);
}

struct Peak {
  Triple lights;
  double luminance; // with the black that figures include
};

// White at a luminance, in lights near those given.
Triple solve_white(const PanelByLight &panel, const Triple &lights, const Target &target, double luminance) {
  const Triple black = included_black(target.curve, panel.model());
  return balance(panel, lights, TargetRamp(target, luminance, black).above_black(1.0));
}

// The brightest that the panel shows the target white. Lights grow nearly in proportion to the luminance, so a few
// divisions by the largest demand find where it is just met.
Peak solve_peak(const PanelByLight &panel, const Target &target) {
  Peak peak = {panel.full(), panel.model().XYZ(panel.drives(panel.full()))[1]};
  for (int i = 0; i < kDemandSteps; i++) {
    peak.lights = solve_white(panel, peak.lights, target, peak.luminance);
    const double demand = peak.lights.cwiseQuotient(panel.full()).maxCoeff();
    if (std::fabs(demand - 1.0) < kMet) {
      break;
    }
    peak.luminance /= demand;
    peak.lights /= demand;
  }
  return peak;
}

// As bright as the target says.
Peak solve_wished_peak(const PanelByLight &panel, const Target &target) {
  const Peak most = solve_peak(panel, target);
  if (!target.luminance) {
    return most;
  }
  const double black = black_of(panel.model().measurements())[1];
  const double not_included = black - included_black(target.curve, panel.model())[1];
  const double wished = *target.luminance - not_included;
  if (!(*target.luminance > black && wished <= most.luminance)) {
    throw Failure(kLimitMissed,
                  format("the panel cannot show white %s at %g cd/m2, expected a luminance above %.4g (its "
                         "black) and up to %.2f; no LUTs were written",
                         target.white.name.c_str(), *target.luminance, black,
                         std::floor((most.luminance + not_included) * 100.0) / 100.0));
  }
  return {solve_white(panel, most.lights * (wished / most.luminance), target, wished), wished};
}

double input_of(int entry) { return static_cast<double>(entry) / kTop; }

// The levels of three LUTs, solved one by one from the top down.
class Levels {
public:
  Levels(vexo_lut *lut, const PanelModel &model, const Target &target, double most)
      : lut_(lut), panel_(model, most), peak_(solve_wished_peak(panel_, target)),
        target_(target, peak_.luminance, included_black(target.curve, model)),
        white_(target_.above_black(1.0)), bounds_{panel_.first(), panel_.full()} {}

  // Whether the target of an entry is black.
  bool is_black(int entry) const { return !(target_.above_black(input_of(entry))[1] > 0.0); }

  // Fills an entry whose target is not black. Returns whether a channel is below the lowest measured level.
  bool fill(int entry) {
    const Triple wanted = target_.above_black(input_of(entry));
    Triple s = balance(panel_, peak_.lights * (wanted[1] / white_[1]), wanted);
    held_ = !within(s, bounds_);
    if (held_) {
      s = keep_luminance(panel_, s, bounds_, wanted[1]);
    }
    bounds_.highest = s.cwiseMin(bounds_.highest);
    const Triple drives = panel_.drives(bounds_.highest);
    for (int c = 0; c < 3; c++) {
      lut_[c].d[entry] = static_cast<float>(drives[c]);
    }
    return drives.minCoeff() <= panel_.model().lowest_level();
  }

  // Whether the last entry keeps only its luminance.
  bool held() const { return held_; }

private:
  vexo_lut *lut_;
  PanelByLight panel_;
  Peak peak_;
  TargetRamp target_;
  Triple white_;  // X, Y, Z above black
  Bounds bounds_; // falling with the entries
  bool held_ = false;
};

// Straight lines from 0 at the entry of black up to the entry of the toe.
void draw_toe(vexo_lut *lut, int black, int toe) {
  for (int c = 0; c < 3; c++) {
    const float top = lut[c].d[toe];
    for (int i = 0; i < toe; i++) {
      lut[c].d[i] = top * static_cast<float>(std::max(i - black, 0)) / static_cast<float>(toe - black);
    }
  }
}

} // namespace

Solved solve(vexo_lut *lut, const PanelModel &model, const Target &target, double most) {
  Levels levels(lut, model, target, most);
  Solved result = {0, 0, 0.0, 0.0};
  int i = kTop;
  for (bool toe = false; !toe && !levels.is_black(i); i--) {
    const bool dark = levels.fill(i);
    if (levels.held()) {
      result.held_to = result.held == 0 ? input_of(i) : result.held_to;
      result.held_from = input_of(i);
      result.held++;
    }
    toe = dark && i <= kToeEnd;
  }
  result.toe = i + 1;
  while (!levels.is_black(i)) {
    i--;
  }
  draw_toe(lut, i, result.toe);
  return result;
}
