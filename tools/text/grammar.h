// Numbers, names and lists of them, as command lines and text files hold them. The same in every locale.
#ifndef VEXO_TOOLS_GRAMMAR_H
#define VEXO_TOOLS_GRAMMAR_H

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "vexo-matrix.h"

// The parts between separators; at least one.
std::vector<std::string> split(const std::string &text, char separator);

// Letters of ASCII in lower case.
std::string lower(std::string text);

// The text as one finite number with nothing around it.
std::optional<float> finite_number(const std::string &text);

// Finite numbers separated by commas. Empty when a part is anything else.
std::vector<float> number_list(const std::string &text);

// Three numbers separated by a comma or blanks, as lines of files have them. Returns whether text is just that.
bool scan_triple(const std::string &text, vexo_vector *v);

// The row of a table whose member `name` is the text, whatever its case; null for none.
template <typename Row, size_t N> const Row *find_name(const Row (&table)[N], const std::string &text) {
  const auto row =
      std::find_if(std::begin(table), std::end(table), [&](const Row &r) { return lower(r.name) == lower(text); });
  return row == std::end(table) ? nullptr : row;
}

template <typename Row, size_t N> std::vector<std::string> names_of(const Row (&table)[N]) {
  std::vector<std::string> names;
  for (const Row &row : table) {
    names.emplace_back(row.name);
  }
  return names;
}

// Throws a Failure (usage): "OPTION 'TEXT': expected EXPECTED", with a hint where one of the names is near.
[[noreturn]] void reject(const std::string &option, const std::string &text, const std::string &expected,
                         const std::vector<std::string> &names = {});

// Each parse function throws a Failure (usage) that names the option, the text and what was expected.

int parse_integer(const std::string &option, const std::string &text, int min, int max);

float parse_number(const std::string &option, const std::string &text);
float parse_positive(const std::string &option, const std::string &text);
float parse_not_negative(const std::string &option, const std::string &text);

// One of the names, as it is written there.
std::string parse_name(const std::string &option, const std::string &text, const std::vector<std::string> &names);

// Three numbers separated by commas.
vexo_vector parse_triple(const std::string &option, const std::string &text);

#endif
