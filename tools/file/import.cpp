#include "file/import.h"

#include "file/input.h"
#include "file/ramps.h"
#include "file/readings.h"

namespace {

bool is_cgats(const std::string &path, const std::string &text) {
  return has_extension(path, ".ti3") || text.find("BEGIN_DATA") != std::string::npos;
}

} // namespace

Import import_measurements(const std::string &path) {
  const std::string text = read_text(path, "a CGATS or CSV file");
  return lay_out_ramps(input_name(path), (is_cgats(path, text) ? read_cgats : read_csv)(path, text));
}
