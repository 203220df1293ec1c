// RGB colour spaces: primaries and white, the normalised primary matrix (SMPTE RP 177), and the geometry of the gamut.
// Single precision, except that the setters form z = 1 - x - y in double.
#include "vexo-cs.h"

#include <initializer_list>

namespace {

// XYZ to the cone responses of the Bradford transform.
const vexo_matrix kBradford = {
    {{0.8951F, 0.2664F, -0.1614F}, {-0.7502F, 1.7135F, 0.0367F}, {0.0389F, -0.0685F, 1.0296F}}};

vexo_vector chromaticity(float x, float y) {
  return vexo_vector{{x, y, static_cast<float>(1.0 - static_cast<double>(x) - static_cast<double>(y))}};
}

// Signed area of the triangle (a, b), (c, d), (e, f): positive when the corners run counter-clockwise.
float triangle_area(float a, float b, float c, float d, float e, float f) {
  return 0.5F * (b * e + a * d + c * f - a * f - b * c - d * e);
}

// s = where the line through the primary po and the white pw meets the line through p1 and p2.
void get_secondary_from_primary(vexo_vector *s, const vexo_vector *p1, const vexo_vector *p2, const vexo_vector *po,
                                const vexo_vector *pw) {
  const float dx1 = p2->d[0] - p1->d[0];
  const float dy1 = p2->d[1] - p1->d[1];
  const float dx2 = po->d[0] - pw->d[0];
  const float dy2 = po->d[1] - pw->d[1];
  // Both line equations divided by q, solved for the position k on the side: 0 at p1, 1 at p2.
  const float q = dx1 * dy2;
  const float A = (pw->d[0] - p1->d[0]) / dx1 + dx2 / q * (p1->d[1] - pw->d[1]);
  const float B = dy1 * dx2 / q;
  const float k = static_cast<float>(static_cast<double>(A) / (1.0 - static_cast<double>(B)));
  const float xy[2] = {p1->d[0] + dx1 * k, p1->d[1] + dy1 * k};
  vexo_vector_set_xy(s, xy);
}

} // namespace

static_assert(sizeof(vexo_cs) == 84, "part of the binary interface");

void vexo_cs_set_r(vexo_cs *cs, float x, float y) { cs->r = chromaticity(x, y); }

void vexo_cs_set_g(vexo_cs *cs, float x, float y) { cs->g = chromaticity(x, y); }

void vexo_cs_set_b(vexo_cs *cs, float x, float y) { cs->b = chromaticity(x, y); }

void vexo_cs_set_w(vexo_cs *cs, float x, float y) { cs->w = chromaticity(x, y); }

int vexo_cs_matrix(vexo_cs *cs, vexo_matrix *m) {
  vexo_matrix primaries;
  vexo_matrix_set_column(&primaries, &cs->r, 0);
  vexo_matrix_set_column(&primaries, &cs->g, 1);
  vexo_matrix_set_column(&primaries, &cs->b, 2);
  vexo_matrix c;
  if (vexo_matrix_invert(&c, &primaries) != 0) {
    *m = primaries;
    return -1;
  }
  const auto &w = cs->w.d;
  if (w[1] == 0.0F) {
    return -1;
  }
  *m = primaries;
  // The amounts of the primaries that make up the white at Y = 1 scale the columns.
  vexo_vector amounts = {{w[0] / w[1], w[1] / w[1], w[2] / w[1]}};
  vexo_matrix_transform(&c, &amounts);
  vexo_matrix_init(&c);
  for (int i = 0; i < 3; i++) {
    c.d[i][i] = amounts.d[i];
  }
  vexo_matrix_multiply(m, &c);
  return 0;
}

int vexo_cs_init(vexo_cs *cs, float data[4][2]) {
  vexo_cs_set_r(cs, data[0][0], data[0][1]);
  vexo_cs_set_g(cs, data[1][0], data[1][1]);
  vexo_cs_set_b(cs, data[2][0], data[2][1]);
  vexo_cs_set_w(cs, data[3][0], data[3][1]);
  return vexo_cs_matrix(cs, &cs->npm);
}

