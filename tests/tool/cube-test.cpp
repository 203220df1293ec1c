// 3D LUTs that are made for a panel, judged by what the simulated panel truly shows through them.
#include <Eigen/LU>
#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <numeric>
#include <string>
#include <vector>

#include "colour/triple.h"
#include "panel-model.h"
#include "tool/tool.h"
#include "tool/truth.h"
#include "vexo-3dlut.h"

using nlohmann::json;

namespace {

struct DestroyCube {
  void operator()(vexo_3dlut *lut) const { vexo_3dlut_destroy(lut); }
};
using Cube = std::unique_ptr<vexo_3dlut, DestroyCube>;

// Trilinear interpolation, one corner after the other.
Color through(vexo_3dlut *lut, const Color &signal) {
  const int size = vexo_3dlut_size(lut);
  Color sum = {};
  for (int corner = 0; corner < 8; corner++) {
    int index[3];
    double weight = 1.0;
    for (size_t c = 0; c < 3; c++) {
      const double position = signal[c] * (size - 1);
      const int cell = std::min(static_cast<int>(position), size - 2);
      const bool high = (corner >> c & 1) != 0;
      index[c] = cell + (high ? 1 : 0);
      weight *= high ? position - cell : 1.0 - (position - cell);
    }
    const vexo_vector *entry = vexo_3dlut_item(lut, index[2], index[1], index[0]);
    for (size_t c = 0; c < 3; c++) {
      sum[c] += weight * double{entry->d[c]};
    }
  }
  return sum;
}

// What BT.709 asks for, from its definition, where light(V) is that of a gray.
template <typename Curve> Color wanted(const Color &signal, Curve light) {
  const double matrix[3][3] = {
      {0.412391, 0.357584, 0.180481}, {0.212639, 0.715169, 0.072192}, {0.019331, 0.119195, 0.950532}};
  Color XYZ = {};
  for (size_t m = 0; m < 3; m++) {
    for (size_t c = 0; c < 3; c++) {
      XYZ[m] += matrix[m][c] * light(signal[c]);
    }
  }
  return XYZ;
}

Color wanted(const Color &signal, double peak) {
  return wanted(signal, [=](double V) { return peak * std::pow(V, 2.2); });
}

// C*ab as a part of L*.
double saturation_of(const Color &XYZ, const Color &white) {
  vexo_vector Lab = vector_of(XYZ);
  vexo_vector reference = vector_of(white);
  vexo_XYZ_Lab(&Lab, &reference);
  return std::hypot(double{Lab.d[1]}, double{Lab.d[2]}) / double{Lab.d[0]};
}

const double kLevels[] = {0.4, 0.8, 1.0};

// From BT.709 to channels that add, with the white D65: the light of each channel, scaled so that all show white.
Eigen::Matrix3d matrix_to(const panel_model::Panel &panel) {
  Eigen::Matrix3d alone;
  Eigen::Matrix3d bt709;
  for (size_t c = 0; c < 3; c++) {
    Color one = {};
    one[c] = 1.0;
    const auto column = static_cast<Eigen::Index>(c);
    alone.col(column) = Triple(panel_model::light(panel, one).data());
    bt709.col(column) = Triple(wanted(one, 1.0).data());
  }
  const Eigen::Matrix3d inverse = alone.inverse();
  const Triple gains = inverse * bt709.rowwise().sum();
  return gains.cwiseInverse().asDiagonal() * inverse * bt709;
}

double mean(std::vector<double>::const_iterator begin, std::vector<double>::const_iterator end) {
  return std::accumulate(begin, end, 0.0) / static_cast<double>(end - begin);
}

class MadeCube : public Tool {
protected:
  void SetUp() override {
    Tool::SetUp();
    save(path("bare.csv"), contents(VEXO_EXAMPLES "/sample-bare.csv"));
    save(path("mix.csv"), contents(VEXO_EXAMPLES "/sample-mix.csv"));
  }

