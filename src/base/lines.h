// Lines in and out of C streams in blocks, with the effects of a call a line.
#ifndef VEXO_STREAM_H
#define VEXO_STREAM_H

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>

#include "numbers.h"

namespace vexo_internal {

// A stream, read in blocks, in pieces as fgets gives them in kRoom characters: a line, or as much of it as fits.
template <size_t kRoom> class StreamPieces {
public:
  explicit StreamPieces(FILE *f) : f_(f) {}

  // The next piece, without an end mark; it lies there until the next call. Its length is 0 at the end of the stream.
  const char *next(size_t *length) {
    read_ahead();
    const char *piece = rest_;
    const size_t most = std::min(held(), kRoom - 1);
    const void *feed = memchr(piece, '\n', most);
    met_end_ = feed == nullptr && most < kRoom - 1;
    *length = feed != nullptr ? static_cast<size_t>(static_cast<const char *>(feed) + 1 - piece) : most;
    rest_ += *length;
    return piece;
  }

  // Whether the last piece ended with the stream.
  bool met_end() const { return met_end_; }

  // Reads the numbers of a line of nothing else. False, with nothing taken, when the next piece is not such a line.
  template <typename Number, size_t kCount> bool take(Number (&values)[kCount]) {
    read_ahead();
    const char *end = reader_.read(rest_, std::min<const char *>(end_, rest_ + (kRoom - 1)), values);
    if (end == nullptr) {
      return false;
    }
    rest_ = end;
    return true;
  }

  // Gives back what was read ahead, and the mark of a stream at its end if no piece has met it.
  void give_back() {
    if (rest_ != end_ || (ended_ && !met_end_)) {
      fseeko(f_, rest_ - end_, SEEK_CUR);
    }
  }

private:
  size_t held() const { return static_cast<size_t>(end_ - rest_); }

  void read_ahead() {
    if (held() < kRoom && !ended_) {
      const size_t length = held();
      memmove(block_, rest_, length);
      rest_ = block_;
      end_ = block_ + length + fread(block_ + length, 1, sizeof block_ - length, f_);
      ended_ = end_ < block_ + sizeof block_;
    }
  }

  FILE *f_;
  bool ended_ = false; // the last block came short
  bool met_end_ = false;
  LineReader reader_;
  const char *rest_ = block_; // what is held of the stream
  const char *end_ = block_;
  char block_[16384];
};

// The lines of a stream of the caller, who finds it behind the last one taken: what cannot be positioned, such as a
// pipe, is read a line at a time.
template <size_t kRoom> class StreamLines {
public:
  explicit StreamLines(FILE *f) : f_(f), ahead_(ftello(f) >= 0), pieces_(f) {}
  ~StreamLines() {
    if (ahead_) {
      pieces_.give_back();
    }
  }
  StreamLines(const StreamLines &) = delete;
  StreamLines &operator=(const StreamLines &) = delete;

  // The next line, or as much of it as fits; null at the end of the stream.
  const char *next() {
    if (!ahead_) {
      return fgets(line_, kRoom, f_);
    }
    size_t length = 0;
    const char *piece = pieces_.next(&length);
    memcpy(line_, piece, length);
    line_[length] = '\0';
    return length == 0 || (pieces_.met_end() && ferror(f_) != 0) ? nullptr : line_; // as fgets on a failing stream
  }

  // Reads the numbers of a line of nothing else. False, with no line taken, when the next one has another form or is
  // not at hand.
  template <typename Number, size_t kCount> bool take(Number (&values)[kCount]) {
    return ahead_ && pieces_.take(values);
  }

private:
  FILE *f_;
  bool ahead_;
  StreamPieces<kRoom> pieces_;
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
  char text_[16384];
  char *end_ = text_;
};

} // namespace vexo_internal

#endif
