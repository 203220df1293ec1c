// Text through streams and the standard error stream, for tests of readers, writers and diagnostics.
#ifndef VEXO_TESTS_TEXT_H
#define VEXO_TESTS_TEXT_H

#include <gtest/gtest.h>
#include <unistd.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

// What a function prints to a stream.
template <typename Print> std::string printed(Print print) {
  std::FILE *f = std::tmpfile();
  print(f);
  std::string text(static_cast<size_t>(std::ftell(f)), '\0');
  std::rewind(f);
  text.resize(std::fread(text.data(), 1, text.size(), f));
  std::fclose(f);
  return text;
}

// A stream that holds text, positioned at its start. The caller closes it.
inline std::FILE *stream_of(const std::string &text) {
  std::FILE *f = std::tmpfile();
  std::fwrite(text.data(), 1, text.size(), f);
  std::rewind(f);
  return f;
}

inline std::string repeated(int count, const std::string &text) {
  std::string all;
  while (count-- > 0) {
    all += text;
  }
  return all;
}

// What a function prints to the standard error stream.
template <typename Run> std::string diagnostics(Run run) {
  return printed([&](std::FILE *f) {
    const int saved = dup(STDERR_FILENO);
    dup2(fileno(f), STDERR_FILENO);
    run();
    dup2(saved, STDERR_FILENO);
    close(saved);
    std::fseek(f, 0, SEEK_END);
  });
}

// The text that printf makes of an address.
inline std::string address(const void *p) {
  return printed([&](std::FILE *f) { std::fprintf(f, "%p", p); });
}

// The first line of a dump: "PREFIX KIND(ADDRESS):", without the prefix when that is null.
inline std::string dump_heading(const char *prefix, const char *kind, const void *record) {
  return (prefix != nullptr ? std::string(prefix) + " " : std::string()) + kind + "(" + address(record) + "):\n";
}

// A folder that lives as long as the object. Its name has a blank, as folders may.
class TemporaryFolder {
public:
  TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "vexo tests-XXXXXX").string();
    if (mkdtemp(name.data()) != nullptr) {
      name_ = name;
    }
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(name_, ignored);
  }
  TemporaryFolder(const TemporaryFolder &) = delete;
  TemporaryFolder &operator=(const TemporaryFolder &) = delete;

  std::string path(const std::string &file) const { return name_ + "/" + file; }

private:
  std::string name_;
};

// Skips the rest of a test that lacks something; it fails where all tests have to run. The test returns afterwards.
inline void skip(const std::string &why) {
  if (std::getenv("VEXO_ALL_TESTS") != nullptr) {
    FAIL() << why;
  }
  GTEST_SKIP() << why;
}

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
