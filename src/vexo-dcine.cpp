// Digital cinema coding (SMPTE ST 428-1, RP 431-2): power laws in double, everything else in single precision. The
// constants are single precision wherever they are used.
#include "vexo-dcine.h"

#include <cmath>

#include "base/codes.h"
#include "vexo-cs.h"

using vexo_internal::largest_code;

const float dcine_gamma = 2.6F;
const float dcine_v = 52.37F;
const float dcine_l = 48.0F;

namespace {

// The highest code of a depth; 0 for a depth that makes no codes.
int max_val(unsigned int nbits) { return nbits >= 1 && nbits <= 31 ? largest_code(static_cast<int>(nbits)) : 0; }

double decoded(float x) { return std::pow(static_cast<double>(x), static_cast<double>(dcine_gamma)); }

double coded(float x) { return std::pow(static_cast<double>(x), static_cast<double>(1.0F / dcine_gamma)); }

float linear_code(float code, int M) {
  return static_cast<float>(decoded(code / static_cast<float>(M)) * static_cast<double>(M));
}

float power_code(float code, int M) {
  return static_cast<float>(coded(code / static_cast<float>(M)) * static_cast<double>(M));
}

template <typename Step> void each_component(vexo_vector *v, unsigned int nbits, Step step) {
  const int M = max_val(nbits);
  if (M == 0) {
    return;
  }
  for (float &c : v->d) {
    c = step(c, M);
  }
}

// Factors of the linear scalings.
float XYZ_xyz(int M) { return dcine_v / dcine_l / static_cast<float>(M); }
float xyz_XYZ(int M) { return static_cast<float>(M) * dcine_l / dcine_v; }
float RGB_rgb(int M) { return static_cast<float>(1.0 / static_cast<double>(M)); }
float rgb_RGB(int M) { return static_cast<float>(M); }

vexo_matrix diagonal(float k) { return vexo_matrix{{{k, 0.0F, 0.0F}, {0.0F, k, 0.0F}, {0.0F, 0.0F, k}}}; }

// Scales by a matrix product, so that an infinity or NaN in one component reaches the others.
void scale(vexo_vector *v, unsigned int nbits, float (*factor)(int M)) {
  const int M = max_val(nbits);
  if (M == 0) {
    return;
  }
  vexo_matrix m = diagonal(factor(M));
  vexo_matrix_transform(&m, v);
}

int rgb_xyz_matrix(vexo_matrix *m) {
  float dcip3[4][2] = {{0.68F, 0.32F}, {0.265F, 0.69F}, {0.15F, 0.06F}, {0.314F, 0.351F}};
  vexo_cs p3;
  if (vexo_cs_init(&p3, dcip3) != 0) {
    return -1;
  }
  *m = p3.npm;
  return 0;
}

int xyz_rgb_matrix(vexo_matrix *m) {
  vexo_matrix npm;
  return rgb_xyz_matrix(&npm) != 0 ? -1 : vexo_matrix_invert(m, &npm);
}

// m = D(last) conversion D(first), the D being scalings.
void between_scalings(vexo_matrix *m, float last, const vexo_matrix &conversion, float first) {
  const vexo_matrix to_units = diagonal(first);
  *m = diagonal(last);
  vexo_matrix_multiply(m, &conversion);
  vexo_matrix_multiply(m, &to_units);
}

} // namespace

void vexo_dcine_XYZq_xyz(vexo_vector *v, unsigned int nbits) {
  each_component(v, nbits, [](float c, int M) {
    return static_cast<float>(decoded(c / static_cast<float>(M)) * static_cast<double>(dcine_v) /
                              static_cast<double>(dcine_l));
  });
}

void vexo_dcine_xyz_XYZq(vexo_vector *v, unsigned int nbits) {
  each_component(v, nbits, [](float c, int M) {
    return static_cast<float>(coded(c * dcine_l / dcine_v) * static_cast<double>(M));
  });
}

void vexo_dcine_RGBq_rgb(vexo_vector *v, unsigned int nbits) {
  each_component(v, nbits, [](float c, int M) { return static_cast<float>(decoded(c / static_cast<float>(M))); });
}

void vexo_dcine_rgb_RGBq(vexo_vector *v, unsigned int nbits) {
  each_component(v, nbits, [](float c, int M) { return static_cast<float>(coded(c) * static_cast<double>(M)); });
}

int vexo_dcine_rgb_xyz(vexo_vector *v) {
  vexo_matrix m;
  if (rgb_xyz_matrix(&m) != 0) {
    return -1;
  }
  vexo_matrix_transform(&m, v);
  return 0;
}

int vexo_dcine_xyz_rgb(vexo_vector *v) {
  vexo_matrix m;
  if (xyz_rgb_matrix(&m) != 0) {
    return -1;
  }
  vexo_matrix_transform(&m, v);
  return 0;
}

int vexo_dcine_RGBq_XYZq(vexo_vector *v, unsigned int nbits) {
  if (max_val(nbits) == 0) {
    return -1;
  }
  vexo_dcine_RGBq_rgb(v, nbits);
  if (vexo_dcine_rgb_xyz(v) != 0) {
    return -1;
  }
  vexo_dcine_xyz_XYZq(v, nbits);
  return 0;
}

int vexo_dcine_XYZq_RGBq(vexo_vector *v, unsigned int nbits) {
  if (max_val(nbits) == 0) {
    return -1;
  }
  vexo_dcine_XYZq_xyz(v, nbits);
  if (vexo_dcine_xyz_rgb(v) != 0) {
    return -1;
  }
  vexo_dcine_rgb_RGBq(v, nbits);
  return 0;
}

void vexo_dcine_XYZq_XYZ(vexo_vector *v, unsigned int nbits) { each_component(v, nbits, linear_code); }

void vexo_dcine_XYZ_XYZq(vexo_vector *v, unsigned int nbits) { each_component(v, nbits, power_code); }

void vexo_dcine_RGBq_RGB(vexo_vector *v, unsigned int nbits) { each_component(v, nbits, linear_code); }

void vexo_dcine_RGB_RGBq(vexo_vector *v, unsigned int nbits) { each_component(v, nbits, power_code); }

void vexo_dcine_XYZ_xyz(vexo_vector *v, unsigned int nbits) { scale(v, nbits, XYZ_xyz); }

void vexo_dcine_xyz_XYZ(vexo_vector *v, unsigned int nbits) { scale(v, nbits, xyz_XYZ); }

void vexo_dcine_RGB_rgb(vexo_vector *v, unsigned int nbits) { scale(v, nbits, RGB_rgb); }

void vexo_dcine_rgb_RGB(vexo_vector *v, unsigned int nbits) { scale(v, nbits, rgb_RGB); }

int vexo_dcine_XYZ_RGB_matrix(vexo_matrix *m, unsigned int nbits) {
  const int M = max_val(nbits);
  vexo_matrix conversion;
  if (M == 0 || xyz_rgb_matrix(&conversion) != 0) {
    return -1;
  }
  between_scalings(m, rgb_RGB(M), conversion, XYZ_xyz(M));
  return 0;
}

int vexo_dcine_RGB_XYZ_matrix(vexo_matrix *m, unsigned int nbits) {
  const int M = max_val(nbits);
  vexo_matrix conversion;
  if (M == 0 || rgb_xyz_matrix(&conversion) != 0) {
    return -1;
  }
  between_scalings(m, xyz_XYZ(M), conversion, RGB_rgb(M));
  return 0;
}
