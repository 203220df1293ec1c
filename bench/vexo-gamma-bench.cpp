// One-dimensional LUTs: whole tables inverted entry by entry beside the library's walk, and single look-ups.
#include "vexo-gamma.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <vector>

#include "library/plain/vexo-plain.h"

namespace {

const vexo_gamma kLinear = {0.0F, 0.0F, 1.0F, 0.0F};
const vexo_gamma kBt709 = {4.5F, 0.018F, 0.45F, 0.099F};

// The response of a panel; falling: every second pair of neighbours the wrong way round.
std::vector<float> response(bool falling) {
  std::vector<float> d(1024);
  vexo_lut lut = {1024, d.data()};
  vexo_gamma power;
  vexo_gamma_init(&power, 2.2F);
  vexo_lut_by_gamma(&power, &lut);
  for (size_t k = 1; falling && k < 1022; k += 2) {
    std::swap(d[k], d[k + 1]);
  }
  return d;
}

using Invert = decltype(&vexo_gamma_lut_invert);
void invert_table(benchmark::State &state, Invert invert, vexo_gamma camera, bool falling) {
  std::vector<float> d = response(falling);
  std::vector<float> out(1024);
  vexo_lut panel = {1024, d.data()};
  vexo_lut lut = {1024, out.data()};
  vexo_gamma system;
  vexo_gamma_init(&system, 2.2F);
  for (auto _ : state) {
    invert(&lut, &camera, &system, &panel);
    benchmark::ClobberMemory();
  }
}

// The cost that no search saves: the two curves at every input.
void curves_only(benchmark::State &state, vexo_gamma camera) {
  vexo_gamma system;
  vexo_gamma_init(&system, 2.2F);
  for (auto _ : state) {
    for (int i = 0; i < 1024; i++) {
      const float scene = vexo_gamma_inverse(&camera, static_cast<float>(i) / 1023.0F);
      benchmark::DoNotOptimize(vexo_gamma_evaluate(&system, scene));
    }
  }
}

void one_inverse(benchmark::State &state) {
  std::vector<float> d = response(false);
  vexo_lut lut = {1024, d.data()};
  for (auto _ : state) {
    for (int k = 1; k < 64; k++) {
      benchmark::DoNotOptimize(vexo_lut_inverse(&lut, static_cast<float>(k) / 64.0F));
    }
  }
}

BENCHMARK_CAPTURE(invert_table, linear_plain, plain::gamma_lut_invert, kLinear, false);
BENCHMARK_CAPTURE(invert_table, linear, vexo_gamma_lut_invert, kLinear, false);
BENCHMARK_CAPTURE(invert_table, bt709_plain, plain::gamma_lut_invert, kBt709, false);
BENCHMARK_CAPTURE(invert_table, bt709, vexo_gamma_lut_invert, kBt709, false);
BENCHMARK_CAPTURE(invert_table, falling_plain, plain::gamma_lut_invert, kLinear, true);
BENCHMARK_CAPTURE(invert_table, falling, vexo_gamma_lut_invert, kLinear, true);
BENCHMARK_CAPTURE(curves_only, linear, kLinear);
BENCHMARK_CAPTURE(curves_only, bt709, kBt709);
BENCHMARK(one_inverse);

} // namespace
