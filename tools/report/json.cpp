// The report for other programs. Its members are described in docs/formats.md.
#include <cmath>

#include "file/input.h"
#include "report/report.h"
#include "report/verdict.h"
#include "text/json.h"

namespace {

Json json_real(double value) { return std::isfinite(value) ? Json(value) : Json(nullptr); }

Json json_cct(int cct) { return cct > 0 ? Json(cct) : Json(nullptr); }

Json json_curve(const Curve &curve) {
  return {{"name", curve.name},
          {"slope", json_number(curve.gamma.slope)},
          {"transition", json_number(curve.gamma.transition)},
          {"gamma", json_number(curve.gamma.gamma)},
          {"offset", json_number(curve.gamma.offset)}};
}

Json json_gray(const GrayFigure &f) {
  return {{"input", json_real(f.input)},
          {"XYZ", json_vector(f.XYZ)},
          {"xyY", json_vector(f.xyY)},
          {"uv", {json_number(f.uvY.d[0]), json_number(f.uvY.d[1])}},
          {"CCT", json_cct(f.cct)},
          {"gamma", json_real(f.gamma)},
          {"balance", {json_real(f.balance[0]), json_real(f.balance[1]), json_real(f.balance[2])}},
          {"curve", json_real(f.curve)},
          {"de2000", json_real(f.de2000)},
          {"de2000_chroma", json_real(f.de2000_chroma)},
          {"duv", json_real(f.duv)}};
}

Json json_grays(const std::vector<GrayFigure> &grays) {
  Json steps = Json::array();
  for (const GrayFigure &f : grays) {
    steps.push_back(json_gray(f));
  }
  return steps;
}

Json json_summary(const Summary &s) {
  return {{"de2000_mean", json_real(s.de2000.mean)},
          {"de2000_worst", json_real(s.de2000.worst)},
          {"de2000_worst_tenth", json_real(s.de2000_worst_tenth)},
          {"near_black_mean", json_real(s.near_black.mean)},
          {"near_black_worst", json_real(s.near_black.worst)},
          {"chroma_mean", json_real(s.chroma.mean)},
          {"chroma_worst", json_real(s.chroma.worst)},
          {"duv_mean", json_real(s.duv.mean)},
          {"duv_worst", json_real(s.duv.worst)},
          {"curve_mean", json_real(s.curve.mean)},
          {"curve_worst", json_real(s.curve.worst)},
          {"gamma_mean", json_real(s.gamma_mean)},
          {"gamma_spread", json_real(s.gamma_spread)},
          {"white_x", json_number(s.white.d[0])},
          {"white_y", json_number(s.white.d[1])},
          {"luminance", json_number(s.white.d[2])},
          {"CCT", json_cct(s.white_cct)}};
}

// What the report is about, before any figure.
Json json_source(const Report &report) {
  const ReportSource &source = report.source;
  const White &white = source.target.white;
  return {{"panel",
           {{"file", input_name(source.panel->path)}, {"sha256", report.panel_sha256}, {"date", report.panel_date}}},
          {"date", report.date},
          {"tool", "vexo " VEXO_VERSION},
          {"command_line", source.command_line},
          {"prediction", !judges_measured(report)},
          {"basis", basis(report)},
          {"verdict", verdict(report)},
          {"next", next_step(report)},
          {"recipe", source.recipe},
          {"luts", source.luts_name},
          {"camera", json_curve(source.target.camera)},
          {"system", json_curve(source.target.system)},
          {"white",
           {{"name", white.name},
            {"x", json_number(white.xyz.d[0])},
            {"y", json_number(white.xyz.d[1])},
            {"CCT", report.target.summary.white_cct}}},
          {"notes", source.notes}};
}

Json json_limits(const std::vector<LimitResult> &limits) {
  Json list = Json::array();
  for (const LimitResult &limit : limits) {
    list.push_back({{"figure", limit.figure},
                    {"limit", limit.limit},
                    {"value", json_real(limit.value)},
                    {"passed", limit.passed}});
  }
  return list;
}

} // namespace

void write_json(const Report &report, std::FILE *f) {
  Json document = json_source(report);
  for (const auto &[name, value] : named_figures(report)) {
    document["figures"][name] = json_real(value);
  }
  document["summary"] = {{"before", json_summary(report.before.summary)},
                         {"after", json_summary(report.after.summary)}};
  if (report.exact) {
    document["summary"]["before_rounding"] = json_summary(report.exact->summary);
  }
  if (report.measured) {
    document["summary"]["measured"] = json_summary(report.measured->summary);
  }
  document["limits"] = json_limits(report.limits);
  document["black"] = json_number(static_cast<float>(report.black));
  document["steps"] = {{"target", json_grays(report.target.grays)},
                       {"before", json_grays(report.before.grays)},
                       {"after", json_grays(report.after.grays)},
                       {"measured", report.measured ? json_grays(report.measured->grays) : Json::array()}};
  std::fputs((document.dump(1, ' ', false, Json::error_handler_t::replace) + "\n").c_str(), f);
}