  Cube make(const std::string &options) const {
    const Result r = run("lut3d make panel.xml --gray bare.csv --mix mix.csv -o made.cube " + options);
    EXPECT_EQ(r.code, 0) << r.err;
    return Cube(vexo_3dlut_cube_load_file(path("made.cube").c_str()));
  }

  void calibrate() {
    const Result r = run("calibrate panel.xml --gray bare.csv --mix mix.csv -o luts.txt --bits 14");
    ASSERT_EQ(r.code, 0) << r.err;
    luts_ = luts_of(contents(path("luts.txt")));
  }

  // Of the LUTs and the cube that were made last.
  json report(const std::string &options) const {
    out("report panel.xml luts.txt --gray bare.csv --mix mix.csv --lut3d made.cube -o r.html --json r.json" + options);
    return json::parse(contents(path("r.json")));
  }

  // What the true panel shows of inputs, through the 1D LUTs if there are any.
  Color shown(const Color &inputs) const {
    Color drive;
    for (size_t c = 0; c < 3; c++) {
      drive[c] = drives(luts_, std::clamp(inputs[c], 0.0, 1.0))[c];
    }
    return panel_model::light(panel_model::real_panel(), drive);
  }

  // Mean CIEDE2000 of signals that BT.709 spreads over colours that the panel has.
  template <typename Inputs> double error(Inputs inputs) const {
    const double peak = shown(inputs({1.0, 1.0, 1.0}))[1];
    const std::vector<double> steps = {0.36, 0.52, 0.67, 0.83};
    double sum = 0.0;
    for (const double r : steps) {
      for (const double g : steps) {
        for (const double b : steps) {
          sum += de2000(shown(inputs({r, g, b})), wanted({r, g, b}, peak), target(1.0, peak));
        }
      }
    }
    return sum / std::pow(steps.size(), 3);
  }

  Luts luts_;
};

} // namespace

TEST_F(MadeCube, LeadsColoursToTheirXYZ) {
  const Cube alone = make("--size 33");
  EXPECT_LT(error([&](const Color &signal) { return through(alone.get(), signal); }), 0.5);
  calibrate();
  const double bare = error([](const Color &signal) { return signal; });
  const Cube cube = make("--size 33 --luts luts.txt");
  EXPECT_LT(error([&](const Color &signal) { return through(cube.get(), signal); }), 0.4 * bare);
}

// Of a dark white: black is a thirtieth of it, and not of its colour.
TEST_F(MadeCube, CountsBlackIn) {
  const Cube cube = make("--size 33 --curve bt1886 --luminance 10");
  const Color black = panel_model::real_panel().black;
  for (const Color &signal : {Color{0.6, 0.4, 0.3}, Color{0.4, 0.5, 0.6}, Color{0.5, 0.5, 0.4}, Color{0.9, 0.8, 0.7}}) {
    Color seen = shown(through(cube.get(), signal));
    for (size_t m = 0; m < 3; m++) {
      seen[m] += black[m];
    }
    const Color asked = wanted(signal, [&](double V) { return bt1886(V, 10.0, black[1]); });
    EXPECT_LT(de2000(seen, asked, target(1.0, 10.0)), 0.65);
  }
}

TEST_F(MadeCube, KeepsGrays) {
  calibrate();
  const Cube behind = make("--size 17 --luts luts.txt --space p3-d65");
  const Cube alone = make("--size 17 --white D50 --space bt2020");
  for (int i = 0; i < 17; i++) {
    const vexo_vector *entry = vexo_3dlut_item(behind.get(), i, i, i);
    EXPECT_TRUE(entry->d[0] == entry->d[1] && entry->d[1] == entry->d[2]) << i;
    EXPECT_FLOAT_EQ(entry->d[0], static_cast<float>(i) / 16.0F);
    const vexo_vector *drives = vexo_3dlut_item(alone.get(), i, i, i);
    const Color gray = panel_model::light(panel_model::real_panel(),
                                          {double{drives->d[0]}, double{drives->d[1]}, double{drives->d[2]}});
    const double sum = gray[0] + gray[1] + gray[2];
    if (i > 3) { // the model is linear between measured rows
      EXPECT_NEAR(gray[0] / sum, 0.3457, 0.002) << i;
      EXPECT_NEAR(gray[1] / sum, 0.3585, 0.002) << i;
    }
  }
}

