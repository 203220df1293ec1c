// Outputs that cannot be written: an error in one line, the old file as it was, nothing left beside it.
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
