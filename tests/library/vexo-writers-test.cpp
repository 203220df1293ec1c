// What the writers and dumps print: every byte, their results and their messages, in tests/golden/library/written.txt.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <map>

#include "golden.h"
#include "library/calls.h"
#include "locales.h"
#include "lut3d.h"
#include "vexo-cs.h"
#include "vexo-csc.h"

namespace {

float real(int i) { return static_cast<float>(i); }

// The 3D LUT of a name.
Lut lut_of(const std::string &name) {
  const auto eight = [](int bi, int gi, int ri) {
    const float i = real(4 * bi + 2 * gi + ri);
    return vexo_vector{{i / 8.0F, 1.0F - i / 16.0F, 0.25F + i / 64.0F}};
  };
  // Binary fractions whose 10-bit codes keep the axes apart.
  const auto apart = [](int bi, int gi, int ri) {
    return vexo_vector{{real(ri) / 4.0F, real(gi) / 8.0F, real(bi) / 16.0F}};
  };
  const auto counted = [](int bi, int gi, int ri) { return vexo_vector{{real(9 * bi + 3 * gi + ri) / 1024.0F, 0, 0}}; };
  const auto odd = [](int bi, int gi, int ri) {
    const float values[] = {-0.1F, NAN, -INFINITY, 0.5F, 0x1p-11F, 1.5F, INFINITY, 3e6F};
    return vexo_vector{{values[4 * bi + 2 * gi + ri], 1.0F, values[4 * bi + 2 * gi + ri]}};
  };
  const auto last = [](int bi, int gi, int ri) {
    return bi + gi + ri == 96 ? vexo_vector{{2.0F, -1.0F, NAN}}
                              : vexo_vector{{real(ri) / 32.0F, 0.5F, real(bi) / 32.0F}};
  };
  return name == "eight"       ? table(2, "eight", eight)
         : name == "untitled"  ? table(2, nullptr, eight)
         : name == "apart"     ? table(3, "0123456789abcdefghij", apart)
         : name == "six"       ? table(6, "six", apart)
         : name == "seventeen" ? table(17, "seventeen", apart)
         : name == "counted"   ? table(3, nullptr, counted)
         : name == "odd"       ? table(2, "odd", odd)
         : name == "wide"      ? table(33, "wide", last)
                               : table(1, nullptr, [](int, int, int) {
                              return vexo_vector{{1.0F, 1.0F, 1.0F}};
                            });
}

// Three tables of a name.
std::unique_ptr<Luts> luts_of(const std::string &name) {
  const std::map<std::string, std::vector<float>> columns = {
      {"odd", {0.5F, -0.2F, NAN, INFINITY, -INFINITY}}, {"one", {1.0F}}, {"none", {}}, {"tenth", {0.0F, 0.1F, -1.0F}}};
  const auto column = columns.find(name);
  auto luts =
      std::make_unique<Luts>(column == columns.end() ? std::stoi(name) : static_cast<int>(column->second.size()));
  for (vexo_lut &lut : luts->lut) {
    vexo_lut_by_linear_gamma(&lut);
    if (column != columns.end()) {
      std::copy(column->second.begin(), column->second.end(), lut.d);
    }
  }
  if (luts->lut[0].size > 3) { // apart from one another
    luts->lut[1].d[1] = 1.5F;
    luts->lut[2].d[2] = 0.0F;
  }
  return luts;
}

// A BT.709 panel of 100 cd/m2 whose channels follow a pure power law of 2.2.
std::unique_ptr<vexo> power_panel() {
  const float xyY[3][3] = {{0.64F, 0.33F, 21.26F}, {0.30F, 0.60F, 71.52F}, {0.15F, 0.06F, 7.22F}};
  auto panel = std::make_unique<vexo>();
  for (int c = 0; c < 3; c++) {
    panel->maxY[c] = xyY[c][2];
    for (int k = 1; k < 1024; k++) {
      panel->data[c][0][k] = xyY[c][0];
      panel->data[c][1][k] = xyY[c][1];
      panel->data[c][2][k] = static_cast<float>(std::pow(k / 1023.0, 2.2));
    }
  }
  return panel;
}

// Writes what the words of a case name.
int write(FILE *f, const std::vector<std::string> &words) {
  using Writer3d = int (*)(vexo_3dlut *, FILE *, int);
  const std::map<std::string, Writer3d> writers = {
      {"dat", vexo_3dlut_dump_dat}, {"old", vexo_3dlut_dump_old_dat}, {"dat12", vexo_3dlut_dump_dat_12bit},
      {"coe", vexo_3dlut_dump_coe}, {"debug", vexo_3dlut_dump_debug}, {"gray", vexo_3dlut_dump_1dlut_debug}};
  const std::string &writer = words[0];
  const std::string &what = words[1];
  const int bits = words.size() > 2 ? std::atoi(words[2].c_str()) : 0;
  if (writers.count(writer) != 0) {
    return writers.at(writer)(lut_of(what).get(), f, bits);
  }
  if (writer == "cube") {
    return vexo_3dlut_dump_cube(lut_of(what).get(), f);
  }
  if (writer == "cfe") {
    const bool named = words.size() > 3;
    return vexo_3dlut_dump_cfe(lut_of(what).get(), f, named ? words[2].c_str() : nullptr,
                               named ? words[3].c_str() : nullptr);
  }
  char name[] = "Panel";
  char *const prefix = words.back() == name ? name : nullptr;
  vexo_cs cs = {
      {{1, 2, 3}}, {{4, 5, 6}}, {{7, 8, 9}}, {{0.5F, 0.25F, 0}}, {{{1, 2, 3}, {4, 1e-7F, 6}, {-0.0F, NAN, 9.5F}}}};
  vexo_csc csc = {cs.npm, {{16, 128.25F, -1}}};
  vexo_csc_reg reg = {{{2048, -206, 374}, {0, 1, 2}, {3, 4, 8191}}, {64, 512, -992}, {1023, 1022, 1021}, {0, 7, -1}};
  const std::map<std::string, std::function<int()>> dumps = {
      {"matrix", [&] { return vexo_matrix_dump(f, &cs.npm, prefix), vexo_matrix_store(f, &cs.npm); }},
      {"vector", [&] { return vexo_vector_dump(f, &cs.r, prefix), vexo_vector_store(f, &cs.r); }},
      {"space", [&] { return vexo_cs_dump(f, &cs, prefix), vexo_cs_store(f, &cs); }},
      {"conversion", [&] { return vexo_csc_dump(f, &csc, prefix), 0; }},
      {"registers", [&] { return vexo_csc_reg_dump(f, &reg, name), 0; }}};
  if (writer == "dump") {
    return dumps.at(what)();
  }
  const auto panel = power_panel();
  if (writer == "rows") {
    for (int n = 0; n < 640; n++) {
      (&panel->lcnr.data[0][0][0])[n] = real(n) + 0.0625F;
    }
    panel->lcnr.data[0][0][0] = 1e9F;
    panel->lcnr.data[1][1][0] = 0.0000004F;
    panel->lcnr.data[2][2][1] = -100.1F;
    panel->lcnr.num = std::stoi(what);
    MemoryFile file;
    const int status = vexo_store_lcnr_xml(&panel->lcnr, file.path().c_str());
    fputs(file.contents().c_str(), f);
    fputs("\n", f);
    vexo_lcnr_dump(f, &panel->lcnr, prefix);
    return status;
  }
  if (what == "tables") {
    return vexo_data_dump(f, panel->data, prefix), 0;
  }
  if (what == "bare") {
    return vexo_dump_gray(f, panel.get());
  }
  const auto luts = luts_of(what);
  vexo_lut *const lut = luts->lut;
  if (words.back() == "unmixed") { // no mixture takes a negative chromaticity; the middle of three entries reads it
    panel->data[0][0][511] = panel->data[0][0][512] = -0.1F;
  }
  if (words.back() == "lifted") { // black gives light
    lut[0].d[0] = lut[1].d[0] = lut[2].d[0] = 0.125F;
  }
  return writer == "listing"        ? vexo_lut_dump(f, lut, prefix)
         : writer == "listing-int"  ? (vexo_lut_dump_int(f, lut, bits, prefix), 0)
         : writer == "listing-int3" ? (vexo_lut_dump_int3(f, lut, bits, prefix), 0)
         : writer == "integers"     ? vexo_luts_store_int(f, lut, bits)
         : writer == "gamma"        ? vexo_lut_dump_gray_gamma(f, panel.get(), lut)
                                    : vexo_lut_dump_gray(f, panel.get(), lut);
}

// Without addresses, and without the middle of a long text.
std::string shortened(std::string text) {
  for (size_t at = 0; (at = text.find("(0x", at)) != std::string::npos; at++) {
    text.replace(at + 1, text.find(')', at) - at - 1, "ADDRESS");
  }
  uint32_t digest = 0;
  for (const char c : text) {
    digest = digest * 16777619U ^ static_cast<unsigned char>(c);
  }
  return text.size() < 3000
             ? escaped(text)
             : escaped(text.substr(0, 600)) + "... " + std::to_string(text.size()) + " characters, digest " +
                   std::to_string(digest) + "\n" + escaped(text.substr(text.size() - 300));
}

} // namespace

TEST(Writers, PrintEveryByte) {
  in_both_locales([] {
    expect_golden_cases("written.txt", [](const std::string &text) {
      std::istringstream in(text);
      const std::vector<std::string> words{std::istream_iterator<std::string>(in), {}};
      std::string outcome;
      const std::string message = diagnostics([&] {
        int result = 0;
        outcome = shortened(without_nan_signs(printed([&](FILE *f) { result = write(f, words); })));
        outcome += "= " + std::to_string(result) + "\n";
      });
      return outcome + message;
    });
  });
}