// Chart colours and skin tones as parts of white: their L*a*b* under D50, taken to D65 (Bradford) outside this project.
TEST_F(MadeCube, ReportPredictsTestColours) {
  const std::map<std::string, Color> published = {
      {"dark skin", {0.10934, 0.09709, 0.06298}},  {"foliage", {0.10669, 0.13396, 0.06833}},
      {"orange", {0.38528, 0.30529, 0.06688}},     {"purplish blue", {0.13039, 0.11285, 0.38175}},
      {"neutral 5", {0.18090, 0.19062, 0.20683}},  {"skin, L* 24", {0.04626, 0.04035, 0.02296}},
      {"skin, L* 51", {0.21323, 0.19135, 0.13383}}};
  calibrate();
  const Cube cube = make("--size 33 --luts luts.txt");
  const json found = report("");
  const double peak = found["steps"]["target"][100]["XYZ"][1];
  const double true_peak = shown({1.0, 1.0, 1.0})[1];
  const Eigen::Matrix3d matrix = matrix_to(panel_model::real_panel());
  size_t known = 0;
  ASSERT_EQ(found["colours"]["colours"].size(), 53U);
  for (const json &row : found["colours"]["colours"]) {
    const std::string name = row["name"];
    SCOPED_TRACE(name);
    const Color signal = row["signal"];
    const Color asked = row["XYZ"];
    EXPECT_LT(de2000(asked, wanted(signal, peak), target(1.0, peak)), 0.005);
    for (size_t m = 0; m < 3 && published.count(name) > 0; m++, known++) {
      EXPECT_NEAR(asked[m] / peak, published.at(name)[m], 2e-5);
    }
    const Triple mixed = matrix * Triple(signal[0], signal[1], signal[2]);
    const Color ways[] = {signal, {mixed[0], mixed[1], mixed[2]}, through(cube.get(), signal)};
    for (size_t way = 0; way < 3; way++) {
      const Color light = shown(ways[way]);
      const double truth = de2000(light, wanted(signal, true_peak), target(1.0, true_peak));
      EXPECT_NEAR(row["shown"][way]["de2000"].get<double>(), truth, 0.4) << way;
      EXPECT_LT(de2000(row["shown"][way]["XYZ"], light, target(1.0, true_peak)), 0.4) << way;
    }
  }
  EXPECT_EQ(known, 3 * published.size());
  const json over_black = report(" --curve bt1886"); // a viewer sees the same colours, black included
  const json &steps = over_black["steps"]["target"];
  for (const json &row : over_black["colours"]["colours"]) {
    for (size_t m = 0; m < 3 && published.count(row["name"]) > 0; m++) {
      const double seen = row["XYZ"][m].get<double>() + steps[0]["XYZ"][m].get<double>();
      EXPECT_NEAR(seen / steps[100]["XYZ"][1].get<double>(), published.at(row["name"])[m], 2e-5) << row["name"];
    }
  }
}

