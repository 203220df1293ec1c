// Transfer curves and one-dimensional LUTs. Values are single precision; powers, table inputs i / (size - 1) and the
// blend are formed in double and rounded once.
#include "vexo-gamma.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "base/codes.h"
#include "base/exact.h"
#include "base/owners.h"
#include "base/search.h"

using vexo_internal::Block;
using vexo_internal::block_of;
using vexo_internal::first_reached;
using vexo_internal::lerp;
using vexo_internal::max_code;
using vexo_internal::quantise_short;
using vexo_internal::rounded;
using vexo_internal::table_at;
using vexo_internal::valid_depth;

namespace {

// Stores the size and takes over the storage allocated for it.
int adopt(vexo_lut *lut, int size, void *storage) {
  lut->size = size;
  lut->d = static_cast<float *>(storage);
  if (lut->d == nullptr) {
    fputs("vexo_lut_init: malloc failed.\n", stderr);
    return -1;
  }
  return 0;
}

float normalised_input(int i, int size) {
  return static_cast<float>(static_cast<double>(i) / (static_cast<double>(size) - 1.0));
}

// The normalised distance between the entries of a table of size entries.
float step_of(int size) { return static_cast<float>(1.0 / (static_cast<double>(size) - 1.0)); }

void sample_curve(float (*curve)(vexo_gamma *, float), vexo_gamma *gamma, vexo_lut *lut) {
  if (lut->size < 2) {
    return;
  }
  for (int i = 0; i < lut->size; i++) {
    lut->d[i] = curve(gamma, normalised_input(i, lut->size));
  }
}

// vexo_lut_inverse(), where entry i + 1 is the first after entry 0 that reaches y. There is none when i is the last.
float inverse_in_segment(const vexo_lut *lut, int i, float y) {
  if (y <= 0.0F) {
    return 0.0F;
  }
  const float *d = lut->d;
  const int n = lut->size - 1;
  if (y >= 1.0F || i >= n) {
    return 1.0F;
  }
  if (d[i + 1] == d[i]) { // only the first segment can be flat here: any other begins below y
    return -1.0F;
  }
  const float t = (y - d[i]) / (d[i + 1] - d[i]);
  const double position =
      static_cast<double>(t * static_cast<float>(i + 1)) + (1.0 - static_cast<double>(t)) * static_cast<double>(i);
  return static_cast<float>(position / static_cast<double>(n));
}

// first_reached() for many values that mostly rise.
//   Searched: any table of any size.
//   Order: from the last answer upward; from the start again for a value that an entry passed over reaches.
//   End: an entry reaches the value, or the table ends.
//   Result: the first entry that reaches the value, or count.
class RisingSearch {
public:
  RisingSearch(const float *table, int count) : table_(table), count_(count) {}

  int first(float y) {
    if (y <= passed_) {
      at_ = 0;
      passed_ = -INFINITY;
    }
    for (; at_ < count_ && !(y <= table_[at_]); at_++) {
      passed_ = std::max(passed_, table_[at_]); // a NaN stays out
    }
    return at_;
  }

private:
  const float *table_;
  int count_;
  int at_ = 0;
  float passed_ = -INFINITY; // the highest entry before at_
};

} // namespace

static_assert(sizeof(vexo_gamma) == 16 && sizeof(vexo_lut) == 2 * sizeof(void *), "part of the binary interface");

void vexo_gamma_init(vexo_gamma *gamma, float g) { *gamma = vexo_gamma{0.0F, 0.0F, g, 0.0F}; }

float vexo_gamma_evaluate(vexo_gamma *gamma, float x) {
  if (x <= 0.0F) {
    return 0.0F;
  }
  if (x >= 1.0F) {
    return 1.0F;
  }
  if (x < gamma->transition) {
    return gamma->slope * x;
  }
  const double offset = static_cast<double>(gamma->offset);
  const double x_power = std::pow(static_cast<double>(x), static_cast<double>(gamma->gamma));
  return static_cast<float>((offset + 1.0) * x_power - offset);
}

float vexo_gamma_inverse(vexo_gamma *gamma, float y) {
  if (y <= 0.0F) {
    return 0.0F;
  }
  if (y >= 1.0F) {
    return 1.0F;
  }
  if (y < gamma->slope * gamma->transition) {
    return y / gamma->slope;
  }
  if (gamma->gamma == 0.0F) {
    return -1.0F;
  }
  const double base = static_cast<double>(y + gamma->offset) / (static_cast<double>(gamma->offset) + 1.0);
  return static_cast<float>(std::pow(base, 1.0 / static_cast<double>(gamma->gamma)));
}

