#include "report/report.h"

#include <nettle/sha2.h>
#include <sys/stat.h>

#include <array>
#include <cmath>
#include <ctime>

#include "file/csv.h"
#include "file/input.h"
#include "text/failure.h"
#include "text/format.h"
#include "text/json.h"
#include "vexo-cs.h"

namespace {

const int kSteps = 101;
const double kDark = 0.1; // figures leave out inputs below this one, where a probe reads noise

std::string sha256(const std::string &path) {
  const File f = open_input(path, "a file");
  sha256_ctx context;
  sha256_init(&context);
  std::array<unsigned char, 65536> block;
  for (size_t length = block.size(); length == block.size();) {
    length = std::fread(block.data(), 1, block.size(), f.get());
    sha256_update(&context, length, block.data());
  }
  unsigned char digest[SHA256_DIGEST_SIZE];
  sha256_digest(&context, sizeof digest, digest);
  std::string text;
  for (const unsigned char byte : digest) {
    text += format("%02x", byte);
  }
  return text;
}

std::string utc(std::time_t time) {
  std::tm parts = {};
  gmtime_r(&time, &parts);
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M UTC", &parts);
  return text;
}

std::string last_change(const std::string &path) {
  struct stat info = {};
  return stat(path.c_str(), &info) == 0 ? utc(info.st_mtime) : "";
}

const float *row(const vexo_lcnr &lcnr, int channel, int i, float (&xyz)[3]) {
  for (int m = 0; m < 3; m++) {
    xyz[m] = lcnr.data[channel][m][i];
  }
  return xyz;
}

// The colour space of the panel at full drive, white being the sum of the channels.
vexo_cs panel_space(const vexo_lcnr &lcnr) {
  const int top = lcnr.num - 1;
  float r[3];
  float g[3];
  float b[3];
  float d[3];
  float w[3];
  row(lcnr, 0, top, r);
  row(lcnr, 1, top, g);
  row(lcnr, 2, top, b);
  row(lcnr, 0, 0, d);
  for (int m = 0; m < 3; m++) {
    w[m] = r[m] + g[m] + b[m] - 2.0F * d[m];
  }
  vexo_cs cs;
  if (vexo_cs_init_XYZ(&cs, r, g, b, w, d) != 0) {
    throw Failure(kInputError, "the panel's primaries span no triangle");
  }
  return cs;
}

std::vector<GrayFigure> figures(const GrayTarget &target, const std::vector<GrayStep> &ramp) {
  std::vector<GrayFigure> result;
  const float white = ramp.back().xyY.d[2];
  for (const GrayStep &step : ramp) {
    result.push_back(target.figure(static_cast<double>(step.input), step.xyY, white));
  }
  return result;
}

std::vector<GrayFigure> target_figures(const GrayTarget &target) {
  std::vector<GrayFigure> result;
  for (int i = 0; i < kSteps; i++) {
    const double input = static_cast<double>(i) / (kSteps - 1);
    vexo_vector xyY = target.XYZ(input);
    if (vexo_XYZ_xyY(&xyY) != 0) {
      vexo_vector_init(&xyY);
    }
    result.push_back(target.figure(input, xyY, target.peak()));
  }
  return result;
}

// The figures of a measured gray ramp. Black is the row of level 0, or else the panel's.
std::vector<GrayFigure> read_measured(const std::string &path, const GrayTarget &target, const vexo_lcnr &lcnr) {
  std::vector<GrayReading> rows = read_gray(path);
  for (size_t i = 1; i < rows.size(); i++) {
    if (!(rows[i].level > rows[i - 1].level)) {
      throw Failure(kInputError, format("%s: the levels do not rise after %g", input_name(path).c_str(),
                                        static_cast<double>(rows[i - 1].level)));
    }
  }
  if (rows.size() < 2 || !(rows.back().level > 0.0F) || rows.front().level < 0.0F) {
    throw Failure(kInputError, input_name(path) + ": expected two rows or more, levels rising from 0");
  }
  vexo_vector black = rows.front().XYZ;
  if (rows.front().level > 0.0F) {
    float d[3];
    vexo_vector_set_xyz(&black, row(lcnr, 0, 0, d));
  }
  std::vector<GrayFigure> result;
  const float white = rows.back().XYZ.d[1] - black.d[1];
  for (GrayReading &r : rows) {
    vexo_vector_sub(&r.XYZ, &black);
    if (vexo_XYZ_xyY(&r.XYZ) != 0) {
      vexo_vector_init(&r.XYZ);
    }
    result.push_back(target.figure(static_cast<double>(r.level / rows.back().level), r.XYZ, white));
  }
  return result;
}

// One limit: a number is the largest value allowed; an object may say "min" and "max".
void check_limit(std::vector<LimitResult> *results, const std::string &name, const Json &limit, double value,
                 const std::string &path) {
  const auto check = [&](const Json &bound, bool upper) {
    if (!bound.is_number()) {
      throw Failure(kInputError, path + ": limit '" + name + "': expected a number, or {\"min\": a, \"max\": b}");
    }
    const double b = bound.get<double>();
    results->push_back({name, format("at %s %g", upper ? "most" : "least", b), value, upper ? value <= b : value >= b});
  };
  if (!limit.is_object()) {
    check(limit, true);
    return;
  }
  for (const auto &[side, bound] : limit.items()) {
    if (side != "min" && side != "max") {
      throw Failure(kInputError, path + ": limit '" + name + "': '" + side + "' is neither min nor max");
    }
    check(bound, side == "max");
  }
}

std::vector<LimitResult> check_limits(const Report &report, const std::string &path) {
  const File f = open_input(path, "JSON limits");
  const Json limits = Json::parse(f.get(), nullptr, false);
  if (!limits.is_object()) {
    throw Failure(kInputError, input_name(path) + ": expected a JSON object of limits by figure");
  }
  const auto figures = named_figures(report);
  std::vector<LimitResult> results;
  for (const auto &[name, limit] : limits.items()) {
    const auto figure =
        std::find_if(figures.begin(), figures.end(), [&name = name](const auto &entry) { return entry.first == name; });
    if (figure == figures.end()) {
      std::string known;
      for (const auto &entry : figures) {
        known += " " + entry.first;
      }
      throw Failure(kInputError, input_name(path) + ": no figure '" + name + "', expected one of" + known);
    }
    check_limit(&results, name, limit, figure->second, input_name(path));
  }
  return results;
}

Json json_real(double value) { return std::isfinite(value) ? Json(value) : Json(nullptr); }

Json json_step(const GrayFigure &f) {
  return {{"input", json_real(f.input)},
          {"XYZ", json_vector(f.XYZ)},
          {"xyY", json_vector(f.xyY)},
          {"uv", {json_number(f.uvY.d[0]), json_number(f.uvY.d[1])}},
          {"CCT", f.cct > 0 ? Json(f.cct) : Json(nullptr)},
          {"gamma", json_real(f.gamma)},
          {"balance", {json_real(f.balance[0]), json_real(f.balance[1]), json_real(f.balance[2])}},
          {"de2000", json_real(f.de2000)},
          {"de2000_chroma", json_real(f.de2000_chroma)},
          {"duv", json_real(f.duv)}};
}

Json json_ramp(const std::vector<GrayFigure> &ramp) {
  Json steps = Json::array();
  for (const GrayFigure &f : ramp) {
    steps.push_back(json_step(f));
  }
  return steps;
}

Json json_summary(const Summary &s) {
  return {{"de2000_mean", json_real(s.de2000_mean)},
          {"de2000_worst", json_real(s.de2000_worst)},
          {"de2000_worst_tenth", json_real(s.de2000_worst_tenth)},
          {"chroma_mean", json_real(s.chroma_mean)},
          {"chroma_worst", json_real(s.chroma_worst)},
          {"duv_worst", json_real(s.duv_worst)},
          {"gamma_mean", json_real(s.gamma_mean)},
          {"gamma_spread", json_real(s.gamma_spread)},
          {"white_x", json_real(s.white_x)},
          {"white_y", json_real(s.white_y)},
          {"luminance", json_real(s.white_Y)},
          {"CCT", s.white_cct > 0 ? Json(s.white_cct) : Json(nullptr)}};
}

Json json_curve(const Curve &curve) {
  return {{"name", curve.name},
          {"slope", json_number(curve.gamma.slope)},
          {"transition", json_number(curve.gamma.transition)},
          {"gamma", json_number(curve.gamma.gamma)},
          {"offset", json_number(curve.gamma.offset)}};
}

} // namespace

