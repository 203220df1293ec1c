// What the readers make of files: tests/golden/library/read-*.txt hold the files and the outcomes.
#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <utility>
#include <vector>

#include "golden.h"
#include "locales.h"
#include "lut3d.h"
#include "vexo.h"

namespace {

std::string number(float x) { // in any locale
  char text[32] = " nan";     // the sign of a NaN is nobody's
  return std::isnan(x) ? text : std::string(text, std::to_chars(text + 1, text + sizeof text, x).ptr);
}

// A line of an outcome, and what was said.
template <typename Read> std::string line(const std::string &reader, Read read) {
  std::string outcome;
  const std::string message = diagnostics([&] { outcome = read(); });
  return reader + ":" + outcome + "\n" + message;
}

// The same with how far a stream was read.
template <typename Read> std::string stream_line(const std::string &reader, const std::string &text, Read read) {
  MemoryFile file(text);
  return line(reader, [&] {
    const std::string outcome = read(file.stream());
    return " " + std::to_string(ftell(file.stream())) + " bytes," + outcome;
  });
}

std::string outcome(vexo_3dlut *read) {
  const Lut lut(read);
  if (lut == nullptr) {
    return " none";
  }
  const char *title = vexo_3dlut_title(lut.get());
  std::string text = " size " + std::to_string(vexo_3dlut_size(lut.get())) +
                     (title != nullptr ? ", \"" + std::string(title) + "\"" : std::string(", no title")) + ",";
  for (const float x : components(lut.get())) {
    text += number(x);
  }
  return text;
}

TEST(Readers, Cube) {
  in_both_locales([] {
    expect_golden_cases("read-cube.txt", [](const std::string &text) {
      std::vector<char> exact(text.c_str(), text.c_str() + text.size() + 1); // a checker sees a read beyond it
      return stream_line("stream", text, [](FILE *f) { return outcome(vexo_3dlut_load_cube(f)); }) +
             line("memory",
                  [&] { return outcome(vexo_3dlut_cube_load_buf(exact.data(), static_cast<int>(text.size()))); });
    });
  });
}

TEST(Readers, EeColor) { // the first line of a case is the size
  in_both_locales([] {
    expect_golden_cases("read-eecolor.txt", [](const std::string &text) {
      return stream_line("stream", text.substr(text.find('\n') + 1),
                         [&](FILE *f) { return outcome(vexo_3dlut_load_eecolor(f, std::stoi(text))); });
    });
  });
}

TEST(Readers, Packed) {
  expect_golden_cases("read-packed.txt", [](const std::string &text) {
    std::vector<uint8_t> exact(text.begin(), text.end());
    return stream_line("stream", text, [](FILE *f) { return outcome(vexo_3dlut_load_dat(f)); }) + line("memory", [&] {
             return outcome(vexo_3dlut_dat_load_buf(exact.data(), static_cast<int>(exact.size())));
           });
  });
}

// Up to eight entries, without zeros at the end, and the sum of the others' red.
std::string entries(const vexo_lut *lut, int channels) {
  std::string text = " " + std::to_string(lut->size) + " entries";
  std::string zeros;
  float rest = 0.0F;
  for (int i = 0; i < lut->size && lut[channels - 1].d != nullptr; i++) {
    rest += i < 8 ? 0.0F : lut->d[i];
    std::string entry = ",";
    bool zero = true;
    for (int c = 0; c < channels; c++) {
      entry += number(lut[c].d[i]);
      zero = zero && lut[c].d[i] == 0.0F;
    }
    zeros += i < 8 ? entry : "";
    text += zero ? "" : std::exchange(zeros, "");
  }
  return text + (rest != 0.0F ? ", then" + number(rest) + " in all" : "");
}

TEST(Readers, Tables) {
  in_both_locales([] {
    expect_golden_cases("read-tables.txt", [](const std::string &text) {
      std::string outcomes;
      const struct {
        const char *name;
        int (*read)(FILE *, vexo_lut *);
        int channels;
      } readers[] = {
          {"integer", vexo_luts_load_int, 3}, {"decimal", vexo_luts_load_file, 3}, {"column", vexo_lut_load_custom, 1}};
      for (const auto &reader : readers) {
        outcomes += stream_line(reader.name, text, [&](FILE *f) {
          vexo_lut lut[3] = {};
          const int status = reader.read(f, lut);
          std::string result = (status == 0 ? "" : " refused,") + entries(lut, reader.channels);
          for (vexo_lut &channel : lut) {
            vexo_lut_destroy(&channel);
          }
          return result;
        });
      }
      return outcomes;
    });
  });
}

// A row's numbers; "-" for one that was not read.
std::string row(const vexo_lcnr &lcnr, int i) {
  std::string text = "\n ";
  for (int n = 0; n < 10; n++) {
    const float x = n == 0 ? lcnr.sample[i] : lcnr.data[(n - 1) / 3][(n - 1) % 3][i];
    text += x == -7.0F ? " -" : number(x);
  }
  return text;
}

TEST(Readers, Measurements) {
  in_both_locales([] {
    expect_golden_cases("read-lcnr.txt", [](const std::string &text) {
      const MemoryFile file(text);
      return line("file", [&] {
        vexo_lcnr lcnr;
        std::fill_n(&lcnr.data[0][0][0], 9 * 64, -7.0F);
        std::fill_n(lcnr.sample, 64, -7.0F);
        std::string result = vexo_load_lcnr_xml(&lcnr, file.path().c_str()) == 0 ? "" : " refused,";
        result += " " + std::to_string(lcnr.num) + " rows";
        for (int i = 0; i < lcnr.num; i++) {
          result += i > 1 && row(lcnr, i) == row(lcnr, i - 1) ? "" : row(lcnr, i); // without those like the one above
        }
        return result;
      });
    });
  });
}

} // namespace
