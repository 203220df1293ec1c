// Allocations, reads and writes that fail: every operation of the library gives all of its result or says that it
// failed, leaves what it promises to leave, and keeps nothing.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <set>

#include "allocation.h"
#include "golden.h"
#include "library/calls.h"
#include "lut3d.h"
#include "text.h"
#include "vexo-cs.h"

namespace {

// Runs a call of the library, and nothing else, with its n-th allocation failing; none with n = 0.
class Fault {
public:
  explicit Fault(int n = 0) : n_(n) {}
  template <typename Run> auto operator()(Run run) {
    const FailingAllocation failing(n_);
    const auto result = run();
    happened = failing.happened();
    return result;
  }
  bool happened = false;

private:
  int n_;
};

struct Operation {
  std::string name;
  std::string input;                                             // in a stream and in a file
  std::function<Numbers(Fault &, FILE *, const char *path)> run; // its results; none for a failure
};

const std::string kRows = "<!DOCTYPE a [<!ENTITY e '" + std::string(2000, ' ') + // a row longer than a line buffer
                          "0.5,1,2,3'>]>\n<LCNR>\n<LEVEL>&e;,4</LEVEL>\n<LEVEL>1,2</LEVEL></LCNR>";
const char kCodes[] = "LUT_1D_SIZE 2\nLUT_1D_BITS 8\n1 2 3\n4 5 6\n7 8 9\n10 11 12\n\n";
const char kCube[] = "TITLE \"t\"\nLUT_3D_SIZE 2\n0 0 0\n1 0 0\n0 1 0\n1 1 0\n0 0 1\n1 0 1\n0 1 1\n1 1 .5\n";
const char kEeColor[] = "0 0 0 1 2 3\n1 0 0 1 2 3\n0 1 0 1 2 3\n1 1 0 1 2 3\n0 0 1 1 2 3\n1 0 1 1 2 3\n0 1 1 1 2 3\n"
                        "1 1 1 4 5 6\n";
const std::string kPacked =
    unescaped("\\x99\\x02\\x34\\x42\\x00\\x00\\x00\\x02\\56(t)\\x0a\\61(\\x00)\\x02\\33(\\x01)");

Numbers numbers(const float *x, size_t count) { return Numbers(x, x + count); }

// Takes over the results of a call.
Numbers taken(vexo_lut (&lut)[3], int status) {
  Numbers results;
  for (vexo_lut &channel : lut) {
    results.insert(results.end(), channel.d, channel.d + (status == 0 ? channel.size : 0));
    vexo_lut_destroy(&channel); // whatever the result
  }
  return results;
}
Numbers taken(vexo_3dlut *created) {
  const Lut lut(created);
  const std::vector<float> values = lut != nullptr ? components(lut.get()) : std::vector<float>();
  return numbers(values.data(), values.size());
}

std::vector<Operation> operations() {
  const auto luts = [](const char *name, const char *input, int (*read)(FILE *, vexo_lut *)) {
    return Operation{name, input, [read](Fault &fault, FILE *f, const char *) {
                       vexo_lut lut[3] = {};
                       const int status = fault([&] { return read(f, lut); });
                       return taken(lut, status);
                     }};
  };
  const auto lut3d = [](const char *name, const std::string &input, auto make) {
    return Operation{name, input, [make](Fault &fault, FILE *f, const char *path) {
                       return taken(fault([&] { return make(f, path); }));
                     }};
  };
  std::vector<Operation> all = {
      luts("init", "", [](FILE *, vexo_lut *lut) { return vexo_lut_init_with_gamma(lut, 9, 2.2F); }),
      luts("integer", kCodes, vexo_luts_load_int),
      luts("decimal", kCodes, vexo_luts_load_file),
      luts("column", "# x\n1\n2\n4\n", vexo_lut_load_custom),
      lut3d("create", "", [](FILE *, const char *) { return vexo_3dlut_create(2, "title"); }),
      lut3d("cube", kCube, [](FILE *f, const char *) { return vexo_3dlut_load_cube(f); }),
      lut3d("cube file", kCube, [](FILE *, const char *path) { return vexo_3dlut_cube_load_file(path); }),
      lut3d("packed", kPacked, [](FILE *f, const char *) { return vexo_3dlut_load_dat(f); }),
      lut3d("packed file", kPacked, [](FILE *, const char *path) { return vexo_3dlut_dat_load_file(path); }),
      lut3d("eeColor", kEeColor, [](FILE *f, const char *) { return vexo_3dlut_load_eecolor(f, 2); }),
      lut3d("eeColor file", kEeColor, [](FILE *, const char *path) { return vexo_3dlut_eecolor_load_file(path, 2); }),
      lut3d("cube text", kCube,
            [](FILE *, const char *) {
              static char text[sizeof kCube];
              return vexo_3dlut_cube_load_buf(strcpy(text, kCube), sizeof kCube - 1);
            }),
      lut3d("packed bytes", kPacked, [](FILE *, const char *) {
        static std::vector<uint8_t> bytes(kPacked.begin(), kPacked.end());
        return vexo_3dlut_dat_load_buf(bytes.data(), static_cast<int>(bytes.size()));
      })};
  const auto add = [&all](const char *name, const std::string &input, auto run) { all.push_back({name, input, run}); };
  add("resample", "", [](Fault &fault, FILE *, const char *) {
    const Lut lut = table(3, "t", [](int, int, int) { return vexo_vector{}; });
    return taken(fault([&] { return vexo_3dlut_dup(lut.get(), 4, "u"); }));
  });
  add("title", "", [](Fault &fault, FILE *, const char *) {
    const Lut lut(vexo_3dlut_create(1, "before"));
    const bool done = fault([&] { return vexo_3dlut_set_title(lut.get(), "after"); }) == 0;
    EXPECT_STREQ(vexo_3dlut_title(lut.get()), done ? "after" : nullptr);
    return done ? Numbers{1.0} : Numbers();
  });
  add("forward inversion", "", [](Fault &fault, FILE *, const char *) {
    Luts out(5);
    float ramp[] = {0.0F, 0.25F, 1.0F};
    vexo_lut panel = {3, ramp};
    vexo_gamma linear = {0.0F, 0.0F, 1.0F, 0.0F};
    const int status = fault([&] { return vexo_gamma_lut_invert_2(out.lut, &linear, &linear, &panel); });
    EXPECT_EQ(out.d[4] == -7.0F, status != 0);
    return status == 0 ? numbers(out.d.data(), 5) : Numbers();
  });
  for (const auto &recipe : {vexo_generate_lut, vexo_data_alignment}) {
    add("recipe", "", [recipe](Fault &fault, FILE *, const char *) {
      vexo panel = {};
      EXPECT_EQ(vexo_load_lcnr_xml(&panel.lcnr, VEXO_EXAMPLES "/sample-panel.xml"), 0);
      Luts out;
      vexo_gamma linear = {0.0F, 0.0F, 1.0F, 0.0F};
      vexo_vector white = {{0.3127F, 0.3290F, 0.3583F}};
      const int status = fault([&] { return recipe(out.lut, &panel, &linear, &linear, &white); });
      EXPECT_TRUE(status == 0 || out.d == Luts().d);
      return status == 0 ? numbers(out.d.data(), out.d.size()) : Numbers();
    });
  }
  add("LCNR", kRows, [](Fault &fault, FILE *, const char *path) {
    vexo_lcnr lcnr = {};
    return fault([&] { return vexo_load_lcnr_xml(&lcnr, path); }) == 0 ? numbers(lcnr.data[0][0], 640) : Numbers();
  });
  add("LCNR, stored", "", [](Fault &fault, FILE *, const char *path) {
    vexo_lcnr lcnr = {{}, {}, 64};
    const int status = fault([&] { return vexo_store_lcnr_xml(&lcnr, path); });
    return status == 0 && vexo_load_lcnr_xml(&lcnr, path) == 0 ? numbers(lcnr.data[0][0], 640) : Numbers();
  });
  return all;
}

// One run on a file and a stream of the input; the stream's buffer is no allocation of the library's.
Numbers run(const Operation &operation, Fault &fault) {
  MemoryFile file(operation.input);
  const std::string path = file.path();
  char buffer[BUFSIZ];
  FILE *f = fopen(path.c_str(), "r");
  setvbuf(f, buffer, _IOFBF, sizeof buffer);
  Numbers results = operation.run(fault, f, path.c_str());
  fclose(f);
  return results;
}

TEST(Faults, EveryAllocation) {
  std::set<std::string> messages;
  for (const Operation &operation : operations()) {
    SCOPED_TRACE(operation.name);
    Fault none;
    const Numbers all = run(operation, none);
    ASSERT_FALSE(all.empty());
    int n = 0;
    for (bool happened = kAllocationCanFail; happened;) {
      Fault fault(++n);
      const std::string message = diagnostics([&] {
        const long before = blocks_held();
        {
          const Numbers results = run(operation, fault);
          EXPECT_TRUE(results == all || (results.empty() && fault.happened)) << n;
        }
        EXPECT_EQ(blocks_held(), before) << n;
      });
      happened = fault.happened;
      messages.insert(message.substr(0, message.find_first_of("/0123456789")));
    }
    EXPECT_TRUE(n > 1 || !kAllocationCanFail); // there was one
  }
  if (kAllocationCanFail) {
    EXPECT_EQ(messages, (std::set<std::string>{"", "vexo_lut_init: malloc failed.\n", "Failed to open ",
                                               "open file: ", "Couldn't allocate memory for parser\n",
                                               "out of memory\n", "Parse error at line ", "create "}));
  }
}

// ---- Streams

// A stream that gives or takes so many bytes and then fails.
struct Cookie {
  std::string text;
  size_t limit;
  size_t at = 0;

