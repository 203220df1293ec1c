// vexo csc as a user runs it: the figures of the standards, the registers, and every order and range of a signal.
#include <cmath>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tool/tool.h"

namespace {

using Json = nlohmann::json;

const char *const kRgbOrders[] = {"rgb", "rbg", "grb", "gbr", "brg", "bgr"};

class CscTool : public Tool {
protected:
  Json json(const std::string &arguments) const {
    const Result r = run("csc --json " + arguments);
    EXPECT_EQ(r.code, 0) << arguments << r.err;
    EXPECT_EQ(r.err, "");
    return Json::parse(r.out, nullptr, false);
  }
  // What becomes of a triple of codes.
  std::vector<double> applied(const std::string &arguments, const std::string &triple) const {
    return json(arguments + " --apply " + triple)["apply"]["out"].get<std::vector<double>>();
  }
};

void expect_near(const std::vector<double> &actual, const std::vector<double> &expected, double tolerance,
                 const std::string &what) {
  ASSERT_EQ(actual.size(), expected.size()) << what;
  for (size_t i = 0; i < actual.size(); i++) {
    EXPECT_NEAR(actual[i], expected[i], tolerance) << what << " [" << i << "]";
  }
}

} // namespace

// The weights that BT.709-6 and BT.2020-2 publish, with their quantisation.
TEST_F(CscTool, HasTheFiguresOfTheStandards) {
  const struct {
    const char *space;
    double kr;
    double kb;
  } standards[] = {{"bt709", 0.2126, 0.0722}, {"bt2020", 0.2627, 0.0593}};
  for (const auto &s : standards) {
    const double kg = 1.0 - s.kr - s.kb;
    const double y = 876.0 / 1023.0; // luma codes of 10 bits to a code of full RGB
    const double c = 896.0 / 1023.0;
    const double b = c / (2.0 * (1.0 - s.kb));
    const double r = c / (2.0 * (1.0 - s.kr));
    const std::vector<double> encoding[] = {
        {y * s.kr, y * kg, y * s.kb}, {-b * s.kr, -b * kg, b * (1.0 - s.kb)}, {r * (1.0 - s.kr), -r * kg, -r * s.kb}};
    const std::vector<double> decoding[] = {
        {1.0 / y, 0.0, 2.0 * (1.0 - s.kr) / c},
        {1.0 / y, -2.0 * (1.0 - s.kb) * s.kb / kg / c, -2.0 * (1.0 - s.kr) * s.kr / kg / c},
        {1.0 / y, 2.0 * (1.0 - s.kb) / c, 0.0}};
    const Json to = json(std::string("rgb:full:10 ycbcr:video:10 --space ") + s.space);
    const Json from = json(std::string("ycbcr:video:10 rgb:full:10 --space ") + s.space);
    for (size_t i = 0; i < 3; i++) {
      expect_near(to["matrix"][i], encoding[i], 1e-4, std::string(s.space) + " encoding");
      expect_near(from["matrix"][i], decoding[i], 4e-4, std::string(s.space) + " decoding");
      EXPECT_NEAR(from["offset"][i], -64.0 * decoding[i][0] - 512.0 * (decoding[i][1] + decoding[i][2]), 0.3);
      for (size_t j = 0; j < 3; j++) {
        EXPECT_EQ(to["registers"]["gain"][i][j], std::lround(2048.0 * to["matrix"][i][j].get<double>()));
      }
    }
    expect_near(to["offset"], {64.0, 512.0, 512.0}, 1e-3, s.space);
    EXPECT_EQ(to["registers"]["offset"], Json({256, 2048, 2048}));
    EXPECT_EQ(to["from"], Json({{"signal", "rgb:full:10"}, {"space", s.space}}));
  }
  const Result text = run("csc rgb:full:10 ycbcr:video:10 --space bt709 --registers --apply 1023,0,0");
  for (const char *part :
       {"Matrix      0.182083", "\nOffset       64.000000     512.000000     512.000000\n",
        "gain[0][0] 0x0175     373\n", "gain[1][0] 0xff32    -206\n", "offset[1]  0x0800    2048\n",
        "max[2]     0x03ff    1023\n", "min[0]     0x0000       0\n", "Apply   1023 0 0 gives 250.2"}) {
    EXPECT_TRUE(has(text.out, part)) << part << text.out;
  }
}

