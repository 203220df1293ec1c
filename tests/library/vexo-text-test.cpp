// What has a faster form against its plain one, to the last bit and character: number text, packed words, resampling.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "base/numbers.h"
#include "bits.h"
#include "library/plain/vexo-3dlut-plain.h"
#include "library/plain/vexo-text-plain.h"
#include "lut3d.h"
#include "text.h"
#include "vexo.h"

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
  return entries.empty() ? std::vector<uint32_t>() : bits_of_numbers(entries.data()->d, 3 * entries.size());
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

// ---- Numbers and lines

std::string printf_of(const char *format, int precision, double value) {
  char text[512];
  return std::string(text, static_cast<size_t>(snprintf(text, sizeof text, format, precision, value)));
}

float any_float() { return from_bits(static_cast<uint32_t>(random_bits())); }

// A decimal string on, or next to, the midpoint of two floats.
std::string near_midpoint() {
  const float x = std::ldexp(static_cast<float>((1U << 23) + below(1U << 23)), -23 - static_cast<int>(below(30)));
  const double mid = (static_cast<double>(x) + static_cast<double>(std::nextafter(x, HUGE_VALF))) / 2.0;
  std::string text = printf_of("%.*f", static_cast<int>(below(40)), mid);
  if (below(2) == 0) {
    text.back() = static_cast<char>('0' + below(10));
  }
  return text;
}

std::string eight_decimals() { return printf_of("%.*f", 8, std::ldexp(static_cast<double>(random_bits()), -32)); }

std::string any_decimals() {
  return printf_of("%.*f", static_cast<int>(below(9)), std::ldexp(static_cast<double>(random_bits()), -29));
}

std::string column() {
  const std::string code = std::to_string(random_bits() >> below(32));
  return std::string(5 - std::min<size_t>(code.size(), 5), ' ') + code;
}

std::string any_number() {
  static const char *const kOdd[] = {"0",
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
                                     "000000001",
                                     "1e-22",
                                     "12e37",
                                     "3.4028236e38",
                                     "16777217",
                                     "0.00000000000000000001",
                                     "18446744073709551615",
                                     "184467440737095516150",
                                     "9999999999999999999e-19",
                                     "1e0000001",
                                     "infinity",
                                     "nan(1)",
                                     "1__"};
  switch (below(8)) {
  case 0:
    return kOdd[below(sizeof kOdd / sizeof *kOdd)];
  case 1:
    return near_midpoint();
  case 2:
    return printf_of("%.*g", static_cast<int>(below(20)), static_cast<double>(any_float()));
  case 3:
    return printf_of("%.*e", static_cast<int>(below(12)), static_cast<double>(hostile_value()));
  case 4:
    return printf_of("%.*f", static_cast<int>(below(18)), std::ldexp(static_cast<double>(random_bits()), -31));
  default:
    return any_decimals();
  }
}

// Lines of regular numbers, and some of any, with what else a file may hold between, within and behind them.
std::string lines_of(size_t count, int columns, std::string (*number)(), std::string (*regular)() = eight_decimals) {
  static const std::string kBetween[] = {"\t", "  ", " \v", "", ",", "\r", std::string(1, '\0'), "\n"};
  static const std::string kBehind[] = {" ", "\r", " tail", "\n\n", "x", std::string(1, '\0'), "\n# 1 2 3", ""};
  std::string text;
  for (size_t i = 0; i < count; i++) {
    const size_t kind = below(8); // regular from 2 on
    std::string line;
    for (int column = 0; column < columns; column++) {
      line += column == 0 ? "" : kind == 0 && below(3) == 0 ? kBetween[below(8)] : " ";
      line += kind == 0 ? number() : regular();
      if (kind == 0 && below(20) == 0) {
        line += std::string(240 + below(20), ' ');
      }
    }
    if (kind == 1) {
      line[below(line.size())] = " .,-x5\n"[below(7)];
    }
    text += line + (kind == 0 ? kBehind[below(8)] : "") + "\n";
  }
  return text;
}

// The reader and its plain form on the same stream, at the same place afterwards.
template <typename Read, typename Plain> void both_read(const std::string &text, Read read, Plain plain_read) {
  FILE *f = stream_of(text);
  const auto got = read(f);
  const long position = ftell(f);
  const int ended = feof(f);
  rewind(f);
  EXPECT_EQ(got, plain_read(f)) << text.substr(0, 2000);
  EXPECT_EQ(position, ftell(f));
  EXPECT_EQ(ended, feof(f));
  fclose(f);
}

std::vector<uint32_t> bits_of_lut(vexo_3dlut *loaded) {
  const Lut lut(loaded);
  return lut != nullptr ? bits_of_entries(entries_of(lut.get())) : std::vector<uint32_t>();
}

std::vector<uint32_t> bits_of_all(const plain::Entries &entries, size_t count) {
  return entries.size() == count ? bits_of_entries(entries) : std::vector<uint32_t>();
}

// With one NaN for all.
uint32_t bits_of_number(float x) { return bits_of_numbers(&x, 1)[0]; }
unsigned long long bits_of_number(unsigned long long n) { return n; }

