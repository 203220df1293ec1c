// The readers of 1D LUT text files behind the exported ones, which the command-line tool asks for more than tables.
#ifndef VEXO_GAMMA_READERS_H
#define VEXO_GAMMA_READERS_H

#include <cstdio>

#include "base/remarks.h"
#include "vexo-gamma.h"

namespace vexo_internal {

// vexo_luts_load_int() and vexo_luts_load_file(), with a collector or null. It hears of a size line, of the depth, of
// every entry, of every line that is none and yet takes an entry's place, and of too few lines. For a collector alone
// the reader looks behind the last entry, and tells each line there as one too many.
int read_integer_luts(FILE *f, vexo_lut *lut, const Collector *collector);
int read_decimal_luts(FILE *f, vexo_lut *lut, const Collector *collector);

// vexo_lut_load_custom(), with a collector or null. It hears of every number and of every line that is none; for a
// collector alone the reader looks behind the last number that it takes, and tells each number there as one too many.
int read_column(FILE *f, vexo_lut *lut, const Collector *collector);

} // namespace vexo_internal

#endif
