#include "report/report.h"

#include <nettle/sha2.h>
#include <sys/stat.h>

#include <array>
#include <ctime>

#include "file/input.h"
#include "file/readings.h"
#include "text/failure.h"
#include "text/format.h"

namespace {

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

// Two rows or more whose levels rise, from 0 or above.
std::vector<GrayReading> read_ramp(const std::string &path, float top) {
  std::vector<GrayReading> rows = read_gray(path, top);
  for (size_t i = 1; i < rows.size(); i++) {
    if (!(rows[i].level > rows[i - 1].level)) {
      throw Failure(kInputError,
                    format("%s: the levels do not rise after %g", input_name(path).c_str(), rows[i - 1].level));
    }
  }
  if (rows.size() < 2 || !(rows.back().level > 0.0F) || rows.front().level < 0.0F) {
    throw Failure(kInputError, input_name(path) + ": expected two rows or more, levels rising from 0");
  }
  return rows;
}

// The grays of a measured ramp. Black is its reading of level 0, or else the panel's.
std::vector<GrayFigure> read_measured(const std::string &path, const vexo_lcnr &panel) {
  const std::vector<GrayReading> rows = read_ramp(path, panel.sample[panel.num - 1]);
  const auto XYZ = [](const GrayReading &r) { return triple(r.XYZ); };
  const Triple black = rows.front().level > 0.0F ? black_of(panel) : XYZ(rows.front());
  const double white = XYZ(rows.back())[1] - black[1];
  std::vector<GrayFigure> grays;
  for (const GrayReading &r : rows) {
    const Triple shown = XYZ(r) - black;
    grays.push_back(gray_figure(double{r.level} / rows.back().level, shown, white));
  }
  return grays;
}

void add_facts(Report *report) {
  const Panel &panel = *report->source.panel;
  const vexo_lcnr &rows = report->source.model->measurements();
  report->panel_sha256 = sha256(panel.path);
  report->panel_date = last_change(panel.path);
  report->date = utc(std::time(nullptr));
  report->dark_level = double{rows.sample[1]} / rows.sample[rows.num - 1];
  report->black = black_of(rows)[1];
  report->primaries = primaries_of(*report->source.model);
  vexo_cs_secondary(&report->primaries, &report->cyan, &report->magenta, &report->yellow);
}

void add_ramps(Report *report) {
  const ReportSource &source = report->source;
  const auto target_for = [&](const std::vector<GrayFigure> &grays) {
    return GrayTarget(source.target, report->primaries, grays.back().XYZ.d[1]);
  };
  const auto judge = [&](const std::vector<GrayFigure> &grays) { return target_for(grays).judge(grays); };
  std::vector<GrayFigure> after = predict(*source.model, source.luts->get());
  const GrayTarget target = target_for(after);
  report->target = target.ideal();
  report->before = target.judge(predict(*source.model, nullptr));
  report->after = target.judge(std::move(after));
  if (source.exact != nullptr) {
    report->exact = judge(predict(*source.model, source.exact->get()));
  }
  if (!source.verify.empty()) {
    report->measured = judge(read_measured(source.verify, source.model->measurements()));
  }
}

} // namespace

Report make_report(const ReportSource &source) {
  Report report = {};
  report.source = source;
  add_facts(&report);
  add_ramps(&report);
  if (!source.limits.empty()) {
    report.limits = check_limits(named_figures(report), source.limits);
  }
  return report;
}

bool judges_measured(const Report &report) { return report.measured && report.source.measured_through.empty(); }

const Summary &judged(const Report &report) {
  return judges_measured(report) ? report.measured->summary : report.after.summary;
}

NamedFigures named_figures(const Report &report) {
  const Summary &s = judged(report);
  const double luminance = s.white.d[2];
  return {{"de2000_mean", s.de2000.mean},
          {"de2000_worst", s.de2000.worst},
          {"de2000_worst_tenth", s.de2000_worst_tenth},
          {"chroma_mean", s.chroma.mean},
          {"chroma_worst", s.chroma.worst},
          {"duv_worst", s.duv.worst},
          {"gamma_mean", s.gamma_mean},
          {"gamma_spread", s.gamma_spread},
          {"luminance", luminance},
          {"luminance_given_up", 100.0 * (1.0 - luminance / report.before.summary.white.d[2])},
          {"contrast", contrast(luminance, report.black)}};
}
