#include "report/colour-section.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "file/input.h"
#include "file/readings.h"
#include "report/markup.h"
#include "text/failure.h"
#include "text/format.h"

namespace {

const double kSameSignal = 0.003; // less than a code of 8 bits
const double kNotMeasured = std::numeric_limits<double>::quiet_NaN();

// A measured colour by its signal, above black.
using MeasuredColours = std::vector<MeasuredLight>;

MeasuredColours read_colours(const std::string &path, const vexo_lcnr &panel) {
  const Readings readings = read_readings(path, "measured colours");
  const double top = readings.full.value_or(panel.sample[panel.num - 1]);
  MeasuredColours colours;
  MeanXYZ black;
  for (const Reading &reading : readings.list) {
    const Triple signal = Triple(reading.drive[0], reading.drive[1], reading.drive[2]) / top;
    colours.push_back({signal, triple(reading.XYZ)});
    if (signal.isZero(0.0)) {
      black.add(reading.XYZ);
    }
  }
  const Triple shown_black = black.count() > 0 ? triple(black.XYZ()) : black_of(panel);
  for (MeasuredLight &colour : colours) {
    colour.XYZ -= shown_black;
  }
  return colours;
}

const MeasuredLight *measured_at(const MeasuredColours &colours, const Triple &signal) {
  for (const MeasuredLight &colour : colours) {
    if ((colour.drives - signal).cwiseAbs().maxCoeff() <= kSameSignal) {
      return &colour;
    }
  }
  return nullptr;
}

// Adds the column of measured colours. White is the measured one, if there is one.
void add_measured(ColourSection *section, const ColourSource &source, const MeasuredColours &colours,
                  const Target &target, const Triple &black) {
  const MeasuredLight *white = measured_at(colours, Triple::Ones());
  const double luminance = white == nullptr ? section->white[1] : white->XYZ[1] + black[1];
  const SignalColours wanted(source.space, target, luminance, black);
  bool any = false;
  for (ColourRow &row : section->rows) {
    const MeasuredLight *colour = measured_at(colours, row.patch.signal);
    any = any || colour != nullptr;
    row.shown.push_back(colour == nullptr
                            ? ShownColour{Triple::Constant(kNotMeasured), kNotMeasured}
                            : ShownColour{colour->XYZ, colour_error(colour->XYZ, colour->drives, wanted)});
  }
  if (!any) {
    refuse_input(input_name(source.verify),
                 "none of the test colours, expected the signals that --json lists, in the unit of the panel file");
  }
  section->judged = section->ways.size();
  section->ways.emplace_back("measured");
}

// The colour on an sRGB screen, for CSS.
std::string css_of(const Triple &XYZ, const SignalColours &screen, double white_luminance) {
  const Triple codes = screen.signal(XYZ.cwiseMax(0.0) / white_luminance) * 255.0;
  return format("#%02x%02x%02x", static_cast<unsigned>(std::lround(codes[0])),
                static_cast<unsigned>(std::lround(codes[1])), static_cast<unsigned>(std::lround(codes[2])));
}

std::string swatch(const std::string &wanted, const std::string &shown) {
  return "<td><svg class=\"swatch\" viewBox=\"0 0 40 16\" width=\"40\" height=\"16\" aria-hidden=\"true\">"
         "<rect width=\"20\" height=\"16\" fill=\"" +
         wanted + "\"/><rect x=\"20\" width=\"20\" height=\"16\" fill=\"" + shown + "\"/></svg></td>";
}

std::string heads(const ColourSection &section) {
  std::string out;
  for (const std::string &way : section.ways) {
    out += "<th scope=\"col\">" + way + "</th>";
  }
  return out;
}

std::string summary_of(const ColourSection &section) {
  std::string out = "<div class=\"scroll\"><table><thead><tr><th scope=\"col\">CIEDE2000</th>" + heads(section) +
                    "</tr></thead><tbody>\n";
  for (const std::string group : {kChart, ""}) {
    for (double Spread::*figure : {&Spread::mean, &Spread::worst}) {
      out += "<tr><th scope=\"row\">" + (group.empty() ? std::string("all colours") : group) +
             (figure == &Spread::mean ? ", mean" : ", worst") + "</th>";
      for (size_t way = 0; way < section.ways.size(); way++) {
        out += "<td>" + number(colour_spread(section, way, group).*figure, 2) + "</td>";
      }
      out += "</tr>\n";
    }
  }
  return out + "</tbody></table></div>\n";
}

} // namespace

