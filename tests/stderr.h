// The standard error stream, for tests of diagnostics.
#ifndef VEXO_TESTS_STDERR_H
#define VEXO_TESTS_STDERR_H

#include <unistd.h>

#include <cstdio>
#include <string>

// Takes what is written to standard error during its lifetime.
class CaptureStderr {
public:
  CaptureStderr() : saved_(dup(STDERR_FILENO)), file_(std::tmpfile()) { dup2(fileno(file_), STDERR_FILENO); }
  ~CaptureStderr() {
    dup2(saved_, STDERR_FILENO);
    close(saved_);
    std::fclose(file_);
  }
  CaptureStderr(const CaptureStderr &) = delete;
  CaptureStderr &operator=(const CaptureStderr &) = delete;

  // Everything written so far.
  std::string text() {
    std::fflush(stderr);
    std::fseek(file_, 0, SEEK_END);
    std::string all(static_cast<size_t>(std::ftell(file_)), '\0');
    std::rewind(file_);
    all.resize(std::fread(all.data(), 1, all.size(), file_));
    return all;
  }

private:
  int saved_;
  std::FILE *file_;
};

#endif
