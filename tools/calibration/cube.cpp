#include "calibration/cube.h"

#include <Eigen/LU>

#include <algorithm>
#include <cmath>

#include "calibration/figures.h"
#include "colour/quantities.h"
#include "lut/trilinear.h"
#include "text/failure.h"

namespace {

const double kPrecision = 1e-6;     // of a colour
const double kInGamut = 1e-5;       // of a channel's full light, beyond which a colour is out of gamut
const double kMostInward = 1e-4;    // of the way to gray, what clipping may go too far
const double kBrightestGray = 85.0; // L*. Towards brighter grays yellow fades: a panel shows little colour near white
const int kBisections = 40;

Eigen::Matrix3d doubled(const vexo_matrix &m) {
  Eigen::Matrix3d result;
  for (int i = 0; i < 3; i++) {
    for (int j = 0; j < 3; j++) {
      result(i, j) = double{m.d[i][j]};
    }
  }
  return result;
}

// The signal that stands for a part of white's light.
double signal_of_light(const TargetRamp &ramp, double light) {
  double low = 0.0;
  double high = 1.0;
  for (int i = 0; i < kBisections; i++) {
    const double middle = (low + high) / 2.0;
    (ramp.part(middle) < light ? low : high) = middle;
  }
  return high;
}

// The line in L*a*b* from a colour to the gray of the same lightness, or to the brightest gray that is allowed.
class TowardsGray {
public:
  TowardsGray(const Triple &XYZ, const Triple &white)
      : white_(white), f_(XYZ.cwiseQuotient(white).unaryExpr([](double part) { return cie_f(part); })),
        gray_(Triple::Constant(std::min(f_[1], (kBrightestGray + 16.0) / 116.0))) {}

  // The colour with a part of its chroma.
  Triple at(double chroma) const {
    const Triple f = gray_ + chroma * (f_ - gray_);
    return f.unaryExpr([](double v) { return cie_f_inverse(v); }).cwiseProduct(white_);
  }

private:
  Triple white_;
  Triple f_; // the cube roots of which L*a*b* is made
  Triple gray_;
};

// By how much the lights are beyond what the channels have.
double beyond(const Triple &lights) { return std::max(lights.maxCoeff() - 1.0, -lights.minCoeff()); }

// The lights of the most colourful colour on the line that the panel has.
//   Searched: the chroma at which some light is at its end.
//   Order: regula falsi between gray and the colour, in which an end that stays counts half (Illinois).
//   End: the bracket is narrow, or the lights are within by a rounding.
//   Result: lights that are within, but for what gray itself is beyond.
Triple clipped(const TowardsGray &line, const Triple &lights, Inverse *inverse) {
  double low = 0.0;
  double high = 1.0;
  Triple within = inverse->lights(line.at(low));
  double at_low = std::min(beyond(within), 0.0);
  double at_high = beyond(lights);
  bool was_low = false;
  for (int i = 0; i < kBisections && high - low > kMostInward && at_low < -kInGamut; i++) {
    const double chroma = (low * at_high - high * at_low) / (at_high - at_low);
    const Triple here = inverse->lights(line.at(chroma));
    const double excess = beyond(here);
    if (excess > 0.0) {
      high = chroma;
      at_low *= i > 0 && !was_low ? 0.5 : 1.0;
      at_high = excess;
    } else {
      low = chroma;
      at_high *= i > 0 && was_low ? 0.5 : 1.0;
      at_low = excess;
      within = here;
    }
    was_low = excess <= 0.0;
  }
  return within;
}

} // namespace

