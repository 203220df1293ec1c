#include "file/panel.h"

#include <expat.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cmath>
#include <cstring>
#include <memory>

#include "file/input.h"
#include "file/output.h"
#include "text/channels.h"
#include "text/failure.h"
#include "text/format.h"
#include "vexo-cs.h"

namespace {

const size_t kCapacity = 64;     // rows of vexo_lcnr
const size_t kLongestRow = 4096; // characters of a row that are looked at: far more than ten numbers need

struct Element {
  int line;
  std::string text;
};

// The LEVEL elements of a document, each with its text; those beyond the capacity are only counted.
struct Scan {
  XML_Parser parser = nullptr;
  std::vector<Element> elements;
  size_t count = 0;
  int depth = 0;
};

bool is_level(const char *name) { return std::strcmp(name, "LEVEL") == 0; }

void on_start(void *data, const char *name, const char ** /*attributes*/) {
  auto *scan = static_cast<Scan *>(data);
  if (is_level(name) && scan->depth++ == 0 && scan->count++ < kCapacity) {
    scan->elements.push_back({static_cast<int>(XML_GetCurrentLineNumber(scan->parser)), ""});
  }
}

void on_end(void *data, const char *name) { static_cast<Scan *>(data)->depth -= is_level(name) ? 1 : 0; }

void on_text(void *data, const char *text, int length) {
  auto *scan = static_cast<Scan *>(data);
  if (scan->depth > 0 && scan->elements.back().text.size() < kLongestRow) {
    scan->elements.back().text.append(text, static_cast<size_t>(length));
  }
}

[[noreturn]] void refuse(const std::string &path, const std::string &what) {
  throw Failure(kInputError, path + ": " + what);
}

Scan read_elements(const std::string &path) {
  const std::string text = read_text(path, "an LCNR file");
  const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(XML_ParserCreate(nullptr), XML_ParserFree);
  if (parser == nullptr) {
    refuse(path, "cannot read: out of memory");
  }
  Scan scan;
  scan.parser = parser.get();
  XML_SetUserData(parser.get(), &scan);
  XML_SetElementHandler(parser.get(), on_start, on_end);
  XML_SetCharacterDataHandler(parser.get(), on_text);
  if (XML_Parse(parser.get(), text.data(), static_cast<int>(text.size()), 1) != XML_STATUS_OK) {
    throw Failure(kInputError, format("%s:%lu: not XML: %s", path.c_str(), XML_GetCurrentLineNumber(parser.get()),
                                      XML_ErrorString(XML_GetErrorCode(parser.get()))));
  }
  return scan;
}

// How many of the ten numbers stand at the start of the text, and whether nothing but blanks follows the tenth.
int leading_numbers(const std::string &text, bool *clean_end) {
  float d[10];
  int end = 0;
  const int count = std::sscanf(text.c_str(), " %f,%f,%f,%f,%f,%f,%f,%f,%f,%f %n", &d[0], &d[1], &d[2], &d[3], &d[4],
                                &d[5], &d[6], &d[7], &d[8], &d[9], &end);
  *clean_end = count == 10 && static_cast<size_t>(end) == text.size();
  return count < 0 ? 0 : count;
}

void check_element(const std::string &path, const Element &element, size_t row) {
  const std::string where = format("%s:%d: row %zu: ", path.c_str(), element.line, row);
  bool clean_end = false;
  const int count = leading_numbers(element.text, &clean_end);
  if (count < 10) {
    throw Failure(kInputError, where + format("%d numbers, expected ten separated by commas "
                                              "(level, then X,Y,Z of red, green and blue)",
                                              count));
  }
  if (!clean_end) {
    throw Failure(kInputError, where + "text after the tenth number, expected nothing");
  }
  if (element.text.find('\n') != std::string::npos) {
    throw Failure(kInputError, where + "the element spans several lines, expected all ten numbers on one");
  }
}

void check_values(const Panel &panel) {
  const vexo_lcnr &lcnr = panel.lcnr;
  for (int i = 0; i < lcnr.num; i++) {
    if (!std::isfinite(lcnr.sample[i])) {
      refuse(row_name(panel, i), "the level is not finite");
    }
    for (int n = 0; n < 9; n++) {
      if (!std::isfinite(lcnr.data[n / 3][n % 3][i])) {
        refuse(row_name(panel, i), format("%s of %s is not finite", kComponents[n % 3], kChannels[n / 3]));
      }
    }
    if (i == 0 && lcnr.sample[0] != 0.0F) {
      refuse(row_name(panel, 0), "the first row is black and has level 0");
    }
    if (i > 0 && !(lcnr.sample[i] > lcnr.sample[i - 1])) {
      refuse(row_name(panel, i),
             format("the level does not rise above the row before it (%g)", static_cast<double>(lcnr.sample[i - 1])));
    }
  }
}

float sum_above_black(const vexo_lcnr &lcnr, int channel, int row) {
  vexo_vector XYZ = above_black(lcnr, channel, row);
  return vexo_vector_sum(&XYZ);
}

void check_light(const Panel &panel) {
  const int top = panel.lcnr.num - 1;
  for (int c = 0; c < 3; c++) {
    const double full = static_cast<double>(panel.lcnr.data[c][1][top]);
    const double black = static_cast<double>(panel.lcnr.data[c][1][0]);
    if (!(sum_above_black(panel.lcnr, c, top) > 0.0F) || !(full > black)) {
      refuse(row_name(panel, top),
             format("the panel is black: %s at full drive has Y %g, black has %g", kChannels[c], full, black));
    }
  }
}

// Whether the colour has a chromaticity that takes part in an additive mixture: y above 0, x and y below 1.
bool mixes(vexo_vector XYZ) {
  if (vexo_XYZ_valid(&XYZ) == 0 || vexo_XYZ_xyY(&XYZ) != 0) {
    return false;
  }
  return XYZ.d[1] > 0.0F && XYZ.d[0] < 1.0F && XYZ.d[1] < 1.0F;
}

} // namespace

