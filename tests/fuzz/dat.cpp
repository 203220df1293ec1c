// The packed readers: stream, file and buffer agree with the plain form, and what is written reads back to the same
// bits.
#include <vector>

#include "lut3d.h"

namespace {

// Whether the entries are the codes of the words behind the header, most significant byte first.
bool plain_agrees(const Lut &lut, const std::vector<uint8_t> &bytes) {
  const std::vector<float> values = components(lut.get());
  const uint32_t full = (1U << bytes[64]) - 1U;
  for (size_t i = 0; i < values.size(); i++) {
    const uint8_t *byte = &bytes[128 + i / 3 * 4];
    const uint32_t word = uint32_t{byte[0]} << 24 | uint32_t{byte[1]} << 16 | uint32_t{byte[2]} << 8 | byte[3];
    const uint32_t code = word >> i % 3 * bytes[64] & full;
    if (bits(values[i]) != bits(static_cast<float>(code) / static_cast<float>(full))) {
      return false;
    }
  }
  return true;
}

} // namespace

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
  require(plain_agrees(buffered, bytes), "entries are codes of their depth");
  const uint32_t version =
      uint32_t{bytes[4]} | uint32_t{bytes[5]} << 8 | uint32_t{bytes[6]} << 16 | uint32_t{bytes[7]} << 24;
  require((lut != nullptr) == (version >= 0x02000000 && version != 0x03000000), "only the version makes a difference");
  MemoryFile copy(written([&](std::FILE *f) { vexo_3dlut_dump_dat(buffered.get(), f, bytes[64]); }));
  require(same(buffered, Lut(vexo_3dlut_load_dat(copy.stream()))), "what was written reads back");
  return 0;
}
