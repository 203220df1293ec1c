#include "colour/quantities.h"

#include <cmath>
#include <limits>

#include "text/grammar.h"
#include "vexo-cs.h"

namespace {

bool from_XYZ(vexo_vector * /*v*/, const vexo_vector & /*white*/) { return true; }

// A colour with luminance has a y above 0.
bool from_xyY(vexo_vector *v, const vexo_vector & /*white*/) {
  const bool exists = v->d[1] > 0.0F || v->d[2] == 0.0F;
  return exists && vexo_xyY_XYZ(v) == 0;
}

bool from_uvY(vexo_vector *v, const vexo_vector &white) {
  const double u_prime = v->d[0];
  const double v_prime = v->d[1];
  const double denominator = 6.0 * u_prime - 16.0 * v_prime + 12.0;
  v->d[0] = static_cast<float>(9.0 * u_prime / denominator);
  v->d[1] = static_cast<float>(4.0 * v_prime / denominator);
  return from_xyY(v, white);
}

bool from_Lab(vexo_vector *v, const vexo_vector &white) {
  const double fy = (v->d[0] + 16.0) / 116.0;
  const double f[3] = {fy + v->d[1] / 500.0, fy, fy - v->d[2] / 200.0};
  for (int i = 0; i < 3; i++) {
    v->d[i] = static_cast<float>(cie_f_inverse(f[i]) * white.d[i]);
  }
  return true;
}

struct Form {
  const char *name;
  bool (*to_XYZ)(vexo_vector *v, const vexo_vector &white);
};

const Form kForms[] = {{"XYZ", from_XYZ}, {"xyY", from_xyY}, {"uvY", from_uvY}, {"Lab", from_Lab}};

// In degrees.
float hue_of(const vexo_vector &Lab) {
  const double a = Lab.d[1];
  const double b = Lab.d[2];
  if (a == 0.0 && b == 0.0) {
    return std::numeric_limits<float>::quiet_NaN();
  }
  const double degrees = std::atan2(b, a) * 180.0 / 3.141592653589793;
  return static_cast<float>(degrees < 0.0 ? degrees + 360.0 : degrees);
}

} // namespace

double cie_f(double part) {
  const double bend = 6.0 / 29.0;
  return part > bend * bend * bend ? std::cbrt(part) : part / (3.0 * bend * bend) + 4.0 / 29.0;
}

double cie_f_inverse(double f) { return f > 6.0 / 29.0 ? f * f * f : (f - 4.0 / 29.0) * 108.0 / 841.0; }

Quantities quantities(vexo_vector XYZ, vexo_vector white) {
  Quantities q = {XYZ, XYZ, XYZ, XYZ, XYZ, XYZ, XYZ, vexo_XYZ_CCT(&XYZ)};
  if (vexo_XYZ_xyY(&q.xyY) != 0) {
    vexo_vector_init(&q.xyY);
  }
  vexo_XYZ_uvY(&q.uvY);
  vexo_XYZ_Lab(&q.Lab, &white);
  vexo_XYZ_LCH(&q.LCh_library, &white);
  q.LCh = {{q.LCh_library.d[0], q.LCh_library.d[1], hue_of(q.Lab)}};
  vexo_XYZ_Luv(&q.Luv, &white);
  return q;
}

std::vector<std::string> colour_forms() { return names_of(kForms); }

bool to_XYZ(vexo_vector *v, const std::string &form, const vexo_vector &white) {
  const Form *known = find_name(kForms, form);
  return known != nullptr && known->to_XYZ(v, white) && vexo_XYZ_valid(v) != 0;
}