template <typename Number> void expect_scanf(const std::string &text, const char *format) {
  const char *begin = text.c_str();
  Number got = 7;
  Number expected = 7;
  int length = 0;
  const char *end = vexo_internal::scan(begin, begin + strlen(begin), &got);
  const bool reads = sscanf(begin, format, &expected, &length) == 1;
  EXPECT_EQ(end != nullptr, reads) << text;
  EXPECT_EQ(bits_of_number(got), bits_of_number(expected)) << text;
  EXPECT_TRUE(end == nullptr || end == begin + length) << text;
}

TEST(NumberText, IsReadAsScanfReadsIt) {
  static const std::string kTails[] = {"",   " ",  ",",  "\n", "\r", ".5",
                                       "e5", "x1", "p2", "f",  "i",  std::string(1, '\0')};
  for (int run = 0; run < 50000; run++) {
    const std::string text = std::string(below(3), " \t\v"[below(3)]) + any_number() + kTails[below(12)];
    expect_scanf<float>(text, "%f%n");
    expect_scanf<unsigned long long>(text, "%llu%n");
  }
}

TEST(NumberText, BuffersAreReadAndCutAsLineByLine) {
  for (int run = 0; run < 300; run++) {
    const size_t size = 1 + below(7);
    const size_t count = size * size * size;
    const std::string header = "LUT_3D_SIZE " + std::to_string(size) + "\n";
    const std::string text = lines_of(count + count / 3, 3, any_number);
    const size_t len = below(4) == 0 ? below(text.size()) : text.size() + below(3);
    std::vector<char> mine(header.begin(), header.end()); // ends with the NUL, so that a checker sees a read beyond it
    mine.insert(mine.end(), text.c_str(), text.c_str() + text.size() + 1);
    std::vector<char> theirs(text.c_str(), text.c_str() + text.size() + 1);
    EXPECT_EQ(bits_of_lut(vexo_3dlut_cube_load_buf(mine.data(), static_cast<int>(header.size() + len))),
              bits_of_all(plain::read_entries(theirs.data(), static_cast<ptrdiff_t>(len), count), count))
        << text;
    EXPECT_EQ(std::string(mine.begin() + static_cast<ptrdiff_t>(header.size()), mine.end()),
              std::string(theirs.begin(), theirs.end()));
  }
}