TEST_F(CscTool, WarnsOfRegistersThatSaturate) {
  const std::string signals = "ycbcr:video:8 rgb:full:12 --saturation 0.5";
  const Result r = run("csc --registers " + signals);
  EXPECT_EQ(r.code, 0);
  const Json all = json(signals);
  std::vector<std::string> names;
  for (const Json &s : all["registers"]["saturated"]) {
    names.push_back(s["register"]);
    EXPECT_TRUE(has(r.err, "vexo: warning: " + names.back() + ": ")) << r.err;
  }
  EXPECT_EQ(Json(names).dump(), // gains beyond -4 to 3.9995, offsets below -2048 codes, a clip of ten bits
            R"(["gain[0][0]","gain[0][2]","gain[1][0]","gain[1][2]","gain[2][0]","gain[2][1]",)"
            R"("offset[0]","offset[2]","max[0]","max[1]","max[2]"])");
  EXPECT_TRUE(run("csc --registers rgb:full:10 ycbcr:video:10").err.empty());
  EXPECT_EQ(json("rgb:full:8 rgb:full:8 --gain 3.99951171875,1,1")["registers"]["saturated"].size(), 0U);
  EXPECT_EQ(json("rgb:full:8 rgb:full:8 --gain 4,1,1")["registers"]["saturated"].size(), 1U); // by one step
  for (const Json &document :
       {all, json("rgb:full:10 ycbcr:video:10 --space bt2020")}) { // over the corners of the cube
    const double top = document == all ? 255.0 : 1023.0;
    double largest = 0.0;
    for (int corner = 0; corner < 8; corner++) {
      for (size_t i = 0; i < 3; i++) {
        const Json &registers = document["registers"];
        double error = document["offset"][i].get<double>() - registers["offset"][i].get<int>() / 4.0;
        for (size_t j = 0; j < 3; j++) {
          const double off = document["matrix"][i][j].get<double>() - registers["gain"][i][j].get<int>() / 2048.0;
          error += (corner >> j & 1) * top * off;
        }
        largest = std::max(largest, std::fabs(error));
      }
    }
    EXPECT_NEAR(document["registers"]["largest_error"].get<double>(), largest, 1e-6 * largest + 1e-3);
  }
}

TEST_F(CscTool, TakesComponentsInEveryOrder) {
  const std::string names[2] = {"rgb", "ybr"}; // b and r for cb and cr
  const auto triple = [](const std::string &order, const std::string &canonical, const std::vector<double> &v) {
    std::string text;
    for (const char c : order) {
      text += (text.empty() ? "" : ",") + std::to_string(v[canonical.find(c)]);
    }
    return text;
  };
  const std::vector<double> rgb = {200.0, 500.0, 900.0};
  const std::vector<double> ycbcr = applied("rgb:full:10 ycbcr:video:10", "200,500,900");
  for (const char *rgb_order : kRgbOrders) {
    for (const char *order : {"ycbcr", "ycrcb", "cbycr", "cbcry", "crycb", "crcby"}) {
      std::string letters;
      for (const char c : std::string(order)) {
        letters += c == 'c' ? "" : std::string(1, c);
      }
      const std::string signals[2] = {std::string("rgb:full:10:") + rgb_order, std::string("ycbcr:video:10:") + order};
      const std::vector<double> out = applied(signals[0] + " " + signals[1], triple(rgb_order, names[0], rgb));
      const std::vector<double> back = applied(signals[1] + " " + signals[0], triple(letters, names[1], ycbcr));
      for (size_t i = 0; i < 3; i++) {
        EXPECT_NEAR(out[i], ycbcr[names[1].find(letters[i])], 2e-3) << rgb_order << " to " << order;
        EXPECT_NEAR(back[i], rgb[names[0].find(rgb_order[i])], 2e-3) << order << " to " << rgb_order;
      }
    }
  }
}

