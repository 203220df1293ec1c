// Vectors and matrices. Single precision throughout; each sum in the order of its columns.
#include "vexo-matrix.h"

#include <cmath>

#include "base/exact.h"
#include "base/locale.h"

namespace {

int store(FILE *f, const void *image, size_t size) { return fwrite(image, size, 1, f) == 1 ? 0 : -1; }

int load(FILE *f, void *image, size_t size) { return fread(image, size, 1, f) == 1 ? 0 : -1; }

float determinant(const float m[3][3]) {
  float det = 0.0F;
  det += m[0][0] * m[1][1] * m[2][2];
  det += m[0][1] * m[1][2] * m[2][0];
  det += m[0][2] * m[1][0] * m[2][1];
  det -= m[2][0] * (m[1][1] * m[0][2]);
  det -= m[2][2] * (m[0][1] * m[1][0]);
  det -= m[2][1] * (m[0][0] * m[1][2]);
  return det;
}

} // namespace

static_assert(sizeof(vexo_vector) == 12 && sizeof(vexo_matrix) == 36, "the records are their file images");

void vexo_vector_init(vexo_vector *v) { *v = vexo_vector{}; }

void vexo_matrix_init(vexo_matrix *m) {
  *m = vexo_matrix{{{1.0F, 0.0F, 0.0F}, {0.0F, 1.0F, 0.0F}, {0.0F, 0.0F, 1.0F}}};
}

void vexo_matrix_copy(vexo_matrix *dst, vexo_matrix *src) { *dst = *src; }

void vexo_vector_copy(vexo_vector *dst, vexo_vector *src) { *dst = *src; }

void vexo_matrix_multiply(vexo_matrix *m, const vexo_matrix *n) {
  vexo_matrix t;
  for (int i = 0; i < 3; i++) {
    for (int j = 0; j < 3; j++) {
      t.d[i][j] = m->d[i][0] * n->d[0][j] + m->d[i][1] * n->d[1][j] + m->d[i][2] * n->d[2][j];
    }
  }
  *m = t;
}

void vexo_matrix_transform(vexo_matrix *m, vexo_vector *v) {
  vexo_vector t;
  for (int i = 0; i < 3; i++) {
    t.d[i] = m->d[i][0] * v->d[0] + m->d[i][1] * v->d[1] + m->d[i][2] * v->d[2];
  }
  *v = t;
}

void vexo_matrix_set_column(vexo_matrix *m, vexo_vector *v, int c) {
  for (int i = 0; i < 3; i++) {
    m->d[i][c] = v->d[i];
  }
}

void vexo_matrix_set_row(vexo_matrix *m, vexo_vector *v, int r) {
  for (int j = 0; j < 3; j++) {
    m->d[r][j] = v->d[j];
  }
}

void vexo_matrix_get_row(vexo_matrix *m, vexo_vector *v, int r) {
  for (int j = 0; j < 3; j++) {
    v->d[j] = m->d[r][j];
  }
}

void vexo_vector_set_xy(vexo_vector *v, const float *xy) { *v = vexo_vector{{xy[0], xy[1], 1.0F - xy[0] - xy[1]}}; }

void vexo_vector_set_xyz(vexo_vector *v, const float *xyz) { *v = vexo_vector{{xyz[0], xyz[1], xyz[2]}}; }

void vexo_vector_add(vexo_vector *v, vexo_vector *u) {
  for (int i = 0; i < 3; i++) {
    v->d[i] += u->d[i];
  }
}

void vexo_vector_sub(vexo_vector *v, vexo_vector *u) {
  for (int i = 0; i < 3; i++) {
    v->d[i] -= u->d[i];
  }
}

int vexo_vector_div(vexo_vector *v, vexo_vector *u) {
  for (int i = 0; i < 3; i++) {
    if (u->d[i] == 0.0F) {
      return -1;
    }
    v->d[i] /= u->d[i];
  }
  return 0;
}

void vexo_vector_scale(vexo_vector *v, float s) {
  for (float &component : v->d) {
    component *= s;
  }
}

