// Resampling and packed words of 3D LUTs in their plain form, entry by entry: what the library's faster forms are
// checked against, and measured by.
#ifndef VEXO_TESTS_3DLUT_PLAIN_H
#define VEXO_TESTS_3DLUT_PLAIN_H

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>

#include "vexo-3dlut.h"
#include "vexo-util.h"

namespace plain {

// Component c of the source at index m and fraction e of each axis. An axis on its last index drops out.
inline float interpolated(vexo_3dlut *src, const int (&m)[3], const float (&e)[3], int c) {
  const int last = vexo_3dlut_size(src) - 1;
  const auto at = [&](int b, int g, int r) { return vexo_3dlut_item(src, m[0] + b, m[1] + g, m[2] + r)->d[c]; };
  float red[2][2]; // along red, for each blue and green neighbour
  for (int b = 0; b < 2 && m[0] + b <= last; b++) {
    for (int g = 0; g < 2 && m[1] + g <= last; g++) {
      float v[2] = {at(b, g, 0), m[2] < last ? at(b, g, 1) : 0.0F};
      red[b][g] = m[2] < last ? linear_inter(e[2], v) : v[0];
    }
  }
  float green[2];
  for (int b = 0; b < 2 && m[0] + b <= last; b++) {
    green[b] = m[1] < last ? linear_inter(e[1], red[b]) : red[b][0];
  }
  return m[0] < last ? linear_inter(e[0], green) : green[0];
}

// dst = src resampled; both of more than one point an axis and of different sizes.
inline void resample(vexo_3dlut *dst, vexo_3dlut *src) {
  const int size = vexo_3dlut_size(dst);
  const float scale =
      static_cast<float>((static_cast<double>(size) - 1.0) / (static_cast<double>(vexo_3dlut_size(src)) - 1.0));
  for (int bi = 0; bi < size; bi++) {
    for (int gi = 0; gi < size; gi++) {
      for (int ri = 0; ri < size; ri++) {
        const int target[3] = {bi, gi, ri};
        int m[3];
        float e[3];
        for (int axis = 0; axis < 3; axis++) {
          const float position = static_cast<float>(target[axis]) / scale;
          m[axis] = static_cast<int>(std::floor(position));
          e[axis] = position - static_cast<float>(m[axis]);
        }
        vexo_vector v;
        for (int c = 0; c < 3; c++) {
          v.d[c] = interpolated(src, m, e, c);
        }
        vexo_3dlut_set_item(dst, &v, bi, gi, ri);
      }
    }
  }
}

// ---- Codes, a call of the C library an entry

inline uint32_t code_of(float value, float scale, uint32_t most) {
  const float code = std::round(scale * value);
  return !(code > 0.0F) ? 0 : code < static_cast<float>(most) ? static_cast<uint32_t>(code) : most;
}

inline uint32_t word_of(const vexo_vector &v, float scale, uint32_t most, int shift) {
  return code_of(v.d[2], scale, most) << 2 * shift | code_of(v.d[1], scale, most) << shift |
         code_of(v.d[0], scale, most);
}

// Words of ten bits a component. Gives the words written.
inline size_t write_words(std::FILE *f, const vexo_vector *entries, size_t count) {
  size_t written = 0;
  for (size_t i = 0; i < count; i++) {
    const uint32_t word = word_of(entries[i], 1023.0F, 1023, 10);
    const uint8_t byte[4] = {static_cast<uint8_t>(word >> 24), static_cast<uint8_t>(word >> 16 & 0xFFU),
                             static_cast<uint8_t>(word >> 8 & 0xFFU), static_cast<uint8_t>(word & 0xFFU)};
    written += std::fwrite(byte, sizeof byte, 1, f);
  }
  return written;
}

inline bool read_words(std::FILE *f, vexo_vector *entries, size_t count) {
  for (size_t i = 0; i < count; i++) {
    uint8_t byte[4];
    if (std::fread(byte, sizeof byte, 1, f) != 1) {
      return false;
    }
    const uint32_t word =
        uint32_t{byte[0]} << 24 | uint32_t{byte[1]} << 16 | uint32_t{byte[2]} << 8 | uint32_t{byte[3]};
    for (int c = 0; c < 3; c++) {
      entries[i].d[c] = static_cast<float>(word >> 10 * c & 1023U) / 1023.0F;
    }
  }
  return true;
}

} // namespace plain

#endif
