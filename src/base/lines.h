// Lines of C streams, one call of the C library per line, and of texts in memory.
#ifndef VEXO_BASE_LINES_H
#define VEXO_BASE_LINES_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace vexo_internal {

// The lines of a stream as fgets gives them in kRoom characters: a longer line comes in pieces.
template <size_t kRoom> class StreamLines {
public:
  explicit StreamLines(FILE *f) : f_(f) {}

  // Goes on to the next line. False at the end of the stream, or where reading fails.
  bool next() {
    number_ += ended_ ? 1 : 0;
    if (fgets(text_, kRoom, f_) == nullptr) {
      return false;
    }
    limit_ = text_ + strlen(text_);
    ended_ = limit_ > text_ && limit_[-1] == '\n';
    return true;
  }

  const char *text() const { return text_; }
  const char *limit() const { return limit_; } // where the text's NUL is
  long number() const { return number_; }      // of the line in the stream, from 1

private:
  FILE *f_;
  char text_[kRoom] = {};
  const char *limit_ = text_;
  long number_ = 0;
  bool ended_ = true; // the last piece was the end of its line
};

// The lines of a NUL-terminated text, cut in place at its line feeds. Runs of line feeds make no empty lines.
class TextLines {
public:
  explicit TextLines(char *text) : begin_(text), text_(text), limit_(text), rest_(text) {}

  // Goes on to the next line. False at the end of the text.
  bool next() {
    while (*rest_ == '\n') {
      *rest_++ = '\0';
    }
    if (*rest_ == '\0' || rest_ - begin_ >= end_) {
      return false;
    }
    text_ = rest_;
    char *feed = strchr(rest_, '\n');
    limit_ = rest_ = feed != nullptr ? feed : rest_ + strlen(rest_);
    if (feed != nullptr) {
      *rest_++ = '\0';
    }
    return true;
  }

  const char *text() const { return text_; }
  const char *limit() const { return limit_; } // where the text's NUL is
  static long number() { return 0; }           // texts have no collectors

  // From now on no line begins at or after this offset.
  void stop_at(ptrdiff_t end) { end_ = end; }

private:
  const char *begin_;
  const char *text_;
  const char *limit_;
  char *rest_;
  ptrdiff_t end_ = PTRDIFF_MAX;
};

// Writes a line that ends before end, where there is room for a NUL. Gives what a printf call would: the number of
// characters, or -1 when the stream does not take them.
inline int put_line(FILE *f, char *line, char *end) {
  *end = '\0';
  return fputs(line, f) >= 0 ? static_cast<int>(end - line) : -1;
}

} // namespace vexo_internal

#endif
