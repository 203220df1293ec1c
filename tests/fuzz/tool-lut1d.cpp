// 1D LUT files as the tool reads them: what it is told of the lines agrees with the tables.
#include "bits.h"
#include "file/luts.h"
#include "tool.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const char *const layouts[] = {"", "integer", "decimal", "cube", "column"};
  const MemoryFile file(text_of(data, size));
  for (const char *layout : layouts) {
    accepted([&] {
      LutScan scan = scan_luts(file.path(), layout);
      for (const LutIssue &issue : scan.issues) {
        require(issue_text(scan, issue).rfind(file.path() + ":", 0) == 0, "an issue names the file");
      }
      LutSet luts = load_luts(scan);
      require(luts.size() == scan.size && scan.entries.size() == static_cast<size_t>(scan.size), "as many entries");
      const float max_code = scan.bits > 0 ? static_cast<float>((1LL << scan.bits) - 1) : 1.0F;
      for (int i = 0; i < scan.size && scan.layout != "column"; i++) {
        for (int c = 0; c < 3; c++) {
          const float code = scan.entries[static_cast<size_t>(i)].value[c];
          require(bits(luts.get()[c].d[i]) == bits(code / max_code), "entries are told as they are read");
        }
      }
    });
  }
  return 0;
}
