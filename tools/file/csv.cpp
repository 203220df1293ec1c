#include "file/csv.h"

#include "file/input.h"
#include "text/failure.h"
#include "text/format.h"
#include "text/grammar.h"

namespace {

std::string trimmed(const std::string &text) {
  const char *const blanks = " \t\r";
  const size_t first = text.find_first_not_of(blanks);
  return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

} // namespace

std::vector<CsvLine> csv_lines(const std::string &text) {
  const std::string byte_order_mark = "\xEF\xBB\xBF"; // which spreadsheets put first
  std::vector<CsvLine> lines;
  int number = 0;
  for (const std::string &line : split(text.rfind(byte_order_mark, 0) == 0 ? text.substr(3) : text, '\n')) {
    number++;
    const std::string content = trimmed(line);
    if (content.empty() || content.front() == '#') {
      continue;
    }
    lines.push_back({number, split(line, ',')});
    for (std::string &field : lines.back().fields) {
      field = trimmed(field);
    }
  }
  if (!lines.empty() && !finite_number(lines.front().fields.front())) {
    lines.erase(lines.begin());
  }
  return lines;
}

float csv_number(const std::string &path, const CsvLine &line, size_t column) {
  const std::string &field = line.fields[column];
  const auto value = finite_number(field);
  if (!value) {
    refuse_input(csv_place(path, line),
                 format("column %zu is '%s', expected a number with a decimal point", column + 1, field.c_str()));
  }
  return *value;
}

std::string csv_place(const std::string &path, const CsvLine &line) {
  return input_name(path) + ":" + std::to_string(line.number);
}

std::vector<GrayReading> read_gray(const std::string &path) {
  std::vector<GrayReading> readings;
  for (const CsvLine &line : csv_lines(read_text(path, "a gray ramp"))) {
    if (line.fields.size() != 4) {
      refuse_input(csv_place(path, line), format("%zu columns, expected 4 (level,X,Y,Z)", line.fields.size()));
    }
    readings.push_back({csv_number(path, line, 0),
                        {{csv_number(path, line, 1), csv_number(path, line, 2), csv_number(path, line, 3)}}});
  }
  return readings;
}
