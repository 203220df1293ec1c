// The command-line tool's readers under fuzzing: they read, or refuse with a Failure.
#ifndef VEXO_TESTS_FUZZ_TOOL_H
#define VEXO_TESTS_FUZZ_TOOL_H

#include "fuzz.h"
#include "text/failure.h"

// Whether run() ended well. A reader refuses inputs and words; no input is too large for these runs.
template <typename Run> bool accepted(Run run) {
  try {
    run();
    return true;
  } catch (const Failure &failure) {
    require(failure.code == kUsageError || failure.code == kInputError, "the input is at fault");
    const std::string end = ": out of memory";
    require(failure.text.size() < end.size() || failure.text.substr(failure.text.size() - end.size()) != end,
            "what was checked is read");
    return false;
  }
}

#endif
