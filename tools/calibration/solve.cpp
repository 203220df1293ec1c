#include "calibration/solve.h"

#include <algorithm>
#include <cmath>

#include "calibration/balance.h"

namespace {

const int kTop = PanelModel::kTopLevel;
const int kMostSteps = 100;
const int kNearBlack = 102;       // the toe may reach up to this entry, 10 % input
const double kSolved = 1e-10;     // error of a demand
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
  double luminance;
};

// The brightest that the panel shows the white, given as XYZ of luminance 1. Lights grow nearly in proportion to the
// luminance, so a few divisions by the largest demand find where it is just met.
Peak solve_peak(const PanelByLight &panel, const Triple &white) {
  Peak peak = {panel.full(), panel.model().XYZ(panel.drives(panel.full()))[1]};
  for (int i = 0; i < kMostSteps; i++) {
    peak.lights = balance(panel, peak.lights, white * peak.luminance);
    const double demand = peak.lights.cwiseQuotient(panel.full()).maxCoeff();
    if (std::fabs(demand - 1.0) < kSolved) {
      break;
    }
    peak.luminance /= demand;
    peak.lights /= demand;
  }
  return peak;
}

// The part of white's light that an input should give.
double share(const Target &target, double input) {
  const double light = target_light(target, input);
  return light > 0.0 ? std::min(light, 1.0) : 0.0;
}

// The levels of three LUTs, solved one by one from the top down.
class Levels {
public:
  Levels(vexo_lut *lut, const PanelModel &model, const Target &target, double most)
      : lut_(lut), panel_(model, most), white_(white_XYZ(target.white, 1.0)),
        peak_(solve_peak(panel_, white_)), bounds_{panel_.first(), panel_.full()} {}

  // Fills the entry for a part of white's light. Returns whether a channel is below the lowest measured level.
  bool fill(int entry, double part) {
    const double Y = peak_.luminance * part;
    Triple s = part > 0.0 ? balance(panel_, peak_.lights * part, white_ * Y) : Triple::Zero();
    held_ = !within(s, bounds_);
    if (held_) {
      s = keep_luminance(panel_, s, bounds_, Y);
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
  Triple white_; // X, Y, Z at luminance 1
  Peak peak_;
  Bounds bounds_; // falling with the entries
  bool held_ = false;
};

} // namespace

Solved solve(vexo_lut *lut, const PanelModel &model, const Target &target, double most) {
  Levels levels(lut, model, target, most);
  Solved result = {0, 0, 0.0, 0.0};
  for (int i = kTop; i >= result.toe; i--) {
    const double input = static_cast<double>(i) / kTop;
    const bool dark = levels.fill(i, share(target, input));
    if (levels.held()) {
      result.held_to = result.held == 0 ? input : result.held_to;
      result.held_from = input;
      result.held++;
    }
    result.toe = dark && i <= kNearBlack ? i : 0;
  }
  for (int c = 0; c < 3; c++) {
    for (int i = 0; i < result.toe; i++) {
      lut[c].d[i] = lut[c].d[result.toe] * static_cast<float>(i) / static_cast<float>(result.toe);
    }
  }
  return result;
}
