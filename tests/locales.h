// Checks under a decimal comma.
#ifndef VEXO_TESTS_LOCALE_H
#define VEXO_TESTS_LOCALE_H

#include <gtest/gtest.h>

#include <clocale>

#include "skip.h"
#include "text.h"

// Runs a check as it stands and again while the process has a locale whose decimal separator is a comma.
template <typename Check> void in_both_locales(Check check) {
  check();
  static const TemporaryFolder folder;
  const std::string locale = "de_DE"; // in a character set that localedef compiles quickly
  if (!std::filesystem::exists(folder.path(locale))) {
    const std::string command = "localedef -i de_DE -f ISO-8859-1 '" + folder.path(locale) + "' >/dev/null 2>&1";
    (void)!std::system(command.c_str());
  }
  setenv("LOCPATH", folder.path("").c_str(), 1);
  if (std::setlocale(LC_ALL, locale.c_str()) == nullptr) {
    return skip("no decimal comma tried: localedef cannot make " + locale + " (Debian package: locales)");
  }
  ASSERT_STREQ(",", std::localeconv()->decimal_point);
  const testing::ScopedTrace trace(__FILE__, __LINE__, "decimal comma");
  check();
  EXPECT_STREQ(",", std::localeconv()->decimal_point); // the application's locale is as it was
  std::setlocale(LC_ALL, "C");
  unsetenv("LOCPATH");
}

#endif
