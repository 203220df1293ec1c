// The report as one HTML file: no script, nothing loaded from elsewhere.
#include <string>

#include "file/input.h"
#include "report/charts.h"
#include "report/markup.h"
#include "report/report.h"
#include "report/verdict.h"
#include "style.h"
#include "text/format.h"

namespace {

const char *const kTable = "<div class=\"scroll\"><table><thead><tr>";
const char *const kTableBody = "</tr></thead><tbody>\n";
const char *const kTableEnd = "</tbody></table></div>\n";

std::string cell(const std::string &text) { return "<td>" + text + "</td>"; }

std::string column(const std::string &text) { return "<th scope=\"col\">" + text + "</th>"; }

std::string row(const std::string &name, const std::string &cells) {
  return "<tr><th scope=\"row\">" + name + "</th>" + cells + "</tr>\n";
}

struct SummaryFigure {
  const char *name;
  double value;
  int decimals;
};

std::vector<SummaryFigure> figures_of(const Summary &s, double black) {
  return {{"CIEDE2000, mean", s.de2000.mean, 3},
          {"CIEDE2000, worst", s.de2000.worst, 3},
          {"CIEDE2000, mean of the worst 10 %", s.de2000_worst_tenth, 3},
          {"CIEDE2000 without luminance, mean", s.chroma.mean, 3},
          {"CIEDE2000 without luminance, worst", s.chroma.worst, 3},
          {"Distance to the target white in u'v', worst", s.duv.worst, 4},
          {"Effective gamma, mean", s.gamma_mean, 3},
          {"Effective gamma, spread", s.gamma_spread, 3},
          {"White x", s.white.d[0], 4},
          {"White y", s.white.d[1], 4},
          {"White luminance above black", s.white.d[2], 2},
          {"White CCT, K", static_cast<double>(s.white_cct), 0},
          {"Contrast", contrast(s.white.d[2], black), 0}};
}

std::string summary_table(const Report &report) {
  std::string out = kTable + column("From " + judged_from() + " input up") + column("before") +
                    column("after (predicted)") + (report.measured ? column("measured") : "") + kTableBody;
  const auto before = figures_of(report.before.summary, report.black);
  const auto after = figures_of(report.after.summary, report.black);
  const auto measured = figures_of(report.measured ? report.measured->summary : Summary{}, report.black);
  for (size_t i = 0; i < before.size(); i++) {
    const int decimals = before[i].decimals;
    out += row(before[i].name, cell(number(before[i].value, decimals)) + cell(number(after[i].value, decimals)) +
                                   (report.measured ? cell(number(measured[i].value, decimals)) : ""));
  }
  return out + kTableEnd;
}

// Y, x, y, CCT and the colour difference.
std::string gray_cells(const GrayFigure &gray) {
  return cell(number(gray.xyY.d[2], 3)) + cell(number(gray.xyY.d[0], 4)) + cell(number(gray.xyY.d[1], 4)) +
         cell(gray.cct > 0 ? std::to_string(gray.cct) : "–") + cell(number(gray.de2000, 2));
}

const char *const kGrayHeads = "<th>Y</th><th>x</th><th>y</th><th>CCT</th><th>ΔE</th>";

std::string target_cells(const Report &report, size_t i) {
  const vexo_vector &white = report.source.target.white.xyz;
  const int cct = report.target.summary.white_cct;
  return cell(number(report.target.grays[i].XYZ.d[1], 3)) + cell(number(white.d[0], 4)) + cell(number(white.d[1], 4)) +
         cell(cct > 0 ? std::to_string(cct) : "–");
}

std::string gray_table(const Report &report) {
  std::string out = std::string(kTable) +
                    "<th rowspan=\"2\" scope=\"col\">Input</th><th colspan=\"4\">target</th>"
                    "<th colspan=\"5\">before</th><th colspan=\"5\">after (predicted)</th></tr>"
                    "<tr><th>Y</th><th>x</th><th>y</th><th>CCT</th>" +
                    kGrayHeads + kGrayHeads + kTableBody;
  for (size_t i = 0; i < report.after.grays.size(); i += 5) {
    const double input = report.after.grays[i].input;
    const bool dark = input > 0.0 && input < report.dark_level;
    out += row(std::to_string(i) + (dark ? " %*" : " %"),
               target_cells(report, i) + gray_cells(report.before.grays[i]) + gray_cells(report.after.grays[i]));
  }
  return out + kTableEnd +
         "<p class=\"note\">ΔE is CIEDE2000. * Below the first measured row: between black and that row the panel "
         "model "
         "is a straight line.</p>\n";
}

std::string measured_table(const Report &report) {
  if (!report.measured) {
    return "";
  }
  std::string out = std::string("<h2>Measured gray ramp</h2>\n") + kTable + column("Input") + kGrayHeads + kTableBody;
  for (const GrayFigure &gray : report.measured->grays) {
    out += row(number(gray.input * 100.0, 1) + " %", gray_cells(gray));
  }
  return out + kTableEnd;
}

std::string limits_table(const Report &report) {
  if (report.limits.empty()) {
    return "";
  }
  std::string out = std::string("<h2>Limits</h2>\n") + kTable + column("Figure") +
                    "<th>limit</th><th>value</th><th></th>" + kTableBody;
  for (const LimitResult &limit : report.limits) {
    out += row(escaped(limit.figure),
               cell(escaped(limit.limit)) + cell(number(limit.value, 4)) +
                   (limit.passed ? "<td class=\"pass\">pass</td>" : "<td class=\"fail\">FAIL</td>"));
  }
  return out + kTableEnd;
}

std::string fact(const char *term, const std::string &text) {
  return std::string("<dt>") + term + "</dt><dd>" + escaped(text) + "</dd>\n";
}

std::string white_fact(const Report &report) {
  const Summary &before = report.before.summary;
  const Summary &after = report.after.summary;
  return format("luminance %.2f to %.2f, %.1f %% given up; %s to %s", before.white.d[2], after.white.d[2],
                100.0 * (1.0 - double{after.white.d[2]} / before.white.d[2]), kelvin(before.white_cct).c_str(),
                kelvin(after.white_cct).c_str());
}

std::string facts(const Report &report) {
  const ReportSource &source = report.source;
  const White &white = source.target.white;
  return "<h2>The calibration</h2>\n<dl>\n" + fact("Panel file", input_name(source.panel->path)) +
         fact("SHA-256", report.panel_sha256) + fact("File of", report.panel_date) + fact("Report of", report.date) +
         fact("Recipe", source.recipe) + fact("LUTs", source.luts_name) +
         fact("Target white", format("%s: x %.6g, y %.6g, %s", white.name.c_str(), white.xyz.d[0], white.xyz.d[1],
                                     kelvin(report.target.summary.white_cct).c_str())) +
         fact("Camera curve", describe(source.target.camera)) + fact("System curve", describe(source.target.system)) +
         fact("White", white_fact(report)) + fact("Command line", source.command_line) +
         fact("Tool", "vexo " VEXO_VERSION) + "</dl>\n";
}

std::string notes(const Report &report) {
  std::string out = "<h2>The measurements</h2>\n";
  if (report.source.notes.empty()) {
    return out + "<p>Used as they are.</p>\n";
  }
  out += "<ul>\n";
  for (const std::string &note : report.source.notes) {
    out += "<li>" + escaped(note) + "</li>\n";
  }
  return out + "</ul>\n";
}

std::string head(const Report &report) {
  return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
         "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
         "<title>Calibration report</title>\n<style>\n" +
         std::string(kStyle) + "</style>\n</head>\n<body>\n<h1>Calibration report</h1>\n<p class=\"verdict\">" +
         escaped(verdict(report)) + "</p>\n<p>" +
         (judges_measured(report) ? std::string("The verdict is about the measured ramp. Figures named predicted are ")
                                  : std::string("The figures through the LUTs are ")) +
         prediction_basis(report) + ".</p>\n" +
         (next_step(report).empty() ? "" : "<p>Next: " + escaped(next_step(report)) + ".</p>\n");
}

std::string chart_section(const Report &report) {
  std::string out = "<h2>Charts</h2>\n<div class=\"charts\">\n";
  for (const Chart &chart : charts(report)) {
    out += render(chart);
  }
  return out + "</div>\n";
}

} // namespace

void write_html(const Report &report, std::FILE *f) {
  const std::string page = head(report) + summary_table(report) + limits_table(report) + facts(report) + notes(report) +
                           chart_section(report) + "<h2>Gray steps</h2>\n" + gray_table(report) +
                           measured_table(report) + "</body>\n</html>\n";
  std::fputs(page.c_str(), f);
}
