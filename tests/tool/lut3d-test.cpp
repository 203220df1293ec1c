// vexo lut3d as a user runs it: what every format says of the same table, what is refused, and what is only warned of.
#include <algorithm>
#include <string>
#include <vector>

#include "allocation.h"
#include "tool/tool.h"

namespace {

// Three grid points per axis. No two channels or axes are alike. Every value is a code of 10 bits.
int code(int channel, int ri, int gi, int bi) {
  return channel == 0 ? 100 * ri + 3 : channel == 1 ? 200 * gi + 7 : 300 * bi + 11;
}

std::string decimals(float value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.8f", static_cast<double>(value));
  return text;
}

// Lines of the table's entries, each after the given columns.
std::string entries(const std::string &columns = "", const std::string &end = "\n") {
  std::string text;
  for (int i = 0; i < 27; i++) {
    text += columns;
    for (int c = 0; c < 3; c++) {
      text += (c == 0 ? "" : " ") + decimals(static_cast<float>(code(c, i % 3, i / 3 % 3, i / 9)) / 1023.0F);
    }
    text += end;
  }
  return text;
}

const std::string kHeader = "TITLE \"film\"\n\nLUT_3D_SIZE 3\n\n";

std::vector<unsigned> bytes_from(const std::string &text, size_t at, size_t count) {
  const std::string part = text.substr(std::min(at, text.size()), count);
  std::vector<unsigned> bytes;
  for (const char c : part) {
    bytes.push_back(static_cast<unsigned char>(c));
  }
  return bytes;
}

} // namespace

class Lut3dTool : public Tool {
protected:
  void SetUp() override {
    Tool::SetUp();
    save(path("in.cube"), kHeader + entries());
  }
  void refuses(const std::string &arguments, int exit_code, const std::string &message) const {
    const Result r = run("lut3d " + arguments);
    EXPECT_EQ(r.code, exit_code) << arguments;
    EXPECT_TRUE(has(r.err, message)) << arguments << "\n" << r.err;
  }
};

TEST_F(Lut3dTool, ConvertsBetweenAllFormats) {
  const struct {
    const char *format;
    const char *name;
    const char *options;
  } outputs[] = {{"cube", "o.cube", "--title film"},
                 {"cfe", "o.cfe", ""},
                 {"dat", "o.dat", "--title film"},
                 {"dat12", "o", "--to dat12 --size 33 --title film"},
                 {"dat-old", "o", "--to dat-old --title film"},
                 {"coe", "o.coe", ""},
                 {"debug", "o", "--to debug"},
                 {"debug-gray", "o", "--to debug-gray"}};
  ASSERT_EQ(run("lut3d convert in.cube in.cfe").code, 0);
  ASSERT_EQ(run("lut3d convert in.cube in.DAT").code, 0);
  save(path("in.txt"), "Input RGB; output RGB\n" + entries("0 0 0 "));
  for (const auto &output : outputs) {
    const std::string name = path(output.name);
    ASSERT_EQ(run(std::string("lut3d convert in.cube ") + output.name + " " + output.options).code, 0) << output.format;
    const std::string expected = contents(name);
    for (const char *input : {"in.cfe", "in.DAT", "in.txt"}) {
      save(name, "old");
      const Result r = run(std::string("lut3d convert ") + input + " " + output.name + " " + output.options);
      EXPECT_EQ(r.code, 0) << input << " to " << output.format << r.err;
      EXPECT_TRUE(contents(name) == expected) << input << " to " << output.format;
    }
    const Result piped = run(std::string("lut3d convert - - --from dat --to ") + output.format + " " +
                             (has(output.options, "--size") ? "--size 33" : "") + " --title film <in.DAT");
    EXPECT_EQ(piped.code, 0) << output.format << piped.err;
    EXPECT_TRUE(piped.out == expected) << output.format;
  }
  EXPECT_EQ(contents(path("o.cube")), kHeader + entries());
  // Entry (bi, gi, ri) = (0, 0, 1) is the second; its codes are 103, 7 and 11.
  const std::string packed = contents(path("o.dat"));
  EXPECT_EQ(packed.size(), 128U + 27U * 4U);
  EXPECT_EQ(bytes_from(packed, 0, 8), (std::vector<unsigned>{0x99, 0x02, 0x34, 0x42, 0, 0, 0, 2}));
  EXPECT_EQ(bytes_from(packed, 132, 4), (std::vector<unsigned>{0x00, 0xb0, 0x1c, 0x67}));
  EXPECT_TRUE(has(contents(path("o.coe")), "\n00b01c67,\n"));
  EXPECT_TRUE(has(run("lut3d convert in.cube - --to debug").out, "\n  103,  407,   11\t[   0][   2][   1]\n"));
  EXPECT_TRUE(has(run("lut3d convert in.cube - --to debug-gray --bits 8").out, "BITS: 8\n    1,    2,    3\t[   0]\n"));
  EXPECT_EQ(run("lut3d convert in.cube - --to dat12 --size 33").out.size(), 128U + 33U * 33U * 33U * 8U);
  EXPECT_EQ(run("lut3d convert in.cube - --to dat-old").out.size(), 128U + 8U * 4U);
  EXPECT_EQ(bytes_from(run("lut3d convert in.cube - --to dat --bits 8").out, 132, 4), // 25.7, 1.7 and 2.7 of 255
            (std::vector<unsigned>{0, 3, 2, 26}));
}

