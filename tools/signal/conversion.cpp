#include "signal/conversion.h"

#include <algorithm>
#include <cmath>

#include "text/failure.h"
#include "text/format.h"

namespace {

// Register steps per unit: 11 and 2 fractional bits.
const double kGainScale = 2048.0;
const double kOffsetScale = 4.0;

float highest_code(int bits) { return static_cast<float>((1 << bits) - 1); }

// What the registers make of a triple, before the output clip.
vexo_vector apply_registers(const vexo_csc_reg &codes, const vexo_vector &v) {
  vexo_vector out;
  for (int i = 0; i < 3; i++) {
    double sum = codes.offset[i] / kOffsetScale;
    for (int j = 0; j < 3; j++) {
      sum += codes.gain[i][j] / kGainScale * v.d[j];
    }
    out.d[i] = static_cast<float>(sum);
  }
  return out;
}

float largest_error(vexo_csc conversion, const vexo_csc_reg &codes, float top) {
  float largest = 0.0F;
  for (int corner = 0; corner < 8; corner++) {
    const vexo_vector in = {
        {(corner & 1) != 0 ? top : 0.0F, (corner & 2) != 0 ? top : 0.0F, (corner & 4) != 0 ? top : 0.0F}};
    vexo_vector exact = in;
    vexo_csc_transfrom(&conversion, &exact);
    const vexo_vector fixed = apply_registers(codes, in);
    for (int i = 0; i < 3; i++) {
      largest = std::max(largest, std::fabs(exact.d[i] - fixed.d[i]));
    }
  }
  return largest;
}

// Rounding alone moves a value by half a step at most; the rest is for the value's own precision.
bool fits(float value, short code, double scale) { return std::fabs(value * scale - code) <= 0.51; }

std::vector<SaturatedRegister> saturated(const vexo_csc &conversion, const vexo_csc_reg &codes, float top) {
  std::vector<SaturatedRegister> list;
  for (int i = 0; i < 3; i++) {
    for (int j = 0; j < 3; j++) {
      const float gain = conversion.matrix.d[i][j];
      if (!fits(gain, codes.gain[i][j], kGainScale)) {
        list.push_back({format("gain[%d][%d]", i, j), gain, codes.gain[i][j] / kGainScale});
      }
    }
  }
  for (int i = 0; i < 3; i++) {
    const float offset = conversion.offset.d[i];
    if (!fits(offset, codes.offset[i], kOffsetScale)) {
      list.push_back({format("offset[%d]", i), offset, codes.offset[i] / kOffsetScale});
    }
  }
  for (int i = 0; i < 3; i++) {
    if (top > static_cast<float>(codes.clip_max[i])) {
      list.push_back({format("max[%d]", i), top, static_cast<double>(codes.clip_max[i])});
    }
  }
  return list;
}

} // namespace

vexo_csc build_conversion(SignalInSpace from, SignalInSpace to, vexo_ccp controls) {
  auto *const build = from.signal.ycbcr ? (to.signal.ycbcr ? _vexo_csc_ycbcr_ycbcr : _vexo_csc_ycbcr_rgb)
                                        : (to.signal.ycbcr ? _vexo_csc_rgb_ycbcr : _vexo_csc_rgb_rgb);
  vexo_csc conversion;
  if (build(&conversion, &from.space.cs, &to.space.cs, from.signal.range, to.signal.range, &controls, from.signal.bits,
            to.signal.bits) != 0) {
    throw Failure(kInputError, "no conversion between these signals and colour spaces can be built");
  }
  vexo_matrix arrive = {};
  vexo_matrix leave = {};
  for (int i = 0; i < 3; i++) {
    arrive.d[from.signal.order[i]][i] = 1.0F;
    leave.d[i][to.signal.order[i]] = 1.0F;
  }
  vexo_csc_prev_matrix(&conversion, &arrive);
  vexo_csc_post_matrix(&conversion, &leave);
  return conversion;
}

Registers encode_registers(vexo_csc conversion, int input_bits, int output_bits) {
  Registers registers = {};
  vexo_csc_float_reg(&conversion, &registers.codes);
  registers.saturated = saturated(conversion, registers.codes, highest_code(output_bits));
  registers.largest_error = largest_error(conversion, registers.codes, highest_code(input_bits));
  return registers;
}
