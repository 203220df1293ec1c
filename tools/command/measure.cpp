// vexo measure: look at a panel's measurements, and make them from other programs' files.
#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
#include <optional>

#include "calibration/condition.h"
#include "calibration/gray-ramp.h"
#include "command/commands.h"
#include "file/csv.h"
#include "file/import.h"
#include "file/input.h"
#include "file/luts.h"
#include "file/panel.h"
#include "text/channels.h"
#include "text/failure.h"
#include "text/format.h"
#include "text/json.h"
#include "vexo-cs.h"

namespace {

struct MeasureOptions {
  std::string panel;
  std::string gray;
  std::string condition;
  bool json = false;
};

struct ImportOptions {
  std::string input;
  std::string output;
};

const float kNearBlack = 0.02F; // of a channel's light at full drive
const float kStrayed = 0.05F;   // in u'v', several times what two colours differ when just told apart
const double kFlat = 0.1;       // exponent of the response between two rows; displays have 1 to 5
const float kWeak = 0.1F;       // of the strongest channel's light
const float kDark = 0.1F;       // additivity leaves out levels below this part of full drive, where a probe reads noise

double wide(float value) { return static_cast<double>(value); }

// Something about the measurements that an engineer should know.
struct Finding {
  const char *kind;
  int row;
  int channel;
  int component; // -1 where all three are meant
  std::string text;
};

int top_row(const vexo_lcnr &lcnr) { return lcnr.num - 1; }

float light(const vexo_lcnr &lcnr, int channel, int row) {
  vexo_vector XYZ = above_black(lcnr, channel, row);
  return vexo_vector_sum(&XYZ);
}

vexo_vector colour(const vexo_lcnr &lcnr, int channel, int row) {
  vexo_vector xyY = above_black(lcnr, channel, row);
  vexo_XYZ_xyY(&xyY);
  return xyY;
}

class Check {
public:
  explicit Check(const vexo_lcnr &lcnr) : lcnr_(lcnr) {}

  std::vector<Finding> run() {
    for (int i = 1; i < lcnr_.num; i++) {
      for (int c = 0; c < 3; c++) {
        check_black(i, c);
        check_falls(i, c);
        check_rise(i, c);
      }
    }
    for (int c = 0; c < 3; c++) {
      check_weak(c);
    }
    return std::move(findings_);
  }

private:
  void add(const char *kind, int row, int channel, int component, const std::string &text) {
    findings_.push_back({kind, row, channel, component, text});
  }

  void check_black(int i, int c) {
    const double all = wide(light(lcnr_, c, i));
    if (!(all > 0.0)) {
      add("not above black", i, c, -1,
          format("%s is not above black: X + Y + Z minus black's is %g", kChannels[c], all));
      return;
    }
    for (int m = 0; m < 3; m++) {
      const auto &column = lcnr_.data[c][m];
      if (column[i] < column[0]) {
        add("below black", i, c, m,
            format("%s of %s is %g, below black's %g", kComponents[m], kChannels[c], wide(column[i]), wide(column[0])));
      }
    }
    const float strayed = uv_distance(colour(lcnr_, c, i), colour(lcnr_, c, top_row(lcnr_)));
    if (all < wide(kNearBlack * light(lcnr_, c, top_row(lcnr_))) && !(strayed <= kStrayed)) {
      add("noise near black", i, c, -1,
          std::isnan(strayed) ? format("%s above black has no colour: noise near black", kChannels[c])
                              : format("%s above black is %.3f in u'v' from its colour at full drive: noise near black",
                                       kChannels[c], wide(strayed)));
    }
  }

  // Below black is said already.
  void check_falls(int i, int c) {
    for (int m = 0; m < 3 && i > 1; m++) {
      const auto &column = lcnr_.data[c][m];
      if (column[i] < column[i - 1]) {
        add("falls", i, c, m,
            format("%s of %s falls from %g to %g", kComponents[m], kChannels[c], wide(column[i - 1]), wide(column[i])));
      }
    }
  }

