#include "calibration/panel-model.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "vexo-tables.h"

namespace {

// XYZ of a channel at a table level. A level without chromaticity shows no light, as in the library.
Triple table_XYZ(const vexo &context, size_t c, size_t level) {
  const auto &table = context.data[c];
  const double x = table[0][level];
  const double y = table[1][level];
  if (y == 0.0) {
    return {};
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

} // namespace

std::optional<PanelModel> PanelModel::of(const vexo_lcnr &measurements) {
  const auto context = bare_context(measurements);
  return context == nullptr ? std::nullopt : std::optional(PanelModel(*context));
}

PanelModel::PanelModel(const vexo &context) : measurements_(context.lcnr) {
  for (size_t c = 0; c < 3; c++) {
    for (size_t level = 0; level <= kTopLevel; level++) {
      channels_[c].push_back(table_XYZ(context, c, level));
    }
  }
}

Triple PanelModel::XYZ(const Triple &drives) const {
  Triple sum = {};
  for (size_t c = 0; c < 3; c++) {
    const Line line = line_at(drives[c]);
    const Triple &low = channels_[c][line.upper - 1];
    const Triple &high = channels_[c][line.upper];
    for (size_t m = 0; m < 3; m++) {
      sum[m] += low[m] + (high[m] - low[m]) * line.position;
    }
  }
  return sum;
}

std::array<Triple, 3> PanelModel::slopes(const Triple &drives) const {
  std::array<Triple, 3> result = {};
  for (size_t c = 0; c < 3; c++) {
    const Line line = line_at(drives[c]);
    for (size_t m = 0; m < 3; m++) {
      result[c][m] = (channels_[c][line.upper][m] - channels_[c][line.upper - 1][m]) * kTopLevel;
    }
  }
  return result;
}

Triple black_of(const vexo_lcnr &measurements) {
  Triple black = {};
  for (const auto &channel : measurements.data) {
    for (size_t m = 0; m < 3; m++) {
      black[m] += channel[m][0];
    }
  }
  return {black[0] / 3.0, black[1] / 3.0, black[2] / 3.0};
}

double contrast(double white_above_black, double black) {
  return black > 0.0 ? (white_above_black + black) / black : std::numeric_limits<double>::infinity();
}

std::unique_ptr<vexo> bare_context(const vexo_lcnr &measurements) {
  auto context = std::make_unique<vexo>();
  context->lcnr = measurements;
  return vexo_internal::make_tables(context.get()) == 0 ? std::move(context) : nullptr;
}
