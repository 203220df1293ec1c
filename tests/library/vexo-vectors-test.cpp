// Test vectors: a digest of the bits of many results of each family, the same on every processor and with every
// compiler and optimisation. What the results mean is judged by the other tests. With VEXO_WRITE_VECTORS set in the
// environment the file is written instead.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <random>
#include <sstream>

#include "bits.h"
#include "lut3d.h"
#include "text.h"
#include "vexo-cs.h"
#include "vexo-csc.h"
#include "vexo-dcine.h"
#include "vexo-util.h"
#include "vexo.h"

namespace {

// Results on their way into a digest. A NaN counts as one, whichever the processor makes.
class Results {
public:
  void add(float x) { add_word(std::isnan(x) ? 0x7FC00000U : bits(x)); }
  void add(int x) { add_word(static_cast<uint32_t>(x)); }
  void add(const float *x, size_t count) {
    for (size_t i = 0; i < count; i++) {
      add(x[i]);
    }
  }
  void add(const vexo_vector &v) { add(v.d, 3); }
  void add(const vexo_matrix &m) { add(&m.d[0][0], 9); }
  void add(const vexo_lut &lut) { add(lut.d, static_cast<size_t>(lut.size)); }
  void add(vexo_3dlut *lut) {
    const std::vector<float> all = components(lut);
    add(all.data(), all.size());
  }
  // What a function writes; addresses in headings do not count.
  template <typename Write> void add_text(Write write) {
    std::string text = printed(write);
    for (size_t at = text.find("(0x"); at != std::string::npos; at = text.find("(0x", at)) {
      text.erase(at, text.find(')', at) - at);
    }
    for (const char c : text) {
      add_word(static_cast<unsigned char>(c));
    }
  }

  std::string line(const char *name) const {
    std::ostringstream out;
    out << name << ' ' << std::dec << count_ << ' ' << std::hex << digest_;
    return out.str();
  }

private:
  void add_word(uint32_t word) { // FNV-1a over words
    digest_ = (digest_ ^ word) * 1099511628211U;
    count_++;
  }

  uint64_t digest_ = 14695981039346656037U;
  int count_ = 0;
};

class Random {
public:
  float operator()(float low, float high) { return low + (high - low) * static_cast<float>(bits_()) / 4294967296.0F; }
  int below(int n) { return static_cast<int>(bits_() % static_cast<unsigned>(n)); }
  vexo_vector vector(float low, float high) {
    vexo_vector v;
    for (float &x : v.d) {
      x = (*this)(low, high);
    }
    return v;
  }
  vexo_vector xyY() {
    const float x = (*this)(0.05F, 0.6F);
    const float y = (*this)(0.05F, 0.6F);
    return vexo_vector{{x, y, (*this)(0.0F, 400.0F)}};
  }

private:
  std::mt19937 bits_;
};

struct Luts {
  explicit Luts(int size = 1024) {
    for (vexo_lut &channel : lut) {
      vexo_lut_init_zero(&channel, size);
    }
  }
  ~Luts() {
    for (vexo_lut &channel : lut) {
      vexo_lut_destroy(&channel);
    }
  }
  Luts(const Luts &) = delete;
  Luts &operator=(const Luts &) = delete;

  void add_to(Results &results) {
    for (const vexo_lut &channel : lut) {
      results.add(channel);
    }
  }

