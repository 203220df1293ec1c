// vexo color, delta, space, dci and gray as a user runs them, against published figures.
#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "tool/tool.h"

namespace {

using Json = nlohmann::json;
using Row = std::vector<double>;

void expect_near(const Json &actual, const Row &expected, double tolerance, const std::string &what) {
  ASSERT_EQ(actual.size(), expected.size()) << what;
  for (size_t i = 0; i < expected.size(); i++) {
    EXPECT_NEAR(actual[i].get<double>(), expected[i], tolerance) << what << " [" << i << "]";
  }
}

// As the command line takes it.
std::string triple(const Json &row) {
  const std::string text = row.dump();
  return text.substr(1, text.size() - 2);
}

class ColourTool : public Tool {
protected:
  Json json(const std::string &command, const std::string &arguments) const {
    const Result r = run(command + " --json " + arguments);
    EXPECT_EQ(r.code, 0) << arguments << r.err;
    return Json::parse(r.out, nullptr, false);
  }
};

} // namespace

// CIE 15: tristimulus values, chromaticities and correlated colour temperatures.
TEST_F(ColourTool, KnowsTheIlluminants) {
  const struct {
    const char *xyY;
    Row XYZ;
    Row uv;
    int cct;
  } illuminants[] = {
      {"0.44758,0.40745,100", {109.85, 100.0, 35.585}, {0.2560, 0.5243}, 2856},
      {"0.34567,0.35850,100", {96.422, 100.0, 82.521}, {0.2092, 0.4881}, 5003},
      {"0.31272,0.32903,100", {95.047, 100.0, 108.883}, {0.1978, 0.4683}, 6504},
  };
  for (const auto &i : illuminants) {
    const std::string white = std::string(i.xyY).substr(0, 15);
    const Json q = json("color", "--in xyY --white " + white + " " + i.xyY);
    expect_near(q["XYZ"], i.XYZ, 0.03, i.xyY);
    expect_near({q["uvY"][0], q["uvY"][1]}, i.uv, 5e-5, i.xyY);
    expect_near(q["Lab"], {100.0, 0.0, 0.0}, 2e-4, i.xyY);
    expect_near(q["Luv"], {100.0, 0.0, 0.0}, 2e-4, i.xyY);
    EXPECT_NEAR(q["CCT"].get<int>(), i.cct, 5) << i.xyY;
  }
}

TEST_F(ColourTool, TakesAllFormsOfAColour) {
  const char *const keys[] = {"XYZ", "xyY", "uvY", "Lab", "LCh", "Luv"};
  for (const std::string options : {"--white D50 --luminance 80 ", ""}) {
    const Json expected = json("color", options + "20,30,12");
    for (const char *form : {"XYZ", "xyY", "uvY", "Lab"}) {
      const Json q = json("color", options + "--in " + form + " -- " + triple(expected[form]));
      for (const char *key : keys) {
        expect_near(q[key], expected[key].get<Row>(), 1e-4, form + std::string(" to ") + key);
      }
    }
  }
  EXPECT_EQ(json("color", "0,0,0")["CCT"], Json(nullptr));
  EXPECT_TRUE(has(run("color 50,100,50").out, "XYZ           50.000000     100.000000      50.000000\nxyY "));
}

TEST_F(ColourTool, ReadsAListOfColours) {
  save(path("list"), "# X Y Z\r\n\n95,100,108\r\n 20 ,\t30 12\n1,,2,3\nnan 1 1\n1 2\n0x10 1 1\n1 2 3 4\n-1 2 3\n1 2 3");
  const Result text = run("color --file list");
  EXPECT_EQ(text.code, 3);
  const Result piped = run("color --file - --json <list");
  EXPECT_EQ(piped.code, 3);
  for (const char *line :
       {"5: '1,,2,3'", "6: 'nan 1 1'", "7: '1 2'", "8: '0x10 1 1'", "9: '1 2 3 4'", "10: '-1 2 3'"}) {
    EXPECT_TRUE(has(text.err, std::string("vexo: list:") + line + " is not a colour")) << text.err;
    EXPECT_TRUE(has(piped.err, std::string("vexo: standard input:") + line)) << piped.err;
  }
  const Json list = Json::parse(piped.out, nullptr, false);
  ASSERT_EQ(list.size(), 3U) << piped.out;
  EXPECT_EQ(list[1], json("color", "20,30,12"));
  EXPECT_EQ(list[2]["XYZ"], Json({1.0, 2.0, 3.0}));
  const std::string single = run("color 20,30,12").out;
  EXPECT_TRUE(has(text.out, "\n 20 ,\t30 12\n" + single + "\n1 2 3\n")) << text.out;
  EXPECT_EQ(std::count(text.out.begin(), text.out.end(), '\n'),
            3 * (1 + std::count(single.begin(), single.end(), '\n')) + 2);
  EXPECT_EQ(run("color --file none").code, 3);
  save(path("list"), "1 2 3\n");
  EXPECT_EQ(run("color --file list").code, 0);
}

