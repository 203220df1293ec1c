// The conversion between two video signals, and its registers in the hardware converter.
#ifndef VEXO_TOOLS_CONVERSION_H
#define VEXO_TOOLS_CONVERSION_H

#include <string>
#include <vector>

#include "colour/spaces.h"
#include "signal/signal.h"
#include "vexo-csc.h"

struct SignalInSpace {
  Signal signal;
  Space space;
};

// Out = matrix * in + offset, codes to codes, each signal's components in the order in which they travel. Throws a
// Failure (input) when there is no such conversion.
vexo_csc build_conversion(SignalInSpace from, SignalInSpace to, vexo_ccp controls);

// A value that its register cannot hold.
struct SaturatedRegister {
  std::string name;
  float value;   // what was asked for
  double stored; // what the register stands for
};

struct Registers {
  vexo_csc_reg codes;
  std::vector<SaturatedRegister> saturated;
  float largest_error; // in output codes, against the conversion, over the corners of the input cube
};

Registers encode_registers(vexo_csc conversion, int input_bits, int output_bits);

#endif
