// vexo measure: what is said of measurements, and measurements made from other programs' files.
#include <nlohmann/json.hpp>

#include <functional>
#include <string>
#include <vector>

#include "tool/tool.h"
#include "vexo.h"

namespace {

using Json = nlohmann::json;

const std::string kSets = "1 100 100 100 95 100 108\n"
                          "2 0 0 0 0.25 0.5 0.75\n"
                          "3 0 0.0 0.000 0.75 1.0 1.25\n" // the second reading of black
                          "4 50 0 0 9.5 4.75 0.5\n"
                          "5 0 50 0 8 15.5 2.625\n"
                          "6 0 0 50 4 1.625 2.1e1\n"
                          "7 100 0 0 41.25 21.25 1.75\n"
                          "8 0 100 0 35.75 71.5 11.875\n"
                          "9 0 0 100 18.0625 7.25 95\n"
                          "10 30 0 0 2 1 .125\n"
                          "11 30 0 30 2 1 .125\n";

std::string ti3(const std::string &sets, const std::string &count) {
  return "CTI3   \n\nDESCRIPTOR \"Readings\"\nKEYWORD \"COLOR_REP\"\nCOLOR_REP \"RGB_XYZ\"\n\nNUMBER_OF_FIELDS 7\n"
         "BEGIN_DATA_FORMAT\nSAMPLE_ID RGB_R RGB_G RGB_B XYZ_X XYZ_Y XYZ_Z\nEND_DATA_FORMAT\n\nNUMBER_OF_SETS " +
         count + "\nBEGIN_DATA\n" + sets + "END_DATA\n";
}

// The rows that the sets above hold: black as its mean, level 30 left out.
const char *const kRows = "<LCNR>\n"
                          "<LEVEL>0.000000,0.500000,0.750000,1.000000,0.500000,0.750000,1.000000,0.500000,0.750000,"
                          "1.000000</LEVEL>\n"
                          "<LEVEL>50.000000,9.500000,4.750000,0.500000,8.000000,15.500000,2.625000,4.000000,1.625000,"
                          "21.000000</LEVEL>\n"
                          "<LEVEL>100.000000,41.250000,21.250000,1.750000,35.750000,71.500000,11.875000,18.062500,"
                          "7.250000,95.000000</LEVEL>\n"
                          "</LCNR>";

const std::string kLong = "level,channel,X,Y,Z\n0,black,0.25,0.5,0.75\n0,black,0.75,1,1.25\n50,r,9.5,4.75,0.5\n"
                          "50,green,8,15.5,2.625\r\n\n50, blue ,4,1.625,2.1e1\n100,red,41.25,21.25,1.75\n"
                          "100,g,35.75,71.5,11.875\n100,b,18.0625,7.25,95\n";
const std::string kWide = "100,41.25,21.25,1.75,35.75,71.5,11.875,18.0625,7.25,95\n"
                          "0,.5,.75,1,.5,.75,1,.5,.75,1\n50,9.5,4.75,0.5,8,15.5,2.625,4,1.625,21";

std::string replaced(std::string text, const std::string &from, const std::string &to) {
  return text.replace(text.find(from), from.size(), to);
}

// The sample panel after a change.
std::string changed(const std::string &path, const std::function<void(vexo_lcnr &)> &change) {
  vexo_lcnr lcnr = {};
  EXPECT_EQ(vexo_load_lcnr_xml(&lcnr, VEXO_EXAMPLES "/sample-panel.xml"), 0);
  change(lcnr);
  EXPECT_EQ(vexo_store_lcnr_xml(&lcnr, path.c_str()), 0);
  return path;
}

} // namespace

