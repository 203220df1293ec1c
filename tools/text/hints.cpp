#include "text/hints.h"

#include <algorithm>
#include <numeric>

#include "text/grammar.h"

namespace {

// Levenshtein's distance: the fewest insertions, deletions and replacements of one letter.
size_t edit_distance(const std::string &a, const std::string &b) {
  std::vector<size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), size_t{0});
  for (size_t i = 1; i <= a.size(); i++) {
    size_t diagonal = row[0];
    row[0] = i;
    for (size_t j = 1; j <= b.size(); j++) {
      const size_t above = row[j];
      row[j] = std::min({above + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
      diagonal = above;
    }
  }
  return row[b.size()];
}

} // namespace

std::string nearest(const std::string &text, const std::vector<std::string> &candidates) {
  std::string best;
  size_t best_distance = std::max<size_t>(1, text.size() / 3) + 1;
  for (const std::string &candidate : candidates) {
    const size_t distance = edit_distance(lower(text), lower(candidate));
    if (distance < best_distance) {
      best = candidate;
      best_distance = distance;
    }
  }
  return best;
}

std::string hint(const std::string &text, const std::vector<std::string> &candidates) {
  const std::string meant = nearest(text, candidates);
  return meant.empty() ? "" : "; did you mean " + meant + "?";
}
