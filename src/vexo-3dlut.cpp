// Three-dimensional LUTs: the table and its trilinear resampling. Nodes and positions are single precision, the
// identity and the blend double, rounded once.
#include "vexo-3dlut.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "base/exact.h"
#include "base/owners.h"
#include "vexo-3dlut-table.h"

using vexo_internal::Block;
using vexo_internal::block_of;
using vexo_internal::lerp;
using vexo_internal::OwnedTable;

// ---- The table

namespace {

// The bytes of size^3 nodes; 0 when size is below 1 or the host cannot count them (32-bit hosts from size 711).
size_t table_bytes(int size) {
  if (size < 1) {
    return 0;
  }
  const auto points = static_cast<size_t>(size);
  size_t bytes = sizeof(vexo_vector);
  for (int axis = 0; axis < 3; axis++) {
    if (bytes > SIZE_MAX / points) {
      return 0;
    }
    bytes *= points;
  }
  return bytes;
}

enum class Nodes { zero, unset };

OwnedTable created(int size, const char *title, Nodes nodes) {
  const size_t bytes = table_bytes(size);
  if (bytes == 0) {
    return nullptr;
  }
  OwnedTable lut(static_cast<vexo_3dlut *>(calloc(1, sizeof(vexo_3dlut))));
  if (lut == nullptr) {
    return nullptr;
  }
  lut->d = static_cast<vexo_vector *>(nodes == Nodes::zero ? calloc(bytes, 1) : malloc(bytes));
  if (lut->d == nullptr) {
    return nullptr;
  }
  lut->size = size;
  vexo_3dlut_set_title(lut.get(), title);
  return lut;
}

bool on_axis(const vexo_3dlut *lut, int i) { return i >= 0 && i < lut->size; }

} // namespace

namespace vexo_internal {

size_t node_count(int size) { return table_bytes(size) / sizeof(vexo_vector); }

OwnedTable new_table(int size, const char *title) { return created(size, title, Nodes::unset); }

} // namespace vexo_internal

vexo_3dlut *vexo_3dlut_create(int size, const char *title) { return created(size, title, Nodes::zero).release(); }

void vexo_3dlut_destroy(vexo_3dlut *lut) {
  free(lut->title);
  free(lut->d);
  free(lut);
}

int vexo_3dlut_init_unit(vexo_3dlut *lut) {
  const double last = static_cast<double>(lut->size) - 1.0;
  const auto input = [last](int i) { return last > 0.0 ? static_cast<float>(static_cast<double>(i) / last) : 0.0F; };
  vexo_vector *node = lut->d;
  for (int bi = 0; bi < lut->size; bi++) {
    for (int gi = 0; gi < lut->size; gi++) {
      for (int ri = 0; ri < lut->size; ri++) {
        *node++ = vexo_vector{{input(ri), input(gi), input(bi)}};
      }
    }
  }
  return 0;
}

vexo_vector *vexo_3dlut_item(vexo_3dlut *lut, int bi, int gi, int ri) {
  if (!on_axis(lut, bi) || !on_axis(lut, gi) || !on_axis(lut, ri)) {
    return nullptr;
  }
  const auto size = static_cast<size_t>(lut->size);
  return &lut->d[(static_cast<size_t>(bi) * size + static_cast<size_t>(gi)) * size + static_cast<size_t>(ri)];
}

int vexo_3dlut_set_item(vexo_3dlut *lut, vexo_vector *v, int bi, int gi, int ri) {
  vexo_vector *node = vexo_3dlut_item(lut, bi, gi, ri);
  if (node == nullptr) {
    return -1;
  }
  vexo_vector_copy(node, v);
  return 0;
}

int vexo_3dlut_size(vexo_3dlut *lut) { return lut->size; }

char *vexo_3dlut_title(vexo_3dlut *lut) { return lut->title; }

int vexo_3dlut_set_title(vexo_3dlut *lut, const char *title) {
  char *copy = title != nullptr ? strdup(title) : nullptr; // before the release: title may be the LUT's own
  free(lut->title);
  lut->title = copy;
  return title != nullptr && copy == nullptr ? -1 : 0;
}

// ---- Resampling: the table along red, then along green, then along blue. That gives each node the same seven blends,
// in the same order, as trilinear interpolation of its eight neighbours would; nodes on one line share the first ones.

namespace {

// Resamples the middle one of three nested axes: outer x source x inner values become outer x target x inner. The scale
// is target steps per source step; infinite for a source of one point, which puts every position at 0. The last
// position comes out a little above or below the last source index: never a whole step above, and below it the fraction
// is just short of 1.
void resample_axis(const float *in, size_t outer, int source, size_t inner, int target, float *out) {
  const auto scale = static_cast<float>((static_cast<double>(target) - 1.0) / (static_cast<double>(source) - 1.0));
  for (size_t o = 0; o < outer; o++) {
    for (int i = 0; i < target; i++) {
      const float position = static_cast<float>(i) / scale;
      const int lower = static_cast<int>(position);
      const float *low = in + (o * static_cast<size_t>(source) + static_cast<size_t>(lower)) * inner;
      if (lower == source - 1) {
        memcpy(out, low, inner * sizeof *out);
      } else {
        const float fraction = position - static_cast<float>(lower);
        for (size_t k = 0; k < inner; k++) {
          out[k] = lerp(low[k], low[inner + k], fraction);
        }
      }
      out += inner;
    }
  }
}

bool resample(const vexo_3dlut *src, vexo_3dlut *dst) {
  const auto source = static_cast<size_t>(src->size);
  const auto target = static_cast<size_t>(dst->size);
  const Block<float> red = block_of<float>(3 * source * source * target);
  const Block<float> green = block_of<float>(3 * source * target * target);
  if (red == nullptr || green == nullptr) {
    return false;
  }
  resample_axis(src->d->d, source * source, src->size, 3, dst->size, red.get());
  resample_axis(red.get(), source, src->size, 3 * target, dst->size, green.get());
  resample_axis(green.get(), 1, src->size, 3 * target * target, dst->size, dst->d->d);
  return true;
}

} // namespace

vexo_3dlut *vexo_3dlut_dup(vexo_3dlut *src, int size, const char *title) {
  OwnedTable lut = vexo_internal::new_table(size != 0 ? size : src->size, title != nullptr ? title : src->title);
  if (lut == nullptr) {
    return nullptr;
  }
  if (lut->size == src->size || lut->size == 1) { // a single point takes the first node
    memcpy(lut->d, src->d, table_bytes(lut->size));
  } else if (!resample(src, lut.get())) {
    return nullptr;
  }
  return lut.release();
}
