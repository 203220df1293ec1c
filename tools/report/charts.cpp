#include "report/charts.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "report/gamut.h"
#include "report/markup.h"
#include "text/channels.h"
#include "text/format.h"

namespace {

// CIE 1931 chromaticities of the spectrum, 2 degree observer (CIE 15), 400 to 700 nm.
const double kLocus[][2] = {
    {.1733, .0048}, {.1714, .0051}, {.1689, .0069}, {.1644, .0109}, {.1566, .0177}, {.1440, .0297}, {.1241, .0578},
    {.1096, .0868}, {.0913, .1327}, {.0687, .2007}, {.0454, .2950}, {.0235, .4127}, {.0082, .5384}, {.0039, .6548},
    {.0139, .7502}, {.0389, .8120}, {.0743, .8338}, {.1142, .8262}, {.1547, .8059}, {.1929, .7816}, {.2296, .7543},
    {.2658, .7243}, {.3016, .6923}, {.3373, .6589}, {.3731, .6245}, {.4087, .5896}, {.4441, .5547}, {.4788, .5202},
    {.5125, .4866}, {.5448, .4544}, {.5752, .4242}, {.6029, .3965}, {.6270, .3725}, {.6482, .3514}, {.6658, .3340},
    {.6801, .3197}, {.6915, .3083}, {.7079, .2920}, {.7190, .2809}, {.7260, .2740}, {.7300, .2700}, {.7347, .2653},
    {.1733, .0048}};

// A ramp as charts name and draw it.
struct NamedRamp {
  const char *name;
  const char *style;
  const Ramp *ramp;
};

std::vector<NamedRamp> shown_ramps(const Report &report) {
  std::vector<NamedRamp> list = {{"before", "before", &report.before}, {"after (predicted)", "after", &report.after}};
  if (report.measured) {
    list.push_back({"measured", "measured", &*report.measured});
  }
  return list;
}

// What a chart shows of a gray.
using Value = double (*)(const GrayFigure &);

template <typename Show>
ChartSeries over_level(const std::string &name, const std::string &style, const Ramp &ramp, Show value) {
  ChartSeries series = {name, style, {}};
  for (const GrayFigure &gray : ramp.grays) {
    series.points.push_back({gray.input * 100.0, value(gray)});
  }
  return series;
}

// The axes of a chart over gray level.
Chart level_chart(const Report &report, const char *id, const char *title, const std::string &unit, int decimals) {
  Chart chart;
  chart.id = id;
  chart.title = title;
  chart.x = {"gray level, %", 0.0, 100.0, 1};
  chart.y = {unit, 0.0, 0.0, decimals};
  chart.shaded_below = report.dark_level * 100.0;
  chart.shaded_label = "below the first measured row";
  return chart;
}

// The ramps of a report on the same axes.
void add_ramps(Chart *chart, const Report &report, Value value) {
  for (const NamedRamp &shown : shown_ramps(report)) {
    chart->series.push_back(over_level(shown.name, shown.style, *shown.ramp, value));
  }
}

// Added last, the target shows where another line meets it.
void add_target(Chart *chart, const Report &report, Value value) {
  chart->series.push_back(over_level("target", "target", report.target, value));
}

// Sets the axis to the range of the grays that are judged, with air: the noise of darker ones would rule it.
void fit_to_judged(Chart *chart, double least_span) {
  double low = std::numeric_limits<double>::infinity();
  double high = -low;
  for (const ChartSeries &series : chart->series) {
    for (const ChartPoint &point : series.points) {
      if (is_judged(point.x / 100.0) && std::isfinite(point.y)) {
        low = std::min(low, point.y);
        high = std::max(high, point.y);
      }
    }
  }
  if (low <= high) {
    const double air = std::max(0.15 * (high - low), 0.5 * std::max(0.0, least_span - (high - low)));
    chart->y.low = low - air;
    chart->y.high = high + air;
  }
}

Chart balance_chart(const Report &report) {
  Chart chart = level_chart(report, "balance", "RGB balance", "% of the target white", 2);
  for (const NamedRamp &shown : shown_ramps(report)) {
    for (int c = 0; c < 3; c++) {
      const std::string channel = std::string(kChannels[c]) + " ";
      chart.series.push_back(over_level(channel + shown.name, channel + shown.style, *shown.ramp,
                                        [c](const GrayFigure &g) { return g.balance[c]; }));
    }
  }
  chart.references = {{100.0, "100 %"}};
  fit_to_judged(&chart, 4.0);
  chart.summary = "Red, green and blue of each gray in percent of what the target white takes at its luminance; 100 on "
                  "all three is the target white.";
  return chart;
}

// Up to 4, or to the largest error above the darkest grays.
double error_axis(const Report &report) {
  const double darkest = 0.02;
  double high = 4.0;
  for (const NamedRamp &shown : shown_ramps(report)) {
    for (const GrayFigure &gray : shown.ramp->grays) {
      high = std::isfinite(gray.de2000) && gray.input >= darkest ? std::max(high, gray.de2000 * 1.05) : high;
    }
  }
  return high;
}

Chart error_chart(const Report &report) {
  Chart chart = level_chart(report, "error", "CIEDE2000 to the target", "CIEDE2000", 3);
  add_ramps(&chart, report, [](const GrayFigure &g) { return g.de2000; });
  chart.y.high = error_axis(report);
  chart.references = {{1.0, "1: just visible side by side"}, {3.0, "3: visible"}};
  chart.summary =
      format("Mean from %s up: %.2f before, %.2f after%s.", judged_from().c_str(), report.before.summary.de2000.mean,
             report.after.summary.de2000.mean,
             report.measured ? format(", %.2f measured", report.measured->summary.de2000.mean).c_str() : "");
  return chart;
}

Chart luminance_chart(const Report &report) {
  const Value luminance = [](const GrayFigure &g) { return double{g.xyY.d[2]}; };
  Chart chart = level_chart(report, "luminance", "Luminance response",
                            std::string("luminance, cd/m², ") + black_in_figures(report), 3);
  add_ramps(&chart, report, luminance);
  add_target(&chart, report, luminance);
  chart.summary = format("White: %.4g cd/m² before, %.4g after.", report.before.summary.white.d[2],
                         report.after.summary.white.d[2]);
  return chart;
}

// Of the judged grays through LUTs, as a part of the target's light.
double worst_light_error(const Report &report) {
  double worst = 0.0;
  for (const NamedRamp &shown : shown_ramps(report)) {
    for (const GrayFigure &gray : shown.ramp->grays) {
      const bool counts = shown.ramp != &report.before && is_judged(gray.input);
      worst = counts ? std::max(worst, std::fabs(gray.light_error)) : worst;
    }
  }
  return worst;
}

// The input is in logarithmic steps: errors near black are as wide as those near white. The axis fits the ramps through
// LUTs; the one without may leave it.
Chart light_error_chart(const Report &report) {
  Chart chart = level_chart(report, "eotf", "Error of light", "% of the target's light", 2);
  for (const NamedRamp &shown : shown_ramps(report)) {
    ChartSeries series = {shown.name, shown.style, {}};
    for (const GrayFigure &gray : shown.ramp->grays) {
      if (gray.input > 0.0) {
        series.points.push_back({gray.input * 100.0, gray.light_error * 100.0});
      }
    }
    chart.series.push_back(series);
  }
  chart.x = {"gray level, %, logarithmic", 1.0, 100.0, 1};
  chart.x.logarithmic = true;
  chart.references = {{0.0, "target"}};
  chart.y.high = 1.2 * std::max(5.0, 100.0 * worst_light_error(report));
  chart.y.low = -chart.y.high;
  chart.summary = format("Worst above 1 cd/m²: %s %% before, %s %% after.",
                         number(report.before.summary.light_error_bright * 100.0, 1).c_str(),
                         number(report.after.summary.light_error_bright * 100.0, 1).c_str());
  return chart;
}

Chart gamma_chart(const Report &report) {
  const Value gamma = [](const GrayFigure &g) { return g.gamma; };
  Chart chart = level_chart(report, "gamma", "Effective gamma of each step", "gamma", 3);
  add_ramps(&chart, report, gamma);
  add_target(&chart, report, gamma);
  fit_to_judged(&chart, 0.2);
  chart.summary =
      format("Mean from %s to 90 %%: %s before, %s after, which is %s to %s.", judged_from().c_str(),
             number(report.before.summary.gamma_mean, 3).c_str(), number(report.after.summary.gamma_mean, 3).c_str(),
             number(report.after.summary.gamma_min, 3).c_str(), number(report.after.summary.gamma_max, 3).c_str());
  return chart;
}

Chart temperature_chart(const Report &report) {
  const int target = report.target.summary.white_cct;
  Chart chart = level_chart(report, "cct", "Correlated colour temperature", "kelvin", 0);
  add_ramps(&chart, report, [](const GrayFigure &g) { return g.cct > 0 ? g.cct : std::nan(""); });
  if (target > 0) {
    chart.references = {{static_cast<double>(target), format("target %d K", target)}};
  }
  fit_to_judged(&chart, 400.0);
  chart.summary = format("White: %s before, %s after, target %s.", kelvin(report.before.summary.white_cct).c_str(),
                         kelvin(report.after.summary.white_cct).c_str(), kelvin(target).c_str());
  return chart;
}

// A curve for each channel, through the points that point(channel, index) gives.
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
  const vexo_lut *luts = report.source.luts->get();
  add_channels(&chart, 101, [luts](int c, int percent) {
    const float position = static_cast<float>(percent) / 100.0F * static_cast<float>(luts[c].size - 1);
    return ChartPoint{static_cast<double>(percent), vexo_lut_evaluate(&luts[c], position) * 100.0};
  });
  const auto last = [&](size_t c) { return chart.series[c].points.back().y; };
  chart.summary =
      format("Full drive after correction: red %.1f %%, green %.1f %%, blue %.1f %%.", last(0), last(1), last(2));
  return chart;
}

