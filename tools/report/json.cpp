// The report for other programs. Its members are described in docs/formats.md.
#include <cmath>

#include "file/input.h"
#include "report/figure-list.h"
#include "report/gamut.h"
#include "report/verdict.h"
#include "text/json.h"

namespace {

const int kSchema = 2; // counts the changes that a reader of older files has to know

Json json_real(double value) { return std::isfinite(value) ? Json(value) : Json(nullptr); }

Json json_cct(int cct) { return cct > 0 ? Json(cct) : Json(nullptr); }

Json json_curve(const LibraryCurve &curve) {
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
          {"target", json_real(f.target)},
          {"uv_distance", json_real(f.duv)},
          {"duv", json_real(f.duv)}};
}

Json json_grays(const std::vector<GrayFigure> &grays) {
  Json steps = Json::array();
  for (const GrayFigure &f : grays) {
    steps.push_back(json_gray(f));
  }
  return steps;
}

Json json_figures(const Report &report, const Ramp &ramp) {
  Json figures;
  for (const NamedFigure &figure : kNamedFigures) {
    figures[figure.name] = json_real(figure.value(report, ramp));
  }
  return figures;
}

Json json_target(const Report &report) {
  const Target &target = report.source.target;
  Json json = {{"white",
                {{"name", target.white.name},
                 {"x", json_number(target.white.xyz.d[0])},
                 {"y", json_number(target.white.xyz.d[1])},
                 {"CCT", json_cct(report.target.summary.white_cct)}}},
               {"curve", {{"name", target.curve.name}, {"meaning", target.curve.meaning}}},
               {"luminance", target.luminance ? Json(*target.luminance) : Json(nullptr)},
               {"black_included", target.curve.refers_to_black}};
  if (target.curve.library) {
    json["curve"]["camera"] = json_curve(target.curve.library->camera);
    json["curve"]["system"] = json_curve(target.curve.library->system);
  }
  for (const auto &[option, text] : report.source.target_options) {
    json["options"][option] = text;
  }
  return json;
}

// A file and what identifies it; null where there is none.
Json json_file(const std::string &name, const std::string &sha256) {
  return name.empty() ? Json(nullptr)
                      : Json({{"file", name}, {"sha256", sha256.empty() ? Json(nullptr) : Json(sha256)}});
}

// What the report is about, before any figure.
Json json_source(const Report &report) {
  const ReportSource &source = report.source;
  Json json = {{"schema", kSchema}, {"tool", "vexo " VEXO_VERSION}, {"date", report.date}};
  json["panel"] = json_file(input_name(source.panel->path), report.panel_sha256);
  json["panel"]["date"] = report.panel_date;
  for (const RecordedText &recorded : kRecordedTexts) {
    json["record"][recorded.member] = source.labels.*recorded.text;
  }
  json["luts"] = json_file(source.luts_name, report.luts_sha256);
  json["measured"] = json_file(source.verify, report.measured_sha256);
  json["command_line"] = source.command_line;
  json["recipe"] = source.recipe;
  json["target"] = json_target(report);
  json["additivity"] =
      source.additivity ? Json({{"de2000_mean", source.additivity->mean}, {"de2000_worst", source.additivity->worst}})
                        : Json(nullptr);
  json["notes"] = source.notes;
  json["prediction"] = !judges_measured(report);
  json["basis"] = basis(report);
  json["verdict"] = verdict(report);
  json["next"] = next_step(report);
  json["outcome"] = outcome(report.limits);
  return json;
}

Json json_bound(const std::optional<double> &bound) { return bound ? Json(*bound) : Json(nullptr); }

Json json_limits(const std::vector<LimitResult> &limits) {
  Json list = Json::array();
  for (const LimitResult &limit : limits) {
    list.push_back({{"figure", limit.figure},
                    {"min", json_bound(limit.min)},
                    {"max", json_bound(limit.max)},
                    {"value", json_real(limit.value)},
                    {"result", state_name(limit.state)},
                    {"source", limit.source}});
  }
  return list;
}

Json json_gamut(const Report &report) {
  Json list;
  for (const Coverage &c : coverages(report.primaries)) {
    list[c.space] = {{"coverage_uv", c.uv}, {"coverage_xy", c.xy}};
  }
  return list;
}

} // namespace

void write_json(const Report &report, std::FILE *f) {
  Json document = json_source(report);
  document["figures"] = json_figures(report, judged(report));
  document["summary"] = {{"before", json_figures(report, report.before)},
                         {"after", json_figures(report, report.after)}};
  if (report.exact) {
    document["summary"]["before_rounding"] = json_figures(report, *report.exact);
  }
  if (report.measured) {
    document["summary"]["measured"] = json_figures(report, *report.measured);
  }
  document["gamut"] = json_gamut(report);
  if (report.colours) {
    document["colours"] = json_of(*report.colours);
  }
  document["limits"] = json_limits(report.limits);
  document["steps"] = {{"target", json_grays(report.target.grays)},
                       {"before", json_grays(report.before.grays)},
                       {"after", json_grays(report.after.grays)},
                       {"measured", report.measured ? json_grays(report.measured->grays) : Json::array()}};
  std::fputs((document.dump(1, ' ', false, Json::error_handler_t::replace) + "\n").c_str(), f);
}
