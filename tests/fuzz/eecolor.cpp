// The eeColor readers: stream and file agree with the plain form. The first byte tells the size.
#include "library/plain/vexo-text-plain.h"
#include "lut3d.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const int points = size > 0 ? static_cast<int8_t>(data[0]) : 0;
  MemoryFile file(size > 0 ? text_of(data + 1, size - 1) : "");
  const Lut lut(vexo_3dlut_load_eecolor(file.stream(), points));
  const long position = std::ftell(file.stream());
  require(same(lut, Lut(vexo_3dlut_eecolor_load_file(file.path().c_str(), points))), "the file reads as the stream");
  const size_t count = points > 0 ? static_cast<size_t>(points) * static_cast<size_t>(points * points) : 0;
  if (count == 0 || count > size) { // an entry takes a line
    require(lut == nullptr, "no table without entries");
    return 0;
  }
  std::rewind(file.stream());
  const plain::Entries entries = plain::read_entries(file.stream(), count, plain::scan_eecolor_entry);
  require((lut != nullptr) == (entries.size() == count), "the plain form finds as many entries");
  require(lut == nullptr || bits(components(lut.get())) == bits(entries.data()->d, 3 * count), "and the same");
  require(lut == nullptr || position == std::ftell(file.stream()), "and reads as much");
  return 0;
}
