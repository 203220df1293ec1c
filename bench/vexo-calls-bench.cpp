// Every function that the other files do not set beside a plain form, a call at a time, by job.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <type_traits>

#include "lut3d.h"
#include "panel-model.h"
#include "vexo-cs.h"
#include "vexo-csc.h"
#include "vexo-dcine.h"
#include "vexo-gamma.h"
#include "vexo-matrix.h"
#include "vexo-util.h"
#include "vexo.h"

namespace {

const vexo_vector kColor = {{0.3F, 0.4F, 0.2F}};
const vexo_matrix kMatrix = {{{0.41F, 0.36F, 0.18F}, {0.21F, 0.72F, 0.07F}, {0.02F, 0.12F, 0.95F}}};

// What the calls work on. The vector and the matrix are as above at each call, whatever the last one made of them.
vexo_vector v, u = {{0.2F, 0.5F, 0.3F}}, w = {{0.9505F, 1.0F, 1.089F}}, s[3];
vexo_matrix m, n = kMatrix;
float grid[2][2][2] = {{{0.1F, 0.2F}, {0.3F, 0.4F}}, {{0.5F, 0.6F}, {0.7F, 0.8F}}};
float at[3] = {0.25F, 0.5F, 0.75F};
float primaries[4][2] = {{0.64F, 0.33F}, {0.30F, 0.60F}, {0.15F, 0.06F}, {0.3127F, 0.3290F}};
float measured[5][3] = {
    {41.2F, 21.3F, 1.9F}, {35.8F, 71.5F, 11.9F}, {18.0F, 7.2F, 95.0F}, {95.0F, 100.0F, 108.8F}, {0.1F, 0.1F, 0.1F}};
float codes[3] = {900.0F, 950.0F, 1000.0F};
float ramp[1024];
unsigned short shorts[1024];
unsigned short limits[3] = {1023, 1023, 1023};
int knots[] = {0, 100, 500, 1023};
float knot_values[] = {0.0F, 0.1F, 0.4F, 1.0F};
vexo_cs cs, other_cs;
vexo_csc csc;
vexo_ccp ccp;
vexo_csc_reg reg;
vexo_gamma curve, linear;
vexo_lut luts[3], small[3];
vexo panel;
char word[] = "word";
FILE *sink;

struct Start {
  Start() {
    sink = fopen("/dev/null", "w");
    vexo_cs_init(&cs, primaries);
    vexo_cs_init(&other_cs, primaries);
    vexo_ccp_init(&ccp);
    vexo_csc_init(&csc);
    vexo_gamma_init(&curve, 2.2F);
    vexo_gamma_init(&linear, 1.0F);
    for (int c = 0; c < 3; c++) {
      vexo_lut_init_with_gamma(&luts[c], 1024, 2.2F);
      vexo_lut_init_with_gamma(&small[c], 256, 2.2F);
    }
    memcpy(ramp, luts[0].d, sizeof ramp);
    panel.lcnr = panel_model::sample_panel();
    vexo_vector white = {{0.3096F, 0.3191F, 0.3713F}};
    vexo_lut scratch[3];
    for (vexo_lut &lut : scratch) {
      vexo_lut_init(&lut, 1024);
    }
    vexo_generate_lut(scratch, &panel, &linear, &curve, &white);
    for (vexo_lut &lut : scratch) {
      vexo_lut_destroy(&lut);
    }
  }
};
const Start started;

template <typename Function, typename... Arguments> int timed(const char *name, Function call, Arguments... arguments) {
  benchmark::RegisterBenchmark(name, [call, arguments...](benchmark::State &state) {
    for (auto _ : state) {
      v = kColor;
      m = kMatrix;
      if constexpr (std::is_void_v<decltype(call(arguments...))>) {
        call(arguments...);
      } else {
        benchmark::DoNotOptimize(call(arguments...));
      }
      benchmark::ClobberMemory();
    }
  });
  return 0;
}

// A reader of what store(stream) writes.
template <typename Store, typename Read> int timed_reader(const char *name, Store store, Read read) {
  benchmark::RegisterBenchmark(name, [store, read](benchmark::State &state) {
    FILE *f = tmpfile();
    store(f);
    for (auto _ : state) {
      rewind(f);
      benchmark::DoNotOptimize(read(f));
    }
    fclose(f);
  });
  return 0;
}

int by_file(const char *suffix, void (*store)(const char *path), void (*load)(const char *path)) {
  const std::string name = std::string("file/") + suffix;
  benchmark::RegisterBenchmark(name.c_str(), [store, load](benchmark::State &state) {
    char path[] = "/tmp/vexo-bench-XXXXXX";
    fclose(fdopen(mkstemp(path), "w"));
    store(path);
    for (auto _ : state) {
      load(path);
    }
    remove(path);
  });
  return 0;
}

vexo_3dlut *cube() {
  static vexo_3dlut *lut = vexo_3dlut_create(33, "look");
  return lut;
}

void store_3dlut(const char *path, void (*dump)(FILE *f)) {
  FILE *f = fopen(path, "w");
  dump(f);
  fclose(f);
}

#define TIMED(group, function, ...) timed(group "/" #function, function, __VA_ARGS__)

const int registered[] = {
    TIMED("vectors", vexo_vector_init, &v),
    TIMED("vectors", vexo_vector_copy, &v, &u),
    TIMED("vectors", vexo_vector_set_xy, &v, at),
    TIMED("vectors", vexo_vector_set_xyz, &v, at),
    TIMED("vectors", vexo_vector_add, &v, &u),
    TIMED("vectors", vexo_vector_sub, &v, &u),
    TIMED("vectors", vexo_vector_div, &v, &u),
    TIMED("vectors", vexo_vector_scale, &v, 0.5F),
    TIMED("vectors", vexo_vector_normalize, &v, 0),
    TIMED("vectors", vexo_vector_sum, &v),
    TIMED("vectors", vexo_vector_get_middle, &v),
    TIMED("vectors", vexo_vector_dump, sink, &v, word),
    TIMED("vectors", vexo_vector_store, sink, &v),
    timed_reader(
        "vectors/vexo_vector_load", [](FILE *f) { vexo_vector_store(f, &u); },
        [](FILE *f) { return vexo_vector_load(f, &v); }),
    TIMED("matrices", vexo_matrix_init, &m),
    TIMED("matrices", vexo_matrix_copy, &m, &n),
    TIMED("matrices", vexo_matrix_multiply, &m, &n),
    TIMED("matrices", vexo_matrix_transform, &m, &v),
    TIMED("matrices", vexo_matrix_set_column, &m, &u, 1),
    TIMED("matrices", vexo_matrix_set_row, &m, &u, 1),
    TIMED("matrices", vexo_matrix_get_row, &m, &v, 1),
    TIMED("matrices", vexo_matrix_normalize, &m, 0),
    TIMED("matrices", vexo_matrix_invert, &m, &n),
    TIMED("matrices", vexo_matrix_dump, sink, &m, word),
    TIMED("matrices", vexo_matrix_store, sink, &m),
    timed_reader(
        "matrices/vexo_matrix_load", [](FILE *f) { vexo_matrix_store(f, &n); },
        [](FILE *f) { return vexo_matrix_load(f, &m); }),
    TIMED("interpolation", linear_inter, 0.25F, grid[0][0]),
    TIMED("interpolation", bilinear_inter, at, grid[0]),
    TIMED("interpolation", trilinear_inter, at, grid),

    TIMED("colorimetry", vexo_XYZ_valid, &v),
    TIMED("colorimetry", vexo_XYZ_xyz, &v),
    TIMED("colorimetry", vexo_XYZ_xyY, &v),
    timed("colorimetry/vexo_XYZ_xyY_array",
          [] {
            static float columns[3][1024];
            for (auto &column : columns) {
              memcpy(column, ramp, sizeof ramp);
            }
            float *pointers[] = {columns[0], columns[1], columns[2]};
            return vexo_XYZ_xyY_array(1024, pointers);
          }),
    TIMED("colorimetry", vexo_XYZ_uvY, &v),
    TIMED("colorimetry", vexo_xyY_XYZ, &v),
    TIMED("colorimetry", vexo_xyY_uvY, &v),
    TIMED("colorimetry", vexo_uvY_XYZ, &v, &u),
    TIMED("colorimetry", vexo_XYZ_mix, &v, &u, s),
    TIMED("colorimetry", vexo_xyY_mix, &v, &u, s),
    TIMED("colorimetry", vexo_xyY_mix_3, &v, &u, &u, s),
    TIMED("colorimetry", vexo_xyz_cct, u.d),
    TIMED("colorimetry", vexo_XYZ_Lstar, &v, 1.0F),
    TIMED("colorimetry", vexo_XYZ_Luv, &v, &w),
    TIMED("colorimetry", vexo_XYZ_LCH, &v, &w),
    TIMED("colorimetry", vexo_Lab_LCH, &v),
    TIMED("colorimetry", vexo_XYZ_DEuv, &v, &u, &w),
    TIMED("colorimetry", vexo_XYZ_DEab, &v, &u, &w),
    TIMED("colorimetry", vexo_XYZ_DE2000, &v, &u, &w),

    TIMED("spaces", vexo_cs_init, &cs, primaries),
    TIMED("spaces", vexo_cs_init_XYZ, &other_cs, measured[0], measured[1], measured[2], measured[3], measured[4]),
    TIMED("spaces", vexo_cs_set_r, &cs, 0.64F, 0.33F),
    TIMED("spaces", vexo_cs_set_g, &cs, 0.30F, 0.60F),
    TIMED("spaces", vexo_cs_set_b, &cs, 0.15F, 0.06F),
    TIMED("spaces", vexo_cs_set_w, &cs, 0.3127F, 0.3290F),
    TIMED("spaces", vexo_cs_matrix, &cs, &m),
    TIMED("spaces", vexo_cs_transform, &m, &cs, &other_cs),
    TIMED("spaces", vexo_cs_area, &cs),
    TIMED("spaces", vexo_cs_secondary, &cs, &s[0], &s[1], &s[2]),
    TIMED("spaces", vexo_chad_transform, &m, &u, &w),
    TIMED("spaces", vexo_cs_chad_transform, &m, &cs, &other_cs),
    TIMED("spaces", vexo_cs_dump, sink, &cs, word),
    TIMED("spaces", vexo_cs_store, sink, &cs),
    timed_reader(
        "spaces/vexo_cs_load", [](FILE *f) { vexo_cs_store(f, &cs); },
        [](FILE *f) { return vexo_cs_load(f, &other_cs); }),

    TIMED("cinema", vexo_dcine_XYZq_xyz, &v, 12U),
    TIMED("cinema", vexo_dcine_xyz_XYZq, &v, 12U),
    TIMED("cinema", vexo_dcine_RGBq_rgb, &v, 12U),
    TIMED("cinema", vexo_dcine_rgb_RGBq, &v, 12U),
    TIMED("cinema", vexo_dcine_rgb_xyz, &v),
    TIMED("cinema", vexo_dcine_xyz_rgb, &v),
    TIMED("cinema", vexo_dcine_RGBq_XYZq, &v, 12U),
    TIMED("cinema", vexo_dcine_XYZq_RGBq, &v, 12U),
    TIMED("cinema", vexo_dcine_XYZq_XYZ, &v, 12U),
    TIMED("cinema", vexo_dcine_XYZ_XYZq, &v, 12U),
    TIMED("cinema", vexo_dcine_RGBq_RGB, &v, 12U),
    TIMED("cinema", vexo_dcine_RGB_RGBq, &v, 12U),
    TIMED("cinema", vexo_dcine_XYZ_xyz, &v, 12U),
    TIMED("cinema", vexo_dcine_xyz_XYZ, &v, 12U),
    TIMED("cinema", vexo_dcine_RGB_rgb, &v, 12U),
    TIMED("cinema", vexo_dcine_rgb_RGB, &v, 12U),
    TIMED("cinema", vexo_dcine_XYZ_RGB_matrix, &m, 12U),
    TIMED("cinema", vexo_dcine_RGB_XYZ_matrix, &m, 12U),

    TIMED("curves", vexo_gamma_init, &curve, 2.2F),
    TIMED("curves", vexo_gamma_evaluate, &curve, 0.3F),
    TIMED("curves", vexo_gamma_inverse, &curve, 0.3F),
    TIMED("curves", vexo_lut_by_gamma, &curve, &small[0]),
    TIMED("curves", vexo_lut_by_linear_gamma, &small[0]),
    TIMED("curves", vexo_lut_inverse_gamma, &curve, &small[0]),
    TIMED("curves", vexo_gamma_generate_lut, &linear, &curve, &small[0]),
    TIMED("curves", vexo_gamma_lut_invert_2, &small[0], &linear, &curve, &luts[0]),
    timed("luts/vexo_lut_init and destroy",
          [] {
            vexo_lut lut;
            const int status = vexo_lut_init(&lut, 1024);
            vexo_lut_destroy(&lut);
            return status;
          }),
    timed("luts/vexo_lut_init_zero and destroy",
          [] {
            vexo_lut lut;
            const int status = vexo_lut_init_zero(&lut, 1024);
            vexo_lut_destroy(&lut);
            return status;
          }),
    TIMED("luts", vexo_lut_set_data, &luts[0], ramp),
    TIMED("luts", vexo_lut_evaluate, &luts[0], 300.3F),
    TIMED("luts", vexo_lut_dup, &small[0], &luts[0]),
    TIMED("luts", vexo_convert_lut, &small[0], &luts[0]),
    TIMED("luts", vexo_lut_merge, &luts[0], &luts[1], &small[0]),
    TIMED("luts", vexo_interpolate_linear, 4, knots, knot_values, ramp),
    TIMED("luts", vexo_data_normalize, ramp, 1024),
    TIMED("luts", vexo_lut_data_normalize, ramp, 1024),
    TIMED("luts", vexo_lut_to_uint, &luts[0], shorts, 12),
    TIMED("luts", vexo_lut_dump, sink, &luts[0], word),
    TIMED("luts", vexo_lut_dump_int, sink, &luts[0], 12, word),
    TIMED("luts", vexo_lut_dump_int3, sink, luts, 12, word),
    timed_reader(
        "luts/vexo_lut_load_custom",
        [](FILE *f) {
          for (int i = 0; i < 1024; i++) {
            fprintf(f, "%f\n", static_cast<double>(i));
          }
        },
        [](FILE *f) {
          vexo_lut lut;
          const int status = vexo_lut_load_custom(f, &lut);
          vexo_lut_destroy(&lut);
          return status;
        }),

    TIMED("calibration", vexo_lcnr_normalize, &panel.lcnr),
    TIMED("calibration", vexo_lcnr_sanity_check, &panel.lcnr),
    TIMED("calibration", vexo_get_xyY, &v, &panel, 700.5F, 650.0F, 800.25F),
    TIMED("calibration", vexo_lut_get_xyY, &v, &panel, luts, 700.5F, 650.0F, 800.25F),
    TIMED("calibration", vexo_lut_adjust_wb, small, &panel, &u),
    TIMED("calibration", vexo_lut_adjust_wb_2, small, &panel, &u),
    TIMED("calibration", vexo_adjust_wb, measured[0], measured[1], measured[2], measured[3], measured[4], 1.0F, &v),
    TIMED("calibration", vexo_generate_lcnr_invert_lut, luts, panel.data, &linear, &curve),
    TIMED("calibration", vexo_panel_gray_point_adjust, measured[3], measured[3], codes, limits),
    TIMED("calibration", vexo_panel_cs_gray_point_adjust, measured[0], measured[1], measured[2], measured[3],
          measured[4], measured[3], codes, limits),
    TIMED("calibration", vexo_create_samples, ramp, 33, 10),
    TIMED("calibration", vexo_sample_2_luminance, 300.0F, 1023.0F, 100.0F, 2.2F),
    TIMED("calibration", vexo_data_dump, sink, panel.data, word),
    TIMED("calibration", vexo_dump_gray, sink, &panel),
    TIMED("calibration", vexo_lut_dump_gray, sink, &panel, luts),
    TIMED("calibration", vexo_lut_dump_gray_gamma, sink, &panel, luts),
    TIMED("calibration", vexo_lcnr_dump, sink, &panel.lcnr, word),
    TIMED("calibration", vexo_store_lcnr_xml, &panel.lcnr, "/dev/null"),

    TIMED("conversions", vexo_ccp_init, &ccp),
    TIMED("conversions", vexo_csc_init, &csc),
    TIMED("conversions", vexo_csc_copy, &csc, &csc),
    TIMED("conversions", vexo_csc_prev_matrix, &csc, &m),
    TIMED("conversions", vexo_csc_post_matrix, &csc, &m),
    TIMED("conversions", vexo_csc_transfrom, &csc, &v),
    TIMED("conversions", _vexo_csc_rgb_ycbcr, &csc, &cs, &cs, RGB_GRAPHIC_RANGE, YCBCR_VIDEO_RANGE, &ccp, 10, 10),
    TIMED("conversions", _vexo_csc_ycbcr_rgb, &csc, &cs, &cs, YCBCR_VIDEO_RANGE, RGB_GRAPHIC_RANGE, &ccp, 10, 10),
    TIMED("conversions", _vexo_csc_rgb_rgb, &csc, &cs, &cs, RGB_VIDEO_RANGE, RGB_GRAPHIC_RANGE, &ccp, 10, 10),
    TIMED("conversions", _vexo_csc_ycbcr_ycbcr, &csc, &cs, &cs, YCBCR_VIDEO_RANGE, YCBCR_FULL_RANGE, &ccp, 10, 10),
    TIMED("conversions", vexo_csc_rgb_ycbcr2, &csc, &cs, RGB_GRAPHIC_RANGE, YCBCR_VIDEO_RANGE, &ccp, 10, SWAP_IN_BGR,
          SWAP_OUT_BGR),
    TIMED("conversions", vexo_csc_ycbcr_rgb2, &csc, &cs, YCBCR_VIDEO_RANGE, RGB_GRAPHIC_RANGE, &ccp, 10, SWAP_IN_BGR,
          SWAP_OUT_BGR),
    TIMED("conversions", vexo_csc_rgb_rgb2, &csc, &cs, RGB_VIDEO_RANGE, RGB_GRAPHIC_RANGE, &ccp, 10, SWAP_IN_BGR,
          SWAP_OUT_BGR),
    TIMED("conversions", vexo_csc_ycbcr_ycbcr2, &csc, &cs, YCBCR_VIDEO_RANGE, YCBCR_FULL_RANGE, &ccp, 10, SWAP_IN_BGR,
          SWAP_OUT_BGR),
    TIMED("conversions", vexo_csc_gbr_ycbcr, &csc, &cs, RGB_GRAPHIC_RANGE, YCBCR_VIDEO_RANGE, &ccp, 10),
    TIMED("conversions", vexo_csc_ycbcr_gbr, &csc, &cs, YCBCR_VIDEO_RANGE, RGB_GRAPHIC_RANGE, &ccp, 10),
    TIMED("conversions", vexo_csc_cbycr_rgb, &csc, &cs, YCBCR_VIDEO_RANGE, RGB_GRAPHIC_RANGE, &ccp, 10),
    TIMED("conversions", vexo_csc_rgb_cbycr, &csc, &cs, RGB_GRAPHIC_RANGE, YCBCR_VIDEO_RANGE, &ccp, 10),
    TIMED("conversions", vexo_csc_crycb_rgb, &csc, &cs, YCBCR_VIDEO_RANGE, RGB_GRAPHIC_RANGE, &ccp, 10),
    TIMED("conversions", vexo_csc_rgb_crycb, &csc, &cs, RGB_GRAPHIC_RANGE, YCBCR_VIDEO_RANGE, &ccp, 10),
    TIMED("conversions", vexo_csc_gbr_gbr, &csc, &cs, RGB_VIDEO_RANGE, RGB_GRAPHIC_RANGE, &ccp, 10),
    TIMED("conversions", vexo_csc_bgr_rgb, &csc, &cs, RGB_VIDEO_RANGE, RGB_GRAPHIC_RANGE, &ccp, 10),
    TIMED("conversions", vexo_csc_dump, sink, &csc, word),
    TIMED("conversions", vexo_csc_reg_dump, sink, &reg, word),

    timed("cubes/vexo_3dlut_create and destroy", [] { return Lut(vexo_3dlut_create(33, "look")) != nullptr; }),
    TIMED("cubes", vexo_3dlut_init_unit, cube()),
    TIMED("cubes", vexo_3dlut_size, cube()),
    TIMED("cubes", vexo_3dlut_title, cube()),
    TIMED("cubes", vexo_3dlut_set_title, cube(), word),
    TIMED("cubes", vexo_3dlut_item, cube(), 3, 4, 5),
    TIMED("cubes", vexo_3dlut_set_item, cube(), &u, 3, 4, 5),
    TIMED("cubes", vexo_3dlut_dump_cfe, cube(), sink, word, word),
    TIMED("cubes", vexo_3dlut_dump_dat_12bit, cube(), sink, 12),
    TIMED("cubes", vexo_3dlut_dump_old_dat, cube(), sink, 10),
    TIMED("cubes", vexo_3dlut_dump_1dlut_debug, cube(), sink, 10),
    timed_reader(
        "cubes/vexo_3dlut_dat_load_buf", [](FILE *f) { vexo_3dlut_dump_dat(cube(), f, 10); },
        [](FILE *f) {
          static uint8_t bytes[128 + 4 * 33 * 33 * 33];
          const size_t length = fread(bytes, 1, sizeof bytes, f);
          return Lut(vexo_3dlut_dat_load_buf(bytes, static_cast<int>(length))) != nullptr;
        }),
    by_file(
        "vexo_3dlut_dat_load_file",
        [](const char *path) { store_3dlut(path, [](FILE *f) { vexo_3dlut_dump_dat(cube(), f, 10); }); },
        [](const char *path) { Lut(vexo_3dlut_dat_load_file(path)); }),
    by_file(
        "vexo_3dlut_eecolor_load_file",
        [](const char *path) {
          store_3dlut(path, [](FILE *f) {
            for (int i = 0; i < 33 * 33 * 33; i++) {
              fputs("0.250000 0.500000 0.750000 0.125000 0.250000 0.500000\n", f);
            }
          });
        },
        [](const char *path) { Lut(vexo_3dlut_eecolor_load_file(path, 33)); }),
};

} // namespace
