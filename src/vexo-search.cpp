// Searches a table for the first entry that reaches a value.
#include "vexo-search.h"

#include <algorithm>

#include "vexo-clones.h"

namespace vexo_internal {

namespace {

const int kBlock = 32; // entries compared at once

// The first block of entries in which one reaches y, counted in blocks.
VEXO_CLONES int first_block(const float *table, int blocks, float y) {
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

} // namespace

int first_reached(const float *table, int count, float y) {
  int i = first_block(table, count / kBlock, y) * kBlock;
  while (i < count && !(y <= table[i])) {
    i++;
  }
  return i;
}

FirstReach::FirstReach(const float *table, int count)
    : table_(table), count_(count), stride_(count / kNodes + 1), nodes_(count / stride_ + (count % stride_ != 0)) {
  float highest = table[0];
  for (int node = 0; node < nodes_; node++) {
    const int end = node + 1 == nodes_ ? count : (node + 1) * stride_;
    for (int i = node * stride_; i < end; i++) {
      if (table[i] > highest || !(highest == highest)) {
        highest = table[i];
      }
    }
    highest_[node] = highest;
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
