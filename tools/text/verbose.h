// The steps of a run, printed for a user who asks with -v.
#ifndef VEXO_TOOLS_VERBOSE_H
#define VEXO_TOOLS_VERBOSE_H

#include <string>

void be_verbose();

// Prints one line on standard error after be_verbose().
void say(const std::string &step);

#endif
