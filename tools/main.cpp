// vexo: the command-line tool.
#include <cstdio>
#include <new>
#include <string>
#include <vector>

#include "command/cli.h"
#include "command/commands.h"
#include "text/failure.h"
#include "text/format.h"
#include "text/verbose.h"

namespace {

int report(const Failure &failure) {
  std::fprintf(stderr, "vexo: %s\n", failure.text.c_str());
  return failure.code;
}

// The word as a shell takes it.
std::string quoted(const std::string &word) {
  const bool plain = !word.empty() && word.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                                             "0123456789_-+=:,./@%") == std::string::npos;
  if (plain) {
    return word;
  }
  std::string text = "'";
  for (const char c : word) {
    text += c == '\'' ? "'\\''" : std::string(1, c);
  }
  return text + "'";
}

std::string command_line(int argc, char **argv) {
  std::string line = "vexo";
  for (int i = 1; i < argc; i++) {
    line += " " + quoted(argv[i]);
  }
  return line;
}

// Options of the whole tool may also follow a command.
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
  app.add_flag_callback("-v,--verbose", be_verbose, "Print each step on standard error");
  add_measure(app);
  const std::string typed = command_line(argc, argv);
  add_calibrate(app, typed);
  add_refine(app, typed);
  add_report(app, typed);
  add_gray(app);
  add_lut1d(app);
  add_lut3d(app);
  add_csc(app);
  add_color(app);
  add_delta(app);
  add_space(app);
  add_dci(app);
  app.footer("vexo COMMAND --help, vexo help COMMAND and man vexo describe a command.");
  accept_everywhere(app);
  std::vector<std::string> words(argv + 1, argv + argc);
  if (!words.empty() && words.front() == "help") {
    words.erase(words.begin());
    words.emplace_back("--help");
  }
  check_commands(app, words);
  try {
    app.parse(std::vector<std::string>(words.rbegin(), words.rend()));
  } catch (const CLI::Success &help) {
    return app.exit(help);
  } catch (const CLI::ValidationError &error) { // holds a hint of its own
    return report(Failure(kUsageError, error.what()));
  } catch (const CLI::ExtrasError &) {
    return report(Failure(kUsageError, "not expected: " + join(app.remaining(true)) + hint_at_word(app, words)));
  } catch (const CLI::ParseError &error) {
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
