// Lines in and out of C streams in blocks, with the effects of a call a line.
#ifndef VEXO_STREAM_H
#define VEXO_STREAM_H

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>

#include "vexo-text.h"

namespace vexo_internal {

// The lines of a stream as fgets gives them in kRoom characters: a line that does not fit comes in pieces. Nothing
// after the last line that is wanted is taken from the stream, which may be a pipe. So blocks are read only as far as
// the reader can tell that lines will be wanted.
template <size_t kRoom> class StreamLines {
public:
  explicit StreamLines(FILE *f) : f_(f) {}

  // The next line; null at the end of the stream. wanted is a number of characters that the caller takes in any case
  // if the stream has them, with this line and later ones.
  const char *next(size_t wanted = 0) {
    look_ahead(wanted);
    const size_t held = std::min(static_cast<size_t>(end_ - rest_), kRoom - 1);
    const void *feed = memchr(rest_, '\n', held);
    const size_t length = feed != nullptr ? static_cast<size_t>(static_cast<const char *>(feed) + 1 - rest_) : held;
    memcpy(line_, rest_, length);
    line_[length] = '\0';
    rest_ += length;
    if (feed != nullptr || length == kRoom - 1) {
      return line_;
    }
    if (!ended_ && fgets(line_ + length, static_cast<int>(kRoom - length), f_) != nullptr) {
      return line_;
    }
    return length > 0 && feof(f_) != 0 ? line_ : nullptr; // as fgets, which drops what a failing stream began
  }

  // Reads the numbers of a line of nothing else. False, with no line taken, when the next line has another form or is
  // not at hand.
  template <typename Number, size_t kCount> bool take(Number (&values)[kCount], size_t wanted) {
    look_ahead(wanted);
    const char *end = read_line(rest_, std::min<const char *>(end_, rest_ + (kRoom - 1)), values);
    if (end == nullptr) {
      return false;
    }
    rest_ = end;
    return true;
  }

private:
  static const size_t kShort = 128; // when so little is held, and what is worth a block

  void look_ahead(size_t wanted) {
    const auto held = static_cast<size_t>(end_ - rest_);
    if (held < kShort && wanted >= held + kShort && !ended_) {
      memmove(block_, rest_, held);
      const size_t size = std::min(wanted, sizeof block_) - held;
      const size_t got = fread(block_ + held, 1, size, f_);
      rest_ = block_;
      end_ = block_ + held + got;
      ended_ = got < size;
    }
  }

  FILE *f_;
  bool ended_ = false; // the last block came short
  char block_[4096];
  const char *rest_ = block_; // what is held of the stream
  const char *end_ = block_;
  char line_[kRoom];
};

// Lines on their way to a stream.
class LineWriter {
public:
  explicit LineWriter(FILE *f) : f_(f) {}

  // Where the next line goes, of at most kLongest characters.
  char *line() {
    if (end_ > text_ + sizeof text_ - kLongest) {
      flush();
    }
    return end_;
  }

  void add(char *end) { end_ = end; }

  // Writes what is left. Gives the sum of what a printf call for each line would have returned.
  long long finish() {
    flush();
    return sum_;
  }

private:
  static const size_t kLongest = 4 * kNumberRoom;

  // A line that the stream does not take counts -1 and is given up, and the next is tried.
  void flush() {
    const char *text = text_;
    while (text < end_) {
      const char *written = text + fwrite(text, 1, static_cast<size_t>(end_ - text), f_);
      if (written == end_) {
        sum_ += written - text;
        break;
      }
      for (; text <= written; text = after_line(text)) {
        const char *next = after_line(text);
        sum_ += next <= written ? next - text : -1;
      }
    }
    end_ = text_;
  }

  const char *after_line(const char *text) const {
    return static_cast<const char *>(memchr(text, '\n', static_cast<size_t>(end_ - text))) + 1;
  }

  FILE *f_;
  long long sum_ = 0;
  char text_[4096];
  char *end_ = text_;
};

} // namespace vexo_internal

#endif
