// vexo calibrate: measurements in, three correction LUTs out.
#ifndef VEXO_TOOLS_CALIBRATE_H
#define VEXO_TOOLS_CALIBRATE_H

#include <string>

// Options as they stand on the command line; empty where not given.
struct CalibrateOptions {
  std::string panel;
  std::string output;
  std::string white = "D65";
  std::string gamma;
  std::string camera;
  std::string system;
  std::string recipe = "aligned";
  std::string bits = "10";
  std::string entries = "1024";
};

// Runs the command. Throws a Failure.
void calibrate(const CalibrateOptions &options);

#endif
