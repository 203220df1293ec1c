// The calibration report: one structure, written as HTML, JSON and CSV.
#ifndef VEXO_TOOLS_REPORT_H
#define VEXO_TOOLS_REPORT_H

#include <cstdio>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "calibration/figures.h"
#include "file/luts.h"
#include "file/panel.h"
#include "report/colour-section.h"
#include "report/limits.h"

// Texts that a user gives for the record; empty where not given.
struct ReportLabels {
  std::string name; // of the panel
  std::string serial;
  std::string probe;
  std::string person; // who measured
  std::string note;
};

// A text for the record with its name in the report.
struct RecordedText {
  const char *member; // of JSON
  const char *title;  // on the page
  std::string ReportLabels::*text;
};

inline const RecordedText kRecordedTexts[] = {{"name", "Panel", &ReportLabels::name},
                                              {"serial", "Serial number", &ReportLabels::serial},
                                              {"probe", "Probe", &ReportLabels::probe},
                                              {"operator", "Operator", &ReportLabels::person},
                                              {"note", "Note", &ReportLabels::note}};

// The input of a report.
struct ReportSource {
  const Panel *panel = nullptr;      // the file's measurements, conditioned if asked for
  const PanelModel *model = nullptr; // predicts all ramps
  std::vector<std::string> notes;    // what was done to the measurements, and what the recipe says
  Target target;
  std::string recipe; // in words
  LutSet *luts = nullptr;
  LutSet *exact = nullptr; // the LUTs before rounding to codes; null where unknown
  std::string luts_name;
  std::string luts_text; // the LUT file's content; empty where there is none
  std::string command_line;
  std::vector<std::pair<std::string, std::string>> target_options; // as given, by name
  ReportLabels labels;
  std::optional<Spread> additivity;    // CIEDE2000 of the channels' sum to the measured grays of the bare panel
  std::string verify;                  // CSV file of a gray ramp measured through LUTs; empty: none
  std::string measured_through;        // other LUTs that the ramp was measured through; empty: these
  std::optional<ColourSource> colours; // none: not judged
  std::vector<std::string> limits;     // tolerances by name, and JSON files
};

struct Report {
  ReportSource source;
  std::string panel_sha256;
  std::string luts_sha256;     // empty: no file
  std::string measured_sha256; // empty: none
  std::string panel_date;      // last change of the file
  std::string date;
  double dark_level; // input below which no row above black was measured
  vexo_cs primaries; // with the panel's own white
  vexo_vector cyan;
  vexo_vector magenta;
  vexo_vector yellow;
  Ramp target;                  // what the ramp should be
  Ramp before;                  // predicted without LUTs
  Ramp after;                   // predicted through the LUTs
  std::optional<Ramp> exact;    // predicted through the LUTs before rounding to codes
  std::optional<Ramp> measured; // as read
  std::optional<ColourSection> colours;
  std::vector<LimitResult> limits;
};

// Computes every figure. Throws a Failure (input).
Report make_report(const ReportSource &source);

// "above black" or "with black in it": what the luminances of the ramps are.
const char *black_in_figures(const Report &report);

// Whether verdict and limits are about the measured ramp: one that was measured through these LUTs.
bool judges_measured(const Report &report);

// The ramp that verdict and limits are about.
const Ramp &judged(const Report &report);

void write_html(const Report &report, std::FILE *f);
void write_json(const Report &report, std::FILE *f);
void write_csv(const Report &report, std::FILE *f);       // the grays at each 5 % of input
void write_gray_ramp(const Report &report, std::FILE *f); // as text for the console, with the verdict last
void write_verdict(const Report &report, std::FILE *f);   // and what to measure next

#endif
