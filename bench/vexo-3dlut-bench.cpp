// 3D LUTs: the plain form, a call of the C library or an interpolation an entry, beside the library's.
#include "vexo-3dlut.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "library/plain/vexo-3dlut-plain.h"
#include "files-plain.h"
#include "lut3d.h"

namespace {

Lut look(int size) {
  return table(size, "look", [size](int bi, int gi, int ri) {
    const auto channel = [size](int i, int other) {
      return 0.5F + 0.49F * std::sin((static_cast<float>(i) + 0.3F * static_cast<float>(other)) * 2.9F /
                                     static_cast<float>(size));
    };
    return vexo_vector{{channel(ri, gi), channel(gi, bi), channel(bi, ri)}};
  });
}

plain::Entries entries_of(vexo_3dlut *lut) {
  const size_t size = static_cast<size_t>(vexo_3dlut_size(lut));
  const vexo_vector *first = vexo_3dlut_item(lut, 0, 0, 0);
  return plain::Entries(first, first + size * size * size);
}

template <typename Print> std::string text_of(Print print) {
  char *text = nullptr;
  size_t length = 0;
  FILE *f = open_memstream(&text, &length);
  print(f);
  fclose(f);
  std::string all(text, length);
  free(text);
  return all;
}

class Sink {
public:
  Sink() : f_(fopen("/dev/null", "w")) {}
  ~Sink() { fclose(f_); }
  operator FILE *() { return f_; }

private:
  FILE *f_;
};

class Source {
public:
  explicit Source(const std::string &text) : f_(fdopen(mkstemp(path_), "w+")) {
    fwrite(text.data(), 1, text.size(), f_);
    fflush(f_);
  }
  ~Source() {
    fclose(f_);
    remove(path_);
  }
  FILE *again() {
    rewind(f_);
    return f_;
  }
  const char *path() const { return path_; }

private:
  char path_[sizeof "/tmp/vexo-bench-XXXXXX"] = "/tmp/vexo-bench-XXXXXX";
  FILE *f_;
};

std::string cube_of(vexo_3dlut *lut) {
  return text_of([&](FILE *f) { vexo_3dlut_dump_cube(lut, f); });
}

// A reader cuts its text.
void refill(benchmark::State &state, const std::string &text, std::string *copy) {
  state.PauseTiming();
  *copy = text;
  state.ResumeTiming();
}

void cube_load_buf_plain(benchmark::State &state) {
  const Lut lut = look(static_cast<int>(state.range(0)));
  const plain::Entries entries = entries_of(lut.get());
  const std::string text = text_of([&](FILE *f) { plain::print_entries(f, entries); });
  std::string copy;
  for (auto _ : state) {
    refill(state, text, &copy);
    benchmark::DoNotOptimize(plain::read_entries(copy.data(), static_cast<ptrdiff_t>(copy.size()), entries.size()));
  }
}
BENCHMARK(cube_load_buf_plain)->Arg(17)->Arg(33)->Arg(65);

void cube_load_buf(benchmark::State &state) {
  const std::string text = cube_of(look(static_cast<int>(state.range(0))).get());
  std::string copy;
  for (auto _ : state) {
    refill(state, text, &copy);
    benchmark::DoNotOptimize(Lut(vexo_3dlut_cube_load_buf(copy.data(), static_cast<int>(copy.size()))));
  }
}
BENCHMARK(cube_load_buf)->Arg(17)->Arg(33)->Arg(65);

void cube_load_stream_plain(benchmark::State &state) {
  const plain::Entries entries = entries_of(look(static_cast<int>(state.range(0))).get());
  Source source(text_of([&](FILE *f) { plain::print_entries(f, entries); }));
  for (auto _ : state) {
    benchmark::DoNotOptimize(plain::read_entries(source.again(), entries.size(), plain::scan_cube_entry));
  }
}
BENCHMARK(cube_load_stream_plain)->Arg(17)->Arg(33)->Arg(65);

void cube_load_stream(benchmark::State &state) {
  Source source(cube_of(look(static_cast<int>(state.range(0))).get()));
  for (auto _ : state) {
    benchmark::DoNotOptimize(Lut(vexo_3dlut_load_cube(source.again())));
  }
}
BENCHMARK(cube_load_stream)->Arg(17)->Arg(33)->Arg(65);

void cube_load_file(benchmark::State &state) {
  const Source source(cube_of(look(static_cast<int>(state.range(0))).get()));
  for (auto _ : state) {
    benchmark::DoNotOptimize(Lut(vexo_3dlut_cube_load_file(source.path())));
  }
}
BENCHMARK(cube_load_file)->Arg(17)->Arg(33)->Arg(65);

void cube_write_plain(benchmark::State &state) {
  const plain::Entries entries = entries_of(look(33).get());
  Sink sink;
  for (auto _ : state) {
    benchmark::DoNotOptimize(plain::print_entries(sink, entries));
  }
}
BENCHMARK(cube_write_plain);

void cube_write(benchmark::State &state) {
  const Lut lut = look(33);
  Sink sink;
  for (auto _ : state) {
    benchmark::DoNotOptimize(vexo_3dlut_dump_cube(lut.get(), sink));
  }
}
BENCHMARK(cube_write);

void resample_sizes(benchmark::internal::Benchmark *b) {
  b->Args({17, 33})->Args({33, 65})->Args({65, 33})->Args({64, 33});
}

void resample_plain(benchmark::State &state) {
  const Lut src = look(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    const Lut dst(vexo_3dlut_create(static_cast<int>(state.range(1)), nullptr));
    plain::resample(dst.get(), src.get());
    benchmark::DoNotOptimize(dst.get());
  }
}
BENCHMARK(resample_plain)->Apply(resample_sizes);

void resample(benchmark::State &state) {
  const Lut src = look(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    benchmark::DoNotOptimize(Lut(vexo_3dlut_dup(src.get(), static_cast<int>(state.range(1)), nullptr)));
  }
}
BENCHMARK(resample)->Apply(resample_sizes);

// ---- Packed words, COE images and listings of 33 points an axis at ten bits

const size_t kEntries = 33 * 33 * 33;

void packed_write_plain(benchmark::State &state) {
  const plain::Entries entries = entries_of(look(33).get());
  Sink sink;
  for (auto _ : state) {
    benchmark::DoNotOptimize(plain::write_words(sink, entries.data(), entries.size()));
  }
}
BENCHMARK(packed_write_plain);

void packed_write(benchmark::State &state) {
  const Lut lut = look(33);
  Sink sink;
  for (auto _ : state) {
    benchmark::DoNotOptimize(vexo_3dlut_dump_dat(lut.get(), sink, 10));
  }
}
BENCHMARK(packed_write);

void packed_load_plain(benchmark::State &state) {
  const plain::Entries entries = entries_of(look(33).get());
  Source source(text_of([&](FILE *f) { plain::write_words(f, entries.data(), entries.size()); }));
  plain::Entries loaded(kEntries);
  for (auto _ : state) {
    benchmark::DoNotOptimize(plain::read_words(source.again(), loaded.data(), kEntries));
  }
}
BENCHMARK(packed_load_plain);

void packed_load(benchmark::State &state) {
  const Lut lut = look(33);
  Source source(text_of([&](FILE *f) { vexo_3dlut_dump_dat(lut.get(), f, 10); }));
  for (auto _ : state) {
    benchmark::DoNotOptimize(Lut(vexo_3dlut_load_dat(source.again())));
  }
}
BENCHMARK(packed_load);

void coe_write(benchmark::State &state) {
  const Lut lut = look(33);
  Sink sink;
  for (auto _ : state) {
    vexo_3dlut_dump_coe(lut.get(), sink, 10);
  }
}
BENCHMARK(coe_write);

void listing(benchmark::State &state) {
  const Lut lut = look(33);
  Sink sink;
  for (auto _ : state) {
    benchmark::DoNotOptimize(vexo_3dlut_dump_debug(lut.get(), sink, 10));
  }
}
BENCHMARK(listing);

std::string eecolor_text(vexo_3dlut *lut) {
  return text_of([&](FILE *f) {
    for (const vexo_vector &v : entries_of(lut)) {
      fprintf(f, "%0.6f %0.6f %0.6f %0.6f %0.6f %0.6f\n", 0.25, 0.5, 0.75, static_cast<double>(v.d[0]),
              static_cast<double>(v.d[1]), static_cast<double>(v.d[2]));
    }
  });
}

void eecolor_load_plain(benchmark::State &state) {
  Source source(eecolor_text(look(33).get()));
  for (auto _ : state) {
    benchmark::DoNotOptimize(plain::read_entries(source.again(), kEntries, plain::scan_eecolor_entry));
  }
}
BENCHMARK(eecolor_load_plain);

void eecolor_load(benchmark::State &state) {
  Source source(eecolor_text(look(33).get()));
  for (auto _ : state) {
    benchmark::DoNotOptimize(Lut(vexo_3dlut_load_eecolor(source.again(), 33)));
  }
}
BENCHMARK(eecolor_load);

} // namespace
