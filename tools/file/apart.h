// Files that a command reads and writes are all different ones.
#ifndef VEXO_TOOLS_APART_H
#define VEXO_TOOLS_APART_H

#include <string>
#include <vector>

// Paths as on the command line: "-" is standard input or output, an empty path is none. Called before anything is read
// or written. Throws a Failure (usage) when an output is an input or another output, or when standard input is named
// twice. Files are compared by device and inode, whatever their names; where nothing exists yet, by folder and name.
// Devices and sockets may be named repeatedly.
void require_apart(const std::vector<std::string> &inputs, const std::vector<std::string> &outputs);

#endif
