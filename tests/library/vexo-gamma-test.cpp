#include "vexo-gamma.h"

#include <gtest/gtest.h>

#include <cmath>

#include "bits.h"
#include "text.h"

// Bit patterns were computed outside the library with the prescribed widths; the samples are chosen so that other
// widths and orders give other bits.

namespace {

using Values = std::vector<float>;

// A table over storage of exactly its size.
struct Lut : vexo_lut {
  explicit Lut(const Values &v) : vexo_lut{static_cast<int>(v.size()), nullptr}, values(v) { d = values.data(); }
  Lut(const Lut &) = delete;
  Values values;
};

Lut untouched(size_t size) { return Lut(Values(size, -7)); }

vexo_gamma kPower = {0, 0, 2.2F, 0};
vexo_gamma kBt709 = {4.5F, 0.018F, 0.45F, 0.099F};
vexo_gamma kLinear = {0, 0, 1, 0};
vexo_gamma kCamera = {0, 0, 0.45F, 0};
vexo_gamma kSystem = {0, 0, 1.2F, 0};
vexo_gamma kNoExponent = {2, 0.25F, 0, 0};
vexo_gamma kNoSlope = {0, 0.5F, 0.5F, 0};

struct Sample {
  float x, y;
};

template <typename Function> void expect_samples(Function function, std::initializer_list<Sample> samples) {
  for (const Sample &s : samples) {
    EXPECT_EQ(bits(function(s.x)), bits(s.y)) << s.x;
  }
}

TEST(Gamma, CurveAndInverse) {
  const auto curve = [](vexo_gamma *gamma) { return [=](float x) { return vexo_gamma_evaluate(gamma, x); }; };
  const auto inverse = [](vexo_gamma *gamma) { return [=](float y) { return vexo_gamma_inverse(gamma, y); }; };
  // At 0.018 the power segment begins: 0.081248.
  expect_samples(curve(&kBt709), {{-0.1F, 0}, {0, 0}, {1.5F, 1}, {0.01F, 0x1.70a3d6p-5F}, {0.018F, 0x1.4ccaa6p-4F}});
  expect_samples(curve(&kBt709), {{0.023F, 0x1.a2e404p-4F}});
  expect_samples(curve(&kPower), {{0.5F, 0x1.bdb8ccp-3F}});
  expect_samples(curve(&kNoSlope), {{0.25F, 0}});
  expect_samples(inverse(&kBt709), {{-0.1F, 0}, {0, 0}, {1, 1}, {0.05F, 0x1.6c16c2p-7F}, {0.094F, 0x1.574ab4p-6F}});
  expect_samples(inverse(&kPower), {{0.5F, 0x1.75a07ep-1F}});
  expect_samples(inverse(&kNoSlope), {{0.25F, 0.0625F}});
  expect_samples(inverse(&kNoExponent), {{0.25F, 0.125F}, {0.5F, -1}});
}

TEST(Lut, LifeCycle) {
  vexo_lut lut = {};
  ASSERT_EQ(vexo_lut_init_with_gamma(&lut, 4, 2.2F), 0);
  EXPECT_EQ(bits(lut.d, 4), bits({0, 0x1.6d562cp-4F, 0x1.a3a95ep-2F, 1}));
  vexo_lut single = {};
  ASSERT_EQ(vexo_lut_init_with_gamma(&single, 1, 2.2F), 0);
  EXPECT_EQ(bits(single.d, 1), bits(Values{0}));
  vexo_lut_destroy(&single);
  Values data = {4, 3, 2, 1};
  vexo_lut_set_data(&lut, data.data());
  EXPECT_EQ(bits(lut.d, 4), bits(data));
  for (int i = 0; i < 2; i++) { // an empty record may be destroyed
    vexo_lut_destroy(&lut);
    EXPECT_EQ(lut.size, 0);
    EXPECT_EQ(lut.d, nullptr);
    vexo_lut_set_data(&lut, data.data());
  }
  ASSERT_EQ(vexo_lut_init_zero(&lut, 300), 0);
  EXPECT_EQ(bits(lut.d, 300), bits(Values(300)));
  const auto init_power = [](vexo_lut *l, int size) { return vexo_lut_init_with_gamma(l, size, 2.2F); };
  vexo_lut_destroy(&lut);
  for (int (*init)(vexo_lut *, int) : {vexo_lut_init, vexo_lut_init_zero, +init_power}) {
    for (int size : {-1, -2147483647 - 1}) {
      EXPECT_EQ(diagnostics([&] { EXPECT_EQ(init(&lut, size), -1); }), "vexo_lut_init: malloc failed.\n");
      EXPECT_EQ(lut.size, size);
      EXPECT_EQ(lut.d, nullptr);
    }
  }
}

TEST(Lut, SampledCurves) {
  Lut lut = untouched(5);
  vexo_lut_by_linear_gamma(&lut);
  EXPECT_EQ(bits(lut.values), bits({0, 0.25F, 0.5F, 0.75F, 1}));
  Lut third = untouched(4);
  vexo_lut_by_gamma(&kPower, &third);
  EXPECT_EQ(bits(third.values), bits({0, 0x1.6d562cp-4F, 0x1.a3a95ep-2F, 1}));
  vexo_lut_inverse_gamma(&kNoSlope, &lut);
  EXPECT_EQ(bits(lut.values), bits({0, 0.0625F, 0.25F, 0.5625F, 1}));
}

TEST(Lut, EvaluateAndInverse) {
  const auto expect = [](float (*read)(vexo_lut *, float), const Values &table, std::initializer_list<Sample> samples) {
    Lut lut(table);
    expect_samples([&](float x) { return read(&lut, x); }, samples);
  };
  const auto evaluate = [](vexo_lut *lut, float x) { return vexo_lut_evaluate(lut, x); };
  expect(evaluate, {0, 0.73F, 0.88F}, {{1.3F, 0x1.8ccccep-1F}}); // other widths give one bit less
  expect(evaluate, {1, 3, 5}, {{1.5F, 4}, {-1, 1}, {NAN, 1}, {2, 5}, {INFINITY, 5}});
  expect(evaluate, {3}, {{0.5F, 3}});
  expect(evaluate, {}, {{0.5F, -1}});
  expect(vexo_lut_inverse, {0.39F, 0.48F, 0.48F, 0.65F}, {{0.52F, 0x1.7d7d7cp-1F}});
  expect(vexo_lut_inverse, {0, 0.25F, 0.5F, 0.75F, 1}, {{0.6F, 0.6F}, {0.5F, 0.5F}, {1.2F, 1}, {-1, 0}, {NAN, 1}});
  expect(vexo_lut_inverse, {0.1F, 0.2F, 0.7F}, {{0.8F, 1}, {0.05F, -0.25F}}); // extended below the first entry
  expect(vexo_lut_inverse, {0.5F, 0.5F, 1}, {{0.25F, -1}, {0.75F, 0.75F}});
  expect(vexo_lut_inverse, {0.5F}, {{0.25F, 1}});
  expect(vexo_lut_inverse, {}, {{0.25F, 1}});
}

void merge_with_reversal(vexo_lut *dst, vexo_lut *src) {
  Lut reversal({1, 0.5F, 0});
  vexo_lut_merge(src, &reversal, dst);
}

TEST(Lut, Resampling) {
  const auto dup = [](vexo_lut *dst, vexo_lut *src) { EXPECT_EQ(vexo_lut_dup(dst, src), 0); };
  const Values jagged = {0.4F, 0.8F, 0.3F, 0.2F, 0.6F, 0.4F};
  const struct {
    void (*resample)(vexo_lut *dst, vexo_lut *src);
    Values src, dst;
  } rows[] = {
      {dup, {0, 0.5F, 1}, {0, 0.25F, 0.5F, 0.75F, 1}},
      {dup,
       jagged,
       {0.4F, 0x1.5f15f2p-1F, 0x1.2be2bep-1F, 0x1.24924ap-2F, 0x1.b6db6ep-3F, 0x1.b6db74p-2F, 0x1.15f16p-1F, 0.4F}},
      {vexo_convert_lut,
       jagged,
       {0.4F, 0x1.5f15f2p-1F, 0x1.2be2bep-1F, 0x1.249248p-2F, 0x1.b6db6ep-3F, 0x1.b6db6cp-2F, 0x1.15f15ep-1F, 0.4F}},
      {vexo_convert_lut, jagged, jagged},
      {vexo_convert_lut, jagged, {0.4F, 0.4F}},
      {vexo_convert_lut, {2, 3}, {3}},
      {vexo_convert_lut, {2}, {2, 2, 2}},
      {merge_with_reversal, {0, 0.25F, 1}, {1, 0.75F, 0}},
      {merge_with_reversal, {-0.5F, NAN, 1.5F}, {1, 1, 0}}, // values outside the second table read its ends
      {dup, {2}, {2, 2}},
      {dup, {}, {-7, -7}}, // nothing written from here on
      {dup, {1, 2}, {-7}},
      {vexo_convert_lut, {}, {-7, -7}},
      {vexo_convert_lut, {1, 2}, {}},
      {merge_with_reversal, {1}, {-7, -7}},
      {merge_with_reversal, {0, 1}, {-7}}};
  for (const auto &row : rows) {
    Lut src(row.src);
    Lut dst = untouched(row.dst.size());
    row.resample(&dst, &src);
    EXPECT_EQ(bits(dst.values), bits(row.dst)) << "row " << &row - rows;
  }
  Lut first({0.29F, 0.72F, 0.92F});
  Lut second({0.05F, 0.96F, 0.59F, 0.97F, 0.85F, 0.96F, 0.67F});
  Lut merged = untouched(7);
  vexo_lut_merge(&first, &second, &merged);
  EXPECT_EQ(bits(merged.values), bits({0x1.5f559cp-1F, 0x1.a2d0e4p-1F, 0x1.d460acp-1F, 0x1.c538fp-1F, 0x1.dbc01ap-1F,
                                       0x1.d9b3dp-1F, 0x1.9e4f76p-1F}));
  Lut single({0.5F});
  Lut kept = untouched(3);
  vexo_lut_merge(&first, &single, &kept);
  EXPECT_EQ(bits(kept.values), bits(Values(3, -7)));
}

TEST(Lut, KnotsAndRepair) {
  const struct {
    std::vector<int> nx;
    Values ny, filled;
  } knots[] = {{{0, 4}, {0, 1}, {0, 0.25F, 0.5F, 0.75F, 1, -7}},
               {{1, 3, 2, 2, 4}, {1, 2, 5, 6, 8}, {-7, 1, 6, 7, 8, -7}}, // falling and equal pairs write nothing
               {{2}, {3}, {-7, -7, 3, -7, -7, -7}},
               {{}, {}, Values(6, -7)}};
  for (auto row : knots) {
    Values table(6, -7);
    vexo_interpolate_linear(static_cast<int>(row.nx.size()), row.nx.data(), row.ny.data(), table.data());
    EXPECT_EQ(bits(table), bits(row.filled));
  }
  const struct {
    int (*repair)(float *, int);
    Values data;
    int status;
    Values repaired;
  } rows[] = {{vexo_data_normalize, {0, 0.3F, 0.2F, 0.5F, 1}, 0, {0, 0.3F, 0.4F, 0.5F, 1}},
              {vexo_data_normalize, {0, 1.2F, 0.5F, 1}, 0, {0, 0.25F, 0.5F, 1}},
              {vexo_data_normalize, {0, NAN, 0, 3}, 0, {0, 1, 2, 3}},
              {vexo_data_normalize, {1, 0.5F, 0}, -1, {1, 0.5F, 0}},
              {vexo_data_normalize, {1, 2, 1}, -1, {1, 2, 1}},
              {vexo_data_normalize, {0, 1, NAN}, -1, {0, 1, NAN}},
              {vexo_data_normalize, {1}, -1, {1}},
              {vexo_data_normalize, {}, -1, {}},
              {vexo_lut_data_normalize, {0.1F, 0.2F, 0.5F}, 0, {0, 0.25F, 1}},
              {vexo_lut_data_normalize, {0, 0.3F, 1}, 0, {0, 0.3F, 1}},
              {vexo_lut_data_normalize, {-1, -2, 3}, 0, {0, 0.5F, 1}},
              {vexo_lut_data_normalize, {1, 2, 1}, -1, {1, 2, 1}}};
  for (auto row : rows) {
    EXPECT_EQ(row.repair(row.data.data(), static_cast<int>(row.data.size())), row.status);
    EXPECT_EQ(bits(row.data), bits(row.repaired)) << "row " << &row - rows;
  }
}

TEST(LutText, ShortCodes) {
  Lut lut({1, -0.2F, 1.5F, 0.5F, 0.49999997F, NAN, INFINITY});
  const std::vector<unsigned short> kept(7, 4711);
  const struct {
    int nbits, status;
    std::vector<unsigned short> codes;
  } rows[] = {{1, 0, {1, 0, 2, 1, 0, 0, 65535}},
              {16, 0, {65535, 0, 32767, 32768, 32767, 0, 65535}},
              {20, 0, {65535, 0, 65535, 0, 65535, 0, 65535}}, // the low 16 bits
              {0, -1, kept},
              {31, -1, kept}};
  for (const auto &row : rows) {
    std::vector<unsigned short> codes = kept;
    EXPECT_EQ(vexo_lut_to_uint(&lut, codes.data(), row.nbits), row.status);
    EXPECT_EQ(codes, row.codes) << row.nbits << " bits";
  }
}

TEST(LutText, WritersUnderAnyLocale) {
  in_both_locales([] {
    Lut odd({0.5F, -0.2F, NAN, INFINITY, -INFINITY});
    Lut one({1});
    Lut tenth({0, 0.1F, -1});
    Lut red({0, 1.0F / 3, 2.0F / 3, 1});
    Lut green({1, 1.5F, 0, 0});
    vexo_lut luts[] = {red, green, red};
    char name[] = "Panel";
    const auto dump = [](vexo_lut &lut, char *prefix) {
      return printed([&](FILE *f) { EXPECT_EQ(vexo_lut_dump(f, &lut, prefix), 0); });
    };
    const std::string body = "\t[   0(0.000000)] - 0.0000000000\n\t[   1(0.500000)] - 0.1000000015\n"
                             "\t[   2(1.000000)] - -1.0000000000\n";
    EXPECT_EQ(dump(tenth, name), "Panel LUT(3):\n" + body);
    EXPECT_EQ(dump(tenth, nullptr), "LUT(3):\n" + body);
    EXPECT_EQ(dump(one, name), "Panel LUT(1):\n\t[   0(0.000000)] - 1.0000000000\n");
    for (int nbits : {0, 31}) {
      EXPECT_EQ(printed([&](FILE *f) {
                  vexo_lut_dump_int(f, &odd, nbits, name);
                  vexo_lut_dump_int3(f, luts, nbits, name);
                  EXPECT_EQ(vexo_luts_store_int(f, luts, nbits), -1);
                }),
                "");
    }
    const std::string listing = "LUT_1D_SIZE 5\nLUT_1D_BITS 8\n  128\t#    0,\n  -51\t#    1,\n    0\t#    2,\n"
                                "2147483647\t#    3,\n-2147483648\t#    4,\n";
    EXPECT_EQ(printed([&](FILE *f) { vexo_lut_dump_int(f, &odd, 8, name); }), "TITLE: Panel\n" + listing);
    EXPECT_EQ(printed([&](FILE *f) { vexo_lut_dump_int(f, &odd, 8, nullptr); }), listing);
    const std::string listing3 = "LUT(4 x 10):\n\t[   0] -        0     1023        0\n"
                                 "\t[   1] -      341     1535      341\n\t[   2] -      682        0      682\n"
                                 "\t[   3] -     1023        0     1023\n";
    EXPECT_EQ(printed([&](FILE *f) { vexo_lut_dump_int3(f, luts, 10, name); }), "Panel " + listing3);
    EXPECT_EQ(printed([&](FILE *f) { vexo_lut_dump_int3(f, luts, 10, nullptr); }), listing3);
    EXPECT_EQ(printed([&](FILE *f) { EXPECT_EQ(vexo_luts_store_int(f, luts, 10), 0); }),
              "LUT_1D_SIZE 4\nLUT_1D_BITS 10\n    0  1023     0\n  341  1535   341\n  682     0   682\n"
              " 1023     0  1023\n");
  });
}

// Line ends of DOS.
std::string crlf(const std::string &text) {
  std::string dos;
  for (char c : text) {
    dos += c == '\n' ? "\r\n" : std::string(1, c);
  }
  return dos;
}

TEST(LutText, ThreeChannelReadersUnderAnyLocale) {
  const auto whole = vexo_luts_load_int;
  const auto decimal = vexo_luts_load_file;
  const float a = 0x1.555556p-2F; // 341 / 1023
  const float b = 0x1.555556p-1F; // 682 / 1023
  const std::string head = "LUT_1D_SIZE 2\nLUT_1D_BITS 10\n";
  const std::string log2 = "LUT_1D_SIZE 1\nLUT_1D_BITS 10\n";
  const std::string data = "0 341 682\n1023 0 341\n";
  const Values read = {0, a, b, 1, 0, a};
  const std::string cut = std::string(1016, ' ') + "0 341 682 1023 0 341\n"; // in pieces of 1023: "... 6" and "82 ..."
  const Values pieces = {0, a, 0x1.806018p-8F, 0x1.485214p-4F, 1, 0};
  const struct {
    int (*load)(FILE *, vexo_lut *);
    std::string text;
    int status, size;
    Values values; // red, green, blue of the first entries; the others are 0
  } rows[] = {
      {whole, head + data, 0, 2, read},
      {whole, crlf(head + data), 0, 2, read},
      {whole, head + "0 341 682\n  1023\t+0 341 # no line end", 0, 2, read},
      {whole, head + "341 682\n" + data, 0, 2, {0, 0, 0, 0, a, b}},
      {whole, head + "nan 0 0\n1e2 3 4\n", 0, 2, {}},
      {whole, head + cut, 0, 2, pieces},
      {whole, head + "-5 4294967296 0\n99999999999999999999 0 0", 0, 2, {0x1.00401p22F, 0, 0, 0x1.00401p22F, 0, 0}},
      {whole, head + "0 341 682\n", -1, 2, {0, a, b}},
      {whole, "LUT_1D_SIZE 1\n65535 0 65535\n", 0, 1, {1, 0, 1}},
      {whole, "LUT_1D_SIZE 1\nLUT_1D_BITS 30\n536870912 0 0", 0, 1, {0.5F, 0, 0}},
      {whole, "LUT_1D_SIZE 0\n1 2 3\n", 0, 0, {}},
      {whole, "0 65535 1\n" + repeated(1023, "0 0 0\n"), 0, 1024, {0, 1, 0x1.0001p-16F}},
      {whole, repeated(1023, "\n"), -1, 1024, {}},
      {whole, " " + head, -1, 1024, {}},
      {decimal, log2 + "340.5 1.023e3 -5\n", -1, 2, {0x1.54d536p-2F, 1, -0x1.405014p-8F}},
      {decimal, crlf(log2 + data), 0, 2, read},
      {decimal, log2 + "nan 1e400 -inf\n0,5 1,5 2,5\n", 0, 2, {NAN, INFINITY, -INFINITY, 0, 0, 0}},
      {decimal, log2 + "\n" + cut, 0, 2, {0, 0, 0, 0, a, 0x1.806018p-8F}},
      {decimal, "LUT_1D_SIZE 0\n127.5 255 51\n", 0, 1, {0.5F, 1, 0.2F}},
      {decimal, "0 255 51\n" + repeated(1023, "0 0 0\n"), 0, 1024, {0, 1, 0.2F}},
      {decimal, repeated(1023, "0 0 0\n"), -1, 1024, {}},
      {whole, "", -1, 0, {}}, // the records stay as they were from here on
      {whole, head, -1, 0, {}},
      {whole, "LUT_1D_SIZE 2\nLUT_1D_BITS 0\n" + data, -1, 0, {}},
      {whole, "LUT_1D_SIZE 2\nLUT_1D_BITS 31\n" + data, -1, 0, {}},
      {decimal, "LUT_1D_SIZE 31\n" + data, -1, 0, {}},
      {decimal, "LUT_1D_SIZE -1\n" + data, -1, 0, {}},
      {decimal, "LUT_1D_SIZE 1\nLUT_1D_BITS -8\n" + data, -1, 0, {}},
  };
  in_both_locales([&] {
    for (const auto &row : rows) {
      vexo_lut luts[3] = {};
      FILE *f = stream_of(row.text);
      EXPECT_EQ(row.load(f, luts), row.status) << row.text;
      for (size_t c = 0; c < 3; c++) {
        ASSERT_EQ(luts[c].size, row.size) << row.text;
        for (size_t i = 0; i < static_cast<size_t>(row.size); i++) {
          const float expected = 3 * i + c < row.values.size() ? row.values[3 * i + c] : 0.0F;
          EXPECT_EQ(bits(luts[c].d[i]), bits(expected)) << row.text << c << ' ' << i;
        }
        vexo_lut_destroy(&luts[c]);
      }
      std::fclose(f);
    }
  });
}

TEST(LutText, OneColumnReaderUnderAnyLocale) {
  Lut ramp = untouched(1024);
  vexo_lut_by_linear_gamma(&ramp);
  std::string counting;
  for (int i = 0; i < 2000; i++) {
    counting += std::to_string(i) + '\n';
  }
  const struct {
    std::string text;
    Values table; // none: the file is refused
  } rows[] = {{"# level\n10\n20\n15\n40\n", {0, 0x1.555556p-2F, 0x1.555556p-1F, 1}},
              {crlf("# level\n10\n\n20\n30"), {0, 0.5F, 1}},
              {"-5\n-2.5e0 V\n+5\n", {0, 0.25F, 1}},
              {"0\n0.3\n1\n", {0, 0.3F, 1}},
              {"0,9\n1,1\n", {0, 1}}, // the comma ends the number
              {"1\nnan\n2\n", {0, 0.5F, 1}},
              {"0\n1e400\n1\n", {0, 0.5F, 1}},
              {"0\n" + std::string(125, ' ') + "12345\n", {0, 0x1.1cf06ap-5F, 1}}, // pieces: 12 and 345
              {counting, ramp.values},                                             // the first 1024
              {"", {}},
              {"volt\n\n", {}},
              {"1\n", {}},
              {"3\n5\n3\n", {}},
              {"0\nnan\n", {}}};
  in_both_locales([&] {
    for (const auto &row : rows) {
      vexo_lut lut = {};
      FILE *f = stream_of(row.text);
      EXPECT_EQ(vexo_lut_load_custom(f, &lut), row.table.empty() ? -1 : 0) << row.text;
      EXPECT_EQ(bits(lut.d, static_cast<size_t>(lut.size)), bits(row.table)) << row.text;
      std::fclose(f);
      vexo_lut_destroy(&lut);
    }
  });
}

TEST(LutText, SizesThatCannotBe) {
  vexo_lut negative[3] = {};
  FILE *n = stream_of("LUT_1D_SIZE -3\n1 2 3\n");
  EXPECT_EQ(diagnostics([&] { EXPECT_EQ(vexo_luts_load_int(n, negative), -1); }), "vexo_lut_init: malloc failed.\n");
  EXPECT_EQ(negative[0].d, nullptr);
  std::fclose(n);
  vexo_lut luts[3] = {}; // with or without that much memory, two lines are too few
  FILE *f = stream_of("LUT_1D_SIZE 2147483647\n1 2 3\n4 5 6\n");
  diagnostics([&] { EXPECT_EQ(vexo_luts_load_int(f, luts), -1); });
  for (vexo_lut &lut : luts) {
    vexo_lut_destroy(&lut);
  }
  std::fclose(f);
}

TEST(GammaLut, BackwardInversion) {
  const Values square = {0, 0x1.8405fep-5F, 0x1.bdb8ccp-3F, 0x1.0fe5aep-1F, 1}; // x^2.2
  const struct {
    vexo_gamma camera, system;
    Values panel, lut;
  } rows[] = {
      {kLinear, kLinear, {0, 0.5F, 1}, {0, 0.25F, 0.5F, 0.75F, 1}},
      {kLinear, kLinear, {0, 0.2F, 0.4F}, {0, 0.625F, 1, 1, 1}},  // light above the panel's
      {kLinear, kLinear, {0.5F, 0.5F, 1}, {0, -1, -1, 0.75F, 1}}, // a panel that starts flat
      {kCamera, kSystem, square, {0, 0x1.6bbd9cp-5F, 0x1.0918cap-2F, 0x1.a591cp-2F, 0x1.31a302p-1F, 0x1.96e798p-1F, 1}},
      {kLinear, kLinear, {0.5F}, {-7, -7}},
      {kLinear, kLinear, {0, 1}, {-7}}};
  for (auto row : rows) {
    Lut panel(row.panel);
    Lut lut = untouched(row.lut.size());
    vexo_gamma_lut_invert(&lut, &row.camera, &row.system, &panel);
    EXPECT_EQ(bits(lut.values), bits(row.lut)) << "row " << &row - rows;
  }
}

TEST(GammaLut, ForwardInversion) {
  const float third = 0x1.555556p-2F;
  const struct {
    vexo_gamma camera, system;
    Values panel;
    int status;
    Values lut;
  } rows[] = {
      {kLinear,
       kLinear,
       {0, 0.01F, 0.03F, 0.2F, 0.19F, 0.5F, 1},
       0, // six drives on three codes, one falls back
       {third / 2, 0.375F, 0x1.2aaaacp-1F, 0x1.6aaaacp-1F, 0x1.aaaaacp-1F, 0x1.cp-1F, 0x1.d55556p-1F, 0x1.eaaaacp-1F,
        1}},
      {kCamera,
       kSystem,
       {0, 0.01F, 0.03F, 0.2F, 0.19F, 0.5F, 1},
       0,
       {0, third / 2, third, 0x1.d55558p-2F, 0x1.2aaaacp-1F, 0x1.6aaaacp-1F, 0x1.aaaaacp-1F, 0x1.d55556p-1F, 1}},
      {kLinear, kLinear, {0, 0.25F, 0.5F}, 0, {0, 0.5F, 1, -7, -7}},
      {kLinear, kLinear, {0.5F, 0.75F, 1}, 0, {0, 0, 0, 0.5F, 1}},
      {kLinear, kLinear, {0, NAN, 1}, 0, {0.25F, 0.4375F, 0.625F, 0.8125F, 1}},
      {kLinear, {0, 0, 0, 0}, {0, 0.5F, 1}, 0, {0.25F, 0.625F, 1}}, // no inverse: drives without a code
      {kLinear, kLinear, {0.5F}, -1, {-7, -7}},
      {kLinear, kLinear, {0, 1}, -1, {-7}}};
  for (auto row : rows) {
    Lut panel(row.panel);
    Lut lut = untouched(row.lut.size());
    EXPECT_EQ(vexo_gamma_lut_invert_2(&lut, &row.camera, &row.system, &panel), row.status);
    EXPECT_EQ(bits(lut.values), bits(row.lut)) << "row " << &row - rows;
  }
}

TEST(GammaLut, CurveConversion) {
  vexo_gamma film = {0, 0, 2.4F, 0};
  Lut lut = untouched(6);
  vexo_gamma_generate_lut(&film, &kPower, &lut); // x^(2.4 / 2.2)
  EXPECT_EQ(bits(lut.values), bits({0, 0x1.61d93p-3F, 0x1.78dcf2p-2F, 0x1.25429ep-1F, 0x1.915feap-1F, 1}));
  Lut one = untouched(1);
  vexo_gamma_generate_lut(&film, &kPower, &one);
  vexo_lut_by_linear_gamma(&one);
  vexo_lut_inverse_gamma(&film, &one);
  EXPECT_EQ(one.values[0], -7.0F);
}

} // namespace
