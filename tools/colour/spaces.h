// RGB colour spaces by name or by chromaticities, and what an engineer asks of one.
#ifndef VEXO_TOOLS_SPACES_H
#define VEXO_TOOLS_SPACES_H

#include <optional>
#include <string>

#include "vexo-cs.h"

struct Space {
  std::string name; // the known name, or the chromaticities as the user gave them
  vexo_cs cs;
};

// A colour space's name, or the chromaticities "rx,ry,gx,gy,bx,by,wx,wy". Throws a Failure (usage).
Space parse_space(const std::string &option, const std::string &text);

std::string space_names();

// The space with the luma weights of BT.601 in the Y row of its matrix, for conversions that stay in this space.
Space with_bt601_luma(Space space);

// Whether the primaries, as X, Y, Z or x, y, z, span more than rounding does.
bool spans_triangle(vexo_cs cs);

// Properties that follow from the primaries and the white.
struct SpaceProperties {
  vexo_vector cyan; // x, y, z
  vexo_vector magenta;
  vexo_vector yellow;
  vexo_vector luma; // weights of R, G, B: the Y row of RGB to XYZ
  float area;       // of the triangle of primaries in xy
  vexo_matrix RGB_to_XYZ;
  vexo_matrix XYZ_to_RGB;
};

// None where the matrix has no inverse.
std::optional<SpaceProperties> properties(vexo_cs cs);

// Linear RGB of one space to linear RGB of another.
struct SpaceConversion {
  vexo_matrix absolute; // keeps XYZ
  vexo_matrix adapted;  // brings white to white (Bradford)
};

// None where a matrix has no inverse.
std::optional<SpaceConversion> conversion(vexo_cs from, vexo_cs to);

#endif
