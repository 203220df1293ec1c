// A process locale with a decimal comma, for tests that number text does not depend on it.
#ifndef VEXO_TESTS_COMMA_LOCALE_H
#define VEXO_TESTS_COMMA_LOCALE_H

#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

// For its lifetime. Made with localedef(1), as a system may have no such locale installed.
class CommaLocale {
public:
  CommaLocale() {
    const std::string directory = testing::TempDir() + "vexo-comma-locale";
    std::ofstream(directory + ".def")
        << "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \"\"\ngrouping -1\nEND LC_NUMERIC\n";
    const std::string make = "mkdir -p " + directory + "; localedef -c -i " + directory + ".def -f ANSI_X3.4-1968 " +
                             directory + "/comma >" + directory + ".log 2>&1";
    if (std::system(make.c_str()) != -1 && setenv("LOCPATH", directory.c_str(), 1) == 0) {
      std::setlocale(LC_NUMERIC, "comma");
    }
  }
  ~CommaLocale() {
    std::setlocale(LC_NUMERIC, "C");
    unsetenv("LOCPATH");
  }
  CommaLocale(const CommaLocale &) = delete;
  CommaLocale &operator=(const CommaLocale &) = delete;
};

// Whether printf writes a decimal comma now.
inline bool comma_in_force() {
  char text[8];
  std::snprintf(text, sizeof text, "%.1f", 0.5);
  return std::string(text) == "0,5";
}

#endif
