#include "lut-set.h"

#include <utility>

#include "failure.h"
#include "input-file.h"

LutSet::LutSet(int size) {
  for (vexo_lut &lut : luts_) {
    if (vexo_lut_init_zero(&lut, size) != 0) {
      throw Failure(kInputError, "out of memory");
    }
  }
}

LutSet::~LutSet() {
  for (vexo_lut &lut : luts_) {
    vexo_lut_destroy(&lut);
  }
}

LutSet::LutSet(LutSet &&other) noexcept {
  for (int c = 0; c < 3; c++) {
    luts_[c] = std::exchange(other.luts_[c], vexo_lut{});
  }
}

LutSet identity_luts(int size) {
  LutSet luts(size);
  for (int c = 0; c < 3; c++) {
    vexo_lut_by_linear_gamma(luts.get() + c);
  }
  return luts;
}

LutSet read_luts(const std::string &path) {
  const File f = open_input(path, "a LUT file");
  LutSet luts;
  if (vexo_luts_load_int(f.get(), luts.get()) != 0 || luts.size() < 2) {
    throw Failure(kInputError, input_name(path) +
                                   ": expected LUT_1D_SIZE (2 or more), LUT_1D_BITS (1 to 30) and as many "
                                   "lines of three codes");
  }
  return luts;
}