TEST_F(CscTool, ConvertsCodes) {
  const struct {
    const char *arguments;
    const char *in;
    std::vector<double> out;
  } cases[] = {
      {"rgb:full:8 rgb:full:10", "255,0,51", {1023, 0, 204.6}},
      {"rgb:video:8 rgb:graphic:12", "235,16,16", {4095, 0, 0}},
      {"ycbcr:video:8 ycbcr:video:12", "235,128,240", {3760, 2048, 3840}},
      {"ycbcr:video:10 rgb:video:10", "940,512,512", {940, 940, 940}},
      {"ycbcr:video:8 ycbcr:video:8 --hue 180", "116,138,148", {116, 118, 108}},
      {"ycbcr:video:8 ycbcr:video:8 --saturation 2", "116,138,148", {116, 148, 168}},
      {"ycbcr:video:8 ycbcr:video:8 --contrast 1.5", "116,138,148", {166, 143, 158}},
      {"ycbcr:video:8 ycbcr:video:8 --brightness -0.1", "116,138,148", {94.1, 138, 148}},
      {"rgb:full:8 rgb:full:8 --gain 2,1,0.5", "100,100,100", {200, 100, 50}},
      {"rgb:full:8 rgb:full:8 --offset -0.1,0.2,0", "100,100,100", {74.5, 151, 100}},
      {"rgb:full:10 rgb:full:10 --from-space bt2020 --to-space bt709", "1023,0,0", {1698.7, -127.4, -18.6}}, // BT.2407
      {"rgb:full:10 rgb:full:10 --from-space p3-dci --to-space p3-d65", "500,500,500", {500, 500, 500}},
  };
  for (const auto &c : cases) {
    expect_near(applied(c.arguments, c.in), c.out, 0.1, c.arguments);
  }
  for (const char *range : {"video", "full", "extended", "smpte-full"}) { // there and back
    for (const char *format : {"rgb", "ycbcr"}) {
      const std::string signal = std::string(format) + ":" + range + ":10";
      const std::vector<double> there = applied("rgb:full:12 " + signal, "3000,1000,200");
      const std::string triple = Json(there).dump();
      expect_near(applied(signal + " rgb:full:12", triple.substr(1, triple.size() - 2)), {3000, 1000, 200}, 0.02,
                  signal);
    }
  }
}

TEST_F(CscTool, ExplainsUsage) {
  const struct {
    const char *arguments;
    const char *message;
  } cases[] = {
      {"rgb:full:10", "TO is required"},
      {"rgb:full:10 ycbcr:vido:10", "TO 'ycbcr:vido:10': expected a range of video full extended smpte-full"},
      {"rgb:full:10 ycbcr:vido:10", "did you mean video?"},
      {"ycbcr:graphic:10 rgb:full:10", "graphic is the RGB name of full"},
      {"rgb:full rgb:full:10", "FROM 'rgb:full': expected FORMAT:RANGE:BITS[:ORDER]"},
      {"rgb:full:7 rgb:full:10", "FROM bits '7': expected a whole number from 8 to 30"},
      {"rgb:full:10:rgbr rgb:full:10", "an order of r, g and b, such as gbr"},
      {"ycbcr:full:10:yyy rgb:full:10", "an order of y, cb and cr, such as cbycr"},
      {"rgb:full:10 rgb:full:10 --spac bt709", "did you mean --space?"},
      {"rgb:full:10 rgb:full:10 --space bt70", "did you mean bt709?"},
      {"rgb:full:10 rgb:full:10 --space bt709 --to-space bt2020", "--space excludes --to-space"},
      {"rgb:full:10 rgb:full:10 --to-space bt2020", "--to-space requires --from-space"},
      {"rgb:full:10 rgb:full:10 --apply 1,2", "--apply '1,2': expected three numbers"},
  };
  for (const auto &c : cases) {
    const Result r = run(std::string("csc ") + c.arguments);
    EXPECT_EQ(r.code, 2) << c.arguments;
    EXPECT_TRUE(has(r.err, c.message)) << c.arguments << "\n" << r.err;
    EXPECT_EQ(r.out, "");
  }
}
