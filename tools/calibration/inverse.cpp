#include "calibration/inverse.h"

#include <Eigen/LU>

#include <algorithm>
#include <cmath>
#include <iterator>

#include "calibration/figures.h"
#include "text/failure.h"
#include "text/format.h"

namespace {

const int kInverseSteps = 40;
const double kDifferences[] = {1e-2, 1e-4}; // of the full light, to measure slopes
const double kRounding = 1e-10;             // of white: an error that is rounding
const double kEnough = 0.5;                 // of the miss, what a step may leave while slopes are not measured anew
const double kShortestStep = 0.01;          // of one that gets no nearer

} // namespace

PanelInputs::PanelInputs(const PanelModel &model, const vexo_lut *luts, double highest)
    : model_(model), luts_(luts), last_(luts == nullptr ? PanelModel::kTopLevel : luts[0].size - 1) {
  const auto top = static_cast<int>(std::lround(highest * last_));
  const auto alone = [&](int entry, Eigen::Index c) {
    const Triple drives = drives_at(luts, Triple::Constant(entry / last_));
    return model.additive(drives[c] * Triple::Unit(c));
  };
  for (Eigen::Index c = 0; c < 3; c++) {
    full_.col(c) = alone(top, c);
    std::vector<double> &light = light_[static_cast<size_t>(c)];
    for (int i = 0; i <= top; i++) {
      const double part = alone(i, c).sum() / full_.col(c).sum();
      light.push_back(i == 0 ? 0.0 : std::max(light.back(), part));
    }
  }
}

double PanelInputs::input(size_t channel, double light) const {
  const std::vector<double> &lights = light_[channel];
  const auto upper = std::lower_bound(lights.begin() + 1, lights.end() - 1, light);
  const auto lower = upper - 1;
  const double position = *upper > *lower ? (light - *lower) / (*upper - *lower) : 1.0;
  const double entry = static_cast<double>(lower - lights.begin()) + std::clamp(position, 0.0, 1.0);
  return entry / last_;
}

Triple PanelInputs::inputs(const Triple &lights) const {
  return {input(0, lights[0]), input(1, lights[1]), input(2, lights[2])};
}

Triple PanelInputs::shown(const Triple &inputs) const { return model_.XYZ(drives_at(luts_, inputs)); }

Triple PanelInputs::XYZ(const Triple &lights) const {
  const Triple within = lights.cwiseMax(0.0).cwiseMin(1.0);
  return shown(inputs(within)) + full_ * (lights - within);
}

Inverse::Inverse(const PanelInputs &panel, double precision)
    : panel_(panel), precision_(precision), lights_(Triple::Constant(0.5)), slopes_(panel.full()) {}

// The slopes over a difference of lights, towards the middle.
void Inverse::measure_slopes(double difference) {
  const Triple here = panel_.XYZ(lights_);
  for (Eigen::Index c = 0; c < 3; c++) {
    const double d = lights_[c] > 0.5 ? -difference : difference;
    slopes_.col(c) = (panel_.XYZ(lights_ + d * Triple::Unit(c)) - here) / d;
  }
}

// Goes a step if it leaves no more than a part of the miss, and corrects the slopes by what it shows.
bool Inverse::take(const Triple &step, double part, const Triple &XYZ, Triple *miss) {
  if (!step.allFinite()) {
    return false;
  }
  const Triple left = XYZ - panel_.XYZ(lights_ + step);
  if (!(left.norm() <= part * miss->norm())) {
    return false;
  }
  slopes_ += (*miss - left - slopes_ * step) * step.transpose() / step.squaredNorm();
  lights_ += step;
  *miss = left;
  return true;
}

Triple Inverse::lights(const Triple &XYZ) {
  const double solved = precision_ * XYZ.norm() + kRounding * panel_.full().norm();
  Triple miss = XYZ - panel_.XYZ(lights_);
  size_t fresh = 0; // how often the slopes were made anew since the last step
  for (int i = 0; i < kInverseSteps && miss.norm() > solved; i++) {
    const Triple step = slopes_.partialPivLu().solve(miss);
    bool taken = take(step, kEnough, XYZ, &miss);
    for (double length = 1.0; fresh > 0 && !taken && length > kShortestStep; length /= 2.0) {
      taken = take(length * step, 1.0, XYZ, &miss);
    }
    if (taken) {
      fresh = 0;
    } else if (fresh == 0) {
      slopes_ = panel_.full();
      fresh++;
    } else if (fresh <= std::size(kDifferences)) {
      measure_slopes(kDifferences[fresh - 1]);
      fresh++;
    } else {
      break;
    }
  }
  return lights_;
}

namespace {

// The brightest that the panel shows the target white. Lights grow nearly in proportion to the luminance above black,
// so a few divisions by the largest demand find where it is just met.
double brightest(const PanelInputs &panel, const Target &target, const Triple &black) {
  Inverse inverse(panel, kRounding);
  double luminance = panel.shown(Triple::Ones())[1];
  const auto white = [&] { return TargetRamp(target, black[1] + luminance, black); };
  for (int i = 0; i < kInverseSteps; i++) {
    const double demand = inverse.lights(white().above_black(1.0)).maxCoeff();
    if (std::fabs(demand - 1.0) < kRounding) {
      break;
    }
    luminance /= demand;
  }
  return white().XYZ(1.0)[1]; // a curve may end below what the panel has
}

} // namespace

double white_luminance(const PanelInputs &panel, const Target &target) {
  const Triple included = included_black(target.curve, panel.model());
  const double most = brightest(panel, target, included);
  if (!(most > included[1] && std::isfinite(most))) {
    throw Failure(kLimitMissed,
                  "the panel cannot show white " + target.white.name + " above its black; no LUTs were written");
  }
  if (!target.luminance) {
    return most;
  }
  const double black = black_of(panel.model().measurements())[1];
  const double not_included = black - included[1];
  const double wished = *target.luminance - not_included;
  if (!(*target.luminance > black && wished <= most)) {
    throw Failure(kLimitMissed,
                  format("the panel cannot show white %s at %g cd/m2, expected a luminance above %.4g (its "
                         "black) and up to %.2f; no LUTs were written",
                         target.white.name.c_str(), *target.luminance, black,
                         std::floor((most + not_included) * 100.0) / 100.0));
  }
  return wished;
}
