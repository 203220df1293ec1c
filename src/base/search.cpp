// Searches a table for the first entry that reaches a value.
#include "search.h"

#include <algorithm>
#include <cmath>

#include "clones.h"

namespace vexo_internal {

namespace {

const int kBlock = 32; // entries compared at once

// Whether compilers make vector code of float comparisons: not for ARMv7, whose vectors flush denormals.
#if defined(__SSE2__) || defined(__aarch64__)
const bool kVectorFloats = true;
#else
const bool kVectorFloats = false;
#endif

// The first block of entries in which one reaches y, counted in blocks.
VEXO_VECTORISED int first_block(const float *table, int blocks, float y) {
  for (int block = 0; block < blocks; block++) {
    int reached = 0;
    for (int i = 0; i < kBlock; i++) {
      reached |= y <= table[block * kBlock + i];
    }
    if (reached != 0) {
      return block;
    }
  }
  return blocks;
}

const int kNear = 8; // entries looked at for several values at once

// Where each y is first reached in the rising entries from near on; false when one lies elsewhere.
VEXO_VECTORISED bool find_near(const float (&y)[FirstReach::kTogether], const float *near, int *__restrict found) {
  float entry[kNear];
  std::copy(near, near + kNear, entry);
  int outside = 0;
  for (int i = 0; i < FirstReach::kTogether; i++) {
    int above = 0;
    for (int k = 0; k < kNear; k++) {
      above += !(y[i] <= entry[k]);
    }
    found[i] = above;
    outside |= (above == 0) | (above == kNear);
  }
  return outside == 0;
}

} // namespace

int first_reached(const float *table, int count, float y) {
  int i = kVectorFloats ? first_block(table, count / kBlock, y) * kBlock : 0;
  while (i < count && !(y <= table[i])) {
    i++;
  }
  return i;
}

FirstReach::FirstReach(const float *table, int count)
    : table_(table), count_(count), stride_(count / kNodes + 1),
      nodes_(count / stride_ + (count % stride_ != 0 ? 1 : 0)) {
  float highest = -INFINITY;
  int node = 0;
  int left = stride_;
  for (int i = 0; i < count; i++) {
    highest = table[i] > highest ? table[i] : highest;
    highest_[node] = highest;
    left--;
    if (left == 0) {
      left = stride_;
      node++;
    }
  }
}

void FirstReach::first_of_each(const float (&y)[kTogether], int (&found)[kTogether]) {
  const int near = first(y[0]) - 1; // not reached there by the first, as a check for the others
  if (stride_ == 1 && near >= 0 && near + kNear <= nodes_ && find_near(y, highest_ + near, found)) {
    for (int &i : found) {
      i += near;
    }
    return;
  }
  for (int i = 0; i < kTogether; i++) {
    found[i] = first(y[i]);
  }
}

int FirstReach::within_node(float y) const {
  int i = at_ * stride_;
  while (i < count_ && !(y <= table_[i])) {
    i++;
  }
  return std::min(i, count_);
}

} // namespace vexo_internal
