// The report as one HTML file: no script, nothing loaded from elsewhere.
#include <string>

#include "file/input.h"
#include "report/charts.h"
#include "report/figure-list.h"
#include "report/gamut.h"
#include "report/markup.h"
#include "report/verdict.h"
#include "style.h"
#include "text/channels.h"
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

std::string summary_table(const Report &report) {
  std::string out = kTable + column("From " + judged_from() + " input up") + column("before") +
                    column("after (predicted)") + (report.measured ? column("measured") : "") + kTableBody;
  for (const NamedFigure &figure : kNamedFigures) {
    const auto value = [&](const Ramp &ramp) { return cell(number(figure.value(report, ramp), figure.decimals)); };
    if (figure.on_page) {
      out += row(escaped(figure.meaning),
                 value(report.before) + value(report.after) + (report.measured ? value(*report.measured) : ""));
    }
  }
  return out + kTableEnd;
}

// Y, x, y, CCT and the colour difference.
std::string gray_cells(const GrayFigure &gray) {
  return cell(number(gray.xyY.d[2], 3)) + cell(number(gray.xyY.d[0], 4)) + cell(number(gray.xyY.d[1], 4)) +
         cell(gray.cct > 0 ? std::to_string(gray.cct) : "–") + cell(number(gray.de2000, 2));
}

const char *const kGrayHeads = "<th>Y, cd/m²</th><th>x</th><th>y</th><th>CCT, K</th><th>ΔE</th>";

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
                    "<tr><th>Y, cd/m²</th><th>x</th><th>y</th><th>CCT, K</th>" +
                    kGrayHeads + kGrayHeads + kTableBody;
  bool marked = false;
  for (size_t i = 0; i < report.after.grays.size(); i += 5) {
    const double input = report.after.grays[i].input;
    const bool dark = input > 0.0 && input < report.dark_level;
    marked = marked || dark;
    out += row(std::to_string(i) + (dark ? " %*" : " %"),
               target_cells(report, i) + gray_cells(report.before.grays[i]) + gray_cells(report.after.grays[i]));
  }
  return out + kTableEnd + "<p class=\"note\">ΔE is CIEDE2000. Luminance Y is " + black_in_figures(report) + "." +
         (marked ? " * Below the first measured row: between black and that row the panel model is a straight line."
                 : "") +
         "</p>\n";
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
                    "<th>limit</th><th>value</th><th>result</th><th>source</th>" + kTableBody;
  for (const LimitResult &limit : report.limits) {
    const char *const kClasses[] = {"pass", "fail", "open"};
    out += row(escaped(limit.figure), cell(escaped(describe(limit))) + cell(number(limit.value, 4)) + "<td class=\"" +
                                          kClasses[limit.state] + "\">" + state_name(limit.state) + "</td>" +
                                          "<td class=\"text\">" + escaped(limit.source) + "</td>");
  }
  return out + kTableEnd;
}

std::string gamut_table(const Report &report) {
  std::string out = std::string("<h2>Gamut</h2>\n") + kTable + column("Coverage of") +
                    "<th>in u'v', %</th><th>in xy, %</th>" + kTableBody;
  for (const Coverage &c : coverages(report.primaries)) {
    out += row(c.space, cell(number(c.uv, 1)) + cell(number(c.xy, 1)));
  }
  const NearestSpace nearest = nearest_space(report.primaries);
  out += std::string(kTableEnd) + kTable + column("Primary") + "<th>x</th><th>y</th><th>" + nearest.space +
         " x</th><th>" + nearest.space + " y</th><th>CIEDE2000</th>" + kTableBody;
  for (size_t c = 0; c < 3; c++) {
    const PrimaryDistance &p = nearest.primaries[c];
    out += row(kChannels[c], cell(number(p.panel.d[0], 4)) + cell(number(p.panel.d[1], 4)) +
                                 cell(number(p.space.d[0], 4)) + cell(number(p.space.d[1], 4)) +
                                 cell(number(p.de2000, 2)));
  }
  return out + kTableEnd + "<p class=\"note\">Primaries at full drive, above black, beside those of " + nearest.space +
         ", the nearest of the three. Both are scaled to the same white.</p>\n";
}

