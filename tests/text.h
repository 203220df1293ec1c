// Text through streams and the standard error stream, for tests of readers, writers and diagnostics.
#ifndef VEXO_TESTS_TEXT_H
#define VEXO_TESTS_TEXT_H

#include <cstdio>
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

#endif
