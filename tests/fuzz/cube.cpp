// The cube readers: stream and file agree with the plain form, the buffer where its rules are the same, and what is
// written reads back.
#include <algorithm>
#include <cstring>

#include "library/plain/vexo-text-plain.h"
#include "lut3d.h"

namespace {

// Reads up to and with the line that tells the size; 0 without one.
size_t plain_size(std::FILE *f) {
  char line[256];
  while (std::fgets(line, sizeof line, f) != nullptr) {
    const char *title = std::strstr(line, "TITLE");
    const char *size = std::strstr(line, "LUT_3D_SIZE");
    long long number = 0;
    if (line[0] != '#' && (title == nullptr || title[5 + std::strspn(title + 5, " \t\n\v\f\r")] != '"') &&
        size != nullptr && std::sscanf(size + 11, "%lld", &number) == 1) {
      return number >= 1 && number <= INT_MAX ? static_cast<size_t>(number) : 0;
    }
  }
  return 0;
}

bool plain_agrees(MemoryFile &file, const Lut &lut, size_t length) {
  const long position = std::ftell(file.stream());
  std::rewind(file.stream());
  const size_t size = plain_size(file.stream());
  if (size == 0 || size > length || size * size * size > length) { // an entry takes a line
    return lut == nullptr;
  }
  const size_t count = size * size * size;
  const plain::Entries entries = plain::read_entries(file.stream(), count, plain::scan_cube_entry);
  if (lut == nullptr || entries.size() < count) {
    return lut == nullptr && entries.size() < count;
  }
  return position == std::ftell(file.stream()) &&
         bits(components(lut.get())) == bits(entries.data()->d, 3 * entries.size());
}

// Comments, long lines and lines with both keywords are another matter in a buffer.
bool means_the_same_in_a_buffer(const std::string &text) {
  for (size_t begin = 0; begin < text.size();) {
    const size_t end = std::min(text.find('\n', begin), text.size());
    const std::string line = text.substr(begin, end - begin);
    if (line.size() > 254 ||
        (line.find("TITLE") != std::string::npos && line.find("LUT_3D_SIZE") != std::string::npos)) {
      return false;
    }
    begin = end + 1;
  }
  return text.find_first_of(std::string("#\0", 2)) == std::string::npos;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::string text = text_of(data, size);
  MemoryFile file(text);
  const Lut lut(vexo_3dlut_load_cube(file.stream()));
  require(plain_agrees(file, lut, size), "the plain form reads the same");
  require(same(lut, Lut(vexo_3dlut_cube_load_file(file.path().c_str()))), "the file reads as the stream");
  std::string buffer = text;
  const Lut buffered(vexo_3dlut_cube_load_buf(buffer.data(), static_cast<int>(size)));
  require(!means_the_same_in_a_buffer(text) || same(lut, buffered), "the buffer reads as the stream");
  if (lut != nullptr && title_of(lut).size() < 240) {
    const auto dump = [](const Lut &any) { return written([&](std::FILE *f) { vexo_3dlut_dump_cube(any.get(), f); }); };
    MemoryFile copy(dump(lut));
    const Lut again(vexo_3dlut_load_cube(copy.stream()));
    require(again != nullptr && title_of(again) == title_of(lut), "what was written is read");
    require(dump(again) == copy.contents(), "what was written reads back");
  }
  return 0;
}
