// The readers and writers of number text, and the resampling, against their plain forms: every bit, character, count
// and stream position.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "bits.h"
#include "lut3d-support.h"
#include "plain/vexo-3dlut-plain.h"
#include "plain/vexo-text-plain.h"
#include "text.h"

namespace {

std::mt19937 random_bits(20);

size_t below(size_t n) { return random_bits() % n; }

// Bits, with one NaN for all: which of two NaNs an operation hands on is the processor's choice.
std::vector<uint32_t> bits_of_numbers(const float *x, size_t count) {
  std::vector<uint32_t> u = bits(x, count);
  for (size_t i = 0; i < count; i++) {
    u[i] = std::isnan(x[i]) ? 0x7FC00000 : u[i];
  }
  return u;
}

plain::Entries entries_of(vexo_3dlut *lut) {
  const size_t size = static_cast<size_t>(vexo_3dlut_size(lut));
  const vexo_vector *first = vexo_3dlut_item(lut, 0, 0, 0);
  return plain::Entries(first, first + size * size * size);
}

std::vector<uint32_t> bits_of_entries(const plain::Entries &entries) {
  return bits_of_numbers(entries.data()->d, 3 * entries.size());
}

// ---- Resampling

float hostile_value() {
  static const float kOdd[] = {0.0F,    -0.0F,     from_bits(1), from_bits(0x80000001), 1.0F, -1.0F,
                               3e38F,   -3e38F,    1e-38F,       from_bits(0x00800000), 0.5F, 1e30F,
                               -1e-45F, HUGE_VALF, -HUGE_VALF,   std::nanf("")};
  return below(4) == 0 ? kOdd[below(16)] : static_cast<float>(below(2000)) / 999.0F - 1.0F;
}

TEST(Resampling, AgreesWithThePlainForm) {
  for (const int from : {1, 2, 3, 4, 8, 9, 13, 16, 17}) {
    for (const int to : {2, 3, 4, 5, 7, 8, 9, 16, 17, 18, 23}) {
      const bool hostile = (from + to) % 2 == 0 || to == 9;
      const Lut src = table(from, nullptr, [hostile](int, int, int) {
        const auto value = [hostile] {
          return hostile ? hostile_value() : std::ldexp(static_cast<float>(below(1U << 24)), -24);
        };
        return vexo_vector{{value(), value(), value()}};
      });
      const Lut expected(vexo_3dlut_create(to, nullptr));
      if (to != from) {
        plain::resample(expected.get(), src.get());
        const Lut got(vexo_3dlut_dup(src.get(), to, nullptr));
        ASSERT_EQ(bits_of_entries(entries_of(got.get())), bits_of_entries(entries_of(expected.get())))
            << from << " to " << to;
      }
    }
  }
}

} // namespace
