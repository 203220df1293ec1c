// Test vectors: digests of the bits of many results of each call, the same on every processor, with every compiler,
// optimisation and mathematics library. The second is of arguments that no caller means: NaN, infinities, -0, denormal
// and huge numbers, tables of no and of one entry, numbers that no enumeration has. What results mean is judged by the
// other tests; that calls stay within their records the sanitizers tell.
#include <gtest/gtest.h>

#include <sstream>

#include "golden.h"
#include "library/calls.h"
#include "text.h"

TEST(Vectors, EveryCall) {
  std::ostringstream lines;
  diagnostics([&] { // readings that fall are reported
    for (const Call &call : calls()) {
      lines << digests(call) << '\n';
    }
  });
  expect_golden("vectors.txt", lines.str());
}
