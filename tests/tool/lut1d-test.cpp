// vexo lut1d: every layout read and written, and every fault of a file named with its line.
#include <string>
#include <vector>

#include "tool/tool.h"

namespace {

const std::string kInteger = "LUT_1D_SIZE 4\nLUT_1D_BITS 8\n    0     0     0\n   51   102    10\n  102   204    20\n"
                             "  255   255    30\n";
const std::string kDecimal = "LUT_1D_SIZE 2\nLUT_1D_BITS 8\n0 0 0\n51 102 10.0\n1.02e2 204 20\r\n255 255 30\n";

std::string rising(int count) {
  std::string text;
  for (int i = 0; i < count; i++) {
    text += std::to_string(i) + "\n";
  }
  return text;
}

std::string replaced(std::string text, const std::string &from, const std::string &to) {
  return text.replace(text.find(from), from.size(), to);
}

} // namespace

TEST_F(Tool, ConvertsLutFiles) {
  save(path("a.txt"), kInteger);
  save(path("d.txt"), kDecimal);
  save(path("c.txt"), "# a dip and its repair\n\n10\n20 # two\n15\n40\n");
  const struct {
    const char *arguments;
    std::string out;
  } cases[] = {
      {"a.txt -", kInteger},
      {"d.txt -", kInteger},
      {"- - < d.txt", kInteger},
      {"a.txt - --bits 16 --entries 2", "LUT_1D_SIZE 2\nLUT_1D_BITS 16\n    0     0     0\n65535 65535  7710\n"},
      {"a.txt - --entries 7", "LUT_1D_SIZE 7\nLUT_1D_BITS 8\n    0     0     0\n   26    51     5\n   51   102    10\n"
                              "   77   153    15\n  102   204    20\n  179   230    25\n  255   255    30\n"},
      {"c.txt - --bits 8", "LUT_1D_SIZE 4\nLUT_1D_BITS 8\n    0     0     0\n   85    85    85\n  170   170   170\n"
                           "  255   255   255\n"},
      {"a.txt - --to listing-int --channel blue",
       "LUT_1D_SIZE 4\nLUT_1D_BITS 8\n    0\t#    0,\n   10\t#    1,\n   20\t#    2,\n   30\t#    3,\n"},
      {"a.txt - --to listing-int3 --entries 2", "LUT(2 x 8):\n\t[   0] -        0        0        0\n"
                                                "\t[   1] -      255      255       30\n"},
      {"a.txt - --to listing --entries 2", "LUT(2):\n\t[   0(0.000000)] - 0.0000000000\n"
                                           "\t[   1(1.000000)] - 1.0000000000\n"},
  };
  for (const auto &c : cases) {
    const Result r = run(std::string("lut1d convert ") + c.arguments);
    EXPECT_EQ(r.code, 0) << c.arguments << r.err;
    EXPECT_EQ(r.out, c.out) << c.arguments;
  }
  EXPECT_TRUE(has(run("lut1d info d.txt").out, "decimal, 4 entries of 8 bits"));
  EXPECT_TRUE(has(run("lut1d info a.txt").out, "largest step 0.600000 to entry 3")); // 102 to 255 of 255
  run("lut1d convert a.txt wide.txt --entries 1024 --bits 16");
  EXPECT_EQ(run("lut1d diff a.txt wide.txt --limit 0.0001").code, 0);
  save(path("b.txt"), replaced(kInteger, "204", "153"));
  const Result r = run("lut1d diff a.txt b.txt --limit 0.1999");
  EXPECT_EQ(r.code, 1);
  EXPECT_TRUE(has(r.out, "green  mean 0.050000, largest 0.200000 at entry 2")) << r.out;
  EXPECT_TRUE(has(r.err, "green differs by 0.200000, the limit is 0.1999")) << r.err;
  EXPECT_EQ(run("lut1d diff a.txt b.txt").code, 0);
  for (const char *usage : {"--to decimal", "--to cube", "--bits 31", "--entries 1", "--channel gray", "--from listing",
                            "--to listing --bits 8"}) {
    EXPECT_EQ(run(std::string("lut1d convert a.txt none.txt ") + usage).code, 2) << usage;
  }
}

TEST_F(Tool, ChecksLutFiles) {
  const std::string column = "10\n20\n30\n40\n";
  const struct {
    std::string text;
    const char *message; // empty: no fault
    int info;            // exit code of what has to read the file
  } cases[] = {
      {kInteger, "", 0},
      {kDecimal, "", 0},
      {column, "", 0},
      {replaced(kInteger, "   51   102", "   51 # 102"), "lut:4: not three codes, so entry 1 stays 0", 3},
      {replaced(kInteger, "   51   102", "\n   51   102"), "lut:4: not three codes, so entry 1 stays 0", 3},
      {replaced(kInteger, "   51", "   -1"), "lut:4: red is -1, outside 0 to 255 (8 bits)", 3},
      {replaced(kInteger, "204", "256"), "lut:5: green is 256, outside 0 to 255 (8 bits)", 3},
      {replaced(kDecimal, "204", "nan"), "lut:5: green is nan, outside 0 to 255 (8 bits)", 3},
      {replaced(kInteger, "    20\n", "     9\n"), "lut:5: blue falls from 10 to 9", 0},
      {replaced(kInteger, "    20\n", "    20 7\n"), "lut:5: text after the third number is passed over", 0},
      {replaced(kInteger, "  102   204    20\n", ""), "lut: the file ends after 3 lines of data, expected 4", 3},
      {kInteger + "255 255 255\n", "lut:7: more than the 4 lines of data", 0},
      {replaced(kInteger, "LUT_1D_BITS 8\n", ""), "lut: no LUT_1D_BITS line after the size: 16 bits are assumed", 0},
      {replaced(kInteger, "LUT_1D_SIZE 4\nLUT_1D_BITS 8\n", ""),
       "lut: the file ends after 4 lines of data, expected 1024", 3},
      {replaced(column, "20", "45"), "lut:2: 45 does not fit a rising table and is read as 20", 0},
      {replaced(column, "20", "inf"), "lut:2: the number is not finite", 3},
      {replaced(column, "20", "20 21"), "lut:2: text after the number is passed over", 0},
      {replaced(column, "20", "x"), "lut:2: no number, passed over", 0},
      {replaced(column, "40", "5"), "lut: the last number, 5, is not above the first, 10", 3},
      {rising(1025), "lut:1025: more than 1024 numbers; this one and those after it are not read", 0},
  };
  for (const auto &c : cases) {
    save(path("lut"), c.text);
    const Result r = run("lut1d check lut");
    EXPECT_EQ(r.code, *c.message != '\0' ? 1 : 0) << c.text << r.out << r.err;
    EXPECT_TRUE(has(r.out, c.message)) << c.message << "\n" << r.out;
    EXPECT_EQ(run("lut1d info lut").code, c.info) << c.text;
  }
  for (const char *text : {"", "hello\n", "LUT_1D_SIZE 0\n1 2 3\n", "LUT_1D_SIZE 4\nLUT_1D_BITS 31\n1 2 3\n"}) {
    save(path("lut"), text);
    EXPECT_EQ(run("lut1d check lut").code, 3) << text;
  }
  save(path("lut"), replaced(kInteger, "204", "2O4"));
  EXPECT_TRUE(has(run("gray panel.xml lut").err, "lut:5: not three codes, so entry 2 stays 0"));
}
