// The capacity of the ramp measurements and the rows in use.
#ifndef VEXO_ROWS_H
#define VEXO_ROWS_H

#include "vexo.h"

namespace vexo_internal {

const int kRows = 64;

// The rows to read: a count outside 0..64 stands for the nearest.
inline int rows_of(const vexo_lcnr *lcnr) {
  if (lcnr->num < 0) {
    return 0;
  }
  return lcnr->num < kRows ? lcnr->num : kRows;
}

} // namespace vexo_internal

#endif
