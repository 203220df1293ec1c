// Tables as text: cells between commas, semicolons or tabs, as spreadsheets and programs of probes write them. The same
// in every locale.
#ifndef VEXO_TOOLS_TABLE_H
#define VEXO_TOOLS_TABLE_H

#include <string>
#include <vector>

struct TableRow {
  int line;                       // in the file, from 1
  std::vector<std::string> cells; // without quotes and the blanks around them
};

// The separator is the first of tab, semicolon and comma that the first row holds. Rows without any text and lines that
// begin with # are passed over. A first row without a number in it is the heading.
class Table {
public:
  // name: of the file in messages. Throws a Failure (input).
  Table(const std::string &name, const std::string &text);

  const std::string &name() const { return name_; }
  const char *separator() const;                       // in words
  const TableRow &heading() const { return heading_; } // without cells where there is none
  const TableRow &comment() const { return comment_; } // cells of the last comment line above the first row
  const std::vector<TableRow> &rows() const { return rows_; }

  // "FILE:LINE"
  std::string place(const TableRow &row) const { return name_ + ":" + std::to_string(row.line); }

  // A cell as a finite number; column: its name in messages. A number has a decimal point or a decimal comma, all of a
  // table the same. Throws a Failure (input).
  float number(const TableRow &row, size_t cell, const std::string &column);

private:
  std::vector<std::string> cells(const std::string &line, int number) const;

  std::string name_;
  char separator_ = '\0';
  char decimal_mark_ = '\0'; // of the first number that has one
  TableRow heading_ = {0, {}};
  TableRow comment_ = {0, {}};
  std::vector<TableRow> rows_;
};

#endif
