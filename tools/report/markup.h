// Text inside HTML and SVG.
#ifndef VEXO_TOOLS_MARKUP_H
#define VEXO_TOOLS_MARKUP_H

#include <string>

// Escapes markup. Bytes that are not UTF-8 and control characters become U+FFFD.
std::string escaped(const std::string &text);

// The number with that many decimals, or a dash where there is none.
std::string number(double value, int decimals);

// "6504 K", or a dash for none.
std::string kelvin(int cct);

#endif
