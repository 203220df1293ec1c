#include "report/figure-list.h"

#include <algorithm>
#include <limits>

#include "report/colour-section.h"

namespace {

const double kUnknown = std::numeric_limits<double>::quiet_NaN();

// Of the 24 colours, in the way that is judged, for the ramp that is judged. Not known unless all of them were seen.
Spread judged_colours(const Report &report, const Ramp &ramp) {
  const bool known = report.colours && &ramp == &judged(report) && missing_colours(*report.colours) == 0;
  return known ? colour_spread(*report.colours, report.colours->judged, kChart) : Spread{kUnknown, kUnknown};
}

double percent(double part) { return part * 100.0; }

} // namespace

const std::vector<NamedFigure> kNamedFigures = {
    {"de2000_mean", "CIEDE2000, mean", 3, Bound::kMost, true,
     [](const Report &, const Ramp &r) { return r.summary.de2000.mean; }},
    {"de2000_worst", "CIEDE2000, worst", 3, Bound::kMost, true,
     [](const Report &, const Ramp &r) { return r.summary.de2000.worst; }},
    {"de2000_worst_tenth", "CIEDE2000, mean of the worst 10 %", 3, Bound::kMost, true,
     [](const Report &, const Ramp &r) { return r.summary.de2000_worst_tenth; }},
    {"de2000_white", "CIEDE2000 of white", 3, Bound::kMost, true,
     [](const Report &, const Ramp &r) { return r.summary.white_de2000; }},
    {"near_black_mean", "CIEDE2000 in the dark part, mean", 3, Bound::kMost, true,
     [](const Report &, const Ramp &r) { return r.summary.near_black.mean; }},
    {"near_black_worst", "CIEDE2000 in the dark part, worst", 3, Bound::kMost, true,
     [](const Report &, const Ramp &r) { return r.summary.near_black.worst; }},
    {"chroma_mean", "CIEDE2000 without luminance, mean", 3, Bound::kMost, true,
     [](const Report &, const Ramp &r) { return r.summary.chroma.mean; }},
    {"chroma_worst", "CIEDE2000 without luminance, worst", 3, Bound::kMost, true,
     [](const Report &, const Ramp &r) { return r.summary.chroma.worst; }},
    {"uv_mean", "Distance to the target white in u'v', mean", 4, Bound::kMost, false,
     [](const Report &, const Ramp &r) { return r.summary.duv.mean; }},
    {"uv_worst", "Distance to the target white in u'v', worst", 4, Bound::kMost, true,
     [](const Report &, const Ramp &r) { return r.summary.duv.worst; }},
    {"duv_mean", "Older name of uv_mean", 4, Bound::kMost, false,
     [](const Report &, const Ramp &r) { return r.summary.duv.mean; }},
    {"duv_worst", "Older name of uv_worst", 4, Bound::kMost, false,
     [](const Report &, const Ramp &r) { return r.summary.duv.worst; }},
    {"uv_star_worst", "Distance to the ramp's own white in u*v* from 1 to 100 cd/m², worst", 3, Bound::kMost, true,
     [](const Report &, const Ramp &r) { return r.summary.uv_star_worst; }},
    {"curve_mean", "Distance to the target curve, part of the light, mean", 4, Bound::kMost, false,
     [](const Report &, const Ramp &r) { return r.summary.curve.mean; }},
    {"curve_worst", "Distance to the target curve, part of the light, worst", 4, Bound::kMost, false,
     [](const Report &, const Ramp &r) { return r.summary.curve.worst; }},
    {"light_error_dark", "Error of luminance from 0.1 to 1 cd/m², %, worst", 2, Bound::kMost, true,
     [](const Report &, const Ramp &r) { return percent(r.summary.light_error_dark); }},
    {"light_error_bright", "Error of luminance above 1 cd/m², %, worst", 2, Bound::kMost, true,
     [](const Report &, const Ramp &r) { return percent(r.summary.light_error_bright); }},
    {"gamma_mean", "Effective gamma up to 90 % input, mean", 3, Bound::kNamed, true,
     [](const Report &, const Ramp &r) { return r.summary.gamma_mean; }},
    {"gamma_min", "Effective gamma, smallest", 3, Bound::kNamed, true,
     [](const Report &, const Ramp &r) { return r.summary.gamma_min; }},
    {"gamma_max", "Effective gamma, largest", 3, Bound::kNamed, true,
     [](const Report &, const Ramp &r) { return r.summary.gamma_max; }},
    {"gamma_spread", "Effective gamma, largest less smallest", 3, Bound::kMost, false,
     [](const Report &, const Ramp &r) { return r.summary.gamma_max - r.summary.gamma_min; }},
    {"falls", "Grays with less light than the one before", 0, Bound::kMost, false,
     [](const Report &, const Ramp &r) { return static_cast<double>(r.summary.falls); }},
    {"white_x", "White x", 4, Bound::kNamed, true,
     [](const Report &, const Ramp &r) { return double{r.summary.white.d[0]}; }},
    {"white_y", "White y", 4, Bound::kNamed, true,
     [](const Report &, const Ramp &r) { return double{r.summary.white.d[1]}; }},
    {"white_uv_star", "Distance of white to the target white in u*v*", 2, Bound::kMost, true,
     [](const Report &, const Ramp &r) { return r.summary.white_uv_star; }},
    {"CCT", "Correlated colour temperature of white, K", 0, Bound::kNamed, true,
     [](const Report &, const Ramp &r) { return r.summary.white_cct > 0 ? r.summary.white_cct : kUnknown; }},
    {"luminance", "White, cd/m², with black in it", 2, Bound::kNamed, true,
     [](const Report &, const Ramp &r) { return r.seen.white; }},
    {"luminance_given_up", "Part of the panel's white that is given up, %", 1, Bound::kMost, false,
     [](const Report &report, const Ramp &r) { return percent(1.0 - r.seen.white / report.before.seen.white); }},
    {"black", "Black, cd/m²", 4, Bound::kMost, true, [](const Report &, const Ramp &r) { return r.seen.black; }},
    {"contrast", "Contrast", 0, Bound::kNamed, true,
     [](const Report &, const Ramp &r) { return contrast(r.seen.white - r.seen.black, r.seen.black); }},
    {"color_de2000_mean", "CIEDE2000 of colours, mean", 3, Bound::kMost, false,
     [](const Report &report, const Ramp &r) { return judged_colours(report, r).mean; }},
    {"color_de2000_worst", "CIEDE2000 of colours, worst", 3, Bound::kMost, false,
     [](const Report &report, const Ramp &r) { return judged_colours(report, r).worst; }},
};

const NamedFigure *figure_named(const std::string &name) {
  const auto figure =
      std::find_if(kNamedFigures.begin(), kNamedFigures.end(), [&](const NamedFigure &f) { return name == f.name; });
  return figure == kNamedFigures.end() ? nullptr : &*figure;
}
