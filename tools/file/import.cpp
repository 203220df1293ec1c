#include "file/import.h"

#include <lcms2.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <type_traits>

#include "file/csv.h"
#include "file/input.h"
#include "text/channels.h"
#include "text/failure.h"
#include "text/grammar.h"
#include "text/text.h"

namespace {

const size_t kCapacity = 64;       // rows of vexo_lcnr
const size_t kMostKeywords = 1000; // of a CGATS file

[[noreturn]] void refuse(const std::string &where, const std::string &what) {
  throw Failure(kInputError, where + ": " + what);
}

struct Mean {
  double sum[3] = {0.0, 0.0, 0.0};
  int count = 0;

  void add(const float (&XYZ)[3]) {
    for (int m = 0; m < 3; m++) {
      sum[m] += static_cast<double>(XYZ[m]);
    }
    count++;
  }
  float component(int m) const { return static_cast<float>(sum[m] / count); }
};

// The readings of one level, a mean for each channel.
struct Level {
  Mean channel[3];

  bool complete() const {
    return std::all_of(std::begin(channel), std::end(channel), [](const Mean &mean) { return mean.count > 0; });
  }
  std::string channels() const { // those that were read
    std::string names;
    for (int c = 0; c < 3; c++) {
      if (channel[c].count > 0) {
        names += (names.empty() ? "" : " and ") + std::string(kChannels[c]);
      }
    }
    return names;
  }
};

// Collects readings of single channels and lays them out as rows.
class Ramps {
public:
  explicit Ramps(std::string path) : path_(std::move(path)) {}

  void add(int channel, float level, const float (&XYZ)[3]) {
    readings_++;
    levels_[level].channel[channel].add(XYZ);
  }
  void add_black(const float (&XYZ)[3]) {
    readings_++;
    for (Mean &mean : levels_[0.0F].channel) {
      mean.add(XYZ);
    }
  }
  void leave_out(bool gray) {
    readings_++;
    (gray ? grays_ : mixes_)++;
  }
  void note(const std::string &text) { import_.notes.push_back(text); }

  Import finish() {
    if (levels_.empty()) {
      refuse(path_, format("no channel driven alone in %zu readings", readings_));
    }
    import_.readings = readings_;
    note_mixtures();
    check_ends();
    drop_incomplete();
    note_means();
    const std::vector<float> kept = choose();
    for (const float level : kept) {
      append(level);
    }
    return import_;
  }

private:
  void note_mixtures() {
    if (grays_ + mixes_ > 0) {
      note(format("%zu readings left out: two or three channels driven (%zu gray, %zu mixed)", grays_ + mixes_, grays_,
                  mixes_));
    }
  }

  // Black and full drive are what every table is made from.
  void check_ends() {
    const auto &[lowest, black] = *levels_.begin();
    if (lowest != 0.0F || !black.complete()) {
      refuse(path_, "no reading of black (all drives 0) for every channel, expected one at least");
    }
    const auto &[highest, full] = *levels_.rbegin();
    if (levels_.size() < 2 || !full.complete()) {
      refuse(path_, format("full drive, level %.9g, was read for %s only, expected every channel",
                           static_cast<double>(highest), levels_.size() < 2 ? "black" : full.channels().c_str()));
    }
  }

  void drop_incomplete() {
    for (auto level = levels_.begin(); level != levels_.end();) {
      if (level->second.complete()) {
        ++level;
        continue;
      }
      note(format("level %.9g left out: read for %s only", static_cast<double>(level->first),
                  level->second.channels().c_str()));
      level = levels_.erase(level);
    }
  }

  void note_means() {
    for (const auto &[level, readings] : levels_) {
      for (int c = 0; c < 3; c++) {
        if (readings.channel[c].count > 1) {
          note(format("level %.9g of %s is the mean of %d readings", static_cast<double>(level), kChannels[c],
                      readings.channel[c].count));
        }
      }
    }
  }

  // All levels, or as many of them as a file holds, evenly spaced in their order, with the first and the last.
  std::vector<float> choose() {
    std::vector<float> all;
    for (const auto &entry : levels_) {
      all.push_back(entry.first);
    }
    if (all.size() <= kCapacity) {
      return all;
    }
    note(format("%zu levels left out: a file holds %zu, an evenly spaced choice of the %zu with black and full drive",
                all.size() - kCapacity, kCapacity, all.size()));
    std::vector<float> chosen;
    for (size_t i = 0; i < kCapacity; i++) {
      chosen.push_back(all[i * (all.size() - 1) / (kCapacity - 1)]);
    }
    return chosen;
  }