  // Falling is said already.
  void check_rise(int i, int c) {
    const double before = wide(light(lcnr_, c, i - 1));
    const double now = wide(light(lcnr_, c, i));
    if (i > 1 && before > 0.0 && now >= before &&
        std::log(now / before) < kFlat * std::log(wide(lcnr_.sample[i]) / wide(lcnr_.sample[i - 1]))) {
      add("hardly rises", i, c, -1,
          format("%s hardly rises: X + Y + Z above black goes from %g to %g", kChannels[c], before, now));
    }
  }

  void check_weak(int c) {
    const int top = top_row(lcnr_);
    float strongest = 0.0F;
    for (int other = 0; other < 3; other++) {
      strongest = std::max(strongest, light(lcnr_, other, top));
    }
    if (light(lcnr_, c, top) < kWeak * strongest) {
      add("hardly rises", top, c, -1,
          format("%s hardly rises: X + Y + Z above black at full drive is %g, %g in the strongest channel",
                 kChannels[c], wide(light(lcnr_, c, top)), wide(strongest)));
    }
  }

  const vexo_lcnr &lcnr_;
  std::vector<Finding> findings_;
};

// Why a recipe makes no LUTs of these rows, empty when it does. A white and a curve are needed to ask; any will do.
std::string obstacle(Panel panel, int (*recipe)(vexo_lut *, vexo *, vexo_gamma *, vexo_gamma *, vexo_vector *)) {
  if (recipe == vexo_data_alignment) {
    vexo_lcnr_normalize(&panel.lcnr); // as it would itself, with a message
  }
  auto context = std::make_unique<vexo>();
  context->lcnr = panel.lcnr;
  LutSet luts(1024);
  vexo_gamma camera = parse_curve("", "linear").gamma;
  vexo_gamma system = power_curve(2.2F, "").gamma;
  vexo_vector white = parse_white("", "D65").xyz;
  return recipe(luts.get(), context.get(), &camera, &system, &white) == 0 ? "" : unusable_row(panel);
}

struct Additivity {
  int levels = 0; // compared
  double mean_Y = 0.0;
  double worst_Y = 0.0;
  double worst_Y_level = 0.0;
  double mean_uv = 0.0;
  double worst_uv = 0.0;
  double worst_uv_level = 0.0;
};

// The row of a level, as far as six decimals tell; -1 for none.
int row_of(const vexo_lcnr &lcnr, float level) {
  for (int i = 0; i < lcnr.num; i++) {
    if (std::fabs(lcnr.sample[i] - level) <= 1.0e-5F * lcnr.sample[top_row(lcnr)]) {
      return i;
    }
  }
  return -1;
}

vexo_vector sum_of_channels(const vexo_lcnr &lcnr, int row) {
  vexo_vector sum = {{0.0F, 0.0F, 0.0F}};
  for (int c = 0; c < 3; c++) {
    const vexo_vector XYZ = above_black(lcnr, c, row);
    for (int m = 0; m < 3; m++) {
      sum.d[m] += XYZ.d[m];
    }
  }
  return sum;
}

// Black as the mean of its three readings.
vexo_vector black_of(const vexo_lcnr &lcnr) {
  vexo_vector black;
  for (int m = 0; m < 3; m++) {
    black.d[m] = (lcnr.data[0][m][0] + lcnr.data[1][m][0] + lcnr.data[2][m][0]) / 3.0F;
  }
  return black;
}

// The measured gray against the sum of the channels, both above black, at the levels that both have.
Additivity additivity(const vexo_lcnr &lcnr, const std::string &path) {
  const std::vector<GrayReading> grays = read_gray(path);
  vexo_vector black = black_of(lcnr);
  for (const GrayReading &gray : grays) {
    black = gray.level == 0.0F ? gray.XYZ : black;
  }
  Additivity result;
  for (const GrayReading &gray : grays) {
    const int row = row_of(lcnr, gray.level);
    if (row < 1 || gray.level < kDark * lcnr.sample[top_row(lcnr)]) {
      continue;
    }
    vexo_vector measured = gray.XYZ;
    for (int m = 0; m < 3; m++) {
      measured.d[m] -= black.d[m];
    }
    vexo_vector sum = sum_of_channels(lcnr, row);
    const double Y = std::fabs(wide(measured.d[1]) / wide(sum.d[1]) - 1.0);
    vexo_XYZ_xyY(&measured);
    vexo_XYZ_xyY(&sum);
    const double uv = wide(uv_distance(measured, sum));
    if (!std::isfinite(Y) || !std::isfinite(uv)) {
      throw Failure(kInputError, format("%s: level %g: the gray above black has no colour", input_name(path).c_str(),
                                        wide(gray.level)));
    }
    result.levels++;
    result.mean_Y += Y;
    result.mean_uv += uv;
    if (Y > result.worst_Y) {
      result.worst_Y = Y;
      result.worst_Y_level = wide(gray.level);
    }
    if (uv > result.worst_uv) {
      result.worst_uv = uv;
      result.worst_uv_level = wide(gray.level);
    }
  }
  if (result.levels == 0) {
    throw Failure(kInputError, input_name(path) + ": no level of the panel's from 10 % of full drive up");
  }
  result.mean_Y /= result.levels;
  result.mean_uv /= result.levels;
  return result;
}

struct Report {
  Panel panel;
  std::vector<Finding> findings;
  struct {
    const char *recipe;
    std::string obstacle;
  } recipes[2];
  std::optional<Additivity> gray;
  vexo_vector black;      // XYZ
  vexo_vector white;      // xyY, above black
  vexo_vector primary[3]; // xyY, above black
  int cct;                // of the white; -1 for none
};

// White with black over black; 0 where black reads no light.
double contrast(const Report &r) {
  const double black = wide(r.black.d[1]);
  return black > 0.0 ? (wide(r.white.d[2]) + black) / black : 0.0;
}

Report inspect(const MeasureOptions &options) {
  Report r;
  r.panel = read_panel(options.panel);
  const vexo_lcnr &lcnr = r.panel.lcnr;
  const int top = top_row(lcnr);
  r.findings = Check(lcnr).run();
  r.recipes[0] = {"aligned", obstacle(r.panel, vexo_data_alignment)};
  r.recipes[1] = {"direct", obstacle(r.panel, vexo_generate_lut)};
  if (!options.gray.empty()) {
    r.gray = additivity(lcnr, options.gray);
  }
  r.black = black_of(lcnr);
  r.white = sum_of_channels(lcnr, top);
  r.cct = vexo_XYZ_CCT(&r.white);
  vexo_XYZ_xyY(&r.white);
  for (int c = 0; c < 3; c++) {
    r.primary[c] = colour(lcnr, c, top);
  }
  return r;
}

void print_table(const vexo_lcnr &lcnr) {
  std::printf(
      "\n     Level         Xr         Yr         Zr         Xg         Yg         Zg         Xb         Yb         "
      "Zb\n");
  for (int i = 0; i < lcnr.num; i++) {
    std::printf("%10g", wide(lcnr.sample[i]));
    for (int n = 0; n < 9; n++) {
      std::printf(" %10.4f", wide(lcnr.data[n / 3][n % 3][i]));
    }
    std::puts("");
  }
}

void print_colour(const char *name, const vexo_vector &xyY, const std::string &more) {
  std::printf("%-10s x %.4f, y %.4f, luminance %.4g%s\n", name, wide(xyY.d[0]), wide(xyY.d[1]), wide(xyY.d[2]),
              more.c_str());
}

void print_additivity(const Additivity &a) {
  std::printf("Additivity measured gray against the sum of the channels, above black, %d levels from 10 %% up:\n"
              "           luminance mean %.2f %%, worst %.2f %% at level %g; colour mean %.4f, worst %.4f in u'v' at "
              "level %g\n",
              a.levels, a.mean_Y * 100.0, a.worst_Y * 100.0, a.worst_Y_level, a.mean_uv, a.worst_uv, a.worst_uv_level);
}

void print_report(const Report &r) {
  const vexo_lcnr &lcnr = r.panel.lcnr;
  std::printf("Panel      %s, %d LEVEL elements read as %d rows of ten numbers, levels rise from 0 to %g\n",
              r.panel.path.c_str(), lcnr.num, lcnr.num, wide(lcnr.sample[top_row(lcnr)]));
  print_table(lcnr);
  std::printf("\nAt full drive, above black, the white as the sum of the channels:\n");
  print_colour("White", r.white, r.cct > 0 ? format(", CCT %d K", r.cct) : "");
  for (int c = 0; c < 3; c++) {
    print_colour(kChannels[c], r.primary[c], "");
  }
  std::printf("Black      X %.4g, Y %.4g, Z %.4g\n", wide(r.black.d[0]), wide(r.black.d[1]), wide(r.black.d[2]));
  std::printf("Contrast   %s\n",
              contrast(r) > 0.0 ? format("%.4g to 1", contrast(r)).c_str() : "unknown: black reads no light");
  if (r.gray) {
    print_additivity(*r.gray);
  }
  std::printf("\n%zu warning%s\n", r.findings.size(), r.findings.size() == 1 ? "" : "s");
  for (const Finding &finding : r.findings) {
    std::printf("  %s: %s\n", row_name(r.panel, finding.row).c_str(), finding.text.c_str());
  }
  for (const auto &recipe : r.recipes) {
    std::printf("As it is, the %s recipe %s\n", recipe.recipe,
                recipe.obstacle.empty() ? "can use it" : ("cannot use it: " + recipe.obstacle).c_str());
  }
}

Json json_additivity(const Additivity &a) {
  return {{"levels", a.levels},
          {"luminance", {{"mean", a.mean_Y}, {"worst", a.worst_Y}, {"level", a.worst_Y_level}}},
          {"uv", {{"mean", a.mean_uv}, {"worst", a.worst_uv}, {"level", a.worst_uv_level}}}};
}

Json json_report(const Report &r) {
  const vexo_lcnr &lcnr = r.panel.lcnr;
  Json document = {{"panel", r.panel.path}, {"rows", Json::array()}};
  for (int i = 0; i < lcnr.num; i++) {
    Json row = {{"level", json_number(lcnr.sample[i])}};
    for (int c = 0; c < 3; c++) {
      row[kChannels[c]] = json_vector(vexo_vector{{lcnr.data[c][0][i], lcnr.data[c][1][i], lcnr.data[c][2][i]}});
    }
    document["rows"].push_back(row);
  }
  document["white"] = {{"xyY", json_vector(r.white)}, {"cct", r.cct > 0 ? Json(r.cct) : Json()}};
  for (int c = 0; c < 3; c++) {
    document["primaries"][kChannels[c]] = json_vector(r.primary[c]);
  }
  document["black"] = json_vector(r.black);
  document["contrast"] = contrast(r) > 0.0 ? Json(contrast(r)) : Json();
  document["additivity"] = r.gray ? json_additivity(*r.gray) : Json();
  document["warnings"] = Json::array();
  for (const Finding &f : r.findings) {
    document["warnings"].push_back({{"kind", f.kind},
                                    {"line", r.panel.lines[static_cast<size_t>(f.row)]},
                                    {"row", f.row},
                                    {"level", json_number(lcnr.sample[f.row])},
                                    {"channel", kChannels[f.channel]},
                                    {"component", f.component >= 0 ? Json(kComponents[f.component]) : Json()},
                                    {"text", f.text}});
  }
  for (const auto &recipe : r.recipes) {
    document["recipes"][recipe.recipe] = recipe.obstacle.empty() ? Json() : Json(recipe.obstacle);
  }
  return document;
}

void write_conditioned(const MeasureOptions &options) {
  Panel panel = read_panel(options.panel);
  condition_aloud(&panel);
  write_panel(options.condition, panel.lcnr);
}

void measure(const MeasureOptions &options) {
  if (options.panel.empty()) {
    throw Failure(kUsageError, "PANEL.xml is required");
  }
  const Report r = inspect(options);
  if (options.json) {
    print_json(json_report(r));
  } else {
    print_report(r);
  }
  if (!options.condition.empty()) {
    write_conditioned(options);
    return;
  }
  for (const auto &recipe : r.recipes) {
    if (!recipe.obstacle.empty()) {
      throw Failure(kLimitMissed, recipe.obstacle);
    }
  }
}

void import(const ImportOptions &options) {
  const Import result = import_measurements(options.input);
  write_panel(options.output, result.lcnr);
  std::FILE *f = options.output == "-" ? stderr : stdout;
  std::fprintf(f, "%s: %zu readings\n", input_name(options.input).c_str(), result.readings);
  for (const std::string &note : result.notes) {
    std::fprintf(f, "  %s\n", note.c_str());
  }
  std::fprintf(f, "%s: %d rows, levels 0 to %g\n", options.output == "-" ? "standard output" : options.output.c_str(),
               result.lcnr.num, wide(result.lcnr.sample[top_row(result.lcnr)]));
}

void add_import(CLI::App *parent) {
  const auto options = std::make_shared<ImportOptions>();
  CLI::App *command = parent->add_subcommand("import", "Make an LCNR file of another program's readings");
  command->add_option("FILE", options->input, "CGATS (.ti3) or CSV file; - for standard input")->required();
  command->add_option("-o,--output", options->output, "LCNR file to write; - for standard output")->required();
  command->footer(
      "CGATS: a table of RGB drives and XYZ. CSV, with decimal points: level,channel,X,Y,Z (channel red, green,\n"
      "blue, r, g, b or black), or level,Xr,Yr,Zr,Xg,Yg,Zg,Xb,Yb,Zb; a heading line may come first.\n\n"
      "Takes the ramps of red, green and blue, each driven alone, and says what it leaves out.\n"
      "Repeated readings are averaged. Of more than 64 levels an evenly spaced choice is kept.\n\n"
      "Example: vexo measure import readings.ti3 -o panel.xml");
  command->callback([options] { import(*options); });
}

} // namespace

void add_measure(CLI::App &app) {
  const auto options = std::make_shared<MeasureOptions>();
  CLI::App *command = app.add_subcommand("measure", "Check a panel's measurements, or import them");
  CLI::Option *panel = command->add_option("PANEL.xml", options->panel, "LCNR file");
  CLI::Option *gray = command->add_option("--gray", options->gray,
                                          "CSV file of the measured gray ramp, level,X,Y,Z: says how far the "
                                          "channels add");
  CLI::Option *json = command->add_flag("--json", options->json, "Print JSON");
  CLI::Option *conditioned = command->add_option(
      "--condition", options->condition, "LCNR file to write: the measurements as vexo calibrate conditions them");
  command->footer("Example: vexo measure panel.xml --gray gray.csv\n\n"
                  "Exit status: 0 it can be used as it is, warnings or not; 1 a recipe cannot use it as it is;\n"
                  "3 it cannot be read.");
  add_import(command);
  CLI::App *nested = command->get_subcommand("import");
  for (CLI::Option *option : {panel, gray, json, conditioned}) {
    nested->excludes(option);
  }
  command->callback([options, command] {
    if (command->get_subcommands().empty()) {
      measure(*options);
    }
  });
}
