// A text file of colours, one per line. Blank lines and comments (#) are passed over.
#ifndef VEXO_TOOLS_COLOUR_LIST_H
#define VEXO_TOOLS_COLOUR_LIST_H

#include <string>

#include "file/input.h"

class ColourList {
public:
  // Throws a Failure (input) that names the file.
  explicit ColourList(const std::string &path);

  // Goes to the next line that holds anything. Throws a Failure (input) for a line of more than 1000 characters.
  bool next();

  const std::string &line() const { return line_; }
  std::string place() const; // "FILE:LINE"

private:
  bool read_line();

  std::string path_;
  File file_;
  std::string line_;
  int number_ = 0; // from 1
};

#endif