int vexo_lut_init(vexo_lut *lut, int size) {
  return adopt(lut, size, size >= 0 ? block_of<float>(static_cast<size_t>(size)).release() : nullptr);
}

int vexo_lut_init_zero(vexo_lut *lut, int size) {
  return adopt(lut, size, size >= 0 ? calloc(static_cast<size_t>(size), sizeof(float)) : nullptr);
}

void vexo_lut_destroy(vexo_lut *lut) {
  lut->size = 0;
  free(lut->d);
  lut->d = nullptr;
}

void vexo_lut_set_data(vexo_lut *lut, float *data) {
  if (lut->size > 0) {
    memcpy(lut->d, data, static_cast<size_t>(lut->size) * sizeof(float));
  }
}

void vexo_lut_by_gamma(vexo_gamma *gamma, vexo_lut *lut) { sample_curve(vexo_gamma_evaluate, gamma, lut); }

void vexo_lut_by_linear_gamma(vexo_lut *lut) {
  vexo_gamma linear;
  vexo_gamma_init(&linear, 1.0F);
  vexo_lut_by_gamma(&linear, lut);
}

void vexo_lut_inverse_gamma(vexo_gamma *gamma, vexo_lut *lut) { sample_curve(vexo_gamma_inverse, gamma, lut); }

int vexo_lut_init_with_gamma(vexo_lut *lut, int size, float g) {
  if (vexo_lut_init(lut, size) != 0) {
    return -1;
  }
  vexo_gamma gamma;
  vexo_gamma_init(&gamma, g);
  if (size == 1) {
    lut->d[0] = vexo_gamma_evaluate(&gamma, 0.0F);
  }
  vexo_lut_by_gamma(&gamma, lut);
  return 0;
}

float vexo_lut_evaluate(const vexo_lut *lut, float x) {
  if (lut->size < 1) {
    return -1.0F;
  }
  return x > 0.0F ? table_at(lut->d, lut->size - 1, x) : lut->d[0];
}

float vexo_lut_inverse(vexo_lut *lut, float y) {
  return inverse_in_segment(lut, lut->size < 2 ? 0 : first_reached(lut->d + 1, lut->size - 1, y), y);
}

int vexo_lut_dup(vexo_lut *dst, const vexo_lut *src) {
  if (dst->size < 2 || src->size < 1) {
    return 0;
  }
  const float scale =
      static_cast<float>((static_cast<double>(src->size) - 1.0) / (static_cast<double>(dst->size) - 1.0));
  for (int i = 0; i < dst->size; i++) {
    dst->d[i] = vexo_lut_evaluate(src, static_cast<float>(i) * scale);
  }
  return 0;
}

void vexo_convert_lut(vexo_lut *dst, vexo_lut *src) {
  if (dst->size < 1 || src->size < 1) {
    return;
  }
  if (src->size == dst->size) {
    vexo_lut_dup(dst, src);
    return;
  }
  const int src_last = src->size - 1;
  const int dst_last = dst->size - 1;
  const float src_step = step_of(src->size);
  const float dst_step = step_of(dst->size);
  dst->d[0] = src->d[0];
  for (int i = 1; i < dst_last; i++) {
    dst->d[i] = table_at(src->d, src_last, static_cast<float>(i) * dst_step / src_step);
  }
  dst->d[dst_last] = src->d[src_last];
}

void vexo_lut_merge(vexo_lut *src0, vexo_lut *src1, vexo_lut *dst) {
  if (src0->size < 2 || src1->size < 2 || dst->size < 2) {
    return;
  }
  const float src0_step = step_of(src0->size);
  const float src1_step = step_of(src1->size);
  const float dst_step = step_of(dst->size);
  for (int i = 0; i < dst->size; i++) {
    const float y = table_at(src0->d, src0->size - 1, static_cast<float>(i) * dst_step / src0_step);
    dst->d[i] = table_at(src1->d, src1->size - 1, y / src1_step);
  }
}

