// The commands of the tool. Each adds itself, its options and its help to the application; running one may throw a
// Failure.
#ifndef VEXO_TOOLS_COMMANDS_H
#define VEXO_TOOLS_COMMANDS_H

namespace CLI {
class App;
}

void add_calibrate(CLI::App &app);
void add_colour(CLI::App &app); // color, delta, space, dci
void add_csc(CLI::App &app);
void add_gray(CLI::App &app);
void add_lut1d(CLI::App &app);
void add_lut3d(CLI::App &app);
void add_measure(CLI::App &app);

#endif
