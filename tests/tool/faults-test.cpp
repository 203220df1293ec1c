// Outputs that cannot be written and inputs that no reader can want: an error in one line, the old file as it was, and
// bounded time and memory.
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "allocation.h"
#include "tool/tool.h"

namespace {

class FaultsTool : public Tool {
protected:
  void SetUp() override {
    Tool::SetUp();
    std::string csv = "level,Xr,Yr,Zr,Xg,Yg,Zg,Xb,Yb,Zb\n";
    for (int i = 0; i < 20; i++) {
      csv += std::to_string(i) + repeated(9, "," + std::to_string(i + 1)) + "\n";
    }
    save(path("read.csv"), csv);
    ASSERT_EQ(run("calibrate panel.xml -o luts.txt").code, 0);
    ASSERT_EQ(run("lut3d identity in.cube --size 9").code, 0);
  }
};

std::string with(std::string text, const std::string &output) { return text.replace(text.find('@'), 1, output); }

} // namespace

TEST_F(FaultsTool, EveryOutputFileIsWholeOrAsItWas) {
  for (const char *command :
       {"calibrate panel.xml -o @", "calibrate panel.xml -o /dev/null --report @", "report panel.xml luts.txt -o @",
        "report panel.xml luts.txt -o /dev/null --json @", "report panel.xml luts.txt -o /dev/null --csv @",
        "measure import read.csv -o @", "lut1d convert luts.txt @", "lut1d convert luts.txt @ --to listing",
        "lut1d convert luts.txt @ --to listing-int3", "lut3d convert in.cube @ --to cube",
        "lut3d convert in.cube @ --to cfe", "lut3d convert in.cube @ --to dat", "lut3d convert in.cube @ --to dat-old",
        "lut3d convert in.cube @ --to coe", "lut3d convert in.cube @ --to debug",
        "lut3d identity @ --to cube --size 9"}) {
    SCOPED_TRACE(command);
    save(path("out put%s"), "old");
    const long before = files();
    for (const char *blocks : {"1", "3", "10", "50"}) { // of 512 bytes
      const Result r = run(with(command, "'out put%s'"), std::string("trap '' XFSZ; ulimit -f ") + blocks + ";");
      if (r.code != 0 || std::string(blocks) == "1") {
        EXPECT_EQ(r.code, 4);
        EXPECT_TRUE(has(r.err, "vexo: out put%s: write failed: ")) << r.err;
        EXPECT_EQ(contents(path("out put%s")), "old");
      }
    }
    EXPECT_EQ(run(with(command, "/dev/full")).code, 4);
    EXPECT_EQ(files(), before); // nothing left beside it
  }
}

TEST_F(FaultsTool, StandardOutputIsChecked) {
  for (const char *command :
       {"calibrate panel.xml -o -", "calibrate panel.xml -o luts.txt", "report panel.xml luts.txt -o -",
        "measure panel.xml", "measure panel.xml --json", "measure import read.csv -o -", "gray panel.xml luts.txt",
        "gray panel.xml --raw", "lut1d info luts.txt", "lut1d convert luts.txt -", "lut1d diff luts.txt luts.txt",
        "lut3d info in.cube", "lut3d convert in.cube - --to dat", "lut3d diff in.cube in.cube",
        "csc rgb:full:10 ycbcr:video:10 --space bt709", "color 1,2,3 --json", "delta 1,2,3 1,2,4", "space srgb",
        "dci 1,2,3 --from XYZq --to xyz"}) {
    const Result r = run(std::string(command) + " >/dev/full 2>err; exit $? #");
    EXPECT_EQ(r.code, 4) << command;
    EXPECT_EQ(r.err.rfind("vexo: standard output: write failed", 0), 0U) << command << r.err;
    EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << command << r.err;
  }
}

