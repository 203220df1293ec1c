// Video colour conversions, complete with their registers.
#include "vexo-csc.h"

#include <benchmark/benchmark.h>

namespace {

using Build = decltype(&vexo_csc_rgb_ycbcr);
void convert(benchmark::State &state, Build build, color_range src, color_range dst) {
  vexo_cs cs;
  float bt709[4][2] = {{0.64F, 0.33F}, {0.30F, 0.60F}, {0.15F, 0.06F}, {0.3127F, 0.3290F}};
  vexo_cs_init(&cs, bt709);
  vexo_ccp ccp;
  vexo_ccp_init(&ccp);
  vexo_csc csc;
  vexo_csc_reg reg;
  for (auto _ : state) {
    build(&csc, &cs, src, dst, &ccp, 10);
    vexo_csc_float_reg(&csc, &reg);
    benchmark::DoNotOptimize(reg);
  }
}
BENCHMARK_CAPTURE(convert, rgb_ycbcr, vexo_csc_rgb_ycbcr, RGB_GRAPHIC_RANGE, YCBCR_VIDEO_RANGE);
BENCHMARK_CAPTURE(convert, ycbcr_rgb, vexo_csc_ycbcr_rgb, YCBCR_VIDEO_RANGE, RGB_GRAPHIC_RANGE);
BENCHMARK_CAPTURE(convert, rgb_rgb, vexo_csc_rgb_rgb, RGB_VIDEO_RANGE, RGB_GRAPHIC_RANGE);
BENCHMARK_CAPTURE(convert, ycbcr_ycbcr, vexo_csc_ycbcr_ycbcr, YCBCR_VIDEO_RANGE, YCBCR_FULL_RANGE);

} // namespace
