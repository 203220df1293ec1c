// Readings in tables. The columns are told by their names, in any order: r, g, b, or level, or level and channel, then
// a colour as X, Y, Z or x, y, Y. Other columns are not used.
#include <algorithm>
#include <array>
#include <cmath>

#include "file/input.h"
#include "file/readings.h"
#include "file/table.h"
#include "text/channels.h"
#include "text/failure.h"
#include "text/format.h"
#include "text/grammar.h"
#include "text/verbose.h"
#include "vexo-cs.h"

namespace {

using Names = std::vector<std::string>;
using Three = std::array<size_t, 3>; // columns

const Names kDrives = {"r", "g", "b"};
const Names kXYZ = {"X", "Y", "Z"};
const Names kxyY = {"x", "y", "Y"};

// Tables without a heading, by their number of columns.
const Names kUnnamed[] = {{"level", "X", "Y", "Z"},
                          {"level", "channel", "X", "Y", "Z"},
                          {"r", "g", "b", "X", "Y", "Z"},
                          {"level", "Xr", "Yr", "Zr", "Xg", "Yg", "Zg", "Xb", "Yb", "Zb"}};

// The names of a table's columns.
class Heading {
public:
  Heading(std::string place, Names names, const char *origin = "")
      : place_(std::move(place)), names_(std::move(names)), origin_(origin) {}

  const Names &names() const { return names_; }
  const char *origin() const { return origin_; } // in words, where it is no heading of the table

  // In upper or lower case.
  bool has(const std::string &name) const { return count(lower, name) > 0; }
  bool has_exactly(const Names &all) const {
    return std::all_of(all.begin(), all.end(), [&](const std::string &name) { return count(as_it_is, name) > 0; });
  }

  // The one column of a name. Throws a Failure (input) where there is none, or several.
  size_t column(const std::string &name) const { return column(lower, name); }
  Three columns(const Names &three, bool exactly) const {
    Three found = {};
    std::transform(three.begin(), three.end(), found.begin(),
                   [&](const std::string &name) { return column(exactly ? as_it_is : lower, name); });
    return found;
  }

private:
  using Spelling = std::string(std::string);

  static std::string as_it_is(std::string name) { return name; }

  long count(Spelling *spelt, const std::string &name) const {
    return std::count_if(names_.begin(), names_.end(),
                         [&](const std::string &other) { return spelt(other) == spelt(name); });
  }

  size_t column(Spelling *spelt, const std::string &name) const {
    if (count(spelt, name) != 1) {
      refuse_input(place_, format("%s column '%s' in the heading (%s)", count(spelt, name) == 0 ? "no" : "a second",
                                  name.c_str(), join(names_).c_str()));
    }
    const auto same = [&](const std::string &other) { return spelt(other) == spelt(name); };
    return static_cast<size_t>(std::find_if(names_.begin(), names_.end(), same) - names_.begin());
  }

  std::string place_; // in messages
  Names names_;
  const char *origin_;
};

// Its own, or a comment of as many names above the first row, or that of tables with so many columns.
Heading heading_of(const Table &table) {
  if (!table.heading().cells.empty()) {
    return {table.place(table.heading()), table.heading().cells};
  }
  const TableRow &first = table.rows().front();
  Heading comment = {table.place(table.comment()), table.comment().cells, " (named in a comment)"};
  if (comment.names().size() == first.cells.size() && (comment.has("level") || comment.has("r"))) {
    return comment;
  }
  for (const Names &names : kUnnamed) {
    if (names.size() == first.cells.size()) {
      return {table.place(first), names, " (assumed: no heading)"};
    }
  }
  refuse_input(table.place(first), format("%zu columns without a heading, expected names such as level,X,Y,Z or "
                                          "level,channel,X,Y,Z or r,g,b,X,Y,Z",
                                          first.cells.size()));
}

// The names of a table's columns, and the rows by them.
class Reader {
public:
  explicit Reader(const Table &table) : table_(table), heading_(heading_of(table)) {
    if (heading_.has("r") || heading_.has("g") || heading_.has("b")) {
      add_ = &Reader::add_patch;
      drives_ = use(heading_.columns(kDrives, false));
      find_colour();
      return;
    }
    level_ = heading_.column("level");
    drives_ = use({level_, level_, level_});
    if (heading_.has("channel")) {
      add_ = &Reader::add_single;
      channel_ = heading_.column("channel");
      used_.push_back(channel_);
      find_colour();
    } else if (heading_.has("Xr")) {
      add_ = &Reader::add_three;
      for (const std::string channel : {"r", "g", "b"}) {
        colours_.push_back(use(heading_.columns({"X" + channel, "Y" + channel, "Z" + channel}, false)));
      }
    } else {
      add_ = &Reader::add_patch;
      readings_.ramp = true;
      find_colour();
    }
  }

  Readings read() {
    for (const TableRow &row : table_.rows()) {
      (this->*add_)(row);
    }
    check_lower_case();
    tell();
    return std::move(readings_);
  }

private:
  Three use(const Three &columns) {
    used_.insert(used_.end(), columns.begin(), columns.end());
    return columns;
  }

