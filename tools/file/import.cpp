#include "file/import.h"

#include "file/input.h"
#include "file/ramps.h"
#include "file/readings.h"

Import import_measurements(const std::string &path) {
  const std::string text = read_text(path, "a CGATS or CSV file");
  return lay_out_ramps(input_name(path), (is_cgats(path, text) ? read_cgats : read_csv)(path, text));
}
