// Texts made of parts.
#ifndef VEXO_TOOLS_FORMAT_H
#define VEXO_TOOLS_FORMAT_H

#include <string>
#include <vector>

// printf into a string.
std::string format(const char *pattern, ...) __attribute__((format(printf, 1, 2)));

// The shortest decimal number that is this float: 2.2, not 2.20000005.
std::string shortest(float value);

// The words with a blank between them.
std::string join(const std::vector<std::string> &words);

// The text with control characters as \\xNN, for terminals.
std::string visible(const std::string &text);

// Whether the text holds nothing but blanks.
bool blank(const char *text);

#endif