Chart response_chart(const Report &report) {
  Chart chart;
  chart.id = "response";
  chart.title = "Measured channel responses";
  chart.x = {"drive, %", 0.0, 100.0, 1};
  chart.y = {"luminance above black, % of full", 0.0, 0.0, 3};
  const vexo_lcnr &rows = report.source.model->measurements();
  const int top = rows.num - 1;
  add_channels(&chart, rows.num, [&rows, top](int c, int i) {
    const float *Y = rows.data[c][1];
    return ChartPoint{rows.sample[i] / rows.sample[top] * 100.0, (Y[i] - Y[0]) / (Y[top] - Y[0]) * 100.0};
  });
  chart.summary = format("%d rows, straight lines between them as the panel model has it.", rows.num);
  return chart;
}

ChartPoint point(const vexo_vector &v) { return {v.d[0], v.d[1]}; }

Chart gray_plane_chart(const Report &report) {
  Chart chart;
  chart.id = "uv";
  chart.title = "Gray chromaticity from " + judged_from() + " up, u'v'";
  chart.x = {"u'", 0.0, 0.0, 4};
  chart.y = {"v'", 0.0, 0.0, 4};
  chart.square = true;
  for (const NamedRamp &shown : shown_ramps(report)) {
    ChartSeries series = {shown.name, shown.style, {}};
    for (const GrayFigure &gray : shown.ramp->grays) {
      if (is_judged(gray.input) && std::isfinite(gray.duv)) {
        series.points.push_back(point(gray.uvY));
      }
    }
    chart.series.push_back(series);
  }
  chart.series.push_back({"target white", "target", {point(report.target.grays.back().uvY)}, false});
  chart.summary =
      format("Farthest from the target white: %s before, %s after.", number(report.before.summary.duv.worst, 4).c_str(),
             number(report.after.summary.duv.worst, 4).c_str());
  return chart;
}

