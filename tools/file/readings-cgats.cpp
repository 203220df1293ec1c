// CGATS files, read with Little CMS.
#include <lcms2.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <type_traits>

#include "file/input.h"
#include "file/readings.h"
#include "text/failure.h"
#include "text/format.h"
#include "text/grammar.h"
#include "text/verbose.h"

namespace {

const size_t kMostKeywords = 1000; // of a file

struct DeleteContext {
  void operator()(cmsContext context) const { cmsDeleteContext(context); }
};
struct FreeTables {
  void operator()(cmsHANDLE tables) const { cmsIT8Free(tables); }
};
using Context = std::unique_ptr<std::remove_pointer_t<cmsContext>, DeleteContext>;
using Tables = std::unique_ptr<void, FreeTables>;

// Refuses what Little CMS should not be asked to read: .INCLUDE opens other files, and each keyword makes it look at
// all others.
void check_text(const std::string &name, const std::string &text) {
  if (text.empty()) {
    refuse_input(name, "not CGATS: empty");
  }
  std::string upper = text;
  std::transform(upper.begin(), upper.end(), upper.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  if (upper.find(".INCLUDE") != std::string::npos) {
    refuse_input(name, "holds .INCLUDE, expected all readings in one file");
  }
  size_t keywords = 0;
  for (size_t at = upper.find("KEYWORD"); at != std::string::npos; at = upper.find("KEYWORD", at + 1)) {
    if (++keywords > kMostKeywords) {
      refuse_input(name, format("more than %zu keywords", kMostKeywords));
    }
  }
}

// Turns the reader's "NAME: Line N, what" into ":N: not CGATS: what".
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

Context new_context(const std::string &name, std::string *message) {
  Context context(cmsCreateContext(nullptr, message));
  if (context == nullptr) {
    refuse_input(name, "out of memory");
  }
  cmsSetLogErrorHandlerTHR(context.get(), keep_message);
  return context;
}

// The columns R, G, B, X, Y, Z of a table.
struct Columns {
  int at[6];
};
const char *const kFields[6] = {"RGB_R", "RGB_G", "RGB_B", "XYZ_X", "XYZ_Y", "XYZ_Z"};

// Goes to the first table that has them.
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

Reading read_set(const std::string &name, cmsHANDLE tables, const Columns &columns, int set) {
  float values[6];
  for (int i = 0; i < 6; i++) {
    const char *found = cmsIT8GetDataRowCol(tables, set, columns.at[i]);
    const std::string text = found != nullptr ? found : "";
    const auto value = finite_number(text);
    if (!value || (i < 3 && *value < 0.0F)) {
      refuse_input(name, format("data set %d: %s is '%s', expected a number%s", set + 1, kFields[i], text.c_str(),
                                i < 3 ? " of 0 or more" : ""));
    }
    values[i] = *value;
  }
  return {{values[0], values[1], values[2]},
          {{values[3], values[4], values[5]}},
          format("%s: data set %d", name.c_str(), set + 1)};
}

std::string property(cmsHANDLE tables, const char *name) {
  const char *text = cmsIT8GetProperty(tables, name);
  return text != nullptr ? text : "";
}

// Lists of patches to show hold estimated colours.
void check_measured(const std::string &path, cmsHANDLE tables) {
  const std::string type = std::string(cmsIT8GetSheetType(tables)).substr(0, 4);
  if (type == "CTI1" || type == "CTI2" || has_extension(path, ".ti1") || has_extension(path, ".ti2")) {
    refuse_input(input_name(path), "a list of patches to show, whose colours are estimated, expected the readings of "
                                   "them (.ti3)");
  }
}

// As the file says, or as its brightest reading does.
bool is_normalised(cmsHANDLE tables, const std::vector<Reading> &list) {
  const std::string said = property(tables, "NORMALIZED_TO_Y_100");
  const auto brightest = std::max_element(list.begin(), list.end(),
                                          [](const Reading &a, const Reading &b) { return a.XYZ.d[1] < b.XYZ.d[1]; });
  return said.empty() ? brightest != list.end() && std::fabs(brightest->XYZ.d[1] - 100.0F) < 0.01F : said == "YES";
}

// From values that are relative to a white of Y = 100 to cd/m2.
void restore_unit(cmsHANDLE tables, Readings &readings) {
  if (!is_normalised(tables, readings.list)) {
    return;
  }
  vexo_vector white = {};
  if (!scan_triple(property(tables, "LUMINANCE_XYZ_CDM2"), &white) || !(white.d[1] > 0.0F)) {
    readings.notes.emplace_back("values are relative: white has a Y of 100, and the file does not tell its luminance "
                                "(LUMINANCE_XYZ_CDM2)");
    return;
  }
  for (Reading &reading : readings.list) {
    vexo_vector_scale(&reading.XYZ, white.d[1] / 100.0F);
  }
  readings.notes.push_back(
      format("values are scaled from a white of Y = 100 to its luminance, %.9g cd/m2", white.d[1]));
}

} // namespace

Readings read_cgats(const std::string &path, const std::string &text) {
  const std::string name = input_name(path);
  check_text(name, text);
  std::string message;
  const Context context = new_context(name, &message);
  const Tables tables(cmsIT8LoadFromMem(context.get(), text.data(), static_cast<cmsUInt32Number>(text.size())));
  if (tables == nullptr) {
    throw Failure(kInputError, name + (message.empty() ? ": not CGATS" : message));
  }
  Columns columns = {};
  if (!find_columns(tables.get(), &columns)) {
    refuse_input(name, "no table with the columns RGB_R RGB_G RGB_B XYZ_X XYZ_Y XYZ_Z");
  }
  check_measured(path, tables.get());
  Readings readings;
  readings.full = 100.0F;
  // The property holds any number. Reading a set beyond the data refuses the file.
  const double sets = cmsIT8GetPropertyDbl(tables.get(), "NUMBER_OF_SETS");
  for (int set = 0; set < sets; set++) {
    readings.list.push_back(read_set(name, tables.get(), columns, set));
  }
  restore_unit(tables.get(), readings);
  say(name + format(": CGATS, %zu data sets of %s", readings.list.size(), join({kFields, kFields + 6}).c_str()));
  return readings;
}
