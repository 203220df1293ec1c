#include "calibration/solve.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

const size_t kLevels = 1024;
const int kTop = 1023;
const int kMostSteps = 100;
const double kShortestStep = 1e-3; // of a Newton step that gets no nearer
const int kNearBlack = 102;        // entries up to this one, 10 % input, may be the toe
const double kSolved = 1e-10;      // error of X, Y, Z, as a fraction of the target
const double kSlack = 1.0 + 1e-6;  // an overshoot of a bound that is rounding

using Triple = std::array<double, 3>;

// What a channel shows at a light, and how that changes with the light.
struct Colour {
  Triple XYZ;
  Triple slope;
};

// One channel: its colour against its light.
class Channel {
public:
  Channel(const vexo &bare, int c) {
    for (size_t k = 1; k < kLevels; k++) {
      const double y = static_cast<double>(bare.data[c][1][k]);
      const double sum = static_cast<double>(bare.maxY[c]) * static_cast<double>(bare.data[c][2][k]) / y;
      const double x = static_cast<double>(bare.data[c][0][k]);
      XYZ_[k] = {x * sum, y * sum, (1.0 - x - y) * sum};
      light_[k] = std::max(light_[k - 1], sum); // rises even where measurements fall
    }
  }

  double first() const { return light_[1]; }
  double full() const { return light_[kTop]; }

  // The lowest drive, in table levels, that gives the light.
  double level(double s) const {
    const size_t k = above(s);
    return static_cast<double>(k - 1) + std::min((s - light_[k - 1]) / (light_[k] - light_[k - 1]), 1.0);
  }

  // Beyond the ends the colour stays that of the end.
  Colour at(double s) const {
    const size_t k = above(s);
    const bool beyond = s > full();
    const Triple low = beyond ? Triple{} : XYZ_[k - 1];
    const double from = beyond ? 0.0 : light_[k - 1];
    Colour colour;
    for (size_t m = 0; m < 3; m++) {
      colour.slope[m] = (XYZ_[k][m] - low[m]) / (light_[k] - from);
      colour.XYZ[m] = low[m] + colour.slope[m] * (s - from);
    }
    return colour;
  }

private:
  // The first level that gives at least the light, or as much as there is; not black.
  size_t above(double s) const {
    const auto level = std::lower_bound(light_.begin() + 1, light_.end(), std::min(s, full()));
    return static_cast<size_t>(level - light_.begin());
  }

  std::array<Triple, kLevels> XYZ_ = {};
  std::array<double, kLevels> light_ = {};
};

using Channels = std::array<Channel, 3>;

double determinant(const Triple &a, const Triple &b, const Triple &c) {
  return a[0] * (b[1] * c[2] - b[2] * c[1]) - b[0] * (a[1] * c[2] - a[2] * c[1]) + c[0] * (a[1] * b[2] - a[2] * b[1]);
}

Triple times(const Triple &a, double factor) { return {a[0] * factor, a[1] * factor, a[2] * factor}; }