TEST_F(Lut3dTool, SaysWhatATableHolds) {
  run("lut3d convert in.cube in.dat");
  const Result r = run("lut3d info in.dat");
  for (const char *line :
       {"Format     dat, 10 bits, version 0x02000000\n", "Title      film\n", "Size       3 x 3 x 3\n",
        "Range      red    0.0029325513 to 0.19843598\n", "Range      blue   0.010752688 to 0.59726298\n",
        "largest 0.195503 at blue 0, green 1, red 0\n", // 200 codes of green
        "Identity   red    mean 0.401271, largest 0.801564 at blue 0, green 0, red 2\n", "not neutral", "(index 2)",
        "           monotonic\n"}) {
    EXPECT_TRUE(has(r.out, line)) << line << r.out;
  }
  save(path("falls.cube"), "LUT_3D_SIZE 2\n0 0 0\n0 0 0\n0 0 0\n0 0 0\n0 0 0\n0 0 0\n0 0 0\n0.1 -0.1 0.1\n");
  EXPECT_TRUE(has(run("lut3d info falls.cube").out, "green falls at index 1\n           not monotonic"));
  run("lut3d identity u.cube --size 5 --title 'naïve ☃'");
  const std::string unit = run("lut3d info - --from cube <u.cube").out;
  EXPECT_TRUE(has(unit, "Title      naïve ☃\n") && has(unit, "  neutral") && has(unit, "largest 0.000000")) << unit;
}

TEST_F(Lut3dTool, ComparesTables) {
  run("lut3d identity u.cube --size 5");
  run("lut3d identity v.cube --size 9");
  save(path("moved.cube"),
       contents(path("u.cube")).replace(contents(path("u.cube")).find("0.25000000 0.0"), 10, "0.35000000"));
  const Result same = run("lut3d diff u.cube v.cube --limit 0");
  EXPECT_EQ(same.code, 0) << same.err;
  EXPECT_TRUE(has(same.out, "Sizes 5 and 9")) << same.out;
  for (const char *pair : {"u.cube moved.cube", "moved.cube u.cube"}) {
    const Result r = run(std::string("lut3d diff --limit 0.09 ") + pair);
    EXPECT_EQ(r.code, 1);
    EXPECT_TRUE(has(r.out, "red    mean 0.000800, largest 0.100000 at blue 0, green 0, red 1\n")) << r.out;
    EXPECT_TRUE(has(r.out, "green  mean 0.000000, largest 0.000000")) << r.out;
    EXPECT_TRUE(has(r.err, "red differs by 0.100000, the limit is 0.09")) << r.err;
  }
  EXPECT_EQ(run("lut3d diff u.cube moved.cube").code, 0);
  EXPECT_EQ(run("lut3d diff moved.cube v.cube --limit 0.11").code, 0);
  save(path("nan.cube"), "LUT_3D_SIZE 1\nnan 0 0\n");
  EXPECT_EQ(run("lut3d diff nan.cube nan.cube --limit 1").code, 1);
}

