#include "report/measurements.h"

#include <cmath>
#include <cstdio>

#include "calibration/figures.h"
#include "file/input.h"
#include "text/channels.h"
#include "text/format.h"

namespace {

const double kVisible = 1.0; // CIEDE2000, just visible side by side

void print_rows(const vexo_lcnr &lcnr) {
  std::printf(
      "\n     Level         Xr         Yr         Zr         Xg         Yg         Zg         Xb         Yb         "
      "Zb\n");
  for (int i = 0; i < lcnr.num; i++) {
    std::printf("%10g", lcnr.sample[i]);
    for (int n = 0; n < 9; n++) {
      std::printf(" %10.4f", lcnr.data[n / 3][n % 3][i]);
    }
    std::puts("");
  }
}

void print_colour(const char *name, const vexo_vector &xyY, const std::string &more) {
  std::printf("%-10s x %.4f, y %.4f, luminance %.4g%s\n", name, xyY.d[0], xyY.d[1], xyY.d[2], more.c_str());
}

void print_colours(const Check &c) {
  std::printf("\nAt full drive, above black, the white as the sum of the channels:\n");
  print_colour("White", c.white, c.cct > 0 ? format(", CCT %d K", c.cct) : "");
  for (int channel = 0; channel < 3; channel++) {
    print_colour(kChannels[channel], c.primary[channel], "");
  }
  std::printf("Black      X %.4g, Y %.4g, Z %.4g\n", c.black[0], c.black[1], c.black[2]);
  std::printf("Contrast   %s\n",
              std::isfinite(c.contrast) ? format("%.4g to 1", c.contrast).c_str() : "unknown: black reads no light");
}

void print_additivity(const Additivity &a) {
  const auto worst = [](const Additivity::Distance &d) { return format("at level %g", d.worst_level); };
  std::printf("Additivity measured gray against the sum of the channels, above black, %d levels from %s up:\n"
              "           CIEDE2000 mean %.2f, worst %.2f %s\n"
              "           luminance mean %.2f %%, worst %.2f %% %s; colour mean %.4f, worst %.4f in u'v' %s\n",
              a.levels, judged_from().c_str(), a.de2000.mean, a.de2000.worst, worst(a.de2000).c_str(),
              a.luminance.mean * 100.0, a.luminance.worst * 100.0, worst(a.luminance).c_str(), a.uv.mean, a.uv.worst,
              worst(a.uv).c_str());
  if (a.de2000.mean > kVisible) {
    std::printf("           the channels do not add: give this ramp to vexo calibrate with --gray\n");
  }
}

void print_cross_validation(const CrossValidation &v) {
  std::printf("Mixtures   %zu readings, each left out in turn: CIEDE2000 of the prediction by the model\n"
              "                                      mean   95 %%   worst\n",
              v.readings);
  for (const LayerError &layer : v.layers) {
    std::printf("           %-25s %6.2f %6.2f  %6.2f  %s\n", layer.layer.c_str(), layer.mean, layer.most, layer.worst,
                layer.worst_place.c_str());
  }
  for (const std::string &line : v.odd) {
    std::printf("           outlier: %s\n", line.c_str());
  }
  if (!v.holds) {
    std::printf("           %s\n", doubt(v).c_str());
  }
}

Json json_distance(const Additivity::Distance &d) {
  return {{"mean", d.mean}, {"worst", d.worst}, {"level", d.worst_level}};
}

Json json_additivity(const Additivity &a) {
  return {{"levels", a.levels},
          {"de2000", json_distance(a.de2000)},
          {"luminance", json_distance(a.luminance)},
          {"uv", json_distance(a.uv)}};
}

Json json_cross_validation(const CrossValidation &v) {
  Json layers = Json::array();
  for (const LayerError &layer : v.layers) {
    layers.push_back({{"layer", layer.layer},
                      {"mean", layer.mean},
                      {"percentile_95", layer.most},
                      {"worst", layer.worst},
                      {"worst_place", layer.worst_place}});
  }
  return {{"readings", v.readings}, {"layers", layers}, {"odd", v.odd}, {"holds", v.holds}};
}

Json json_row(const vexo_lcnr &lcnr, int i) {
  Json row = {{"level", json_number(lcnr.sample[i])}};
  for (int c = 0; c < 3; c++) {
    row[kChannels[c]] = json_vector(vexo_vector{{lcnr.data[c][0][i], lcnr.data[c][1][i], lcnr.data[c][2][i]}});
  }
  return row;
}

Json json_finding(const Panel &panel, const Finding &f) {
  return {{"kind", f.kind},
          {"line", panel.lines[static_cast<size_t>(f.row)]},
          {"row", f.row},
          {"level", json_number(panel.lcnr.sample[f.row])},
          {"channel", kChannels[f.channel]},
          {"component", f.component >= 0 ? Json(kComponents[f.component]) : Json()},
          {"text", f.text}};
}

} // namespace

void print_check(const Check &c) {
  const vexo_lcnr &lcnr = c.panel.lcnr;
  std::printf("Panel      %s, %d LEVEL elements read as %d rows of ten numbers, levels rise from 0 to %g\n",
              input_name(c.panel.path).c_str(), lcnr.num, lcnr.num, lcnr.sample[lcnr.num - 1]);
  print_rows(lcnr);
  print_colours(c);
  if (c.gray) {
    print_additivity(*c.gray);
  }
  if (c.mixtures) {
    print_cross_validation(*c.mixtures);
  }
  std::printf("\n%zu warning%s\n", c.findings.size(), c.findings.size() == 1 ? "" : "s");
  for (const Finding &finding : c.findings) {
    std::printf("  %s: %s\n", row_name(c.panel, finding.row).c_str(), finding.text.c_str());
  }
  for (const RecipeCheck &recipe : c.recipes) {
    if (!recipe.obstacle.empty()) {
      std::printf("Without conditioning, the library's %s recipe cannot use it: %s\n", recipe.recipe,
                  recipe.obstacle.c_str());
    }
  }
  std::printf("vexo calibrate %s\n", c.obstacle.empty() ? "can use it" : ("cannot use it: " + c.obstacle).c_str());
}

Json json_check(const Check &c) {
  Json document = {{"panel", input_name(c.panel.path)}, {"rows", Json::array()}};
  for (int i = 0; i < c.panel.lcnr.num; i++) {
    document["rows"].push_back(json_row(c.panel.lcnr, i));
  }
  document["white"] = {{"xyY", json_vector(c.white)}, {"cct", c.cct > 0 ? Json(c.cct) : Json()}};
  for (int channel = 0; channel < 3; channel++) {
    document["primaries"][kChannels[channel]] = json_vector(c.primary[channel]);
  }
  document["black"] = json_vector(single(c.black));
  document["contrast"] = std::isfinite(c.contrast) ? Json(c.contrast) : Json();
  document["additivity"] = c.gray ? json_additivity(*c.gray) : Json();
  document["mixtures"] = c.mixtures ? json_cross_validation(*c.mixtures) : Json();
  document["warnings"] = Json::array();
  for (const Finding &finding : c.findings) {
    document["warnings"].push_back(json_finding(c.panel, finding));
  }
  document["calibrate"] = c.obstacle.empty() ? Json() : Json(c.obstacle);
  for (const RecipeCheck &recipe : c.recipes) {
    document["recipes"][recipe.recipe] = recipe.obstacle.empty() ? Json() : Json(recipe.obstacle);
  }
  return document;
}
