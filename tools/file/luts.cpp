#include "file/luts.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <utility>

#include "base/lines.h"
#include "base/numbers.h"
#include "file/input.h"
#include "file/lut1d-cube.h"
#include "file/remarks.h"
#include "text/channels.h"
#include "text/failure.h"
#include "text/format.h"
#include "vexo-gamma-readers.h"

namespace {

const long long kLargest = 1 << 20; // entries; far beyond any hardware, and no burden
const int kLargestLog2 = 20;
const size_t kMostIssues = 10000; // of a file

// What tells the layout of a file.
struct Clues {
  long long size = -1; // as the last size line says
  bool has_bits = false;
  long long count = 0; // lines that begin with a number
  size_t columns = 0;  // of the first of them, whatever separates them
  bool blanks = true;  // only blanks separate them
  bool fractions = false;
  bool within_1 = true; // no number is above 1
};

// The numbers between blanks, commas, semicolons and colons of a line, up to a comment; of words that are none, those
// that hold a digit count as well.
size_t count_columns(const std::string &line) {
  const std::string text = line.substr(0, line.find('#'));
  const char *const separators = " \t\r\n,;:";
  size_t count = 0;
  for (size_t at = 0; (at = text.find_first_not_of(separators, at)) != std::string::npos;) {
    const size_t end = std::min(text.find_first_of(separators, at), text.size());
    const size_t digit = text.find_first_of("0123456789", at);
    count += digit < end ? 1 : 0;
    at = end;
  }
  return count;
}

void look(Clues &clues, const char *text, const char *limit) {
  float value = 0.0F;
  const char *rest = vexo_internal::scan(text, limit, &value);
  if (rest == nullptr) {
    return;
  }
  if (clues.count++ == 0) {
    clues.columns = count_columns(text);
    clues.blanks = std::string(text, std::strcspn(text, "#")).find_first_of(",;:") == std::string::npos;
  }
  clues.fractions = clues.fractions || std::strpbrk(text, ".eE") != nullptr;
  for (; rest != nullptr; rest = vexo_internal::scan(rest, limit, &value)) {
    clues.within_1 = clues.within_1 && value <= 1.0F;
  }
}

Clues clues_of(std::FILE *f) {
  Clues clues;
  for (vexo_internal::StreamLines<1024> lines(f); lines.next();) {
    clues.has_bits = clues.has_bits || std::strncmp(lines.text(), "LUT_1D_BITS", 11) == 0;
    if (std::sscanf(lines.text(), "LUT_1D_SIZE %lld", &clues.size) != 1) {
      look(clues, lines.text(), lines.limit());
    }
  }
  std::rewind(f);
  return clues;
}

// Codes with fractions, and as many lines as 2 to the power of the size, tell decimal files from integer ones. Values
// of 0 to 1, as many as the size says, are a cube, whatever its name.
std::string find_layout(const std::string &path, const Clues &clues) {
  if (has_extension(path, ".cube") && !clues.has_bits) {
    return "cube";
  }
  if (clues.columns != 1 && !(clues.columns == 3 && clues.blanks)) {
    refuse_input(
        input_name(path),
        format("%zu columns of numbers%s, expected one, or three with blanks between them; leave out what is no "
               "value, such as an index, or give --from column to read the first",
               clues.columns, clues.blanks ? "" : " between commas or other marks"));
  }
  if (clues.columns == 1) {
    return "column";
  }
  if (!clues.has_bits && clues.within_1 && clues.count == clues.size) {
    return "cube";
  }
  const bool power = clues.size > 2 && clues.size <= kLargestLog2 && clues.count == 1LL << clues.size;
  return clues.fractions || power ? "decimal" : "integer";
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

// Fractions, taken as codes of a depth that the file does not tell, are all 0.
void check_depth(LutScan &scan) {
  for (int c = 0; c < 3; c++) {
    float highest = 0.0F;
    for (const LutEntry &entry : scan.entries) {
      highest = std::max(highest, entry.value[c]);
    }
    if (highest > 0.0F && highest <= 1.0F) {
      const std::string what = format(
          "%s is at most %g where codes of %d bits are assumed; give codes the lines LUT_1D_SIZE and LUT_1D_BITS, "
          "and fractions the line LUT_1D_SIZE with --from cube",
          kChannels[c], static_cast<double>(highest), scan.bits);
      scan.issues.insert(scan.issues.begin(), {0, true, what});
      return;
    }
  }
}

void scan_lines(LutScan &scan, std::FILE *f) {
  const bool column = scan.layout == "column";
  const auto read = column                     ? vexo_internal::read_column
                    : scan.layout == "decimal" ? vexo_internal::read_decimal_luts
                                               : vexo_internal::read_integer_luts;
  const Judge judge = column ? Judge([&](const Remark &r) { return judge_column(scan, r); }) : LutJudge{scan};
  scan.complete = judged(judge, [&](const Collector *collector) { return read(f, scan.luts.get(), collector); }) == 0;
  if (column) {
    check_ends(scan);
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

LutScan scan_luts(const std::string &path, const std::string &layout) {
  LutScan scan;
  scan.path = path;
  const File f = open_input(path, "a LUT file");
  const Clues clues = clues_of(f.get());
  if (clues.count == 0) {
    refuse_input(input_name(path), "no line of numbers, expected a LUT (listings cannot be read)");
  }
  scan.layout = layout.empty() ? find_layout(path, clues) : layout;
  if (scan.layout == "cube") {
    scan_cube1d(scan, f.get());
  } else {
    scan_lines(scan, f.get());
    if (scan.layout != "column" && !clues.has_bits) {
      check_depth(scan);
    }
  }
  if (std::ferror(f.get()) != 0) { // to the library a file ends where reading does
    refuse_input(input_name(path), "read failed");
  }
  return scan;
}

void add_issue(LutScan &scan, const LutIssue &issue) {
  if (scan.issues.size() == kMostIssues) {
    throw Failure(kInputError, issue_text(scan, issue) + format("; more than %zu faults", kMostIssues));
  }
  scan.issues.push_back(issue);
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

std::string three_channel_layout(const std::string &path) { return has_extension(path, ".cube") ? "" : "integer"; }

LutSet read_luts(const std::string &path) {
  LutScan scan = scan_luts(path, three_channel_layout(path));
  return load_luts(scan);
}
