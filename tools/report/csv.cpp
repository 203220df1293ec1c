// The grays at each 5 % of input, then the measured ones, as comma-separated values.
#include <cmath>

#include "report/report.h"
#include "text/format.h"

namespace {

// Empty for none.
std::string cct_field(int cct) { return cct > 0 ? std::to_string(cct) : ""; }

std::string columns(const GrayFigure &g) {
  return format(",%.6g,%.6f,%.6f,%s,%s", g.xyY.d[2], g.xyY.d[0], g.xyY.d[1], cct_field(g.cct).c_str(),
                std::isfinite(g.de2000) ? format("%.4f", g.de2000).c_str() : "");
}

} // namespace

void write_csv(const Report &report, std::FILE *f) {
  std::fputs("input_percent,target_Y,target_x,target_y,target_CCT,before_Y,before_x,before_y,before_CCT,before_dE2000,"
             "after_Y,after_x,after_y,after_CCT,after_dE2000,measured_Y,measured_x,measured_y,measured_CCT,"
             "measured_dE2000\n",
             f);
  const vexo_vector &white = report.source.target.white.xyz;
  const std::string white_cct = cct_field(report.target.summary.white_cct);
  for (size_t i = 0; i < report.after.grays.size(); i += 5) {
    const GrayFigure &t = report.target.grays[i];
    std::fprintf(f, "%g,%.6g,%.6f,%.6f,%s", t.input * 100.0, t.XYZ.d[1], white.d[0], white.d[1], white_cct.c_str());
    std::fprintf(f, "%s%s,,,,,\n", columns(report.before.grays[i]).c_str(), columns(report.after.grays[i]).c_str());
  }
  for (const GrayFigure &g : report.measured ? report.measured->grays : std::vector<GrayFigure>{}) {
    std::fprintf(f, "%g,%.6g,%.6f,%.6f,%s,,,,,,,,,,%s\n", g.input * 100.0, g.target, white.d[0], white.d[1],
                 white_cct.c_str(), columns(g).c_str());
  }
}