// From a pipe, which nothing can be given back to.
TEST(NumberText, NothingIsTakenAfterTheLastEntry) {
  for (const char *entry : {"0 0 0\n", "0.25 0.5 0.75 # tail\n", "0.12345678 0.12345678 0.12345678\n"}) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    std::string text = "LUT_3D_SIZE 5\n";
    for (int i = 0; i < 125; i++) {
      text += entry;
    }
    text += "next, and more of it";
    ASSERT_EQ(write(ends[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    FILE *f = fdopen(ends[0], "r");
    EXPECT_NE(Lut(vexo_3dlut_load_cube(f)), nullptr);
    EXPECT_EQ(getc(f), 'n');
    fclose(f);
    close(ends[1]);
  }
}

std::string any_integer() {
  return below(3) == 0 ? any_number() : below(3) == 0 ? "     " : column() + (below(9) == 0 ? "9999999999" : "");
}

TEST(NumberText, ThreeChannelFiles) {
  for (int run = 0; run < 400; run++) {
    const bool decimals = run % 2 == 0;
    const int power = static_cast<int>(below(10));
    const int size = 1 << power;
    const std::string header =
        "LUT_1D_SIZE " + std::to_string(decimals ? power : size) + "\nLUT_1D_BITS 1\n"; // codes divided by 1
    const size_t lines = below(3) == 0 ? below(2 * static_cast<size_t>(size)) : 2 * static_cast<size_t>(size);
    const std::string body = below(4) == 0 ? std::string(lines, '\n')
                             : decimals    ? lines_of(lines, 3, any_number, any_decimals)
                                           : lines_of(lines, 3, any_integer, column);
    both_read(
        header + body,
        [&](FILE *f) {
          vexo_lut lut[3] = {};
          const int result = (decimals ? vexo_luts_load_file : vexo_luts_load_int)(f, lut);
          plain::Entries entries;
          for (int i = 0; i < size && result == 0; i++) {
            entries.push_back(vexo_vector{{lut[0].d[i], lut[1].d[i], lut[2].d[i]}});
          }
          for (vexo_lut &channel : lut) {
            vexo_lut_destroy(&channel);
          }
          return bits_of_entries(entries);
        },
        [&](FILE *f) {
          char line[1024];
          EXPECT_TRUE(fgets(line, sizeof line, f) != nullptr && fgets(line, sizeof line, f) != nullptr);
          plain::Entries entries;
          return plain::read_codes(f, size, decimals, &entries) ? bits_of_entries(entries) : std::vector<uint32_t>();
        });
  }
}

TEST(NumberText, MeasurementRows) {
  static const char *const kBetween[] = {", ", ",\t", " ,", ",,", ";", " "};
  const TemporaryFolder folder;
  const std::string path = folder.path("rows");
  for (int run = 0; run < 60; run++) {
    vexo_lcnr expected = {};
    vexo_lcnr lcnr = {};
    float *f[10] = {expected.sample};
    for (int n = 0; n < 9; n++) {
      f[n + 1] = expected.data[n / 3][n % 3];
    }
    std::string text = "<x>";
    for (expected.num = 0; expected.num < 64; expected.num++) {
      std::string row = below(9) == 0 ? " " : "";
      for (int n = 0; n < 10; n++) {
        row += (n == 0           ? ""
                : below(50) == 0 ? kBetween[below(6)]
                                 : ",") +
               (below(20) == 0 ? any_number() : any_decimals());
      }
      sscanf(row.c_str(), " %f,%f,%f,%f,%f,%f,%f,%f,%f,%f", f[0], f[1], f[2], f[3], f[4], f[5], f[6], f[7], f[8], f[9]);
      for (float *&field : f) {
        field++;
      }
      text += "<LEVEL>" + row + "</LEVEL>\n";
    }
    FILE *file = fopen(path.c_str(), "w");
    fputs((text + "</x>").c_str(), file);
    fclose(file);
    EXPECT_EQ(vexo_load_lcnr_xml(&lcnr, path.c_str()), 0);
    EXPECT_EQ(lcnr.num, expected.num);
    EXPECT_EQ(bits_of_numbers(lcnr.data[0][0], 10 * 64), bits_of_numbers(expected.data[0][0], 10 * 64)) << text;
  }
}

// Values whose ninth decimal is a tie, and all the rest.
float printed_value(size_t i) {
  switch (i % 4) {
  case 0:
    return any_float();
  case 1:
    return std::ldexp(static_cast<float>(2 * below(1U << 12) + 1), -9) * (below(2) == 0 ? 1.0F : -1.0F);
  case 2:
    return hostile_value();
  default:
    return std::ldexp(static_cast<float>(random_bits()), -32 + static_cast<int>(below(30)));
  }
}

TEST(NumberText, WritersPrintWhatPrintfPrints) {
  const Lut lut(vexo_3dlut_create(25, nullptr));
  float *value = vexo_3dlut_item(lut.get(), 0, 0, 0)->d;
  for (size_t i = 0; i < 3 * 25 * 25 * 25; i++) {
    value[i] = printed_value(i);
  }
  const plain::Entries entries = entries_of(lut.get());
  const std::string expected = printed([&](FILE *f) { plain::print_entries(f, entries); });
  const std::string cube = printed([&](FILE *f) {
    EXPECT_EQ(vexo_3dlut_dump_cfe(lut.get(), f, nullptr, nullptr), static_cast<int>(expected.size()));
  });
  EXPECT_EQ(cube.substr(cube.size() - expected.size()), expected);
  vexo_lut channels[3] = {{1000, value}, {1000, value + 1000}, {1000, value + 2000}};
  for (const int nbits : {1, 8, 10, 16, 30}) {
    const std::string codes = printed([&](FILE *f) { vexo_luts_store_int(f, channels, nbits); });
    const std::string list = printed([&](FILE *f) { plain::print_codes(f, channels, nbits, "%5d %5d %5d\n"); });
    EXPECT_EQ(codes.substr(codes.size() - std::min(codes.size(), list.size())), list);
  }
}

TEST(PackedWords, AgreeWithThePlainForm) {
  for (const int size : {1, 7, 16}) { // below and above a block of words
    const Lut lut = table(size, nullptr, [](int, int, int) {
      return vexo_vector{{hostile_value(), printed_value(0), std::ldexp(static_cast<float>(below(2047)), -10)}};
    });
    const plain::Entries entries = entries_of(lut.get());
    const std::string words = printed([&](FILE *f) { plain::write_words(f, entries.data(), entries.size()); });
    const std::string packed = printed([&](FILE *f) { vexo_3dlut_dump_dat(lut.get(), f, 10); });
    EXPECT_EQ(packed.substr(128), words) << size;
    plain::Entries expected(entries.size());
    FILE *f = stream_of(words);
    ASSERT_TRUE(plain::read_words(f, expected.data(), expected.size()));
    fclose(f);
    f = stream_of(packed);
    EXPECT_EQ(bits_of_lut(vexo_3dlut_load_dat(f)), bits_of_entries(expected)) << size;
    fclose(f);
  }
}

// Words that a full device refuses do not count.
TEST(PackedWords, CountOnAFullDevice) {
  const Lut lut = table(13, "t", [](int, int, int) { return vexo_vector{{hostile_value(), 0.5F, 12.25F}}; });
  const auto on_full = [](auto print) {
    FILE *f = fopen("/dev/full", "w");
    const size_t count = print(f);
    fclose(f);
    return count;
  };
  EXPECT_EQ(on_full([&](FILE *f) { return static_cast<size_t>(vexo_3dlut_dump_dat(lut.get(), f, 10)); }),
            on_full([&](FILE *f) {
              const std::string header(128, ' ');
              const plain::Entries entries = entries_of(lut.get());
              return fwrite(header.data(), 128, 1, f) + plain::write_words(f, entries.data(), entries.size());
            }));
}

} // namespace
