// The search of a table for a value. The table may hold anything: falling and flat stretches, NaN, infinities.
#ifndef VEXO_BASE_SEARCH_H
#define VEXO_BASE_SEARCH_H

namespace vexo_internal {

// The first i with y <= table[i], or count.
inline int first_reached(const float *table, int count, float y) {
  int i = 0;
  while (i < count && !(y <= table[i])) {
    i++;
  }
  return i;
}

} // namespace vexo_internal

#endif