std::string fact(const char *term, const std::string &text) {
  return std::string("<dt>") + term + "</dt><dd>" + escaped(text) + "</dd>\n";
}

std::string white_fact(const Report &report) {
  const double before = report.before.seen.white;
  const double after = report.after.seen.white;
  return format("luminance %.2f to %.2f cd/m², %.1f %% given up; %s to %s", before, after,
                100.0 * (1.0 - after / before), kelvin(report.before.summary.white_cct).c_str(),
                kelvin(report.after.summary.white_cct).c_str()) +
         (report.source.target.luminance ? format("; asked for %g cd/m²", *report.source.target.luminance) : "");
}

std::string additivity_fact(const Report &report) {
  return report.source.additivity
             ? format("the sum of the channels misses the measured grays by CIEDE2000 %.2f on average, %.2f "
                      "at worst",
                      report.source.additivity->mean, report.source.additivity->worst)
             : "no gray ramp of the bare panel was given";
}

// A file's name and what identifies it.
std::string file_fact(const char *term, const std::string &name, const std::string &sha256) {
  return name.empty() ? "" : fact(term, name + (sha256.empty() ? "" : ", SHA-256 " + sha256));
}

std::string facts(const Report &report) {
  const ReportSource &source = report.source;
  const White &white = source.target.white;
  std::string out = "<h2>The calibration</h2>\n<dl>\n";
  for (const RecordedText &recorded : kRecordedTexts) {
    const std::string &text = source.labels.*recorded.text;
    out += text.empty() ? "" : fact(recorded.title, text);
  }
  return out + file_fact("Panel file", input_name(source.panel->path), report.panel_sha256) +
         fact("Panel file of", report.panel_date) + file_fact("LUTs", source.luts_name, report.luts_sha256) +
         file_fact("Measured ramp", source.verify, report.measured_sha256) + fact("Report of", report.date) +
         fact("Recipe", source.recipe) +
         fact("Target white", format("%s: x %.6g, y %.6g, %s", white.name.c_str(), white.xyz.d[0], white.xyz.d[1],
                                     kelvin(report.target.summary.white_cct).c_str())) +
         fact("Target curve", source.target.curve.name + ": " + source.target.curve.meaning) +
         fact("Luminances",
              std::string("of grays ") + black_in_figures(report) + "; of white and in contrast with black in it") +
         fact("White", white_fact(report)) + fact("Channels", additivity_fact(report)) +
         fact("Command line", source.command_line) + fact("Tool", "vexo " VEXO_VERSION) + "</dl>\n";
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

// PASS, FAIL or no limits given, with the class that colours it.
std::string outcome_line(const Report &report) {
  const std::string text = outcome(report.limits);
  const char *kind = report.limits.empty() ? "open" : text.rfind("PASS", 0) == 0 ? "pass" : "fail";
  return std::string("<p class=\"outcome ") + kind + "\">" + escaped(text) + ", " + basis(report) + "</p>\n";
}

std::string head(const Report &report) {
  const std::string &name = report.source.labels.name;
  const std::string title = "Calibration report" + (name.empty() ? "" : ": " + escaped(name));
  return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
         "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
         "<title>" +
         title + "</title>\n<style>\n" + std::string(kStyle) + "</style>\n</head>\n<body>\n<h1>" + title + "</h1>\n" +
         outcome_line(report) + "<p class=\"verdict\">" + escaped(verdict(report)) + "</p>\n<p>" +
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
                           chart_section(report) + gamut_table(report) +
                           (report.colours ? html_of(*report.colours) : "") + "<h2>Gray steps</h2>\n" +
                           gray_table(report) + measured_table(report) + "</body>\n</html>\n";
  std::fputs(page.c_str(), f);
}
