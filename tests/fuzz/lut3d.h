// Comparison of 3D LUTs, for their fuzz targets.
#ifndef VEXO_TESTS_FUZZ_LUT3D_H
#define VEXO_TESTS_FUZZ_LUT3D_H

#include "../lut3d.h"
#include "bits.h"
#include "fuzz.h"

inline std::string title_of(const Lut &lut) {
  const char *title = vexo_3dlut_title(lut.get());
  return title != nullptr ? title : "";
}

// Both null, or the same to the last bit.
inline bool same(const Lut &a, const Lut &b) {
  if (a == nullptr || b == nullptr) {
    return a == b;
  }
  return bits(components(a.get())) == bits(components(b.get())) && title_of(a) == title_of(b);
}

#endif
