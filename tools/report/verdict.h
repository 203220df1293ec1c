// What the figures of a report mean, in words, and what they rest on.
#ifndef VEXO_TOOLS_VERDICT_H
#define VEXO_TOOLS_VERDICT_H

#include <string>

#include "report/report.h"

// How well a ramp follows its target: 0 good, 1 fair, 2 poor.
int grade(const Spread &de2000);
const char *grade_name(int grade); // "Good", "Fair", "Poor"

// What predictions rest on.
const char *prediction_basis(const Report &report);

// What the verdict rests on: a measured ramp, or a prediction.
const char *basis(const Report &report);

// The grade, what it rests on, and the figures. Only a measured verdict says what a viewer sees.
std::string verdict(const Report &report);

// What to measure next; empty where the verdict is measured.
std::string next_step(const Report &report);

// Whether the LUTs leave the ramp worse than it is without them.
bool makes_worse(const Report &report);

#endif
