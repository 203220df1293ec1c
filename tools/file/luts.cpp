#include "file/luts.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <utility>

#include "base/codes.h"
#include "base/lines.h"
#include "base/numbers.h"
#include "file/input.h"
#include "file/remarks.h"
#include "text/channels.h"
#include "text/failure.h"
#include "text/format.h"
#include "vexo-gamma-readers.h"

namespace {

const long long kLargest = 1 << 20; // entries; far beyond any hardware, and no burden
const int kLargestLog2 = 20;
const size_t kMostIssues = 10000; // of a file

void add_issue(LutScan &scan, const LutIssue &issue) {
  if (scan.issues.size() == kMostIssues) {
    throw Failure(kInputError, issue_text(scan, issue) + format("; more than %zu faults", kMostIssues));
  }
  scan.issues.push_back(issue);
}

// How many numbers a line begins with, up to three.
int leading_numbers(const char *text, const char *limit) {
  int count = 0;
  for (float number = 0.0F; count < 3; count++) {
    text = vexo_internal::scan(text, limit, &number);
    if (text == nullptr) {
      break;
    }
  }
  return count;
}

// By the first line of numbers; codes with fractions, and as many lines as 2 to the power of the size, tell decimal
// files from integer ones.
std::string find_layout(const std::string &path, std::FILE *f) {
  long long size = -1;
  long long count = 0;
  int columns = 0;
  bool fractions = false;
  for (vexo_internal::StreamLines<1024> lines(f); lines.next();) {
    const int found = leading_numbers(lines.text(), lines.limit());
    if (std::sscanf(lines.text(), "LUT_1D_SIZE %lld", &size) == 1 || found == 0) {
      continue;
    }
    columns = columns == 0 ? found : columns;
    count++;
    fractions = fractions || std::strpbrk(lines.text(), ".eE") != nullptr;
  }
  std::rewind(f);
  if (columns == 0) {
    refuse_input(input_name(path), "no line of numbers, expected a LUT (listings cannot be read)");
  }
  if (columns < 3) {
    return "column";
  }
  return fractions || (size > 2 && size <= kLargestLog2 && count == 1LL << size) ? "decimal" : "integer";
}

void judge_codes(LutScan &scan, const Remark &entry) {
  scan.entries.push_back({entry.line, {entry.values[0], entry.values[1], entry.values[2]}});
  const long long most = (1LL << scan.bits) - 1;
  for (int c = 0; c < 3; c++) {
    const float code = entry.values[c];
    if (!(code >= 0.0F && code <= static_cast<float>(most))) {
      add_issue(scan, {entry.line, true,
                       format("%s is %.9g, outside 0 to %lld (%d bits)", kChannels[c], static_cast<double>(code), most,
                              scan.bits)});
    }
  }
  if (!blank(entry.text)) {
    add_issue(scan, {entry.line, false, "text after the third number is passed over"});
  }
}

// Of a three-channel file.
struct LutJudge {
  LutScan &scan;
  bool sized = false;

  bool operator()(const Remark &r) {
    const bool decimal = scan.layout == "decimal";
    const auto add = [&](bool fatal, const std::string &text) { add_issue(scan, {r.line, fatal, text}); };
    switch (r.kind) {
    case Remark::size:
      check_header(r, "LUT_1D_SIZE", decimal ? 1 : 2, decimal ? kLargestLog2 : kLargest);
      sized = true;
      return true;
    case Remark::bits:
    case Remark::no_bits:
      check_header(r, "LUT_1D_BITS", 1, 30);
      scan.bits = static_cast<int>(r.found);
      scan.size = static_cast<int>(r.expected);
      if (r.kind == Remark::no_bits) {
        add(false, sized ? format("no LUT_1D_BITS line after the size: %d bits are assumed", scan.bits)
                         : format("no LUT_1D_SIZE line at the start: %d entries of %d bits are assumed", scan.size,
                                  scan.bits));
      }
      return true;
    case Remark::entry:
      judge_codes(scan, r);
      return true;
    case Remark::passed_over:
      add(true, format("not three %s, so entry %lld stays 0", decimal ? "numbers" : "codes", r.found));
      return true;
    case Remark::too_few:
      add(true, format("the file ends after %lld lines of data, expected %d", r.found, scan.size));
      return true;
    case Remark::too_many:
      if (!blank(r.text)) {
        add(false, format("more than the %d lines of data; this one and those after it are not read", scan.size));
      }
      return blank(r.text);
    default:
      return true;
    }
  }