  static ssize_t read(void *cookie, char *buf, size_t size) {
    auto *c = static_cast<Cookie *>(cookie);
    const size_t count = std::min(size, c->limit - c->at);
    memcpy(buf, c->text.data() + c->at, count);
    c->at += count;
    errno = EIO;
    return count > 0 ? static_cast<ssize_t>(count) : -1;
  }
  static ssize_t write(void *cookie, const char *buf, size_t size) {
    auto *c = static_cast<Cookie *>(cookie);
    const size_t count = std::min(size, c->limit - c->text.size());
    c->text.append(buf, count);
    errno = EIO;
    return static_cast<ssize_t>(count);
  }
  FILE *open(const char *mode) { return fopencookie(this, mode, {read, write, nullptr, nullptr}); }
};

// An error in the middle is the reader's business; one before the call is the caller's.
TEST(Faults, ReadsThatFailInTheMiddle) {
  for (const Operation &operation : operations()) {
    Fault none;
    const Numbers all = run(operation, none);
    const bool reads_stream = operation.name.find(' ') == std::string::npos && operation.name != "LCNR";
    for (size_t limit = 0; limit <= operation.input.size() && !operation.input.empty() && reads_stream; limit++) {
      Cookie cookie = {operation.input, limit};
      FILE *f = cookie.open("r");
      if (limit == operation.input.size()) {
        fputc('x', f);
        EXPECT_NE(ferror(f), 0);
      }
      const Numbers results = operation.run(none, f, "");
      const bool failed = ferror(f) != 0 && limit < operation.input.size();
      // A column has no size that would tell.
      EXPECT_TRUE(results == all || (failed && (results.empty() || operation.name == "column")))
          << operation.name << ' ' << limit;
      fclose(f);
    }
  }
}

TEST(Faults, FilesThatCannotBeReadOrWritten) {
  const TemporaryFolder folder;
  const std::string none = folder.path("no such \xc3\xa4");
  const auto read_all = [](const char *path) {
    vexo_lcnr lcnr = {};
    EXPECT_EQ(vexo_3dlut_cube_load_file(path), nullptr);
    EXPECT_EQ(vexo_3dlut_dat_load_file(path), nullptr);
    EXPECT_EQ(vexo_3dlut_eecolor_load_file(path, 2), nullptr);
    EXPECT_EQ(vexo_load_lcnr_xml(&lcnr, path), -1);
    EXPECT_EQ(vexo_store_lcnr_xml(&lcnr, (std::string(path) + "/x/y").c_str()), -1);
  };
  EXPECT_EQ(diagnostics([&] { read_all(none.c_str()); }),
            "open file: " + none + " failed.\nFailed to open " + none + "\n");
  EXPECT_EQ(diagnostics([&] { read_all(folder.path("").c_str()); }), "Read error\n"); // a folder opens
}

// A writer whose text is pieces of so many bytes, the first and the others, or lines.
struct Writer {
  std::function<int(FILE *)> write;
  enum { kCharacters, kItems, kStatus } result;
  size_t uncounted; // pieces before those that count
  size_t first, other;
};

// Writes the text with one call of the C library per piece. Gives what the writer should give.
int write_pieces(FILE *f, const Writer &writer, const std::string &text) {
  int sum = 0;
  for (size_t at = 0, n = 0; at < text.size(); n++) {
    const size_t size = writer.first == 0 ? text.find('\n', at) + 1 - at : n == 0 ? writer.first : writer.other;
    const bool taken =
        writer.first == 0 ? fputs(text.substr(at, size).c_str(), f) >= 0 : fwrite(text.data() + at, size, 1, f) == 1;
    if (!taken && writer.result == Writer::kStatus) {
      return -1;
    }
    const int counted = writer.result == Writer::kItems ? taken : taken ? static_cast<int>(size) : -1;
    sum += n < writer.uncounted ? 0 : counted;
    at += size;
  }
  return writer.result == Writer::kStatus ? 0 : sum;
}

// However a stream is buffered and wherever it fails, it gets the bytes of one call per piece, and the result is
// theirs.
TEST(Faults, WritesThatFailInTheMiddle) {
  const Lut lut = table(4, "t", [](int bi, int gi, int ri) {
    const float red =
        bi == ri ? 10.0F / 1023.0F : static_cast<float>(ri) * 1e6F; // the code 10 is a line feed in a word
    return vexo_vector{{red, static_cast<float>(-gi) / 3.0F, static_cast<float>(bi) / 3.0F}};
  });
  vexo_cs cs = {};
  const Writer writers[] = {
      {[&](FILE *f) { return vexo_3dlut_dump_cube(lut.get(), f); }, Writer::kCharacters, 0, 0, 0},
      {[&](FILE *f) { return vexo_3dlut_dump_cfe(lut.get(), f, "m", "v"); }, Writer::kCharacters, 5, 0, 0},
      {[&](FILE *f) { return vexo_3dlut_dump_1dlut_debug(lut.get(), f, 10); }, Writer::kCharacters, 0, 0, 0},
      {[&](FILE *f) { return vexo_3dlut_dump_dat(lut.get(), f, 10); }, Writer::kItems, 0, 128, 4},
      {[&](FILE *f) { return vexo_3dlut_dump_old_dat(lut.get(), f, 10); }, Writer::kItems, 0, 128, 4},
      {[&](FILE *f) { return vexo_matrix_store(f, &cs.npm); }, Writer::kStatus, 0, 36, 36},
      {[&](FILE *f) { return vexo_vector_store(f, &cs.r); }, Writer::kStatus, 0, 12, 12},
      {[&](FILE *f) { return vexo_cs_store(f, &cs); }, Writer::kStatus, 0, 12, 12}};
  diagnostics([&] { // the old lattice prints its scale
    for (const Writer &writer : writers) {
      const std::string text = printed(writer.write);
      for (const int buffering : {_IOFBF, _IOLBF, _IONBF}) {
        for (size_t limit = 0; limit <= text.size(); limit += 1 + text.size() / 150) {
          const auto written = [&](const auto &write) {
            Cookie cookie = {"", limit};
            FILE *f = cookie.open("w");
            char buffer[200];
            setvbuf(f, buffer, buffering, sizeof buffer);
            const int result = write(f);
            fclose(f);
            return std::to_string(result) + " " + cookie.text;
          };
          EXPECT_EQ(written(writer.write), written([&](FILE *f) { return write_pieces(f, writer, text); }))
              << &writer - writers << ' ' << buffering << ' ' << limit;
        }
      }
    }
  });
}

// ---- Promises

// Whether a process can be held to a limit of its memory: an emulator does not.
bool memory_can_be_limited() {
  rlimit before = {};
  getrlimit(RLIMIT_AS, &before);
  rlimit limited = {std::min<rlim_t>(before.rlim_cur, 1U << 30) - 1, before.rlim_max};
  setrlimit(RLIMIT_AS, &limited);
  getrlimit(RLIMIT_AS, &limited);
  setrlimit(RLIMIT_AS, &before);
  return limited.rlim_cur != before.rlim_cur;
}

// Headers that promise far more than follows, where there is no memory to reserve it and where touching it would show.
TEST(Faults, PromisesCostNothing) {
  if (!kAllocationCanFail || !memory_can_be_limited()) {
    GTEST_SKIP() << "sanitizers need the memory themselves, and an emulator does not limit it";
  }
  for (const rlim_t limit : {RLIM_INFINITY, static_cast<rlim_t>(100) << 20}) {
    const auto child = [&] {
      const rlimit memory = {limit, limit};
      setrlimit(RLIMIT_AS, &memory);
      rusage before = {};
      rusage after = {};
      getrusage(RUSAGE_SELF, &before);
      FILE *dat = stream_of(std::string(kPacked).replace(126, 1, "\xff"));
      bool refused = vexo_3dlut_load_dat(dat) == nullptr;
      for (const std::string size : {"500", "1290", "2147483647"}) {
        std::string cube = "LUT_3D_SIZE " + size + "\n0.1 0.2 0.3 0.4 0.5 0.6\n";
        FILE *f = stream_of(cube);
        refused = refused && vexo_3dlut_load_cube(f) == nullptr &&
                  vexo_3dlut_load_eecolor(f, std::stoi(size)) == nullptr &&
                  vexo_3dlut_cube_load_buf(cube.data(), static_cast<int>(cube.size())) == nullptr;
      }
      getrusage(RUSAGE_SELF, &after);
      _exit(refused && after.ru_maxrss - before.ru_maxrss < 20000 ? 0 : 1); // kilobytes
    };
    // Only a table that could not be reserved is worth a line.
    EXPECT_EXIT(child(), testing::ExitedWithCode(0),
                limit == RLIM_INFINITY ? "^$" : "^create 3dlut failed, size = 255");
  }
}

} // namespace