Chart gamut_chart(const Report &report) {
  Chart chart;
  chart.id = "gamut";
  chart.title = "Gamut in the CIE 1931 diagram";
  chart.x = {"x", 0.0, 0.8, 4};
  chart.y = {"y", 0.0, 0.9, 4};
  chart.square = true;
  vexo_cs cs = report.primaries;
  ChartSeries locus = {"spectral locus", "outline", {}, true, false};
  for (const auto &xy : kLocus) {
    locus.points.push_back({xy[0], xy[1]});
  }
  chart.series = {locus};
  for (const Coverage &c : coverages(report.primaries)) {
    chart.series.push_back(
        {c.space, c.space, {point(c.cs.r), point(c.cs.g), point(c.cs.b), point(c.cs.r)}, true, false});
  }
  const std::vector<ChartSeries> panel = {
      {"panel", "white", {point(cs.r), point(cs.g), point(cs.b), point(cs.r)}, true, false},
      {"red", "red", {point(cs.r)}, false},
      {"green", "green", {point(cs.g)}, false},
      {"blue", "blue", {point(cs.b)}, false},
      {"cyan, magenta, yellow", "outline", {point(report.cyan), point(report.magenta), point(report.yellow)}, false},
      {"panel white", "before", {point(cs.w)}, false},
      {"target white", "target", {point(report.source.target.white.xyz)}, false}};
  chart.series.insert(chart.series.end(), panel.begin(), panel.end());
  for (const Coverage &c : coverages(report.primaries)) {
    chart.summary +=
        format("%s %.1f %% of %s", chart.summary.empty() ? "In u'v', the panel covers" : ",", c.uv, c.space.c_str());
  }
  chart.summary += ".";
  return chart;
}

} // namespace

std::vector<Chart> charts(const Report &report) {
  return {balance_chart(report),    error_chart(report), luminance_chart(report),   light_error_chart(report),
          gamma_chart(report),      luts_chart(report),  temperature_chart(report), response_chart(report),
          gray_plane_chart(report), gamut_chart(report)};
}
