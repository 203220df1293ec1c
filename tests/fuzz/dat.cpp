// The packed readers: stream, file and buffer agree, and what is written reads back to the same bits.
#include <vector>

#include "lut3d.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  MemoryFile file(text_of(data, size));
  const Lut lut(vexo_3dlut_load_dat(file.stream()));
  require(same(lut, Lut(vexo_3dlut_dat_load_file(file.path().c_str()))), "the file reads as the stream");
  std::vector<uint8_t> bytes(data, data + size);
  const Lut buffered(vexo_3dlut_dat_load_buf(bytes.data(), static_cast<int>(size)));
  require(lut == nullptr || same(lut, buffered), "the buffer reads as the stream");
  if (buffered == nullptr) {
    return 0;
  }
  const uint32_t version =
      uint32_t{bytes[4]} | uint32_t{bytes[5]} << 8 | uint32_t{bytes[6]} << 16 | uint32_t{bytes[7]} << 24;
  require((lut != nullptr) == (version >= 0x02000000 && version != 0x03000000), "only the version makes a difference");
  MemoryFile copy(written([&](std::FILE *f) { vexo_3dlut_dump_dat(buffered.get(), f, bytes[64]); }));
  require(same(buffered, Lut(vexo_3dlut_load_dat(copy.stream()))), "what was written reads back");
  return 0;
}
