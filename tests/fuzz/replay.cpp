// Runs a fuzz target once on every file of the folders named: for compilers without libFuzzer.
#include <filesystem>
#include <fstream>
#include <iterator>

#include "fuzz.h"

int main(int argc, char **argv) {
  int count = 0;
  for (int i = 1; i < argc; i++) {
    for (const auto &entry : std::filesystem::directory_iterator(argv[i])) {
      std::ifstream in(entry.path(), std::ios::binary);
      const std::string bytes{std::istreambuf_iterator<char>(in), {}};
      LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
      count++;
    }
  }
  std::printf("%d files\n", count);
  return count > 0 ? 0 : 1;
}