  void append(float level) {
    vexo_lcnr &lcnr = import_.lcnr;
    lcnr.sample[lcnr.num] = level;
    for (int n = 0; n < 9; n++) {
      lcnr.data[n / 3][n % 3][lcnr.num] = levels_[level].channel[n / 3].component(n % 3);
    }
    lcnr.num++;
  }

  std::string path_; // as messages name it
  std::map<float, Level> levels_;
  size_t readings_ = 0;
  size_t grays_ = 0;
  size_t mixes_ = 0;
  Import import_;
};

float level_of(const std::string &path, const CsvLine &line) {
  const float level = csv_number(path, line, 0);
  if (level < 0.0F) {
    refuse(csv_place(path, line), format("level %s, expected 0 or more", line.fields[0].c_str()));
  }
  return level;
}

void read_XYZ(const std::string &path, const CsvLine &line, size_t column, float (&XYZ)[3]) {
  for (size_t m = 0; m < 3; m++) {
    XYZ[m] = csv_number(path, line, column + m);
  }
}

// level,channel,X,Y,Z
void add_single(const std::string &path, const CsvLine &line, Ramps &ramps) {
  const float level = level_of(path, line);
  float XYZ[3];
  read_XYZ(path, line, 2, XYZ);
  const std::string &name = line.fields[1];
  for (int c = 0; c < 3; c++) {
    if (name == kChannels[c] || name == std::string(1, *kChannels[c])) {
      ramps.add(c, level, XYZ);
      return;
    }
  }
  if (name != "black") {
    refuse(csv_place(path, line), format("channel '%s', expected red, green, blue, r, g, b or black", name.c_str()));
  }
  if (level != 0.0F) {
    refuse(csv_place(path, line), format("black at level %s, expected level 0", line.fields[0].c_str()));
  }
  ramps.add_black(XYZ);
}

// level,Xr,Yr,Zr,Xg,Yg,Zg,Xb,Yb,Zb
void add_three(const std::string &path, const CsvLine &line, Ramps &ramps) {
  const float level = level_of(path, line);
  for (int c = 0; c < 3; c++) {
    float XYZ[3];
    read_XYZ(path, line, 1 + 3 * static_cast<size_t>(c), XYZ);
    ramps.add(c, level, XYZ);
  }
}

Import import_csv(const std::string &path, const std::string &text) {
  const std::vector<CsvLine> lines = csv_lines(text);
  Ramps ramps(input_name(path));
  for (const CsvLine &line : lines) {
    const size_t columns = line.fields.size();
    if ((columns != 5 && columns != 10) || columns != lines.front().fields.size()) {
      refuse(csv_place(path, line), format("%zu columns, expected %s", columns,
                                           &line == &lines.front() ? "5 (level,channel,X,Y,Z) or 10 (level,Xr,...,Zb)"
                                                                   : "as many as in the lines before"));
    }
    columns == 5 ? add_single(path, line, ramps) : add_three(path, line, ramps);
  }
  return ramps.finish();
}

struct DeleteContext {
  void operator()(cmsContext context) const { cmsDeleteContext(context); }
};
struct FreeTables {
  void operator()(cmsHANDLE tables) const { cmsIT8Free(tables); }
};

// Turns the reader's "NAME: Line N, what" into ":N: what".
void keep_message(cmsContext context, cmsUInt32Number /*code*/, const char *text) {
  auto *message = static_cast<std::string *>(cmsGetContextUserData(context));
  const std::string what(text, std::strcspn(text, "\n"));
  int line = 0;
  int end = 0;
  const char *place = std::strstr(what.c_str(), "Line ");
  if (place != nullptr && std::sscanf(place, "Line %d, %n", &line, &end) == 1 && end > 0) {
    *message = format(":%d: not CGATS: %s", line, place + end);
  } else {
    *message = ": not CGATS: " + what;
  }
}

// The columns of a table that holds readings of RGB drives: R, G, B, X, Y, Z.
struct Columns {
  int at[6];
};
const char *const kFields[6] = {"RGB_R", "RGB_G", "RGB_B", "XYZ_X", "XYZ_Y", "XYZ_Z"};

bool find_columns(cmsHANDLE tables, Columns *columns) {
  for (cmsUInt32Number table = 0; table < cmsIT8TableCount(tables); table++) {
    if (cmsIT8SetTable(tables, table) < 0) {
      continue;
    }
    for (int i = 0; i < 6; i++) {
      columns->at[i] = cmsIT8FindDataFormat(tables, kFields[i]);
    }
    if (*std::min_element(columns->at, columns->at + 6) >= 0) {
      return true;
    }
  }
  return false;
}

void add_set(const std::string &name, cmsHANDLE tables, const Columns &columns, int set, Ramps &ramps) {
  float values[6];
  for (int i = 0; i < 6; i++) {
    const char *text = cmsIT8GetDataRowCol(tables, set, columns.at[i]);
    const auto value = finite_number(text != nullptr ? text : "");
    if (!value || (i < 3 && *value < 0.0F)) {
      refuse(name, format("data set %d: %s is no number%s", set + 1, kFields[i], i < 3 ? ", or below 0" : ""));
    }
    values[i] = *value;
  }
  const float(&drive)[6] = values;
  const float XYZ[3] = {values[3], values[4], values[5]};
  const auto driven = std::count_if(drive, drive + 3, [](float d) { return d > 0.0F; });
  if (driven == 0) {
    ramps.add_black(XYZ);
  } else if (driven == 1) {
    const auto channel = std::find_if(drive, drive + 3, [](float d) { return d > 0.0F; }) - drive;
    ramps.add(static_cast<int>(channel), drive[channel], XYZ);
  } else {
    ramps.leave_out(drive[0] == drive[1] && drive[1] == drive[2]);
  }
}

Import import_cgats(const std::string &path, const std::string &text) {
  const std::string name = input_name(path);
  if (text.empty()) {
    refuse(name, "not CGATS: empty");
  }
  // The reader would open other files for it.
  std::string upper = text;
  std::transform(upper.begin(), upper.end(), upper.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  if (upper.find(".INCLUDE") != std::string::npos) {
    refuse(name, "holds .INCLUDE, expected all readings in one file");
  }
  // It looks at all keywords for each.
  size_t keywords = 0;
  for (size_t at = upper.find("KEYWORD"); at != std::string::npos; at = upper.find("KEYWORD", at + 1)) {
    if (++keywords > kMostKeywords) {
      refuse(name, format("more than %zu keywords", kMostKeywords));
    }
  }
  std::string message;
  const std::unique_ptr<std::remove_pointer_t<cmsContext>, DeleteContext> context(cmsCreateContext(nullptr, &message));
  if (context == nullptr) {
    refuse(name, "out of memory");
  }
  cmsSetLogErrorHandlerTHR(context.get(), keep_message);
  const std::unique_ptr<void, FreeTables> tables(
      cmsIT8LoadFromMem(context.get(), text.data(), static_cast<cmsUInt32Number>(text.size())));
  if (tables == nullptr) {
    throw Failure(kInputError, name + (message.empty() ? ": not CGATS" : message));
  }
  Columns columns = {};
  if (!find_columns(tables.get(), &columns)) {
    refuse(name, "no table with the columns RGB_R RGB_G RGB_B XYZ_X XYZ_Y XYZ_Z");
  }
  Ramps ramps(name);
  const char *luminance = cmsIT8GetProperty(tables.get(), "LUMINANCE_XYZ_CDM2");
  const char *normalised = cmsIT8GetProperty(tables.get(), "NORMALIZED_TO_Y_100");
  if (luminance != nullptr && normalised != nullptr && std::string(normalised) == "YES") {
    ramps.note(
        format("values are relative to a white of Y = 100, as in the file; its X Y Z in cd/m2 is %s", luminance));
  }
  const double sets = cmsIT8GetPropertyDbl(tables.get(), "NUMBER_OF_SETS"); // any number; sets beyond the data refuse
  for (int set = 0; static_cast<double>(set) < sets; set++) {
    add_set(name, tables.get(), columns, set, ramps);
  }
  return ramps.finish();
}

bool is_cgats(const std::string &path, const std::string &text) {
  return has_extension(path, ".ti3") || text.find("BEGIN_DATA") != std::string::npos;
}

} // namespace

Import import_measurements(const std::string &path) {
  const std::string text = read_text(path, "a CGATS or CSV file");
  return is_cgats(path, text) ? import_cgats(path, text) : import_csv(path, text);
}
