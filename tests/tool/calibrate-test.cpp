// The command-line tool as a user runs it: results, messages, exit codes, and files that are never half written.
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <sstream>
#include <string>
#include <vector>

#include "tool/tool.h"
#include "vexo.h"

namespace {

double number_after(const std::string &text, const std::string &label, int skip) {
  std::istringstream in(text.substr(text.find(label) + label.size()));
  double value = 0.0;
  for (int i = 0; i <= skip; i++) {
    in >> value;
  }
  return value;
}

struct Gray {
  double x;
  double y;
  double Y;
};

// The table that vexo gray prints.
std::vector<Gray> grays(const std::string &text) {
  std::vector<Gray> rows;
  std::istringstream in(text.substr(text.find("gamma\n") + 6));
  std::string rest;
  std::string percent;
  for (Gray g = {}; in >> rest >> percent >> g.x >> g.y >> g.Y; std::getline(in, rest)) {
    rows.push_back(g);
  }
  return rows;
}

// X, Y, Z above black of a row of each channel times a factor, summed.
std::array<double, 3> mixture(const vexo_lcnr &lcnr, int row, const std::array<double, 3> &factors) {
  std::array<double, 3> sum = {};
  for (size_t c = 0; c < 3; c++) {
    for (size_t m = 0; m < 3; m++) {
      sum[m] += factors[c] * (static_cast<double>(lcnr.data[c][m][row]) - static_cast<double>(lcnr.data[c][m][0]));
    }
  }
  return sum;
}

void expect_gray(const Gray &shown, const std::array<double, 3> &XYZ, const std::string &where) {
  const double sum = XYZ[0] + XYZ[1] + XYZ[2];
  EXPECT_NEAR(shown.x, XYZ[0] / sum, 1e-5) << where;
  EXPECT_NEAR(shown.y, XYZ[1] / sum, 1e-5) << where;
  EXPECT_NEAR(shown.Y / XYZ[1], 1.0, 1e-4) << where;
}

} // namespace

TEST_F(Tool, PredictsTheSumOfTheChannelsOnLinesBetweenRows) {
  vexo_lcnr lcnr = {};
  ASSERT_EQ(vexo_load_lcnr_xml(&lcnr, path("panel.xml").c_str()), 0);
  const std::vector<Gray> levels = grays(run("gray panel.xml --steps 1024").out);
  ASSERT_EQ(levels.size(), 1024U);
  ASSERT_EQ(lcnr.sample[1], 32.0F);
  for (int row = 1; row < lcnr.num; row++) {
    const auto level = static_cast<size_t>(lcnr.sample[row]);
    const std::array<double, 3> here = mixture(lcnr, row, {1.0, 1.0, 1.0});
    const std::array<double, 3> below = mixture(lcnr, row - 1, {1.0, 1.0, 1.0});
    const double t =
        (static_cast<double>(level) - 8.0 - lcnr.sample[row - 1]) / (lcnr.sample[row] - lcnr.sample[row - 1]);
    expect_gray(levels[level], here, "level " + std::to_string(level));
    expect_gray(
        levels[level - 8],
        {below[0] + t * (here[0] - below[0]), below[1] + t * (here[1] - below[1]), below[2] + t * (here[2] - below[2])},
        "level " + std::to_string(level - 8));
  }

  // Drives below the first table level, one of them 0.
  save(path("dark.txt"), "LUT_1D_SIZE 2\nLUT_1D_BITS 16\n0 0 0\n64 0 16\n");
  const std::vector<Gray> dark = grays(run("gray panel.xml dark.txt --steps 3").out);
  ASSERT_EQ(dark.size(), 3U);
  const double part = 1023.0 / 65535.0 / 32.0;
  expect_gray(dark[1], mixture(lcnr, 1, {32.0 * part, 0.0, 8.0 * part}), "half");
  expect_gray(dark[2], mixture(lcnr, 1, {64.0 * part, 0.0, 16.0 * part}), "full");
}

TEST_F(Tool, CalibratesTheSamplePanel) {
  for (const char *options : {"", "--recipe direct", "--recipe solve", "--white 0.2990,0.3149 --gamma 2.4",
                              "--camera srgb", "--camera 4.5,0.018,0.45,0.099 --system 1.2 --bits 12 --entries 33"}) {
    const Result r = run(std::string("calibrate panel.xml -o luts.txt ") + options);
    ASSERT_EQ(r.code, 0) << options << r.err;
    EXPECT_EQ(r.err, "") << options;
    EXPECT_TRUE(has(r.out, "luts.txt, 3 x ")) << r.out;
    EXPECT_TRUE(has(r.out, "predicted, channels assumed to add")) << r.out;
    const int columns = 4; // mean and worst before, mean and worst after
    double figures[columns];
    for (int i = 0; i < columns; i++) {
      figures[i] = number_after(r.out, "distance to target white", i);
    }
    EXPECT_LT(figures[2], figures[0] / 4.0) << options << r.out;

    const std::string luts = contents(path("luts.txt"));
    const bool large = !has(options, "33");
    EXPECT_EQ(luts.rfind(large ? "LUT_1D_SIZE 1024\nLUT_1D_BITS 10\n" : "LUT_1D_SIZE 33\nLUT_1D_BITS 12\n", 0), 0U);
    const auto rows = codes(luts);
    ASSERT_EQ(rows.size(), large ? 1024U : 33U);
    for (size_t i = 0; i < rows.size(); i++) {
      for (size_t c = 0; c < 3; c++) {
        EXPECT_LE(i == 0 ? 0 : rows[i - 1][c], rows[i][c]) << "entry " << i << " channel " << c << " " << options;
        EXPECT_LE(rows[i][c], large ? 1023 : 4095);
      }
    }
  }
  EXPECT_EQ(files(), 4); // panel.xml luts.txt out err
}

