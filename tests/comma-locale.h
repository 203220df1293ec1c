// A process locale with a decimal comma, for tests that number text does not depend on it.
#ifndef VEXO_TESTS_COMMA_LOCALE_H
#define VEXO_TESTS_COMMA_LOCALE_H

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

// For its lifetime. Made with localedef(1), as a system may have no such locale installed.
class CommaLocale {
public:
  CommaLocale() {
    if (mkdtemp(folder_.data()) == nullptr) {
      return;
    }
    const std::string source = folder_ + "/source";
    std::ofstream(source) << "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \"\"\ngrouping -1\nEND LC_NUMERIC\n";
    const std::string make = "localedef -c -i " + source + " -f ANSI_X3.4-1968 " + folder_ + "/comma >/dev/null 2>&1";
    (void)!std::system(make.c_str()); // complains of the categories that are left out
    setenv("LOCPATH", folder_.c_str(), 1);
    std::setlocale(LC_NUMERIC, "comma");
  }
  ~CommaLocale() {
    std::setlocale(LC_NUMERIC, "C");
    unsetenv("LOCPATH");
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  CommaLocale(const CommaLocale &) = delete;
  CommaLocale &operator=(const CommaLocale &) = delete;

private:
  std::string folder_ = (std::filesystem::temp_directory_path() / "vexo-XXXXXX").string();
};

// Whether printf writes a decimal comma now.
inline bool comma_in_force() {
  char text[8];
  std::snprintf(text, sizeof text, "%.1f", 0.5);
  return std::string(text) == "0,5";
}

#endif
