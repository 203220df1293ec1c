// Vectors and matrices.
#include "vexo-matrix.h"

#include <benchmark/benchmark.h>

static void invert(benchmark::State &state) {
  const vexo_matrix m = {{{0.4124F, 0.3576F, 0.1805F}, {0.2126F, 0.7152F, 0.0722F}, {0.0193F, 0.1192F, 0.9505F}}};
  vexo_matrix n;
  for (auto _ : state) {
    vexo_matrix_invert(&n, &m);
    benchmark::DoNotOptimize(n);
  }
}
BENCHMARK(invert);
