// What measured mixtures of the channels show beyond the rest of the panel model, at any three drives.
//
// Three drives are a point p of the unit cube: of each channel the lightness L* of its light, full light being 1. So
// equal distances look about equal. The mixtures tell a residual r at their points, relative to a scale of light that
// the model defines. Channels alone, black and measured grays need no residual: there it is known to be 0. In between,
//
//   r(p) = sum over i of w_i k(p, p_i),   k(p, q) = h(p) + h(q) - h(p - q),
//   h(p) = |p| + 0.3 (|p_r| + |p_g| + |p_b|) + 0.3 (|p_r, p_g| + |p_g, p_b| + |p_b, p_r|).
//
// The residual may change with distance, but no more than the readings require (kriging; k is the
// covariance of a random walk that starts from 0 at black). The terms of one and two channels let a residual that
// depends on these channels alone reach across the cube. The weights solve (K + N) w = r, with the noise of each
// reading in the diagonal N.
#ifndef VEXO_TOOLS_MIXTURES_H
#define VEXO_TOOLS_MIXTURES_H

#include <vector>

#include "colour/triple.h"

// A residual that is known at a point.
struct MixtureSample {
  Triple point;
  Triple residual;
  double noise; // variance, in the unit of k
};

class Mixtures {
public:
  // Solves for the weights. A sample that is no mixture may come anywhere in the list.
  explicit Mixtures(const std::vector<MixtureSample> &samples);

  // r at a point of the unit cube, from a grid that was filled once.
  Triple at(const Triple &point) const;

  // r at the point of each sample if that sample had been left out, without solving anew: the residual less
  // w_i / ((K + N)^-1)_ii.
  const std::vector<Triple> &left_out() const { return left_out_; }

private:
  std::vector<Triple> left_out_;
  std::vector<Triple> grid_; // red fastest
};

#endif
