// What a panel's gray ramp should be: a white, and the two curves that lead from the signal to light.
#ifndef VEXO_TOOLS_TARGET_H
#define VEXO_TOOLS_TARGET_H

#include <string>

#include "calibration/triple.h"
#include "vexo-gamma.h"
#include "vexo-matrix.h"

struct White {
  std::string name; // as the user gave it
  vexo_vector xyz;  // x, y, z = 1 - x - y
};

struct Curve {
  std::string name; // as the user gave it
  vexo_gamma gamma;
};

struct Target {
  White white;
  Curve camera; // encoded the signal: its inverse leads from an input to scene light
  Curve system; // from scene light to display light
};

// X, Y, Z of the white at a luminance.
Triple white_XYZ(const White &white, double luminance);

inline const White kD65 = {"D65", {{0.3127F, 0.3290F, 1.0F - 0.3127F - 0.3290F}}};
inline const Curve kLinear = {"linear", {0.0F, 0.0F, 1.0F, 0.0F}};

// The power law y = x^exponent.
Curve power_curve(float exponent, const std::string &name);

// The light of an input of 0..1 as a part of white's, by the library's curves in single precision.
double target_light(const Target &target, double input);

// D50 D55 D65 D75 D93 DCI E, or "x,y". Throws a Failure (usage) that names the option.
White parse_white(const std::string &option, const std::string &text);

// A curve's name, an exponent, or "slope,transition,gamma,offset". Throws a Failure (usage) that names the option.
Curve parse_curve(const std::string &option, const std::string &text);

std::string white_names();
std::string curve_names();

// "NAME (slope S, transition T, gamma G, offset O)", the numbers as they are used.
std::string describe(const Curve &curve);

#endif