  // The case of letters tells X, Y, Z from x, y, Y. Where it tells neither, a column Z or z tells X, Y, Z.
  void find_colour() {
    const bool XYZ = heading_.has_exactly(kXYZ);
    xyY_ = !XYZ && (heading_.has_exactly(kxyY) || (heading_.has_exactly({"x"}) && !heading_.has("Z")));
    colours_ = {use(heading_.columns(xyY_ ? kxyY : kXYZ, xyY_ || XYZ))};
  }

  float number(const TableRow &row, size_t column) { return table_.number(row, column, heading_.names()[column]); }

  float drive(const TableRow &row, size_t column) {
    const float value = number(row, column);
    if (value < 0.0F) {
      refuse_input(table_.place(row), heading_.names()[column] + " " + row.cells[column] + ", expected 0 or more");
    }
    return value;
  }

  vexo_vector colour(const TableRow &row, const Three &at) {
    const vexo_vector v = {{number(row, at[0]), number(row, at[1]), number(row, at[2])}};
    return xyY_ ? from_xyY(row, v) : v;
  }

  // Black, with a Y of 0, may have any x and y.
  vexo_vector from_xyY(const TableRow &row, const vexo_vector &xyY) const {
    const auto [x, y, Y] = xyY.d;
    if (Y == 0.0F) {
      return {};
    }
    if (y == 0.0F || std::fabs(x) > 1.0F || std::fabs(y) > 1.0F) {
      refuse_input(table_.place(row), format("x %g, y %g is no chromaticity", x, y));
    }
    return {{x / y * Y, Y, (1.0F - x - y) / y * Y}};
  }

  void add_patch(const TableRow &row) {
    readings_.list.push_back({{drive(row, drives_[0]), drive(row, drives_[1]), drive(row, drives_[2])},
                              colour(row, colours_.front()),
                              table_.place(row)});
  }

  void add_channel(const TableRow &row, int channel, float level, const vexo_vector &XYZ) {
    Reading reading = {{0.0F, 0.0F, 0.0F}, XYZ, table_.place(row), channel};
    reading.drive[channel] = level;
    readings_.list.push_back(reading);
  }

  void add_single(const TableRow &row) {
    const float level = drive(row, level_);
    const vexo_vector XYZ = colour(row, colours_.front());
    const std::string name = channel_ < row.cells.size() ? lower(row.cells[channel_]) : "";
    for (int c = 0; c < 3; c++) {
      if (name == kChannels[c] || name == std::string(1, *kChannels[c])) {
        add_channel(row, c, level, XYZ);
        return;
      }
    }
    if (name != "black") {
      refuse_input(table_.place(row),
                   format("channel '%s', expected red, green, blue, r, g, b or black", name.c_str()));
    }
    if (level != 0.0F) {
      refuse_input(table_.place(row), "black at level " + row.cells[level_] + ", expected level 0");
    }
    readings_.list.push_back({{0.0F, 0.0F, 0.0F}, XYZ, table_.place(row)});
  }

  void add_three(const TableRow &row) {
    const float level = drive(row, level_);
    for (int c = 0; c < 3; c++) {
      add_channel(row, c, level, colour(row, colours_[static_cast<size_t>(c)]));
    }
  }

  // The columns x, y, z may be chromaticities, whose sum is 1.
  void check_lower_case() const {
    const auto sums_to_1 = [](const Reading &r) {
      return std::fabs(r.XYZ.d[0] + r.XYZ.d[1] + r.XYZ.d[2] - 1.0F) < 0.01F;
    };
    if (heading_.has_exactly({"x", "y", "z"}) && !heading_.has_exactly(kXYZ) &&
        std::all_of(readings_.list.begin(), readings_.list.end(), sums_to_1)) {
      refuse_input(table_.name(), "x, y and z are chromaticities without luminance, expected X, Y, Z or x, y, Y");
    }
  }

  // How the table was read.
  void tell() const {
    std::vector<std::string> names[2]; // not used, used
    for (size_t i = 0; i < heading_.names().size(); i++) {
      names[std::count(used_.begin(), used_.end(), i) > 0 ? 1 : 0].push_back(heading_.names()[i]);
    }
    say(format("%s: %zu rows of %s%s, separated by %s%s%s", table_.name().c_str(), table_.rows().size(),
               join(names[1]).c_str(), heading_.origin(), table_.separator(),
               names[0].empty() ? "" : "; not used: ", join(names[0]).c_str()));
  }

  Table table_;
  Heading heading_;
  void (Reader::*add_)(const TableRow &row) = nullptr; // a row as readings
  size_t level_ = 0;
  size_t channel_ = 0;
  Three drives_ = {};
  std::vector<Three> colours_; // one, or those of red, green and blue
  bool xyY_ = false;
  std::vector<size_t> used_; // columns
  Readings readings_;
};

} // namespace

Readings read_csv(const std::string &path, const std::string &text) {
  const Table table(input_name(path), text);
  return table.rows().empty() ? Readings{} : Reader(table).read();
}