SignalColours::SignalColours(const Space &space, const Target &target, double white_luminance, const Triple &black)
    : ramp_(target, white_luminance, black), black_(white_XYZ(target.white, std::max(black[1], 0.0))) {
  vexo_cs cs = space.cs;
  vexo_vector white = target.white.xyz;
  vexo_matrix adaptation;
  vexo_chad_transform(&adaptation, &cs.w, &white);
  to_XYZ_ = (white_luminance - black[1]) * doubled(adaptation) * doubled(cs.npm);
  if (!to_XYZ_.allFinite() || !(std::fabs(to_XYZ_.determinant()) > 0.0)) {
    throw Failure(kInputError,
                  "the colour space " + space.name + " cannot be adapted to the white " + target.white.name);
  }
}

Triple SignalColours::XYZ(const Triple &signal) const {
  if (signal[0] == signal[1] && signal[1] == signal[2]) {
    return ramp_.above_black(signal[0]);
  }
  return ramp_.without_black(to_XYZ_ * signal.unaryExpr([&](double v) { return ramp_.part(v); }));
}

Triple SignalColours::signal(const Triple &XYZ) const {
  const Triple lights = to_XYZ_.partialPivLu().solve(XYZ * ramp_.XYZ(1.0)[1] - black_);
  return lights.unaryExpr([&](double part) { return signal_of_light(ramp_, part); });
}

Cube make_cube(const PanelInputs &panel, const SignalColours &colours, int size, bool keeps_grays,
               const std::function<void(double)> &progress) {
  Cube cube = {new_lut3d(size, ""), {}};
  Inverse inverse(panel, kPrecision);
  const vexo_vector white = single(colours.white());
  const auto node = [&](const Triple &signal) -> Triple {
    if (keeps_grays && signal[0] == signal[1] && signal[1] == signal[2]) {
      return signal;
    }
    const Triple wanted = colours.XYZ(signal);
    Triple lights = inverse.lights(wanted);
    if (beyond(lights) <= kInGamut) {
      return panel.inputs(lights);
    }
    lights = clipped(TowardsGray(wanted, colours.white()), lights, &inverse);
    Triple inputs = panel.inputs(lights);
    const double error = de2000(single(panel.shown(inputs).cwiseMax(0.0)), single(wanted), white);
    OutOfGamut &clip = cube.clipped;
    clip.nodes++;
    clip.mean += (error - clip.mean) / static_cast<double>(clip.nodes);
    if (error > clip.worst) {
      clip.worst = error;
      clip.worst_signal = signal;
    }
    return inputs;
  };
  const double last = size - 1;
  for (int b = 0; b < size; b++) {
    for (int g = 0; g < size; g++) {
      for (int r = 0; r < size; r++) {
        vexo_vector value = single(node({r / last, g / last, b / last}));
        vexo_3dlut_set_item(cube.lut.get(), &value, b, g, r);
      }
    }
    progress((b + 1.0) / size);
  }
  return cube;
}

bool in_gamut(const PanelInputs &panel, const Triple &XYZ) {
  return beyond(Inverse(panel, kPrecision).lights(XYZ)) <= kInGamut;
}

Space panel_space(const PanelModel &model, const White &white) {
  Space space = {"the panel's at white " + white.name, primaries_of(model)};
  vexo_cs_set_w(&space.cs, white.xyz.d[0], white.xyz.d[1]);
  if (vexo_cs_matrix(&space.cs, &space.cs.npm) != 0) {
    throw Failure(kInputError, "the panel's primaries span no triangle");
  }
  return space;
}

Eigen::Matrix3d signal_matrix(Space from, Space to) {
  vexo_matrix matrix = {};
  if (vexo_cs_chad_transform(&matrix, &to.cs, &from.cs) != 0) {
    throw Failure(kInputError, "no matrix leads from " + from.name + " to " + to.name);
  }
  return doubled(matrix);
}

Triple through(vexo_3dlut *lut, const Triple &signal) {
  return trilinear(signal, vexo_3dlut_size(lut), [&](ptrdiff_t r, ptrdiff_t g, ptrdiff_t b) {
    return triple(*vexo_3dlut_item(lut, static_cast<int>(b), static_cast<int>(g), static_cast<int>(r)));
  });
}
