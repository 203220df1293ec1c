// Writes the sample measurements of the simulated panel in panel-model.h, levels 0..1023, with a little noise from a
// fixed seed. Another panel is another set of numbers there.
//
//   make-panel panel sample-panel.xml              33 rows of red, green and blue, each driven alone
//   make-panel gray sample-bare.csv                a gray ramp of 22 levels
//   make-panel gray sample-measured.csv luts.txt   the same through LUTs
//   make-panel mix sample-mix.csv                  mixtures of the channels
#include <cstdio>
#include <cstring>

#include "panel-model.h"
#include "vexo-gamma.h"

namespace {

int fail(const char *path) {
  std::perror(path);
  return 1;
}

int write_panel(const char *path) {
  vexo_lcnr lcnr = panel_model::sample_panel();
  return vexo_store_lcnr_xml(&lcnr, path) == 0 ? 0 : fail(path);
}

// luts: three, or null for the bare panel.
int write_grays(const char *path, const vexo_lut *luts) {
  const auto drives = [luts](double input) {
    panel_model::Color drive = {input, input, input};
    for (size_t c = 0; c < 3 && luts != nullptr; c++) {
      drive[c] = vexo_lut_evaluate(&luts[c], static_cast<float>(input * (luts[c].size - 1)));
    }
    return drive;
  };
  std::FILE *f = std::fopen(path, "w");
  if (f == nullptr) {
    return fail(path);
  }
  std::fputs("level,X,Y,Z\n", f);
  for (const auto &gray :
       panel_model::measure_grays(panel_model::real_panel(), 22, panel_model::sample_noise(), drives)) {
    std::fprintf(f, "%.0f,%.4f,%.4f,%.4f\n", gray.level, gray.XYZ[0], gray.XYZ[1], gray.XYZ[2]);
  }
  const bool written = std::ferror(f) == 0;
  return std::fclose(f) == 0 && written ? 0 : fail(path);
}

int write_mixtures(const char *path) {
  std::FILE *f = std::fopen(path, "w");
  if (f == nullptr) {
    return fail(path);
  }
  std::fputs("r,g,b,X,Y,Z\n", f);
  for (const auto &mixture : panel_model::measure_mixtures(panel_model::real_panel(), panel_model::sample_noise())) {
    std::fprintf(f, "%.0f,%.0f,%.0f,%.4f,%.4f,%.4f\n", mixture.drive[0], mixture.drive[1], mixture.drive[2],
                 mixture.XYZ[0], mixture.XYZ[1], mixture.XYZ[2]);
  }
  const bool written = std::ferror(f) == 0;
  return std::fclose(f) == 0 && written ? 0 : fail(path);
}

int write_grays_through(const char *path, const char *luts_path) {
  vexo_lut luts[3] = {};
  std::FILE *f = std::fopen(luts_path, "r");
  if (f == nullptr) {
    return fail(luts_path);
  }
  const int status = vexo_luts_load_int(f, luts) == 0 ? write_grays(path, luts) : fail(luts_path);
  std::fclose(f);
  for (vexo_lut &lut : luts) {
    vexo_lut_destroy(&lut);
  }
  return status;
}

} // namespace

int main(int argc, char **argv) {
  if (argc == 3 && std::strcmp(argv[1], "panel") == 0) {
    return write_panel(argv[2]);
  }
  if (argc >= 3 && argc <= 4 && std::strcmp(argv[1], "gray") == 0) {
    return argc == 3 ? write_grays(argv[2], nullptr) : write_grays_through(argv[2], argv[3]);
  }
  if (argc == 3 && std::strcmp(argv[1], "mix") == 0) {
    return write_mixtures(argv[2]);
  }
  std::fputs("usage: make-panel panel FILE | gray FILE [LUTS] | mix FILE\n", stderr);
  return 2;
}