vexo_vector above_black(const vexo_lcnr &lcnr, int channel, int row) {
  vexo_vector XYZ;
  for (int m = 0; m < 3; m++) {
    XYZ.d[m] = lcnr.data[channel][m][row] - lcnr.data[channel][m][0];
  }
  return XYZ;
}

Panel read_panel(const std::string &path) {
  if (path == "-") {
    throw Failure(kUsageError, "a panel is read from a file, not from standard input");
  }
  const Scan scan = read_elements(path);
  const std::vector<Element> &elements = scan.elements;
  if (scan.count == 0) {
    refuse(path, "no LEVEL rows");
  }
  if (scan.count < 2 || scan.count > kCapacity) {
    refuse(path, format("%zu LEVEL rows, expected 2 to %zu", scan.count, kCapacity));
  }
  Panel panel;
  panel.path = path;
  for (size_t row = 0; row < elements.size(); row++) {
    check_element(path, elements[row], row);
    panel.lines.push_back(elements[row].line);
  }
  if (vexo_load_lcnr_xml(&panel.lcnr, path.c_str()) != 0) {
    refuse(path, "cannot be read as an LCNR file");
  }
  if (static_cast<size_t>(panel.lcnr.num) != elements.size()) {
    refuse(path,
           format("%zu LEVEL elements give %d pieces of text; each holds its numbers on one line and nothing else",
                  elements.size(), panel.lcnr.num));
  }
  check_values(panel);
  check_light(panel);
  return panel;
}

std::string row_name(const Panel &panel, int row) {
  return format("%s:%d: row %d (level %g)", panel.path.c_str(), panel.lines[static_cast<size_t>(row)], row,
                static_cast<double>(panel.lcnr.sample[row]));
}

std::string unusable_row(const Panel &panel) {
  const vexo_lcnr &lcnr = panel.lcnr;
  for (int i = 1; i < lcnr.num; i++) {
    for (int c = 0; c < 3; c++) {
      if (!(sum_above_black(lcnr, c, i) > 0.0F)) {
        return row_name(panel, i) + format(": %s is not above black (X + Y + Z), so it has no colour", kChannels[c]);
      }
    }
  }
  for (int i = 1; i < lcnr.num; i++) {
    for (int c = 0; c < 3; c++) {
      const vexo_vector XYZ = above_black(lcnr, c, i);
      if (!mixes(XYZ)) {
        return row_name(panel, i) + format(": %s above black is X %g, Y %g, Z %g, which is no colour that mixes",
                                           kChannels[c], static_cast<double>(XYZ.d[0]), static_cast<double>(XYZ.d[1]),
                                           static_cast<double>(XYZ.d[2]));
      }
    }
  }
  return panel.path + ": no colour can be computed for some level between the rows";
}

void write_panel(const std::string &path, vexo_lcnr lcnr) {
  OutputFile file(path);
  // The library writes to a path and checks nothing, so it writes to memory.
  const int fd = memfd_create("panel", MFD_CLOEXEC);
  const File memory(fd < 0 ? nullptr : fdopen(fd, "r"));
  if (memory == nullptr || vexo_store_lcnr_xml(&lcnr, format("/proc/self/fd/%d", fd).c_str()) != 0) {
    throw Failure(kOutputError, path + ": cannot write: no memory file");
  }
  std::string text;
  for (int c = std::getc(memory.get()); c != EOF; c = std::getc(memory.get())) {
    text.push_back(static_cast<char>(c));
  }
  const std::string end = "</LCNR>";
  if (text.size() < end.size() || text.compare(text.size() - end.size(), end.size(), end) != 0) {
    throw Failure(kOutputError, path + ": write failed: no memory file of its size");
  }
  std::fwrite(text.data(), 1, text.size(), file.stream());
  file.commit();
}
