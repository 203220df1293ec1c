#include "command/cli.h"

#include <algorithm>

#include "text/failure.h"
#include "text/format.h"
#include "text/grammar.h"
#include "text/hints.h"

namespace {

std::vector<std::string> command_names(const CLI::App &app) {
  std::vector<std::string> names;
  for (const CLI::App *command : app.get_subcommands([](const CLI::App *) { return true; })) {
    names.push_back(command->get_name());
  }
  return names;
}

// The commands and long options that may stand after the words that led to this command.
std::vector<std::string> known_words(const CLI::App &app) {
  std::vector<std::string> known = command_names(app);
  for (const CLI::Option *option : app.get_options()) {
    for (const std::string &name : option->get_lnames()) {
      known.push_back("--" + name);
    }
  }
  return known;
}

} // namespace

std::string words_among_others(const std::string &words) {
  std::string list = words;
  std::replace(list.begin(), list.end(), ' ', ',');
  return "TEXT:{" + list + "}";
}

CLI::Validator one_of(const std::vector<std::string> &names) {
  const CLI::IsMember member(names);
  const auto check = [member, names](const std::string &text) {
    const std::string error = member(text);
    return error.empty() ? error : error + hint(text, names);
  };
  return {check, member.get_description()};
}

CLI::Validator whole_number(int min, int max) {
  const CLI::Range range(min, max);
  const std::string expected = ", expected a whole number from " + std::to_string(min) + " to " + std::to_string(max);
  const auto check = [range, expected](const std::string &text) {
    const bool decimal = text == "0" || text.find_first_of("123456789") == 0;
    return decimal && range(text).empty() ? "" : "Value " + text + expected;
  };
  return {check, "[" + std::to_string(min) + " - " + std::to_string(max) + "]"};
}

void check_commands(const CLI::App &app, const std::vector<std::string> &words) {
  const CLI::App *scope = &app;
  for (const std::string &word : words) {
    if (word == "-h" || word == "--help" || word == "--version") {
      return;
    }
    if (word.empty() || word[0] != '-') {
      const std::vector<std::string> names = command_names(*scope);
      if (std::find(names.begin(), names.end(), word) == names.end()) {
        reject("COMMAND", word, "one of " + join(names), names);
      }
      scope = scope->get_subcommand(word);
      if (scope->get_require_subcommand_min() == 0) {
        return;
      }
    }
  }
  throw Failure(kUsageError, "no command, expected one of " + join(command_names(*scope)) + hint_at_word(app, words));
}

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
    std::string found = hint(word, known);
    if (!found.empty() && std::find(known.begin(), known.end(), word) == known.end()) {
      return found;
    }
  }
  return "";
}
