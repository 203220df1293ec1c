// What the fuzz targets share: their entry and the check that ends a run.
#ifndef VEXO_TESTS_FUZZ_H
#define VEXO_TESTS_FUZZ_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

// Ends the run where a promise is broken.
inline void require(bool holds, const char *promise) {
  if (!holds) {
    std::fprintf(stderr, "broken: %s\n", promise);
    std::abort();
  }
}

inline std::string text_of(const uint8_t *data, size_t size) {
  return std::string(reinterpret_cast<const char *>(data), size);
}

#endif
