#include "file/import.h"

#include "file/input.h"
#include "file/ramps.h"
#include "file/readings.h"

Import import_measurements(const std::string &path) {
  return lay_out_ramps(input_name(path), read_readings(path, "a CGATS or CSV file"));
}
