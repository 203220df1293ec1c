// Running the command-line tool as a user does, in a folder of its own.
#ifndef VEXO_TESTS_TOOL_H
#define VEXO_TESTS_TOOL_H

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include "text.h"

inline std::string contents(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

inline void save(const std::string &path, const std::string &text) { std::ofstream(path, std::ios::binary) << text; }

inline bool has(const std::string &text, const std::string &part) { return text.find(part) != std::string::npos; }

struct Result {
  int code;
  std::string out;
  std::string err;
};

// In the folder, "panel.xml" is the sample panel.
class Tool : public testing::Test {
protected:
  void SetUp() override { save(path("panel.xml"), contents(VEXO_EXAMPLES "/sample-panel.xml")); }

  std::string path(const std::string &name) const { return folder_.path(name); }

  // before: shell commands that set the stage.
  Result run(const std::string &arguments, const std::string &before = "") const {
    const std::string command = "cd '" + path("") + "' && " + before + " '" VEXO_TOOL "' " + arguments + " >out 2>err";
    const int status = std::system(command.c_str());
    return Result{WIFEXITED(status) ? WEXITSTATUS(status) : -1, contents(path("out")), contents(path("err"))};
  }

  // Runs what has to succeed.
  std::string out(const std::string &arguments) const {
    const Result r = run(arguments);
    EXPECT_EQ(r.code, 0) << arguments << "\n" << r.err;
    return r.out;
  }

  // How many files a test and its runs left in the folder.
  long files() const {
    const std::filesystem::directory_iterator entries(path(""));
    return std::distance(begin(entries), end(entries));
  }

private:
  const TemporaryFolder folder_;
};

#endif
