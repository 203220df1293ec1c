// The library's searches give the bits of their plain forms, on panels and on tables that no panel shows: falling,
// flat, NaN, infinite, -0, denormal.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <vector>

#include "bits.h"
#include "library/plain/vexo-plain.h"
#include "panel-model.h"
#include "text.h"
#include "vexo-cs.h"
#include "vexo.h"

namespace {

const float kInf = std::numeric_limits<float>::infinity();
const float kAwkward[] = {std::numeric_limits<float>::quiet_NaN(),
                          kInf,
                          -kInf,
                          -0.0F,
                          0.0F,
                          1e-45F,
                          -1e-40F,
                          3.4e38F,
                          -1.0F,
                          0.5F,
                          1.0F,
                          1.0000001F};

// The bits of floats, every NaN alike: which of two NaNs an operation passes on is the compiler's choice.
std::vector<uint32_t> value_bits(const float *x, size_t count) {
  std::vector<uint32_t> u(count);
  for (size_t i = 0; i < count; i++) {
    u[i] = std::isnan(x[i]) ? 0x7FC00000U : bits(x[i]);
  }
  return u;
}
std::vector<uint32_t> value_bits(const std::vector<float> &x) { return value_bits(x.data(), x.size()); }
std::vector<uint32_t> value_bits(const vexo_vector &v) { return value_bits(v.d, 3); }

class Random {
public:
  explicit Random(unsigned seed) : bits_(seed) {}
  int below(int n) { return static_cast<int>(bits_() % static_cast<unsigned>(n)); }
  float uniform(float low, float high) { return low + (high - low) * static_cast<float>(bits_()) / 4294967296.0F; }
  float awkward() { return kAwkward[below(std::size(kAwkward))]; }

private:
  std::mt19937 bits_;
};

enum Shape { kRising, kFlat, kNoisy, kFalling, kJagged, kShapes };

// A table of 0..1 of a shape, with awkward values strewn in.
std::vector<float> table(Random *random, int size, int shape, int awkward) {
  std::vector<float> d(static_cast<size_t>(size));
  for (float &x : d) {
    x = random->uniform(0.0F, 1.0F);
  }
  if (shape != kJagged) {
    std::sort(d.begin(), d.end());
  }
  if (shape == kFlat) {
    for (float &x : d) {
      x = std::floor(x * 8.0F) / 8.0F;
    }
  } else if (shape == kNoisy) {
    for (float &x : d) {
      x += random->uniform(-0.01F, 0.01F);
    }
  } else if (shape == kFalling) {
    std::reverse(d.begin(), d.end());
  }
  for (int n = 0; n < awkward; n++) {
    d[static_cast<size_t>(random->below(size))] = random->awkward();
  }
  return d;
}

vexo_gamma curve(Random *random) {
  const vexo_gamma bt709 = {4.5F, 0.018F, 0.45F, 0.099F};
  const vexo_gamma power = {0.0F, 0.0F, random->uniform(0.4F, 2.6F), 0.0F};
  return random->below(3) == 0 ? bt709 : random->below(2) == 0 ? power : vexo_gamma{0.0F, 0.0F, 1.0F, 0.0F};
}

TEST(Fast, InversionOfAnyTable) {
  Random random(1);
  for (int n = 0; n < 1200; n++) {
    const int size = n % 4 == 0 ? 1024 + random.below(4) : n % 100 == 1 ? 5000 : 1 + random.below(80);
    std::vector<float> d = table(&random, size, n % kShapes, n % 3 == 0 ? random.below(6) : 0);
    if (n % 7 == 0) { // most of it lies above or below what is asked
      std::fill_n(d.begin(), size / 2, random.awkward());
    }
    vexo_lut panel = {size, d.data()};
    vexo_gamma camera = curve(&random);
    vexo_gamma system = curve(&random);
    if (n % 5 == 0) { // light that falls and rises again as the input rises
      camera = vexo_gamma{random.uniform(0.5F, 3.0F), random.uniform(0.2F, 0.8F), random.uniform(-1.0F, 1.0F), 0.0F};
    }
    std::vector<float> out(n % 20 == 0 ? 1024 : 1 + static_cast<size_t>(random.below(60)), -7.0F);
    std::vector<float> expected = out;
    vexo_lut fast_lut = {static_cast<int>(out.size()), out.data()};
    vexo_lut plain_lut = {fast_lut.size, expected.data()};
    vexo_gamma_lut_invert(&fast_lut, &camera, &system, &panel);
    plain::gamma_lut_invert(&plain_lut, &camera, &system, &panel);
    ASSERT_EQ(value_bits(out), value_bits(expected)) << n;
  }
}

// Tables as a caller could hand them over.
void fill_context(Random *random, vexo *context, int n) {
  for (int c = 0; c < 3; c++) {
    for (int m = 0; m < 3; m++) {
      const int shape = m == 2 ? n % kShapes : kNoisy;
      std::vector<float> d = table(random, 1024, shape, n % 2 == 0 ? random->below(40) : 0);
      for (float &x : d) {
        x = m == 2 || !(x > 0.0F) ? x : 0.2F + 0.3F * x;
      }
      std::copy(d.begin(), d.end(), context->data[c][m]);
    }
    context->maxY[c] = random->below(8) == 0 ? random->awkward() : random->uniform(1.0F, 200.0F);
  }
}

TEST(Fast, WhiteOfAnyTables) {
  Random random(3);
  vexo context;
  for (int n = 0; n < 60; n++) {
    fill_context(&random, &context, n);
    if (n % 4 == 1) { // full red and green do not mix: the prediction stays what it was
      context.data[n % 8 / 4][n % 3][1023] = n % 16 < 8 ? -0.25F : kAwkward[0];
    }
    vexo_vector ref = {{random.uniform(0.0F, 0.6F), random.uniform(0.0F, 0.6F), 0.0F}};
    if (n % 10 == 9) {
      ref.d[n % 2] = random.awkward();
    }
    vexo_vector gains = {};
    vexo_vector expected = {};
    vexo_peak_white_adjust(&gains, &context, &ref);
    plain::peak_white_adjust(&expected, &context, &ref);
    ASSERT_EQ(value_bits(gains), value_bits(expected)) << n;
  }
}

// A panel near or far from a real one, read at some rows.
vexo_lcnr measurements(Random *random, int n) {
  panel_model::Panel panel = panel_model::desktop_panel();
  for (auto &channel : panel.channel) {
    for (double &XYZ : channel.full) {
      XYZ *= static_cast<double>(random->uniform(0.6F, 1.4F));
    }
    channel.gamma = static_cast<double>(random->uniform(1.0F, 2.8F));
    channel.s = static_cast<double>(random->uniform(0.0F, 1.0F));
  }
  const double noise = n % 3 == 0 ? 0.0 : n % 3 == 1 ? 0.0005 : 0.01;
  vexo_lcnr lcnr = panel_model::measure(panel, 2 + random->below(63), {noise, noise / 10.0});
  auto &luminance = lcnr.data[random->below(3)][1];
  if (n % 4 == 2) { // readings that no probe gives: luminance below black, equal, huge, none
    for (int k = random->below(5); k >= 0; k--) {
      const float strange[] = {-1.0F, 0.0F, 1e-42F, 1e30F, 3e38F, lcnr.data[0][1][0]};
      lcnr.data[random->below(3)][random->below(3)][random->below(lcnr.num)] = strange[random->below(6)];
    }
  } else if (n % 8 == 3) { // a channel whose top is as dark as black
    luminance[lcnr.num - 1] = luminance[0];
  } else if (n % 8 == 4) { // one with a dark row
    luminance[1 + random->below(lcnr.num - 1)] = luminance[0] - (n % 16 == 4 ? 0.0F : 0.25F);
  } else if (n % 8 == 0) { // one that falls
    std::sort(luminance + 1, luminance + lcnr.num - 1, std::greater<float>());
  }
  return lcnr;
}

TEST(Fast, RecipesOnAnyPanel) {
  Random random(4);
  int made = 0;
  diagnostics([&] { // readings that fall are reported
    for (int n = 0; n < 80; n++) {
      const vexo_lcnr lcnr = measurements(&random, n);
      vexo_gamma camera = curve(&random);
      vexo_gamma system = curve(&random);
      const float x = random.uniform(0.27F, 0.36F);
      const float y = random.uniform(0.27F, 0.37F);
      vexo_vector white = {{x, y, 1.0F - x - y}};
      const bool direct = n / 8 % 3 != 0; // either for every kind of panel
      plain::Luts out;
      plain::Luts expected;
      vexo context = {lcnr, {}, {}};
      if ((direct ? vexo_generate_lut : vexo_data_alignment)(out.lut, &context, &camera, &system, &white) != 0) {
        continue;
      }
      made++;
      if (direct) {
        plain::generate_lut(expected.lut, &context, &camera, &system, &white);
      } else {
        vexo bare = {context.lcnr, {}, {}}; // the direct recipe leaves the tables of the bare panel
        ASSERT_EQ(vexo_generate_lut(expected.lut, &bare, &camera, &system, &white), 0);
        plain::data_alignment(expected.lut, &context, &bare, &camera, &system, &white);
      }
      for (int c = 0; c < 3; c++) {
        ASSERT_EQ(value_bits(out.lut[c].d, 1024), value_bits(expected.lut[c].d, 1024)) << n << ' ' << c;
      }
    }
  });
  EXPECT_GE(made, 40);
}

} // namespace
