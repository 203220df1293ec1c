#include "command/shared-options.h"

#include <CLI/CLI.hpp>

#include <cstdio>

#include "calibration/condition.h"
#include "calibration/gray-ramp.h"
#include "file/apart.h"
#include "file/input.h"
#include "file/output.h"
#include "report/verdict.h"
#include "text/failure.h"
#include "text/format.h"
#include "text/grammar.h"
#include "text/verbose.h"

namespace {

const char *const kDefaultGamma = "2.2";

void write_report(const std::string &path, const Report &report, void (*write)(const Report &, std::FILE *)) {
  if (!path.empty()) {
    OutputFile file(path);
    write(report, file.stream());
    file.commit();
  }
}

Curve curve_or_linear(const std::string &option, const std::string &text) {
  return text.empty() ? kLinear : parse_curve(option, text);
}

} // namespace

void add_target_options(CLI::App *command, TargetOptions &options) {
  command->add_option("--white", options.white, "Target white: " + white_names() + ", or x,y")->capture_default_str();
  command->add_option("--gamma", options.gamma, "Target curve: a power law of the signal; stands for both curves below")
      ->default_str(kDefaultGamma);
  command
      ->add_option("--camera", options.camera,
                   "Curve that encoded the signal: " + curve_names() +
                       ", an exponent, or slope,transition,gamma,offset")
      ->default_str(kLinear.name);
  command->add_option("--system", options.system, "Curve from scene light to display light, as --camera")
      ->default_str(kLinear.name);
}

Target parse_target(const TargetOptions &options) {
  const White white = parse_white("--white", options.white);
  if (!options.camera.empty() || !options.system.empty()) {
    if (!options.gamma.empty()) {
      throw Failure(kUsageError, "--gamma stands for both curves, expected it without --camera and --system");
    }
    return {white, curve_or_linear("--camera", options.camera), curve_or_linear("--system", options.system)};
  }
  const std::string gamma = options.gamma.empty() ? kDefaultGamma : options.gamma;
  return {white, kLinear, power_curve(parse_positive("--gamma", gamma), "power law " + gamma)};
}

void add_panel_options(CLI::App *command, PanelOptions &options) {
  command
      ->add_option("PANEL.xml", options.panel,
                   "LCNR file: ramps of red, green and blue, each driven alone; - for standard input")
      ->required();
  command->add_option(
      "--gray", options.gray,
      "Gray ramp measured on the bare panel (CSV of level,X,Y,Z or x,y,Y; .ti3): the model then knows how far the "
      "channels do not add");
  command->add_option("--mix", options.mix,
                      "Mixtures of the channels measured on the bare panel (CSV of r,g,b,X,Y,Z or x,y,Y; .ti3): the "
                      "model then knows colours, too");
}

namespace {

void note_more(PanelInput *input) {
  const auto &[grays, mixtures] = input->more;
  const std::string difference = grays ? black_difference(*grays, input->panel) : "";
  if (!difference.empty()) {
    warn(difference);
    input->notes.push_back(difference);
  }
  if (mixtures) {
    input->notes.insert(input->notes.end(), mixtures->notes.begin(), mixtures->notes.end());
  }
}

} // namespace

PanelInput read_panel_input(const PanelOptions &options) {
  const Panel panel = read_panel(options.panel);
  PanelInput input = {panel, {}, {}, {}};
  if (options.conditions()) {
    const Conditioned conditioned = condition(panel);
    input.panel = conditioned.panel;
    input.notes = conditioned.notes;
    for (const std::string &line : conditioned.summary) {
      warn(input_name(options.panel) + ": " + line);
    }
    for (const std::string &note : conditioned.notes) {
      say(note);
    }
  }
  input.more = read_more(options.gray, options.mix, input.panel);
  note_more(&input);
  if (input.more.grays || input.more.mixtures) {
    say("solves the model of grays and mixtures");
    input.evidence = evidence_of(input.more, model_of(input), noise_floor(panel.lcnr));
  }
  return input;
}

PanelModel model_of(const PanelInput &input) {
  auto model = model_of(input.panel.lcnr, input.evidence);
  if (!model) {
    throw Failure(kInputError, unusable_row(input.panel));
  }
  return std::move(*model);
}

void require_apart(const PanelOptions &panel, const ReportOptions &report, const std::string &luts_in,
                   const std::string &luts_out) {
  require_apart({panel.panel, panel.gray, panel.mix, luts_in, report.verify, report.limits},
                {luts_out, report.html, report.json, report.csv});
}

void add_figure_options(CLI::App *command, ReportOptions &options) {
  command->add_option("--json", options.json, "Write every figure of the report as JSON");
  command->add_option("--csv", options.csv, "Write the table of gray steps as CSV");
  command->add_option(
      "--limits", options.limits,
      "JSON file of limits, such as {\"de2000_mean\": 1, \"luminance\": {\"min\": 200}}; exit 1 when one is missed");
}

void add_report_options(CLI::App *command, ReportOptions &options) {
  add_figure_options(command, options);
  command->add_option(
      "--verify", options.verify,
      "Gray ramp measured through the LUTs (CSV of level,X,Y,Z or x,y,Y; .ti3): the verdict is then about it");
}

void write_reports(const ReportOptions &options, const Report &report) {
  write_report(options.html, report, write_html);
  write_report(options.json, report, write_json);
  write_report(options.csv, report, write_csv);
}

void judge_limits(const std::vector<LimitResult> &limits) {
  std::string missed;
  for (const LimitResult &limit : limits) {
    std::fprintf(stderr, "%s %s: %.4f, %s\n", limit.passed ? "pass" : "FAIL", limit.figure.c_str(), limit.value,
                 limit.limit.c_str());
    missed += limit.passed ? "" : " " + limit.figure;
  }
  if (!missed.empty()) {
    throw Failure(kLimitMissed, "limits missed:" + missed);
  }
}

std::string worse_than_without(const Report &report) {
  if (!makes_worse(report)) {
    return "";
  }
  return format("the LUTs make the gray ramp worse: mean CIEDE2000 %.4f, without them %.4f (%s)",
                judged(report).de2000.mean, report.before.summary.de2000.mean, basis(report));
}

void warn(const std::string &text) { std::fprintf(stderr, "vexo: %s\n", text.c_str()); }
