// What the command line says: numbers, whites and curves. The same in every locale.
#ifndef VEXO_TOOLS_GRAMMAR_H
#define VEXO_TOOLS_GRAMMAR_H

#include <optional>
#include <string>
#include <vector>

#include "vexo-cs.h"
#include "vexo-csc.h"
#include "vexo-gamma.h"
#include "vexo-matrix.h"

// Exactly one finite number, nothing around it.
std::optional<float> finite_number(const std::string &text);

// The parts between separators; at least one.
std::vector<std::string> split(const std::string &text, char separator);

// Each parse function throws a Failure (usage) that names the option, the text and what was expected.

int parse_integer(const std::string &option, const std::string &text, int min, int max);

float parse_number(const std::string &option, const std::string &text);
float parse_positive(const std::string &option, const std::string &text);
float parse_not_negative(const std::string &option, const std::string &text);

// One of the names, as it is written there.
std::string parse_name(const std::string &option, const std::string &text, const std::vector<std::string> &names);

// Reads three numbers separated by a comma or blanks, as lines of files have them. Returns whether text is just that.
bool scan_triple(const std::string &text, vexo_vector *v);

// Three numbers separated by commas.
vexo_vector parse_triple(const std::string &option, const std::string &text);

struct White {
  std::string name; // as the user gave it
  vexo_vector xyz;  // x, y, z = 1 - x - y
};

// D50 D55 D65 D75 D93 DCI E, or "x,y".
White parse_white(const std::string &option, const std::string &text);

struct Curve {
  std::string name; // as the user gave it
  vexo_gamma gamma;
};

// A curve's name, an exponent, or "slope,transition,gamma,offset".
Curve parse_curve(const std::string &option, const std::string &text);

struct Space {
  std::string name; // as the user gave it
  vexo_cs cs;
};

// A colour space's name, or the chromaticities "rx,ry,gx,gy,bx,by,wx,wy".
Space parse_space(const std::string &option, const std::string &text);

struct Signal {
  std::string name; // as the user gave it
  bool ycbcr;       // else RGB
  color_range range;
  int bits;
  int order[3]; // order[i]: the component (0 R or Y, 1 G or Cb, 2 B or Cr) that travels i-th
};

// "FORMAT:RANGE:BITS[:ORDER]", such as ycbcr:video:10 or rgb:full:12:gbr.
Signal parse_signal(const std::string &option, const std::string &text);

// The power law y = x^exponent.
Curve power_curve(float exponent, const std::string &name);

// "NAME (slope S, transition T, gamma G, offset O)", the numbers as they are used.
std::string describe(const Curve &curve);

std::string white_names();
std::string curve_names();
std::string space_names();

// The candidate that text most likely meant, or an empty string when none is near.
std::string nearest(const std::string &text, const std::vector<std::string> &candidates);

#endif
