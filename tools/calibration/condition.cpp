#include "calibration/condition.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "text/format.h"

namespace {

const double kShare = 1e-4;      // of the strongest component: the least that another has
const double kResolution = 1e-3; // of black at full drive: single precision tells 1/1023 of it from black
const double kCredible = 10.0;   // times the resolution
const double kClipped = 5e-3;    // of full light: what readings of a clipped panel may still rise
const double kDepthMargin = 2.0; // times the deepest reading below black

double value(const vexo_lcnr &lcnr, int c, int m, int row) { return lcnr.data[c][m][row]; }

double above_black(const vexo_lcnr &lcnr, int c, int m, int row) {
  return value(lcnr, c, m, row) - value(lcnr, c, m, 0);
}

// The component of a channel with the most light above black in a row.
int strongest(const vexo_lcnr &lcnr, int c, int row) {
  int best = 0;
  for (int m = 1; m < 3; m++) {
    best = above_black(lcnr, c, m, row) > above_black(lcnr, c, best, row) ? m : best;
  }
  return best;
}

// The least by which a row has to exceed black. Every table level that leads up to it then exceeds black, too, in
// single precision.
double resolution(const vexo_lcnr &lcnr, int c, int m, int row) {
  const double drive = double{lcnr.sample[row]} / lcnr.sample[lcnr.num - 1];
  return kResolution * drive * std::fabs(value(lcnr, c, m, 0));
}

// Why a row has to go; empty when it stays.
std::string reason_to_leave_out(const vexo_lcnr &lcnr, const Triple &noise, int row) {
  const int top = lcnr.num - 1;
  if (std::lround(lcnr.sample[row] * (1023.0F / lcnr.sample[top])) == 0) { // as the library maps levels to its tables
    return "its level is nearer to black than half of 1/1023 of full drive";
  }
  for (int c = 0; c < 3; c++) {
    for (const int m : {strongest(lcnr, c, top), 1}) {
      const double black = value(lcnr, c, m, 0);
      const double margin = std::max(kDepthMargin * noise[m], kCredible * resolution(lcnr, c, m, row));
      if (!(above_black(lcnr, c, m, row) > margin)) {
        return format("%s %s is %g, not credibly above black's %g (it takes %g more than black)", kChannels[c],
                      kComponents[m], value(lcnr, c, m, row), black, margin);
      }
    }
  }
  return "";
}

class Conditioner {
public:
  explicit Conditioner(const Panel &panel) : panel_(panel) { result_.panel.path = panel.path; }

  Conditioned run() {
    leave_out();
    raise();
    lower();
    summarise();
    return std::move(result_);
  }

private:
  void leave_out() {
    const vexo_lcnr &from = panel_.lcnr;
    vexo_lcnr &to = result_.panel.lcnr;
    const Triple noise = noise_floor(from);
    for (int row = 0; row < from.num; row++) {
      const bool stays = row == 0 || row == from.num - 1;
      const std::string reason = stays ? "" : reason_to_leave_out(from, noise, row);
      if (!reason.empty()) {
        note(row, "row", "left out as noise near black", row_name(panel_, row) + " is left out: " + reason);
        continue;
      }
      to.sample[to.num] = from.sample[row];
      for (int n = 0; n < 9; n++) {
        to.data[n / 3][n % 3][to.num] = from.data[n / 3][n % 3][row];
      }
      to.num++;
      rows_.push_back(row);
      result_.panel.lines.push_back(panel_.lines[static_cast<size_t>(row)]);
    }
  }

  void raise() {
    vexo_lcnr &lcnr = result_.panel.lcnr;
    for (int row = 1; row < lcnr.num; row++) {
      for (int n = 0; n < 9; n++) {
        float &v = lcnr.data[n / 3][n % 3][row];
        const float black = lcnr.data[n / 3][n % 3][0];
        const double most = above_black(lcnr, n / 3, strongest(lcnr, n / 3, row), row);
        const double least = black + std::max(kShare * most, resolution(lcnr, n / 3, n % 3, row));
        if (v < least) {
          const float raised = std::max(static_cast<float>(least), std::nextafterf(black, INFINITY));
          note_value(row, n, "raised", v, raised, format("black has %.7g", black));
          v = raised;
        }
      }
    }
  }

  void lower() {
    const vexo_lcnr before = result_.panel.lcnr;
    vexo_lcnr_normalize(&result_.panel.lcnr);
    for (int row = 0; row < before.num; row++) {
      for (int n = 0; n < 9; n++) {
        const double from = value(before, n / 3, n % 3, row);
        const double to = value(result_.panel.lcnr, n / 3, n % 3, row);
        if (to < from) {
          note_value(row, n, "lowered", from, to, "a row above it has no more");
        }
      }
    }
  }

  void note_value(int row, int n, const char *verb, double from, double to, const std::string &why) {
    const int read = rows_[static_cast<size_t>(row)];
    note(read, "value", format("of %s %s", kChannels[n / 3], verb),
         row_name(panel_, read) + format(": %s %s is %s from %.7g to %.7g: %s", kChannels[n / 3], kComponents[n % 3],
                                         verb, from, to, why.c_str()));
  }

  // noun and kind: what was done, for the summary.
  void note(int row, const char *noun, const std::string &kind, const std::string &text) {
    result_.notes.push_back(text);
    const double level = panel_.lcnr.sample[row];
    const auto same = std::find_if(changes_.begin(), changes_.end(), [&](const Changes &c) { return c.kind == kind; });
    if (same == changes_.end()) {
      changes_.push_back({noun, kind, 1, level, level});
      return;
    }
    same->count++;
    same->lowest = std::min(same->lowest, level);
    same->highest = std::max(same->highest, level);
  }

  // Changes of one kind.
  struct Changes {
    const char *noun;
    std::string kind;
    int count;
    double lowest; // level
    double highest;
  };

  void summarise() {
    for (const Changes &c : changes_) {
      result_.summary.push_back(format("%d %s%s %s, ", c.count, c.noun, c.count == 1 ? "" : "s", c.kind.c_str()) +
                                (c.lowest == c.highest ? format("at level %g", c.lowest)
                                                       : format("from level %g to %g", c.lowest, c.highest)));
    }
  }

  const Panel &panel_;
  std::vector<int> rows_; // of the panel's rows, those that stay
  std::vector<Changes> changes_;
  Conditioned result_ = {};
};

} // namespace

Triple noise_floor(const vexo_lcnr &lcnr) {
  Triple deepest = Triple::Zero();
  for (int n = 0; n < 9; n++) {
    for (int row = 1; row < lcnr.num; row++) {
      deepest[n % 3] = std::max(deepest[n % 3], -above_black(lcnr, n / 3, n % 3, row));
    }
  }
  return deepest;
}

Conditioned condition(const Panel &panel) { return Conditioner(panel).run(); }

int clip_row(const vexo_lcnr &lcnr) {
  const auto light = [&](int c, int row) {
    return above_black(lcnr, c, 0, row) + above_black(lcnr, c, 1, row) + above_black(lcnr, c, 2, row);
  };
  const int top = lcnr.num - 1;
  int row = top;
  for (bool clipped = true; clipped && row > 1; row -= clipped ? 1 : 0) {
    for (int c = 0; c < 3; c++) {
      clipped = clipped && light(c, row - 1) >= (1.0 - kClipped) * light(c, top);
    }
  }
  return row;
}