void vexo_matrix_normalize(vexo_matrix *m, int mode) {
  if (mode != 1) {
    return;
  }
  float max = 0.0F;
  for (const auto &row : m->d) {
    const float sum = 0.0F + row[0] + row[1] + row[2];
    if (sum > max) {
      max = sum;
    }
  }
  if (max == 0.0F) {
    return;
  }
  for (auto &row : m->d) {
    for (float &element : row) {
      element /= max;
    }
  }
}

void vexo_vector_normalize(vexo_vector *v, int mode) {
  if (mode == 1) {
    float max = v->d[0] > v->d[1] ? v->d[0] : v->d[1];
    max = max > v->d[2] ? max : v->d[2];
    if (max != 0.0F) {
      for (float &component : v->d) {
        component /= max;
      }
    }
  } else if (mode == 2 && v->d[1] != 0.0F) {
    *v = vexo_vector{{v->d[0] / v->d[1], 1.0F, v->d[2] / v->d[1]}};
  }
}

int vexo_matrix_invert(vexo_matrix *n, const vexo_matrix *m) {
  const auto &a = m->d;
  const float det = determinant(a);
  if (det == 0.0F || std::fabs(static_cast<double>(det)) < 1e-15) {
    return -1;
  }
  n->d[0][0] = (a[1][1] * a[2][2] - a[1][2] * a[2][1]) / det;
  n->d[0][1] = -(a[0][1] * a[2][2] - a[0][2] * a[2][1]) / det;
  n->d[0][2] = (a[0][1] * a[1][2] - a[0][2] * a[1][1]) / det;
  n->d[1][0] = -(a[1][0] * a[2][2] - a[1][2] * a[2][0]) / det;
  n->d[1][1] = (a[0][0] * a[2][2] - a[0][2] * a[2][0]) / det;
  n->d[1][2] = -(a[0][0] * a[1][2] - a[0][2] * a[1][0]) / det;
  n->d[2][0] = (a[1][0] * a[2][1] - a[1][1] * a[2][0]) / det;
  n->d[2][1] = -(a[0][0] * a[2][1] - a[0][1] * a[2][0]) / det;
  n->d[2][2] = (a[0][0] * a[1][1] - a[0][1] * a[1][0]) / det;
  return 0;
}

void vexo_matrix_dump(FILE *f, vexo_matrix *m, char *prefix) {
  const vexo_internal::NumberLocale locale;
  if (prefix != nullptr) {
    fprintf(f, "%s Matrix(%p):\n", prefix, static_cast<void *>(m));
  } else {
    fprintf(f, "Matrix(%p):\n", static_cast<void *>(m));
  }
  for (int i = 0; i < 3; i++) {
    fputc('\t', f);
    for (int j = 0; j < 3; j++) {
      fprintf(f, "m[%d][%d] = %0.10lf\t", i, j, static_cast<double>(m->d[i][j]));
    }
    fputc('\n', f);
  }
}

void vexo_vector_dump(FILE *f, vexo_vector *v, const char *prefix) {
  const vexo_internal::NumberLocale locale;
  if (prefix != nullptr) {
    fprintf(f, "%s Vector(%p):\n\t", prefix, static_cast<void *>(v));
  }
  fprintf(f, "[%0.10lf\t%0.10lf\t%0.10lf]\n", static_cast<double>(v->d[0]), static_cast<double>(v->d[1]),
          static_cast<double>(v->d[2]));
}

int vexo_matrix_store(FILE *f, vexo_matrix *m) { return store(f, m, sizeof *m); }

int vexo_matrix_load(FILE *f, vexo_matrix *m) { return load(f, m, sizeof *m); }

int vexo_vector_store(FILE *f, vexo_vector *v) { return store(f, v, sizeof *v); }

int vexo_vector_load(FILE *f, vexo_vector *v) { return load(f, v, sizeof *v); }

float vexo_vector_sum(vexo_vector *v) { return v->d[0] + v->d[1] + v->d[2]; }

float vexo_vector_get_middle(vexo_vector *v) {
  const float a = v->d[0];
  const float b = v->d[1];
  const float c = v->d[2];
  if (a > b) {
    if (a < c) {
      return a;
    }
    return b <= c ? c : b;
  }
  if (b < c) {
    return b;
  }
  return a <= c ? c : a;
}
