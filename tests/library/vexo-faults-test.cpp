// Allocations, reads and writes that fail: every operation of the library gives all of its result or says that it
// failed, leaves what it promises to leave, and keeps nothing.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "allocation.h"
#include "bits.h"
#include "library/plain/vexo-text-plain.h"
#include "lut3d.h"
#include "text.h"
#include "vexo-cs.h"
#include "vexo.h"

namespace {

using Words = std::vector<uint32_t>; // the bits of a result; empty for a failure

const std::string kRows = "<!DOCTYPE a [<!ENTITY e '" + std::string(2000, ' ') + // a row longer than a line buffer
                          "0.5,1,2,3'>]>\n<LCNR>\n<LEVEL>&e;,4</LEVEL>\n<LEVEL>1,2</LEVEL></LCNR>";
const char kCodes[] = "LUT_1D_SIZE 2\nLUT_1D_BITS 8\n1 2 3\n4 5 6\n7 8 9\n10 11 12\n\n";
const char kColumn[] = "# x\n1\n2\n4\n";
const char kCube[] = "TITLE \"t\"\nLUT_3D_SIZE 2\n0 0 0\n1 0 0\n0 1 0\n1 1 0\n0 0 1\n1 0 1\n0 1 1\n1 1 .5\n";
const char kEeColor[] = "0 0 0 1 2 3\n1 0 0 1 2 3\n0 1 0 1 2 3\n1 1 0 1 2 3\n0 0 1 1 2 3\n1 0 1 1 2 3\n0 1 1 1 2 3\n"
                        "1 1 1 4 5 6\n";

std::string packed() {
  const Lut lut = table(2, "t", [](int bi, int gi, int ri) {
    return vexo_vector{{static_cast<float>(bi), static_cast<float>(gi), static_cast<float>(ri)}};
  });
  return printed([&](FILE *f) { vexo_3dlut_dump_dat(lut.get(), f, 10); });
}

// ---- Allocations

// Runs a call of the library, and nothing else, with its n-th allocation failing.
class Fault {
public:
  explicit Fault(int n) : n_(n) {}
  template <typename Call> auto operator()(Call call) {
    const FailingAllocation failing(n_);
    const auto result = call();
    happened = failing.happened();
    return result;
  }
  bool happened = false;

private:
  int n_;
};

struct Operation {
  std::string name;
  std::string input;
  std::function<Words(Fault &, FILE *, const char *path)> run;
};

Words taken(vexo_lut *lut, int count, int status) {
  Words words;
  for (int c = 0; c < count; c++) {
    if (status == 0) {
      const Words part = bits(lut[c].d, static_cast<size_t>(lut[c].size));
      words.insert(words.end(), part.begin(), part.end());
    }
    vexo_lut_destroy(&lut[c]); // whatever the result
  }
  return words;
}

Words taken(vexo_3dlut *created) {
  const Lut lut(created);
  return lut != nullptr ? bits(components(lut.get())) : Words();
}

std::vector<Operation> operations() {
  std::vector<Operation> all;
  const auto add_lut = [&all](const char *name, const std::string &input, auto call) {
    all.push_back({name, input, [call](Fault &fault, FILE *f, const char *) {
                     vexo_lut lut[3] = {};
                     const int status = fault([&] { return call(f, lut); });
                     return taken(lut, 3, status);
                   }});
  };
  const auto add_3d = [&all](const char *name, const std::string &input, auto call) {
    all.push_back({name, input, [call](Fault &fault, FILE *f, const char *path) {
                     return taken(fault([&] { return call(f, path); }));
                   }});
  };
  add_lut("init", "", [](FILE *, vexo_lut *lut) { return vexo_lut_init_with_gamma(lut, 9, 2.2F); });
  add_lut("integer", kCodes, vexo_luts_load_int);
  add_lut("decimal", kCodes, vexo_luts_load_file);
  add_lut("column", kColumn, vexo_lut_load_custom);
  add_3d("create", "", [](FILE *, const char *) { return vexo_3dlut_create(2, "title"); });
  add_3d("cube", kCube, [](FILE *f, const char *) { return vexo_3dlut_load_cube(f); });
  add_3d("cube file", kCube, [](FILE *, const char *path) { return vexo_3dlut_cube_load_file(path); });
  add_3d("packed", packed(), [](FILE *f, const char *) { return vexo_3dlut_load_dat(f); });
  add_3d("packed file", packed(), [](FILE *, const char *path) { return vexo_3dlut_dat_load_file(path); });
  add_3d("eeColor", kEeColor, [](FILE *f, const char *) { return vexo_3dlut_load_eecolor(f, 2); });
  add_3d("eeColor file", kEeColor, [](FILE *, const char *path) { return vexo_3dlut_eecolor_load_file(path, 2); });
  all.push_back({"cube text", kCube, [](Fault &fault, FILE *, const char *) {
                   std::string text = kCube;
                   const int length = static_cast<int>(text.size());
                   return taken(fault([&] { return vexo_3dlut_cube_load_buf(text.data(), length); }));
                 }});
  all.push_back({"packed bytes", "", [](Fault &fault, FILE *, const char *) {
                   std::string bytes = packed();
                   auto *buf = reinterpret_cast<uint8_t *>(bytes.data());
                   const int length = static_cast<int>(bytes.size());
                   return taken(fault([&] { return vexo_3dlut_dat_load_buf(buf, length); }));
                 }});
  all.push_back({"resample", "", [](Fault &fault, FILE *, const char *) {
                   const Lut lut(vexo_3dlut_create(3, "t"));
                   vexo_3dlut_init_unit(lut.get());
                   return taken(fault([&] { return vexo_3dlut_dup(lut.get(), 4, "u"); }));
                 }});
  all.push_back({"title", "", [](Fault &fault, FILE *, const char *) {
                   const Lut lut(vexo_3dlut_create(1, "before"));
                   const bool done = fault([&] { return vexo_3dlut_set_title(lut.get(), "after"); }) == 0;
                   EXPECT_STREQ(vexo_3dlut_title(lut.get()), done ? "after" : nullptr);
                   return done ? Words{1} : Words();
                 }});
  all.push_back({"forward inversion", "", [](Fault &fault, FILE *, const char *) {
                   std::vector<float> ramp = {0.0F, 0.25F, 1.0F};
                   std::vector<float> out(5, -7.0F);
                   vexo_lut panel = {3, ramp.data()};
                   vexo_lut lut = {5, out.data()};
                   vexo_gamma linear = {0.0F, 0.0F, 1.0F, 0.0F};
                   const int status = fault([&] { return vexo_gamma_lut_invert_2(&lut, &linear, &linear, &panel); });
                   EXPECT_EQ(out[4] == -7.0F, status != 0);
                   return status == 0 ? bits(out) : Words();
                 }});
  for (const auto &recipe : {vexo_generate_lut, vexo_data_alignment}) {
    all.push_back({"recipe", "", [recipe](Fault &fault, FILE *, const char *) {
                     vexo panel = {};
                     EXPECT_EQ(vexo_load_lcnr_xml(&panel.lcnr, VEXO_EXAMPLES "/sample-panel.xml"), 0);
                     std::vector<float> d(3 * 1024, -7.0F);
                     vexo_lut lut[3] = {{1024, &d[0]}, {1024, &d[1024]}, {1024, &d[2048]}};
                     vexo_gamma linear = {0.0F, 0.0F, 1.0F, 0.0F};
                     vexo_vector white = {{0.3127F, 0.3290F, 0.3583F}};
                     const int status = fault([&] { return recipe(lut, &panel, &linear, &linear, &white); });
                     EXPECT_TRUE(status == 0 || std::count(d.begin(), d.end(), -7.0F) == 3 * 1024);
                     return status == 0 ? bits(d) : Words();
                   }});
  }
  all.push_back({"LCNR", kRows, [](Fault &fault, FILE *, const char *path) {
                   vexo_lcnr lcnr = {};
                   return fault([&] { return vexo_load_lcnr_xml(&lcnr, path); }) == 0 ? bits_of(lcnr) : Words();
                 }});
  all.push_back({"LCNR, stored", "", [](Fault &fault, FILE *, const char *path) {
                   vexo_lcnr lcnr = {};
                   lcnr.num = 64;
                   const int status = fault([&] { return vexo_store_lcnr_xml(&lcnr, path); });
                   return status == 0 && vexo_load_lcnr_xml(&lcnr, path) == 0 ? bits_of(lcnr) : Words();
                 }});
  return all;
}

// One run on a file and a stream of the input; the stream's buffer is no allocation of the library's.
Words run(const Operation &operation, Fault &fault) {
  const TemporaryFolder folder;
  const std::string path = folder.path("input");
  FILE *f = fopen(path.c_str(), "w+");
  char buffer[BUFSIZ];
  setvbuf(f, buffer, _IOFBF, sizeof buffer);
  fwrite(operation.input.data(), 1, operation.input.size(), f);
  rewind(f);
  const Words words = operation.run(fault, f, path.c_str());
  fclose(f);
  return words;
}

TEST(Faults, EveryAllocation) {
  std::set<std::string> messages;
  for (const Operation &operation : operations()) {
    SCOPED_TRACE(operation.name);
    Fault none(0);
    const Words all = run(operation, none);
    ASSERT_FALSE(all.empty());
    int n = 0;
    for (bool happened = kAllocationCanFail; happened;) {
      Fault fault(++n);
      const std::string message = diagnostics([&] {
        const long before = blocks_held();
        {
          const Words words = run(operation, fault);
          EXPECT_TRUE(words == all || (words.empty() && fault.happened)) << n;
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

TEST(Faults, ReadsThatFailInTheMiddle) {
  Fault none(0);
  for (const Operation &operation : operations()) {
    const Words all = run(operation, none);
    for (size_t limit = 0; limit < operation.input.size() && operation.name.find(' ') == std::string::npos; limit++) {
      Cookie cookie = {operation.input, limit};
      FILE *f = cookie.open("r");
      Words words;
      const std::string message = diagnostics([&] { words = operation.run(none, f, "/"); });
      // The LCNR reader opens its file itself; a column has no size that would tell.
      const bool failed = ferror(f) != 0 || operation.name == "LCNR";
      EXPECT_TRUE(failed ? words.empty() || words == all || operation.name == "column" : words == all) << limit;
      EXPECT_EQ(message, operation.name == "LCNR" ? "Read error\n" : "") << operation.name;
      fclose(f);
    }
  }
}

// What went wrong on a stream before the call is the caller's business.
TEST(Faults, ErrorsBeforeTheCallDoNotCount) {
  for (const Operation &operation : operations()) {
    if (operation.input.empty() || operation.name.find(' ') != std::string::npos || operation.name == "LCNR") {
      continue;
    }
    Fault none(0);
    Cookie cookie = {operation.input, operation.input.size()};
    FILE *f = cookie.open("r");
    fputc('x', f);
    EXPECT_NE(ferror(f), 0);
    EXPECT_EQ(operation.run(none, f, "/"), run(operation, none)) << operation.name;
    fclose(f);
  }
}

TEST(Faults, WritesThatFailInTheMiddle) {
  const Lut lut = table(4, "t", [](int bi, int gi, int ri) {
    return vexo_vector{{static_cast<float>(ri) / 3.0F, static_cast<float>(gi) / 3.0F, static_cast<float>(bi) / 3.0F}};
  });
  vexo_cs cs = {};
  float ramp[] = {0.0F, 0.5F, 1.0F};
  vexo_lut luts[3] = {{3, ramp}, {3, ramp}, {3, ramp}};
  vexo panel = {};
  const struct {
    std::function<int(FILE *)> write;
    bool counts, tells; // its result falls short, or is -1, where the stream does not take all
  } writers[] = {{[&](FILE *f) { return vexo_3dlut_dump_cube(lut.get(), f); }, true, false},
                 {[&](FILE *f) { return vexo_3dlut_dump_cfe(lut.get(), f, "m", "v"); }, true, false},
                 {[&](FILE *f) { return vexo_3dlut_dump_dat(lut.get(), f, 10); }, true, false},
                 {[&](FILE *f) { return vexo_3dlut_dump_old_dat(lut.get(), f, 10); }, true, false},
                 {[&](FILE *f) { return vexo_3dlut_dump_debug(lut.get(), f, 10); }, true, false},
                 {[&](FILE *f) { return vexo_3dlut_dump_1dlut_debug(lut.get(), f, 10); }, true, false},
                 {[&](FILE *f) { return vexo_3dlut_dump_coe(lut.get(), f, 10); }, false, false},
                 {[&](FILE *f) { return vexo_luts_store_int(f, luts, 10); }, false, false},
                 {[&](FILE *f) { return vexo_lut_dump(f, luts, nullptr); }, false, false},
                 {[&](FILE *f) { return vexo_lut_dump_gray_gamma(f, &panel, luts); }, false, false},
                 {[&](FILE *f) { return vexo_matrix_store(f, &cs.npm); }, false, true},
                 {[&](FILE *f) { return vexo_vector_store(f, &cs.r); }, false, true},
                 {[&](FILE *f) { return vexo_cs_store(f, &cs); }, false, true}};
  diagnostics([&] {
    for (const auto &writer : writers) {
      int full = 0;
      const std::string text = printed([&](FILE *f) { full = writer.write(f); });
      for (size_t limit = 0; limit < text.size(); limit += 1 + text.size() / 50) {
        Cookie cookie = {"", limit};
        FILE *f = cookie.open("w");
        setvbuf(f, nullptr, _IONBF, 0);
        const int result = writer.write(f);
        EXPECT_NE(ferror(f), 0) << limit;
        EXPECT_TRUE(!writer.counts || result < full) << limit;
        EXPECT_TRUE(!writer.tells || result == -1) << limit;
        EXPECT_EQ(cookie.text, text.substr(0, cookie.text.size())) << limit;
        fclose(f);
      }
    }
  });
}

// A line that the stream does not take counts -1, however the stream is buffered, and the next is tried.
TEST(Faults, CountsAreThoseOfOneCallPerLine) {
  const Lut lut = table(4, "t", [](int bi, int gi, int ri) {
    const float red = bi == ri ? 10.0F / 1023.0F : static_cast<float>(ri) * 1e6F;
    return vexo_vector{{red, static_cast<float>(-gi) / 3.0F, static_cast<float>(bi) / 3.0F}};
  });
  const vexo_vector *first = vexo_3dlut_item(lut.get(), 0, 0, 0);
  const plain::Entries entries(first, first + 64);
  for (const int buffering : {_IOFBF, _IOLBF, _IONBF}) {
    for (size_t limit = 0; limit < 2600; limit += 13) {
      const auto written = [&](auto write) {
        Cookie cookie = {"", limit};
        FILE *f = cookie.open("w");
        char buffer[200];
        setvbuf(f, buffer, buffering, sizeof buffer);
        const long long sum = write(f);
        fclose(f);
        return std::to_string(sum) + " " + cookie.text;
      };
      EXPECT_EQ(written([&](FILE *f) { return vexo_3dlut_dump_cube(lut.get(), f); }), written([&](FILE *f) {
                  long long sum = fprintf(f, "TITLE \"t\"\n");
                  sum += fprintf(f, "\n");
                  sum += fprintf(f, "LUT_3D_SIZE 4\n");
                  sum += fprintf(f, "\n");
                  return sum + plain::print_entries(f, entries);
                }))
          << limit;
      // The code 10 is a line feed in a word.
      EXPECT_EQ(written([&](FILE *f) { return vexo_3dlut_dump_dat(lut.get(), f, 10); }), written([&](FILE *f) {
                  const std::string dat = printed([&](FILE *g) { vexo_3dlut_dump_dat(lut.get(), g, 10); });
                  size_t count = fwrite(dat.data(), 128, 1, f);
                  for (size_t i = 128; i < dat.size(); i += 4) {
                    count += fwrite(dat.data() + i, 4, 1, f);
                  }
                  return static_cast<long long>(count);
                }))
          << limit;
    }
  }
}

} // namespace
