// vexo: the command-line tool.
#include <CLI/CLI.hpp>

#include <cstdio>
#include <new>
#include <string>
#include <vector>

#include "command/commands.h"
#include "text/failure.h"
#include "text/grammar.h"
#include "text/verbose.h"

namespace {

// "; did you mean WORD?" for the first word of the command line that is no command or option but close to one.
std::string hint(const CLI::App &app, const std::vector<std::string> &words) {
  const CLI::App *scope = &app;
  for (const std::string &typed : words) {
    const std::string word = typed.substr(0, typed.find('='));
    std::vector<std::string> known;
    const CLI::App *entered = nullptr;
    for (const CLI::App *command : scope->get_subcommands([](const CLI::App *) { return true; })) {
      known.push_back(command->get_name());
      entered = command->get_name() == word ? command : entered;
    }
    if (entered != nullptr) {
      scope = entered;
      continue;
    }
    for (const CLI::Option *option : scope->get_options()) {
      for (const std::string &name : option->get_lnames()) {
        known.push_back("--" + name);
      }
    }
    const std::string meant = nearest(word, known);
    if (!meant.empty() && meant != word) {
      return "; did you mean " + meant + "?";
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
  add_refine(app);
  add_report(app, typed);
  add_gray(app);
  add_lut1d(app);
  add_lut3d(app);
  add_csc(app);
  add_colour(app);
  accept_everywhere(app);
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
