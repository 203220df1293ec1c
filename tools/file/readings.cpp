#include "file/readings.h"

#include <algorithm>
#include <map>

#include "file/input.h"
#include "text/failure.h"
#include "text/format.h"
#include "text/verbose.h"

namespace {

bool is_cgats(const std::string &path, const std::string &text) {
  const char *const extensions[] = {".ti1", ".ti2", ".ti3"};
  const auto named = [&](const char *extension) { return has_extension(path, extension); };
  return std::any_of(std::begin(extensions), std::end(extensions), named) ||
         text.find("BEGIN_DATA") != std::string::npos;
}

bool is_gray(const Reading &reading) {
  return reading.drive[0] == reading.drive[1] && reading.drive[1] == reading.drive[2];
}

std::vector<GrayReading> means(const std::vector<GrayReading> &grays) {
  struct Repeated {
    MeanXYZ mean;
    std::string place;
  };
  std::map<float, Repeated> levels;
  for (const GrayReading &gray : grays) {
    Repeated &level = levels.try_emplace(gray.level, Repeated{{}, gray.place}).first->second;
    level.mean.add(gray.XYZ);
  }
  std::vector<GrayReading> sorted;
  for (const auto &[level, readings] : levels) {
    sorted.push_back({level, readings.mean.XYZ(), readings.place});
  }
  return sorted;
}

} // namespace

Readings read_readings(const std::string &path, const char *expected) {
  const std::string text = read_text(path, expected);
  if (text.rfind('<', 0) == 0) {
    refuse_input(input_name(path) + ":1", std::string("XML, expected ") + expected);
  }
  return (is_cgats(path, text) ? read_cgats : read_csv)(path, text);
}

std::vector<GrayReading> read_gray(const std::string &path, float full) {
  const Readings readings = read_readings(path, "a gray ramp");
  std::vector<GrayReading> grays;
  for (const Reading &reading : readings.list) {
    if (is_gray(reading)) {
      const float level = readings.full ? reading.drive[0] / *readings.full * full : reading.drive[0];
      grays.push_back({level, reading.XYZ, reading.place});
    }
  }
  if (readings.ramp) {
    return grays;
  }
  std::vector<GrayReading> sorted = means(grays);
  say(input_name(path) +
      format(": %zu of %zu readings are gray, at %zu levels", grays.size(), readings.list.size(), sorted.size()));
  return sorted;
}
