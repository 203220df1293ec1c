// Tone curves: the whole way from the signal to light.
//
// Power laws, sRGB, L* and tables give the light above black, as a part of white's. BT.1886, PQ and HLG give the light
// that a viewer sees, black included.
#ifndef VEXO_TOOLS_CURVE_H
#define VEXO_TOOLS_CURVE_H

#include <functional>
#include <optional>
#include <string>

#include "vexo-gamma.h"

// What a panel shows at the two ends of a ramp, in cd/m2, black included.
struct LightRange {
  double white;
  double black;
};

// One curve in the library's form.
struct LibraryCurve {
  std::string name; // as the user gave it
  vexo_gamma gamma;
};

// A tone curve in the library's two steps.
struct LibraryCurves {
  LibraryCurve camera; // encoded the signal: its inverse leads from an input to scene light
  LibraryCurve system; // from scene light to display light
};

struct ToneCurve {
  std::string name;     // as the user gave it, without the case
  std::string meaning;  // in words, with the standard
  bool refers_to_black; // luminance() is about light with the black in it; the range tells the black
  std::function<double(double input, const LightRange &)> luminance; // cd/m2 at an input of 0..1
  std::optional<LibraryCurves> library;                              // where the library's form holds the curve
  std::optional<double> peak;                                        // luminance of white that the curve names, cd/m2
};

// ITU-R BT.1886 annex 1, gamma 2.4.
double bt1886(double input, const LightRange &range);

// SMPTE ST 2084: cd/m2 of an input of 0..1.
double pq(double input);

// ITU-R BT.2100 HLG: the EOTF for grays, with the system gamma and the black lift of the range.
double hlg(double input, const LightRange &range);

// CIE 1976 L*: an input is L* / 100.
extern const vexo_gamma kLstar;

inline const LibraryCurve kLinear = {"linear", {0.0F, 0.0F, 1.0F, 0.0F}};

// The power law light = input^exponent.
ToneCurve power_law(float exponent);

// The curve of two steps.
ToneCurve two_steps(const LibraryCurve &camera, const LibraryCurve &system);

// An exponent, srgb, lstar, bt1886[:BLACK], pq[:PEAK], hlg[:PEAK], or a CSV file of input,light. Throws a Failure
// (usage; input for the file).
ToneCurve parse_tone_curve(const std::string &option, const std::string &text);
std::string tone_curve_names();
std::string tone_curve_words(); // the names among them

// The name of an encoding curve, an exponent, or "slope,transition,gamma,offset". Throws a Failure (usage).
LibraryCurve parse_camera_curve(const std::string &option, const std::string &text);

// The same without the names: encoding curves lead from light to signal. Throws a Failure (usage) that says what to
// give instead.
LibraryCurve parse_system_curve(const std::string &option, const std::string &text);
std::string camera_curve_names();

// "NAME (slope S, transition T, gamma G, offset O)", the numbers as they are used.
std::string describe(const LibraryCurve &curve);

#endif
