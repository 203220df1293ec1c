#include "text/verbose.h"

#include <cstdio>

namespace {

bool verbose = false;

} // namespace

void be_verbose() { verbose = true; }

void say(const std::string &step) {
  if (verbose) {
    std::fprintf(stderr, "vexo: %s\n", step.c_str());
  }
}
