#include "lut/lut1d-faults.h"

#include <algorithm>

#include "text/channels.h"
#include "text/format.h"

namespace {

void add_falls(const LutScan &scan, std::vector<LutIssue> &list) {
  for (size_t i = 1; i < scan.entries.size(); i++) {
    for (int c = 0; c < 3; c++) {
      const float before = scan.entries[i - 1].value[c];
      const float now = scan.entries[i].value[c];
      if (now < before) {
        list.push_back({scan.entries[i].line, false, format("%s falls from %.9g to %.9g", kChannels[c], before, now)});
      }
    }
  }
}

// A reader makes a column rise strictly.
void add_repairs(const LutScan &scan, std::vector<LutIssue> &list) {
  std::vector<float> values;
  for (const LutEntry &entry : scan.entries) {
    values.push_back(entry.value[0]);
  }
  if (vexo_data_normalize(values.data(), static_cast<int>(values.size())) != 0) {
    return;
  }
  for (size_t i = 0; i < values.size(); i++) {
    const float value = scan.entries[i].value[0];
    if (values[i] != value) {
      list.push_back({scan.entries[i].line, false,
                      format("%.9g does not fit a rising table and is read as %.9g", value, values[i])});
    }
  }
}

} // namespace

std::vector<LutIssue> faults(const LutScan &scan) {
  std::vector<LutIssue> list = scan.issues;
  scan.layout == "column" ? add_repairs(scan, list) : add_falls(scan, list);
  std::stable_sort(list.begin(), list.end(), [](const LutIssue &a, const LutIssue &b) { return a.line < b.line; });
  return list;
}
