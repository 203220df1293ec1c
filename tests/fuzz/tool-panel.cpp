// Panel files and imported measurements: both give rows that rise from black and can be written and read again.
#include "../../tools/import.h"
#include "../../tools/panel-file.h"
#include "tool.h"

namespace {

void check_rows(const vexo_lcnr &lcnr) {
  require(lcnr.num >= 2 && lcnr.num <= 64 && lcnr.sample[0] == 0.0F, "rows from black");
  for (int i = 1; i < lcnr.num; i++) {
    require(lcnr.sample[i] > lcnr.sample[i - 1], "levels rise");
  }
}

std::string panel_text(vexo_lcnr lcnr) {
  MemoryFile file("");
  require(vexo_store_lcnr_xml(&lcnr, file.path().c_str()) == 0, "rows are stored");
  return file.contents();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const MemoryFile file(text_of(data, size));
  accepted([&] {
    const Import import = import_measurements(file.path());
    check_rows(import.lcnr);
    require(import.readings >= 2, "readings");
  });
  accepted([&] {
    const Panel panel = read_panel(file.path());
    check_rows(panel.lcnr);
    unusable_row(panel);
    const MemoryFile copy(panel_text(panel.lcnr));
    accepted([&] { // levels may meet when written with six decimals
      const Panel again = read_panel(copy.path());
      require(panel_text(again.lcnr) == panel_text(panel.lcnr), "what was written reads back");
    });
  });
  return 0;
}
