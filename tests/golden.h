// Golden files of the library's tests, in tests/golden/library. The README there describes them.
#ifndef VEXO_TESTS_GOLDEN_H
#define VEXO_TESTS_GOLDEN_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

inline std::string golden_text(const std::string &file) {
  std::ostringstream text;
  text << std::ifstream(VEXO_GOLDEN "/" + file, std::ios::binary).rdbuf();
  return text.str();
}

// The files whose names begin so.
inline std::vector<std::string> golden_files(const std::string &prefix) {
  std::vector<std::string> files;
  for (const auto &entry : std::filesystem::directory_iterator(VEXO_GOLDEN)) {
    const std::string name = entry.path().filename().string();
    if (name.compare(0, prefix.size(), prefix) == 0) {
      files.push_back(name);
    }
  }
  std::sort(files.begin(), files.end());
  EXPECT_FALSE(files.empty()) << prefix;
  return files;
}

// Compares a text with a golden file. With VEXO_UPDATE_GOLDEN in the environment it becomes the file.
inline void expect_golden(const std::string &file, const std::string &text) {
  if (std::getenv("VEXO_UPDATE_GOLDEN") != nullptr) {
    std::ofstream(VEXO_GOLDEN "/" + file, std::ios::binary) << text;
  }
  EXPECT_EQ(text, golden_text(file)) << file;
}

// Bytes as a text of lines: others than printable ones are escaped, and many of them in a row stand as \N(BYTE).
inline std::string escaped(const std::string &bytes) {
  std::string text;
  for (size_t i = 0; i < bytes.size();) {
    const char c = bytes[i];
    const size_t count = std::min(bytes.find_first_not_of(c, i), bytes.size()) - i;
    char code[8];
    std::snprintf(code, sizeof code, c == '\\' ? "\\\\" : "\\x%02x",
                  static_cast<unsigned>(static_cast<unsigned char>(c)));
    if ((c >= ' ' && c <= '~' && c != '\\') || c == '\n' || c == '\t') {
      text += std::string(count, c);
    } else if (count > 3) {
      text += "\\" + std::to_string(count) + "(" + code + ")";
    } else {
      for (size_t n = 0; n < count; n++) {
        text += code;
      }
    }
    i += count;
  }
  return text.empty() || text.back() == '\n' ? text : text + "\\\n";
}

// The bytes of such a text, in which \N(TEXT) is N times the text.
inline std::string unescaped(const std::string &text) {
  std::string bytes;
  for (size_t i = 0; i < text.size(); i++) {
    const char next = text[i] == '\\' ? text[++i] : '\0';
    if (next == '\0' || next == '\\') {
      bytes += text[i];
    } else if (next == 'x') {
      bytes += static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16));
      i += 2;
    } else if (next != '\n') {
      const size_t begin = text.find('(', i) + 1;
      const size_t end = text.find(')', begin);
      const std::string inner = unescaped(text.substr(begin, end - begin));
      for (int n = std::stoi(text.substr(i)); n > 0; n--) {
        bytes += inner;
      }
      i = end;
    }
  }
  return bytes;
}

// Runs every case of a golden file, "== NAME", an input, "--", the output for it, and compares the outputs.
template <typename Run> void expect_golden_cases(const std::string &file, Run run) {
  std::istringstream lines(golden_text(file));
  std::string text;
  std::string input;
  enum { kHeading, kInput, kOutput } part = kHeading;
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind("== ", 0) == 0) {
      part = kInput;
      input.clear();
    } else if (part == kInput && line == "--") {
      part = kOutput;
      text += "--\n" + escaped(run(unescaped(input)));
    } else if (part == kInput) {
      input += line + "\n";
    }
    text += part == kOutput ? "" : line + "\n";
  }
  expect_golden(file, text);
}

#endif
