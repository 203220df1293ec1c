// A 3D LUT file as the lut3d commands read it.
#ifndef VEXO_TOOLS_LUT3D_INPUT_H
#define VEXO_TOOLS_LUT3D_INPUT_H

#include "file/lut3d.h"

namespace CLI {
class App;
}

// name: of the argument that holds the path.
void add_input(CLI::App *command, const char *name, Lut3dInput &input);

// Prints the file's warnings. Throws a Failure (input).
Lut3dFile read_with_warnings(const Lut3dInput &input);

#endif
