// Panel calibration: the plain searches beside the library's. The targets are whites that the search reaches in one
// pass and in five. The plain direct recipe finds its tables made, which saves it about a hundredth of its time.
#include "vexo.h"

#include <benchmark/benchmark.h>

#include "library/plain/vexo-plain.h"
#include "panel-model.h"

namespace {

const float kWhites[][2] = {{0.3096F, 0.3191F}, {0.2900F, 0.3100F}};

// What a calibration of the sample panel works on.
struct Job {
  explicit Job(const benchmark::State &state) {
    const auto &xy = kWhites[state.range(0) == 1 ? 0 : 1];
    white = vexo_vector{{xy[0], xy[1], 1.0F - xy[0] - xy[1]}};
    context.lcnr = panel_model::sample_panel();
    vexo_gamma_init(&camera, 1.0F);
    vexo_gamma_init(&system, 2.2F);
    vexo_generate_lut(out.lut, &context, &camera, &system, &white); // makes the tables
  }

  plain::Luts out;
  vexo context;
  vexo_gamma camera;
  vexo_gamma system;
  vexo_vector white;
};

using Recipe = decltype(&vexo_generate_lut);
void calibrate(benchmark::State &state, Recipe recipe) {
  Job job(state);
  for (auto _ : state) {
    recipe(job.out.lut, &job.context, &job.camera, &job.system, &job.white);
    benchmark::ClobberMemory();
  }
}

using Search = decltype(&vexo_peak_white_adjust);
void find_white(benchmark::State &state, Search search) {
  Job job(state);
  vexo_vector gains;
  for (auto _ : state) {
    search(&gains, &job.context, &job.white);
    benchmark::DoNotOptimize(gains);
  }
}

// One level of each luminance step: what a caller asks that draws a curve.
void find_level(benchmark::State &state) {
  Job job(state);
  vexo_vector v;
  for (auto _ : state) {
    for (int k = 1; k < 64; k++) {
      benchmark::DoNotOptimize(vexo_data_Y_xyY(&v, job.context.data[1], static_cast<float>(k) / 64.0F));
    }
  }
}

} // namespace

BENCHMARK_CAPTURE(calibrate, data_alignment, vexo_data_alignment)->ArgName("passes")->Arg(1)->Arg(5);
BENCHMARK_CAPTURE(calibrate, generate_lut_plain, plain::generate_lut)->ArgName("passes")->Arg(1)->Arg(5);
BENCHMARK_CAPTURE(calibrate, generate_lut, vexo_generate_lut)->ArgName("passes")->Arg(1)->Arg(5);
BENCHMARK_CAPTURE(find_white, peak_white_adjust_plain, plain::peak_white_adjust)->ArgName("passes")->Arg(1)->Arg(5);
BENCHMARK_CAPTURE(find_white, peak_white_adjust, vexo_peak_white_adjust)->ArgName("passes")->Arg(1)->Arg(5);
BENCHMARK(find_level)->Arg(1);
