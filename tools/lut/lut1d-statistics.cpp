#include "lut/lut1d-statistics.h"

#include <cmath>

Lut1dDifference difference(const vexo_lut &a, const vexo_lut &b) {
  Lut1dDifference result;
  for (int i = 0; i < a.size; i++) {
    const double from = a.d[i];
    const double to = b.d[i];
    const double d = std::fabs(from - to);
    result.mean += d / a.size;
    if (d > result.largest) {
      result.largest = d;
      result.entry = i;
    }
  }
  return result;
}

Lut1dStep largest_step(const vexo_lut &lut) {
  Lut1dStep largest = {std::fabs(lut.d[1] - lut.d[0]), 1};
  for (int i = 2; i < lut.size; i++) {
    const float height = std::fabs(lut.d[i] - lut.d[i - 1]);
    largest = height > largest.height ? Lut1dStep{height, i} : largest;
  }
  return largest;
}

int first_fall(const vexo_lut &lut) {
  int i = 1;
  while (i < lut.size && lut.d[i] >= lut.d[i - 1]) {
    i++;
  }
  return i < lut.size ? i : 0;
}
