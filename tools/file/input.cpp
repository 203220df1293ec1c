#include "file/input.h"

#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "text/failure.h"
#include "text/verbose.h"

namespace {

const size_t kLongestText = 4 << 20; // far more than measurements need; parsing takes some 100 times as much memory

[[noreturn]] void refuse_errno(const std::string &path) {
  refuse_input(input_name(path), std::string("cannot read: ") + std::strerror(errno));
}

// Pipes cannot be read twice, so standard input goes to a temporary file first.
File read_standard_input() {
  File copy(std::tmpfile());
  if (copy == nullptr) {
    refuse_errno("-");
  }
  std::array<char, 65536> block;
  for (size_t length = 1; length > 0;) {
    length = std::fread(block.data(), 1, block.size(), stdin);
    if (std::fwrite(block.data(), 1, length, copy.get()) != length) {
      refuse_errno("-");
    }
  }
  if (std::ferror(stdin) != 0 || std::fflush(copy.get()) != 0) {
    refuse_errno("-");
  }
  return copy;
}

File copy_of_standard_input() {
  static const File all = read_standard_input();
  File f(fdopen(dup(fileno(all.get())), "r"));
  if (f == nullptr) {
    refuse_errno("-");
  }
  std::rewind(f.get());
  return f;
}

} // namespace

File open_input(const std::string &path, const char *expected) {
  say("reads " + input_name(path));
  if (path == "-") {
    return copy_of_standard_input();
  }
  struct stat info = {};
  if (stat(path.c_str(), &info) != 0) {
    refuse_errno(path);
  }
  if (!S_ISREG(info.st_mode)) {
    refuse_input(path, std::string(S_ISDIR(info.st_mode) ? "is a directory" : "is not a regular file") + ", expected " +
                           expected);
  }
  File f(std::fopen(path.c_str(), "r"));
  if (f == nullptr) {
    refuse_errno(path);
  }
  return f;
}

std::string read_text(const std::string &path, const char *expected) {
  const File f = open_input(path, expected);
  std::string text;
  std::array<char, 65536> block;
  for (size_t length = block.size(); length == block.size();) {
    length = std::fread(block.data(), 1, block.size(), f.get());
    text.append(block.data(), length);
    if (text.size() > kLongestText) {
      refuse_input(input_name(path), std::string("larger than 4 MB, expected ") + expected);
    }
  }
  if (std::ferror(f.get()) != 0) {
    refuse_errno(path);
  }
  return text;
}

std::string input_name(const std::string &path) { return path == "-" ? "standard input" : path; }

bool has_extension(const std::string &path, const std::string &extension) {
  return path.size() > extension.size() &&
         strcasecmp(path.c_str() + path.size() - extension.size(), extension.c_str()) == 0;
}
