#include "file/lut1d-cube.h"

#include <cctype>
#include <cmath>
#include <iterator>
#include <sstream>

#include "base/lines.h"
#include "text/channels.h"
#include "text/failure.h"
#include "text/format.h"
#include "text/grammar.h"

namespace {

using Words = std::vector<std::string>;

const float kMostEntries = 65536.0F; // by the format

// Keywords that say which inputs the table is for, with the numbers of a table for 0 to 1.
struct Inputs {
  const char *name;
  std::vector<float> unit;
};
const Inputs kInputs[] = {
    {"DOMAIN_MIN", {0.0F, 0.0F, 0.0F}}, {"DOMAIN_MAX", {1.0F, 1.0F, 1.0F}}, {"LUT_1D_INPUT_RANGE", {0.0F, 1.0F}}};

// The numbers of all words from the first one on; empty where one is no number.
std::vector<float> numbers(const Words &words, size_t first) {
  std::vector<float> values;
  for (size_t i = first; i < words.size(); i++) {
    const auto value = finite_number(words[i]);
    if (!value) {
      return {};
    }
    values.push_back(*value);
  }
  return values;
}

int size_of(const LutScan &scan, long line, const Words &words) {
  const std::vector<float> size = numbers(words, 1);
  if (size.size() != 1 || !(size[0] >= 2.0F && size[0] <= kMostEntries) || size[0] != std::floor(size[0])) {
    throw Failure(kInputError,
                  issue_text(scan, {line, true, join(words) + format(", expected a size of 2 to %g", kMostEntries)}));
  }
  return static_cast<int>(size[0]);
}

void take_keyword(LutScan &scan, long line, const Words &words) {
  if (words[0] == "LUT_1D_SIZE") {
    scan.size = size_of(scan, line, words);
  } else if (words[0] == "LUT_3D_SIZE") {
    throw Failure(kInputError, issue_text(scan, {line, true, "a 3D LUT, which vexo lut3d reads; expected a 1D LUT"}));
  } else if (const Inputs *inputs = find_name(kInputs, words[0])) {
    if (numbers(words, 1) != inputs->unit) {
      add_issue(scan, {line, true, join(words) + ": expected inputs of 0 to 1"});
    }
  } else if (words[0] != "TITLE") {
    add_issue(scan, {line, false, words[0] + " is passed over"});
  }
}

void take_entry(LutScan &scan, long line, const Words &words) {
  const std::vector<float> values = numbers(words, 0);
  if (values.size() != 3) {
    add_issue(scan, {line, true, "not three numbers"});
    return;
  }
  scan.entries.push_back({line, {values[0], values[1], values[2]}});
  for (size_t c = 0; c < 3; c++) {
    if (values[c] < 0.0F || values[c] > 1.0F) {
      add_issue(scan, {line, true, format("%s is %.9g, outside 0 to 1", kChannels[c], values[c])});
    }
  }
}

LutSet table_of(const std::vector<LutEntry> &entries) {
  LutSet luts(static_cast<int>(entries.size()));
  for (size_t i = 0; i < entries.size(); i++) {
    for (int c = 0; c < 3; c++) {
      luts.get()[c].d[i] = entries[i].value[c];
    }
  }
  return luts;
}

} // namespace

void scan_cube1d(LutScan &scan, std::FILE *f) {
  for (vexo_internal::StreamLines<1024> lines(f); lines.next();) {
    std::istringstream in(lines.text());
    const Words words{std::istream_iterator<std::string>(in), {}};
    if (!words.empty() && words[0][0] != '#') {
      const bool keyword = std::isupper(static_cast<unsigned char>(words[0][0])) != 0;
      (keyword ? take_keyword : take_entry)(scan, lines.number(), words);
    }
  }
  if (scan.size == 0) {
    throw Failure(kInputError, issue_text(scan, {0, true, "no LUT_1D_SIZE line"}));
  }
  if (scan.entries.size() != static_cast<size_t>(scan.size)) {
    add_issue(scan, {0, true, format("%zu lines of three numbers, expected %d", scan.entries.size(), scan.size)});
  }
  scan.luts = table_of(scan.entries);
  scan.complete = true;
}

void write_cube1d(std::FILE *f, const vexo_lut *luts) {
  std::fprintf(f, "LUT_1D_SIZE %d\nDOMAIN_MIN 0.0 0.0 0.0\nDOMAIN_MAX 1.0 1.0 1.0\n\n", luts[0].size);
  for (int i = 0; i < luts[0].size; i++) {
    std::fprintf(f, "%.8f %.8f %.8f\n", static_cast<double>(luts[0].d[i]), static_cast<double>(luts[1].d[i]),
                 static_cast<double>(luts[2].d[i]));
  }
}
