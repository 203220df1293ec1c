// The calibration report: one structure, written as HTML, JSON and CSV.
#ifndef VEXO_TOOLS_REPORT_H
#define VEXO_TOOLS_REPORT_H

#include <cstdio>
#include <string>
#include <vector>

#include "calibration/figures.h"
#include "file/luts.h"
#include "file/panel.h"

// What a report is made of.
struct ReportSource {
  const Panel *panel = nullptr;   // as read
  vexo_lcnr used = {};            // the measurements that the calibration used
  std::vector<std::string> notes; // what was done to them, and warnings
  Target target = {};
  std::string recipe; // in words
  LutSet *luts = nullptr;
  std::string luts_name;
  std::string command_line;
  std::string verify; // CSV of a measured gray ramp; empty: none
  std::string limits; // JSON of limits; empty: none
};

struct LimitResult {
  std::string figure;
  std::string limit; // "at most 1" or "at least 200"
  double value;
  bool passed;
};

struct Report {
  ReportSource source;
  std::string panel_sha256;
  std::string panel_date; // last change of the file
  std::string date;
  double dark_level; // input below which no row above black was measured
  double black;      // measured luminance of black
  vexo_cs primaries; // with the panel's own white
  vexo_vector cyan;
  vexo_vector magenta;
  vexo_vector yellow;
  int target_cct;
  std::vector<GrayFigure> target;   // what the ramp should be, 0 to 100 % by 1 %
  std::vector<GrayFigure> before;   // likewise
  std::vector<GrayFigure> after;    // likewise
  std::vector<GrayFigure> measured; // as read; empty without a measured ramp
  Summary summary_before;
  Summary summary_after;
  Summary summary_measured;
  std::vector<LimitResult> limits;
};

// The ramp and summary that the verdict is about: the measured one where there is one.
const std::vector<GrayFigure> &judged_ramp(const Report &report);
const Summary &judged(const Report &report);

// "good", "fair" or "poor", with the reason in figures.
std::string verdict(const Report &report);

// Throws a Failure (input).
Report make_report(const ReportSource &source);

void write_html(const Report &report, std::FILE *f);
void write_json(const Report &report, std::FILE *f);
void write_csv(const Report &report, std::FILE *f); // the table of 21 steps

// The summary's figures by name, as limits and JSON use them.
std::vector<std::pair<std::string, double>> named_figures(const Report &report);

#endif
