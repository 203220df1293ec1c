#include "file/luts.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <utility>

#include "file/input.h"
#include "text/channels.h"
#include "text/failure.h"
#include "text/format.h"
#include "text/lines.h"

namespace {

const long long kLargest = 1 << 20; // entries; far beyond any hardware, and no burden
const int kLargestLog2 = 20;
const int kColumnLimit = 1024;    // numbers read from a column
const size_t kMostIssues = 10000; // of a file

[[noreturn]] void refuse(const std::string &path, const std::string &what) {
  throw Failure(kInputError, input_name(path) + ": " + what);
}

void add_issue(LutScan &scan, const LutIssue &issue) {
  if (scan.issues.size() == kMostIssues) {
    throw Failure(kInputError, issue_text(scan, issue) + format("; more than %zu faults", kMostIssues));
  }
  scan.issues.push_back(issue);
}

int numbers_in(const char *text) {
  float v[3];
  return std::max(0, std::sscanf(text, "%f %f %f", &v[0], &v[1], &v[2]));
}

// By the first line of numbers; codes with fractions, and as many lines as 2 to the power of the size, tell decimal
// files from integer ones.
std::string find_layout(const std::string &path, std::FILE *f) {
  long long size = -1;
  long long count = 0;
  int columns = 0;
  bool fractions = false;
  for (Lines<1024> lines(f); lines.next();) {
    const char *text = lines.text();
    const int found = numbers_in(text);
    if (std::sscanf(text, "LUT_1D_SIZE %lld", &size) == 1 || found == 0) {
      continue;
    }
    columns = columns == 0 ? found : columns;
    count++;
    fractions = fractions || std::strpbrk(text, ".eE") != nullptr;
  }
  std::rewind(f);
  if (columns == 0) {
    refuse(path, "no line of numbers, expected a LUT (listings cannot be read)");
  }
  if (columns < 3) {
    return "column";
  }
  return fractions || (size > 2 && size <= kLargestLog2 && count == 1LL << size) ? "decimal" : "integer";
}

// A header line "KEYWORD number" within limits; false for any other line.
bool header(const LutScan &scan, const Lines<1024> &lines, const char *keyword, long long min, long long max,
            long long *number) {
  const size_t length = std::strlen(keyword);
  if (std::strncmp(lines.text(), keyword, length) != 0 || std::sscanf(lines.text() + length, "%lld", number) != 1) {
    return false;
  }
  if (*number < min || *number > max) {
    refuse(scan.path + ":" + std::to_string(lines.number()),
           format("%s %lld, expected %lld to %lld", keyword, *number, min, max));
  }
  return true;
}

// The three numbers of a line and what follows them; false where the library's reader finds fewer.
bool scan_codes(const char *text, bool decimal, LutEntry &entry, const char **rest) {
  int end = 0;
  long long codes[3] = {};
  float(&v)[3] = entry.value;
  const int count = decimal ? std::sscanf(text, "%f %f %f%n", &v[0], &v[1], &v[2], &end)
                            : std::sscanf(text, "%lld %lld %lld%n", &codes[0], &codes[1], &codes[2], &end);
  for (int c = 0; c < 3 && !decimal; c++) {
    v[c] = static_cast<float>(codes[c]);
  }
  *rest = text + end;
  return count == 3;
}

void scan_three(LutScan &scan) {
  const bool decimal = scan.layout == "decimal";
  const auto add = [&](long line, bool fatal, const std::string &text) { add_issue(scan, {line, fatal, text}); };
  Lines<1024> lines(scan.file.get());
  bool more = lines.next();
  long long size = decimal ? 10 : 1024;
  long long bits = decimal ? 8 : 16;
  if (header(scan, lines, "LUT_1D_SIZE", decimal ? 1 : 2, decimal ? kLargestLog2 : kLargest, &size)) {
    more = lines.next();
    if (more && header(scan, lines, "LUT_1D_BITS", 1, 30, &bits)) {
      more = lines.next();
    } else {
      add(0, false, format("no LUT_1D_BITS line after the size: %lld bits are assumed", bits));
    }
  } else {
    add(0, false, format("no LUT_1D_SIZE line at the start: 1024 entries of %lld bits are assumed", bits));
  }
  scan.size = static_cast<int>(decimal ? 1LL << size : size);
  scan.bits = static_cast<int>(bits);
  const float max_code = static_cast<float>((1LL << bits) - 1);
  int i = 0;
  for (; i < scan.size && more; i++, more = lines.next()) {
    LutEntry entry = {lines.number(), {}};
    const char *rest = nullptr;
    if (!scan_codes(lines.text(), decimal, entry, &rest)) {
      add(entry.line, true, format("not three %s, so entry %d stays 0", decimal ? "numbers" : "codes", i));
      continue;
    }
    scan.entries.push_back(entry);
    for (int c = 0; c < 3; c++) {
      if (!(entry.value[c] >= 0.0F && entry.value[c] <= max_code)) {
        add(entry.line, true,
            format("%s is %.9g, outside 0 to %lld (%lld bits)", kChannels[c], static_cast<double>(entry.value[c]),
                   (1LL << bits) - 1, bits));
      }
    }
    if (!blank(rest)) {
      add(entry.line, false, "text after the third number is passed over");
    }
  }
  if (i < scan.size) {
    add(0, true, format("the file ends after %d lines of data, expected %d", i, scan.size));
  }
  for (; more; more = lines.next()) {
    if (!blank(lines.text())) {
      add(lines.number(), false,
          format("more than the %d lines of data; this one and those after it are not read", scan.size));
      return;
    }
  }
}

void scan_column(LutScan &scan) {
  const auto add = [&](long line, bool fatal, const std::string &text) { add_issue(scan, {line, fatal, text}); };
  for (Lines<128> lines(scan.file.get()); lines.next();) {
    float v = 0.0F;
    int end = 0;
    const char *text = lines.text();
    if (std::sscanf(text, "%f%n", &v, &end) != 1) {
      if (!blank(text) && *text != '#' && std::strncmp(text, "LUT_1D_", 7) != 0 &&
          std::strncmp(text, "TITLE", 5) != 0) {
        add(lines.number(), false, "no number, passed over");
      }
      continue;
    }
    if (scan.entries.size() == kColumnLimit) {
      add(lines.number(), false,
          format("more than %d numbers; this one and those after it are not read", kColumnLimit));
      break;
    }
    const char *rest = text + end + std::strspn(text + end, " \t");
    if (!blank(rest) && *rest != '#') {
      add(lines.number(), false, "text after the number is passed over");
    }
    if (!std::isfinite(v)) {
      add(lines.number(), true, "the number is not finite");
    }
    scan.entries.push_back({lines.number(), {v, v, v}});
  }
  scan.size = static_cast<int>(scan.entries.size());
  if (!(scan.entries.back().value[0] > scan.entries.front().value[0])) {
    add(0, true,
        format("the last number, %g, is not above the first, %g", static_cast<double>(scan.entries.back().value[0]),
               static_cast<double>(scan.entries.front().value[0])));
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
  if (!layout.empty() && layout != "integer" && layout != "decimal" && layout != "column") {
    throw Failure(kUsageError, "--from '" + layout + "': expected integer, decimal or column");
  }
  LutScan scan;
  scan.path = path;
  scan.file = open_input(path, "a LUT file");
  const std::string found = find_layout(path, scan.file.get());
  scan.layout = layout.empty() ? found : layout;
  scan.layout == "column" ? scan_column(scan) : scan_three(scan);
  return scan;
}

std::string issue_text(const LutScan &scan, const LutIssue &issue) {
  return input_name(scan.path) + (issue.line > 0 ? ":" + std::to_string(issue.line) : "") + ": " + issue.text;
}

LutSet load_luts(const LutScan &scan) {
  for (const LutIssue &issue : scan.issues) {
    if (issue.fatal) {
      throw Failure(kInputError, issue_text(scan, issue));
    }
  }
  LutSet luts;
  int status = 0;
  std::FILE *const f = scan.file.get();
  std::rewind(f);
  if (scan.layout == "column") {
    for (int c = 0; c < 3 && status == 0; c++) {
      std::rewind(f);
      status = vexo_lut_load_custom(f, luts.get() + c);
    }
  } else {
    status = (scan.layout == "decimal" ? vexo_luts_load_file : vexo_luts_load_int)(f, luts.get());
  }
  if (status != 0 || std::ferror(f) != 0) { // to the library a column ends where reading does
    refuse(scan.path, std::ferror(f) != 0 ? "read failed" : "out of memory");
  }
  return luts;
}

LutSet read_luts(const std::string &path) { return load_luts(scan_luts(path, "integer")); }