const std::vector<GrayFigure> &judged_ramp(const Report &report) {
  return report.measured.empty() ? report.after : report.measured;
}

const Summary &judged(const Report &report) {
  return report.measured.empty() ? report.summary_after : report.summary_measured;
}

std::string verdict(const Report &report) {
  const Summary &s = judged(report);
  const char *word = s.de2000_mean <= 1.0 && s.de2000_worst <= 3.0   ? "Good: the gray ramp shows no visible error"
                     : s.de2000_mean <= 3.0 && s.de2000_worst <= 6.0 ? "Fair: errors show side by side with the target"
                                                                     : "Poor: errors show at a glance";
  return format("%s (%s CIEDE2000 mean %.2f, worst %.2f)", word, report.measured.empty() ? "predicted" : "measured",
                s.de2000_mean, s.de2000_worst);
}

std::vector<std::pair<std::string, double>> named_figures(const Report &report) {
  const Summary &s = judged(report);
  const double before = report.summary_before.white_Y;
  return {{"de2000_mean", s.de2000_mean},
          {"de2000_worst", s.de2000_worst},
          {"de2000_worst_tenth", s.de2000_worst_tenth},
          {"chroma_mean", s.chroma_mean},
          {"chroma_worst", s.chroma_worst},
          {"duv_worst", s.duv_worst},
          {"gamma_mean", s.gamma_mean},
          {"gamma_spread", s.gamma_spread},
          {"luminance", s.white_Y},
          {"luminance_given_up", 100.0 * (1.0 - s.white_Y / before)},
          {"contrast", (s.white_Y + report.black) / report.black}};
}

