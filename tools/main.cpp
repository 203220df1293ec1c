// vexo: the command-line tool.
#include <CLI/CLI.hpp>

#include <cstdio>
#include <new>
#include <string>
#include <vector>

#include "commands.h"
#include "failure.h"
#include "grammar.h"

namespace {

// "; did you mean WORD?" for the first word of the command line that is no command or option but close to one.
std::string hint(const CLI::App &app, const std::vector<std::string> &words) {
  std::vector<std::string> known;
  const CLI::App *scope = &app;
  for (const CLI::App *command : app.get_subcommands([](const CLI::App *) { return true; })) {
    known.push_back(command->get_name());
    if (!words.empty() && words[0] == command->get_name()) {
      scope = command;
    }
  }
  if (scope != &app) {
    known.clear();
  }
  for (const CLI::Option *option : scope->get_options()) {
    for (const std::string &name : option->get_lnames()) {
      known.push_back("--" + name);
    }
  }
  for (size_t i = scope == &app ? 0 : 1; i < words.size(); i++) {
    const std::string word = words[i].substr(0, words[i].find('='));
    if (std::find(known.begin(), known.end(), word) != known.end()) {
      continue;
    }
    const std::string meant = nearest(word, known);
    if (!meant.empty()) {
      return "; did you mean " + meant + "?";
    }
  }
  return "";
}

int report(const Failure &failure) {
  std::fprintf(stderr, "vexo: %s\n", failure.text.c_str());
  return failure.code;
}

int run(int argc, char **argv) {
  CLI::App app("Colour science and display calibration", "vexo");
  app.set_version_flag("--version", "vexo " VEXO_VERSION);
  app.require_subcommand(1);
  add_calibrate(app);
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success &help) {
    return app.exit(help);
  } catch (const CLI::ParseError &error) {
    const std::vector<std::string> words(argv + 1, argv + argc);
    return report(Failure(kUsageError, std::string(error.what()) + hint(app, words)));
  }
  return kDone;
}

} // namespace

int main(int argc, char **argv) {
  int code = kDone;
  try {
    code = run(argc, argv);
  } catch (const Failure &failure) {
    code = report(failure);
  } catch (const std::bad_alloc &) {
    code = report(Failure(kInputError, "out of memory"));
  }
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
    return report(Failure(kOutputError, "standard output: write failed"));
  }
  return code;
}