TEST_F(Tool, ImportsReadings) {
  save(path("a.ti3"), ti3(kSets, "11"));
  save(path("long.csv"), kLong);
  save(path("wide.csv"), "\xEF\xBB\xBF" + kWide);
  for (const char *input : {"a.ti3", "- < a.ti3", "long.csv", "wide.csv"}) {
    const Result r = run(std::string("measure import -o out.xml ") + input);
    EXPECT_EQ(r.code, 0) << input << r.err;
    EXPECT_EQ(contents(path("out.xml")), kRows) << input;
    EXPECT_TRUE(has(r.out, "out.xml: 3 rows, levels 0 to 100")) << r.out;
    EXPECT_EQ(has(r.out, "level 30 left out: read for red only"), has(input, "ti3")) << r.out;
    EXPECT_EQ(has(r.out, "2 readings left out: two or three channels driven (1 gray, 1 mixed)"), has(input, "ti3"));
    EXPECT_EQ(has(r.out, "level 0 of green is the mean of 2 readings"), !has(input, "wide")) << r.out;
  }
  EXPECT_EQ(run("measure import a.ti3 -o -").out, kRows);

  std::string many;
  for (int i = 0; i <= 126; i++) {
    many += std::to_string(i) + ",2,1,1,1,1,1,1,1," + std::to_string(i + 1) + "\n";
  }
  save(path("many.csv"), many);
  const Result r = run("measure import many.csv -o many.xml");
  EXPECT_TRUE(has(r.out, "63 levels left out") && has(r.out, "64 rows")) << r.out;
  vexo_lcnr lcnr = {};
  ASSERT_EQ(vexo_load_lcnr_xml(&lcnr, path("many.xml").c_str()), 0);
  ASSERT_EQ(lcnr.num, 64);
  for (int i = 0; i < 64; i++) {
    EXPECT_EQ(lcnr.sample[i], static_cast<float>(2 * i));
    EXPECT_EQ(lcnr.data[0][0][i], 2.0F); // each channel keeps the black that its own ramp was read with
    EXPECT_EQ(lcnr.data[2][2][i], static_cast<float>(2 * i + 1));
  }
}

TEST_F(Tool, SaysWhatIsWrongWithReadings) {
  const struct {
    std::string text;
    const char *message;
  } cases[] = {
      {ti3(kSets, "12"), "not CGATS: Count mismatch. NUMBER_OF_SETS was 12, found 11"},
      {replaced(ti3(kSets, "11"), "FIELDS 7", "FIELDS -3"), "not CGATS: AllocateDataFormat: Unknown NUMBER_OF_FIELDS"},
      {replaced(ti3(kSets, "11"), "XYZ_X", "LAB_L"), "no table with the columns RGB_R RGB_G RGB_B XYZ_X"},
      {replaced(ti3(kSets, "11"), "9.5 4.75", "9.5 dark"), "readings: data set 4: XYZ_Y is 'dark', expected a number"},
      {replaced(ti3(kSets, "11"), "4 50 0", "4 50 -1"),
       "readings: data set 4: RGB_G is '-1', expected a number of 0 or more"},
      {replaced(ti3(kSets, "11"), "DESCRIPTOR", ".INCLUDE"), "holds .INCLUDE, expected all readings in one file"},
      {ti3("1 50 50 50 1 1 1\n", "1"), "no channel driven alone in 1 readings"},
      {"", "readings: no channel driven alone in 0 readings"},
      {"level,X\n0,1\n", "readings:2: 2 columns, expected 5 (level,channel,X,Y,Z) or 10"},
      {replaced(kLong, "50,r,9.5,4.75,0.5", "50,r,9.5"),
       "readings:4: 3 columns, expected as many as in the lines before"},
      {replaced(kLong, "15.5", "15;5"), "readings:5: column 4 is '15;5', expected a number with a decimal point"},
      {replaced(kLong, "15.5", "nan"), "readings:5: column 4 is 'nan'"},
      {replaced(kLong, "50, blue", "-50, blue"), "readings:7: level -50, expected 0 or more"},
      {replaced(kLong, "50,r", "50,white"), "readings:4: channel 'white', expected red, green, blue, r, g, b or black"},
      {replaced(kLong, "0,black", "1,black"), "readings:2: black at level 1, expected level 0"},
      {replaced(kLong, "100,g", "101,g"), "full drive, level 101, was read for green only"},
      {"0,black,1,1,1\n", "full drive, level 0, was read for black only"},
      {replaced(kWide, "\n0,", "\n1,"), "readings: no reading of black (all drives 0) for every channel"},
  };
  for (const auto &c : cases) {
    save(path("readings"), c.text);
    const Result r = run("measure import readings -o out.xml");
    EXPECT_EQ(r.code, 3) << c.message;
    EXPECT_TRUE(has(r.err, c.message)) << c.message << "\n" << r.err;
  }
  EXPECT_EQ(files(), 4); // panel.xml readings out err
  save(path("empty.ti3"), "");
  EXPECT_TRUE(has(run("measure import empty.ti3 -o out.xml").err, "empty.ti3: not CGATS: empty"));
}

