// 3D LUTs that are made for a panel, judged by what the simulated panel truly shows through them.
#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "panel-model.h"
#include "tool/tool.h"
#include "tool/truth.h"
#include "vexo-3dlut.h"

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

// What BT.709 asks for with the power law 2.2, from its definition.
Color wanted(const Color &signal, double peak) {
  const double matrix[3][3] = {
      {0.412391, 0.357584, 0.180481}, {0.212639, 0.715169, 0.072192}, {0.019331, 0.119195, 0.950532}};
  Color XYZ = {};
  for (size_t m = 0; m < 3; m++) {
    for (size_t c = 0; c < 3; c++) {
      XYZ[m] += peak * matrix[m][c] * std::pow(signal[c], 2.2);
    }
  }
  return XYZ;
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

private:
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

// From gray to the primaries and secondaries of a space that is larger than the panel's.
TEST_F(MadeCube, RampsOfSaturationDoNotFold) {
  calibrate();
  const Cube cube = make("--size 33 --space bt2020 --luts luts.txt");
  for (int hue = 1; hue < 7; hue++) {
    double before = 0.0;
    for (int i = 0; i <= 100; i++) {
      Color signal;
      for (size_t c = 0; c < 3; c++) {
        signal[c] = 0.8 * ((hue >> c & 1) != 0 ? 1.0 : 1.0 - i / 100.0);
      }
      const Color inputs = through(cube.get(), signal);
      const auto [least, most] = std::minmax_element(inputs.begin(), inputs.end());
      const double saturation = 1.0 - *least / *most;
      EXPECT_GT(saturation, before - 0.02) << "hue " << hue << " at " << i << " %";
      before = std::max(before, saturation);
    }
  }
}