void vexo_interpolate_linear(int num, int *nx, float *ny, float *lut) {
  if (num < 1) {
    return;
  }
  for (int k = 0; k + 1 < num; k++) {
    const int length = nx[k + 1] - nx[k];
    const float step = length > 0 ? (ny[k + 1] - ny[k]) / static_cast<float>(length) : 0.0F;
    for (int m = 0; m < length; m++) {
      lut[nx[k] + m] = ny[k] + static_cast<float>(m) * step;
    }
  }
  lut[nx[num - 1]] = ny[num - 1];
}

int vexo_data_normalize(float *data, int size) {
  const int last = size - 1;
  if (last < 1 || !(data[last] > data[0])) {
    return -1;
  }
  for (int i = 0; i + 1 < last;) {
    int j = i + 1;
    while (j < last && !(data[i] < data[j] && data[j] < data[last])) {
      j++;
    }
    const float length = static_cast<float>(j - i);
    for (int k = i + 1; k < j; k++) {
      data[k] = lerp(data[i], data[j], (static_cast<float>(k) - static_cast<float>(i)) / length);
    }
    i = j;
  }
  return 0;
}

int vexo_lut_data_normalize(float *data, int size) {
  if (vexo_data_normalize(data, size) != 0) {
    return -1;
  }
  const float first = data[0];
  const float last = data[size - 1];
  if (first == 0.0F && last == 1.0F) {
    return 0;
  }
  for (int k = 1; k < size - 1; k++) {
    data[k] = (data[k] - first) / (last - first);
  }
  data[0] = 0.0F;
  data[size - 1] = 1.0F;
  return 0;
}

int vexo_lut_to_uint(vexo_lut *lut, unsigned short *data, int nbits) {
  if (!valid_depth(nbits)) {
    return -1;
  }
  const float max_value = max_code(nbits);
  for (int i = 0; i < lut->size; i++) {
    data[i] = quantise_short(lut->d[i], max_value);
  }
  return 0;
}

void vexo_gamma_lut_invert(vexo_lut *lut, vexo_gamma *camera, vexo_gamma *system, vexo_lut *panel) {
  if (lut->size < 2 || panel->size < 2) {
    return;
  }
  RisingSearch search(panel->d + 1, panel->size - 1);
  const float lut_step = step_of(lut->size);
  for (int i = 0; i < lut->size; i++) {
    const float scene = vexo_gamma_inverse(camera, static_cast<float>(i) * lut_step);
    const float light = vexo_gamma_evaluate(system, scene);
    lut->d[i] = inverse_in_segment(panel, search.first(light), light);
  }
}

int vexo_gamma_lut_invert_2(vexo_lut *lut, vexo_gamma *camera, vexo_gamma *system, vexo_lut *panel) {
  if (lut->size < 2 || panel->size < 2) {
    return -1;
  }
  const Block<int> nx = block_of<int>(static_cast<size_t>(lut->size));
  const Block<float> ny = block_of<float>(static_cast<size_t>(lut->size));
  if (nx == nullptr || ny == nullptr) {
    return -1;
  }
  const float panel_step = step_of(panel->size);
  size_t knots = 0;
  int position = 0;
  int drives = 0;
  float sum = 0.0F;
  const auto store_knot = [&] {
    nx[knots] = position;
    ny[knots] = drives > 0 ? sum / static_cast<float>(drives) : 0.0F;
    knots++;
  };
  for (int j = 0; j < panel->size; j++) {
    const float scene = vexo_gamma_inverse(system, panel->d[j]);
    const double code = static_cast<double>(vexo_gamma_evaluate(camera, scene));
    const int entry = rounded(code * (static_cast<double>(lut->size) - 1.0), 0, lut->size - 1);
    if (entry > position) {
      store_knot();
      position = entry;
      drives = 0;
      sum = 0.0F;
    }
    sum += static_cast<float>(j) * panel_step;
    drives++;
  }
  store_knot();
  vexo_interpolate_linear(static_cast<int>(knots), nx.get(), ny.get(), lut->d);
  return 0;
}

void vexo_gamma_generate_lut(vexo_gamma *in, vexo_gamma *out, vexo_lut *lut) {
  if (lut->size < 2) {
    return;
  }
  for (int i = 0; i < lut->size; i++) {
    const float x = static_cast<float>(i) / static_cast<float>(lut->size - 1);
    lut->d[i] = vexo_gamma_inverse(out, vexo_gamma_evaluate(in, x));
  }
}
