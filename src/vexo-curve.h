// The two steps of the gamma LUT inversion, apart: channels that follow the same curves share the first.
#ifndef VEXO_CURVE_H
#define VEXO_CURVE_H

#include "vexo-gamma.h"

namespace vexo_internal {

// Fills a LUT of at least 2 entries with the relative light that each input asks for: system(camera^-1(input)).
void light_of_inputs(vexo_lut *lut, vexo_gamma *camera, vexo_gamma *system);

// Replaces relative light by the drive at which a panel of at least 2 entries shows it, as vexo_lut_inverse() does.
void drives_of_light(vexo_lut *lut, const vexo_lut *panel);

} // namespace vexo_internal

#endif
