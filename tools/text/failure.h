// How a command ends: exit codes and the one exception that carries an error to main().
#ifndef VEXO_TOOLS_FAILURE_H
#define VEXO_TOOLS_FAILURE_H

#include <string>
#include <utility>

enum ExitCode {
  kDone = 0,
  kLimitMissed = 1, // a stated limit or target is not met
  kUsageError = 2,  // the command line makes no sense
  kInputError = 3,  // an input is unreadable or invalid
  kOutputError = 4, // an output could not be written
};

struct Failure {
  Failure(ExitCode exit_code, std::string message) : code(exit_code), text(std::move(message)) {}
  ExitCode code;
  std::string text; // one sentence, without "vexo: " and without a line break
};

// where: "FILE" or "FILE:LINE"
[[noreturn]] inline void refuse_input(const std::string &where, const std::string &what) {
  throw Failure(kInputError, where + ": " + what);
}

#endif
