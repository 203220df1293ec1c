// Writes the sample measurement file, sample-panel.xml: 33 rows of the simulated panel in panel-model.h, levels
// 0..1023, with a little noise from a fixed seed. Another panel is another set of numbers there.
//
//   make-panel sample-panel.xml
#include <cstdio>

#include "panel-model.h"

int main(int argc, char **argv) {
  if (argc != 2) {
    std::fputs("usage: make-panel FILE\n", stderr);
    return 2;
  }
  vexo_lcnr lcnr = panel_model::sample_panel();
  if (vexo_store_lcnr_xml(&lcnr, argv[1]) != 0) {
    std::perror(argv[1]);
    return 1;
  }
  return 0;
}
