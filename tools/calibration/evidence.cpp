#include "calibration/evidence.h"

MoreReadings read_more(const std::string &gray, const std::string &mix, const Panel &panel) {
  MoreReadings more;
  if (!mix.empty()) {
    more.mixtures = read_mixtures(mix, panel);
    more.grays = more.mixtures->grays;
  }
  if (!gray.empty()) {
    more.grays = read_gray_ramp(gray, panel);
  }
  return more;
}

Evidence evidence_of(const MoreReadings &more, PanelModel model, const Triple &noise) {
  Evidence evidence;
  if (more.grays && sparse(*more.grays, model.measurements()).empty()) {
    evidence.ramp = lights_of(*more.grays);
    model.shape_channels(evidence.ramp);
    evidence.grays.push_back(bare_grays(*more.grays, model, noise));
    model.learn_grays(evidence.grays.back());
  }
  if (more.mixtures) {
    evidence.mixtures = model.solve_mixtures(more.mixtures->lights);
  }
  return evidence;
}

void learn(PanelModel *model, const Evidence &evidence) {
  model->shape_channels(evidence.ramp);
  for (const auto &grays : evidence.grays) {
    model->learn_grays(grays);
  }
  model->learn_mixtures(evidence.mixtures);
}