TEST_F(Lut3dTool, RefusesBeforeAnythingIsWritten) {
  const struct {
    const char *arguments;
    const char *message;
  } cases[] = {
      {"in.cube o.cube --bits 10", "--bits: the format cube holds decimal numbers, not codes"},
      {"in.cube o.dat --bits 11", "--bits 11: the format dat carries 1 to 10 bits"},
      {"in.cube o.dat --size 256", "256 grid points: the format dat carries 1 to 255"},
      {"in.cube o --to dat12", "3 grid points: the format dat12 carries 33 to 33"},
      {"in.cube o --to dat-old --size 257", "257 grid points: the format dat-old carries 2 to 256"},
      {"in.cube o --to dat-old --size 33 --bits 4", "--bits 4: too few for the lattice of 33 points"},
      {"in.cube o.coe --size 1", "1 grid points: the format coe carries 2 and more"},
      {"in.cube o.cube --size 0", "--size: Value 0 not in range 1 to 1024"},
      {"in.cube o.txt", "--to eecolor: this format can be read only"},
      {"in.cube o", "o: its name tells no format, expected --to with one of cube"},
      {"in.cube o --to coee", "did you mean coe?"},
      {"in.cube o.cube --from debug", "--from: debug not in {cube,cfe,dat,eecolor}"},
      {"in.cube o.cube --title 'a\"b'", "--title: the format cube carries up to 246 bytes without quotes"},
      {"in.cube o.cube --title \"$(printf 'a\\nLUT_3D_SIZE 9')\"", "without quotes and line breaks"},
      {"in.cube", "OUT is required"},
  };
  for (const auto &c : cases) {
    refuses(std::string("convert ") + c.arguments, 2, c.message);
  }
  refuses("convrt in.cube o.cube", 2, "did you mean convert?");
  refuses("identity o.cube --size 1", 2, "--size: Value 1 not in range 2 to 1024");
  EXPECT_EQ(run("lut3d convert in.cube o --to dat-old --size 32 --bits 4").code, 0);
  EXPECT_EQ(files(), 5); // panel.xml in.cube o out err
}

TEST_F(Lut3dTool, WarnsOfWhatTheReaderPassesOver) {
  const std::string rows = entries();
  const struct {
    std::string text;
    const char *warning;
  } cases[] = {
      {"DOMAIN_MIN 0 0 0\nDOMAIN_MAX 1 1 1\n# LUT_1D_SIZE 2\n" + kHeader + rows + "\n \t\n", ""},
      {"#" + std::string(600, 'x') + "\nDOMAIN_MIN -0.5 0 0\n" + kHeader + rows,
       "in.cube:2: DOMAIN_MIN -0.5 0 0 is not applied"},
      {kHeader + "DOMAIN_MAX 1 1 2\r\n" + rows, "in.cube:5: DOMAIN_MAX 1 1 2 is not applied"},
      {"TITLE \"x\"\nLUT_3D_INPUT_RANGE 0 4\n" + kHeader + rows, "in.cube:2: LUT_3D_INPUT_RANGE is not applied"},
      {"LUT_1D_SIZE 2\n" + kHeader + "0 0 0\n1 1 1\n" + rows, "in.cube:1: LUT_1D_SIZE: a 1D shaper is not applied"},
      {kHeader + rows + "0 0 0\n1 1 1\n", "in.cube:32: more than the 27 entries of LUT_3D_SIZE 3; this row"},
      {kHeader + "0.5 0.5\n" + rows, "in.cube:5: not three numbers, skipped"},
      {kHeader + "0 0 0" + std::string(300, ' ') + "0\n" + rows, "in.cube:5: not three numbers, skipped"}, // the rest
      {kHeader + rows + "\nDOMAIN_MAX 1 2 1\n", "in.cube:33: DOMAIN_MAX 1 2 1 is not applied"},
  };
  for (const auto &c : cases) {
    save(path("in.cube"), c.text);
    const Result r = run("lut3d convert in.cube o.cube");
    EXPECT_EQ(r.code, 0) << c.text;
    EXPECT_TRUE(*c.warning == '\0' ? r.err.empty() : has(r.err, std::string("vexo: warning: ") + c.warning)) << r.err;
    refuses("info in.cube --strict", *c.warning == '\0' ? 0 : 3, c.warning);
  }
  save(path("in.txt"), entries("0 0 0 "));
  refuses("info in.txt --from-size 2", 0, "warning: in.txt: the last 19 lines of six numbers are not read");
  refuses("info in.txt --from-size 2 --strict", 3, "in.txt: the last 19 lines");
  save(path("crlf.cube"), "TITLE \"film\"\r\n\r\nLUT_3D_SIZE 3\r\n\r\n" + entries("", "\r\n"));
  EXPECT_EQ(run("lut3d convert crlf.cube ünï☃.cube --strict").code, 0);
  EXPECT_EQ(contents(path("ünï☃.cube")), kHeader + entries());
}