TEST_F(Tool, WritesLutsToStandardOutputAlone) {
  const Result r = run("calibrate panel.xml -o -");
  EXPECT_EQ(r.code, 0);
  run("calibrate panel.xml -o luts.txt");
  EXPECT_EQ(r.out, contents(path("luts.txt")));
  EXPECT_TRUE(has(r.err, "standard output, 3 x 1024 entries"));
  EXPECT_TRUE(has(run("calibrate panel.xml").out, "not written"));
}

TEST_F(Tool, SaysWhatIsWrongWithAPanelFile) {
  const std::string zeros = ",0,0,0,0,0,0,0,0,0</LEVEL>\n";
  const auto row = [](const char *level, const char *values) {
    return std::string("<LEVEL>") + level + "," + values + "</LEVEL>\n";
  };
  const std::string black = row("0", "1,1,1,1,1,1,1,1,1");
  const std::string middle = row("128", "30,20,3,20,40,6,10,5,50");
  const std::string full = row("255", "90,60,7,60,120,15,30,15,150");
  const struct {
    std::string text;
    const char *message;
  } cases[] = {
      {"", "panel:1: not XML: no element found"},
      {"hello\n", "panel:1: not XML"},
      {black + full, "panel:2: not XML: junk after document element"},
      {"<L>\n" + black + full, "panel:4: not XML"},
      {"<L>\n</L>", "panel: no LEVEL rows"},
      {"<L>\n" + black + "</L>", "panel: 1 LEVEL rows, expected 2 to 64"},
      {"<L>\n" + black + middle + row("200", "1,2,3,4,5,6,7,8") + full + "</L>",
       "panel:4: row 2: 9 numbers, expected ten"},
      {"<L>\n" + black + row("128", "30,20,3,x,40,6,10,5,50") + full + "</L>", "panel:3: row 1: 4 numbers"},
      {"<L>\n" + black + row("128", "30,20,3,20,40,6,10,5,50,7") + full + "</L>", "text after the tenth number"},
      {"<L>\n" + black + row("128", "30,20,3,20,\n40,6,10,5,50") + full + "</L>", "spans several lines"},
      {"<L>\n" + black + row("128", "30,20,3,20<!-- -->,40,6,10,5,50") + full + "</L>", "3 LEVEL elements give 4"},
      {"<L>\n" + black + "<LEVEL/>" + full + "</L>", "row 1: 0 numbers"},
      {"<L>\n" + black + full + middle + "</L>", "panel:4: row 2 (level 128): the level does not rise"},
      {"<L>\n" + black + full + full + "</L>", "the level does not rise"},
      {"<L>\n" + middle + full + "</L>", "panel:2: row 0 (level 128): the first row is black and has level 0"},
      {"<L>\n" + black + row("128", "30,20,3,nan,40,6,10,5,50") + full + "</L>", "X of green is not finite"},
      {"<L>\n" + black + row("inf", "30,20,3,20,40,6,10,5,50") + "</L>", "the level is not finite"},
      {"<L>\n" + black + row("255", "1,1,1,1,1,1,1,1,1") + "</L>", "the panel is black: red at full drive has Y 1"},
      {"<L>\n" + black + row("9", "1,1,1,2,2,2,2,2,2") + full + "</L>", "row 1 (level 9): red is not above black"},
      {"<L>\n" + black + row("9", "2,2,2,2,1,2,2,2,2") + full + "</L>",
       "row 1 (level 9): green above black is X 1, Y 0"},
  };
  for (const auto &c : cases) {
    save(path("panel"), c.text);
    const Result r = run("calibrate panel -o luts.txt --recipe aligned --condition off");
    EXPECT_EQ(r.code, 3) << c.text << r.out;
    EXPECT_TRUE(has(r.err, c.message)) << c.text << r.err;
    EXPECT_EQ(r.out, "");
    EXPECT_NE(access(path("luts.txt").c_str(), F_OK), 0);
  }
  std::string many = "<L>\n" + black;
  for (int i = 1; i < 65; i++) {
    many += "<LEVEL>" + std::to_string(i) + zeros;
  }
  save(path("panel"), many + "</L>");
  EXPECT_TRUE(has(run("calibrate panel").err, "panel: 65 LEVEL rows, expected 2 to 64"));
  many.resize(many.rfind("<LEVEL>"));
  save(path("panel"), many.insert(many.find(",0,0"), "<!-- -->") + "</L>");
  EXPECT_TRUE(has(run("calibrate panel").err, "panel:3: row 1: text in 2 pieces (64 LEVEL elements give 65)"));
  EXPECT_TRUE(has(run("calibrate none.xml").err, "none.xml: cannot read: No such file"));
  EXPECT_TRUE(has(run("calibrate .").err, ".: is a directory"));
  const Result far = run("calibrate panel.xml --white 0.1,0.1 -o luts.txt");
  EXPECT_EQ(far.code, 1);
  EXPECT_TRUE(has(far.err, "cannot show white") && has(far.err, "it reached x ")) << far.err;
  EXPECT_NE(access(path("luts.txt").c_str(), F_OK), 0);
}

