#include "file/output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "text/failure.h"
#include "text/verbose.h"

namespace {

mode_t new_file_mode() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

std::string resolved(const std::string &path) {
  char *real = realpath(path.c_str(), nullptr);
  if (real == nullptr) {
    return path;
  }
  std::string target(real);
  std::free(real);
  return target;
}

} // namespace

OutputFile::OutputFile(const std::string &path) : path_(path), target_(path) {
  if (path == "-") {
    stream_ = stdout;
    return;
  }
  target_ = resolved(path);
  struct stat info = {};
  const bool exists = stat(target_.c_str(), &info) == 0;
  if (exists && S_ISDIR(info.st_mode)) {
    errno = EISDIR;
    fail("cannot write");
  }
  if (exists && access(target_.c_str(), W_OK) != 0) {
    fail("cannot write");
  }
  if (exists && !S_ISREG(info.st_mode)) {
    stream_ = std::fopen(target_.c_str(), "w");
  } else {
    open_temporary(exists ? info.st_mode & 07777 : new_file_mode());
  }
  if (stream_ == nullptr) {
    fail("cannot write");
  }
}

void OutputFile::open_temporary(unsigned mode) {
  temporary_ = target_ + ".XXXXXX";
  const int fd = mkstemp(temporary_.data());
  if (fd < 0) {
    temporary_.clear();
    fail("cannot create a file beside it");
  }
  fchmod(fd, mode);
  stream_ = fdopen(fd, "w");
  if (stream_ == nullptr) {
    close(fd);
    unlink(temporary_.c_str());
  }
}

OutputFile::~OutputFile() {
  if (stream_ != nullptr && stream_ != stdout) {
    std::fclose(stream_);
  }
  if (!temporary_.empty()) {
    unlink(temporary_.c_str());
  }
}

void OutputFile::commit() {
  const bool written = std::ferror(stream_) == 0 && std::fflush(stream_) == 0;
  if (!written) {
    fail("write failed");
  }
  if (stream_ == stdout) {
    stream_ = nullptr;
    return;
  }
  if (!temporary_.empty() && fsync(fileno(stream_)) != 0) {
    fail("write failed");
  }
  std::FILE *closing = stream_;
  stream_ = nullptr;
  if (std::fclose(closing) != 0) {
    fail("write failed");
  }
  if (!temporary_.empty()) {
    if (std::rename(temporary_.c_str(), target_.c_str()) != 0) {
      fail("cannot replace it");
    }
    temporary_.clear();
  }
  say("wrote " + path_);
}

void OutputFile::fail(const std::string &what) const {
  const int error = errno;
  const std::string name = path_ == "-" ? "standard output" : path_;
  throw Failure(kOutputError, name + ": " + what + ": " + std::strerror(error != 0 ? error : EIO));
}