ColourSection judge_colours(const ColourSource &source, const PanelModel &model, const vexo_lut *luts,
                            const Target &target) {
  const PanelInputs panel(model, luts);
  const Triple black = included_black(target.curve, model);
  const double white = panel.shown(Triple::Ones())[1] + black[1];
  const SignalColours colours(source.space, target, white, black);
  const Eigen::Matrix3d matrix = signal_matrix(source.space, panel_space(model, target.white));
  ColourSection section = {{"1D LUTs alone", "with a matrix"}, 0, colours.white(), target.white, {}};
  if (source.cube != nullptr) {
    section.judged = section.ways.size();
    section.ways.emplace_back("with the 3D LUT");
  }
  for (const Patch &patch : test_colours(colours)) {
    const Triple wanted = colours.XYZ(patch.signal);
    ColourRow row = {patch, wanted, in_gamut(panel, wanted), {}};
    const auto show = [&](const Triple &inputs) {
      const Triple XYZ = panel.shown(inputs.cwiseMax(0.0).cwiseMin(1.0));
      row.shown.push_back({XYZ, colour_error(XYZ, patch.signal, colours)});
    };
    show(patch.signal);
    show(matrix * patch.signal);
    if (source.cube != nullptr) {
      show(through(source.cube, patch.signal));
    }
    section.rows.push_back(row);
  }
  if (!source.verify.empty()) {
    add_measured(&section, source, read_colours(source.verify, model.measurements()), target, black);
  }
  return section;
}

Spread colour_spread(const ColourSection &section, size_t way, const std::string &group) {
  std::vector<double> errors;
  for (const ColourRow &row : section.rows) {
    if (group.empty() || row.patch.group == group) {
      errors.push_back(row.shown[way].de2000);
    }
  }
  return spread_of(errors);
}

int missing_colours(const ColourSection &section) {
  return static_cast<int>(std::count_if(section.rows.begin(), section.rows.end(), [&](const ColourRow &row) {
    return row.patch.group == kChart && std::isnan(row.shown[section.judged].de2000);
  }));
}

std::string html_of(const ColourSection &section) {
  const Target screen_target = {section.target_white, parse_tone_curve("", "srgb"), {}};
  const SignalColours screen(parse_space("", "srgb"), screen_target, 1.0, Triple::Zero());
  const double white = section.white[1];
  std::string out = "<h2>Colours</h2>\n" + summary_of(section) +
                    "<div class=\"scroll\"><table><thead><tr><th scope=\"col\">Colour</th><th scope=\"col\">asked for "
                    "and shown</th><th scope=\"col\">signal, %</th>" +
                    heads(section) + "</tr></thead><tbody>\n";
  for (const ColourRow &row : section.rows) {
    const Triple &signal = row.patch.signal;
    const ShownColour &judged = row.shown[section.judged];
    const Triple &swatch_XYZ = std::isnan(judged.de2000) ? row.wanted : judged.XYZ;
    out += "<tr><th scope=\"row\">" + escaped(row.patch.name) + (row.in_gamut ? "" : ", out of gamut") + "</th>" +
           swatch(css_of(row.wanted, screen, white), css_of(swatch_XYZ, screen, white)) +
           format("<td>%.1f, %.1f, %.1f</td>", signal[0] * 100.0, signal[1] * 100.0, signal[2] * 100.0);
    for (const ShownColour &shown : row.shown) {
      out += "<td>" + number(shown.de2000, 2) + "</td>";
    }
    out += "</tr>\n";
  }
  return out +
         "</tbody></table></div>\n<p class=\"note\">Columns are CIEDE2000 to the colour that the signal asks "
         "for, at the "
         "target white and curve. A swatch has the colour asked for on its left and on its right the one "
         "shown " +
         section.ways[section.judged] + ", on an sRGB screen.</p>\n";
}

Json json_of(const ColourSection &section) {
  const auto real = [](double value) { return std::isfinite(value) ? Json(value) : Json(); };
  const auto list = [&](const Triple &v) { return Json{real(v[0]), real(v[1]), real(v[2])}; };
  Json summary = Json::array();
  for (size_t way = 0; way < section.ways.size(); way++) {
    const Spread chart = colour_spread(section, way, kChart);
    const Spread all = colour_spread(section, way, "");
    summary.push_back({{"way", section.ways[way]},
                       {"chart", {{"mean", real(chart.mean)}, {"worst", real(chart.worst)}}},
                       {"all", {{"mean", real(all.mean)}, {"worst", real(all.worst)}}}});
  }
  Json rows = Json::array();
  for (const ColourRow &row : section.rows) {
    Json shown = Json::array();
    for (const ShownColour &s : row.shown) {
      shown.push_back({{"XYZ", list(s.XYZ)}, {"de2000", real(s.de2000)}});
    }
    rows.push_back({{"group", row.patch.group},
                    {"name", row.patch.name},
                    {"signal", list(row.patch.signal)},
                    {"XYZ", list(row.wanted)},
                    {"in_gamut", row.in_gamut},
                    {"shown", shown}});
  }
  return {{"ways", section.ways}, {"judged", section.ways[section.judged]}, {"summary", summary}, {"colours", rows}};
}
