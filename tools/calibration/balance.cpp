#include "calibration/balance.h"

#include <Eigen/LU>

#include <algorithm>
#include <cmath>

namespace {

const int kMostSteps = 100;
const double kShortestStep = 1e-3; // of a Newton step that gets no nearer
const double kSolved = 1e-10;      // error of X, Y, Z as a fraction of the target; of a gray level
const double kLeastRest = 0.1;     // of a target, what mixtures leave to the rest of the model

// The largest component of what lights are short of a target, as a fraction of the target.
double error(const PanelByLight &panel, const Triple &s, const Triple &target) {
  return (target - panel.additive(s)).cwiseQuotient(target).cwiseAbs().maxCoeff();
}

// One step from s towards the target, halved until it helps. False when it does not.
bool step(const PanelByLight &panel, Triple &s, const Eigen::Matrix3d &slopes, const Triple &target) {
  const Triple whole = slopes.partialPivLu().solve(target - panel.additive(s));
  const double before = error(panel, s, target);
  for (double length = 1.0; length > kShortestStep; length /= 2.0) {
    const Triple next = s + length * whole;
    if (error(panel, next, target) < before) {
      s = next;
      return true;
    }
  }
  return false;
}

// The lights whose sum is the target. A step is Newton's. Where the colour bends so sharply that it does not help, the
// chords give the step.
Triple balance_sum(const PanelByLight &panel, Triple s, const Triple &target) {
  for (int i = 0; i < kMostSteps && error(panel, s, target) > kSolved; i++) {
    if (!step(panel, s, panel.slopes(s), target) && !step(panel, s, panel.chords(s), target)) {
      break;
    }
  }
  return s;
}

// A gray level that is assumed for the residual. The lights that show the target there have a level of their own.
struct Assumed {
  double level;
  double excess; // of their level over the assumed one
};

// The residual of measured grays depends on the gray level alone.
//   Searched: the level that is assumed for the residual and that the lights then have.
//   Order: a bracket around the level of s, widened until the excess changes its sign; then regula falsi, in which an
//   end that stays counts half (Illinois).
//   End: the excess is rounding.
//   Result: the lights of that level.
Triple balance_unmixed(const PanelByLight &panel, Triple s, const Triple &target) {
  if (!panel.model().knows_grays()) {
    return balance_sum(panel, s, target);
  }
  const auto assume = [&](double level) {
    s = balance_sum(panel, s, panel.model().additive_part(target, level));
    return Assumed{level, panel.level(s) - level};
  };
  const double start = panel.level(s);
  Assumed low = assume(0.99 * start);
  Assumed high = assume(1.01 * start);
  for (int i = 0; i < kMostSteps && low.excess < 0.0; i++) {
    high = low;
    low = assume(0.9 * low.level);
  }
  for (int i = 0; i < kMostSteps && high.excess > 0.0; i++) {
    low = high;
    high = assume(1.1 * high.level);
  }
  Assumed here = low;
  for (int i = 0; i < kMostSteps && std::fabs(here.excess) > kSolved; i++) {
    const bool was_low = here.excess > 0.0;
    here = assume((low.level * high.excess - high.level * low.excess) / (high.excess - low.excess));
    if (here.excess > 0.0) {
      low = here;
      high.excess *= was_low ? 0.5 : 1.0;
    } else {
      high = here;
      low.excess *= was_low ? 1.0 : 0.5;
    }
  }
  return s;
}

} // namespace

ChannelDrives::ChannelDrives(const PanelModel &model, Eigen::Index channel, double most) {
  const auto levels = std::lround(most * PanelModel::kTopLevel);
  for (long level = 0; level <= levels; level++) {
    Triple drives = Triple::Zero();
    drives[channel] = static_cast<double>(level) / PanelModel::kTopLevel;
    const double light = model.additive(drives).sum();
    light_.push_back(light_.empty() ? 0.0 : std::max(light_.back(), light));
  }
}

ChannelDrives::Drive ChannelDrives::of(double light) const {
  const double s = std::min(light, full());
  const auto upper = std::lower_bound(light_.begin() + 1, light_.end(), s);
  const auto lower = upper - 1;
  const double rise = *upper - *lower;
  const double level = static_cast<double>(lower - light_.begin()) + std::min((s - *lower) / rise, 1.0);
  return {level / PanelModel::kTopLevel, 1.0 / (rise * PanelModel::kTopLevel)};
}

PanelByLight::PanelByLight(const PanelModel &model, double most)
    : model_(model), channels_{ChannelDrives(model, 0, most), ChannelDrives(model, 1, most),
                               ChannelDrives(model, 2, most)},
      full_(channels_[0].full(), channels_[1].full(), channels_[2].full()),
      first_(channels_[0].first(), channels_[1].first(), channels_[2].first()) {}

Triple PanelByLight::drives(const Triple &s) const { return {of(0, s[0]).drive, of(1, s[1]).drive, of(2, s[2]).drive}; }

Triple PanelByLight::additive(const Triple &s) const {
  Triple sum = model_.additive(drives(s));
  for (Eigen::Index c = 0; c < 3; c++) {
    if (s[c] > full_[c]) {
      sum += alone(c, full_[c]) * (s[c] / full_[c] - 1.0);
    }
  }
  return sum;
}

Eigen::Matrix3d PanelByLight::slopes(const Triple &s) const {
  Eigen::Matrix3d result = model_.additive_slopes(drives(s));
  for (Eigen::Index c = 0; c < 3; c++) {
    result.col(c) = s[c] > full_[c] ? chord(c, s[c]) : Triple(result.col(c) * of(c, s[c]).slope);
  }
  return result;
}

Eigen::Matrix3d PanelByLight::chords(const Triple &s) const {
  Eigen::Matrix3d result;
  result << chord(0, s[0]), chord(1, s[1]), chord(2, s[2]);
  return result;
}

double PanelByLight::level(const Triple &s) const {
  return gray_level(drives(s)) * gray_level(s.cwiseQuotient(full_).cwiseMax(1.0));
}

Triple PanelByLight::alone(Eigen::Index c, double s) const {
  Triple drives = Triple::Zero();
  drives[c] = of(c, s).drive;
  return model_.additive(drives);
}

Triple PanelByLight::chord(Eigen::Index c, double s) const {
  const double shown = std::min(s, full_[c]);
  return alone(c, shown) / shown;
}

// What mixtures add changes little from one solution to the next.
Triple balance(const PanelByLight &panel, Triple s, const Triple &target) {
  Triple before = Triple::Zero();
  for (int i = 0; i < kMostSteps && (s - before).cwiseAbs().maxCoeff() > kSolved * s.maxCoeff(); i++) {
    const Triple rest = (target - panel.model().mixed(panel.drives(s))).cwiseMax(kLeastRest * target);
    before = s;
    s = balance_unmixed(panel, s, rest);
    if (panel.model().mixtures() == nullptr) {
      break;
    }
  }
  return s;
}
