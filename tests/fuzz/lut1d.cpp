// The three 1D text readers against their plain forms; what is written reads back.
#include "bits.h"
#include "fuzz.h"
#include "library/plain/vexo-text-plain.h"

namespace {

struct Luts {
  Luts() = default;
  ~Luts() {
    for (vexo_lut &channel : lut) {
      vexo_lut_destroy(&channel);
    }
  }
  Luts(const Luts &) = delete;
  Luts &operator=(const Luts &) = delete;

  vexo_lut lut[3] = {};
};

// Reads a header line, or leaves it where it is.
bool header_number(std::FILE *f, const char *format, int *number) {
  const long start = std::ftell(f);
  char line[1024];
  long long wide = 0;
  if (std::fgets(line, sizeof line, f) == nullptr || std::sscanf(line, format, &wide) != 1) {
    std::fseek(f, start, SEEK_SET);
    return false;
  }
  *number = static_cast<int>(static_cast<uint32_t>(wide));
  return true;
}

// The records as the header and the plain form of the lines give them; false for a file that is refused.
bool plain_load(std::FILE *f, bool decimals, size_t lines, int *nbits, plain::Entries *entries) {
  int size = 1024;
  *nbits = decimals ? 8 : 16;
  if (header_number(f, "LUT_1D_SIZE %lld", &size)) {
    size = !decimals ? size : size < 0 || size > 30 ? -1 : 1 << size;
    header_number(f, "LUT_1D_BITS %lld", nbits);
  }
  return *nbits >= 1 && *nbits <= 30 && size >= 1 && static_cast<size_t>(size) <= lines &&
         plain::read_codes(f, size, decimals, entries);
}

void compare_three(const std::string &text, bool decimals) {
  MemoryFile file(text);
  Luts luts;
  const int status = (decimals ? vexo_luts_load_file : vexo_luts_load_int)(file.stream(), luts.lut);
  const long position = std::ftell(file.stream());
  std::rewind(file.stream());
  int nbits = 0;
  plain::Entries entries;
  if (!plain_load(file.stream(), decimals, text.size() + 1, &nbits, &entries)) {
    require(status == -1 || luts.lut[0].size == 0, "a file that the plain form refuses is refused");
    return;
  }
  require(status == 0 && position == std::ftell(file.stream()), "the plain form reads as much");
  const float max_code = static_cast<float>((1 << nbits) - 1);
  bool codes_fit = !decimals && nbits <= 22; // single precision tells more codes apart only near black
  for (size_t i = 0; i < entries.size(); i++) {
    for (int c = 0; c < 3; c++) {
      require(bits(luts.lut[c].d[i]) == bits(entries[i].d[c] / max_code), "the plain form reads the same");
      codes_fit = codes_fit && entries[i].d[c] <= max_code;
    }
  }
  if (codes_fit) {
    MemoryFile copy(written([&](std::FILE *f) { vexo_luts_store_int(f, luts.lut, nbits); }));
    Luts again;
    require(vexo_luts_load_int(copy.stream(), again.lut) == 0, "what was written is read");
    for (int c = 0; c < 3; c++) {
      require(bits(luts.lut[c].d, entries.size()) == bits(again.lut[c].d, entries.size()), "and the same");
    }
  }
}

void compare_column(const std::string &text) {
  MemoryFile file(text);
  Luts luts;
  const int status = vexo_lut_load_custom(file.stream(), &luts.lut[0]);
  std::rewind(file.stream());
  std::vector<float> column;
  char line[128];
  float number = 0.0F;
  while (column.size() < 1024 && std::fgets(line, sizeof line, file.stream()) != nullptr) {
    if (std::sscanf(line, "%f", &number) == 1) {
      column.push_back(number);
    }
  }
  require(status == vexo_lut_data_normalize(column.data(), static_cast<int>(column.size())), "as many numbers");
  require(status != 0 || bits(column) == bits(luts.lut[0].d, column.size()), "and the same");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::string text = text_of(data, size);
  compare_three(text, false);
  compare_three(text, true);
  compare_column(text);
  return 0;
}
