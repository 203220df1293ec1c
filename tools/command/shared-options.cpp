#include "command/shared-options.h"

#include <CLI/CLI.hpp>

#include <cmath>
#include <cstdio>

#include "calibration/check.h"
#include "calibration/condition.h"
#include "calibration/figures.h"
#include "calibration/gray-ramp.h"
#include "command/cli.h"
#include "file/apart.h"
#include "file/input.h"
#include "file/output.h"
#include "report/verdict.h"
#include "text/channels.h"
#include "text/failure.h"
#include "text/format.h"
#include "text/verbose.h"

namespace {

void write_report(const std::string &path, const Report &report, void (*write)(const Report &, std::FILE *)) {
  if (!path.empty()) {
    OutputFile file(path);
    write(report, file.stream());
    file.commit();
  }
}

} // namespace

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

// Grays that stand far apart would mislead the model: it refuses a ramp of them, and passes over those among mixtures.
void check_grays(const PanelOptions &options, PanelInput *input) {
  const std::string gap = input->more.grays ? sparse(*input->more.grays, input->panel.lcnr) : "";
  if (gap.empty()) {
    return;
  }
  if (!options.gray.empty()) {
    throw Failure(kInputError, gap);
  }
  warn(gap + "; these grays are not used");
  input->notes.push_back(gap + "; these grays are not used");
  input->more.grays.reset();
}

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
  PanelInput input;
  input.panel = panel;
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
  check_grays(options, &input);
  note_more(&input);
  if (input.more.grays || input.more.mixtures) {
    say("solves the model of grays and mixtures");
    const PanelModel channels = model_of(input);
    input.evidence = evidence_of(input.more, channels, noise_floor(panel.lcnr));
    if (input.more.grays) {
      const Additivity sums = additivity(*input.more.grays, channels);
      input.additivity = Spread{sums.de2000.mean, sums.de2000.worst};
    }
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

void require_light(const PanelModel &model, LutSet &luts, const std::string &path) {
  if (!(model.XYZ(drives_at(luts.get(), 1.0))[1] > 0.0)) {
    refuse_input(input_name(path), "no light at the highest input, expected LUTs that lead to white");
  }
}

void require_channels(const PanelModel &model, LutSet &luts, const std::string &path) {
  const Triple drives = drives_at(luts.get(), 1.0);
  for (Eigen::Index c = 0; c < 3; c++) {
    if (!(model.additive(drives[c] * Triple::Unit(c)).sum() > 0.0)) {
      refuse_input(input_name(path),
                   format("%s gives no light at the highest input, expected LUTs that lead to white", kChannels[c]));
    }
  }
}

void require_apart(const PanelOptions &panel, const TargetOptions &target, const ReportOptions &report,
                   std::vector<std::string> inputs, const std::string &luts_out) {
  inputs.insert(inputs.end(), {panel.panel, panel.gray, panel.mix, target.from, target.curve, report.verify});
  inputs.insert(inputs.end(), report.limits.begin(), report.limits.end());
  require_apart(inputs, {luts_out, report.html, report.json, report.csv});
}

void add_figure_options(CLI::App *command, ReportOptions &options) {
  command->add_option("--json", options.json, "Write every figure of the report as JSON");
  command->add_option("--csv", options.csv, "Write the table of gray steps as CSV");
  command->add_option("--name", options.labels.name, "Name of the panel for the record");
  command->add_option("--serial", options.labels.serial, "Serial number of the panel for the record");
  command->add_option("--probe", options.labels.probe, "The probe, for the record");
  command->add_option("--operator", options.labels.person, "Who measured, for the record");
  command->add_option("--note", options.labels.note, "A note for the record");
  command
      ->add_option("--limits", options.limits,
                   "Limits of the figures by name, or FILE.json such as {\"de2000_mean\": 1, \"luminance\": {\"min\": "
                   "200}}; exit 1 when one is "
                   "missed. May be given more than once")
      ->type_name(words_among_others(tolerance_names()))
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
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

void judge_limits(const std::vector<LimitResult> &limits, const std::string &written) {
  std::string missed;
  for (const LimitResult &limit : limits) {
    const std::string value = limit.state == LimitResult::kNotJudged ? "not known"
                              : std::isinf(limit.value)              ? "endless"
                                                                     : format("%.4f", limit.value);
    std::fprintf(stderr, "%s %s: %s, %s\n", state_name(limit.state), limit.figure.c_str(), value.c_str(),
                 describe(limit).c_str());
    if (limit.state == LimitResult::kMissed && missed.find(" " + limit.figure) == std::string::npos) {
      missed += " " + limit.figure;
    }
  }
  if (!missed.empty()) {
    throw Failure(kLimitMissed, "limits missed:" + missed + "; " + written);
  }
}

std::string worse_than_without(const Report &report) {
  if (!makes_worse(report)) {
    return "";
  }
  return format("the LUTs make the gray ramp worse: mean CIEDE2000 %.4f, without them %.4f (%s)",
                judged(report).summary.de2000.mean, report.before.summary.de2000.mean, basis(report));
}

void warn(const std::string &text) { std::fprintf(stderr, "vexo: %s\n", text.c_str()); }