TEST_F(Lut3dTool, SaysWhatIsWrongWithAFile) {
  const std::string packed = run("lut3d convert in.cube - --to dat").out;
  const auto patched = [&](size_t at, const std::string &bytes) {
    return std::string(packed).replace(at, bytes.size(), bytes);
  };
  const std::string zero(1, '\0');
  std::string ten = "LUT_3D_SIZE 1000\n";
  for (int i = 0; i < 10; i++) {
    ten += "0 0 0\n";
  }
  const struct {
    const char *name;
    std::string text;
    const char *options;
    const char *message;
  } cases[] = {
      {"b.cube", "", "", "b.cube: no LUT_3D_SIZE line"},
      {"b.cube", "\nLUT_3D_SIZE -3\n", "", "b.cube:2: LUT_3D_SIZE -3, expected 1 to 256"},
      {"b.cube", "LUT_3D_SIZE 99999999999999999999\n", "", "expected 1 to 256 (--max-size)"},
      {"b.cube", "LUT_3D_SIZE 3\n", "--max-size 2", "b.cube:1: LUT_3D_SIZE 3, expected 1 to 2 (--max-size)"},
      {"b.cube", kHeader + entries().substr(0, 99), "", "the file ends after 3 entries, expected 27 for LUT_3D_SIZE 3"},
      {"b.cube", ten, "--max-size 1000", "ends after 10 entries, expected 1000000000 for LUT_3D_SIZE 1000"},
      {"b.txt", entries(), "", "b.txt: 0 lines of six numbers, which is no cube number"},
      {"b.txt", entries("0 0 0 ") + "0 0 0 0 0 0\n", "", "b.txt: 28 lines of six numbers, which is no cube number"},
      {"b.txt", entries("0 0 0 "), "--from-size 4", "27 lines of six numbers, expected 64 for 4 grid points"},
      {"b.txt", entries("0 0 0 "), "--max-size 2", "b.txt: 3 grid points, expected at most 2 (--max-size)"},
      {"b.dat", packed.substr(0, 127), "", "b.dat: shorter than the header of 128 bytes"},
      {"b.dat", packed.substr(0, packed.size() - 1), "", "b.dat: 235 bytes, expected 236 for 3 grid points"},
      {"b.dat", patched(0, "X"), "", "not a packed 3D LUT: magic 0x42340258"},
      {"b.dat", patched(7, "\3"), "", "version 0x03000000, which has no reader"},
      {"b.dat", patched(67, "\200"), "", "2147483658 bits and 3 grid points"},
      {"b.dat", patched(126, zero), "", "10 bits and 0 grid points, expected 1 to 10 and 1 to 256"},
      {"b.dat", packed + "x", "--strict", "b.dat: 1 bytes after the last entry are not read"},
  };
  for (const auto &c : cases) {
    save(path(c.name), c.text);
    const std::string limits = kAllocationCanFail ? "ulimit -v 200000; ulimit -t 5;" : "ulimit -t 20;";
    const Result r = run(std::string("lut3d convert ") + c.name + " o.cube " + c.options, limits);
    EXPECT_EQ(r.code, 3) << c.message << r.err;
    EXPECT_TRUE(has(r.err, c.message)) << c.message << "\n" << r.err;
  }
  refuses("info none.cube", 3, "none.cube: cannot read: No such file");
  refuses("info . --from dat", 3, ".: is a directory, expected a 3D LUT");
  EXPECT_FALSE(std::filesystem::exists(path("o.cube")));
}

TEST_F(Lut3dTool, WritesOntoItsOwnInput) {
  EXPECT_EQ(run("lut3d convert in.cube in.cube --size 2").code, 0);
  EXPECT_TRUE(has(contents(path("in.cube")), "LUT_3D_SIZE 2\n"));
  EXPECT_EQ(files(), 4); // panel.xml in.cube out err
}
