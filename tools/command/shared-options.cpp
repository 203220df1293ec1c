#include "command/shared-options.h"

#include <CLI/CLI.hpp>

#include <cstdio>

#include "calibration/condition.h"
#include "file/output.h"
#include "text/failure.h"
#include "text/grammar.h"

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

Panel read_conditioned(const std::string &path, std::vector<std::string> *notes) {
  const Conditioned conditioned = condition(read_panel(path));
  for (const std::string &note : conditioned.notes) {
    warn(note);
    notes->push_back(note);
  }
  return conditioned.panel;
}

void add_report_options(CLI::App *command, ReportOptions &options) {
  command->add_option("--json", options.json, "Write every figure of the report as JSON");
  command->add_option("--csv", options.csv, "Write the table of gray steps as CSV");
  command->add_option("--verify", options.verify,
                      "Gray ramp measured through the LUTs, CSV of level,X,Y,Z: the verdict is then about it");
  command->add_option(
      "--limits", options.limits,
      "JSON file of limits, such as {\"de2000_mean\": 1, \"luminance\": {\"min\": 200}}; exit 1 when one is missed");
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

void warn(const std::string &text) { std::fprintf(stderr, "vexo: %s\n", text.c_str()); }
