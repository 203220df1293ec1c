// The forms of a digital cinema colour (SMPTE ST 428-1 and RP 431-2) and the way from one to another.
#ifndef VEXO_TOOLS_DCI_H
#define VEXO_TOOLS_DCI_H

#include <string>
#include <vector>

#include "vexo-matrix.h"

// XYZq coded X'Y'Z', XYZ linear in code units, xyz relative; RGBq, RGB and rgb likewise for P3.
std::vector<std::string> dci_forms();

// A triple of one form in another, by the fewest of the library's conversions. bits: depth of the codes.
vexo_vector dci_convert(vexo_vector v, const std::string &from, const std::string &to, unsigned bits);

#endif