TEST_F(Tool, ReportsOnMeasurements) {
  const struct {
    std::function<void(vexo_lcnr &)> change;
    int code;
    const char *message;
  } cases[] = {
      {[](vexo_lcnr &p) { p.data[1][1][5] = 0.999F * p.data[1][1][4]; }, 0, ":7: row 5 (level 160): Y of green falls"},
      {[](vexo_lcnr &p) { p.data[0][2][1] = 0.40625F; }, 0,
       ":3: row 1 (level 32): Z of red is 0.40625, below black's 0.4195"},
      {[](vexo_lcnr &p) { p.data[2][0][1] += 0.1F; }, 0, ":3: row 1 (level 32): blue above black is 0.24"},
      {[](vexo_lcnr &p) {
         for (auto &column : p.data[2]) {
           column[7] = column[6] * 1.0001F;
         }
       },
       0, ":9: row 7 (level 224): blue hardly rises"},
      {[](vexo_lcnr &p) {
         for (int i = 0; i < p.num; i++) {
           for (auto &column : p.data[0]) {
             column[i] = column[0] + 0.01F * (column[i] - column[0]);
           }
         }
       },
       0, "red hardly rises: X + Y + Z above black at full drive is"},
      {[](vexo_lcnr &p) {
         for (auto &column : p.data[0]) {
           column[1] = column[0];
         }
       },
       0,
       "Without conditioning, the library's direct recipe cannot use it: changed.xml:3: row 1 (level 32): red is not "},
      {[](vexo_lcnr &p) { p.sample[3] = p.sample[2]; }, 3, ":5: row 3 (level 64): the level does not rise"},
  };
  const Result clean = run("measure panel.xml");
  EXPECT_EQ(clean.code, 0);
  EXPECT_TRUE(has(clean.out, "33 LEVEL elements read as 33 rows") && has(clean.out, "\n0 warnings\n")) << clean.out;
  for (const auto &c : cases) {
    changed(path("changed.xml"), c.change);
    const Result r = run("measure changed.xml");
    EXPECT_EQ(r.code, c.code) << c.message;
    EXPECT_TRUE(has(c.code == 3 ? r.err : r.out, c.message)) << c.message << "\n" << r.out << r.err;
    EXPECT_EQ(has(r.out, "vexo calibrate can use it"), c.code == 0) << r.out;
  }
}

TEST_F(Tool, JudgesAdditivity) {
  vexo_lcnr lcnr = {};
  changed(path("exact.xml"), [&](vexo_lcnr &p) { // black is 0.25 everywhere
    for (int i = 0; i < p.num; i++) {
      for (int n = 0; n < 9; n++) {
        p.data[n / 3][n % 3][i] = i == 0 ? 0.25F : p.data[n / 3][n % 3][i] + 0.25F;
      }
    }
    lcnr = p;
  });
  std::string gray = "level,X,Y,Z\n# through the LUTs\n0,0.25,0.25,0.25\n";
  for (int i = 1; i < lcnr.num; i++) {
    gray += std::to_string(lcnr.sample[i]);
    const double loss = i == 4 ? 0.9 : 1.0; // a tenth of the light is missing in one row, without a change of colour
    for (int m = 0; m < 3; m++) {
      double sum = 0.0;
      for (const auto &channel : lcnr.data) {
        sum += static_cast<double>(channel[m][i]) - 0.25;
      }
      gray += "," + std::to_string(0.25 + loss * sum);
    }
    gray += "\n";
  }
  save(path("gray.csv"), gray);
  const Result r = run("measure exact.xml --gray gray.csv --json");
  ASSERT_EQ(r.code, 0) << r.err;
  const Json report = Json::parse(r.out);
  const Json &found = report["additivity"];
  const int levels = 29; // those of 128 and up, a tenth of full drive being 102.3
  EXPECT_EQ(found["levels"], levels);
  EXPECT_NEAR(found["luminance"]["worst"], 0.1, 1e-4);
  EXPECT_NEAR(found["luminance"]["mean"], 0.1 / levels, 1e-4);
  EXPECT_EQ(found["luminance"]["level"], static_cast<double>(lcnr.sample[4]));
  EXPECT_LT(found["uv"]["worst"], 1e-4);
  EXPECT_EQ(report["rows"].size(), static_cast<size_t>(lcnr.num));
  const double light = report["white"]["xyY"][2];
  EXPECT_NEAR(report["contrast"], (light + 0.25) / 0.25, 1e-3);
  save(path("gray.csv"), "1,2,3\n");
  EXPECT_TRUE(has(run("measure exact.xml --gray gray.csv").err, "gray.csv:1: 3 columns, expected 4"));
  save(path("gray.csv"), "17,2,3,4\n");
  EXPECT_EQ(run("measure exact.xml --gray gray.csv").code, 3);
  EXPECT_EQ(run("measure panel.xml import gray.csv -o out.xml").code, 2);
  EXPECT_EQ(run("measure").code, 2);
}
