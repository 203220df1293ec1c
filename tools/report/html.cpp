// The report as one HTML file: no script, nothing loaded from elsewhere.
#include <algorithm>
#include <cmath>

#include "report/chart.h"
#include "report/report.h"
#include "text/channels.h"
#include "text/format.h"
#include "vexo-cs.h"

namespace {

const char kStyle[] = R"(
:root { color-scheme: light dark; --paper: #fff; --ink: #1a1c1f; --soft: #5b6068; --line: #d9dce1; --shade: #eceef1;
  --before: #8a5a00; --after: #0b5fc4; --measured: #b4007e; --target: #2f7d32; --red: #c62828; --green: #2e7d32; --blue: #1e55c8; }
@media (prefers-color-scheme: dark) { :root { --paper: #15171a; --ink: #e8eaed; --soft: #a4a9b2; --line: #3a3e45;
  --shade: #24272c; --before: #e0a84a; --after: #6db1ff; --measured: #ff77cf; --target: #7ccf80; --red: #ff7b72;
  --green: #7ccf80; --blue: #7aa5ff; } }
* { box-sizing: border-box; }
body { font: 15px/1.5 system-ui, sans-serif; color: var(--ink); background: var(--paper); margin: 0 auto; max-width: 1360px;
  padding: 1rem; overflow-wrap: anywhere; }
h1 { font-size: 1.6rem; margin: 0 0 .5rem; } h2 { font-size: 1.2rem; margin: 2rem 0 .5rem; } h3 { font-size: 1rem; margin: 0; }
.verdict { font-size: 1.1rem; border-left: 4px solid var(--after); padding-left: .75rem; }
.note, figcaption { color: var(--soft); font-size: .875rem; margin: .25rem 0; }
.charts { display: grid; grid-template-columns: repeat(auto-fit, minmax(min(100%, 480px), 1fr)); gap: 1.5rem; }
figure { margin: 0; min-width: 0; break-inside: avoid; }
figure > svg { width: 100%; height: auto; display: block; }
.legend { margin: .1rem 0; font-size: .8125rem; display: flex; flex-wrap: wrap; gap: .1rem 1rem; }
.legend svg { width: 28px; height: 10px; margin-right: .35rem; }
.scroll { overflow-x: auto; }
table { border-collapse: collapse; font-variant-numeric: tabular-nums; font-size: .8125rem; }
th, td { padding: .15rem .5rem; text-align: right; border-bottom: 1px solid var(--line); white-space: nowrap; }
th:first-child, td:first-child { text-align: left; } th { white-space: normal; overflow-wrap: normal; }
dl { display: grid; grid-template-columns: minmax(8rem, max-content) minmax(0, 1fr); gap: .1rem 1rem; margin: 0; }
dt { color: var(--soft); } dd { margin: 0; }
.pass { color: var(--target); } .fail { color: var(--red); font-weight: bold; }
svg text { fill: var(--ink); font: 12px system-ui, sans-serif; } svg .tick { fill: var(--soft); }
svg .note { paint-order: stroke; stroke: var(--paper); stroke-width: 4px; stroke-linejoin: round; }
svg .grid { stroke: var(--line); stroke-width: 1; } svg .reference { stroke: var(--soft); stroke-dasharray: 2 4; }
svg .shade { fill: var(--shade); } svg path { fill: none; stroke: currentColor; stroke-width: 2; }
svg .point { fill: transparent; } svg .point:hover { fill: currentColor; } svg .mark { fill: currentColor; stroke: var(--paper); }
.before { color: var(--before); } .after { color: var(--after); } .measured { color: var(--measured); }
.target { color: var(--target); } .red { color: var(--red); } .green { color: var(--green); } .blue { color: var(--blue); }
.outline { color: var(--soft); } .white { color: var(--ink); }
svg .before path, svg.before path { stroke-dasharray: 7 4; } svg .measured path, svg.measured path { stroke-dasharray: 12 3 2 3; } svg .target path, svg.target path { stroke-dasharray: 2 6; stroke-width: 3; }
@media print { body { max-width: none; padding: 0; font-size: 10pt; } @page { size: A4; margin: 15mm; }
  .charts { grid-template-columns: 1fr 1fr; gap: 8mm 6mm; } .scroll { overflow: visible; } table { font-size: 7pt; }
  th, td { padding: .1rem .2rem; } }
)";

// CIE 1931 chromaticities of the spectrum, 2 degree observer (CIE 15), 400 to 700 nm.
const double kLocus[][2] = {
    {.1733, .0048}, {.1714, .0051}, {.1689, .0069}, {.1644, .0109}, {.1566, .0177}, {.1440, .0297}, {.1241, .0578},
    {.1096, .0868}, {.0913, .1327}, {.0687, .2007}, {.0454, .2950}, {.0235, .4127}, {.0082, .5384}, {.0039, .6548},
    {.0139, .7502}, {.0389, .8120}, {.0743, .8338}, {.1142, .8262}, {.1547, .8059}, {.1929, .7816}, {.2296, .7543},
    {.2658, .7243}, {.3016, .6923}, {.3373, .6589}, {.3731, .6245}, {.4087, .5896}, {.4441, .5547}, {.4788, .5202},
    {.5125, .4866}, {.5448, .4544}, {.5752, .4242}, {.6029, .3965}, {.6270, .3725}, {.6482, .3514}, {.6658, .3340},
    {.6801, .3197}, {.6915, .3083}, {.7079, .2920}, {.7190, .2809}, {.7260, .2740}, {.7300, .2700}, {.7347, .2653},
    {.1733, .0048}};

std::string number(double value, int decimals) { return std::isfinite(value) ? format("%.*f", decimals, value) : "–"; }

std::string kelvin(int cct) { return cct > 0 ? format("%d K", cct) : "–"; }

using Value = double (*)(const GrayFigure &);

struct Ramp {
  const char *name;
  const char *style;
  const std::vector<GrayFigure> *steps;
};

std::vector<Ramp> ramps(const Report &report) {
  std::vector<Ramp> list = {{"before", "before", &report.before}, {"after (predicted)", "after", &report.after}};
  if (!report.measured.empty()) {
    list.push_back({"measured", "measured", &report.measured});
  }
  return list;
}

ChartSeries over_level(const Ramp &ramp, Value value) {
  ChartSeries series = {ramp.name, ramp.style, {}};
  for (const GrayFigure &step : *ramp.steps) {
    series.points.push_back({step.input * 100.0, value(step)});
  }
  return series;
}

// A chart over gray level, before and after on the same axes.
Chart level_chart(const Report &report, const char *id, const char *title, const char *unit, int decimals, Value value,
                  bool with_target) {
  Chart chart;
  chart.id = id;
  chart.title = title;
  chart.x = {"gray level, %", 0.0, 100.0, 1};
  chart.y = {unit, 0.0, 0.0, decimals};
  chart.shaded_below = report.dark_level * 100.0;
  chart.shaded_label = "below the first measured row";
  for (const Ramp &ramp : ramps(report)) {
    chart.series.push_back(over_level(ramp, value));
  }
  if (with_target) { // last, so that it shows where another line meets it
    chart.series.push_back(over_level({"target", "target", &report.target}, value));
  }
  return chart;
}

// Keeps an axis from being ruled by the noise of the darkest steps: the range from 10 % input up, with air.
void fit_to_bright(Chart *chart, double least_span) {
  double low = 1e30;
  double high = -1e30;
  for (const ChartSeries &series : chart->series) {
    for (const ChartPoint &point : series.points) {
      if (point.x >= 10.0 && std::isfinite(point.y)) {
        low = std::min(low, point.y);
        high = std::max(high, point.y);
      }
    }
  }
  const double air = std::max(0.15 * (high - low), 0.5 * std::max(0.0, least_span - (high - low)));
  if (low <= high) {
    chart->y.low = low - air;
    chart->y.high = high + air;
  }
}

double balance_of(const GrayFigure &step, int channel) { return step.balance[channel]; }

Chart balance_chart(const Report &report) {
  Chart chart = level_chart(
      report, "balance", "RGB balance", "% of the target white", 2,
      [](const GrayFigure &s) { return balance_of(s, 0); }, false);
  chart.series.clear();
  for (const Ramp &ramp : ramps(report)) {
    for (int c = 0; c < 3; c++) {
      ChartSeries series = {
          std::string(kChannels[c]) + " " + ramp.name, std::string(kChannels[c]) + " " + ramp.style, {}};
      for (const GrayFigure &step : *ramp.steps) {
        series.points.push_back({step.input * 100.0, balance_of(step, c)});
      }
      chart.series.push_back(series);
    }
  }
  chart.references = {{100.0, "100 %"}};
  fit_to_bright(&chart, 4.0);
  chart.summary = "Red, green and blue of each gray in percent of what the target white takes at its luminance; 100 on "
                  "all three is the target white.";
  return chart;
}

Chart error_chart(const Report &report) {
  Chart chart = level_chart(
      report, "error", "CIEDE2000 to the target", "CIEDE2000", 3, [](const GrayFigure &s) { return s.de2000; }, false);
  double high = 4.0;
  for (const Ramp &ramp : ramps(report)) {
    for (const GrayFigure &step : *ramp.steps) {
      high = std::isfinite(step.de2000) && step.input >= 0.02 ? std::max(high, step.de2000 * 1.05) : high;
    }
  }
  chart.y.high = high;
  chart.references = {{1.0, "1: just visible side by side"}, {3.0, "3: visible"}};
  chart.summary =
      format("Mean from 10 %% up: %.2f before, %.2f after%s.", report.summary_before.de2000_mean,
             report.summary_after.de2000_mean,
             report.measured.empty() ? "" : format(", %.2f measured", report.summary_measured.de2000_mean).c_str());
  return chart;
}

Chart luminance_chart(const Report &report) {
  Chart chart = level_chart(
      report, "luminance", "Luminance response", "luminance above black", 3,
      [](const GrayFigure &s) { return static_cast<double>(s.xyY.d[2]); }, true);
  chart.summary =
      format("White: %.4g before, %.4g after.", report.summary_before.white_Y, report.summary_after.white_Y);
  return chart;
}

Chart gamma_chart(const Report &report) {
  Chart chart = level_chart(
      report, "gamma", "Effective gamma of each step", "gamma", 3, [](const GrayFigure &s) { return s.gamma; }, true);
  fit_to_bright(&chart, 0.2);
  chart.summary =
      format("Mean from 10 %% up: %.3f before, %.3f after; spread after %.3f.", report.summary_before.gamma_mean,
             report.summary_after.gamma_mean, report.summary_after.gamma_spread);
  return chart;
}

Chart temperature_chart(const Report &report) {
  Chart chart = level_chart(
      report, "cct", "Correlated colour temperature", "kelvin", 0,
      [](const GrayFigure &s) { return s.cct > 0 ? static_cast<double>(s.cct) : std::nan(""); }, false);
  if (report.target_cct > 0) {
    chart.references = {{static_cast<double>(report.target_cct), format("target %d K", report.target_cct)}};
  }
  fit_to_bright(&chart, 400.0);
  chart.summary = format("White: %s before, %s after, target %s.", kelvin(report.summary_before.white_cct).c_str(),
                         kelvin(report.summary_after.white_cct).c_str(), kelvin(report.target_cct).c_str());
  return chart;
}

// A curve a channel through the points that point(channel, index) gives.
template <typename Point> void add_channels(Chart *chart, int count, Point point) {
  for (int c = 0; c < 3; c++) {
    ChartSeries series = {kChannels[c], kChannels[c], {}};
    for (int i = 0; i < count; i++) {
      series.points.push_back(point(c, i));
    }
    chart->series.push_back(series);
  }
}

Chart luts_chart(const Report &report) {
  Chart chart;
  chart.id = "luts";
  chart.title = "The three LUTs";
  chart.x = {"input, %", 0.0, 100.0, 1};
  chart.y = {"drive, %", 0.0, 100.0, 2};
  vexo_lut *luts = report.source.luts->get();
  add_channels(&chart, 101, [luts](int c, int percent) {
    const float position = static_cast<float>(percent) / 100.0F * static_cast<float>(luts[c].size - 1);
    return ChartPoint{static_cast<double>(percent), static_cast<double>(vexo_lut_evaluate(&luts[c], position)) * 100.0};
  });
  chart.summary =
      format("Full drive after correction: red %.1f %%, green %.1f %%, blue %.1f %%.", chart.series[0].points.back().y,
             chart.series[1].points.back().y, chart.series[2].points.back().y);
  return chart;
}

Chart response_chart(const Report &report) {
  Chart chart;
  chart.id = "response";
  chart.title = "Measured channel responses";
  chart.x = {"drive, %", 0.0, 100.0, 1};
  chart.y = {"luminance above black, % of full", 0.0, 0.0, 3};
  const vexo_lcnr &lcnr = report.source.used;
  const int top = lcnr.num - 1;
  add_channels(&chart, lcnr.num, [&lcnr, top](int c, int i) {
    const float *Y = lcnr.data[c][1];
    return ChartPoint{static_cast<double>(lcnr.sample[i] / lcnr.sample[top]) * 100.0,
                      static_cast<double>((Y[i] - Y[0]) / (Y[top] - Y[0])) * 100.0};
  });
  chart.summary = format("%d rows, straight lines between them as the panel model has it.", lcnr.num);
  return chart;
}

Chart gray_plane_chart(const Report &report) {
  Chart chart;
  chart.id = "uv";
  chart.title = "Gray chromaticity from 10 % up, u'v'";
  chart.x = {"u'", 0.0, 0.0, 4};
  chart.y = {"v'", 0.0, 0.0, 4};
  chart.square = true;
  for (const Ramp &ramp : ramps(report)) {
    ChartSeries series = {ramp.name, ramp.style, {}};
    for (const GrayFigure &step : *ramp.steps) {
      if (step.input >= 0.1 && std::isfinite(step.duv)) {
        series.points.push_back({static_cast<double>(step.uvY.d[0]), static_cast<double>(step.uvY.d[1])});
      }
    }
    chart.series.push_back(series);
  }
  const GrayFigure &white = report.target.back();
  chart.series.push_back(
      {"target white", "target", {{static_cast<double>(white.uvY.d[0]), static_cast<double>(white.uvY.d[1])}}, false});
  chart.summary = format("Farthest from the target white: %.4f before, %.4f after.", report.summary_before.duv_worst,
                         report.summary_after.duv_worst);
  return chart;
}

ChartPoint xy(const vexo_vector &v) { return {static_cast<double>(v.d[0]), static_cast<double>(v.d[1])}; }

Chart gamut_chart(const Report &report) {
  Chart chart;
  chart.id = "gamut";
  chart.title = "Gamut in the CIE 1931 diagram";
  chart.x = {"x", 0.0, 0.8, 4};
  chart.y = {"y", 0.0, 0.9, 4};
  chart.square = true;
  const vexo_cs &cs = report.primaries;
  ChartSeries locus = {"spectral locus", "outline", {}, true, false};
  for (const auto &point : kLocus) {
    locus.points.push_back({point[0], point[1]});
  }
  chart.series = {locus,
                  {"panel", "white", {xy(cs.r), xy(cs.g), xy(cs.b), xy(cs.r)}, true, false},
                  {"red", "red", {xy(cs.r)}, false},
                  {"green", "green", {xy(cs.g)}, false},
                  {"blue", "blue", {xy(cs.b)}, false},
                  {"cyan, magenta, yellow", "outline", {xy(report.cyan), xy(report.magenta), xy(report.yellow)}, false},
                  {"panel white", "before", {xy(cs.w)}, false},
                  {"target white", "target", {xy(report.source.target.white.xyz)}, false}};
  vexo_cs copy = cs;
  chart.summary = format("The gamut triangle covers %.4f of the xy plane.", static_cast<double>(vexo_cs_area(&copy)));
  return chart;
}

std::string row(const char *term, const std::string &text) {
  return std::string("<dt>") + term + "</dt><dd>" + escaped(text) + "</dd>\n";
}

std::string summary_row(const char *name, double before, double after, const double *measured, int decimals) {
  std::string cells = "<td>" + number(before, decimals) + "</td><td>" + number(after, decimals) + "</td>";
  if (measured != nullptr) {
    cells += "<td>" + number(*measured, decimals) + "</td>";
  }
  return std::string("<tr><th scope=\"row\">") + name + "</th>" + cells + "</tr>\n";
}

std::string summary_table(const Report &report) {
  struct Line {
    const char *name;
    double Summary::*figure;
    int decimals;
  };
  const Line lines[] = {{"CIEDE2000, mean", &Summary::de2000_mean, 3},
                        {"CIEDE2000, worst", &Summary::de2000_worst, 3},
                        {"CIEDE2000, mean of the worst 10 %", &Summary::de2000_worst_tenth, 3},
                        {"CIEDE2000 without luminance, mean", &Summary::chroma_mean, 3},
                        {"CIEDE2000 without luminance, worst", &Summary::chroma_worst, 3},
                        {"Distance to the target white in u'v', worst", &Summary::duv_worst, 4},
                        {"Effective gamma, mean", &Summary::gamma_mean, 3},
                        {"Effective gamma, spread", &Summary::gamma_spread, 3},
                        {"White x", &Summary::white_x, 4},
                        {"White y", &Summary::white_y, 4},
                        {"White luminance above black", &Summary::white_Y, 2}};
  const bool measured = !report.measured.empty();
  std::string out = "<div class=\"scroll\"><table><thead><tr><th scope=\"col\">From 10 % input up</th>"
                    "<th scope=\"col\">before</th><th scope=\"col\">after (predicted)</th>";
  out += std::string(measured ? "<th scope=\"col\">measured</th>" : "") + "</tr></thead><tbody>\n";
  for (const Line &line : lines) {
    out += summary_row(line.name, report.summary_before.*line.figure, report.summary_after.*line.figure,
                       measured ? &(report.summary_measured.*line.figure) : nullptr, line.decimals);
  }
  const auto contrast = [&](const Summary &s) { return (s.white_Y + report.black) / report.black; };
  const double measured_contrast = contrast(report.summary_measured);
  const double measured_cct = report.summary_measured.white_cct;
  out += summary_row("White CCT, K", report.summary_before.white_cct, report.summary_after.white_cct,
                     measured ? &measured_cct : nullptr, 0);
  out += summary_row("Contrast", contrast(report.summary_before), contrast(report.summary_after),
                     measured ? &measured_contrast : nullptr, 0);
  return out + "</tbody></table></div>\n";
}

std::string step_cells(const GrayFigure &step) {
  return "<td>" + number(static_cast<double>(step.xyY.d[2]), 3) + "</td><td>" +
         number(static_cast<double>(step.xyY.d[0]), 4) + "</td><td>" + number(static_cast<double>(step.xyY.d[1]), 4) +
         "</td><td>" + (step.cct > 0 ? std::to_string(step.cct) : "–") + "</td><td>" + number(step.de2000, 2) + "</td>";
}

std::string step_table(const Report &report) {
  const vexo_vector &white = report.source.target.white.xyz;
  std::string out =
      "<div class=\"scroll\"><table><thead><tr><th rowspan=\"2\" scope=\"col\">Input</th>"
      "<th colspan=\"4\">target</th><th colspan=\"5\">before</th><th colspan=\"5\">after (predicted)</th></tr>"
      "<tr><th>Y</th><th>x</th><th>y</th><th>CCT</th>";
  for (int i = 0; i < 2; i++) {
    out += "<th>Y</th><th>x</th><th>y</th><th>CCT</th><th>ΔE</th>";
  }
  out += "</tr></thead><tbody>\n";
  for (size_t i = 0; i < report.after.size(); i += 5) {
    out += format("<tr><th scope=\"row\">%zu %%%s</th><td>%s</td><td>%.4f</td><td>%.4f</td><td>%s</td>", i,
                  report.after[i].input > 0.0 && report.after[i].input < report.dark_level ? "*" : "",
                  number(static_cast<double>(report.target[i].XYZ.d[1]), 3).c_str(), static_cast<double>(white.d[0]),
                  static_cast<double>(white.d[1]),
                  report.target_cct > 0 ? std::to_string(report.target_cct).c_str() : "–");
    out += step_cells(report.before[i]) + step_cells(report.after[i]) + "</tr>\n";
  }
  return out +
         "</tbody></table></div>\n<p class=\"note\">ΔE is CIEDE2000. * Below the first measured row: between black "
         "and that row the panel model is a straight line.</p>\n";
}

std::string measured_table(const Report &report) {
  if (report.measured.empty()) {
    return "";
  }
  std::string out = "<h2>Measured gray ramp</h2>\n<div class=\"scroll\"><table><thead><tr><th scope=\"col\">Input</th>"
                    "<th>Y</th><th>x</th><th>y</th><th>CCT</th><th>ΔE</th></tr></thead><tbody>\n";
  for (const GrayFigure &step : report.measured) {
    out += "<tr><th scope=\"row\">" + number(step.input * 100.0, 1) + " %</th>" + step_cells(step) + "</tr>\n";
  }
  return out + "</tbody></table></div>\n";
}

std::string limits_table(const Report &report) {
  if (report.limits.empty()) {
    return "";
  }
  std::string out = "<h2>Limits</h2>\n<div class=\"scroll\"><table><thead><tr><th scope=\"col\">Figure</th>"
                    "<th>limit</th><th>value</th><th></th></tr></thead><tbody>\n";
  for (const LimitResult &limit : report.limits) {
    out += "<tr><th scope=\"row\">" + escaped(limit.figure) + "</th><td>" + escaped(limit.limit) + "</td><td>" +
           number(limit.value, 4) + (limit.passed ? "</td><td class=\"pass\">pass" : "</td><td class=\"fail\">FAIL") +
           "</td></tr>\n";
  }
  return out + "</tbody></table></div>\n";
}

std::string facts(const Report &report) {
  const ReportSource &source = report.source;
  const auto &w = source.target.white.xyz.d;
  const double given_up = 100.0 * (1.0 - report.summary_after.white_Y / report.summary_before.white_Y);
  return "<dl>\n" + row("Panel file", source.panel->path) + row("SHA-256", report.panel_sha256) +
         row("File of", report.panel_date) + row("Report of", report.date) + row("Recipe", source.recipe) +
         row("LUTs", source.luts_name) +
         row("Target white",
             format("%s: x %.6g, y %.6g, %s", source.target.white.name.c_str(), static_cast<double>(w[0]),
                    static_cast<double>(w[1]), kelvin(report.target_cct).c_str())) +
         row("Camera curve", describe(source.target.camera)) + row("System curve", describe(source.target.system)) +
         row("White", format("luminance %.2f to %.2f, %.1f %% given up; %s to %s", report.summary_before.white_Y,
                             report.summary_after.white_Y, given_up, kelvin(report.summary_before.white_cct).c_str(),
                             kelvin(report.summary_after.white_cct).c_str())) +
         row("Command line", source.command_line) + row("Tool", "vexo " VEXO_VERSION) + "</dl>\n";
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

} // namespace

void write_html(const Report &report, std::FILE *f) {
  std::string page = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
                     "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
                     "<title>Calibration report</title>\n<style>" +
                     std::string(kStyle) + "</style>\n</head>\n<body>\n<h1>Calibration report</h1>\n";
  page += "<p class=\"verdict\">" + escaped(verdict(report)) + "</p>\n";
  page +=
      report.measured.empty()
          ? "<p>All figures are predictions of the additive panel model from the measurements; nothing was measured "
            "after the calibration.</p>\n"
          : "<p>The verdict is about the measured ramp; figures named predicted come from the additive panel model "
            "and the panel's measurements.</p>\n";
  page += summary_table(report) + limits_table(report) + "<h2>The calibration</h2>\n" + facts(report) + notes(report);
  page += "<h2>Charts</h2>\n<div class=\"charts\">\n";
  for (const Chart &chart : {balance_chart(report), error_chart(report), luminance_chart(report), gamma_chart(report),
                             temperature_chart(report), luts_chart(report), response_chart(report),
                             gray_plane_chart(report), gamut_chart(report)}) {
    page += render(chart);
  }
  page += "</div>\n<h2>Gray steps</h2>\n" + step_table(report) + measured_table(report) + "</body>\n</html>\n";
  std::fputs(page.c_str(), f);
}
