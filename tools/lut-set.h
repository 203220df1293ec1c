// Three 1D LUTs, red, green, blue.
#ifndef VEXO_TOOLS_LUT_SET_H
#define VEXO_TOOLS_LUT_SET_H

#include <string>

#include "vexo-gamma.h"

// Three LUTs of one size, freed with the object.
class LutSet {
public:
  LutSet() = default; // without storage
  explicit LutSet(int size);
  ~LutSet();
  LutSet(LutSet &&other) noexcept;
  LutSet(const LutSet &) = delete;
  LutSet &operator=(const LutSet &) = delete;

  vexo_lut *get() { return luts_; }
  int size() const { return luts_[0].size; }

private:
  vexo_lut luts_[3] = {};
};

// Three identity ramps.
LutSet identity_luts(int size);

// Reads a three-channel integer file. Throws a Failure (input).
LutSet read_luts(const std::string &path);

#endif
