// Targets: the light that a viewer sees of a simulated panel through LUTs, black included, beside published values.
#include "tool/tool.h"
#include "tool/truth.h"

namespace {

// A desktop panel, brighter or darker by a factor. Black stays.
Light panel(double factor) {
  const panel_model::Panel model = panel_model::desktop_panel();
  return [=](const Color &drive) {
    Color light = panel_model::light(model, drive);
    for (double &component : light) {
      component *= factor;
    }
    return light;
  };
}

class Targets : public Tool {
protected:
  Luts calibrate(const Light &light, const std::string &options, const Color &black = kBlack) const {
    vexo_lcnr lcnr = measured_channels(light, 64);
    for (auto &channel : lcnr.data) {
      for (size_t m = 0; m < 3; m++) {
        for (int i = 0; i < lcnr.num; i++) {
          channel[m][i] += static_cast<float>(black[m] - kBlack[m]);
        }
      }
    }
    vexo_store_lcnr_xml(&lcnr, path("true.xml").c_str());
    const Result r = run("calibrate true.xml -o luts.txt --bits 16 " + options);
    EXPECT_EQ(r.code, 0) << r.err;
    return luts_of(contents(path("luts.txt")));
  }
};

// What a viewer sees, with black.
Color seen(const Light &light, const Luts &luts, double input, const Color &black = kBlack) {
  Color XYZ = light(drives(luts, input));
  for (size_t m = 0; m < 3; m++) {
    XYZ[m] += black[m];
  }
  return XYZ;
}

} // namespace

TEST_F(Targets, CurvesGiveThePublishedLight) {
  save(path("curve.csv"), "input,light\n0,0\n50,20\n100,80\n");
  const Color none = {0.0, 0.0, 0.0};
  const struct {
    const char *options;
    Color black;
    double input;
    double luminance; // cd/m2, with black
    const char *source;
  } cases[] = {
      {"--curve pq --luminance 1000", none, 0.508078, 100.0, "ST 2084"},
      {"--curve pq:1000", kBlack, 0.508078, 100.0, "ST 2084, whatever the black"},
      {"--curve pq:1000", none, 0.751827, 1000.0, "ST 2084"},
      {"--curve pq:1000", none, 0.9, 1000.0, "clipped at the peak"},
      {"--curve pq:1000", none, 0.58, 203.0, "BT.2408, HDR reference white at 58 %"},
      {"--curve hlg:1000", none, 0.75, 203.0, "BT.2408, HDR reference white at 75 %"},
      {"--curve hlg --luminance 1000", none, 0.4, 29.68, "BT.2100: 1000 (0.4^2 / 3)^1.2"},
      {"--curve hlg:600", none, 0.5, 600.0 / std::pow(12.0, 1.2 + 0.42 * std::log10(0.6)), "BT.2100: system gamma"},
      {"--curve bt1886 --luminance 100", kBlack, 0.6, bt1886(0.6, 100.0, kBlack[1]), "BT.1886"},
      {"--curve bt1886 --luminance 100", none, 0.6, 100.0 * std::pow(0.6, 2.4), "BT.1886 over no black"},
      {"--curve bt1886:1 --luminance 100", kBlack, 0.5, bt1886(0.5, 100.0, 1.0), "BT.1886, black of 1 cd/m2"},
      {"--curve lstar --luminance 100", none, 0.5, 18.4187, "CIE 15: L* 50"},
      {"--curve srgb --luminance 100", none, 0.5, 21.4041, "IEC 61966-2-1"},
      {"--gamma 2.4 --luminance 100", none, 0.5, 18.9465, "power law"},
      {"--curve curve.csv --luminance 100", none, 0.75, 62.5, "the middle of a line"},
  };
  const Light bright = panel(4.0);
  for (const auto &c : cases) {
    SCOPED_TRACE(std::string(c.options) + ": " + c.source);
    const Color XYZ = seen(bright, calibrate(bright, c.options, c.black), c.input, c.black);
    EXPECT_NEAR(XYZ[1] / c.luminance, 1.0, 0.01);
    EXPECT_NEAR(XYZ[0] / XYZ[1], 0.3127 / 0.3290, 0.01);
    EXPECT_NEAR(XYZ[2] / XYZ[1], 0.3583 / 0.3290, 0.01);
  }
}

// At 3 cd/m2, a third of the light is black.
TEST_F(Targets, DarkGraysMakeUpForTheColourOfBlack) {
  const Light dark = panel(0.2);
  const Luts luts = calibrate(dark, "--curve bt1886");
  EXPECT_TRUE(rises(luts));
  const double white = seen(dark, luts, 1.0)[1];
  for (const double input : {0.1, 0.15, 0.2, 0.4, 0.9}) {
    SCOPED_TRACE(input);
    const Color XYZ = seen(dark, luts, input);
    const double Y = bt1886(input, white, kBlack[1]);
    EXPECT_NEAR(XYZ[1] / Y, 1.0, 0.01);
    EXPECT_LT(de2000(XYZ, {0.3127 / 0.3290 * Y, Y, 0.3583 / 0.3290 * Y}, target(1.0, white)), 0.3);
  }
}

TEST_F(Targets, WhitesByName) {
  const Light light = panel(1.0);
  const Color native = light({1.0, 1.0, 1.0});
  const double sum = native[0] + native[1] + native[2];
  const struct {
    const char *white;
    double x;
    double y;
  } cases[] = {{"6504K", 0.3127, 0.3291}, // CIE 15: D65 lies on the daylight locus at 6504 K
               {"5003k", 0.3457, 0.3585}, // D50
               {"7504K", 0.2990, 0.3149}, // D75
               {"2856P", 0.4476, 0.4074}, // CIE illuminant A
               {"6504P", 0.3135, 0.3236}, // on the Planckian locus, below daylight
               {"native", native[0] / sum, native[1] / sum}};
  for (const auto &c : cases) {
    SCOPED_TRACE(c.white);
    const Color XYZ = light(drives(calibrate(light, std::string("--white ") + c.white), 1.0));
    EXPECT_NEAR(XYZ[0] / (XYZ[0] + XYZ[1] + XYZ[2]), c.x, 0.0006);
    EXPECT_NEAR(XYZ[1] / (XYZ[0] + XYZ[1] + XYZ[2]), c.y, 0.0006);
  }
}
