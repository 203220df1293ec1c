#include "file/csv.h"
#include "file/input.h"
#include "file/readings.h"
#include "text/channels.h"
#include "text/failure.h"
#include "text/format.h"

namespace {

float level_of(const std::string &path, const CsvLine &line) {
  const float level = csv_number(path, line, 0);
  if (level < 0.0F) {
    refuse_input(csv_place(path, line), "level " + line.fields[0] + ", expected 0 or more");
  }
  return level;
}

vexo_vector XYZ_of(const std::string &path, const CsvLine &line, size_t column) {
  return {{csv_number(path, line, column), csv_number(path, line, column + 1), csv_number(path, line, column + 2)}};
}

Reading single_channel(int channel, float level, const vexo_vector &XYZ, const std::string &place) {
  Reading reading = {{0.0F, 0.0F, 0.0F}, XYZ, place, channel};
  reading.drive[channel] = level;
  return reading;
}

// level,channel,X,Y,Z
void add_single(const std::string &path, const CsvLine &line, Readings &readings) {
  const float level = level_of(path, line);
  const vexo_vector XYZ = XYZ_of(path, line, 2);
  const std::string &name = line.fields[1];
  for (int c = 0; c < 3; c++) {
    if (name == kChannels[c] || name == std::string(1, *kChannels[c])) {
      readings.list.push_back(single_channel(c, level, XYZ, csv_place(path, line)));
      return;
    }
  }
  if (name != "black") {
    refuse_input(csv_place(path, line),
                 format("channel '%s', expected red, green, blue, r, g, b or black", name.c_str()));
  }
  if (level != 0.0F) {
    refuse_input(csv_place(path, line), "black at level " + line.fields[0] + ", expected level 0");
  }
  readings.list.push_back({{0.0F, 0.0F, 0.0F}, XYZ, csv_place(path, line)});
}

// level,Xr,Yr,Zr,Xg,Yg,Zg,Xb,Yb,Zb
void add_three(const std::string &path, const CsvLine &line, Readings &readings) {
  const float level = level_of(path, line);
  for (int c = 0; c < 3; c++) {
    const vexo_vector XYZ = XYZ_of(path, line, 1 + 3 * static_cast<size_t>(c));
    readings.list.push_back(single_channel(c, level, XYZ, csv_place(path, line)));
  }
}

} // namespace

Readings read_csv(const std::string &path, const std::string &text) {
  Readings readings;
  size_t columns = 0; // of the first line
  for (const CsvLine &line : csv_lines(text)) {
    const size_t found = line.fields.size();
    if (columns == 0 ? found != 5 && found != 10 : found != columns) {
      refuse_input(csv_place(path, line), format("%zu columns, expected %s", found,
                                                 columns == 0 ? "5 (level,channel,X,Y,Z) or 10 (level,Xr,...,Zb)"
                                                              : "as many as in the lines before"));
    }
    columns = found;
    columns == 5 ? add_single(path, line, readings) : add_three(path, line, readings);
  }
  return readings;
}

Readings read_mixture_csv(const std::string &path, const std::string &text) {
  Readings readings;
  for (const CsvLine &line : csv_lines(text)) {
    if (line.fields.size() != 6) {
      refuse_input(csv_place(path, line), format("%zu columns, expected 6 (r,g,b,X,Y,Z)", line.fields.size()));
    }
    readings.list.push_back({{csv_number(path, line, 0), csv_number(path, line, 1), csv_number(path, line, 2)},
                             XYZ_of(path, line, 3),
                             csv_place(path, line)});
  }
  return readings;
}
