// The gray ramp and its figures as text.
#include <cmath>

#include "report/report.h"
#include "report/verdict.h"
#include "text/format.h"

namespace {

// In a column of 9; a dash for none.
std::string figure(double value) { return std::isfinite(value) ? format("%9.4f", value) : format("%9s", "-"); }

void print_tenths(const Report &report, std::FILE *f) {
  std::fprintf(f,
               "\nGray ramp, %s:\n"
               "             target            before                     after\n"
               "  input    luminance   luminance  white error   luminance  white error\n",
               prediction_basis(report));
  const size_t last = report.after.grays.size() - 1;
  for (size_t tenth = 1; tenth <= 10; tenth++) {
    const size_t i = tenth * last / 10;
    const GrayFigure &before = report.before.grays[i];
    const GrayFigure &after = report.after.grays[i];
    std::fprintf(f, "  %4.0f %%   %9.4g   %9.4g   %s     %9.4g   %s\n", after.input * 100.0,
                 report.target.grays[i].xyY.d[2], before.xyY.d[2], figure(before.duv).c_str(), after.xyY.d[2],
                 figure(after.duv).c_str());
  }
}

void print_spreads(std::FILE *f, const char *title, const Spread &before, const Spread &after, const char *unit) {
  std::fprintf(f, "  %-26s %s %s    %s %s   %s\n", title, figure(before.mean).c_str(), figure(before.worst).c_str(),
               figure(after.mean).c_str(), figure(after.worst).c_str(), unit);
}

Spread percent(const Spread &spread) { return {spread.mean * 100.0, spread.worst * 100.0}; }

} // namespace

void write_verdict(const Report &report, std::FILE *f) {
  std::fprintf(f, "%s.\n", verdict(report).c_str());
  const std::string next = next_step(report);
  if (!next.empty()) {
    std::fprintf(f, "Next: %s.\n", next.c_str());
  }
}

void write_gray_ramp(const Report &report, std::FILE *f) {
  print_tenths(report, f);
  const Summary &before = report.before.summary;
  const Summary &after = report.after.summary;
  std::fprintf(f,
               "\nFrom %s input up:           before              after\n"
               "                                mean     worst         mean     worst\n",
               judged_from().c_str());
  print_spreads(f, "distance to target white", before.duv, after.duv, "u'v'");
  print_spreads(f, "distance to target curve", percent(before.curve), percent(after.curve), "% of the target's light");
  print_spreads(f, "colour difference", before.de2000, after.de2000, "CIEDE2000");
  if (report.exact) {
    const Spread &exact = report.exact->summary.de2000;
    std::fprintf(f, "    before rounding to codes                         %9.4f %9.4f   CIEDE2000\n", exact.mean,
                 exact.worst);
  }
  print_spreads(f, "  below that, near black", before.near_black, after.near_black, "CIEDE2000");
  std::fputc('\n', f);
  write_verdict(report, f);
}
