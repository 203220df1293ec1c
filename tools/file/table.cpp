#include "file/table.h"

#include <algorithm>
#include <optional>

#include "text/failure.h"
#include "text/format.h"
#include "text/grammar.h"

namespace {

const size_t kMostCells = 1000; // of a row

std::string trimmed(const std::string &text) {
  const char *const blanks = " \t\r";
  const size_t first = text.find_first_not_of(blanks);
  return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// The text's lines; they end with a line feed, a carriage return, or both.
std::vector<std::string> lines_of(const std::string &text) {
  const std::string byte_order_mark = "\xEF\xBB\xBF"; // which spreadsheets put first
  std::vector<std::string> lines;
  size_t begin = text.rfind(byte_order_mark, 0) == 0 ? byte_order_mark.size() : 0;
  while (begin < text.size()) {
    const size_t end = std::min(text.find_first_of("\r\n", begin), text.size());
    lines.push_back(text.substr(begin, end - begin));
    begin = end + (text.compare(end, 2, "\r\n") == 0 ? 2 : 1);
  }
  return lines;
}

// Outside quotes.
bool holds(const std::string &line, char separator) {
  bool quoted = false;
  return std::any_of(line.begin(), line.end(), [&](char c) {
    quoted = quoted != (c == '"');
    return c == separator && !quoted;
  });
}

char separator_of(const std::string &line) { return holds(line, '\t') ? '\t' : holds(line, ';') ? ';' : ','; }

// With a decimal point, or with one comma in its place.
std::optional<float> number_of(std::string text) {
  const size_t comma = text.find(',');
  if (comma != std::string::npos && text.find('.') == std::string::npos) {
    text[comma] = '.';
  }
  return finite_number(text);
}

bool holds_number(const std::vector<std::string> &cells) {
  return std::any_of(cells.begin(), cells.end(), [](const std::string &cell) { return number_of(cell).has_value(); });
}

} // namespace

Table::Table(const std::string &name, const std::string &text) : name_(name) {
  int number = 0;
  std::string comment;
  for (const std::string &line : lines_of(text)) {
    number++;
    const std::string content = trimmed(line);
    if (content.empty() || content.front() == '#') {
      if (!content.empty() && rows_.empty()) {
        comment = content.substr(1);
        comment_.line = number;
      }
      continue;
    }
    separator_ = separator_ == '\0' ? separator_of(line) : separator_;
    TableRow row = {number, cells(line, number)};
    if (!row.cells.empty()) {
      rows_.push_back(std::move(row));
    }
    if (!rows_.empty() && rows_.back().cells.size() > rows_.front().cells.size()) {
      refuse_input(place(rows_.back()), format("%zu columns, expected %zu as in line %d", rows_.back().cells.size(),
                                               rows_.front().cells.size(), rows_.front().line));
    }
  }
  if (!rows_.empty() && !holds_number(rows_.front().cells)) {
    heading_ = rows_.front();
    rows_.erase(rows_.begin());
  }
  if (comment.find('"') == std::string::npos) {
    comment_.cells = cells(comment, comment_.line);
  }
}

// Those of a line up to the last that holds text.
std::vector<std::string> Table::cells(const std::string &line, int number) const {
  std::vector<std::string> cells(1);
  bool quoted = false;
  for (size_t i = 0; i < line.size(); i++) {
    if (line[i] == '"' && quoted && line.compare(i, 2, "\"\"") == 0) {
      cells.back() += line[i++];
    } else if (line[i] == '"') {
      quoted = !quoted;
    } else if (line[i] != separator_ || quoted) {
      cells.back() += line[i];
    } else if (cells.size() < kMostCells) {
      cells.emplace_back();
    } else {
      refuse_input(place({number, {}}), format("more than %zu columns", kMostCells));
    }
  }
  if (quoted) {
    refuse_input(place({number, {}}), "a quote that is not closed on its line");
  }
  std::transform(cells.begin(), cells.end(), cells.begin(), trimmed);
  while (!cells.empty() && cells.back().empty()) {
    cells.pop_back();
  }
  return cells;
}

const char *Table::separator() const {
  return separator_ == '\t' ? "tabs" : separator_ == ';' ? "semicolons" : "commas";
}

float Table::number(const TableRow &row, size_t cell, const std::string &column) {
  const std::string text = cell < row.cells.size() ? row.cells[cell] : "";
  const auto value = number_of(text);
  if (text.empty()) {
    refuse_input(place(row), column + " is missing, expected a number");
  }
  if (!value) {
    refuse_input(place(row), format("%s is '%s', expected a number", column.c_str(), text.c_str()));
  }
  const size_t mark = text.find_first_of(".,");
  if (mark != std::string::npos) {
    decimal_mark_ = decimal_mark_ == '\0' ? text[mark] : decimal_mark_;
    if (decimal_mark_ != text[mark]) {
      refuse_input(place(row), format("%s is '%s', expected a decimal %s as before", column.c_str(), text.c_str(),
                                      decimal_mark_ == ',' ? "comma" : "point"));
    }
  }
  return *value;
}
