#include "vexo-3dlut.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <random>

#include "allocation.h"
#include "bits.h"
#include "lut3d.h"
#include "text.h"

namespace {

using Reader = std::function<vexo_3dlut *(FILE *)>;
using Writer = std::function<int(vexo_3dlut *, FILE *)>;

const float kNaN = std::numeric_limits<float>::quiet_NaN();
const float kInf = std::numeric_limits<float>::infinity();

// Eight distinct entries: with i = 4 bi + 2 gi + ri, red = i / 8, green = 1 - i / 16, blue = 1/4 + i / 64.
Lut eight(const char *title = "eight") {
  return table(2, title, [](int bi, int gi, int ri) {
    const float i = static_cast<float>(4 * bi + 2 * gi + ri);
    return vexo_vector{{i / 8.0F, 1.0F - i / 16.0F, 0.25F + i / 64.0F}};
  });
}

const char kEntries[] = "0.00000000 1.00000000 0.25000000\n"
                        "0.12500000 0.93750000 0.26562500\n"
                        "0.25000000 0.87500000 0.28125000\n"
                        "0.37500000 0.81250000 0.29687500\n"
                        "0.50000000 0.75000000 0.31250000\n"
                        "0.62500000 0.68750000 0.32812500\n"
                        "0.75000000 0.62500000 0.34375000\n"
                        "0.87500000 0.56250000 0.35937500\n";

Lut random_table(int size) {
  std::mt19937 random(static_cast<unsigned>(size));
  std::uniform_real_distribution<float> value(0.0F, 1.0F);
  return table(size, "random", [&](int, int, int) {
    return vexo_vector{{value(random), value(random), value(random)}};
  });
}

Lut filled(int size, const vexo_vector &v) {
  return table(size, nullptr, [&](int, int, int) { return v; });
}

Lut read_from(const std::string &bytes, const Reader &reader, long *position = nullptr) {
  FILE *f = stream_of(bytes);
  Lut lut(reader(f));
  if (position != nullptr) {
    *position = ftell(f);
  }
  fclose(f);
  return lut;
}
Lut cube_of(const std::string &text) { return read_from(text, vexo_3dlut_load_cube); }
Lut cube_of_buffer(std::string text, int len) { return Lut(vexo_3dlut_cube_load_buf(text.data(), len)); }
Lut cube_of_buffer(const std::string &text) { return cube_of_buffer(text, static_cast<int>(text.size())); }
Lut eecolor_of(const std::string &text, int size) {
  return read_from(text, [size](FILE *f) { return vexo_3dlut_load_eecolor(f, size); });
}
// Through memory that ends with the last byte, so that a checker sees a read beyond it.
Lut dat_of_buffer(const std::string &bytes) {
  std::vector<uint8_t> exact(bytes.begin(), bytes.end());
  return Lut(vexo_3dlut_dat_load_buf(exact.data(), static_cast<int>(exact.size())));
}

std::string bytes_of(std::initializer_list<uint32_t> words) {
  std::string bytes;
  for (const uint32_t word : words) {
    for (int shift = 24; shift >= 0; shift -= 8) {
      bytes += static_cast<char>(word >> shift & 0xFFU);
    }
  }
  return bytes;
}

const std::string kCurrent("\0\0\0\2", 4);
const std::string kWide("\0\0\0\3", 4);
const std::string kLattice("\3\0\0\1", 4);

std::string header_bytes(const std::string &version, const std::string &title, char nbits, char size) {
  return "\x99\x02\x34\x42" + version + title + std::string(56 - title.size(), '\0') + nbits + std::string(61, '\0') +
         size + '\0';
}

std::string eight_dat() {
  return header_bytes(kCurrent, "eight", 10, 2) +
         bytes_of({0x100ffc00, 0x110efc80, 0x120dfd00, 0x130cfd80, 0x140bfe00, 0x150afe7f, 0x1609feff, 0x1708ff7f});
}

TEST(Lut3d, CreationAndTitle) {
  const int wraps = sizeof(size_t) == 4 ? 711 : 1128104270; // 12 size^3 bytes wrap to what could be allocated
  for (const int size : {0, -1, INT_MIN, INT_MAX, 1 << 21, wraps}) {
    EXPECT_EQ(vexo_3dlut_create(size, "x"), nullptr) << size;
  }
  const Lut lut(vexo_3dlut_create(17, nullptr));
  EXPECT_EQ(vexo_3dlut_size(lut.get()), 17);
  EXPECT_EQ(components(lut.get()), std::vector<float>(4913 * 3, 0.0F));
  EXPECT_EQ(vexo_3dlut_title(lut.get()), nullptr);
  const char title[] = "Film Look";
  EXPECT_EQ(vexo_3dlut_set_title(lut.get(), title), 0);
  EXPECT_STREQ(vexo_3dlut_title(lut.get()), title);
  EXPECT_NE(vexo_3dlut_title(lut.get()), title);
  EXPECT_EQ(vexo_3dlut_set_title(lut.get(), vexo_3dlut_title(lut.get()) + 5), 0); // its own
  EXPECT_STREQ(vexo_3dlut_title(lut.get()), "Look");
  EXPECT_EQ(vexo_3dlut_set_title(lut.get(), nullptr), 0);
  EXPECT_EQ(vexo_3dlut_title(lut.get()), nullptr);
}

TEST(Lut3d, Indexes) {
  const Lut lut = eight();
  const vexo_vector *first = vexo_3dlut_item(lut.get(), 0, 0, 0);
  EXPECT_EQ(vexo_3dlut_item(lut.get(), 0, 0, 1), first + 1);
  EXPECT_EQ(vexo_3dlut_item(lut.get(), 0, 1, 0), first + 2);
  EXPECT_EQ(vexo_3dlut_item(lut.get(), 1, 0, 0), first + 4);
  vexo_vector v = {{9.0F, 9.0F, 9.0F}};
  for (const int bad : {-1, 2, INT_MIN, INT_MAX}) {
    for (int axis = 0; axis < 3; axis++) {
      int i[3] = {0, 0, 0};
      i[axis] = bad;
      EXPECT_EQ(vexo_3dlut_item(lut.get(), i[0], i[1], i[2]), nullptr) << bad << " on axis " << axis;
      EXPECT_EQ(vexo_3dlut_set_item(lut.get(), &v, i[0], i[1], i[2]), -1);
    }
  }
  EXPECT_EQ(components(lut.get()), components(eight().get()));
}

TEST(Lut3d, Identity) {
  const Lut lut(vexo_3dlut_create(17, nullptr));
  EXPECT_EQ(vexo_3dlut_init_unit(lut.get()), 0);
  const vexo_vector *v = vexo_3dlut_item(lut.get(), 0, 5, 16);
  EXPECT_EQ(std::vector<float>(v->d, v->d + 3), (std::vector<float>{1.0F, 0.3125F, 0.0F}));
  const Lut point = filled(1, {{1.0F, 1.0F, 1.0F}});
  vexo_3dlut_init_unit(point.get());
  EXPECT_EQ(components(point.get()), std::vector<float>(3, 0.0F));
  // Resampled to twice the points and back it is exactly itself.
  const Lut up(vexo_3dlut_dup(lut.get(), 33, nullptr));
  const Lut down(vexo_3dlut_dup(up.get(), 17, nullptr));
  EXPECT_EQ(components(down.get()), components(lut.get()));
  EXPECT_EQ(vexo_3dlut_item(up.get(), 0, 11, 0)->d[1], 11.0F / 32.0F);
}

// The trilinear value at the exact position, wholly in double.
double exact_value(vexo_3dlut *lut, const int (&target)[3], int size, int c) {
  const int last = vexo_3dlut_size(lut) - 1;
  int low[3];
  double t[3];
  for (int axis = 0; axis < 3; axis++) {
    low[axis] = target[axis] * last / (size - 1);
    t[axis] = static_cast<double>(target[axis] * last % (size - 1)) / (size - 1);
  }
  double sum = 0.0;
  for (int corner = 0; corner < 8; corner++) {
    double weight = 1.0;
    int i[3];
    for (int axis = 0; axis < 3; axis++) {
      const int up = corner >> axis & 1;
      weight *= up != 0 ? t[axis] : 1.0 - t[axis];
      i[axis] = std::min(low[axis] + up, last);
    }
    sum += weight * static_cast<double>(vexo_3dlut_item(lut, i[0], i[1], i[2])->d[c]);
  }
  return sum;
}

TEST(Lut3dResampling, AgreesWithAnExactEvaluation) {
  for (int from = 2; from <= 20; from++) {
    const Lut src = random_table(from);
    for (int to = 2; to <= 20; to++) {
      const Lut dst(vexo_3dlut_dup(src.get(), to, "t"));
      ASSERT_EQ(vexo_3dlut_size(dst.get()), to);
      double worst = 0.0;
      for (int i = 0; i < to * to * to; i++) {
        const int at[3] = {i / (to * to), i / to % to, i % to};
        for (int c = 0; c < 3; c++) {
          const double got = static_cast<double>(vexo_3dlut_item(dst.get(), at[0], at[1], at[2])->d[c]);
          worst = std::max(worst, std::fabs(got - exact_value(src.get(), at, to, c)));
        }
      }
      EXPECT_LT(worst, 5e-6) << from << " to " << to; // a position is off by less than 2 ulp of 19, on three axes
    }
  }
}

TEST(Lut3dResampling, EqualSizesAndSinglePointsCopy) {
  const Lut src = eight();
  *vexo_3dlut_item(src.get(), 0, 0, 1) = vexo_vector{{-0.0F, kInf, 0.1F}};
  const std::vector<float> all = components(src.get());
  for (const int size : {0, 2}) {
    const Lut dst(vexo_3dlut_dup(src.get(), size, size == 0 ? nullptr : "t"));
    EXPECT_STREQ(vexo_3dlut_title(dst.get()), size == 0 ? "eight" : "t");
    EXPECT_EQ(std::memcmp(components(dst.get()).data(), all.data(), all.size() * sizeof(float)), 0);
  }
  const Lut first(vexo_3dlut_dup(src.get(), 1, nullptr)); // in spite of its neighbour
  EXPECT_EQ(components(first.get()), (std::vector<float>{0.0F, 1.0F, 0.25F}));
  const Lut spread(vexo_3dlut_dup(filled(1, {{0.1F, 0.2F, kInf}}).get(), 3, nullptr));
  EXPECT_EQ(components(spread.get()), components(filled(3, {{0.1F, 0.2F, kInf}}).get()));
  EXPECT_EQ(vexo_3dlut_dup(src.get(), -1, nullptr), nullptr);
}

// Positions are quotients of single-precision numbers: neither a product with the inverse scale nor the exact quotient
// gives all of these fractions. A source that steps from 0 to 1 shows them.
TEST(Lut3dResampling, FractionsBitByBit) {
  const struct {
    int from, to, i, lower;
    uint32_t fraction;
  } cases[] = {
      {5, 8, 3, 1, 0x3f36db6e}, {9, 16, 14, 7, 0x3eeeeef0}, {8, 20, 11, 4, 0x3d579480}, {8, 17, 7, 3, 0x3d7fffc0}};
  for (const auto &c : cases) {
    const auto step = [&](int i) { return i > c.lower ? 1.0F : 0.0F; };
    const Lut src = table(c.from, nullptr, [&](int bi, int gi, int ri) {
      return vexo_vector{{step(ri), step(gi), step(bi)}};
    });
    const Lut dst(vexo_3dlut_dup(src.get(), c.to, nullptr));
    EXPECT_EQ(bits(vexo_3dlut_item(dst.get(), 0, 0, c.i)->d[0]), c.fraction) << c.from << " to " << c.to;
    EXPECT_EQ(bits(vexo_3dlut_item(dst.get(), 0, c.i, 0)->d[1]), c.fraction) << c.from << " to " << c.to;
    EXPECT_EQ(bits(vexo_3dlut_item(dst.get(), c.i, 0, 0)->d[2]), c.fraction) << c.from << " to " << c.to;
  }
}

// In single precision the last of 17 points falls on 6.9999995 of 8 source points, the last of 20 on 7.0000005. The
// first is still interpolated, with the bits below; the second is the source's last entry and reads nothing beyond.
TEST(Lut3dResampling, LastIndexBesideTheGrid) {
  const Lut src = table(8, nullptr, [](int bi, int gi, int ri) {
    return vexo_vector{{ri == 7 ? 2.0F : 1.0F, gi == 7 ? 1.0F / 3.0F : 0.0F, bi == 7 ? 2.0F : 1.0F}};
  });
  const Lut below(vexo_3dlut_dup(src.get(), 17, nullptr));
  const vexo_vector *v = vexo_3dlut_item(below.get(), 16, 16, 16);
  EXPECT_EQ(bits(v->d[0]), 0x3ffffffcU);
  EXPECT_EQ(bits(v->d[1]), 0x3eaaaaa6U);
  EXPECT_EQ(bits(v->d[2]), 0x3ffffffcU);
  const Lut above(vexo_3dlut_dup(src.get(), 20, nullptr));
  v = vexo_3dlut_item(above.get(), 19, 19, 19);
  EXPECT_EQ(std::vector<float>(v->d, v->d + 3), (std::vector<float>{2.0F, 1.0F / 3.0F, 2.0F}));
}

// An image of words with the red codes "hh".
std::string coe_image(const std::string &codes) {
  std::string image = "memory_initialization_radix=16;\nmemory_initialization_vector=\n\n";
  for (size_t i = 0; i < codes.size(); i += 2) {
    image += "000000" + codes.substr(i, 2) + ",\n";
  }
  return image;
}

TEST(Lut3dFiles, EveryByteWritten) {
  const Writer dump_cfe = [](vexo_3dlut *lut, FILE *f) { return vexo_3dlut_dump_cfe(lut, f, nullptr, nullptr); };
  const Writer dump_named = [](vexo_3dlut *lut, FILE *f) { return vexo_3dlut_dump_cfe(lut, f, "M 1", ""); };
  const auto with = [](int (*writer)(vexo_3dlut *, FILE *, int), int nbits) -> Writer {
    return [=](vexo_3dlut *lut, FILE *f) { return writer(lut, f, nbits); };
  };
  const std::string entries = kEntries;
  const std::string cfe = "\nLUT_3D_SIZE 2\n\n" + entries;
  const std::string list = "SIZE: 2\nBITS: 10\n";
  const std::string image = coe_image("");
  const Lut lut = eight();
  const Lut untitled = eight(nullptr);
  const Lut point = filled(1, {{1.0F, 1.0F, 1.0F}});
  // Binary fractions whose 10-bit codes keep the axes apart.
  const Lut three = table(3, "0123456789abcdefghij", [](int bi, int gi, int ri) {
    return vexo_vector{{static_cast<float>(ri) / 4.0F, static_cast<float>(gi) / 8.0F, static_cast<float>(bi) / 16.0F}};
  });
  *vexo_3dlut_item(three.get(), 0, 0, 0) = vexo_vector{{1.0F, -1.0F, kNaN}};
  const Lut ramp = table(3, nullptr, [](int bi, int gi, int ri) {
    return vexo_vector{{static_cast<float>(9 * bi + 3 * gi + ri) / 1024.0F, 0.0F, 0.0F}};
  });
  const int characters = -1; // the result is the number of characters
  const struct {
    const Lut &lut;
    Writer writer;
    int result;
    std::string bytes, message;
  } cases[] = {
      {lut, vexo_3dlut_dump_cube, characters, "TITLE \"eight\"\n\nLUT_3D_SIZE 2\n\n" + entries, ""},
      {untitled, vexo_3dlut_dump_cube, characters, "TITLE \"\"\n\nLUT_3D_SIZE 2\n\n" + entries, ""},
      {lut, dump_cfe, 264, "LUT_3D_AUTHOR Tavrinel\nLUT_3D_MODEL KX600\nLUT_3D_VERSION 2.0.0" + cfe, ""},
      {lut, dump_named, 264, "LUT_3D_AUTHOR Tavrinel\nLUT_3D_MODEL M 1\nLUT_3D_VERSION " + cfe, ""},
      {lut, with(vexo_3dlut_dump_dat, 10), 9, eight_dat(), ""},
      {lut, with(vexo_3dlut_dump_dat, 3), 9,
       header_bytes(kCurrent, "eight", 3, 2) + bytes_of({0xb8, 0xb9, 0xb2, 0xb3, 0xac, 0xac, 0xa5, 0xe6}), ""},
      {untitled, with(vexo_3dlut_dump_old_dat, 10), 2, header_bytes(kLattice, "", 10, 1) + bytes_of({0}),
       "mask = 1024, max = 0\n"},
      {three, with(vexo_3dlut_dump_old_dat, 10), 9,
       header_bytes(kLattice, "0123456789abcdef", 10, 2) +
           bytes_of({0x00000200, 0x00000100, 0x00020000, 0x00020100, 0x04000000, 0x04000100, 0x04020000, 0x04020100}),
       "mask = 1024, max = 512\n"},
      {point, with(vexo_3dlut_dump_old_dat, 10), 1, header_bytes(kLattice, "", 10, 0), "mask = 1024, max = 0\n"},
      {lut, with(vexo_3dlut_dump_coe, 10), 0,
       image + "100ffc00,\n120e0100,\n130d0180,\n110f0080,\n130d0180,\n" + image +
           "140c0200,\n160a0300,\n17090380,\n150b0280,\n17090380,\n",
       ""},
      {ramp, with(vexo_3dlut_dump_coe, 10), 0, // the main block, the green and the red face, each face past the table
       coe_image("00010304090a0c0d060f071008110000020b050e08110000") +
           coe_image("090a0c0d121315160f181019111a00000b140e17111a0000"),
       ""},
      {point, with(vexo_3dlut_dump_coe, 10), 0, image + image, ""},
      {lut, with(vexo_3dlut_dump_coe, 0), 0, coe_image("0000000000") + coe_image("0000000000"), ""},
      {lut, with(vexo_3dlut_dump_1dlut_debug, 0), characters,
       "SIZE: 2\nBITS: 0\n    0,    0,    0\t[   0]\n    0,    0,    0\t[   1]\n", ""},
      {lut, with(vexo_3dlut_dump_debug, 10), characters,
       list + "\n  red,green, blue\t[  bi][  gi][  ri]\n"
              "    0, 1023,  256\t[   0][   0][   0]\n  128,  959,  272\t[   0][   0][   1]\n"
              "  256,  895,  288\t[   0][   1][   0]\n  384,  831,  304\t[   0][   1][   1]\n"
              "  512,  767,  320\t[   1][   0][   0]\n  639,  703,  336\t[   1][   0][   1]\n"
              "  767,  639,  352\t[   1][   1][   0]\n  895,  575,  368\t[   1][   1][   1]\n",
       ""},
      {lut, with(vexo_3dlut_dump_1dlut_debug, 10), characters,
       list + "    0, 1023,  256\t[   0]\n  895,  575,  368\t[   1]\n", ""}};
  for (const auto &c : cases) {
    EXPECT_EQ(diagnostics([&] {
                int result = 0;
                EXPECT_EQ(printed([&](FILE *f) { result = c.writer(c.lut.get(), f); }), c.bytes);
                EXPECT_EQ(result, c.result == characters ? static_cast<int>(c.bytes.size()) : c.result) << c.bytes;
              }),
              c.message);
  }
  FILE *closed = fopen("/dev/null", "r"); // nothing can be written: counts are what the runtime reports
  EXPECT_EQ(vexo_3dlut_dump_cube(lut.get(), closed), -12);
  EXPECT_EQ(vexo_3dlut_dump_dat(lut.get(), closed, 10), 0);
  fclose(closed);
}

TEST(Lut3dFiles, TwelveBitWords) {
  const Lut lut(vexo_3dlut_create(33, nullptr));
  *vexo_3dlut_item(lut.get(), 0, 0, 1) = vexo_vector{{1.0F, 0.5F, 0.25F}};    // 4095, 2047.5 -> 2048, 1023.75 -> 1024
  *vexo_3dlut_item(lut.get(), 32, 32, 32) = vexo_vector{{2.0F, -1.0F, kNaN}}; // 4095, 0, 0
  const std::string bytes = printed([&](FILE *f) { EXPECT_EQ(vexo_3dlut_dump_dat_12bit(lut.get(), f, 12), 35938); });
  ASSERT_EQ(bytes.size(), 287624U);
  EXPECT_EQ(bytes.substr(0, 144), header_bytes(kWide, "", 12, 33) + bytes_of({0, 0, 0x00000400, 0x08000fff}));
  EXPECT_EQ(bytes.substr(bytes.size() - 8), bytes_of({0, 0x00000fff}));
  EXPECT_EQ(read_from(bytes, vexo_3dlut_load_dat), nullptr);
  EXPECT_EQ(dat_of_buffer(bytes), nullptr);
}

TEST(Lut3dFiles, DepthsAndSizesThatDoNotFitWriteNothing) {
  const struct {
    int (*writer)(vexo_3dlut *, FILE *, int);
    int size;
    std::vector<int> depths;
  } cases[] = {{vexo_3dlut_dump_dat, 2, {INT_MIN, 0, 11, INT_MAX}},
               {vexo_3dlut_dump_old_dat, 2, {INT_MIN, 0, 11}},
               {vexo_3dlut_dump_old_dat, 17, {3}},
               {vexo_3dlut_dump_dat_12bit, 33, {10, 13}},
               {vexo_3dlut_dump_dat_12bit, 17, {12}},
               {vexo_3dlut_dump_coe, 2, {INT_MIN, -1, 11, INT_MAX}},
               {vexo_3dlut_dump_debug, 2, {INT_MIN, -1, 31}},
               {vexo_3dlut_dump_1dlut_debug, 2, {INT_MIN, -1, 31}}};
  for (const auto &c : cases) {
    const Lut lut(vexo_3dlut_create(c.size, nullptr));
    for (const int depth : c.depths) {
      const auto write = [&](FILE *f) { EXPECT_EQ(c.writer(lut.get(), f, depth), -1) << depth; };
      EXPECT_EQ(diagnostics([&] { EXPECT_EQ(printed(write), ""); }), "");
    }
  }
}

TEST(Lut3dFiles, ValuesBecomeCodes) {
  const struct {
    float value;
    uint32_t packed, coe; // at 10 bits
    const char *listed;
  } cases[] = {{-0.1F, 0, 0, "    0"},      {kNaN, 0, 0, "    0"},           {-kInf, 0, 0, "    0"},
               {0.5F, 512, 512, "  512"},   {0.00048828125F, 0, 1, "    0"}, {1.0F, 1023, 1023, " 1023"},
               {1.5F, 1023, 1023, " 1535"}, {kInf, 1023, 1023, "   -1"},     {3e6F, 1023, 1023, "-1225967360"}};
  for (const auto &c : cases) {
    const Lut lut = filled(2, {{c.value, 0.0F, c.value}});
    EXPECT_EQ(printed([&](FILE *f) { vexo_3dlut_dump_dat(lut.get(), f, 10); }).substr(128, 4),
              bytes_of({c.packed << 20 | c.packed}))
        << c.value;
    char word[16];
    snprintf(word, sizeof word, "%08x,\n", c.coe << 20 | c.coe);
    EXPECT_EQ(printed([&](FILE *f) { vexo_3dlut_dump_coe(lut.get(), f, 10); }).substr(63, 10), word) << c.value;
    EXPECT_EQ(printed([&](FILE *f) { vexo_3dlut_dump_1dlut_debug(lut.get(), f, 10); }).substr(17, 12),
              (std::string(c.listed) + ",    0," + c.listed + "\t[   0]").substr(0, 12));
  }
}

TEST(Lut3dFiles, CoeFieldsHaveTenBitsAtAnyDepth) {
  EXPECT_EQ(printed([](FILE *f) { vexo_3dlut_dump_coe(eight().get(), f, 8); }).substr(63, 20),
            "0403fc00,\n04838040,\n");
}

// With every code of every depth among the values.
TEST(Lut3dFiles, PackedRoundTrips) {
  const Lut src = table(11, "codes", [](int bi, int gi, int ri) {
    const float code = static_cast<float>((bi * 11 + gi) * 11 + ri);
    return vexo_vector{{code / 1023.0F, (code - 0.3F) / 1023.0F, (1023.2F - code) / 1023.0F}};
  });
  for (int nbits = 1; nbits <= 10; nbits++) {
    const float most = static_cast<float>((1 << nbits) - 1);
    std::vector<float> nearest = components(src.get());
    for (float &value : nearest) {
      value = std::clamp(std::round(value * most), 0.0F, most) / most;
    }
    const std::string dat = printed([&](FILE *f) { vexo_3dlut_dump_dat(src.get(), f, nbits); });
    for (const Lut &lut : {read_from(dat, vexo_3dlut_load_dat), dat_of_buffer(dat)}) {
      ASSERT_NE(lut, nullptr);
      EXPECT_STREQ(vexo_3dlut_title(lut.get()), "codes");
      EXPECT_EQ(components(lut.get()), nearest) << nbits;
    }
  }
}

TEST(Lut3dText, CubeHeaders) {
  const std::string entries = kEntries;
  const std::string rest = "LUT_3D_SIZE 2\n" + entries;
  const std::string t(255, 't');
  const char *const none = nullptr;
  const struct {
    std::string text;
    const char *stream, *buffer; // the title of the LUT; none: no LUT
  } cases[] = {{rest, "cube", "cube"},
               {"TITLE \"Film Look\"\n" + rest, "Film Look", "Film Look"},
               {"TITLE \"a\"\nTITLE\"b\"c\"\n" + rest, "b", "b"},
               {"TITLE \"LUT_3D_SIZE 3\"\n" + rest, "LUT_3D_SIZE 3", "LUT_3D_SIZE 3"},
               {"  SUBTITLE \t\"open\r\n" + rest, "open\r", "open\r"},
               {"TITLE none\nTITLE x \"y\"\n" + rest, "cube", "cube"},
               {"# TITLE \"a\"\n" + rest, "cube", "a"},
               {"TITLE \"" + t + "tail\"\n" + rest, t.c_str() + 7, t.c_str()},
               {rest + "TITLE \"late\"\n", "cube", "cube"},
               {"LUT_3D_SIZE x\nLUT_3D_SIZE\n\n1 2 3\nx LUT_3D_SIZE\t+2.5\n" + entries, "cube", "cube"},
               {"TITLE LUT_3D_SIZE 2\n" + entries, "cube", none},
               {"# LUT_3D_SIZE 2\n" + entries, none, "cube"},
               {std::string(250, '-') + rest, none, "cube"},
               {"", none, none},
               {entries, none, none},
               {"LUT_3D_SIZE 0\n1 2 3\n", none, none},
               {"LUT_3D_SIZE -1\n1 2 3\n", none, none},
               {"LUT_3D_SIZE 18446744073709551617\n1 2 3\n", none, none}};
  for (const auto &c : cases) {
    const auto check = [&](const Lut &lut, const char *title) {
      ASSERT_EQ(lut != nullptr, title != nullptr) << c.text;
      EXPECT_STREQ(lut != nullptr ? vexo_3dlut_title(lut.get()) : nullptr, title);
    };
    check(cube_of(c.text), c.stream);
    check(cube_of_buffer(c.text), c.buffer);
  }
}

TEST(Lut3dText, EntryLines) {
  using Entry = std::vector<float>;
  const std::string blanks(252, ' ');
  const Entry tenths = {0.1F, 0.2F, 0.3F};
  const Entry next = {7.0F, 8.0F, 9.0F}; // the line is skipped
  const struct {
    std::string line;
    Entry stream, buffer;
  } cases[] = {
      {"0.1 0.2 0.3 extra", tenths, tenths},
      {"\t1e-1\v.2 \f+3.E-1\r", tenths, tenths},
      {"0x1p-1 -inf 16777217", {0.5F, -kInf, 16777216.0F}, {0.5F, -kInf, 16777216.0F}},
      {"1e400 -0 5.", {kInf, 0.0F, 5.0F}, {kInf, 0.0F, 5.0F}},
      {"0.1 0.2", next, next},
      {"1,5 2 3", next, next},
      {"# 1 2 3", next, next},
      {"", next, next},
      {"1 2" + blanks + "3 4 5", {3.0F, 4.0F, 5.0F}, {1.0F, 2.0F, 3.0F}}, // pieces are lines of the stream only
      {std::string("1 2 \0 3", 7), next, {}}};                            // a NUL ends the line, or the buffer
  for (const auto &c : cases) {
    const std::string text = "LUT_3D_SIZE 1\n" + c.line + "\n7 8 9\n";
    EXPECT_EQ(components(cube_of(text).get()), c.stream) << c.line;
    const Lut lut = cube_of_buffer(text);
    EXPECT_EQ(lut != nullptr ? components(lut.get()) : Entry{}, c.buffer) << c.line;
  }
  EXPECT_TRUE(std::isnan(components(cube_of("LUT_3D_SIZE 1\nnan 0 0").get())[0]));
  const std::string text = "LUT_3D_SIZE 1\n\n1 2 3"; // the entry line begins at 15 and counts as a whole
  EXPECT_EQ(cube_of_buffer(text, 15), nullptr);
  EXPECT_NE(cube_of_buffer(text, 16), nullptr);
  EXPECT_EQ(cube_of_buffer(text, -1), nullptr);
}

TEST(Lut3dText, EeColorTakesTheLastThreeOfSix) {
  const std::string text = "0 0 0 0.1 0.2 0.3\n1 2 3 4 5\n\n" + std::string(7, '9') + " 8 7 -1 nan 2 tail\n";
  EXPECT_EQ(components(eecolor_of(text, 1).get()), (std::vector<float>{0.1F, 0.2F, 0.3F}));
  EXPECT_EQ(vexo_3dlut_title(eecolor_of(text, 1).get()), nullptr);
  EXPECT_EQ(eecolor_of(text, 2), nullptr);
  EXPECT_EQ(eecolor_of(text, 0), nullptr);
}

TEST(Lut3dFiles, EveryTruncation) {
  const std::string cube = "TITLE \"t\"\nLUT_3D_SIZE 2\n" + std::string(kEntries);
  const std::string dat = eight_dat();
  const size_t enough = cube.size() - 10; // with the first digit of the last number
  for (size_t n = 0; n <= std::max(cube.size(), dat.size()); n++) {
    EXPECT_EQ(cube_of(cube.substr(0, n)) != nullptr, n >= enough) << n;
    EXPECT_EQ(cube_of_buffer(cube.substr(0, n)) != nullptr, n >= enough) << n;
    EXPECT_EQ(read_from(dat.substr(0, n), vexo_3dlut_load_dat) != nullptr, n >= dat.size()) << n;
    EXPECT_EQ(dat_of_buffer(dat.substr(0, n)) != nullptr, n >= dat.size()) << n;
  }
}

TEST(Lut3dFiles, ReadersStopAfterTheLastEntry) {
  const struct {
    std::string text;
    Reader reader;
  } cases[] = {{std::string("LUT_3D_SIZE 2\n") + kEntries, vexo_3dlut_load_cube},
               {"LUT_3D_SIZE 1\n1 2 3" + std::string(250, ' '), vexo_3dlut_load_cube},
               {"1 2 3 4 5 6\n", [](FILE *f) { return vexo_3dlut_load_eecolor(f, 1); }},
               {eight_dat(), vexo_3dlut_load_dat}};
  for (const auto &c : cases) {
    long position = 0;
    EXPECT_NE(read_from(c.text + "1 2 3 4 5 6\n", c.reader, &position), nullptr);
    EXPECT_EQ(position, static_cast<long>(c.text.size()));
  }
}

TEST(Lut3dFiles, DamagedHeaders) {
  const std::string zeros(4, '\0');
  const struct {
    size_t offset;
    std::string bytes;
    bool stream, buffer;
    const char *message; // of the stream reader
  } cases[] = {{0, zeros, false, false, "magic code error: 0x00000000 - 0x0842340299\n"},
               {3, "\xff", false, false, "magic code error: 0xff340299 - 0x0842340299\n"},
               {4, kLattice, false, true, ""},
               {4, "\xff\xff\xff\1", false, true, ""},
               {4, "\1", true, true, ""},
               {4, kWide, false, true, ""},
               {4, "\1\1\1\xff", true, true, ""},
               {64, zeros, false, false, ""},
               {64, "\x0b", false, false, ""},
               {67, "\x80", false, false, ""},
               {126, zeros.substr(0, 1), false, false, "create 3dlut failed, size = 0, name = eight\n"},
               {126, "\3", false, false, ""},
               {24, std::string(40, 'x'), true, true, ""}, // the fields that nobody reads
               {68, std::string(58, 'x'), true, true, ""}};
  for (const auto &c : cases) {
    const std::string bytes = eight_dat().replace(c.offset, c.bytes.size(), c.bytes);
    EXPECT_EQ(dat_of_buffer(bytes) != nullptr, c.buffer) << c.offset;
    const auto read = [&] { EXPECT_EQ(read_from(bytes, vexo_3dlut_load_dat) != nullptr, c.stream) << c.offset; };
    EXPECT_EQ(diagnostics(read), c.message);
  }
}

TEST(Lut3dFiles, Paths) {
  const TemporaryFolder folder;
  const std::string path = folder.path("no such \xc3\xa4");
  EXPECT_EQ(diagnostics([&] {
              EXPECT_EQ(vexo_3dlut_cube_load_file(path.c_str()), nullptr);
              EXPECT_EQ(vexo_3dlut_dat_load_file(path.c_str()), nullptr);
              EXPECT_EQ(vexo_3dlut_eecolor_load_file(path.c_str(), 2), nullptr);
            }),
            "open file: " + path + " failed.\n");
  EXPECT_EQ(vexo_3dlut_cube_load_file(folder.path("").c_str()), nullptr); // a folder opens and cannot be read
  const auto stored = [&](const std::string &bytes) {
    FILE *f = fopen(path.c_str(), "wb");
    fwrite(bytes.data(), 1, bytes.size(), f);
    fclose(f);
    return path.c_str();
  };
  EXPECT_NE(Lut(vexo_3dlut_cube_load_file(stored("LUT_3D_SIZE 1\n1 2 3\n"))), nullptr);
  EXPECT_NE(Lut(vexo_3dlut_eecolor_load_file(stored("0 0 0 1 2 3\n"), 1)), nullptr);
  EXPECT_NE(Lut(vexo_3dlut_dat_load_file(stored(eight_dat()))), nullptr);
}

TEST(Lut3dText, DecimalCommaLocaleChangesNothing) {
  const std::string text = std::string("TITLE \"eight\"\n\nLUT_3D_SIZE 2\n\n") + kEntries;
  in_both_locales([&] {
    EXPECT_EQ(printed([](FILE *f) { vexo_3dlut_dump_cube(eight().get(), f); }), text);
    EXPECT_EQ(components(cube_of(text).get()), components(eight().get()));
    EXPECT_EQ(components(cube_of_buffer(text).get()), components(eight().get()));
    EXPECT_EQ(components(eecolor_of("0.5 0.5 0.5 0.25 0.5 0.75\n", 1).get()), (std::vector<float>{0.25F, 0.5F, 0.75F}));
  });
}

// Whether a process can be held to a limit of its memory: an emulator does not.
bool memory_can_be_limited() {
  rlimit before = {};
  getrlimit(RLIMIT_AS, &before);
  rlimit limited = {std::min<rlim_t>(before.rlim_cur, 1U << 30) - 1, before.rlim_max};
  setrlimit(RLIMIT_AS, &limited);
  getrlimit(RLIMIT_AS, &limited);
  setrlimit(RLIMIT_AS, &before);
  return limited.rlim_cur != before.rlim_cur;
}

// Headers that promise far more than follows, where there is no memory to reserve it and where touching it would show.
TEST(Lut3dFiles, PromisesCostNothing) {
  if (!kAllocationCanFail) {
    GTEST_SKIP() << "sanitizers need the memory themselves";
  }
  if (!memory_can_be_limited()) {
    GTEST_SKIP() << "an emulator does not limit memory";
  }
  const std::string lines = "0.1 0.2 0.3 0.4 0.5 0.6\n0.1 0.2 0.3 0.4 0.5 0.6\n";
  const std::string dat = header_bytes(kCurrent, "big", 10, '\xff') + bytes_of({1, 2, 3});
  for (const rlim_t limit : {RLIM_INFINITY, static_cast<rlim_t>(100) << 20}) {
    const auto child = [&] {
      const rlimit memory = {limit, limit};
      setrlimit(RLIMIT_AS, &memory);
      rusage before = {};
      rusage after = {};
      getrusage(RUSAGE_SELF, &before);
      bool refused = dat_of_buffer(dat) == nullptr && read_from(dat, vexo_3dlut_load_dat) == nullptr;
      for (const int size : {500, 1290, INT_MAX}) {
        const std::string cube = "LUT_3D_SIZE " + std::to_string(size) + "\n" + lines;
        refused = refused && cube_of(cube) == nullptr && cube_of_buffer(cube) == nullptr &&
                  eecolor_of(lines, size) == nullptr;
      }
      getrusage(RUSAGE_SELF, &after);
      _exit(refused && after.ru_maxrss - before.ru_maxrss < 20000 ? 0 : 1); // kilobytes
    };
    // Only a table that could not be reserved is worth a line.
    const char *line = limit == RLIM_INFINITY ? "^$" : "^create 3dlut failed, size = 255, name = big\n$";
    EXPECT_EXIT(child(), testing::ExitedWithCode(0), line);
  }
}

} // namespace
