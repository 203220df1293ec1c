#include "command/delivery.h"

#include <cstdio>
#include <new>

#include "base/owners.h"
#include "file/input.h"
#include "file/lut1d-output.h"
#include "file/output.h"
#include "report/verdict.h"
#include "text/failure.h"
#include "text/format.h"
#include "text/verbose.h"

namespace {

// The content of the LUT file.
std::string luts_text(const Delivery &d) {
  char *text = nullptr;
  size_t size = 0;
  std::FILE *stream = open_memstream(&text, &size);
  if (stream != nullptr) {
    store_luts(stream, {d.output, lut1d_layout_of(d.output), "red", d.job->bits}, d.correction->luts);
  }
  const bool closed = stream != nullptr && std::fclose(stream) == 0;
  const vexo_internal::Block<char> owner(text);
  if (!closed) {
    throw std::bad_alloc();
  }
  return {text, size};
}

Report report_of(const Delivery &d) {
  ReportSource source;
  source.luts_text = luts_text(d);
  source.target_options = given(d.target);
  source.labels = d.report.labels;
  source.additivity = d.input->additivity;
  source.panel = &d.input->panel;
  source.model = &d.correction->model;
  source.notes = d.input->notes;
  source.notes.insert(source.notes.end(), d.correction->remarks.begin(), d.correction->remarks.end());
  source.target = d.job->target;
  source.recipe = std::string(d.job->recipe->name) + ": " + d.job->recipe->meaning;
  source.luts = &d.correction->luts;
  source.exact = &d.correction->exact;
  source.luts_name = d.output.empty() ? "not written" : d.output;
  source.command_line = d.command_line;
  source.verify = d.report.verify;
  source.measured_through = d.measured_through;
  source.limits = d.report.limits;
  say("predicts the gray ramp");
  return make_report(source);
}

void write_luts(const Delivery &d, const std::string &text) {
  OutputFile file(d.output);
  std::fputs(text.c_str(), file.stream());
  file.commit();
}

std::string describe_white(const Ramp &ramp) {
  const vexo_vector &xyY = ramp.summary.white;
  return format("x %.4f, y %.4f, luminance %.4g", xyY.d[0], xyY.d[1], xyY.d[2]);
}

void print(const Delivery &d, const Report &report) {
  std::FILE *f = d.output == "-" || d.report.to_stdout() ? stderr : stdout;
  const vexo_lcnr &rows = d.input->panel.lcnr;
  const Target &target = d.job->target;
  const double *gains = d.correction->gains;
  std::fprintf(f, "Panel         %s, %d rows, levels 0 to %g\n", input_name(d.input->panel.path).c_str(), rows.num,
               rows.sample[rows.num - 1]);
  std::fprintf(f, "Model         %s\n",
               report.source.model->knows_grays() ? "measured channels and grays" : "measured channels, which add");
  std::fprintf(f, "Panel white   %s\n", describe_white(report.before).c_str());
  std::fprintf(f, "Target white  x %.4f, y %.4f (%s)\n", target.white.xyz.d[0], target.white.xyz.d[1],
               target.white.name.c_str());
  std::fprintf(f, "White after   %s\n", describe_white(report.after).c_str());
  std::fprintf(f, "Target curve  %s (%s)\n", target.curve.name.c_str(), target.curve.meaning.c_str());
  std::fprintf(f, "Recipe        %s\n", report.source.recipe.c_str());
  std::fprintf(f, "Gains         red %.4f, green %.4f, blue %.4f\n", gains[0], gains[1], gains[2]);
  std::fprintf(f, "LUTs          %s, 3 x %d entries of %d bits\n",
               d.output.empty()  ? "not written (give -o FILE)"
               : d.output == "-" ? "standard output"
                                 : d.output.c_str(),
               d.job->entries, d.job->bits);
  for (const std::string &remark : d.correction->remarks) {
    std::fprintf(f, "              %s\n", remark.c_str());
  }
  write_gray_ramp(report, f);
}

} // namespace

void deliver(const Delivery &d) {
  const Report report = report_of(d);
  for (const std::string &warning : d.correction->warnings) {
    warn(warning);
  }
  if (!d.output.empty()) {
    write_luts(d, report.source.luts_text);
  }
  print(d, report);
  write_reports(d.report, report);
  const std::string written = d.output.empty() ? "no LUTs were asked for" : d.output + " was written";
  judge_limits(report.limits, written);
  const std::string worse = worse_than_without(report);
  if (!worse.empty()) {
    throw Failure(kLimitMissed, worse + "; " + written);
  }
}
