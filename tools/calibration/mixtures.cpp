#include "calibration/mixtures.h"

#include <Eigen/Cholesky>

#include <algorithm>

#include "lut/trilinear.h"

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

Triple Mixtures::at(const Triple &point) const {
  return trilinear(point, kGrid, [&](ptrdiff_t r, ptrdiff_t g, ptrdiff_t b) -> const Triple & {
    return grid_[static_cast<size_t>((b * kGrid + g) * kGrid + r)];
  });
}
