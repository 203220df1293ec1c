// What the tool does, step by step, for those who ask with -v.
#ifndef VEXO_TOOLS_VERBOSE_H
#define VEXO_TOOLS_VERBOSE_H

#include <string>

void be_verbose();

// One line on standard error when asked for.
void say(const std::string &step);

#endif
