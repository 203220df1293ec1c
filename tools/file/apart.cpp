#include "file/apart.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <tuple>

#include "text/failure.h"

namespace {

// What tells a file from all others: its device and inode; of one that does not exist yet, those of its folder and the
// name in it.
using Identity = std::tuple<dev_t, ino_t, std::string>;

struct Stream {
  int descriptor;
  const char *name;
};
const Stream kInput = {STDIN_FILENO, "standard input"};
const Stream kOutput = {STDOUT_FILENO, "standard output"};

std::optional<Identity> identity_of_new(const std::filesystem::path &path) {
  const std::filesystem::path folder = path.has_parent_path() ? path.parent_path() : ".";
  struct stat info = {};
  if (stat(folder.c_str(), &info) != 0) {
    return std::nullopt; // writing will fail
  }
  return Identity{info.st_dev, info.st_ino, path.filename().string()};
}

std::optional<Identity> identity(const std::string &path, const Stream &stream) {
  struct stat info = {};
  if ((path == "-" ? fstat(stream.descriptor, &info) : stat(path.c_str(), &info)) != 0) {
    return path == "-" ? std::nullopt : identity_of_new(path);
  }
  if (!S_ISREG(info.st_mode) && !S_ISFIFO(info.st_mode)) {
    return std::nullopt;
  }
  return Identity{info.st_dev, info.st_ino, ""};
}

struct Named {
  std::string path; // as given
  std::string name; // in messages
  std::optional<Identity> file;
};

std::vector<Named> named(const std::vector<std::string> &paths, const Stream &stream) {
  std::vector<Named> list;
  for (const std::string &path : paths) {
    if (!path.empty()) {
      list.push_back({path, path == "-" ? stream.name : path, identity(path, stream)});
    }
  }
  return list;
}

[[noreturn]] void refuse(const Named &a, const Named &b, const std::string &what) {
  throw Failure(kUsageError, a.name + (a.name == b.name ? " is " : " and " + b.name + " are one file, ") + what);
}

} // namespace

void require_apart(const std::vector<std::string> &inputs, const std::vector<std::string> &outputs) {
  const std::vector<Named> read = named(inputs, kInput);
  const std::vector<Named> written = named(outputs, kOutput);
  const auto same_file = [](const Named &a, const Named &b) { return a.file && a.file == b.file; };
  for (auto output = written.begin(); output != written.end(); ++output) {
    for (const Named &input : read) {
      if (same_file(input, *output)) {
        refuse(input, *output, "both read and written: name another output");
      }
    }
    for (auto other = written.begin(); other != output; ++other) {
      if (same_file(*other, *output) || (other->path == "-" && output->path == "-")) {
        refuse(*other, *output, "written twice: name another output");
      }
    }
  }
  if (std::count(inputs.begin(), inputs.end(), "-") > 1) {
    throw Failure(kUsageError, "standard input is read twice: name a file for one of the inputs");
  }
}
