// The LCNR file on an open stream, behind the exported reader and writer of paths.
#ifndef VEXO_LCNR_STREAMS_H
#define VEXO_LCNR_STREAMS_H

#include <cstdio>

#include "base/remarks.h"
#include "vexo.h"

namespace vexo_internal {

// vexo_load_lcnr_xml() without its messages: the collector hears of every outermost LEVEL, of every row, of those too
// many for the record, and of why the file is refused.
int read_lcnr(FILE *f, vexo_lcnr *lcnr, const Collector *collector);

void write_lcnr(FILE *f, vexo_lcnr *lcnr);

} // namespace vexo_internal

#endif
