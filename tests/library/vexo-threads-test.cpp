// No call keeps state outside its records: many threads at once get the bits that one alone gets. The thread sanitizer
// tells of anything shared.
#include <gtest/gtest.h>

#include <thread>

#include "library/calls.h"
#include "text.h"

namespace {

std::vector<std::string> all_digests() {
  std::vector<std::string> lines;
  for (const Call &call : calls()) {
    lines.push_back(digests(call));
  }
  return lines;
}

} // namespace

TEST(Threads, GetTheSameResults) {
  diagnostics([] { // readings that fall are reported
    const std::vector<std::string> alone = all_digests();
    std::vector<std::vector<std::string>> results(4);
    std::vector<std::thread> threads;
    for (std::vector<std::string> &lines : results) {
      threads.emplace_back([&lines] { lines = all_digests(); });
    }
    for (std::thread &thread : threads) {
      thread.join();
    }
    EXPECT_EQ(results, std::vector<std::vector<std::string>>(4, alone));
  });
}
