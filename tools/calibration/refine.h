// What the model learns from a gray ramp that was measured through LUTs.
//
// A probe's readings are noisy, and the noise must not get into the LUTs. The noise of a reading is taken as 0.2 % of
// it and 0.002 cd/m2, independent in X, Y and Z. The difference between reading and prediction, relative to the
// prediction, is learnt after two steps:
// 1. It is smoothed six times by the weights 1 2 1 over neighbouring inputs (5 2 -1 at the ends, which keeps a straight
//    line). Each time it is held within twice the noise of the reading, so that what the reading shows clearly stays.
// 2. A difference R with the noise n is reduced to R^3 / (R^2 + n^2).
#ifndef VEXO_TOOLS_REFINE_H
#define VEXO_TOOLS_REFINE_H

#include <vector>

#include "calibration/figures.h"
#include "calibration/gray-ramp.h"

// The lights of the ramp as they are believed, for PanelModel::learn_grays().
std::vector<MeasuredLight> believed_grays(const GrayRamp &ramp, const vexo_lut *luts, const PanelModel &model);

// The mean CIEDE2000 of the judged grays of a ramp to what the model predicts through LUTs; null: of the bare panel.
double prediction_error(const GrayRamp &ramp, const vexo_lut *luts, const PanelModel &model);

// The mean CIEDE2000, over the judged grays of the ramp, that the noise of the readings leaves after smoothing. LUTs
// that differ by less are the same to these readings.
double noise_difference(const GrayRamp &ramp, const White &white);

#endif
