// The readers of 3D LUT files behind the exported ones, which the command-line tool asks for more than a table.
#ifndef VEXO_3DLUT_READERS_H
#define VEXO_3DLUT_READERS_H

#include <cstdint>
#include <cstdio>

#include "base/remarks.h"
#include "vexo-3dlut.h"

namespace vexo_internal {

// vexo_3dlut_load_cube(), with a collector or null. It hears of the size, of a missing one, of every line passed over
// and of too few entries. For a collector alone the reader looks behind the last entry: for lines passed over and for
// entries that are too many.
vexo_3dlut *read_cube(FILE *f, const Collector *collector);

// vexo_3dlut_load_eecolor(), likewise.
vexo_3dlut *read_eecolor(FILE *f, int size, const Collector *collector);

// The number of entries from here to the end of an eeColor file, which does not tell its size.
long long count_eecolor(FILE *f);

// What a packed file says of itself.
struct PackedHeader {
  uint32_t magic;
  uint32_t version;
  uint32_t nbits;
  int size;
  char model[17]; // with a NUL
};
const uint32_t kPackedMagic = 0x42340299;
const uint32_t kPackedVersion = 0x02000000;

// False when the file is shorter than a header.
bool read_packed_header(FILE *f, PackedHeader *header);

// Whether the words of a version are those of the packed format.
bool packed_version(uint32_t version);

} // namespace vexo_internal

#endif