  void check_header(const Remark &r, const char *keyword, long long min, long long max) const {
    if (r.found < min || r.found > max) {
      refuse_input(scan.path + ":" + std::to_string(r.line),
                   format("%s %lld, expected %lld to %lld", keyword, r.found, min, max));
    }
  }
};

// Of a column.
bool judge_column(LutScan &scan, const Remark &r) {
  const auto add = [&](bool fatal, const std::string &text) { add_issue(scan, {r.line, fatal, text}); };
  const auto begins = [&](const char *word) { return std::strncmp(r.text, word, std::strlen(word)) == 0; };
  if (r.kind == Remark::entry) {
    const float v = r.values[0];
    scan.entries.push_back({r.line, {v, v, v}});
    if (!blank(r.text) && r.text[std::strspn(r.text, " \t")] != '#') {
      add(false, "text after the number is passed over");
    }
    if (!std::isfinite(v)) {
      add(true, "the number is not finite");
    }
  } else if (r.kind == Remark::passed_over && !blank(r.text) && !begins("#") && !begins("LUT_1D_") &&
             !begins("TITLE")) {
    add(false, "no number, passed over");
  } else if (r.kind == Remark::too_many) {
    add(false, format("more than %lld numbers; this one and those after it are not read", r.expected));
  }
  return r.kind != Remark::too_many;
}

// A column has to rise.
void check_ends(LutScan &scan) {
  scan.size = static_cast<int>(scan.entries.size());
  const float first = scan.entries.empty() ? 0.0F : scan.entries.front().value[0];
  const float last = scan.entries.empty() ? 0.0F : scan.entries.back().value[0];
  if (!(last > first)) {
    add_issue(scan, {0, true,
                     format("the last number, %g, is not above the first, %g", static_cast<double>(last),
                            static_cast<double>(first))});
  }
}

} // namespace

LutSet::LutSet(int size) {
  for (vexo_lut &lut : luts_) {
    if (vexo_lut_init_zero(&lut, size) != 0) {
      throw Failure(kInputError, "out of memory");
    }
  }
}

LutSet::~LutSet() {
  for (vexo_lut &lut : luts_) {
    vexo_lut_destroy(&lut);
  }
}

LutSet::LutSet(LutSet &&other) noexcept {
  for (int c = 0; c < 3; c++) {
    luts_[c] = std::exchange(other.luts_[c], vexo_lut{});
  }
}

LutSet &LutSet::operator=(LutSet &&other) noexcept {
  std::swap(luts_, other.luts_);
  return *this;
}

LutSet identity_luts(int size) {
  LutSet luts(size);
  for (int c = 0; c < 3; c++) {
    vexo_lut_by_linear_gamma(luts.get() + c);
  }
  return luts;
}

LutSet resampled(LutSet &luts, int size) {
  LutSet result(size);
  for (int c = 0; c < 3; c++) {
    vexo_convert_lut(result.get() + c, luts.get() + c);
  }
  return result;
}

void round_to_codes(LutSet &luts, int bits) {
  const float max_code = vexo_internal::max_code(bits);
  for (int c = 0; c < 3; c++) {
    const vexo_lut &lut = luts.get()[c];
    for (int i = 0; i < lut.size; i++) {
      lut.d[i] = static_cast<float>(vexo_internal::quantise(lut.d[i], max_code)) / max_code;
    }
  }
}

LutScan scan_luts(const std::string &path, const std::string &layout) {
  if (!layout.empty() && layout != "integer" && layout != "decimal" && layout != "column") {
    throw Failure(kUsageError, "--from '" + layout + "': expected integer, decimal or column");
  }
  LutScan scan;
  scan.path = path;
  const File f = open_input(path, "a LUT file");
  const std::string found = find_layout(path, f.get());
  scan.layout = layout.empty() ? found : layout;
  const bool column = scan.layout == "column";
  const auto read = column                     ? vexo_internal::read_column
                    : scan.layout == "decimal" ? vexo_internal::read_decimal_luts
                                               : vexo_internal::read_integer_luts;
  const Judge judge = column ? Judge([&](const Remark &r) { return judge_column(scan, r); }) : LutJudge{scan};
  scan.complete =
      judged(judge, [&](const Collector *collector) { return read(f.get(), scan.luts.get(), collector); }) == 0;
  if (column) {
    check_ends(scan);
  }
  if (std::ferror(f.get()) != 0) { // to the library a file ends where reading does
    refuse_input(input_name(path), "read failed");
  }
  return scan;
}

std::string issue_text(const LutScan &scan, const LutIssue &issue) {
  return input_name(scan.path) + (issue.line > 0 ? ":" + std::to_string(issue.line) : "") + ": " + issue.text;
}

LutSet load_luts(LutScan &scan) {
  for (const LutIssue &issue : scan.issues) {
    if (issue.fatal) {
      throw Failure(kInputError, issue_text(scan, issue));
    }
  }
  if (!scan.complete) {
    refuse_input(input_name(scan.path), "out of memory");
  }
  if (scan.layout != "column") {
    return std::move(scan.luts);
  }
  LutSet luts(scan.size);
  for (int c = 0; c < 3; c++) {
    vexo_lut_set_data(luts.get() + c, scan.luts.get()[0].d);
  }
  return luts;
}

LutSet read_luts(const std::string &path) {
  LutScan scan = scan_luts(path, "integer");
  return load_luts(scan);
}
