// The record of a 3D LUT and how one is made.
#ifndef VEXO_3DLUT_TABLE_H
#define VEXO_3DLUT_TABLE_H

#include <cstddef>
#include <memory>

#include "vexo-3dlut.h"

struct vexo_3dlut {
  char *title;    // owned; may be null
  int size;       // nodes per axis, at least 1
  vexo_vector *d; // owned; size^3 nodes, red index fastest
};

namespace vexo_internal {

struct DestroyTable {
  void operator()(vexo_3dlut *lut) const { vexo_3dlut_destroy(lut); }
};
using OwnedTable = std::unique_ptr<vexo_3dlut, DestroyTable>;

// The nodes of a table of that size; 0 when the size is below 1 or the host cannot count their bytes.
size_t node_count(int size);

// A table whose nodes are not set; null when there is no memory for it, or the size is below 1. A size in a header uses
// no memory until data arrive.
OwnedTable new_table(int size, const char *title);

} // namespace vexo_internal

#endif
