// The readers of the library, one per target: stream, file and memory agree, and what is written reads back. Numbers in
// text are read as scanf reads them. VEXO_TARGET is the reader of this program.
#include <algorithm>
#include <cmath>

#include "../lut3d.h"
#include "fuzz.h"
#include "scan.h"
#include "vexo.h"

namespace {

[[maybe_unused]] void numbers(const std::string &text) {
  for (size_t at = 0; at <= text.size(); at++) {
    require(reads_as_scanf<float>(text.c_str() + at, "%f%n"), "scanf reads the same number");
    require(reads_as_scanf<unsigned long long>(text.c_str() + at, "%llu%n"), "scanf reads the same integer");
  }
}

// The title and the bits of a table; every NaN alike.
std::string content(const Lut &lut) {
  if (lut == nullptr) {
    return "none";
  }
  const char *title = vexo_3dlut_title(lut.get());
  std::string bytes = title != nullptr ? title : "";
  for (float x : components(lut.get())) {
    x = std::isnan(x) ? std::nanf("") : x;
    bytes.append(reinterpret_cast<const char *>(&x), sizeof x);
  }
  return bytes;
}

// Comments, long lines and lines with both keywords are another matter in memory.
bool means_the_same_in_memory(const std::string &text) {
  size_t length = 0;
  for (const char c : text) {
    length = c == '\n' ? 0 : length + 1;
    if (c == '#' || c == '\0' || length > 254) {
      return false;
    }
  }
  return text.find("TITLE") == std::string::npos;
}

[[maybe_unused]] void cube(const std::string &text) {
  MemoryFile file(text);
  const Lut lut(vexo_3dlut_load_cube(file.stream()));
  require(content(lut) == content(Lut(vexo_3dlut_cube_load_file(file.path().c_str()))), "the file reads as the stream");
  std::string buffer = text;
  const Lut buffered(vexo_3dlut_cube_load_buf(buffer.data(), static_cast<int>(text.size())));
  require(!means_the_same_in_memory(text) || content(lut) == content(buffered), "the memory reads as the stream");
  if (lut != nullptr && std::string(vexo_3dlut_title(lut.get())).size() < 240) {
    const auto dump = [](const Lut &any) { return printed([&](std::FILE *f) { vexo_3dlut_dump_cube(any.get(), f); }); };
    MemoryFile copy(dump(lut));
    const Lut again(vexo_3dlut_load_cube(copy.stream()));
    require(again != nullptr && dump(again) == copy.contents(), "what was written reads back");
  }
}

[[maybe_unused]] void dat(const std::string &text) {
  MemoryFile file(text);
  const Lut lut(vexo_3dlut_load_dat(file.stream()));
  require(content(lut) == content(Lut(vexo_3dlut_dat_load_file(file.path().c_str()))), "the file reads as the stream");
  std::vector<uint8_t> bytes(text.begin(), text.end());
  const Lut buffered(vexo_3dlut_dat_load_buf(bytes.data(), static_cast<int>(bytes.size())));
  require(lut == nullptr || content(lut) == content(buffered), "the memory reads as the stream");
  if (buffered != nullptr) {
    MemoryFile copy(printed([&](std::FILE *f) { vexo_3dlut_dump_dat(buffered.get(), f, bytes[64]); }));
    require(content(buffered) == content(Lut(vexo_3dlut_load_dat(copy.stream()))), "what was written reads back");
  }
}

[[maybe_unused]] void eecolor(const std::string &text) { // the first byte tells the size
  const int points = text.empty() ? 0 : static_cast<signed char>(text[0]);
  MemoryFile file(text.substr(text.empty() ? 0 : 1));
  const Lut lut(vexo_3dlut_load_eecolor(file.stream(), points));
  require(content(lut) == content(Lut(vexo_3dlut_eecolor_load_file(file.path().c_str(), points))),
          "the file reads as the stream");
}

// Whether the codes of a table are within their depth, and there are some.
bool within_depth(const vexo_lut &lut) {
  return lut.size > 0 && std::all_of(lut.d, lut.d + lut.size, [](float x) { return x >= 0.0F && x <= 1.0F; });
}

[[maybe_unused]] void lut1d(const std::string &text) {
  const auto store = [](vexo_lut *lut) { return printed([&](std::FILE *f) { vexo_luts_store_int(f, lut, 20); }); };
  for (const auto &load : {vexo_luts_load_int, vexo_luts_load_file, vexo_lut_load_custom}) {
    MemoryFile file(text);
    vexo_lut luts[2][3] = {};
    const int status = load(file.stream(), luts[0]);
    if (status == 0 && load == vexo_lut_load_custom) {
      require(luts[0]->d[0] == 0.0F && luts[0]->d[luts[0]->size - 1] == 1.0F, "a column goes from 0 to 1");
    } else if (status == 0 && std::all_of(luts[0], luts[0] + 3, within_depth)) {
      MemoryFile copy(store(luts[0]));
      require(vexo_luts_load_int(copy.stream(), luts[1]) == 0, "what was written is read");
      require(store(luts[1]) == copy.contents(), "what was written reads back");
    }
    for (int i = 0; i < 6; i++) {
      vexo_lut_destroy(&luts[i / 3][i % 3]);
    }
  }
}

std::string stored(vexo_lcnr *lcnr) {
  MemoryFile file;
  require(vexo_store_lcnr_xml(lcnr, file.path().c_str()) == 0, "a record is stored");
  return file.contents();
}

[[maybe_unused]] void lcnr(const std::string &text) {
  const MemoryFile file(text);
  vexo_lcnr rows = {};
  vexo_load_lcnr_xml(&rows, file.path().c_str());
  require(rows.num >= 0 && rows.num <= 64, "rows");
  const MemoryFile copy(stored(&rows));
  vexo_lcnr again = {};
  require(vexo_load_lcnr_xml(&again, copy.path().c_str()) == 0, "what was stored is read");
  require(stored(&again) == stored(&rows), "what was stored reads back");
  const bool falls = vexo_lcnr_sanity_check(&rows) != 0;
  require((vexo_lcnr_normalize(&rows) > 0) == falls, "rows fall where rows are lowered");
  require(vexo_lcnr_sanity_check(&rows) == 0, "normalised rows rise");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  VEXO_TARGET(text_of(data, size));
  return 0;
}
