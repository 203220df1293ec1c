// The words of the command line and the lines of CSV files: what is accepted means what it says.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "bits.h"
#include "calibration/target.h"
#include "colour/spaces.h"
#include "file/table.h"
#include "signal/signal.h"
#include "text/format.h"
#include "text/grammar.h"
#include "text/hints.h"
#include "tool.h"

namespace {

void check_numbers(const std::string &text) {
  if (const auto number = finite_number(text)) {
    require(std::isfinite(*number), "numbers are finite");
    require(bits(std::strtof(text.c_str(), nullptr)) == bits(*number), "the C library reads the same number");
  }
  vexo_vector v = {};
  if (scan_triple(text, &v)) {
    const std::string exact =
        format("%.9g,%.9g,%.9g", static_cast<double>(v.d[0]), static_cast<double>(v.d[1]), static_cast<double>(v.d[2]));
    const vexo_vector again = parse_triple("", exact);
    require(bits(again) == bits(v), "nine digits tell every number");
  }
  accepted([&] {
    require(parse_integer("", text, -1000, 1000) == std::strtol(text.c_str(), nullptr, 10), "a whole number");
  });
}

void check_words(const std::string &text) {
  accepted([&] {
    const White white = parse_white("", text);
    const auto &xyz = white.xyz.d;
    require(white.is_native() || (xyz[0] > 0.0F && xyz[1] > 0.0F && xyz[2] >= 0.0F), "a white has a chromaticity");
  });
  accepted([&] {
    const LibraryCurve curve = parse_camera_curve("", text);
    require(curve.gamma.gamma > 0.0F && curve.gamma.transition < 1.0F && !describe(curve).empty(), "a curve");
  });
  accepted([&] {
    const double light = parse_tone_curve("", text).luminance(0.5, {100.0, 0.1});
    require(light >= 0.0 && light < 1e4, "a tone curve gives light");
  });
  accepted([&] { parse_space("", text); });
  accepted([&] {
    const Signal signal = parse_signal("", text);
    require(signal.bits >= 8 && signal.bits <= 30, "a depth");
    int order[3];
    std::copy_n(signal.order, 3, order);
    std::sort(order, order + 3);
    require(order[0] == 0 && order[1] == 1 && order[2] == 2, "each component once");
  });
  const std::vector<std::string> words = split(text, ' ');
  require(join(words).size() <= text.size(), "the words and the blanks between them");
  const std::string meant = nearest(words.front(), words);
  require(meant.empty() || std::find(words.begin(), words.end(), meant) != words.end(), "a hint is a word");
}

void check_lines(const std::string &text) {
  accepted([&] {
    Table table("table", text);
    int line = 0;
    for (const TableRow &row : table.rows()) {
      require(row.line > line && !row.cells.empty(), "rows in their order");
      line = row.line;
      for (size_t cell = 0; cell < row.cells.size(); cell++) {
        const std::string &content = row.cells[cell];
        require(content.find_first_of("\r\n") == std::string::npos, "cells within a line");
        const bool reads = accepted([&] { table.number(row, cell, "a cell"); });
        require(!reads || content.find_first_of("0123456789") != std::string::npos, "a number has digits");
      }
    }
    const auto ends = [](char c) { return c == '\r' || c == '\n'; };
    require(line <= 1 + std::count_if(text.begin(), text.end(), ends), "no more lines than the text has");
  });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::string text = text_of(data, size);
  check_numbers(text);
  check_words(text);
  check_lines(text);
  return 0;
}
