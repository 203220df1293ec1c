// A colour in the coordinates of CIE 15, and the forms in which a user gives one.
#ifndef VEXO_TOOLS_QUANTITIES_H
#define VEXO_TOOLS_QUANTITIES_H

#include <string>
#include <vector>

#include "vexo-matrix.h"

struct Quantities {
  vexo_vector XYZ;
  vexo_vector xyY; // 0, 0, 0 for black, which has no chromaticity
  vexo_vector uvY; // u', v', Y
  vexo_vector Lab;
  vexo_vector LCh;         // hue in degrees, 0 to 360; not finite for a gray
  vexo_vector LCh_library; // hue without quadrant, in radians, -pi/2 to pi/2; not finite for a gray
  vexo_vector Luv;
  int cct; // correlated colour temperature in kelvin; -1 where the colour has none
};

Quantities quantities(vexo_vector XYZ, vexo_vector white);

// The function f of CIE 1976 L*a*b* (CIE 15) for a component as a part of white's, and its inverse.
double cie_f(double part);
double cie_f_inverse(double f);

// XYZ, xyY, uvY, Lab
std::vector<std::string> colour_forms();

// Converts a triple of one of these forms to XYZ. Returns whether the triple is a colour.
bool to_XYZ(vexo_vector *v, const std::string &form, const vexo_vector &white);

#endif
