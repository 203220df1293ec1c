#include "calibration/solve.h"

#include <algorithm>
#include <cmath>

namespace {

const int kTop = PanelModel::kTopLevel;
const int kMostSteps = 100;
const double kShortestStep = 1e-3; // of a Newton step that gets no nearer
const int kNearBlack = 102;        // the toe may reach up to this entry, 10 % input
const double kSolved = 1e-10;      // error of X, Y, Z as a fraction of the target
const double kSlack = 1.0 + 1e-6;  // an overshoot of a bound that is rounding

using Columns = std::array<Triple, 3>; // one for each channel

double sum(const Triple &a) { return a[0] + a[1] + a[2]; }

Triple times(const Triple &a, double factor) { return {a[0] * factor, a[1] * factor, a[2] * factor}; }

double determinant(const Triple &a, const Triple &b, const Triple &c) {
  return a[0] * (b[1] * c[2] - b[2] * c[1]) - b[0] * (a[1] * c[2] - a[2] * c[1]) + c[0] * (a[1] * b[2] - a[2] * b[1]);
}

// A drive, and how it changes with the light that is asked for.
struct Drive {
  double drive;
  double slope;
};

// The drive of one channel by its light.
class ChannelDrives {
public:
  ChannelDrives(const PanelModel &model, size_t c) {
    for (int level = 0; level <= kTop; level++) {
      Triple drives = {};
      drives[c] = static_cast<double>(level) / kTop;
      const double light = sum(model.XYZ(drives));
      light_.push_back(light_.empty() ? 0.0 : std::max(light_.back(), light)); // rises even where measurements fall
    }
  }

  double first() const { return light_[1]; } // of the first level above black
  double full() const { return light_.back(); }

  // The lowest drive that gives the light; that of full light where there is less.
  Drive of(double light) const {
    const double s = std::min(light, full());
    const auto upper = std::lower_bound(light_.begin() + 1, light_.end(), s);
    const auto lower = upper - 1;
    const double rise = *upper - *lower;
    const double level = static_cast<double>(lower - light_.begin()) + std::min((s - *lower) / rise, 1.0);
    return {level / kTop, 1.0 / (rise * kTop)};
  }

private:
  std::vector<double> light_; // of each table level
};

// What the panel shows, by the light of its channels.
class PanelByLight {
public:
  explicit PanelByLight(const PanelModel &model)
      : model_(model), channels_{ChannelDrives(model, 0), ChannelDrives(model, 1), ChannelDrives(model, 2)} {}

  double first(size_t c) const { return channels_[c].first(); }
  double full(size_t c) const { return channels_[c].full(); }
  double drive(size_t c, double s) const { return channels_[c].of(s).drive; }

  // The mixture of three lights. A channel that is asked for more than it has keeps the colour of its full light.
  Triple XYZ(const Triple &s) const {
    Triple mixture = model_.XYZ(drives(s));
    for (size_t c = 0; c < 3; c++) {
      if (s[c] > full(c)) {
        const Triple alone = channel_XYZ(c, full(c));
        for (size_t m = 0; m < 3; m++) {
          mixture[m] += alone[m] * (s[c] / full(c) - 1.0);
        }
      }
    }
    return mixture;
  }

  // The change of the mixture with each light.
  Columns slopes(const Triple &s) const {
    Columns result = model_.slopes(drives(s));
    for (size_t c = 0; c < 3; c++) {
      result[c] = s[c] > full(c) ? chord(c, s[c]) : times(result[c], channels_[c].of(s[c]).slope);
    }
    return result;
  }

  // The same if each colour held from there down to black.
  Columns chords(const Triple &s) const { return {chord(0, s[0]), chord(1, s[1]), chord(2, s[2])}; }

private:
  Triple drives(const Triple &s) const { return {drive(0, s[0]), drive(1, s[1]), drive(2, s[2])}; }

  Triple channel_XYZ(size_t c, double s) const {
    Triple alone = {};
    alone[c] = drive(c, s);
    return model_.XYZ(alone);
  }

  Triple chord(size_t c, double s) const {
    const double shown = std::min(s, full(c));
    return times(channel_XYZ(c, shown), 1.0 / shown);
  }

