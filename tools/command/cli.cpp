#include "command/cli.h"

#include <algorithm>

#include "text/hints.h"

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

} // namespace

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
  const auto check = [range](const std::string &text) {
    const std::string error = range(text);
    const bool decimal = text == "0" || text.find_first_of("123456789") == 0;
    return !error.empty() || decimal ? error : "Value " + text + " is not written in plain decimal digits";
  };
  return {check, "[" + std::to_string(min) + " - " + std::to_string(max) + "]"};
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
