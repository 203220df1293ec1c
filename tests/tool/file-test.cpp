// Outputs that cannot be written: an error in one line, the old file as it was, nothing left beside it.
#include <algorithm>
#include <cstring>
#include <map>

#include "tool/tool.h"

namespace {

class FileTool : public Tool {
protected:
  void SetUp() override {
    Tool::SetUp();
    std::string csv = "level,Xr,Yr,Zr,Xg,Yg,Zg,Xb,Yb,Zb\n";
    for (int i = 0; i < 20; i++) {
      csv += std::to_string(i) + repeated(9, "," + std::to_string(i + 1)) + "\n";
    }
    save(path("read.csv"), csv);
    save(path("gray.csv"), contents(VEXO_EXAMPLES "/sample-measured.csv"));
    ASSERT_EQ(run("calibrate panel.xml -o luts.txt").code, 0);
    ASSERT_EQ(run("lut3d identity in.cube --size 9").code, 0);
  }
};

std::string with(std::string text, const std::string &output) { return text.replace(text.find('@'), 1, output); }

} // namespace

TEST_F(FileTool, EveryOutputFileIsWholeOrAsItWas) {
  for (const char *command :
       {"calibrate panel.xml -o @", "calibrate panel.xml -o /dev/null --report @", "report panel.xml luts.txt -o @",
        "report panel.xml luts.txt -o /dev/null --json @", "report panel.xml luts.txt -o /dev/null --csv @",
        "refine panel.xml luts.txt gray.csv -o @", "refine panel.xml luts.txt gray.csv -o /dev/null --report @",
        "measure import read.csv -o @", "measure panel.xml --condition @", "lut1d convert luts.txt @",
        "lut1d convert luts.txt @ --to listing", "lut1d convert luts.txt @ --to listing-int3",
        "lut3d convert in.cube @ --to cube", "lut3d convert in.cube @ --to cfe", "lut3d convert in.cube @ --to dat",
        "lut3d convert in.cube @ --to dat-old", "lut3d convert in.cube @ --to coe",
        "lut3d convert in.cube @ --to debug", "lut3d identity @ --to cube --size 9"}) {
    SCOPED_TRACE(command);
    save(path("out put%s"), "old");
    const long before = files();
    for (const char *blocks : {"1", "3", "10", "50"}) { // of 512 bytes
      const Result r = run(with(command, "'out put%s'"), std::string("trap '' XFSZ; ulimit -f ") + blocks + ";");
      if (r.code != 0 || std::string(blocks) == "1") {
        EXPECT_EQ(r.code, 4);
        EXPECT_TRUE(has(r.err, "vexo: out put%s: write failed: File too large")) << r.err;
        EXPECT_EQ(contents(path("out put%s")), "old");
      }
    }
    EXPECT_EQ(run(with(command, "/dev/full")).code, 4);
    EXPECT_EQ(files(), before);
  }
}

// An output is no input and no other output, by whatever name: refused before any file is touched.
TEST_F(FileTool, FilesAreApart) {
  save(path("limits.json"), "{}");
  std::filesystem::create_hard_link(path("panel.xml"), path("hard.xml"));
  std::filesystem::create_symlink("panel.xml", path("soft.xml"));
  std::filesystem::create_directory_symlink(".", path("here"));
  const auto everything = [&] {
    std::map<std::string, std::string> all;
    for (const auto &entry : std::filesystem::directory_iterator(path(""))) {
      if (entry.is_regular_file() && entry.path().filename() != "out" && entry.path().filename() != "err") {
        all[entry.path().filename()] = contents(entry.path());
      }
    }
    return all;
  };
  const auto before = everything();
  const std::string in_place = "both read and written";
  const std::string twice = "written twice";
  const struct {
    const char *command;
    std::string message;
  } cases[] = {
      {"calibrate panel.xml -o panel.xml", "panel.xml is " + in_place},
      {"calibrate panel.xml -o ./panel.xml", "panel.xml and ./panel.xml are one file, " + in_place},
      {"calibrate panel.xml -o hard.xml", in_place},
      {"calibrate soft.xml -o panel.xml", in_place},
      {"calibrate panel.xml --report here/panel.xml", in_place},
      {"calibrate panel.xml --gray gray.csv -o gray.csv", in_place},
      {"calibrate panel.xml -o l.txt --verify gray.csv --csv gray.csv", in_place},
      {"calibrate panel.xml -o l.txt --limits limits.json --json limits.json", in_place},
      {"calibrate panel.xml -o same --report same", "same is " + twice},
      {"calibrate panel.xml -o same --report here/same", "same and here/same are one file, " + twice},
      {"calibrate panel.xml -o luts.txt --json here/luts.txt", twice},
      {"calibrate panel.xml -o - --report -", "standard output is " + twice},
      {"calibrate panel.xml --report /dev/stdout --json -", twice},
      {"calibrate panel.xml --json - >>panel.xml", "panel.xml and standard output are one file, " + in_place},
      {"refine panel.xml luts.txt gray.csv -o luts.txt", in_place},
      {"refine panel.xml luts.txt gray.csv -o gray.csv", in_place},
      {"report panel.xml luts.txt -o luts.txt", in_place},
      {"report panel.xml luts.txt -o r.html --json panel.xml", in_place},
      {"measure panel.xml --condition panel.xml", in_place},
      {"measure panel.xml --condition - --json", twice},
      {"measure import read.csv -o read.csv", in_place},
      {"measure import - -o read.csv <read.csv", "standard input and read.csv are one file, " + in_place},
      {"lut1d convert luts.txt luts.txt", in_place},
      {"lut3d convert in.cube here/in.cube", in_place},
      {"lut1d diff - - <luts.txt", "standard input is read twice"},
  };
  for (const auto &c : cases) {
    const std::string quiet = std::strchr(c.command, '>') != nullptr ? " 2>err; exit $? #" : "";
    const Result r = run(c.command + quiet);
    EXPECT_EQ(r.code, 2) << c.command;
    EXPECT_TRUE(has(r.err, c.message)) << c.command << "\n" << r.err;
    EXPECT_EQ(everything(), before) << c.command;
  }
  EXPECT_EQ(run("calibrate panel.xml -o /dev/null --report /dev/null --json /dev/null").code, 0);
}

TEST_F(FileTool, StandardOutputIsChecked) {
  for (const char *command : {"calibrate panel.xml -o -",
                              "calibrate panel.xml -o luts.txt",
                              "report panel.xml luts.txt -o -",
                              "refine panel.xml luts.txt gray.csv -o -",
                              "measure panel.xml",
                              "measure panel.xml --json",
                              "measure import read.csv -o -",
                              "gray panel.xml luts.txt",
                              "gray panel.xml --raw",
                              "lut1d info luts.txt",
                              "lut1d convert luts.txt -",
                              "lut1d diff luts.txt luts.txt",
                              "lut3d info in.cube",
                              "lut3d convert in.cube - --to dat",
                              "lut3d diff in.cube in.cube",
                              "csc rgb:full:10 ycbcr:video:10 --space bt709",
                              "color 1,2,3 --json",
                              "delta 1,2,3 1,2,4",
                              "space srgb",
                              "dci 1,2,3 --from XYZq --to xyz",
                              "--help",
                              "--version"}) {
    const Result r = run(std::string(command) + " >/dev/full 2>err; exit $? #");
    EXPECT_EQ(r.code, 4) << command;
    EXPECT_EQ(r.err.rfind("vexo: standard output: write failed", 0), 0U) << command << r.err;
    EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << command << r.err;
  }
}