// Pairs of Sharma, Wu and Dalal (2005), which do not depend on the white.
TEST_F(ColourTool, MeasuresDistances) {
  const struct {
    const char *pair;
    double DE2000;
    double DEab;
  } pairs[] = {
      {"50,2.6772,-79.7751 50,0,-82.7485", 2.0425, 4.0011},
      {"50,2.5,0 50,0,-2.5", 4.3065, 3.5355},
      {"50,2.5,0 73,25,-18", 27.1492, 36.8680},
      {"2.0776,0.0795,-1.1350 0.9033,-0.0636,-0.5514", 0.9082, 1.3191},
      {"60.2574,-34.0099,36.2677 60.4626,-34.1751,39.4387", 1.2644, 3.1819},
  };
  for (const auto &p : pairs) {
    for (const char *white : {"D65", "D50 --luminance 250"}) {
      const Json q = json("delta", std::string("--in Lab --white ") + white + " " + p.pair);
      EXPECT_NEAR(q["DE2000"].get<double>(), p.DE2000, 1e-3) << p.pair;
      EXPECT_NEAR(q["DEab"].get<double>(), p.DEab, 1e-3) << p.pair;
    }
  }
  const Json lightness = json("delta", "--in xyY 0.3127,0.3290,18.4187 0.3127,0.3290,100"); // L* of 50 and 100
  EXPECT_NEAR(lightness["DEab"].get<double>(), 50.0, 1e-3);
  const Row black = json("color", "4,3,2")["Luv"].get<Row>();
  const Row white = json("color", "30,40,20")["Luv"].get<Row>();
  EXPECT_NEAR(json("delta", "4,3,2 30,40,20")["DEuv"].get<double>(),
              std::hypot(white[0] - black[0], white[1] - black[1], white[2] - black[2]), 1e-3);
}

TEST_F(ColourTool, DescribesSpaces) {
  const Json srgb = json("space", "srgb"); // IEC 61966-2-1
  const std::vector<Row> npm = {{0.4124, 0.3576, 0.1805}, {0.2126, 0.7152, 0.0722}, {0.0193, 0.1192, 0.9505}};
  const std::vector<Row> inverse = {{3.2410, -1.5374, -0.4986}, {-0.9692, 1.8760, 0.0416}, {0.0556, -0.2040, 1.0570}};
  const Json wide = json("space", "bt2020 --to bt709"); // BT.2087
  const std::vector<Row> narrow = {{1.6605, -0.5876, -0.0728}, {-0.1246, 1.1329, -0.0083}, {-0.0182, -0.1006, 1.1187}};
  const Json cinema = json("space", "p3-dci --to bt709");
  for (size_t i = 0; i < 3; i++) {
    expect_near(srgb["npm"][i], npm[i], 6e-5, "npm");
    expect_near(srgb["inverse"][i], inverse[i], 2e-4, "inverse");
    expect_near(wide["to"][i], narrow[i], 6e-5, "bt2020 to bt709");
    expect_near(wide["to_adapted"][i], narrow[i], 6e-5, "the same white");
    const Row row = cinema["to_adapted"][i].get<Row>();
    EXPECT_NEAR(row[0] + row[1] + row[2], 1.0, 1e-5) << "white stays white";
  }
  const Row red = cinema["to_adapted"][0].get<Row>();
  EXPECT_GT(red[0], 1.0) << "P3 is the wider space";
  EXPECT_GT(cinema["to"][1][1].get<double>() - cinema["to_adapted"][1][1].get<double>(), 0.01) << "a greenish white";
  expect_near(wide["luma"], {0.2627, 0.6780, 0.0593}, 5e-5, "BT.2020 luma");
  EXPECT_NEAR(srgb["area"].get<double>(), 0.11205, 1e-6);
  // Yellow is where red meets green: on the line between them and, seen from blue, behind white.
  expect_near(srgb["yellow"], {0.4193, 0.5053}, 5e-5, "yellow");
  EXPECT_EQ(json("space", "0.64,0.33,0.3,0.6,0.15,0.06,0.3127,0.329")["npm"], srgb["npm"]);
  EXPECT_TRUE(has(run("space srgb").out, "luma     0.21263903 0.71516877 0.07219233\narea     0.11205"));
}

