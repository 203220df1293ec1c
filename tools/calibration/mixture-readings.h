// Measured mixtures of a panel's channels, and how well the panel model meets them.
#ifndef VEXO_TOOLS_MIXTURE_READINGS_H
#define VEXO_TOOLS_MIXTURE_READINGS_H

#include <optional>
#include <string>
#include <vector>

#include "calibration/gray-ramp.h"
#include "calibration/panel-model.h"
#include "file/panel.h"

struct MixtureReadings {
  std::string path;
  std::vector<MeasuredLight> lights; // two or three channels driven, not all alike
  std::vector<std::string> places;   // of each in the file
  std::optional<GrayRamp> grays;     // where the file holds grays
  std::vector<std::string> notes;    // what was left out: one sentence each
};

// Reads a CSV file of r,g,b,X,Y,Z, drives in the panel file's unit, or a CGATS file (.ti3; RGB in percent). Black is
// the mean of its readings of black, or else the panel's. Channels driven alone are left out: the panel file has them.
// Throws a Failure (input) for drives outside those of the panel, for less than one mixture or more than 3000, and
// where the unit or the panel is another one.
MixtureReadings read_mixtures(const std::string &path, const Panel &panel);

// CIEDE2000 of readings that a layer of the panel model has not seen.
struct LayerError {
  std::string layer;
  double mean;
  double most; // 95 % of the readings are at most this
  double worst;
  std::string worst_place;
};

struct CrossValidation {
  size_t readings;
  std::vector<LayerError> layers;
  std::vector<double> de2000;   // of each reading, by the whole model
  std::vector<std::string> odd; // outliers, with their error
  bool holds;                   // whether the whole model meets this panel
};

// The model has learnt the mixtures. Each is left out in turn.
CrossValidation cross_validate(const MixtureReadings &readings, const PanelModel &model);

// What to say where the model does not hold; empty where it does.
std::string doubt(const CrossValidation &validation);

#endif
