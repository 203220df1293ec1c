// What the fuzz targets share: inputs as files in memory and the check that ends a run.
#ifndef VEXO_TESTS_FUZZ_H
#define VEXO_TESTS_FUZZ_H

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

// Ends the run where a promise is broken.
inline void require(bool holds, const char *promise) {
  if (!holds) {
    std::fprintf(stderr, "broken: %s\n", promise);
    std::abort();
  }
}

// A file in memory, as a stream at its start and by a path.
class MemoryFile {
public:
  explicit MemoryFile(const std::string &text) : fd_(memfd_create("fuzz", MFD_CLOEXEC)), stream_(fdopen(fd_, "w+")) {
    require(stream_ != nullptr && std::fwrite(text.data(), 1, text.size(), stream_) == text.size(), "memory file");
    std::rewind(stream_);
  }
  ~MemoryFile() { std::fclose(stream_); }
  MemoryFile(const MemoryFile &) = delete;
  MemoryFile &operator=(const MemoryFile &) = delete;

  std::FILE *stream() { return stream_; }
  std::string path() const { return "/proc/self/fd/" + std::to_string(fd_); }

  std::string contents() {
    std::fseek(stream_, 0, SEEK_END);
    std::string text(static_cast<size_t>(std::ftell(stream_)), '\0');
    std::rewind(stream_);
    text.resize(std::fread(text.data(), 1, text.size(), stream_));
    return text;
  }

private:
  int fd_;
  std::FILE *stream_;
};

// What a function writes to a stream.
template <typename Write> std::string written(Write write) {
  MemoryFile file("");
  write(file.stream());
  return file.contents();
}

inline std::string text_of(const uint8_t *data, size_t size) {
  return std::string(reinterpret_cast<const char *>(data), size);
}

#endif
