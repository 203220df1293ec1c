#include "calibration/mixtures.h"

#include <Eigen/Cholesky>

#include <algorithm>
#include <array>

namespace {

const int kGrid = 33;         // points per axis
const double kOneOrTwo = 0.3; // what terms of one or two channels count

using Points = Eigen::Array3Xd; // a column each

// h of the differences of all points to one.
Eigen::ArrayXd spread(const Points &points, const Triple &from) {
  const Points d = points.colwise() - from.array();
  const Points squares = d.square();
  const Eigen::ArrayXd all = squares.colwise().sum();
  Eigen::ArrayXd fewer = d.abs().colwise().sum();
  for (Eigen::Index c = 0; c < 3; c++) {
    fewer += (all - squares.row(c).transpose()).max(0.0).sqrt();
  }
  return all.sqrt() + kOneOrTwo * fewer;
}

// k of all points with one. from_black: h of each.
Eigen::ArrayXd kernel(const Points &points, const Eigen::ArrayXd &from_black, const Triple &point) {
  return from_black + spread(Points(point), Triple::Zero())[0] - spread(points, point);
}

} // namespace

Mixtures::Mixtures(const std::vector<MixtureSample> &samples) {
  const auto count = static_cast<Eigen::Index>(samples.size());
  Points points(3, count);
  Eigen::MatrixX3d residuals(count, 3);
  Eigen::MatrixXd system(count, count);
  for (Eigen::Index i = 0; i < count; i++) {
    points.col(i) = samples[static_cast<size_t>(i)].point;
    residuals.row(i) = samples[static_cast<size_t>(i)].residual;
  }
  const Eigen::ArrayXd from_black = spread(points, Triple::Zero());
  for (Eigen::Index i = 0; i < count; i++) {
    system.col(i) = kernel(points, from_black, points.col(i));
    system(i, i) += samples[static_cast<size_t>(i)].noise;
  }
  const Eigen::LLT<Eigen::MatrixXd> factors(system);
  const Eigen::MatrixX3d weights = factors.solve(residuals);
  const Eigen::MatrixXd half = factors.matrixL().solve(Eigen::MatrixXd::Identity(count, count));
  for (Eigen::Index i = 0; i < count; i++) {
    left_out_.emplace_back((residuals.row(i) - weights.row(i) / half.col(i).squaredNorm()).transpose());
  }
  const auto share = [](int i) { return static_cast<double>(i) / (kGrid - 1); };
  for (int b = 0; b < kGrid; b++) {
    for (int g = 0; g < kGrid; g++) {
      for (int r = 0; r < kGrid; r++) {
        const Eigen::ArrayXd k = kernel(points, from_black, {share(r), share(g), share(b)});
        grid_.emplace_back(weights.transpose() * k.matrix());
      }
    }
  }
}

// Trilinear.
Triple Mixtures::at(const Triple &point) const {
  const Triple position = point.cwiseMax(0.0).cwiseMin(1.0) * (kGrid - 1);
  const Eigen::Array<ptrdiff_t, 3, 1> cell = position.array().cast<ptrdiff_t>().min(kGrid - 2);
  const Triple f = position - cell.matrix().cast<double>();
  const auto first = grid_.begin() + (cell[2] * kGrid + cell[1]) * kGrid + cell[0];
  const auto along_red = [&](ptrdiff_t g, ptrdiff_t b) -> Triple {
    const auto low = first + (b * kGrid + g) * kGrid;
    return low[0] + (low[1] - low[0]) * f[0];
  };
  const auto along_green = [&](ptrdiff_t b) -> Triple {
    return along_red(0, b) + (along_red(1, b) - along_red(0, b)) * f[1];
  };
  return along_green(0) + (along_green(1) - along_green(0)) * f[2];
}
