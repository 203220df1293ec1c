// Tests that need a program that a machine may lack.
#ifndef VEXO_TESTS_SKIP_H
#define VEXO_TESTS_SKIP_H

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

// Skips the rest of a test that lacks something; it fails where all tests have to run. The test returns afterwards.
inline void skip(const std::string &why) {
  if (std::getenv("VEXO_ALL_TESTS") != nullptr) {
    FAIL() << why;
  }
  GTEST_SKIP() << why;
}

#endif
