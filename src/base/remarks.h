// What a reader passes over or refuses, told while it reads to whoever asks. The command-line tool makes its warnings
// and errors of it.
#ifndef VEXO_BASE_REMARKS_H
#define VEXO_BASE_REMARKS_H

namespace vexo_internal {

struct Remark {
  enum Kind {
    // Of a header.
    size,    // found: the size as written, before memory is taken for it
    no_size, // of a format that must tell it
    bits,    // found: the depth as written
    no_bits, // found: the depth of a file that does not tell it
    // Of lines. found and expected: entries so far and in all, where that is known.
    entry,       // values: the numbers of the line; text: what follows them
    passed_over, // text: the line
    too_few,     // the file ends before the last entry
    too_many,    // text: a line behind the last entry
    // Of a document.
    element, // an element that holds a row begins
    row,     // found: how many of its numbers were read; text: what follows them
    refused, // text: why the document cannot be read; line: 0 where no line is at fault
  };

  Kind kind;
  long line = 0; // of the file, from 1; 0 where no line is meant
  const char *text = "";
  long long found = 0;
  long long expected = 0;
  const float *values = nullptr;
};

struct Collector {
  // Returns whether the reader goes on; one that stops gives what it gives for a broken file. The text and the values
  // last until the call returns. Must not throw.
  bool (*take)(void *user, const Remark &remark);
  void *user;
};

// On the line that a reader is at.
template <typename Lines> Remark remark(Remark::Kind kind, const Lines &lines, long long found, long long expected) {
  return Remark{kind, lines.number(), lines.text(), found, expected};
}

// Tells a collector, if there is one. Returns whether to go on.
inline bool tell(const Collector *collector, const Remark &remark) {
  return collector == nullptr || collector->take(collector->user, remark);
}

} // namespace vexo_internal

#endif
