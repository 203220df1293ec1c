// The readings of grays and mixtures that come beside a panel file, and what the model learns from them.
#ifndef VEXO_TOOLS_EVIDENCE_H
#define VEXO_TOOLS_EVIDENCE_H

#include <optional>
#include <string>

#include "calibration/gray-ramp.h"
#include "calibration/mixture-readings.h"

struct MoreReadings {
  std::optional<GrayRamp> grays;
  std::optional<MixtureReadings> mixtures;
};

// Reads the files; a path may be empty. Without a gray ramp, the grays of the mixtures' file serve as one. Throws a
// Failure (input).
MoreReadings read_more(const std::string &gray, const std::string &mix, const Panel &panel);

// What a model of the channels learns from them; from grays only where they are not sparse(). noise: the panel file's
// own noise_floor(). Throws a Failure (input).
Evidence evidence_of(const MoreReadings &more, PanelModel model, const Triple &noise);

// Makes the model learn all of it.
void learn(PanelModel *model, const Evidence &evidence);

#endif