int vexo_cs_init_XYZ(vexo_cs *cs, const float *r, const float *g, const float *b, const float *w, const float *d) {
  const float *const readings[4] = {r, g, b, w};
  vexo_vector black;
  vexo_vector_set_xyz(&black, d);
  vexo_vector patch[4];
  for (int i = 0; i < 4; i++) {
    vexo_vector_set_xyz(&patch[i], readings[i]);
    vexo_vector_sub(&patch[i], &black);
    if (vexo_XYZ_xyz(&patch[i]) != 0) {
      return -1;
    }
  }
  cs->r = patch[0];
  cs->g = patch[1];
  cs->b = patch[2];
  cs->w = patch[3];
  return vexo_cs_matrix(cs, &cs->npm);
}

int vexo_cs_transform(vexo_matrix *m, vexo_cs *src, vexo_cs *dst) {
  if (vexo_matrix_invert(m, &dst->npm) != 0) {
    return -1;
  }
  vexo_matrix_multiply(m, &src->npm);
  return 0;
}

float vexo_cs_area(vexo_cs *cs) {
  vexo_vector r = cs->r;
  vexo_vector g = cs->g;
  vexo_vector b = cs->b;
  if (vexo_XYZ_xyz(&r) != 0 || vexo_XYZ_xyz(&g) != 0 || vexo_XYZ_xyz(&b) != 0) {
    return 0.0F;
  }
  return triangle_area(r.d[0], r.d[1], g.d[0], g.d[1], b.d[0], b.d[1]);
}

int vexo_cs_secondary(const vexo_cs *cs, vexo_vector *sr, vexo_vector *sg, vexo_vector *sb) {
  if (cs == nullptr) {
    return -1;
  }
  if (sr != nullptr) {
    get_secondary_from_primary(sr, &cs->g, &cs->b, &cs->r, &cs->w);
  }
  if (sg != nullptr) {
    get_secondary_from_primary(sg, &cs->b, &cs->r, &cs->g, &cs->w);
  }
  if (sb != nullptr) {
    get_secondary_from_primary(sb, &cs->r, &cs->g, &cs->b, &cs->w);
  }
  return 0;
}

int vexo_chad_transform(vexo_matrix *m, vexo_vector *src, vexo_vector *dst) {
  vexo_matrix cone = kBradford;
  vexo_vector sw = *src;
  vexo_vector dw = *dst;
  vexo_vector_normalize(&sw, 2);
  vexo_vector_normalize(&dw, 2);
  vexo_matrix_transform(&cone, &sw);
  vexo_matrix_transform(&cone, &dw);
  vexo_matrix c;
  vexo_matrix_init(&c);
  for (int i = 0; i < 3; i++) {
    c.d[i][i] = dw.d[i] / sw.d[i];
  }
  vexo_matrix_invert(m, &cone);
  vexo_matrix_multiply(m, &c);
  vexo_matrix_multiply(m, &cone);
  return 0;
}

int vexo_cs_chad_transform(vexo_matrix *m, vexo_cs *native, vexo_cs *target) {
  if (vexo_matrix_invert(m, &native->npm) != 0) {
    return -1;
  }
  vexo_matrix a;
  vexo_chad_transform(&a, &target->w, &native->w);
  vexo_matrix_multiply(m, &a);
  vexo_matrix_multiply(m, &target->npm);
  return 0;
}

void vexo_cs_dump(FILE *f, vexo_cs *cs, char *prefix) {
  if (prefix != nullptr) {
    fprintf(f, "%s Color Space (%p):\n", prefix, static_cast<void *>(cs));
  } else {
    fprintf(f, "Color Space (%p):\n", static_cast<void *>(cs));
  }
  vexo_vector_dump(f, &cs->r, "Red Primary");
  vexo_vector_dump(f, &cs->g, "Green Primary");
  vexo_vector_dump(f, &cs->b, "Blue Primary");
  vexo_vector_dump(f, &cs->w, "Reference White");
  char npm[] = "NPM";
  vexo_matrix_dump(f, &cs->npm, npm);
}

int vexo_cs_store(FILE *f, vexo_cs *cs) {
  for (vexo_vector *v : {&cs->r, &cs->g, &cs->b, &cs->w}) {
    if (vexo_vector_store(f, v) != 0) {
      return -1;
    }
  }
  return 0;
}

int vexo_cs_load(FILE *f, vexo_cs *cs) {
  for (vexo_vector *v : {&cs->r, &cs->g, &cs->b, &cs->w}) {
    if (vexo_vector_load(f, v) != 0) {
      return -1;
    }
  }
  return vexo_cs_matrix(cs, &cs->npm);
}