  const PanelModel &model_;
  std::array<ChannelDrives, 3> channels_;
};

// The XYZ that lights are short of a target.
Triple shortage(const PanelByLight &panel, const Triple &s, const Triple &target) {
  const Triple XYZ = panel.XYZ(s);
  return {target[0] - XYZ[0], target[1] - XYZ[1], target[2] - XYZ[2]};
}

// The largest component of a shortage, as a fraction of the target.
double error(const Triple &missing, const Triple &target) {
  double largest = 0.0;
  for (size_t m = 0; m < 3; m++) {
    largest = std::max(largest, std::fabs(missing[m] / target[m]));
  }
  return largest;
}

// One step from s towards the target, halved until it helps. False when it does not.
bool step(const PanelByLight &panel, Triple &s, const Columns &slopes, const Triple &target) {
  const auto &[a, b, c] = slopes;
  const Triple r = shortage(panel, s, target);
  const double d = determinant(a, b, c);
  const Triple whole = {determinant(r, b, c) / d, determinant(a, r, c) / d, determinant(a, b, r) / d};
  for (double length = 1.0; length > kShortestStep; length /= 2.0) {
    const Triple next = {s[0] + length * whole[0], s[1] + length * whole[1], s[2] + length * whole[2]};
    if (error(shortage(panel, next, target), target) < error(r, target)) {
      s = next;
      return true;
    }
  }
  return false;
}

// The lights whose mixture is the target, as near as steps from s come. They may lie beyond what there is. A step is
// Newton's. Where the colour bends so sharply that it does not help, the chords give the step.
Triple balance(const PanelByLight &panel, Triple s, const Triple &target) {
  for (int i = 0; i < kMostSteps && error(shortage(panel, s, target), target) > kSolved; i++) {
    if (!step(panel, s, panel.slopes(s), target) && !step(panel, s, panel.chords(s), target)) {
      break;
    }
  }
  return s;
}

// The least and the most light that each channel may give.
struct Bounds {
  Triple lowest;
  Triple highest;
};

double limited(double s, double lowest, double highest) { return std::max(lowest, std::min(s, highest)); }

bool within(const Triple &s, const Bounds &bounds) {
  for (size_t c = 0; c < 3; c++) {
    if (!(s[c] >= bounds.lowest[c] && s[c] <= bounds.highest[c] * kSlack)) {
      return false;
    }
  }
  return true;
}

using Held = std::array<bool, 3>;

// The lights with those that are not held multiplied by the factor at which the luminance is Y, by bisection.
Triple scaled_to_luminance(const PanelByLight &panel, const Triple &s, const Held &held, double Y) {
  const auto scaled = [&](double factor) {
    Triple t = s;
    for (size_t c = 0; c < 3; c++) {
      t[c] *= held[c] ? 1.0 : factor;
    }
    return t;
  };
  double low = 0.0;
  double high = 2.0;
  for (int i = 0; i < 60; i++) {
    const double middle = (low + high) / 2.0;
    (panel.XYZ(scaled(middle))[1] < Y ? low : high) = middle;
  }
  return scaled(high);
}

// Lights within bounds, at the luminance Y if they can give it. A light out of bounds is held there, the others change
// in proportion.
Triple keep_luminance(const PanelByLight &panel, Triple s, const Bounds &bounds, double Y) {
  Held held = {};
  for (int pass = 0; pass < 3; pass++) {
    for (size_t c = 0; c < 3; c++) {
      held[c] = held[c] || !(s[c] > bounds.lowest[c] && s[c] < bounds.highest[c]);
      s[c] = limited(s[c], bounds.lowest[c], bounds.highest[c]);
    }
    s = scaled_to_luminance(panel, s, held, Y);
  }
  for (size_t c = 0; c < 3; c++) {
    s[c] = limited(s[c], bounds.lowest[c], bounds.highest[c]);
  }
  return s;
}

struct Peak {
  Triple lights;
  double luminance;
};

// The brightest that the panel shows the white, given as XYZ of luminance 1. Lights grow nearly in proportion to the
// luminance, so a few divisions by the largest demand find where it is just met.
Peak solve_peak(const PanelByLight &panel, const Triple &white) {
  Peak peak = {{panel.full(0), panel.full(1), panel.full(2)}, 0.0};
  peak.luminance = panel.XYZ(peak.lights)[1];
  for (int i = 0; i < kMostSteps; i++) {
    peak.lights = balance(panel, peak.lights, times(white, peak.luminance));
    double demand = 0.0;
    for (size_t c = 0; c < 3; c++) {
      demand = std::max(demand, peak.lights[c] / panel.full(c));
    }
    if (std::fabs(demand - 1.0) < kSolved) {
      break;
    }
    peak.luminance /= demand;
    peak.lights = times(peak.lights, 1.0 / demand);
  }
  return peak;
}

// The part of white's light that an input should give.
double share(const Target &target, double input) {
  const double light = target_light(target, input);
  return light > 0.0 ? std::min(light, 1.0) : 0.0;
}

// The drive of the lowest measured row above black.
double lowest_row(const vexo_lcnr &lcnr) { return double{lcnr.sample[1]} / lcnr.sample[lcnr.num - 1]; }

// The levels of three LUTs, solved one by one from the top down.
class Levels {
public:
  Levels(vexo_lut *lut, const PanelModel &model, const Target &target)
      : lut_(lut), panel_(model), first_row_(lowest_row(model.measurements())), white_(white_XYZ(target.white, 1.0)) {
    peak_ = solve_peak(panel_, white_);
    for (size_t c = 0; c < 3; c++) {
      bounds_.lowest[c] = panel_.first(c);
      bounds_.highest[c] = panel_.full(c);
    }
  }

  // Fills the entry for a part of white's light. Returns whether a channel is below the lowest measured row.
  bool fill(int entry, double part) {
    const double Y = peak_.luminance * part;
    Triple s = part > 0.0 ? balance(panel_, times(peak_.lights, part), times(white_, Y)) : Triple{};
    held_ = !within(s, bounds_);
    if (held_) {
      s = keep_luminance(panel_, s, bounds_, Y);
    }
    bool dark = false;
    for (size_t c = 0; c < 3; c++) {
      bounds_.highest[c] = std::min(s[c], bounds_.highest[c]);
      const double drive = panel_.drive(c, bounds_.highest[c]);
      lut_[c].d[entry] = static_cast<float>(drive);
      dark = dark || drive <= first_row_;
    }
    return dark;
  }

  // Whether the last entry keeps only its luminance.
  bool held() const { return held_; }

private:
  vexo_lut *lut_;
  PanelByLight panel_;
  double first_row_;
  Triple white_; // X, Y, Z at luminance 1
  Peak peak_;
  Bounds bounds_; // falling with the entries
  bool held_ = false;
};

} // namespace

Solved solve(vexo_lut *lut, const PanelModel &model, const Target &target) {
  Levels levels(lut, model, target);
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
