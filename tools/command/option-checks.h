// Checks of options that hold a name or a whole number, on top of CLI11's own. Numbers with a fraction stay text until
// text/grammar reads them: CLI11 would read them as the locale has it.
#ifndef VEXO_TOOLS_OPTION_CHECKS_H
#define VEXO_TOOLS_OPTION_CHECKS_H

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

// CLI11's IsMember, with a hint where the text is close to a name.
CLI::Validator one_of(const std::vector<std::string> &names);

// CLI11's Range, for plain decimal digits only: CLI11 reads 010 as eight.
CLI::Validator whole_number(int min, int max);

#endif
