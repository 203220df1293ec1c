// The tables that a calibration context is made of.
#ifndef VEXO_TABLES_H
#define VEXO_TABLES_H

#include "vexo.h"

namespace vexo_internal {

// Fills the context's 1024-level xyY tables from its measurements, as both recipes begin. Returns 0, or -1 when the
// measurements make no tables.
int make_tables(vexo *panel);

} // namespace vexo_internal

#endif
