// vexo: the command-line tool.
#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <new>
#include <string>
#include <vector>

#include "command/commands.h"
#include "text/failure.h"
#include "text/hints.h"
#include "text/verbose.h"

namespace {

// The commands and long options that may stand after the words that led to this command.
std::vector<std::string> known_words(const CLI::App &app) {
  std::vector<std::string> known;
  for (const CLI::App *command : app.get_subcommands([](const CLI::App *) { return true; })) {
    known.push_back(command->get_name());
  }
  for (const CLI::Option *option : app.get_options()) {
    for (const std::string &name : option->get_lnames()) {
      known.push_back("--" + name);
    }
  }
  return known;
}

// "; did you mean WORD?" for the first word of the command line that is no command or option but close to one.
std::string hint_at_word(const CLI::App &app, const std::vector<std::string> &words) {
  const CLI::App *scope = &app;
  for (const std::string &typed : words) {
    const std::string word = typed.substr(0, typed.find('='));
    const auto command = scope->get_subcommands([&](const CLI::App *c) { return c->get_name() == word; });
    if (!command.empty()) {
      scope = command.front();
      continue;
    }
    const std::vector<std::string> known = known_words(*scope);
    const std::string found = hint(word, known);
    if (!found.empty() && std::find(known.begin(), known.end(), word) == known.end()) {
      return found;
    }
  }
  return "";
}

int report(const Failure &failure) {
  std::fprintf(stderr, "vexo: %s\n", failure.text.c_str());
  return failure.code;
}

// The command line as a shell would take it.
std::string command_line(int argc, char **argv) {
  std::string line = "vexo";
  for (int i = 1; i < argc; i++) {
    const std::string word = argv[i];
    const bool plain = !word.empty() && word.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                                               "0123456789_-+=:,./@%") == std::string::npos;
    line += " ";
    line += plain ? word : "'" + word + "'";
  }
  return line;
}

// Options of the tool as a whole may stand behind a command, too.
void accept_everywhere(CLI::App &app) {
  for (CLI::App *command : app.get_subcommands([](const CLI::App *) { return true; })) {
    command->fallthrough();
    accept_everywhere(*command);
  }
}

int run(int argc, char **argv) {
  CLI::App app("Colour science and display calibration", "vexo");
  app.set_version_flag("--version", "vexo " VEXO_VERSION);
  app.require_subcommand(1);
  app.add_flag_callback("-v,--verbose", be_verbose, "Say on standard error what is done");
  add_measure(app);
  const std::string typed = command_line(argc, argv);
  add_calibrate(app, typed);
  add_report(app, typed);
  add_gray(app);
  add_lut1d(app);
  add_lut3d(app);
  add_csc(app);
  add_color(app);
  add_delta(app);
  add_space(app);
  add_dci(app);
  accept_everywhere(app);
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success &help) {
    return app.exit(help);
  } catch (const CLI::ParseError &error) {
    const std::vector<std::string> words(argv + 1, argv + argc);
    return report(Failure(kUsageError, std::string(error.what()) + hint_at_word(app, words)));
  }
  return kDone;
}

} // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): std::terminate is right for what CLI11 could throw beyond these
int main(int argc, char **argv) {
  int code = kDone;
  try {
    code = run(argc, argv);
  } catch (const Failure &failure) {
    code = report(failure);
  } catch (const std::bad_alloc &) {
    code = report(Failure(kInputError, "out of memory"));
  }
  if (code != kOutputError && (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)) {
    return report(Failure(kOutputError, "standard output: write failed"));
  }
  return code;
}