TEST_F(Tool, ExplainsUsage) {
  const struct {
    const char *arguments;
    const char *message;
  } cases[] = {
      {"", "A subcommand is required"},
      {"calibrat panel.xml", "did you mean calibrate?"},
      {"calibrate", "PANEL.xml is required"},
      {"calibrate panel.xml more.xml", "more.xml"},
      {"calibrate panel.xml --whit=D65", "did you mean --white?"},
      {"calibrate panel.xml --white D66", "did you mean D65?"},
      {"calibrate panel.xml --white 0.3,0.8", "--white '0.3,0.8'"},
      {"calibrate panel.xml --white 0,3127,0,3290", "expected one of"},
      {"calibrate panel.xml --gamma 2,2", "a number above 0, with a decimal point"},
      {"calibrate panel.xml --gamma nan", "--gamma 'nan'"},
      {"calibrate panel.xml --gamma 2.2 --camera srgb", "--gamma stands for both curves"},
      {"calibrate panel.xml --camera bt79", "did you mean bt709?"},
      {"calibrate panel.xml --system 0,0.1,2,0", "slope above 0"},
      {"calibrate panel.xml --bits 31", "--bits: Value 31 not in range 1 to 30"},
      {"calibrate panel.xml --entries 1", "--entries: Value 1 not in range 2 to 65536"},
      {"calibrate panel.xml --entries 10.5", "--entries: Value 10.5 not in range"},
      {"calibrate panel.xml --recipe best", "--recipe: best not in {aligned,direct,solve}"},
      {"calibrate panel.xml --condition yes", "--condition: yes not in {on,off}"},
  };
  for (const auto &c : cases) {
    const Result r = run(c.arguments);
    EXPECT_EQ(r.code, 2) << c.arguments;
    EXPECT_TRUE(has(r.err, c.message)) << c.arguments << "\n" << r.err;
    EXPECT_EQ(r.out, "");
  }
  EXPECT_EQ(run("--help").code, 0);
  EXPECT_TRUE(has(run("calibrate --help").out, "--recipe"));
  EXPECT_EQ(run("--version").out, "vexo " VEXO_VERSION "\n");
}

TEST_F(Tool, KeepsTheOldFileWhenWritingFails) {
  save(path("luts.txt"), "old");
  const Result full = run("calibrate panel.xml -o luts.txt", "trap '' XFSZ; ulimit -f 1;");
  EXPECT_EQ(full.code, 4);
  EXPECT_TRUE(has(full.err, "luts.txt: write failed: File too large")) << full.err;
  EXPECT_EQ(contents(path("luts.txt")), "old");
  EXPECT_EQ(run("calibrate panel.xml --white 0.1,0.1 -o luts.txt").code, 1);
  EXPECT_EQ(contents(path("luts.txt")), "old");
  mkdir(path("folder").c_str(), 0777);
  EXPECT_EQ(run("calibrate panel.xml -o folder").code, 4);
  EXPECT_EQ(run("calibrate panel.xml -o luts.txt --limits luts.txt").code, 3); // no JSON
  EXPECT_EQ(contents(path("luts.txt")), "old");
  EXPECT_EQ(run("calibrate panel.xml -o none/luts.txt").code, 4);
  EXPECT_EQ(run("calibrate panel.xml -o /proc/luts.txt").code, 4); // a folder where nobody can create files
  EXPECT_EQ(files(), 5);                                           // panel.xml luts.txt folder out err
}

TEST_F(Tool, KeepsLinksAndModes) {
  save(path("real.txt"), "old");
  chmod(path("real.txt").c_str(), 0640);
  symlink("real.txt", path("luts.txt").c_str());
  EXPECT_EQ(run("calibrate panel.xml -o luts.txt").code, 0);
  struct stat info = {};
  lstat(path("luts.txt").c_str(), &info);
  EXPECT_TRUE(S_ISLNK(info.st_mode));
  stat(path("real.txt").c_str(), &info);
  EXPECT_EQ(info.st_mode & 07777U, 0640U);
  EXPECT_TRUE(has(contents(path("real.txt")), "LUT_1D_SIZE 1024"));
  save(path("-odd name%s.xml"), contents(path("panel.xml")));
  EXPECT_EQ(run("calibrate -o 'a b.txt' -- '-odd name%s.xml'").code, 0);
}