// Files that no reader can want, each refused in bounded memory and time.
TEST_F(FaultsTool, HostileInputs) {
  std::string laughs = "<!DOCTYPE a [<!ENTITY l0 '1,2,3'>";
  for (int i = 1; i < 12; i++) {
    const std::string below = "&l" + std::to_string(i - 1) + ";";
    laughs += "<!ENTITY l" + std::to_string(i) + " '" + repeated(10, below) + "'>";
  }
  std::string keywords = "CTI3\n";
  for (int i = 0; i < 100000; i++) {
    keywords += "KEYWORD \"K" + std::to_string(i) + "\"\n";
  }
  save(path("laughs.xml"), laughs + "]><a><LEVEL>&l11;</LEVEL></a>");
  save(path("deep.xml"), repeated(1000000, "<a>"));
  save(path("token.xml"), "<a b='" + std::string(4000000, 'x'));
  save(path("text.xml"), "<a><LEVEL>" + std::string(4000000, '1'));
  save(path("nul.xml"), std::string("<LCNR><LEVEL>0,\0</LEVEL></LCNR>", 32));
  save(path("keywords.ti3"), keywords + "BEGIN_DATA");
  save(path("lines.csv"), repeated(1000000, "1\n"));
  save(path("commas.csv"), std::string(4000000, ','));
  save(path("nul.csv"), std::string("0,black,1,2,3\n1,red\0,4,5,6\n", 27));
  save(path("lines.txt"), "LUT_1D_SIZE 1048576\nLUT_1D_BITS 8\n1 2 3\n" + repeated(1048576, "x\n"));
  save(path("size.txt"), "LUT_1D_SIZE 4294967298\nLUT_1D_BITS 8\n0 0 0\n1 1 1\n");
  save(path("domain.cube"), repeated(100000, "DOMAIN_MAX 2 2 2\n"));
  save(path("size.cube"), "LUT_3D_SIZE 18446744073709551618\n0 0 0\n");
  save(path("nuls.cube"), "");
  std::filesystem::resize_file(path("nuls.cube"), 64 << 20);
  save(path("rubbish"), "");
  std::filesystem::resize_file(path("rubbish"), uintmax_t{1} << 32);
  ASSERT_EQ(mkfifo(path("fifo").c_str(), 0600), 0);
  const struct {
    const char *command;
    const char *message;
  } cases[] = {
      {"measure laughs.xml", "laughs.xml:1: not XML: limit on input amplification factor"},
      {"measure deep.xml", "deep.xml:1: not XML: no element found"},
      {"measure token.xml", "token.xml:1: not XML: unclosed token"},
      {"measure text.xml", "text.xml:1: not XML: no element found"},
      {"measure nul.xml", "nul.xml:1: not XML: not well-formed"},
      {"measure rubbish", "rubbish: larger than 4 MB, expected an LCNR file"},
      {"measure fifo", "fifo: is not a regular file"},
      {"measure .", ".: is a directory"},
      {"measure import keywords.ti3 -o -", "keywords.ti3: more than 1000 keywords"},
      {"measure import lines.csv -o -", "lines.csv:1: 1 columns"},
      {"measure import commas.csv -o -", "commas.csv: no channel"},
      {"measure import nul.csv -o -", "nul.csv:2: channel 'red'"},
      {"measure import rubbish -o -", "rubbish: larger than 4 MB"},
      {"measure panel.xml --gray rubbish", "rubbish: larger than 4 MB"},
      {"report panel.xml luts.txt -o - --verify fifo", "fifo: is not a regular file"},
      {"report panel.xml luts.txt -o - --limits rubbish", "rubbish"},
      {"lut1d info lines.txt", "more than 10000 faults"},
      {"lut1d info size.txt", "LUT_1D_SIZE 4294967298, expected 2 to 1048576"},
      {"lut1d info fifo", "fifo: is not a regular file"},
      {"lut3d info domain.cube", "more than 1000 warnings"},
      {"lut3d info size.cube", "size.cube:1: LUT_3D_SIZE"},
      {"lut3d info nuls.cube", "nuls.cube: no LUT_3D_SIZE line"},
      {"lut3d info rubbish --from dat", "rubbish: not a packed 3D LUT"},
      {"color --file rubbish", "rubbish:1: a line of more than 1000 characters"},
  };
  for (const auto &c : cases) {
    const Result r = run(c.command, kAllocationCanFail ? "ulimit -v 400000; ulimit -t 10;" : "ulimit -t 60;");
    EXPECT_EQ(r.code, 3) << c.command << "\n" << r.err;
    EXPECT_TRUE(has(r.err, c.message)) << c.command << "\n" << r.err.substr(0, 1000);
  }
}

// Names and titles of any bytes stand in the report and the JSON as text.
TEST_F(FaultsTool, OddBytesAreText) {
  const std::string name = "p\xff<&%s \"\xc3\xa4.xml";
  save(path(name), contents(path("panel.xml")));
  const std::string quoted = "'" + name + "'";
  ASSERT_EQ(run("calibrate " + quoted + " -o l.txt --report r.html --json r.json").code, 0);
  const auto json = nlohmann::json::parse(contents(path("r.json"))); // which takes valid UTF-8 only
  EXPECT_EQ(json["panel"]["file"], "p\xef\xbf\xbd<&%s \"\xc3\xa4.xml");
  const std::string html = contents(path("r.html"));
  EXPECT_TRUE(has(html, "p\xef\xbf\xbd&lt;&amp;%s &quot;\xc3\xa4.xml"));
  EXPECT_FALSE(has(html, "\xff"));
  // The command line in a report can be given to a shell again.
  save(path("it's.xml"), contents(path("panel.xml")));
  const std::string arguments = R"(calibrate 'it'\''s.xml' -o l.txt --json r.json --gamma 2.4)";
  ASSERT_EQ(run(arguments).code, 0);
  EXPECT_EQ(nlohmann::json::parse(contents(path("r.json")))["command_line"], "vexo " + arguments);
  EXPECT_TRUE(has(run("calibrate 'none %s\xff.xml' -o l.txt").err, "vexo: none %s\xff.xml: cannot read: No such file"));
}
