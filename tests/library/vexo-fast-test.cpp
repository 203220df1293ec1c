// What the library does in fewer steps gives the bits of the plain form: searches, resampling, numbers in text. Tables
// and panels are usual ones and such that no panel shows: falling, flat, NaN, infinite, -0, denormal.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "library/calls.h"
#include "library/plain/vexo-3dlut-plain.h"
#include "library/plain/vexo-plain.h"
#include "lut3d.h"
#include "scan.h"
#include "text.h"

namespace {

// The bits of floats, every NaN alike: which of two NaNs an operation passes on is the compiler's choice.
std::vector<uint32_t> bits(const float *x, size_t count) {
  std::vector<uint32_t> u(count);
  memcpy(u.data(), x, count * sizeof *x);
  std::replace_if(
      u.begin(), u.end(), [](uint32_t bits) { return (bits & 0x7FFFFFFFU) > 0x7F800000U; }, 0x7FC00000U);
  return u;
}
std::vector<uint32_t> bits(const std::vector<float> &x) { return bits(x.data(), x.size()); }

// Runs a comparison with usual arguments and with awkward ones.
template <typename Compare> void many_times(int runs, Compare compare) {
  Source usual(0.0F, 0.7F);
  Awkward awkward(usual);
  for (int n = 0; n < runs && !testing::Test::HasFailure(); n++) {
    compare(usual, n);
    compare(awkward, n);
  }
}

TEST(Fast, InversionOfAnyTable) {
  many_times(600, [](Source &source, int n) {
    const int size = n % 4 == 0 ? 1024 + source.below(4) : n % 100 == 1 ? 5000 : 1 + source.below(80);
    std::vector<float> d = source.table(size);
    if (n % 7 == 0) { // most of it lies above or below what is asked
      std::fill_n(d.begin(), size / 2, source.real());
    }
    vexo_lut panel = {size, d.data()};
    vexo_gamma camera = source.curve();
    vexo_gamma system = source.curve();
    if (n % 5 == 0) { // light that falls and rises again as the input rises
      camera = {source.between(0.5F, 3.0F), source.between(0.2F, 0.8F), source.between(-1.0F, 1.0F), 0.0F};
    }
    Luts out(n % 20 == 0 ? 1024 : 1 + source.below(60));
    vexo_gamma_lut_invert(&out.lut[0], &camera, &system, &panel);
    plain::gamma_lut_invert(&out.lut[1], &camera, &system, &panel);
    const auto count = static_cast<size_t>(out.lut[0].size);
    ASSERT_EQ(bits(out.lut[0].d, count), bits(out.lut[1].d, count)) << n;
  });
}

TEST(Fast, WhiteOfAnyTables) {
  many_times(30, [](Source &source, int n) {
    Argument<vexo *> panel(source);
    if (n % 4 == 1) { // full red and green do not mix: the prediction stays what it was
      panel.panel->data[n % 8 / 4][n % 3][1023] = n % 16 < 8 ? -0.25F : NAN;
    }
    vexo_vector ref = {{source.real(), source.real(), 0.0F}};
    vexo_vector gains = {};
    vexo_vector expected = {};
    vexo_peak_white_adjust(&gains, panel.pass(), &ref);
    plain::peak_white_adjust(&expected, panel.pass(), &ref);
    ASSERT_EQ(bits(gains.d, 3), bits(expected.d, 3)) << n;
  });
}

TEST(Fast, RecipesOnAnyPanel) {
  int made = 0;
  diagnostics([&] { // readings that fall are reported
    many_times(40, [&](Source &source, int n) {
      Argument<vexo_lcnr *> readings(source);
      vexo_gamma camera = source.curve();
      vexo_gamma system = source.curve();
      const float x = source.between(0.27F, 0.36F);
      const float y = source.between(0.27F, 0.37F);
      vexo_vector white = {{x, y, 1.0F - x - y}};
      Luts out;
      plain::Luts expected;
      vexo context = {readings.lcnr, {}, {}};
      if ((n % 2 == 0 ? vexo_generate_lut : vexo_data_alignment)(out.lut, &context, &camera, &system, &white) != 0) {
        return;
      }
      made++;
      if (n % 2 == 0) {
        plain::generate_lut(expected.lut, &context, &camera, &system, &white);
      } else {
        vexo bare = {context.lcnr, {}, {}}; // the direct recipe leaves the tables of the bare panel
        ASSERT_EQ(vexo_generate_lut(expected.lut, &bare, &camera, &system, &white), 0);
        plain::data_alignment(expected.lut, &context, &bare, &camera, &system, &white);
      }
      for (int c = 0; c < 3; c++) {
        ASSERT_EQ(bits(out.lut[c].d, 1024), bits(expected.lut[c].d, 1024)) << n << ' ' << c;
      }
    });
  });
  EXPECT_GE(made, 40);
}

TEST(Fast, Resampling) {
  many_times(1, [](Source &source, int) {
    for (const int from : {1, 2, 3, 4, 8, 9, 13, 17}) {
      for (const int to : {2, 3, 4, 5, 7, 8, 9, 16, 17, 20}) {
        const Lut src = any_lut(source, from);
        const Lut expected(vexo_3dlut_create(to, nullptr));
        plain::resample(expected.get(), src.get());
        const Lut got(vexo_3dlut_dup(src.get(), to, "t"));
        ASSERT_TRUE(from == to || bits(components(got.get())) == bits(components(expected.get()))) << from << ' ' << to;
      }
    }
  });
}

// ---- Numbers in text

template <typename Number> std::string printf_of(const char *format, int width, Number value) {
  char text[512];
  return std::string(text, static_cast<size_t>(snprintf(text, sizeof text, format, width, value)));
}

float any_float(Source &source) {
  const uint32_t high = static_cast<uint32_t>(source.below(1 << 16));
  const uint32_t u = high << 16 | static_cast<uint32_t>(source.below(1 << 16));
  float x;
  memcpy(&x, &u, sizeof x);
  return x;
}

std::string any_number(Source &source) {
  static const std::vector<std::string> kOdd = {"0",
                                                "-0",
                                                "+.5",
                                                "5.",
                                                ".",
                                                "-.",
                                                "1e5",
                                                "1e-05",
                                                "2.5E+3",
                                                "1e",
                                                "1e+",
                                                "1e400",
                                                "nan",
                                                "-inf",
                                                "0x1p-3",
                                                "0x",
                                                "1e22",
                                                "1e-46",
                                                "1,5",
                                                "--1",
                                                "1.5.5",
                                                "+",
                                                "",
                                                "1e-22",
                                                "12e37",
                                                "000000001",
                                                "1__",
                                                "nan(1)",
                                                "infinity",
                                                "3.4028236e38",
                                                "16777217",
                                                "0.00000000000000000001",
                                                "18446744073709551615",
                                                "184467440737095516150",
                                                "9999999999999999999e-19",
                                                "1e0000001"};
  const float x = any_float(source);
  const double mid = (static_cast<double>(x) + static_cast<double>(std::nextafter(x, HUGE_VALF))) / 2.0;
  switch (source.below(5)) {
  case 0:
    return kOdd[static_cast<size_t>(source.below(static_cast<int>(kOdd.size())))];
  case 1: // on the midpoint of two floats, or beside it
    return printf_of("%.*e", 30 + source.below(40), mid) + (source.below(2) == 0 ? "1" : "");
  case 2:
    return printf_of("%.*g", source.below(20), static_cast<double>(x));
  case 3:
    return std::to_string(source.below(1 << 30) >> source.below(30));
  default:
    return printf_of("%.*f", source.below(18), static_cast<double>(source.between(-2.0F, 2.0F)));
  }
}

TEST(Fast, NumbersAreReadAsScanfReadsThem) {
  static const std::vector<std::string> kTails = {"", " ", ",", "\n", "\r", ".5", "e5", "x1", "p2", "f", "i"};
  Source source;
  for (int n = 0; n < 50000; n++) {
    const std::string blanks(static_cast<size_t>(source.below(3)), " \t\v"[source.below(3)]);
    const std::string text = blanks + any_number(source) + kTails[static_cast<size_t>(source.below(11))];
    ASSERT_TRUE(reads_as_scanf<float>(text.c_str(), "%f%n")) << text;
    ASSERT_TRUE(reads_as_scanf<unsigned long long>(text.c_str(), "%llu%n")) << text;
  }
}

TEST(Fast, NumbersArePrintedAsPrintfPrintsThem) {
  Source source;
  for (int n = 0; n < 50000; n++) {
    const float tie = std::ldexp(static_cast<float>(2 * source.below(1 << 12) + 1), -9); // in the ninth decimal
    const float value = n % 2 == 0 ? any_float(source) : n % 4 == 1 ? tie : -tie;
    const int code = n % 2 == 0 ? source.below(1 << 30) >> source.below(30) : -source.below(1 << source.below(20));
    char text[2 * vexo_internal::kNumberRoom];
    ASSERT_EQ(std::string(text, vexo_internal::put_decimal(text, value)),
              printf_of("%.*f", 8, static_cast<double>(value)));
    ASSERT_EQ(std::string(text, vexo_internal::put_integer(text, code, 1 + n % 8)), printf_of("%*d", 1 + n % 8, code));
  }
}

} // namespace
