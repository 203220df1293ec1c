#include "calibration/solve.h"

#include <algorithm>
#include <cmath>

#include "calibration/inverse.h"

namespace {

const int kTop = PanelModel::kTopLevel;
const int kToeEnd = 102;             // the toe may reach up to this entry, 10 % input
const double kSolvePrecision = 1e-9; // of a colour
const double kSlack = 1.0 + 1e-6;    // an overshoot of a bound that is rounding

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
Triple scaled_to_luminance(const PanelInputs &panel, const Triple &s, const Held &held, double Y) {
  const auto scaled = [&](double factor) -> Triple { return held.select(s, s * factor); };
  double low = 0.0;
  double high = 2.0;
  for (int i = 0; i < 60; i++) {
    const double middle = (low + high) / 2.0;
    (panel.shown(panel.inputs(scaled(middle)))[1] < Y ? low : high) = middle;
  }
  return scaled(high);
}

// Lights within bounds, at the luminance Y if they can give it. A light out of bounds is held there, the others change
// in proportion.
Triple keep_luminance(const PanelInputs &panel, Triple s, const Bounds &bounds, double Y) {
  Held held = Held::Constant(false);
  for (int pass = 0; pass < 3; pass++) {
    held = held || !(s.array() > bounds.lowest.array() && s.array() < bounds.highest.array());
    s = scaled_to_luminance(panel, limited(s, bounds), held, Y);
  }
  return limited(s, bounds);
}

double input_of(int entry) { return static_cast<double>(entry) / kTop; }

// The levels of three LUTs, solved one by one from the top down.
class Levels {
public:
  Levels(vexo_lut *lut, const PanelModel &model, const Target &target, double most)
      : lut_(lut), lowest_(model.lowest_level()), panel_(model, nullptr, most), inverse_(panel_, kSolvePrecision),
        target_(target, white_luminance(panel_, target), included_black(target.curve, model)), bounds_{
                                                                                                   panel_.lights_at(1),
                                                                                                   Triple::Ones()} {}

  // Whether the target of an entry is black.
  bool is_black(int entry) const { return !(target_.above_black(input_of(entry))[1] > 0.0); }

  // Fills an entry whose target is not black. Returns whether a channel is below the lowest measured level.
  bool fill(int entry) {
    const Triple wanted = target_.above_black(input_of(entry));
    Triple s = inverse_.lights(wanted);
    held_ = !within(s, bounds_);
    if (held_) {
      s = keep_luminance(panel_, s, bounds_, wanted[1]);
    }
    bounds_.highest = s.cwiseMin(bounds_.highest);
    const Triple drives = panel_.inputs(bounds_.highest);
    for (int c = 0; c < 3; c++) {
      lut_[c].d[entry] = static_cast<float>(drives[c]);
    }
    return drives.minCoeff() <= lowest_;
  }

  // Whether the last entry keeps only its luminance.
  bool held() const { return held_; }

private:
  vexo_lut *lut_;
  double lowest_; // level above black at which anything was measured
  PanelInputs panel_;
  Inverse inverse_;
  TargetRamp target_;
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
