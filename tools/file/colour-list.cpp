#include "file/colour-list.h"

#include "text/failure.h"
#include "text/format.h"

namespace {

const size_t kLongestLine = 1000;

bool is_blank_or_comment(const std::string &line) {
  const size_t first = line.find_first_not_of(" \t\r");
  return first == std::string::npos || line[first] == '#';
}

} // namespace

ColourList::ColourList(const std::string &path) : path_(path), file_(open_input(path, "a list of colours")) {}

bool ColourList::next() {
  bool found = read_line();
  while (found && is_blank_or_comment(line_)) {
    found = read_line();
  }
  return found;
}

std::string ColourList::place() const { return input_name(path_) + ":" + std::to_string(number_); }

bool ColourList::read_line() {
  line_.clear();
  number_++;
  int c = std::getc(file_.get());
  const bool found = c != EOF;
  for (; c != EOF && c != '\n'; c = std::getc(file_.get())) {
    if (line_.size() == kLongestLine) {
      refuse_input(place(), format("a line of more than %zu characters, expected three numbers", kLongestLine));
    }
    line_.push_back(static_cast<char>(c));
  }
  return found;
}
