// What vexo measure says of a panel's measurements.
#ifndef VEXO_TOOLS_MEASUREMENTS_H
#define VEXO_TOOLS_MEASUREMENTS_H

#include "calibration/check.h"
#include "text/json.h"

// On standard output.
void print_check(const Check &c);

Json json_check(const Check &c);

#endif
