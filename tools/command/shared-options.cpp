#include "command/shared-options.h"

#include <CLI/CLI.hpp>

#include "file/output.h"
#include "text/failure.h"

namespace {

void write_report(const std::string &path, const Report &report, void (*write)(const Report &, std::FILE *)) {
  if (!path.empty()) {
    OutputFile file(path);
    write(report, file.stream());
    file.commit();
  }
}

} // namespace

void add_target_options(CLI::App *command, TargetOptions &options) {
  command->add_option("--white", options.white, "Target white: " + white_names() + ", or x,y (default D65)");
  command->add_option("--gamma", options.gamma,
                      "Target curve: a power law of the signal (default 2.2); stands for both curves below");
  command->add_option("--camera", options.camera,
                      "Curve that encoded the signal: " + curve_names() +
                          ", an exponent, or slope,transition,gamma,offset (default linear)");
  command->add_option("--system", options.system,
                      "Curve from scene light to display light, as --camera (default linear)");
}

Target parse_target(const TargetOptions &options) {
  if (!options.gamma.empty() && !(options.camera.empty() && options.system.empty())) {
    throw Failure(kUsageError, "--gamma stands for both curves, expected it without --camera and --system");
  }
  const auto curve = [](const std::string &option, const std::string &text) {
    return parse_curve(option, text.empty() ? "linear" : text);
  };
  if (options.camera.empty() && options.system.empty()) {
    const std::string gamma = options.gamma.empty() ? "2.2" : options.gamma;
    return Target{parse_white("--white", options.white), curve("--camera", ""),
                  power_curve(parse_positive("--gamma", gamma), "power law " + gamma)};
  }
  return Target{parse_white("--white", options.white), curve("--camera", options.camera),
                curve("--system", options.system)};
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

void write_reports(const ReportOptions &options, ReportSource source) {
  source.verify = options.verify;
  source.limits = options.limits;
  const Report report = make_report(source);
  write_report(options.html, report, write_html);
  write_report(options.json, report, write_json);
  write_report(options.csv, report, write_csv);
  std::string missed;
  for (const LimitResult &limit : report.limits) {
    std::fprintf(stderr, "%s %s: %.4f, %s\n", limit.passed ? "pass" : "FAIL", limit.figure.c_str(), limit.value,
                 limit.limit.c_str());
    missed += limit.passed ? "" : " " + limit.figure;
  }
  if (!missed.empty()) {
    throw Failure(kLimitMissed, "limits missed:" + missed);
  }
}
