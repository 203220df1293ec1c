// Owned 3D LUTs and tables filled from a function.
#ifndef VEXO_TESTS_LUT3D_H
#define VEXO_TESTS_LUT3D_H

#include <cstddef>
#include <memory>
#include <vector>

#include "vexo-3dlut.h"

struct DestroyLut {
  void operator()(vexo_3dlut *lut) const { vexo_3dlut_destroy(lut); }
};
using Lut = std::unique_ptr<vexo_3dlut, DestroyLut>;

// All components in memory order.
inline std::vector<float> components(vexo_3dlut *lut) {
  const size_t size = static_cast<size_t>(vexo_3dlut_size(lut));
  const float *first = vexo_3dlut_item(lut, 0, 0, 0)->d;
  return std::vector<float>(first, first + 3 * size * size * size);
}

// A table whose entry (bi, gi, ri) is value(bi, gi, ri).
template <typename Value> Lut table(int size, const char *title, Value value) {
  Lut lut(vexo_3dlut_create(size, title));
  for (int bi = 0; bi < size; bi++) {
    for (int gi = 0; gi < size; gi++) {
      for (int ri = 0; ri < size; ri++) {
        vexo_vector v = value(bi, gi, ri);
        vexo_3dlut_set_item(lut.get(), &v, bi, gi, ri);
      }
    }
  }
  return lut;
}

#endif
