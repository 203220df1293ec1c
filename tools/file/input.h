// An input that can be read more than once.
#ifndef VEXO_TOOLS_INPUT_FILE_H
#define VEXO_TOOLS_INPUT_FILE_H

#include <cstdio>
#include <memory>
#include <string>

struct CloseFile {
  void operator()(std::FILE *f) const { std::fclose(f); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

// Opens a regular file, or a copy of standard input for "-", at its start. Copies of standard input share their place.
// Throws a Failure (input) that names it.
File open_input(const std::string &path, const char *expected);

// All of an input of at most 4 MB. Throws a Failure (input) that names it.
std::string read_text(const std::string &path, const char *expected);

// The name of an input in messages.
std::string input_name(const std::string &path);

// Whether a file's name ends so, in letters of either case.
bool has_extension(const std::string &path, const std::string &extension);

#endif
