// Text through streams, files and the standard error stream, for tests of readers, writers and diagnostics.
#ifndef VEXO_TESTS_TEXT_H
#define VEXO_TESTS_TEXT_H

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

// A stream over memory that holds text, at its start. The caller closes it.
inline std::FILE *stream_of(const std::string &text) {
  std::FILE *f = fdopen(memfd_create("text", MFD_CLOEXEC), "w+");
  std::fwrite(text.data(), 1, text.size(), f);
  std::rewind(f);
  return f;
}

// A file in memory, as a stream at its start and by a path.
class MemoryFile {
public:
  explicit MemoryFile(const std::string &text = "") : stream_(stream_of(text)) {}
  ~MemoryFile() { std::fclose(stream_); }
  MemoryFile(const MemoryFile &) = delete;
  MemoryFile &operator=(const MemoryFile &) = delete;

  std::FILE *stream() { return stream_; }
  std::string path() const { return "/proc/self/fd/" + std::to_string(fileno(stream_)); }

  std::string contents() {
    std::fseek(stream_, 0, SEEK_END);
    std::string text(static_cast<size_t>(std::ftell(stream_)), '\0');
    std::rewind(stream_);
    text.resize(std::fread(text.data(), 1, text.size(), stream_));
    return text;
  }

private:
  std::FILE *stream_;
};

// What a function prints to a stream.
template <typename Print> std::string printed(Print print) {
  MemoryFile file;
  print(file.stream());
  return file.contents();
}

inline std::string repeated(int count, const std::string &text) {
  std::string all;
  while (count-- > 0) {
    all += text;
  }
  return all;
}

// What a function prints to the standard error stream.
template <typename Run> std::string diagnostics(Run run) {
  return printed([&](std::FILE *f) {
    const int saved = dup(STDERR_FILENO);
    dup2(fileno(f), STDERR_FILENO);
    run();
    dup2(saved, STDERR_FILENO);
    close(saved);
  });
}

// The sign of a NaN is the processor's choice.
inline std::string without_nan_signs(std::string text) {
  for (size_t at = 0; (at = text.find("-nan", at)) != std::string::npos;) {
    text.erase(at, 1);
  }
  return text;
}

// A folder that lives as long as the object. Its name has a blank, as folders may.
class TemporaryFolder {
public:
  TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "vexo tests-XXXXXX").string();
    if (mkdtemp(name.data()) != nullptr) {
      name_ = name;
    }
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(name_, ignored);
  }
  TemporaryFolder(const TemporaryFolder &) = delete;
  TemporaryFolder &operator=(const TemporaryFolder &) = delete;

  std::string path(const std::string &file) const { return name_ + "/" + file; }

private:
  std::string name_;
};

#endif
