// printf into a string.
#ifndef VEXO_TOOLS_TEXT_H
#define VEXO_TOOLS_TEXT_H

#include <string>

std::string format(const char *pattern, ...) __attribute__((format(printf, 1, 2)));

#endif
