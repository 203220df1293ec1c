// "Did you mean": the known word that a misspelt one most likely stands for.
#ifndef VEXO_TOOLS_HINTS_H
#define VEXO_TOOLS_HINTS_H

#include <string>
#include <vector>

// The candidate with the smallest edit distance to the text, whatever the case of letters; empty when none is near.
std::string nearest(const std::string &text, const std::vector<std::string> &candidates);

// "; did you mean WORD?" with the nearest candidate; empty when none is near.
std::string hint(const std::string &text, const std::vector<std::string> &candidates);

#endif
