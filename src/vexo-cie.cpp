// CIE coordinates (CIE 15): XYZ, xyz, xyY and u'v'Y, and additive mixing. Single precision; declared in vexo-cs.h.
#include "vexo-cs.h"

namespace {

bool vexo_xyY_valid(const vexo_vector *xyY) {
  const auto &d = xyY->d;
  return d[0] >= 0.0F && d[0] < 1.0F && d[1] >= 0.0F && d[1] < 1.0F && d[2] >= 0.0F;
}

} // namespace

int vexo_XYZ_valid(vexo_vector *XYZ) { return XYZ->d[0] >= 0.0F && XYZ->d[1] >= 0.0F && XYZ->d[2] >= 0.0F; }

int vexo_XYZ_xyz(vexo_vector *XYZ) {
  const float sum = vexo_vector_sum(XYZ);
  if (!(sum > 0.0F)) {
    return -1;
  }
  *XYZ = vexo_vector{{XYZ->d[0] / sum, XYZ->d[1] / sum, XYZ->d[2] / sum}};
  return 0;
}

int vexo_XYZ_xyY(vexo_vector *XYZ) {
  const float sum = vexo_vector_sum(XYZ);
  if (!(sum > 0.0F)) {
    return -1;
  }
  *XYZ = vexo_vector{{XYZ->d[0] / sum, XYZ->d[1] / sum, XYZ->d[1]}};
  return 0;
}

int vexo_XYZ_xyY_array(int size, float **XYZ) {
  if (size < 1) {
    return -1;
  }
  vexo_vector black = {{XYZ[0][0], XYZ[1][0], XYZ[2][0]}};
  XYZ[0][0] = XYZ[1][0] = XYZ[2][0] = 0.0F;
  for (int i = 1; i < size; i++) {
    vexo_vector v = {{XYZ[0][i], XYZ[1][i], XYZ[2][i]}};
    vexo_vector_sub(&v, &black);
    if (vexo_XYZ_xyY(&v) != 0) {
      return -1;
    }
    for (int m = 0; m < 3; m++) {
      XYZ[m][i] = v.d[m];
    }
  }
  return 0;
}

int vexo_XYZ_uvY(vexo_vector *XYZ) {
  if (vexo_XYZ_valid(XYZ) == 0) {
    return -1;
  }
  const float X = XYZ->d[0];
  const float Y = XYZ->d[1];
  const float Z = XYZ->d[2];
  const float denom = X + 15.0F * Y + 3.0F * Z;
  if (denom > 0.0F) {
    *XYZ = vexo_vector{{4.0F * X / denom, 9.0F * Y / denom, Y}};
  }
  return 0;
}

int vexo_xyY_XYZ(vexo_vector *xyY) {
  if (!vexo_xyY_valid(xyY)) {
    return -1;
  }
  const float x = xyY->d[0];
  const float y = xyY->d[1];
  const float Y = xyY->d[2];
  if (!(y > 0.0F)) {
    vexo_vector_init(xyY);
    return 0;
  }
  const float t = Y / y;
  const float X = t * x;
  *xyY = vexo_vector{{X, Y, t - X - Y}};
  return 0;
}

int vexo_xyY_uvY(vexo_vector *xyY) {
  if (!vexo_xyY_valid(xyY)) {
    return -1;
  }
  const float x = xyY->d[0];
  const float y = xyY->d[1];
  const float denom = 12.0F * y - 2.0F * x + 3.0F;
  xyY->d[0] = 4.0F * x / denom;
  xyY->d[1] = 9.0F * y / denom;
  return 0;
}

int vexo_uvY_XYZ(vexo_vector * /*uvY*/, vexo_vector * /*XYZ*/) { return -1; }

int vexo_XYZ_mix(vexo_vector *XYZ1, vexo_vector *XYZ2, vexo_vector *XYZ) {
  if (vexo_XYZ_valid(XYZ1) == 0 || vexo_XYZ_valid(XYZ2) == 0) {
    return -1;
  }
  *XYZ = vexo_vector{{XYZ1->d[0] + XYZ2->d[0], XYZ1->d[1] + XYZ2->d[1], XYZ1->d[2] + XYZ2->d[2]}};
  return 0;
}

int vexo_xyY_mix(vexo_vector *xyY1, vexo_vector *xyY2, vexo_vector *xyY) {
  if (!vexo_xyY_valid(xyY1) || !vexo_xyY_valid(xyY2)) {
    vexo_vector_init(xyY);
    return -1;
  }
  const auto &a = xyY1->d;
  const auto &b = xyY2->d;
  const float S2 = b[2] / b[1];
  const float S1 = a[2] / a[1];
  const float k = S2 / (S1 + S2);
  *xyY = vexo_vector{{a[0] + (b[0] - a[0]) * k, a[1] + (b[1] - a[1]) * k, a[2] + b[2]}};
  return 0;
}

int vexo_xyY_mix_3(vexo_vector *xyY1, vexo_vector *xyY2, vexo_vector *xyY3, vexo_vector *xyY) {
  vexo_vector mixed;
  if (vexo_xyY_mix(xyY1, xyY2, &mixed) != 0) {
    return -1;
  }
  return vexo_xyY_mix(&mixed, xyY3, xyY);
}
