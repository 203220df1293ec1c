// Files of measurements. Panels and imports give rows that rise from black; what is written reads back.
#include "file/import.h"
#include "file/panel.h"
#include "file/readings.h"
#include "text/format.h"
#include "tool.h"

namespace {

void check_rows(const vexo_lcnr &lcnr) {
  require(lcnr.num >= 2 && lcnr.num <= 64 && lcnr.sample[0] == 0.0F, "rows from black");
  for (int i = 1; i < lcnr.num; i++) {
    require(lcnr.sample[i] > lcnr.sample[i - 1], "levels rise");
  }
}

std::string panel_text(vexo_lcnr lcnr) {
  MemoryFile file;
  require(vexo_store_lcnr_xml(&lcnr, file.path().c_str()) == 0, "rows are stored");
  return file.contents();
}

std::string gray_text(const std::vector<GrayReading> &grays) {
  std::string text;
  for (const GrayReading &gray : grays) {
    const auto &XYZ = gray.XYZ.d;
    text += format("%.9g,%.9g,%.9g,%.9g\n", static_cast<double>(gray.level), static_cast<double>(XYZ[0]),
                   static_cast<double>(XYZ[1]), static_cast<double>(XYZ[2]));
  }
  return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const MemoryFile file(text_of(data, size));
  accepted([&] {
    const std::string text = gray_text(read_gray(file.path(), 100.0F));
    const MemoryFile copy(text);
    require(gray_text(read_gray(copy.path(), 100.0F)) == text, "a gray ramp reads back");
  });
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