Report make_report(const ReportSource &source) {
  Report report = {};
  report.source = source;
  const vexo_lcnr &used = source.used;
  const auto bare = bare_context(used);
  if (bare == nullptr) {
    throw Failure(kInputError, unusable_row(*source.panel));
  }
  report.panel_sha256 = sha256(source.panel->path);
  report.panel_date = last_change(source.panel->path);
  report.date = utc(std::time(nullptr));
  report.dark_level = static_cast<double>(used.sample[1] / used.sample[used.num - 1]);
  report.black = static_cast<double>(used.data[0][1][0]);
  report.primaries = panel_space(used);
  vexo_cs_secondary(&report.primaries, &report.cyan, &report.magenta, &report.yellow);

  const auto before = gray_ramp(bare.get(), nullptr, source.target, kSteps, 0.0F);
  const auto after = gray_ramp(bare.get(), source.luts->get(), source.target, kSteps, 0.0F);
  const GrayTarget target(source.target, report.primaries, after.back().xyY.d[2]);
  report.target_cct = target.cct();
  report.target = target_figures(target);
  report.before = figures(target, before);
  report.after = figures(target, after);
  report.summary_before = summarise(report.before, kDark);
  report.summary_after = summarise(report.after, kDark);
  if (!source.verify.empty()) {
    report.measured = read_measured(source.verify, target, used);
    report.summary_measured = summarise(report.measured, kDark);
  }
  if (!source.limits.empty()) {
    report.limits = check_limits(report, source.limits);
  }
  return report;
}

void write_json(const Report &report, std::FILE *f) {
  const ReportSource &source = report.source;
  Json document = {
      {"panel", {{"file", source.panel->path}, {"sha256", report.panel_sha256}, {"date", report.panel_date}}},
      {"date", report.date},
      {"tool", "vexo " VEXO_VERSION},
      {"command_line", source.command_line},
      {"prediction", report.measured.empty()},
      {"verdict", verdict(report)},
      {"recipe", source.recipe},
      {"luts", source.luts_name},
      {"camera", json_curve(source.target.camera)},
      {"system", json_curve(source.target.system)},
      {"white",
       {{"name", source.target.white.name},
        {"x", json_number(source.target.white.xyz.d[0])},
        {"y", json_number(source.target.white.xyz.d[1])},
        {"CCT", report.target_cct}}},
      {"notes", source.notes}};
  for (const auto &[name, value] : named_figures(report)) {
    document["figures"][name] = json_real(value);
  }
  document["summary"] = {{"before", json_summary(report.summary_before)},
                         {"after", json_summary(report.summary_after)}};
  if (!report.measured.empty()) {
    document["summary"]["measured"] = json_summary(report.summary_measured);
  }
  document["limits"] = Json::array();
  for (const LimitResult &limit : report.limits) {
    document["limits"].push_back({{"figure", limit.figure},
                                  {"limit", limit.limit},
                                  {"value", json_real(limit.value)},
                                  {"passed", limit.passed}});
  }
  document["black"] = json_real(report.black);
  document["steps"] = {{"target", json_ramp(report.target)},
                       {"before", json_ramp(report.before)},
                       {"after", json_ramp(report.after)},
                       {"measured", json_ramp(report.measured)}};
  std::fputs((document.dump(1, ' ', false, Json::error_handler_t::replace) + "\n").c_str(), f);
}

void write_csv(const Report &report, std::FILE *f) {
  std::fputs("input_percent,target_Y,target_x,target_y,target_CCT,before_Y,before_x,before_y,before_CCT,before_dE2000,"
             "after_Y,after_x,after_y,after_CCT,after_dE2000\n",
             f);
  for (size_t i = 0; i < report.after.size(); i += 5) {
    const GrayFigure &t = report.target[i];
    std::fprintf(f, "%g,%.6g,%.6f,%.6f,%s", t.input * 100.0, static_cast<double>(t.XYZ.d[1]),
                 static_cast<double>(report.source.target.white.xyz.d[0]),
                 static_cast<double>(report.source.target.white.xyz.d[1]),
                 report.target_cct > 0 ? std::to_string(report.target_cct).c_str() : "");
    for (const GrayFigure *g : {&report.before[i], &report.after[i]}) {
      std::fprintf(f, ",%.6g,%.6f,%.6f,%s,%s", static_cast<double>(g->xyY.d[2]), static_cast<double>(g->xyY.d[0]),
                   static_cast<double>(g->xyY.d[1]), g->cct > 0 ? std::to_string(g->cct).c_str() : "",
                   std::isfinite(g->de2000) ? format("%.4f", g->de2000).c_str() : "");
    }
    std::fputc('\n', f);
  }
}
