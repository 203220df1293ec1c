// The commands of the tool. Each adds itself, its options and its help to the application; running one may throw a
// Failure.
#ifndef VEXO_TOOLS_COMMANDS_H
#define VEXO_TOOLS_COMMANDS_H

namespace CLI {
class App;
}

void add_calibrate(CLI::App &app);

#endif
