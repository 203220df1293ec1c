// How a command and its options are added to the application, on top of CLI11.
#ifndef VEXO_TOOLS_CLI_H
#define VEXO_TOOLS_CLI_H

#include <CLI/CLI.hpp>

#include <memory>
#include <string>
#include <utility>
#include <vector>

// Adds a command whose options live as long as the application. Entering it calls run(options).
template <typename Options>
std::pair<CLI::App *, Options &> add_command(CLI::App &app, const std::string &name, const std::string &help,
                                             void (*run)(const Options &)) {
  const auto options = std::make_shared<Options>();
  CLI::App *command = app.add_subcommand(name, help);
  command->callback([options, run] { run(*options); });
  return {command, *options};
}

// Adds an option whose text is read by read(name, text), which throws a Failure (usage) for what it does not take. So
// are all numbers with a fraction: CLI11 would read them as the locale has it.
template <typename Value, typename Read>
CLI::Option *add_parsed(CLI::App *command, const std::string &name, Value &value, Read read, const std::string &help) {
  return command->add_option_function<std::string>(
      name, [name, &value, read](const std::string &text) { value = read(name, text); }, help);
}

// What the help and the completion show of an option that takes these words, separated by blanks, and other texts.
std::string words_among_others(const std::string &words);

// CLI11's IsMember, with a hint where the text is close to a name.
CLI::Validator one_of(const std::vector<std::string> &names);

// CLI11's Range, for plain decimal digits only: CLI11 reads 010 as eight.
CLI::Validator whole_number(int min, int max);

// Where a command is expected, throws a Failure (usage) for another word, or for none.
void check_commands(const CLI::App &app, const std::vector<std::string> &words);

// "; did you mean WORD?" for the first word of the command line that is close to a command or an option without being
// one; empty when there is none.
std::string hint_at_word(const CLI::App &app, const std::vector<std::string> &words);

#endif
