// Nodes of a 3D LUT as words of three codes: red in the lowest bits, then green, then blue.
#ifndef VEXO_3DLUT_WORDS_H
#define VEXO_3DLUT_WORDS_H

#include <cstddef>
#include <cstdint>

#include "vexo-matrix.h"

namespace vexo_internal {

// How a value becomes a code, and three codes a word.
struct Coding {
  float scale; // the code of 1.0 before the limit
  float most;  // the largest code
  int shift;   // bits from one component to the next
};

inline uint32_t all_ones(int nbits) { return (uint32_t{1} << nbits) - 1; }

// Whether three components of nbits fit into 32 bits.
inline bool packable(int nbits) { return nbits >= 1 && nbits <= 10; }

// The words of count nodes.
void pack(const vexo_vector *rgb, size_t count, Coding coding, uint32_t *word);
void pack(const vexo_vector *rgb, size_t count, Coding coding, uint64_t *word);

} // namespace vexo_internal

#endif
