#include "lut/lut3d-statistics.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// Calls visit(index, entry) for every entry in order.
template <typename Visit> void for_each_entry(vexo_3dlut *lut, Visit visit) {
  const int size = vexo_3dlut_size(lut);
  for (int bi = 0; bi < size; bi++) {
    for (int gi = 0; gi < size; gi++) {
      for (int ri = 0; ri < size; ri++) {
        visit(Lut3dIndex{bi, gi, ri}, *vexo_3dlut_item(lut, bi, gi, ri));
      }
    }
  }
}

void add_distance(Lut3dExtents &extents, const vexo_vector &a, const vexo_vector &b, Lut3dIndex index) {
  for (size_t c = 0; c < 3; c++) {
    const double from = a.d[c];
    const double to = b.d[c];
    extents[c].add(std::fabs(from - to), index);
  }
}

} // namespace

void Lut3dExtent::add(double magnitude, Lut3dIndex index) {
  sum_ += magnitude;
  count_++;
  if (magnitude > largest_ || (std::isnan(magnitude) && !std::isnan(largest_))) {
    largest_ = magnitude;
    where_ = index;
  }
}

Lut3dExtents difference(vexo_3dlut *a, vexo_3dlut *b) {
  Lut3dExtents result;
  for_each_entry(a, [&](Lut3dIndex i, const vexo_vector &entry) {
    add_distance(result, entry, *vexo_3dlut_item(b, i.bi, i.gi, i.ri), i);
  });
  return result;
}

Lut3dExtents neighbour_steps(vexo_3dlut *lut) {
  Lut3dExtents result;
  for_each_entry(lut, [&](Lut3dIndex i, const vexo_vector &entry) {
    for (const vexo_vector *next :
         {vexo_3dlut_item(lut, i.bi + 1, i.gi, i.ri), vexo_3dlut_item(lut, i.bi, i.gi + 1, i.ri),
          vexo_3dlut_item(lut, i.bi, i.gi, i.ri + 1)}) {
      if (next != nullptr) {
        add_distance(result, entry, *next, i);
      }
    }
  });
  return result;
}

Lut3dRange value_range(vexo_3dlut *lut) {
  Lut3dRange range;
  std::fill_n(range.lowest, 3, std::numeric_limits<float>::infinity());
  std::fill_n(range.highest, 3, -std::numeric_limits<float>::infinity());
  for_each_entry(lut, [&](Lut3dIndex, const vexo_vector &entry) {
    for (int c = 0; c < 3; c++) {
      range.lowest[c] = std::min(range.lowest[c], entry.d[c]);
      range.highest[c] = std::max(range.highest[c], entry.d[c]);
    }
  });
  return range;
}

Lut3dGrayAxis gray_axis(vexo_3dlut *lut) {
  Lut3dGrayAxis axis = {};
  const vexo_vector *before = nullptr;
  for (int i = 0; i < vexo_3dlut_size(lut); i++) {
    const vexo_vector *gray = vexo_3dlut_item(lut, i, i, i);
    const auto [low, high] = std::minmax({gray->d[0], gray->d[1], gray->d[2]});
    axis.spread.add(static_cast<double>(high) - low, Lut3dIndex{i, i, i});
    for (int c = 0; c < 3 && before != nullptr; c++) {
      if (axis.first_fall[c] == 0 && !(gray->d[c] >= before->d[c])) {
        axis.first_fall[c] = i;
      }
    }
    before = gray;
  }
  return axis;
}
