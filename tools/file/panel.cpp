#include "file/panel.h"

#include <cctype>
#include <cmath>
#include <cstring>

#include "colour/spaces.h"
#include "file/input.h"
#include "file/output.h"
#include "file/remarks.h"
#include "text/channels.h"
#include "text/failure.h"
#include "text/format.h"
#include "vexo-cs.h"
#include "vexo-lcnr-streams.h"

namespace {

// Tables of readings begin with a letter, a digit, a quote or a comment.
void check_kind(const std::string &name, const std::string &text) {
  const size_t first = text.find_first_not_of(" \t\r\n\xEF\xBB\xBF"); // a byte order mark at the end
  const auto begins_table = [](char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '#' || c == '"';
  };
  if (first != std::string::npos && begins_table(text[first])) {
    refuse_input(name,
                 "not XML, expected an LCNR file; vexo measure import makes one of readings in CGATS (.ti3) and CSV");
  }
}

// A LEVEL element and what the reader makes of it.
struct Element {
  int line = 0;
  int pieces = 0;        // of text; each is a row to the reader
  long long numbers = 0; // of the last piece
  bool clean = false;    // nothing but blanks follows them
  bool broken = false;   // over several lines
};

// The outermost LEVEL elements of a document; those beyond the capacity are only counted.
struct Document {
  std::string path;
  std::vector<Element> elements;
  size_t count = 0;
  long pieces = 0; // of text in all

  bool operator()(const Remark &remark) {
    switch (remark.kind) {
    case Remark::element:
      if (count++ < kPanelRows) {
        elements.push_back({static_cast<int>(remark.line)});
      }
      return true;
    case Remark::row:
      elements.back().numbers = remark.found;
      elements.back().clean = blank(remark.text);
      elements.back().broken = elements.back().broken || std::strchr(remark.text, '\n') != nullptr;
      [[fallthrough]];
    case Remark::too_many:
      elements.back().pieces++;
      pieces++;
      return true;
    case Remark::refused:
      if (remark.line == 0) {
        refuse_input(path, std::string("cannot read: ") + remark.text);
      }
      throw Failure(kInputError, format("%s:%ld: not XML: %s", path.c_str(), remark.line, remark.text));
    default:
      return true;
    }
  }
};

void check_element(const Document &document, size_t row) {
  const Element &element = document.elements[row];
  const std::string where = format("%s:%d: row %zu: ", document.path.c_str(), element.line, row);
  if (element.pieces > 1 && element.broken) {
    throw Failure(kInputError, where + "the element spans several lines, expected all ten numbers on one");
  }
  if (element.pieces > 1) {
    throw Failure(kInputError, where + format("text in %d pieces (%zu LEVEL elements give %ld), expected ten numbers "
                                              "on one line and nothing else",
                                              element.pieces, document.count, document.pieces));
  }
  if (element.numbers < 10) {
    throw Failure(kInputError, where + format("%lld numbers, expected ten separated by commas "
                                              "(level, then X,Y,Z of red, green and blue)",
                                              element.numbers));
  }
  if (!element.clean) {
    throw Failure(kInputError, where + "text after the tenth number, expected nothing");
  }
}

void check_values(const Panel &panel) {
  const vexo_lcnr &lcnr = panel.lcnr;
  for (int i = 0; i < lcnr.num; i++) {
    if (!std::isfinite(lcnr.sample[i])) {
      refuse_input(row_name(panel, i), "the level is not finite");
    }
    for (int n = 0; n < 9; n++) {
      if (!std::isfinite(lcnr.data[n / 3][n % 3][i])) {
        refuse_input(row_name(panel, i), format("%s of %s is not finite", kComponents[n % 3], kChannels[n / 3]));
      }
    }
    if (i == 0 && lcnr.sample[0] != 0.0F) {
      refuse_input(row_name(panel, 0), "the first row is black and has level 0");
    }
    if (i > 0 && !(lcnr.sample[i] > lcnr.sample[i - 1])) {
      refuse_input(row_name(panel, i), format("the level does not rise above the row before it (%g)",
                                              static_cast<double>(lcnr.sample[i - 1])));
    }
  }
}

float sum_above_black(const vexo_lcnr &lcnr, int channel, int row) {
  vexo_vector XYZ = above_black(lcnr, channel, row);
  return vexo_vector_sum(&XYZ);
}

vexo_cs colours_of(const vexo_lcnr &lcnr, int row) {
  vexo_cs cs = {};
  cs.r = above_black(lcnr, 0, row);
  cs.g = above_black(lcnr, 1, row);
  cs.b = above_black(lcnr, 2, row);
  return cs;
}

void check_light(const Panel &panel) {
  const int top = panel.lcnr.num - 1;
  for (int c = 0; c < 3; c++) {
    const double full = static_cast<double>(panel.lcnr.data[c][1][top]);
    const double black = static_cast<double>(panel.lcnr.data[c][1][0]);
    if (!(sum_above_black(panel.lcnr, c, top) > 0.0F) || !(full > black)) {
      refuse_input(row_name(panel, top),
                   format("the panel is black: %s at full drive has Y %g, black has %g", kChannels[c], full, black));
    }
  }
  if (!spans_triangle(colours_of(panel.lcnr, top))) {
    refuse_input(row_name(panel, top), "red, green and blue at full drive span no triangle, expected three colours");
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
  const std::string name = input_name(path);
  std::string text = read_text(path, "an LCNR file");
  check_kind(name, text);
  const File f(fmemopen(text.data(), text.size(), "r"));
  if (f == nullptr) {
    refuse_input(name, "cannot read: out of memory");
  }
  Panel panel;
  panel.path = path;
  Document document = {name, {}, 0, 0};
  judged(std::ref(document),
         [&](const Collector *collector) { return vexo_internal::read_lcnr(f.get(), &panel.lcnr, collector); });
  if (document.count == 0) {
    refuse_input(name, "no LEVEL rows");
  }
  if (document.count < 2 || document.count > kPanelRows) {
    refuse_input(name, format("%zu LEVEL rows, expected 2 to %zu", document.count, kPanelRows));
  }
  for (size_t row = 0; row < document.elements.size(); row++) {
    check_element(document, row);
    panel.lines.push_back(document.elements[row].line);
  }
  check_values(panel);
  check_light(panel);
  return panel;
}

std::string row_name(const Panel &panel, int row) {
  return format("%s:%d: row %d (level %g)", input_name(panel.path).c_str(), panel.lines[static_cast<size_t>(row)], row,
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
  return input_name(panel.path) + ": no colour can be computed for some level between the rows";
}

void write_panel(const std::string &path, vexo_lcnr lcnr) {
  OutputFile file(path);
  vexo_internal::write_lcnr(file.stream(), &lcnr);
  file.commit();
}