// The XYZ that lights are short of a target.
Triple shortage(const Channels &channels, const Triple &s, const Triple &target) {
  Triple missing = target;
  for (size_t c = 0; c < 3; c++) {
    const Triple XYZ = channels[c].at(s[c]).XYZ;
    for (size_t m = 0; m < 3; m++) {
      missing[m] -= XYZ[m];
    }
  }
  return missing;
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
bool step(const Channels &channels, Triple &s, const std::array<Triple, 3> &slope, const Triple &target) {
  const auto &[a, b, c] = slope;
  const Triple r = shortage(channels, s, target);
  const double d = determinant(a, b, c);
  const Triple whole = {determinant(r, b, c) / d, determinant(a, r, c) / d, determinant(a, b, r) / d};
  for (double length = 1.0; length > kShortestStep; length /= 2.0) {
    const Triple next = {s[0] + length * whole[0], s[1] + length * whole[1], s[2] + length * whole[2]};
    if (error(shortage(channels, next, target), target) < error(r, target)) {
      s = next;
      return true;
    }
  }
  return false;
}

// The lights whose mixture is the target, as near as steps from s come; they may lie beyond what there is. A step is
// Newton's; where the colour bends so sharply that it does not help, one with the colours as if they held down to
// black.
Triple balance(const Channels &channels, Triple s, const Triple &target) {
  for (int i = 0; i < kMostSteps && error(shortage(channels, s, target), target) > kSolved; i++) {
    std::array<Triple, 3> tangent;
    std::array<Triple, 3> chord;
    for (size_t c = 0; c < 3; c++) {
      const Colour colour = channels[c].at(s[c]);
      tangent[c] = colour.slope;
      chord[c] = times(colour.XYZ, 1.0 / s[c]);
    }
    if (!step(channels, s, tangent, target) && !step(channels, s, chord, target)) {
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

// Lights within bounds, at the luminance Y if they can give it: a light out of bounds is held there, the others change
// in proportion.
Triple keep_luminance(const Channels &channels, Triple s, const Bounds &bounds, double Y) {
  std::array<bool, 3> held = {};
  for (int pass = 0; pass < 3; pass++) {
    for (size_t c = 0; c < 3; c++) {
      held[c] = held[c] || !(s[c] > bounds.lowest[c] && s[c] < bounds.highest[c]);
      s[c] = limited(s[c], bounds.lowest[c], bounds.highest[c]);
    }
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
      (shortage(channels, scaled(middle), {0.0, Y, 0.0})[1] > 0.0 ? low : high) = middle;
    }
    s = scaled(high);
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

// The brightest that the panel shows the white; white is XYZ of luminance 1. Lights grow nearly in proportion to the
// luminance, so a few divisions by the largest demand find where it is just met.
Peak solve_peak(const Channels &channels, const Triple &white) {
  Peak peak = {{channels[0].full(), channels[1].full(), channels[2].full()}, 0.0};
  peak.luminance = -shortage(channels, peak.lights, {})[1];
  for (int i = 0; i < kMostSteps; i++) {
    peak.lights = balance(channels, peak.lights, times(white, peak.luminance));
    double demand = 0.0;
    for (size_t c = 0; c < 3; c++) {
      demand = std::max(demand, peak.lights[c] / channels[c].full());
    }
    if (std::fabs(demand - 1.0) < kSolved) {
      break;
    }
    peak.luminance /= demand;
    peak.lights = times(peak.lights, 1.0 / demand);
  }
  return peak;
}

// The light of an input as a share of the peak's.
double share(const Target &target, float input) {
  const float light = target_light(target, input);
  return light > 0.0F ? std::min(static_cast<double>(light), 1.0) : 0.0;
}

// The table level of the lowest measured row above black.
double lowest_row(const vexo_lcnr &lcnr) {
  return static_cast<double>(lcnr.sample[1]) / static_cast<double>(lcnr.sample[lcnr.num - 1]) * kTop;
}

} // namespace

Solved solve(vexo_lut *lut, const vexo &bare, const Target &target) {
  const Channels channels = {Channel(bare, 0), Channel(bare, 1), Channel(bare, 2)};
  const double x = static_cast<double>(target.white.xyz.d[0]);
  const double y = static_cast<double>(target.white.xyz.d[1]);
  const Triple white = {x / y, 1.0, (1.0 - x - y) / y};
  const double first_row = lowest_row(bare.lcnr);
  const Peak peak = solve_peak(channels, white);

  Solved result = {0, 0, 0.0F, 0.0F};
  Bounds bounds;
  for (size_t c = 0; c < 3; c++) {
    bounds.lowest[c] = channels[c].first();
    bounds.highest[c] = channels[c].full();
  }
  for (int i = kTop; i >= result.toe; i--) {
    const float input = static_cast<float>(i) / static_cast<float>(kTop);
    const double part = share(target, input);
    const double Y = peak.luminance * part;
    Triple s = part > 0.0 ? balance(channels, times(peak.lights, part), times(white, Y)) : Triple{};
    if (!within(s, bounds)) {
      s = keep_luminance(channels, s, bounds, Y);
      result.held++;
      result.held_from = input;
      result.held_to = result.held == 1 ? input : result.held_to;
    }
    bool dark = false;
    for (size_t c = 0; c < 3; c++) {
      bounds.highest[c] = std::min(s[c], bounds.highest[c]);
      const double level = channels[c].level(bounds.highest[c]);
      lut[c].d[i] = static_cast<float>(level / kTop);
      dark = dark || level <= first_row;
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
