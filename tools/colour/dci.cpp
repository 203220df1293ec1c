#include "colour/dci.h"

#include <map>

#include "vexo-dcine.h"

namespace {

// One conversion of the library: with the depth of the codes, or between the primaries alone.
struct Step {
  const char *from;
  const char *to;
  void (*coded)(vexo_vector *, unsigned);
  int (*primaries)(vexo_vector *);
};

const Step kSteps[] = {
    {"XYZq", "xyz", vexo_dcine_XYZq_xyz, nullptr}, {"xyz", "XYZq", vexo_dcine_xyz_XYZq, nullptr},
    {"RGBq", "rgb", vexo_dcine_RGBq_rgb, nullptr}, {"rgb", "RGBq", vexo_dcine_rgb_RGBq, nullptr},
    {"XYZq", "XYZ", vexo_dcine_XYZq_XYZ, nullptr}, {"XYZ", "XYZq", vexo_dcine_XYZ_XYZq, nullptr},
    {"RGBq", "RGB", vexo_dcine_RGBq_RGB, nullptr}, {"RGB", "RGBq", vexo_dcine_RGB_RGBq, nullptr},
    {"XYZ", "xyz", vexo_dcine_XYZ_xyz, nullptr},   {"xyz", "XYZ", vexo_dcine_xyz_XYZ, nullptr},
    {"RGB", "rgb", vexo_dcine_RGB_rgb, nullptr},   {"rgb", "RGB", vexo_dcine_rgb_RGB, nullptr},
    {"rgb", "xyz", nullptr, vexo_dcine_rgb_xyz},   {"xyz", "rgb", nullptr, vexo_dcine_xyz_rgb},
};

// The fewest steps from one form to another: a breadth-first search.
std::vector<const Step *> path(const std::string &from, const std::string &to) {
  std::map<std::string, std::vector<const Step *>> reached = {{from, {}}};
  while (reached.count(to) == 0) {
    auto farther = reached;
    for (const Step &step : kSteps) {
      if (reached.count(step.from) != 0 && reached.count(step.to) == 0) {
        auto steps = reached[step.from];
        steps.push_back(&step);
        farther.emplace(step.to, steps);
      }
    }
    reached = farther;
  }
  return reached[to];
}

} // namespace

std::vector<std::string> dci_forms() { return {"XYZq", "XYZ", "xyz", "RGBq", "RGB", "rgb"}; }

vexo_vector dci_convert(vexo_vector v, const std::string &from, const std::string &to, unsigned bits) {
  for (const Step *step : path(from, to)) {
    if (step->coded != nullptr) {
      step->coded(&v, bits);
    } else {
      step->primaries(&v);
    }
  }
  return v;
}
