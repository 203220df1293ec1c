#include "file/ramps.h"

#include <algorithm>
#include <iterator>
#include <map>

#include "file/panel.h"
#include "text/channels.h"
#include "text/failure.h"
#include "text/format.h"

namespace {

// The readings of one level, a mean for each channel.
struct Level {
  MeanXYZ channel[3];

  bool complete() const {
    return std::all_of(std::begin(channel), std::end(channel), [](const MeanXYZ &mean) { return mean.count() > 0; });
  }
  std::string channels() const { // those that were read
    std::string names;
    for (int c = 0; c < 3; c++) {
      if (channel[c].count() > 0) {
        names += (names.empty() ? "" : " and ") + std::string(kChannels[c]);
      }
    }
    return names;
  }
};

using Levels = std::map<float, Level>;
using Notes = std::vector<std::string>;

void add_black(const Reading &reading, Levels &levels) {
  for (int c = 0; c < 3; c++) {
    if (reading.channel.value_or(c) == c) {
      levels[0.0F].channel[c].add(reading.XYZ);
    }
  }
}

// Sorts the readings by the channels driven. Mixtures of channels are left out.
Levels sort_by_level(const std::vector<Reading> &readings, Notes &notes) {
  Levels levels;
  size_t grays = 0;
  size_t mixed = 0;
  for (const Reading &reading : readings) {
    const float(&drive)[3] = reading.drive;
    const auto on = [](float d) { return d > 0.0F; };
    const auto driven = std::count_if(drive, drive + 3, on);
    if (driven == 0) {
      add_black(reading, levels);
    } else if (driven == 1) {
      const auto channel = std::find_if(drive, drive + 3, on) - drive;
      levels[drive[channel]].channel[channel].add(reading.XYZ);
    } else {
      (drive[0] == drive[1] && drive[1] == drive[2] ? grays : mixed)++;
    }
  }
  if (grays + mixed > 0) {
    notes.push_back(format("%zu readings left out: two or three channels driven (%zu gray, %zu mixed)", grays + mixed,
                           grays, mixed));
  }
  return levels;
}

// Every table is made from black and full drive.
void check_ends(const std::string &name, const Levels &levels) {
  const auto &[lowest, black] = *levels.begin();
  if (lowest != 0.0F || !black.complete()) {
    refuse_input(name, "no reading of black (all drives 0) for every channel, expected one at least");
  }
  const auto &[highest, full] = *levels.rbegin();
  if (!full.complete()) {
    refuse_input(name, format("full drive, level %.9g, was read for %s only, expected every channel", highest,
                              full.channels().c_str()));
  }
}

void drop_incomplete(Levels &levels, Notes &notes) {
  for (auto level = levels.begin(); level != levels.end();) {
    if (level->second.complete()) {
      ++level;
      continue;
    }
    notes.push_back(format("level %.9g left out: read for %s only", level->first, level->second.channels().c_str()));
    level = levels.erase(level);
  }
}

void note_means(const Levels &levels, Notes &notes) {
  for (const auto &[level, readings] : levels) {
    for (int c = 0; c < 3; c++) {
      const int count = readings.channel[c].count();
      if (count > 1) {
        notes.push_back(format("level %.9g of %s is the mean of %d readings", level, kChannels[c], count));
      }
    }
  }
}

// All levels, or as many of them as a file holds, evenly spaced in their order, with the first and the last.
std::vector<float> choose(const Levels &levels, Notes &notes) {
  std::vector<float> all;
  for (const auto &entry : levels) {
    all.push_back(entry.first);
  }
  if (all.size() <= kPanelRows) {
    return all;
  }
  notes.push_back(
      format("%zu levels left out: a file holds %zu, an evenly spaced choice of the %zu with black and full drive",
             all.size() - kPanelRows, kPanelRows, all.size()));
  std::vector<float> chosen;
  for (size_t i = 0; i < kPanelRows; i++) {
    chosen.push_back(all[i * (all.size() - 1) / (kPanelRows - 1)]);
  }
  return chosen;
}

void append(vexo_lcnr &lcnr, float level, const Level &readings) {
  lcnr.sample[lcnr.num] = level;
  for (int n = 0; n < 9; n++) {
    lcnr.data[n / 3][n % 3][lcnr.num] = readings.channel[n / 3].XYZ().d[n % 3];
  }
  lcnr.num++;
}

} // namespace

Import lay_out_ramps(const std::string &name, const Readings &readings) {
  Import result;
  result.readings = readings.list.size();
  result.notes = readings.notes;
  Levels levels = sort_by_level(readings.list, result.notes);
  if (levels.empty() || (levels.size() == 1 && levels.begin()->first == 0.0F)) {
    refuse_input(name, format("no channel driven alone in %zu readings, expected ramps of red, green and blue",
                              readings.list.size()));
  }
  check_ends(name, levels);
  drop_incomplete(levels, result.notes);
  note_means(levels, result.notes);
  for (const float level : choose(levels, result.notes)) {
    append(result.lcnr, level, levels[level]);
  }
  return result;
}
