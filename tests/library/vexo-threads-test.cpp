// No operation keeps state outside its records: many threads at once get the bits that one alone gets. The thread
// sanitizer tells of anything shared.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "bits.h"
#include "lut3d.h"
#include "text.h"
#include "vexo.h"

namespace {

// A panel file calibrated both ways, the LUTs written and read, the gray ramp printed, a cube read and resampled.
std::string whole_calibration() {
  std::string results;
  for (const auto &recipe : {vexo_generate_lut, vexo_data_alignment}) {
    vexo panel = {};
    vexo_gamma camera = {4.5F, 0.018F, 0.45F, 0.099F};
    vexo_gamma system = {0.0F, 0.0F, 2.2F, 0.0F};
    vexo_vector white = {{0.3127F, 0.3290F, 0.3583F}};
    vexo_lut luts[2][3] = {};
    for (vexo_lut &lut : luts[0]) {
      vexo_lut_init(&lut, 1024);
    }
    results += std::to_string(vexo_load_lcnr_xml(&panel.lcnr, VEXO_EXAMPLES "/sample-panel.xml"));
    results += std::to_string(recipe(luts[0], &panel, &camera, &system, &white));
    const std::string codes = printed([&](FILE *f) { vexo_luts_store_int(f, luts[0], 12); });
    FILE *f = stream_of(codes);
    results += codes + std::to_string(vexo_luts_load_int(f, luts[1]));
    fclose(f);
    results += printed([&](FILE *out) { vexo_lut_dump_gray_gamma(out, &panel, luts[1]); });
    results += std::to_string(digest(bits_of(panel)));
    for (int i = 0; i < 6; i++) {
      vexo_lut_destroy(&luts[i / 3][i % 3]);
    }
  }
  const Lut unit(vexo_3dlut_create(5, "unit"));
  vexo_3dlut_init_unit(unit.get());
  std::string cube = printed([&](FILE *f) { vexo_3dlut_dump_cube(unit.get(), f); });
  const Lut read(vexo_3dlut_cube_load_buf(cube.data(), static_cast<int>(cube.size())));
  const Lut resampled(vexo_3dlut_dup(read.get(), 9, nullptr));
  return results + printed([&](FILE *f) { vexo_3dlut_dump_cube(resampled.get(), f); });
}

TEST(Threads, CalibrateAlike) {
  const std::string alone = whole_calibration();
  std::vector<std::string> results(8);
  std::vector<std::thread> threads;
  threads.reserve(results.size());
  for (std::string &result : results) {
    threads.emplace_back([&result] {
      for (int n = 0; n < 3; n++) {
        result = whole_calibration();
      }
    });
  }
  for (std::thread &thread : threads) {
    thread.join();
  }
  for (const std::string &result : results) {
    EXPECT_TRUE(result == alone);
  }
}

} // namespace
