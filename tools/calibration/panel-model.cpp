#include "calibration/panel-model.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "colour/quantities.h"
#include "vexo-tables.h"

namespace {

// Grays that must have been read between two rows for their shape to count there, and how much of it is the channels'.
// The rest is what channels do together. Half predicts the measured mixtures of real panels best or nearly so.
const int kLeastShape = 2;
const double kShapeOfChannels = 0.5;

// Variances of a reading among mixtures, and of the lights that the model shows exactly, in the unit of the kernel.
const double kMixtureNoise = 0.005;
const double kExactNoise = kMixtureNoise / 10.0;

// XYZ of a channel at a table level. A level without chromaticity shows no light, as in the library.
Triple table_XYZ(const vexo &context, size_t c, size_t level) {
  const auto &table = context.data[c];
  const double x = table[0][level];
  const double y = table[1][level];
  if (y == 0.0) {
    return Triple::Zero();
  }
  const double sum = context.maxY[c] * static_cast<double>(table[2][level]) / y;
  return {x * sum, y * sum, (1.0 - x - y) * sum};
}

// The line between two table levels on which a drive lies.
struct Line {
  size_t upper;    // level at its upper end
  double position; // 0 at the lower end, 1 at the upper
};

Line line_at(double drive) {
  const double level = drive * PanelModel::kTopLevel;
  const double upper = level > 1.0 ? std::min(std::ceil(level), double{PanelModel::kTopLevel}) : 1.0;
  return {static_cast<size_t>(upper), level - (upper - 1.0)};
}

// A component of a gray ramp at a level: lines between the readings, and from 0.
double gray_at(const std::vector<MeasuredLight> &ramp, double level, Eigen::Index component) {
  double low_level = 0.0;
  double low = 0.0;
  for (const MeasuredLight &gray : ramp) {
    const double high_level = gray.drives[0];
    const double high = gray.XYZ[component];
    if (level <= high_level) {
      return low + (high - low) * (level - low_level) / (high_level - low_level);
    }
    low_level = high_level;
    low = high;
  }
  return low;
}

// The roots of components of light; 0 for what is no light.
Triple roots(const Triple &light) { return light.cwiseMax(0.0).cwiseSqrt(); }

} // namespace

double gray_level(const Triple &drives) { return drives.cwiseMax(0.0).mean(); }

double grayness(const Triple &drives) {
  const Triple d = drives.cwiseMax(0.0);
  const double t = d.mean();
  return t > 0.0 ? d.prod() / (t * t * t) : 0.0;
}

std::optional<PanelModel> PanelModel::of(const vexo_lcnr &measurements) {
  const auto context = bare_context(measurements);
  return context == nullptr ? std::nullopt : std::optional(PanelModel(*context));
}

PanelModel::PanelModel(const vexo &context)
    : measurements_(context.lcnr),
      lowest_level_(double{context.lcnr.sample[1]} / context.lcnr.sample[context.lcnr.num - 1]) {
  for (size_t c = 0; c < 3; c++) {
    for (size_t level = 0; level <= kTopLevel; level++) {
      channels_[c].push_back(table_XYZ(context, c, level));
    }
    full_[static_cast<Eigen::Index>(c)] = channels_[c].back().sum();
    white_ += channels_[c].back();
  }
}

// Red, green and blue dominate X, Y and Z.
void PanelModel::shape_channels(const std::vector<MeasuredLight> &ramp) {
  for (int row = 1; row < measurements_.num; row++) {
    const double from = level_of(row - 1);
    const double to = level_of(row);
    const auto between = std::count_if(ramp.begin(), ramp.end(), [&](const MeasuredLight &gray) {
      return gray.drives[0] > from && gray.drives[0] < to;
    });
    for (size_t c = 0; c < 3 && between >= kLeastShape; c++) {
      const auto share = [&, component = static_cast<Eigen::Index>(c)](double level) {
        const double low = gray_at(ramp, from, component);
        const double rise = gray_at(ramp, to, component) - low;
        const double line = (level - from) / (to - from);
        const double gray = rise > 0.0 ? std::clamp((gray_at(ramp, level, component) - low) / rise, 0.0, 1.0) : line;
        return line + kShapeOfChannels * (gray - line);
      };
      const auto first = static_cast<size_t>(std::lround(from * kTopLevel));
      const auto last = static_cast<size_t>(std::lround(to * kTopLevel));
      const Triple bottom = channels_[c][first];
      const Triple rise = channels_[c][last] - bottom;
      for (size_t level = first + 1; level < last; level++) {
        channels_[c][level] = bottom + rise * share(static_cast<double>(level) / kTopLevel);
      }
    }
  }
}

double PanelModel::level_of(int row) const {
  return double{measurements_.sample[row]} / measurements_.sample[measurements_.num - 1];
}

