// The commands of the tool. Each adds itself, its options and its help to the application; running one may throw a
// Failure. command_line is what the user typed.
#ifndef VEXO_TOOLS_COMMANDS_H
#define VEXO_TOOLS_COMMANDS_H

#include <string>

namespace CLI {
class App;
}

void add_calibrate(CLI::App &app, const std::string &command_line);
void add_color(CLI::App &app);
void add_csc(CLI::App &app);
void add_dci(CLI::App &app);
void add_delta(CLI::App &app);
void add_gray(CLI::App &app);
void add_import(CLI::App &measure); // a command of measure
void add_lut1d(CLI::App &app);
void add_lut3d(CLI::App &app);
void add_lut3d_make(CLI::App &lut3d); // a command of lut3d
void add_measure(CLI::App &app);
void add_refine(CLI::App &app, const std::string &command_line);
void add_report(CLI::App &app, const std::string &command_line);
void add_space(CLI::App &app);

#endif
