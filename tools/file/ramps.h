// Ramps of red, green and blue, each driven alone, sorted out of readings.
#ifndef VEXO_TOOLS_RAMPS_H
#define VEXO_TOOLS_RAMPS_H

#include <string>

#include "file/import.h"
#include "file/readings.h"

// Lays the readings of single channels and of black out as rows. name: of the file in messages. Throws a Failure
// (input) when black or full drive was not read for every channel.
Import lay_out_ramps(const std::string &name, const Readings &readings);

#endif
