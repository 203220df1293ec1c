#include "report/report.h"

#include <nettle/sha2.h>
#include <sys/stat.h>

#include <cmath>
#include <ctime>

#include "file/input.h"
#include "file/readings.h"
#include "text/failure.h"
#include "text/format.h"

namespace {

const float kSameLevel = 1e-5F; // parts of it that rounding may make a difference of

std::string sha256(const std::string &content) {
  sha256_ctx context;
  sha256_init(&context);
  sha256_update(&context, content.size(), reinterpret_cast<const unsigned char *>(content.data()));
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

// Two rows or more whose levels rise, from 0 or above to full drive.
std::vector<GrayReading> read_ramp(const std::string &path, float top) {
  std::vector<GrayReading> rows = read_gray(path, top);
  for (size_t i = 1; i < rows.size(); i++) {
    if (!(rows[i].level > rows[i - 1].level)) {
      throw Failure(kInputError,
                    format("%s: the levels do not rise after %g", input_name(path).c_str(), rows[i - 1].level));
    }
  }
  if (rows.size() < 2 || rows.front().level < 0.0F || std::fabs(rows.back().level / top - 1.0F) > kSameLevel) {
    refuse_input(input_name(path),
                 format("expected two rows or more, levels rising from 0 or above to %g as in the panel file", top));
  }
  return rows;
}

// A ramp before it is judged.
struct ShownRamp {
  std::vector<GrayFigure> grays;
  Triple black;    // of the ramp
  Triple included; // the black that the figures include
};

ShownRamp predicted_ramp(const ReportSource &source, LutSet *luts) {
  const Triple black = black_of(source.model->measurements());
  const Triple included = included_black(source.target.curve, black);
  return {predict(*source.model, luts == nullptr ? nullptr : luts->get(), included), black, included};
}

// Black is the ramp's reading of level 0, or else the panel's.
ShownRamp measured_ramp(const ReportSource &source) {
  const vexo_lcnr &panel = source.model->measurements();
  const std::vector<GrayReading> rows = read_ramp(source.verify, panel.sample[panel.num - 1]);
  const bool own_black = rows.front().level == 0.0F;
  const Triple black = own_black ? triple(rows.front().XYZ) : black_of(panel);
  ShownRamp ramp = {{}, black, included_black(source.target.curve, black)};
  const Triple removed = ramp.black - ramp.included;
  const LightRange range = {double{rows.back().XYZ.d[1]} - removed[1], ramp.included[1]};
  if (!(range.white > ramp.included[1])) {
    refuse_input(input_name(source.verify),
                 format("white has a luminance of %g, expected more than black's %g", rows.back().XYZ.d[1], black[1]));
  }
  for (const GrayReading &r : rows) {
    ramp.grays.push_back(gray_figure(double{r.level} / rows.back().level, triple(r.XYZ) - removed, range));
  }
  return ramp;
}

double peak_of(const ShownRamp &ramp) { return ramp.grays.back().XYZ.d[1]; }

void add_facts(Report *report) {
  const Panel &panel = *report->source.panel;
  const vexo_lcnr &rows = report->source.model->measurements();
  const ReportSource &source = report->source;
  report->panel_sha256 = sha256(read_text(panel.path, "LCNR measurements"));
  report->luts_sha256 = source.luts_text.empty() ? "" : sha256(source.luts_text);
  report->measured_sha256 = source.verify.empty() ? "" : sha256(read_text(source.verify, "a gray ramp"));
  report->panel_date = last_change(panel.path);
  report->date = utc(std::time(nullptr));
  report->dark_level = double{rows.sample[1]} / rows.sample[rows.num - 1];
  report->primaries = primaries_of(*report->source.model);
  vexo_cs_secondary(&report->primaries, &report->cyan, &report->magenta, &report->yellow);
}

void add_ramps(Report *report) {
  const ReportSource &source = report->source;
  const auto target_at = [&](double peak, const ShownRamp &ramp) {
    return GrayTarget(source.target, report->primaries, peak, ramp.included);
  };
  const auto judge = [&](const ShownRamp &ramp, double peak) {
    Ramp judged = target_at(peak, ramp).judge(ramp.grays);
    judged.seen = {peak_of(ramp) + ramp.black[1] - ramp.included[1], ramp.black[1]};
    return judged;
  };
  const ShownRamp after = predicted_ramp(source, source.luts);
  report->target = target_at(peak_of(after), after).ideal();
  report->before = judge(predicted_ramp(source, nullptr), peak_of(after));
  report->after = judge(after, peak_of(after));
  if (source.exact != nullptr) {
    const ShownRamp exact = predicted_ramp(source, source.exact);
    report->exact = judge(exact, peak_of(exact));
  }
  if (!source.verify.empty()) {
    const ShownRamp measured = measured_ramp(source);
    report->measured = judge(measured, peak_of(measured));
  }
}

} // namespace

Report make_report(const ReportSource &source) {
  Report report = {};
  report.source = source;
  add_facts(&report);
  add_ramps(&report);
  if (source.colours) {
    report.colours = judge_colours(*source.colours, *source.model, source.luts->get(), source.target);
  }
  for (const std::string &name_or_file : source.limits) {
    const std::vector<LimitResult> judged = check_limits(report, name_or_file);
    report.limits.insert(report.limits.end(), judged.begin(), judged.end());
  }
  return report;
}

const char *black_in_figures(const Report &report) {
  return report.source.target.curve.refers_to_black ? "with black in it" : "above black";
}

bool judges_measured(const Report &report) { return report.measured && report.source.measured_through.empty(); }

const Ramp &judged(const Report &report) { return judges_measured(report) ? *report.measured : report.after; }