// SMPTE ST 428-1 and RP 431-2: codes of the peak and of the reference white.
TEST_F(ColourTool, ConvertsCinemaColours) {
  const struct {
    const char *arguments;
    Row out;
    double tolerance;
  } cases[] = {
      {"1,1,1 --from xyz --to XYZq", {3960, 3960, 3960}, 0.5},
      {"4095,4095,4095 --from RGBq --to XYZq", {3794, 3960, 3890}, 0.5},
      {"3794,3960,3890 --from XYZq --to RGBq", {4095, 4095, 4095}, 1.5},
      {"1023,1023,1023 --from RGBq --to rgb --bits 10", {1, 1, 1}, 1e-4},
      {"0.25,0,1 --from rgb --to rgb", {0.25, 0, 1}, 0.0},
      {"4095,4095,4095 --from RGBq --to xyz", {0.894587, 1.0, 0.954416}, 1e-4}, // x 0.314, y 0.351
  };
  for (const auto &c : cases) {
    const Json q = json("dci", c.arguments);
    expect_near(q["to"]["value"], c.out, c.tolerance, c.arguments);
  }
  EXPECT_EQ(run("dci 1,1,1 --from xyz --to XYZq").out.rfind("XYZq 3960.0", 0), 0U);
}

TEST_F(ColourTool, PredictsAGrayRamp) {
  for (const char *options : {"", "--entries 33 --bits 12"}) {
    ASSERT_EQ(run(std::string("calibrate panel.xml --gamma 2.4 -o luts.txt ") + options).code, 0);
    std::istringstream table(run("gray panel.xml luts.txt --steps 11").out);
    std::string line;
    std::getline(table, line);
    EXPECT_EQ(line, "Gray ramp of panel.xml through luts.txt, predicted above black");
    std::getline(table, line);
    int rows = 0;
    for (; std::getline(table, line); rows++) {
      double input = 0.0;
      double x = 0.0;
      double y = 0.0;
      double luminance = 0.0;
      double cct = 0.0;
      double gamma = 0.0;
      const int count =
          std::sscanf(line.c_str(), "%lf %% %lf %lf %lf %lf %lf", &input, &x, &y, &luminance, &cct, &gamma);
      ASSERT_EQ(count, rows == 0 ? 4 : rows == 10 ? 5 : 6) << line; // no gamma at the ends
      EXPECT_NEAR(input, 10.0 * rows, 1e-9);
      if (rows > 0) {
        EXPECT_NEAR(x, 0.3127, 0.005) << line;
        EXPECT_NEAR(y, 0.3290, 0.005) << line;
        EXPECT_NEAR(cct, 6504, 150) << line;
        EXPECT_NEAR(gamma, rows < 10 ? 2.4 : 0.0, 0.02) << line;
      }
    }
    EXPECT_EQ(rows, 11);
    const std::string dumps = run("gray panel.xml luts.txt --raw").out;
    EXPECT_TRUE(has(dumps, "VEXO_DUMP_GRAY Vector(")) << dumps.substr(0, 99);
    EXPECT_NEAR(std::atof(dumps.substr(dumps.rfind("gamma = ") + 8).c_str()), 2.4, 0.02);
  }
  EXPECT_TRUE(has(run("gray panel.xml").out, "Gray ramp of panel.xml, predicted above black\n"));
}

TEST_F(ColourTool, ExplainsUsage) {
  save(path("bad.txt"), "LUT_1D_SIZE 4\nLUT_1D_BITS 10\n1 2 3\n");
  const struct {
    const char *arguments;
    int code;
    const char *message;
  } cases[] = {
      {"color", 2, "expected either VALUE or --file"},
      {"color 1,2,3 --file list", 2, "expected either VALUE or --file"},
      {"color 1,2", 2, "VALUE '1,2': expected three numbers separated by commas"},
      {"color 1,2,3 --in xyYY", 2, "did you mean xyY?"},
      {"color -- -1,2,3", 3, "VALUE '-1,2,3' is not a colour in XYZ"},
      {"color 0.3,0,50 --in xyY", 3, "is not a colour in xyY"},
      {"color 0.3,0,50 --in uvY", 3, "is not a colour in uvY"},
      {"delta 1,2,3 1,-2,3", 3, "COLOR2 '1,-2,3' is not a colour in XYZ"},
      {"space bt708", 2, "did you mean bt709?"},
      {"dci 1,1,1 --from xyz --to XYZk", 2, "did you mean XYZq?"},
      {"dci 1,1,1 --from xyz --to rgb --bits 32", 2, "--bits: Value 32 not in range 1 to 31"},
      {"dci 1,1,1 --from xyz --to rgb --bits 010", 2, "--bits: Value 010 is not written in plain decimal digits"},
      {"gray panel.xml --step 3", 2, "did you mean --steps?"},
      {"gray panel.xml --steps 1", 2, "--steps: Value 1 not in range 2 to 1024"},
      {"gray panel.xml bad.txt", 3, "bad.txt: the file ends after 1 lines of data, expected 4"},
      {"gray bad.txt", 3, "bad.txt:1: not XML"},
  };
  for (const auto &c : cases) {
    const Result r = run(c.arguments);
    EXPECT_EQ(r.code, c.code) << c.arguments;
    EXPECT_TRUE(has(r.err, c.message)) << c.arguments << "\n" << r.err;
    EXPECT_EQ(r.out, "");
  }
}
