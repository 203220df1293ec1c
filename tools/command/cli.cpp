#include "command/cli.h"

#include "text/hints.h"

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
