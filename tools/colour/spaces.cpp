#include "colour/spaces.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "text/format.h"
#include "text/grammar.h"

namespace {

const float kLeastTriangle = 1e-6F; // area in x, y; less is rounding

struct NamedSpace {
  const char *name;
  float primaries[4][2]; // red, green, blue, white
};

const NamedSpace kSpaces[] = {
    {"bt709", {{0.640F, 0.330F}, {0.300F, 0.600F}, {0.150F, 0.060F}, {0.3127F, 0.3290F}}},
    {"bt2020", {{0.708F, 0.292F}, {0.170F, 0.797F}, {0.131F, 0.046F}, {0.3127F, 0.3290F}}},
    {"p3-dci", {{0.680F, 0.320F}, {0.265F, 0.690F}, {0.150F, 0.060F}, {0.3140F, 0.3510F}}}, // SMPTE RP 431-2
    {"p3-d65", {{0.680F, 0.320F}, {0.265F, 0.690F}, {0.150F, 0.060F}, {0.3127F, 0.3290F}}}, // SMPTE EG 432-1
    {"bt601-525", {{0.630F, 0.340F}, {0.310F, 0.595F}, {0.155F, 0.070F}, {0.3127F, 0.3290F}}},
    {"bt601-625", {{0.640F, 0.330F}, {0.290F, 0.600F}, {0.150F, 0.060F}, {0.3127F, 0.3290F}}},
    {"adobe", {{0.640F, 0.330F}, {0.210F, 0.710F}, {0.150F, 0.060F}, {0.3127F, 0.3290F}}}, // Adobe RGB (1998)
    {"srgb", {{0.640F, 0.330F}, {0.300F, 0.600F}, {0.150F, 0.060F}, {0.3127F, 0.3290F}}},  // IEC 61966-2-1
};

} // namespace

Space parse_space(const std::string &option, const std::string &text) {
  Space space = {text, {}};
  float primaries[4][2];
  if (const NamedSpace *named = find_name(kSpaces, text)) {
    space.name = named->name;
    std::copy_n(&named->primaries[0][0], 8, &primaries[0][0]);
  } else {
    const std::vector<float> values = number_list(text);
    if (values.size() != 8) {
      reject(option, text, "one of " + space_names() + ", or the chromaticities rx,ry,gx,gy,bx,by,wx,wy",
             names_of(kSpaces));
    }
    std::copy_n(values.data(), 8, &primaries[0][0]);
  }
  if (vexo_cs_init(&space.cs, primaries) != 0 || !spans_triangle(space.cs)) {
    reject(option, text, "primaries that span a triangle and a white with y above 0");
  }
  return space;
}

bool spans_triangle(vexo_cs cs) { return std::fabs(vexo_cs_area(&cs)) > kLeastTriangle; }

Space with_bt601_luma(Space space) {
  const vexo_vector luma = {{0.299F, 0.587F, 0.114F}};
  std::copy_n(luma.d, 3, space.cs.npm.d[1]);
  return space;
}

std::string space_names() { return join(names_of(kSpaces)); }

std::optional<SpaceProperties> properties(vexo_cs cs) {
  SpaceProperties p = {};
  p.RGB_to_XYZ = cs.npm;
  if (vexo_matrix_invert(&p.XYZ_to_RGB, &cs.npm) != 0) {
    return std::nullopt;
  }
  vexo_cs_secondary(&cs, &p.cyan, &p.magenta, &p.yellow);
  vexo_matrix_get_row(&cs.npm, &p.luma, 1);
  p.area = vexo_cs_area(&cs);
  return p;
}

std::optional<SpaceConversion> conversion(vexo_cs from, vexo_cs to) {
  SpaceConversion c;
  if (vexo_cs_transform(&c.absolute, &from, &to) != 0 || vexo_cs_chad_transform(&c.adapted, &to, &from) != 0) {
    return std::nullopt;
  }
  return c;
}
