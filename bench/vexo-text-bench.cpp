// Three-channel 1D files of 1024 entries: a call of the C library a line beside the library.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>

#include "files-plain.h"
#include "vexo-gamma.h"

namespace {

const int kSize = 1024;

struct Luts {
  Luts() {
    for (int c = 0; c < 3; c++) {
      vexo_lut_init_with_gamma(&lut[c], kSize, 2.2F + 0.1F * static_cast<float>(c));
    }
  }
  ~Luts() {
    for (vexo_lut &channel : lut) {
      vexo_lut_destroy(&channel);
    }
  }
  vexo_lut lut[3];
};

void store_int_plain(benchmark::State &state) {
  const Luts luts;
  FILE *f = fopen("/dev/null", "w");
  for (auto _ : state) {
    plain::print_codes(f, luts.lut, 12, "%5d %5d %5d\n");
  }
  fclose(f);
}
BENCHMARK(store_int_plain);

void store_int(benchmark::State &state) {
  Luts luts;
  FILE *f = fopen("/dev/null", "w");
  for (auto _ : state) {
    benchmark::DoNotOptimize(vexo_luts_store_int(f, luts.lut, 12));
  }
  fclose(f);
}
BENCHMARK(store_int);

// Codes of 12 bits, with six decimals in the decimal file.
FILE *three_channels(bool decimals) {
  const Luts luts;
  FILE *f = tmpfile();
  fprintf(f, "LUT_1D_SIZE %d\nLUT_1D_BITS 12\n", decimals ? 10 : kSize);
  for (int i = 0; i < kSize; i++) {
    double code[3];
    for (int c = 0; c < 3; c++) {
      code[c] = 4095.0 * static_cast<double>(luts.lut[c].d[i]);
    }
    if (decimals) {
      fprintf(f, "%.6f %.6f %.6f\n", code[0], code[1], code[2]);
    } else {
      fprintf(f, "%5d %5d %5d\n", static_cast<int>(code[0]), static_cast<int>(code[1]), static_cast<int>(code[2]));
    }
  }
  fflush(f);
  return f;
}

void load_plain(benchmark::State &state, bool decimals) {
  FILE *f = three_channels(decimals);
  plain::Entries entries;
  for (auto _ : state) {
    rewind(f);
    char line[1024];
    benchmark::DoNotOptimize(fgets(line, sizeof line, f));
    benchmark::DoNotOptimize(fgets(line, sizeof line, f));
    benchmark::DoNotOptimize(plain::read_codes(f, kSize, decimals, &entries));
  }
  fclose(f);
}

void load(benchmark::State &state, bool decimals) {
  FILE *f = three_channels(decimals);
  for (auto _ : state) {
    rewind(f);
    vexo_lut lut[3] = {};
    benchmark::DoNotOptimize((decimals ? vexo_luts_load_file : vexo_luts_load_int)(f, lut));
    for (vexo_lut &channel : lut) {
      vexo_lut_destroy(&channel);
    }
  }
  fclose(f);
}

BENCHMARK_CAPTURE(load_plain, integers, false);
BENCHMARK_CAPTURE(load, integers, false);
BENCHMARK_CAPTURE(load_plain, decimals, true);
BENCHMARK_CAPTURE(load, decimals, true);

} // namespace
