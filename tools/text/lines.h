// A text as the library's readers see it: lines, and pieces of lines longer than their buffer.
#ifndef VEXO_TOOLS_LINES_H
#define VEXO_TOOLS_LINES_H

#include <cstdio>
#include <cstring>

template <size_t buffer> class Lines {
public:
  explicit Lines(std::FILE *f) : f_(f) {}

  bool next() {
    number_ += ended_ ? 1 : 0;
    if (std::fgets(piece_, sizeof piece_, f_) == nullptr) {
      return false;
    }
    ended_ = std::strchr(piece_, '\n') != nullptr;
    return true;
  }
  const char *text() const { return piece_; }
  long number() const { return number_; } // of the line in the file, from 1

private:
  std::FILE *f_;
  char piece_[buffer] = {};
  long number_ = 0;
  bool ended_ = true;
};

// Whether nothing but blanks follows.
inline bool blank(const char *text) { return text[std::strspn(text, " \t\r\n")] == '\0'; }

#endif