// Readings of the true panel. Without a reading of white or black, these are the predicted and the panel file's.
TEST_F(MadeCube, ReportJudgesMeasuredColours) {
  calibrate();
  const Cube cube = make("--size 17 --luts luts.txt");
  const json predicted = report("");
  vexo_lcnr panel;
  ASSERT_EQ(vexo_load_lcnr_xml(&panel, path("panel.xml").c_str()), 0);
  const Color black = panel_model::real_panel().black;
  for (const bool complete : {true, false}) {
    double peak = predicted["steps"]["target"][100]["XYZ"][1];
    std::string readings = "r,g,b,X,Y,Z\n";
    const auto read = [&](const Color &signal) {
      const Color light = shown(through(cube.get(), signal));
      for (const double part : signal) {
        readings += std::to_string(part * 1023.0) + ",";
      }
      Color above_black = light;
      for (size_t m = 0; m < 3; m++) {
        readings += std::to_string(light[m] + black[m]) + (m < 2 ? "," : "\n");
        const auto &file = panel.data;
        above_black[m] += complete ? 0.0 : black[m] - (file[0][m][0] + file[1][m][0] + file[2][m][0]) / 3.0;
      }
      return above_black;
    };
    if (complete) {
      read({0.0, 0.0, 0.0});
      peak = read({1.0, 1.0, 1.0})[1];
    }
    std::vector<double> expected;
    for (const json &row : predicted["colours"]["colours"]) {
      Color signal = row["signal"];
      for (double &part : signal) {
        part = std::round(part * 1023.0) / 1023.0;
      }
      if (complete || row["name"] != "orange") {
        expected.push_back(de2000(read(signal), wanted(signal, peak), target(1.0, peak)));
      }
    }
    save(path("seen.csv"), readings);
    const json found = report(" --verify-colors seen.csv");
    std::vector<double> stated;
    for (const json &row : found["colours"]["colours"]) {
      if (!row["shown"][3]["de2000"].is_null()) {
        stated.push_back(row["shown"][3]["de2000"]);
      }
    }
    ASSERT_EQ(stated.size(), expected.size());
    for (size_t i = 0; i < stated.size(); i++) {
      EXPECT_NEAR(stated[i], expected[i], 1e-3) << complete << " " << i;
    }
    const auto chart = expected.begin() + (complete ? 24 : 23);
    const json &summary = found["colours"]["summary"][3];
    EXPECT_NEAR(summary["chart"]["mean"].get<double>(), mean(expected.begin(), chart), 1e-3);
    EXPECT_NEAR(summary["chart"]["worst"].get<double>(), *std::max_element(expected.begin(), chart), 1e-3);
    EXPECT_NEAR(summary["all"]["mean"].get<double>(), mean(expected.begin(), expected.end()), 1e-3);
    EXPECT_NEAR(summary["all"]["worst"].get<double>(), *std::max_element(expected.begin(), expected.end()), 1e-3);
    EXPECT_EQ(found["figures"]["color_de2000_mean"], complete ? summary["chart"]["mean"] : json()); // all 24 or none
  }
}

// From gray to the primaries and secondaries of spaces that are larger than the panel's: what a viewer sees does not
// turn pale again. Chroma counts as a part of lightness, with which it falls. P3 loses an eighth of it at its red.
TEST_F(MadeCube, RampsOfSaturationDoNotFold) {
  calibrate();
  const Luts calibrated = luts_;
  for (const std::string options : {"--space p3-d65 --size 17", "--space p3-d65 --size 33", "--space bt2020 --size 17",
                                    "--space bt2020 --size 33"}) {
    for (const bool behind : {false, true}) {
      luts_ = behind ? calibrated : Luts();
      const Cube cube = make(options + (behind ? " --luts luts.txt" : ""));
      const Color white = shown(through(cube.get(), {1.0, 1.0, 1.0}));
      for (int ramp = 0; ramp < 18; ramp++) {
        SCOPED_TRACE(options + " LUTs " + std::to_string(behind) + " ramp " + std::to_string(ramp));
        double before = 0.0;
        for (int i = 0; i <= 100; i++) {
          Color signal;
          for (int c = 0; c < 3; c++) {
            signal[static_cast<size_t>(c)] =
                kLevels[ramp % 3] * (((ramp / 3 + 1) >> c & 1) != 0 ? 1.0 : 1.0 - i / 100.0);
          }
          const double saturation = saturation_of(shown(through(cube.get(), signal)), white);
          EXPECT_GT(saturation, 0.87 * before - 0.01) << i;
          before = std::max(before, saturation);
        }
      }
    }
  }
}
