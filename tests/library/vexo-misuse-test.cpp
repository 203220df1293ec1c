// Every family with arguments that no caller means: tables of no and of one entry, NaN, infinities, -0, denormal and
// huge numbers in every float, numbers that no enumeration has. Calls return; that they stay within their records the
// sanitizers tell.
#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <cmath>
#include <memory>
#include <random>
#include <vector>

#include "lut3d.h"
#include "text.h"
#include "vexo-cs.h"
#include "vexo-csc.h"
#include "vexo-dcine.h"
#include "vexo-util.h"
#include "vexo.h"

namespace {

std::mt19937 random_bits(9);

int any_of(std::initializer_list<int> values) { return values.begin()[random_bits() % values.size()]; }
int any_int() { return any_of({INT_MIN, -1, 0, 1, 2, 3, 7, 8, 10, 12, 30, 31, 32, 64, 65, INT_MAX}); }

float any_float() {
  static const float kAwkward[] = {NAN,     -NAN,       INFINITY, -INFINITY, 0.0F,    -0.0F,  1e-45F,
                                   -1e-40F, FLT_MIN,    FLT_MAX,  -FLT_MAX,  1e30F,   0.5F,   1.0F,
                                   -1.0F,   1.0000001F, 0.3F,     2.2F,      1023.0F, 1023.5F};
  return kAwkward[random_bits() % std::size(kAwkward)];
}

void fill(float *x, size_t count, bool odd) {
  for (size_t i = 0; i < count; i++) {
    x[i] = odd || random_bits() % 64 == 0 ? any_float() : static_cast<float>(i) / static_cast<float>(count);
  }
}

vexo_vector any_vector() { return vexo_vector{{any_float(), any_float(), any_float()}}; }
vexo_gamma any_gamma() { return vexo_gamma{any_float(), any_float(), any_float(), any_float()}; }

// Tables whose storage ends where they end.
struct Luts {
  explicit Luts(int size) {
    for (int c = 0; c < 3; c++) {
      d[c] = std::make_unique<float[]>(static_cast<size_t>(size));
      fill(d[c].get(), static_cast<size_t>(size), random_bits() % 2 == 0);
      lut[c] = vexo_lut{size, d[c].get()};
    }
  }
  std::unique_ptr<float[]> d[3];
  vexo_lut lut[3];
};

void misuse_vectors() {
  vexo_vector a = any_vector();
  vexo_vector b = any_vector();
  vexo_vector c = any_vector();
  vexo_matrix m = {};
  vexo_matrix n = {};
  fill(&m.d[0][0], 9, true);
  vexo_matrix_invert(&n, &m);
  vexo_matrix_multiply(&m, &n);
  vexo_matrix_normalize(&m, any_int());
  vexo_vector_div(&a, &b);
  vexo_vector_normalize(&b, any_int());
  vexo_vector_get_middle(&c);
  for (const auto &convert : {vexo_XYZ_valid, vexo_XYZ_xyz, vexo_XYZ_xyY, vexo_XYZ_uvY, vexo_XYZ_CCT, vexo_xyY_XYZ,
                              vexo_xyY_uvY, vexo_Lab_LCH}) {
    a = any_vector();
    convert(&a);
  }
  for (const auto &compare : {vexo_XYZ_DEab, vexo_XYZ_DEuv, vexo_XYZ_DE2000}) {
    compare(&a, &b, &c);
  }
  for (const auto &convert : {vexo_XYZ_Lab, vexo_XYZ_Luv, vexo_XYZ_LCH, vexo_uvY_XYZ}) {
    convert(&a, &b);
  }
  vexo_XYZ_Lstar(&a, any_float());
  vexo_xyY_mix_3(&a, &b, &c, &a);
  float columns[3][2];
  fill(columns[0], 6, true);
  float *XYZ[3] = {columns[0], columns[1], columns[2]};
  vexo_XYZ_xyY_array(any_of({INT_MIN, -1, 0, 1, 2}), XYZ);
  float corners[2][2][2];
  fill(&corners[0][0][0], 8, true);
  trilinear_inter(a.d, corners);
  for (const auto &code : {vexo_dcine_XYZq_xyz, vexo_dcine_xyz_XYZq, vexo_dcine_XYZ_XYZq, vexo_dcine_RGB_rgb}) {
    code(&a, static_cast<unsigned>(any_int()));
  }
  vexo_dcine_RGBq_XYZq(&a, static_cast<unsigned>(any_int()));
  vexo_dcine_XYZ_RGB_matrix(&m, static_cast<unsigned>(any_int()));
}

void misuse_spaces(FILE *f) {
  vexo_cs cs[2];
  float xy[4][2];
  float patch[5][3];
  vexo_matrix m;
  vexo_vector v[3];
  for (vexo_cs &space : cs) {
    fill(xy[0], 8, random_bits() % 4 != 0);
    vexo_matrix_init(&space.npm);
    vexo_cs_init(&space, xy);
  }
  vexo_cs_transform(&m, &cs[0], &cs[1]);
  vexo_cs_chad_transform(&m, &cs[0], &cs[1]);
  vexo_cs_area(&cs[0]);
  vexo_cs_secondary(&cs[0], &v[0], nullptr, &v[2]);
  vexo_csc csc = {};
  vexo_ccp ccp = {any_float(), any_float(), any_float(), any_float(), any_vector(), any_vector(), {}};
  vexo_csc_reg reg;
  const auto range = [] { return static_cast<color_range>(any_of({-1, 0, 1, 2, 3, 4, 5, 6, 7, 8, INT_MAX})); };
  for (const auto &build : {_vexo_csc_rgb_ycbcr, _vexo_csc_ycbcr_rgb, _vexo_csc_rgb_rgb, _vexo_csc_ycbcr_ycbcr}) {
    build(&csc, &cs[0], &cs[1], range(), range(), &ccp, any_int(), any_int());
    vexo_csc_float_reg(&csc, &reg);
  }
  vexo_csc_rgb_rgb2(&csc, &cs[0], range(), range(), &ccp, 10, static_cast<swap_in>(any_int()),
                    static_cast<swap_out>(any_int()));
  vexo_csc_dump(f, &csc, nullptr);
  fill(patch[0], 15, random_bits() % 2 == 0);
  vexo_adjust_wb(patch[0], patch[1], patch[2], patch[3], patch[4], any_float(), &v[0]);
  float codes[3] = {any_float(), any_float(), any_float()};
  unsigned short most[3] = {0, 1023, 65535};
  vexo_panel_gray_point_adjust(patch[0], patch[1], codes, most);
  vexo_panel_cs_gray_point_adjust(patch[0], patch[1], patch[2], patch[3], patch[4], patch[3], codes, most);
}

void misuse_curves(FILE *f) {
  Luts a(any_of({0, 1, 2, 3, 33, 1500}));
  Luts b(any_of({0, 1, 2, 3, 33}));
  Luts out(any_of({0, 1, 2, 3, 33}));
  vexo_gamma camera = any_gamma();
  vexo_gamma system = any_gamma();
  vexo_gamma_evaluate(&camera, any_float());
  vexo_gamma_inverse(&camera, any_float());
  vexo_lut_evaluate(&a.lut[0], any_float());
  vexo_lut_inverse(&a.lut[0], any_float());
  vexo_lut_dup(&out.lut[0], &a.lut[0]);
  vexo_convert_lut(&out.lut[1], &a.lut[1]);
  vexo_lut_merge(&a.lut[0], &b.lut[1], &out.lut[2]);
  vexo_gamma_lut_invert(&b.lut[0], &camera, &system, &a.lut[0]);
  vexo_gamma_lut_invert_2(&b.lut[1], &camera, &system, &a.lut[1]);
  vexo_gamma_generate_lut(&camera, &system, &b.lut[2]);
  vexo_lut_by_gamma(&camera, &a.lut[2]);
  vexo_lut_inverse_gamma(&camera, &a.lut[2]);
  vexo_lut_data_normalize(b.lut[0].d, b.lut[0].size);
  auto codes = std::make_unique<unsigned short[]>(static_cast<size_t>(b.lut[0].size));
  vexo_lut_to_uint(&b.lut[0], codes.get(), any_int());
  vexo_lut_dump(f, &b.lut[0], nullptr);
  vexo_lut_dump_int(f, &b.lut[0], any_int(), nullptr);
  vexo_lut_dump_int3(f, b.lut, any_int(), nullptr);
  vexo_luts_store_int(f, b.lut, any_int());
  float samples[3];
  vexo_create_samples(samples, any_of({INT_MIN, 0, 1, 2, 3}), any_int());
  vexo_sample_2_luminance(any_float(), any_float(), any_float(), any_float());
}

void misuse_panels(FILE *f) {
  const auto panel = std::make_unique<vexo>();
  const bool odd = random_bits() % 3 == 0;
  fill(&panel->lcnr.data[0][0][0], 9 * 64, odd);
  fill(panel->lcnr.sample, 64, odd);
  panel->lcnr.sample[0] = 0.0F;
  panel->lcnr.num = any_of({INT_MIN, -1, 0, 1, 2, 33, 64, 65, INT_MAX});
  vexo_gamma camera = any_gamma();
  vexo_gamma system = any_gamma();
  vexo_vector v = any_vector();
  vexo_vector white = random_bits() % 2 == 0 ? any_vector() : vexo_vector{{0.3127F, 0.3290F, 0.3583F}};
  Luts luts(any_of({0, 1, 2, 5, 1024}));
  Luts levels(1024);
  vexo_lcnr_sanity_check(&panel->lcnr);
  vexo_lcnr_dump(f, &panel->lcnr, nullptr);
  vexo_generate_lut(luts.lut, panel.get(), &camera, &system, &white);
  vexo_data_alignment(levels.lut, panel.get(), &camera, &system, &white);
  vexo_lcnr_normalize(&panel->lcnr);
  fill(&panel->data[0][0][0], 9 * 1024, odd); // tables that no measurements make
  fill(panel->maxY, 3, true);
  vexo_peak_white_adjust(&v, panel.get(), &white);
  vexo_lut_adjust_wb_2(luts.lut, panel.get(), &white);
  vexo_generate_lcnr_invert_lut(luts.lut, panel->data, &camera, &system);
  vexo_data_Y_xyY(&v, panel->data[0], any_float());
  vexo_get_xyY(&v, panel.get(), any_float(), any_float(), any_float());
  vexo_lut_get_xyY(&v, panel.get(), luts.lut, any_float(), any_float(), any_float());
  vexo_lut_dump_gray(f, panel.get(), luts.lut);
  vexo_lut_dump_gray_gamma(f, panel.get(), luts.lut);
  vexo_dump_gray(f, panel.get());
}

void misuse_tables(FILE *f) {
  EXPECT_EQ(vexo_3dlut_create(any_of({INT_MIN, -1, 0}), "x"), nullptr);
  const Lut lut = table(any_of({1, 2, 3, 5}), nullptr, [](int, int, int) { return any_vector(); });
  vexo_vector v = any_vector();
  vexo_3dlut_item(lut.get(), any_int(), any_int(), any_int());
  vexo_3dlut_set_item(lut.get(), &v, any_int(), any_int(), any_int());
  const Lut other(vexo_3dlut_dup(lut.get(), any_of({INT_MIN, -1, 0, 1, 2, 3, 4, 9}), nullptr));
  for (const auto &write : {vexo_3dlut_dump_dat, vexo_3dlut_dump_dat_12bit, vexo_3dlut_dump_old_dat,
                            vexo_3dlut_dump_coe, vexo_3dlut_dump_debug, vexo_3dlut_dump_1dlut_debug}) {
    write(lut.get(), f, any_int());
  }
  vexo_3dlut_dump_cube(lut.get(), f);
  vexo_3dlut_load_eecolor(f, any_of({INT_MIN, -1, 0, 1, 2}));
}

TEST(Misuse, EveryFamily) {
  FILE *f = fopen("/dev/null", "w+");
  diagnostics([f] {
    for (int n = 0; n < 2000; n++) {
      misuse_vectors();
      misuse_spaces(f);
      misuse_curves(f);
      if (n % 10 == 0) {
        misuse_panels(f);
      }
      misuse_tables(f);
    }
  });
  fclose(f);
}

} // namespace
