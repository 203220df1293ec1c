// An output that appears whole or not at all.
#ifndef VEXO_TOOLS_OUTPUT_FILE_H
#define VEXO_TOOLS_OUTPUT_FILE_H

#include <cstdio>
#include <string>

// Writes go to a temporary file beside the target, which commit() renames over it; until then the old file stays as
// it is. "-" is standard output. Devices and pipes are written directly. Every failure throws a Failure (output).
class OutputFile {
public:
  explicit OutputFile(const std::string &path);
  ~OutputFile();
  OutputFile(const OutputFile &) = delete;
  OutputFile &operator=(const OutputFile &) = delete;

  std::FILE *stream() const { return stream_; }

  // Flushes, syncs, closes and renames, each checked.
  void commit();

private:
  [[noreturn]] void fail(const std::string &what) const;
  void open_temporary(unsigned mode);

  std::string path_;      // as the user gave it
  std::string target_;    // with symbolic links followed
  std::string temporary_; // empty when the target is written directly
  std::FILE *stream_ = nullptr;
};

#endif
