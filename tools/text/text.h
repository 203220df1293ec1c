// Small texts.
#ifndef VEXO_TOOLS_TEXT_H
#define VEXO_TOOLS_TEXT_H

#include <string>
#include <vector>

// printf into a string.
std::string format(const char *pattern, ...) __attribute__((format(printf, 1, 2)));

// The words with a blank between them.
std::string join(const std::vector<std::string> &words);

// Whether nothing but blanks follows.
bool blank(const char *text);

// Whether a file's name ends so, in letters of either case.
bool has_extension(const std::string &path, const std::string &extension);

#endif