  vexo_lut lut[3];
};

float kPrimaries[3][4][2] = {{{0.64F, 0.33F}, {0.30F, 0.60F}, {0.15F, 0.06F}, {0.3127F, 0.3290F}},
                             {{0.708F, 0.292F}, {0.170F, 0.797F}, {0.131F, 0.046F}, {0.3127F, 0.3290F}},
                             {{0.680F, 0.320F}, {0.265F, 0.690F}, {0.150F, 0.060F}, {0.314F, 0.351F}}};
vexo_gamma kCurves[] = {{0.0F, 0.0F, 1.0F, 0.0F},
                        {0.0F, 0.0F, 2.2F, 0.0F},
                        {4.5F, 0.018F, 0.45F, 0.099F},
                        {12.92F, 0.0031308F, 1.0F / 2.4F, 0.055F}};
vexo_vector kWhite = {{0.3127F, 0.3290F, 1.0F - 0.3127F - 0.3290F}};

void matrices(Results &results) {
  Random random;
  for (int n = 0; n < 200; n++) {
    vexo_matrix m;
    vexo_matrix inverse = {};
    vexo_vector v = random.vector(-2.0F, 2.0F);
    const vexo_vector u = random.vector(0.1F, 3.0F);
    for (int row = 0; row < 3; row++) {
      vexo_vector r = random.vector(-1.0F, 1.0F);
      vexo_matrix_set_row(&m, &r, row);
    }
    results.add(vexo_matrix_invert(&inverse, &m));
    vexo_matrix product = m;
    vexo_matrix_multiply(&product, &inverse);
    vexo_matrix_transform(&m, &v);
    vexo_vector quotient = u;
    vexo_vector_div(&quotient, &v);
    vexo_vector_normalize(&v, 1 + n % 2);
    vexo_matrix_normalize(&m, 1);
    for (const vexo_matrix &result : {inverse, product, m}) {
      results.add(result);
    }
    results.add(quotient);
    results.add(v);
    results.add(vexo_vector_get_middle(&v) + vexo_vector_sum(&v));
    float corners[2][2][2];
    for (int i = 0; i < 8; i++) {
      corners[i >> 2][i >> 1 & 1][i & 1] = random(-1.0F, 1.0F);
    }
    vexo_vector at = random.vector(-0.1F, 1.1F);
    results.add(trilinear_inter(at.d, corners));
    results.add(bilinear_inter(at.d, corners[0]));
  }
}

void colorimetry(Results &results) {
  Random random;
  using Conversion = int (*)(vexo_vector *);
  const Conversion from_XYZ[] = {vexo_XYZ_xyz, vexo_XYZ_xyY, vexo_XYZ_uvY, vexo_XYZ_CCT, vexo_XYZ_valid};
  const Conversion from_xyY[] = {vexo_xyY_XYZ, vexo_xyY_uvY};
  vexo_vector white = {{0.95047F, 1.0F, 1.08883F}};
  for (int n = 0; n < 500; n++) {
    vexo_vector colours[3] = {random.xyY(), random.xyY(), random.xyY()};
    for (const auto &convert : from_xyY) {
      vexo_vector v = colours[0];
      results.add(convert(&v));
      results.add(v);
    }
    vexo_vector mixed = {};
    vexo_xyY_mix_3(&colours[0], &colours[1], &colours[2], &mixed);
    results.add(mixed);
    vexo_vector XYZ[2] = {random.vector(0.0F, 1.0F), random.vector(0.0F, 0.1F)};
    vexo_XYZ_mix(&XYZ[0], &XYZ[1], &XYZ[1]);
    for (const auto &convert : from_XYZ) {
      vexo_vector v = XYZ[n % 2];
      results.add(convert(&v));
      results.add(v);
    }
    for (const auto &convert : {vexo_XYZ_Lab, vexo_XYZ_Luv, vexo_XYZ_LCH}) {
      vexo_vector v = XYZ[0];
      convert(&v, &white);
      results.add(v);
    }
    for (const auto &difference : {vexo_XYZ_DEab, vexo_XYZ_DEuv, vexo_XYZ_DE2000}) {
      results.add(difference(&XYZ[0], &XYZ[1], &white));
    }
    vexo_vector near_daylight = {{white.d[0] + random(-0.2F, 0.2F), 1.0F, white.d[2] + random(-0.8F, 0.4F)}};
    results.add(vexo_XYZ_CCT(&near_daylight));
  }
}

void colour_spaces(Results &results) {
  Random random;
  for (int n = 0; n < 100; n++) {
    vexo_cs cs[2];
    for (vexo_cs &space : cs) {
      float primaries[4][2];
      for (int i = 0; i < 8; i++) {
        primaries[i / 2][i % 2] = kPrimaries[n % 3][i / 2][i % 2] + random(-0.02F, 0.02F);
      }
      results.add(vexo_cs_init(&space, primaries));
      results.add(space.npm);
    }
    vexo_matrix m;
    for (const auto &transform : {vexo_cs_transform, vexo_cs_chad_transform}) {
      vexo_matrix_init(&m);
      results.add(transform(&m, &cs[0], &cs[1]));
      results.add(m);
    }
    vexo_chad_transform(&m, &cs[0].w, &cs[1].w);
    results.add(m);
    results.add(vexo_cs_area(&cs[0]));
    vexo_vector secondary[3];
    vexo_cs_secondary(&cs[0], &secondary[0], &secondary[1], &secondary[2]);
    const vexo_vector black = random.vector(0.0F, 0.01F);
    vexo_vector patch[4];
    for (int i = 0; i < 4; i++) {
      patch[i] = i < 3 ? random.vector(0.1F, 1.0F) : vexo_vector{{1.9F, 2.0F, 2.1F}};
    }
    results.add(vexo_cs_init_XYZ(&cs[0], patch[0].d, patch[1].d, patch[2].d, patch[3].d, black.d));
    results.add(cs[0].npm);
    for (int i = 0; i < 3; i++) {
      results.add(secondary[i]);
    }
    vexo_vector rgb = patch[3];
    results.add(vexo_adjust_wb(patch[0].d, patch[1].d, patch[2].d, patch[3].d, black.d, 0.5F, &rgb));
    results.add(rgb);
    float codes[2][3] = {{400.0F, 500.0F, 600.0F}, {1000.0F, 900.0F, 1023.0F}};
    unsigned short most[3] = {1000, 1023, 1023};
    vexo_panel_gray_point_adjust(patch[1].d, patch[3].d, codes[0], most);
    results.add(vexo_panel_cs_gray_point_adjust(patch[0].d, patch[1].d, patch[2].d, patch[3].d, black.d, patch[n % 4].d,
                                                codes[1], most));
    results.add(codes[0], 6);
  }
}

void curves(Results &results) {
  Random random;
  for (vexo_gamma &camera : kCurves) {
    for (vexo_gamma &system : kCurves) {
      Luts luts(257);
      Luts others(64);
      vexo_lut_by_gamma(&system, &luts.lut[0]);
      vexo_lut_inverse_gamma(&camera, &luts.lut[1]);
      vexo_lut_merge(&luts.lut[0], &luts.lut[1], &luts.lut[2]);
      vexo_gamma_lut_invert(&others.lut[0], &camera, &system, &luts.lut[2]);
      vexo_gamma_lut_invert_2(&others.lut[1], &camera, &system, &luts.lut[2]);
      vexo_gamma_generate_lut(&camera, &system, &others.lut[2]);
      luts.add_to(results);
      others.add_to(results);
      vexo_lut_dup(&others.lut[0], &luts.lut[2]);
      vexo_convert_lut(&others.lut[1], &luts.lut[0]);
      for (int i = 1; i < 63; i++) {
        others.lut[2].d[i] = others.lut[0].d[i] + random(-0.02F, 0.02F);
        results.add(vexo_lut_inverse(&luts.lut[2], random(0.0F, 1.0F)));
        results.add(vexo_lut_evaluate(&luts.lut[2], random(0.0F, 256.0F)));
      }
      results.add(vexo_lut_data_normalize(others.lut[2].d, 64));
      others.add_to(results);
      unsigned short codes[257];
      vexo_lut_to_uint(&luts.lut[0], codes, 12);
      for (const unsigned short code : codes) {
        results.add(static_cast<int>(code));
      }
    }
  }
}

void conversions(Results &results) {
  using Full = decltype(&_vexo_csc_rgb_rgb);
  using Swapped = decltype(&vexo_csc_rgb_rgb2);
  const Full full[] = {_vexo_csc_rgb_ycbcr, _vexo_csc_ycbcr_rgb, _vexo_csc_rgb_rgb, _vexo_csc_ycbcr_ycbcr};
  const Swapped swapped[] = {vexo_csc_rgb_ycbcr2, vexo_csc_ycbcr_rgb2, vexo_csc_rgb_rgb2, vexo_csc_ycbcr_ycbcr2};
  Random random;
  vexo_cs cs[3];
  for (int i = 0; i < 3; i++) {
    vexo_cs_init(&cs[i], kPrimaries[i]);
  }
  const auto add = [&results](int status, vexo_csc *csc) {
    results.add(status);
    vexo_csc_reg reg = {};
    vexo_vector code = {{100.0F, 500.0F, 900.0F}};
    vexo_csc_float_reg(csc, &reg);
    vexo_csc_transfrom(csc, &code);
    results.add(csc->matrix);
    results.add(csc->offset);
    results.add(code);
    for (int i = 0; i < 12; i++) {
      results.add(static_cast<int>(i < 9 ? reg.gain[i / 3][i % 3] : reg.offset[i - 9]));
    }
  };
  for (int n = 0; n < 400; n++) {
    vexo_ccp ccp;
    vexo_ccp_init(&ccp);
    if (n % 2 == 0) {
      ccp.hue = random(-3.0F, 3.0F);
      ccp.saturation = random(0.5F, 1.5F);
      ccp.contrast = random(0.5F, 1.5F);
      ccp.brightness = random(-0.1F, 0.1F);
      ccp.gain = random.vector(0.8F, 1.2F);
      ccp.offset = random.vector(-0.1F, 0.1F);
    }
    int draw[8]; // one by one: the order of arguments is the compiler's
    for (int &d : draw) {
      d = random.below(24);
    }
    const auto in = static_cast<color_range>(draw[0] % 8);
    const auto out = static_cast<color_range>(draw[1] % 8);
    const int bits = 8 + draw[2] % 23;
    vexo_csc csc = {};
    add(full[n % 4](&csc, &cs[draw[3] % 3], &cs[draw[4] % 3], in, out, &ccp, bits, 8 + draw[5] % 23), &csc);
    add(swapped[n % 4](&csc, &cs[n % 3], in, out, &ccp, bits, static_cast<swap_in>(draw[6] % 6),
                       static_cast<swap_out>(draw[7] % 6)),
        &csc);
  }
}

void cinema(Results &results) {
  Random random;
  const auto add = [&results](const vexo_vector &v, auto convert) {
    vexo_vector copy = v;
    convert(&copy);
    results.add(copy);
  };
  using Coding = void (*)(vexo_vector *, unsigned);
  const Coding codings[] = {vexo_dcine_XYZq_xyz, vexo_dcine_xyz_XYZq, vexo_dcine_RGBq_rgb, vexo_dcine_rgb_RGBq,
                            vexo_dcine_XYZq_XYZ, vexo_dcine_XYZ_XYZq, vexo_dcine_RGBq_RGB, vexo_dcine_RGB_RGBq,
                            vexo_dcine_XYZ_xyz,  vexo_dcine_xyz_XYZ,  vexo_dcine_RGB_rgb,  vexo_dcine_rgb_RGB};
  for (unsigned n = 0; n < 200; n++) {
    const unsigned bits = 1 + n % 31;
    const bool codes = n % 2 == 0;
    const vexo_vector v = random.vector(0.0F, codes ? std::ldexp(1.0F, static_cast<int>(bits)) : 1.0F);
    for (const Coding coding : codings) {
      add(v, [&](vexo_vector *copy) { coding(copy, bits); });
    }
    add(v, vexo_dcine_rgb_xyz);
    add(v, vexo_dcine_xyz_rgb);
    add(v, [&](vexo_vector *copy) { vexo_dcine_RGBq_XYZq(copy, bits); });
    add(v, [&](vexo_vector *copy) { vexo_dcine_XYZq_RGBq(copy, bits); });
    vexo_matrix m;
    vexo_dcine_XYZ_RGB_matrix(&m, bits);
    results.add(m);
    vexo_dcine_RGB_XYZ_matrix(&m, bits);
    results.add(m);
  }
}

// The sample panel calibrated, and what its context predicts.
struct Calibration {
  Calibration(decltype(&vexo_data_alignment) recipe, vexo_gamma camera, vexo_gamma system, vexo_vector white) {
    vexo_load_lcnr_xml(&panel.lcnr, VEXO_EXAMPLES "/sample-panel.xml");
    status = recipe(luts.lut, &panel, &camera, &system, &white);
  }
  vexo panel = {};
  Luts luts;
  int status;
};

void calibration(Results &results) {
  Random random;
  const vexo_vector whites[] = {kWhite, {{0.2831F, 0.2971F, 0.4198F}}, {{0.3457F, 0.3585F, 0.2958F}}};
  for (const auto &recipe : {vexo_generate_lut, vexo_data_alignment}) {
    for (int n = 0; n < 3; n++) {
      Calibration done(recipe, kCurves[n == 1 ? 2 : 0], kCurves[n == 1 ? 3 : 1], whites[n]);
      results.add(done.status);
      done.luts.add_to(results);
      results.add(&done.panel.data[0][0][0], 9 * 1024);
      results.add(done.panel.maxY, 3);
      for (int i = 0; i < 100; i++) {
        vexo_vector v = {};
        results.add(vexo_data_Y_xyY(&v, done.panel.data[i % 3], random(0.0F, 1.0F)));
        results.add(v);
        const vexo_vector at = random.vector(0.0F, 1023.0F);
        vexo_lut_get_xyY(&v, &done.panel, done.luts.lut, at.d[0], at.d[1], at.d[2]);
        results.add(v);
        results.add(vexo_sample_2_luminance(at.d[0], 1023.0F, 300.0F, random(1.0F, 3.0F)));
      }
      vexo_vector white = whites[2 - n];
      vexo_lut_adjust_wb(done.luts.lut, &done.panel, &white);
      done.luts.add_to(results);
      vexo_lut_adjust_wb_2(done.luts.lut, &done.panel, &white);
      done.luts.add_to(results);
    }
  }
  float samples[100];
  vexo_create_samples(samples, 100, 10);
  results.add(samples, 100);
}

Lut colourful(int size) {
  Random random;
  return table(size, "film", [&random](int, int, int) { return random.vector(-0.05F, 1.05F); });
}

void resampling(Results &results) {
  const Lut source = colourful(9);
  for (const int size : {2, 5, 9, 17, 20}) {
    results.add(Lut(vexo_3dlut_dup(source.get(), size, nullptr)).get());
  }
  const Lut unit(vexo_3dlut_create(33, nullptr));
  vexo_3dlut_init_unit(unit.get());
  results.add(unit.get());
}

void writers_3d(Results &results) {
  const Lut lut = colourful(8);
  const Lut wide = colourful(33);
  using Writer = int (*)(vexo_3dlut *, FILE *, int);
  const Writer writers[] = {vexo_3dlut_dump_dat, vexo_3dlut_dump_old_dat, vexo_3dlut_dump_coe, vexo_3dlut_dump_debug,
                            vexo_3dlut_dump_1dlut_debug};
  diagnostics([&] { // the old lattice prints its scale
    for (const Writer writer : writers) {
      for (const int bits : {3, 8, 10}) {
        results.add_text([&](FILE *f) { results.add(writer(lut.get(), f, bits)); });
      }
    }
  });
  results.add_text([&](FILE *f) { vexo_3dlut_dump_dat_12bit(wide.get(), f, 12); });
  results.add_text([&](FILE *f) { vexo_3dlut_dump_cfe(lut.get(), f, nullptr, nullptr); });
  std::string cube = printed([&](FILE *f) { vexo_3dlut_dump_cube(wide.get(), f); });
  results.add_text([&](FILE *f) { fputs(cube.c_str(), f); });
  results.add(Lut(vexo_3dlut_cube_load_buf(cube.data(), static_cast<int>(cube.size()))).get());
}

void writers(Results &results) {
  char prefix[] = "vector";
  Calibration done(vexo_data_alignment, kCurves[0], kCurves[1], kWhite);
  vexo_lut *luts = done.luts.lut;
  vexo_cs cs;
  vexo_cs_init(&cs, kPrimaries[0]);
  vexo_ccp ccp;
  vexo_ccp_init(&ccp);
  vexo_csc csc;
  vexo_csc_rgb_ycbcr(&csc, &cs, RGB_GRAPHIC_RANGE, YCBCR_VIDEO_RANGE, &ccp, 10);
  vexo_csc_reg reg;
  vexo_csc_float_reg(&csc, &reg);
  results.add_text([&](FILE *f) {
    vexo_data_dump(f, done.panel.data, prefix);
    vexo_lcnr_dump(f, &done.panel.lcnr, prefix);
    vexo_dump_gray(f, &done.panel);
    vexo_lut_dump_gray(f, &done.panel, luts);
    vexo_lut_dump_gray_gamma(f, &done.panel, luts);
    vexo_lut_dump(f, luts, prefix);
    vexo_cs_dump(f, &cs, prefix);
    vexo_cs_store(f, &cs);
    vexo_csc_dump(f, &csc, prefix);
    vexo_csc_reg_dump(f, &reg, prefix);
    vexo_matrix_store(f, &cs.npm);
    vexo_vector_store(f, &cs.r);
    for (const int bits : {1, 10, 16, 30}) {
      vexo_luts_store_int(f, luts, bits);
      vexo_lut_dump_int(f, luts, bits, prefix);
      vexo_lut_dump_int3(f, luts, bits, prefix);
    }
  });
  const TemporaryFolder folder;
  const std::string path = folder.path("panel.xml");
  vexo_store_lcnr_xml(&done.panel.lcnr, path.c_str());
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  results.add_text([&](FILE *f) { fputs(text.str().c_str(), f); });
}

const struct {
  const char *name;
  void (*run)(Results &);
} kFamilies[] = {{"matrices", matrices},       {"colorimetry", colorimetry}, {"colour-spaces", colour_spaces},
                 {"curves", curves},           {"conversions", conversions}, {"cinema", cinema},
                 {"calibration", calibration}, {"resampling", resampling},   {"3d-writers", writers_3d},
                 {"writers", writers}};

TEST(Vectors, EveryFamily) {
  std::ostringstream lines;
  for (const auto &family : kFamilies) {
    Results results;
    family.run(results);
    lines << results.line(family.name) << '\n';
  }
  if (std::getenv("VEXO_WRITE_VECTORS") != nullptr) {
    std::ofstream(VEXO_VECTORS) << lines.str();
  }
  std::ostringstream expected;
  expected << std::ifstream(VEXO_VECTORS).rdbuf();
  EXPECT_EQ(lines.str(), expected.str()); // family, results, digest
}

} // namespace