void PanelModel::learn_grays(const std::vector<MeasuredLight> &lights) {
  Residual learnt = {{0.0}, {Triple::Zero()}};
  for (const MeasuredLight &light : lights) {
    const double t = gray_level(light.drives);
    const Triple missing = (light.XYZ - XYZ(light.drives)) / grayness(light.drives);
    learnt.levels.push_back(t);
    learnt.values.emplace_back(
        missing.cwiseProduct(roots(additive({t, t, t}))).cwiseQuotient(roots(additive(light.drives))));
    lowest_level_ = std::min(lowest_level_, t);
  }
  residuals_.push_back(std::move(learnt));
}

// Each channel alone, a column each.
Eigen::Matrix3d PanelModel::alone(const Triple &drives) const {
  Eigen::Matrix3d lights;
  for (size_t c = 0; c < 3; c++) {
    const auto column = static_cast<Eigen::Index>(c);
    const Line line = line_at(drives[column]);
    const Triple &low = channels_[c][line.upper - 1];
    lights.col(column) = low + (channels_[c][line.upper] - low) * line.position;
  }
  return lights;
}

Triple PanelModel::additive(const Triple &drives) const { return alone(drives).rowwise().sum(); }

// Above the highest measured level the residual keeps its value.
Triple PanelModel::residual(double gray_level) const {
  Triple sum = Triple::Zero();
  for (const Residual &r : residuals_) {
    const double t = std::min(gray_level, r.levels.back());
    const auto above = std::lower_bound(r.levels.begin() + 1, r.levels.end(), t);
    const auto i = static_cast<size_t>(above - r.levels.begin());
    const double position = (t - r.levels[i - 1]) / (r.levels[i] - r.levels[i - 1]);
    sum += r.values[i - 1] + (r.values[i] - r.values[i - 1]) * position;
  }
  return sum;
}

// D(t) / sqrt(S(t, t, t)); 0 where there is no light.
Triple PanelModel::relative_residual(double gray_level) const {
  const double t = std::min(gray_level, 1.0);
  const Triple root = roots(additive({t, t, t}));
  return (root.array() > 0.0).select(residual(t).cwiseQuotient(root), 0.0);
}

Triple PanelModel::with_grays(const Triple &sum, const Triple &drives) const {
  const double weight = knows_grays() ? grayness(drives) : 0.0;
  return weight > 0.0 ? Triple(sum + weight * relative_residual(gray_level(drives)).cwiseProduct(roots(sum))) : sum;
}

Triple PanelModel::unmixed(const Triple &drives) const { return with_grays(additive(drives), drives); }

Triple PanelModel::XYZ(const Triple &drives) const {
  const Eigen::Matrix3d lights = alone(drives);
  const Triple sum = lights.rowwise().sum();
  const Triple unmixed = with_grays(sum, drives);
  return mixtures_ == nullptr ? unmixed : unmixed + mixtures_->at(place(lights)).cwiseProduct(scale_of(sum));
}

// The point among the mixtures of channels that are alone as bright: the lightness of each, X + Y + Z.
Triple PanelModel::place(const Eigen::Matrix3d &lights) const {
  const Triple parts = lights.colwise().sum().transpose().cwiseQuotient(full_);
  return parts.unaryExpr([](double part) { return 1.16 * cie_f(part) - 0.16; });
}

Triple PanelModel::scale_of(const Triple &sum) const { return white_ * std::cbrt(std::max(sum[1], 0.0) / white_[1]); }

Triple PanelModel::mixture_scale(const Triple &drives) const { return scale_of(additive(drives)); }

std::shared_ptr<const Mixtures> PanelModel::solve_mixtures(const std::vector<MeasuredLight> &lights) const {
  std::vector<MixtureSample> samples;
  for (const MeasuredLight &light : lights) {
    const Triple missing = light.XYZ - XYZ(light.drives);
    samples.push_back({place(alone(light.drives)), missing.cwiseQuotient(mixture_scale(light.drives)), kMixtureNoise});
  }
  const auto exact = [&](const Triple &drives) {
    samples.push_back({place(alone(drives)), Triple::Zero(), kExactNoise});
  };
  for (int row = 1; row < measurements_.num; row++) {
    for (Eigen::Index c = 0; c < 3; c++) {
      exact(level_of(row) * Triple::Unit(c));
    }
  }
  for (const Residual &residual : residuals_) {
    for (size_t i = 1; i < residual.levels.size(); i++) {
      exact(Triple::Constant(residual.levels[i]));
    }
  }
  return std::make_shared<const Mixtures>(samples);
}

Triple black_of(const vexo_lcnr &measurements) {
  Triple black = Triple::Zero();
  for (const auto &channel : measurements.data) {
    black += Triple(channel[0][0], channel[1][0], channel[2][0]);
  }
  return black / 3.0;
}

double contrast(double white_above_black, double black) {
  return black > 0.0 ? (white_above_black + black) / black : std::numeric_limits<double>::infinity();
}

std::unique_ptr<vexo> bare_context(const vexo_lcnr &measurements) {
  auto context = std::make_unique<vexo>();
  context->lcnr = measurements;
  return vexo_internal::make_tables(context.get()) == 0 ? std::move(context) : nullptr;
}
