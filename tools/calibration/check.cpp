#include "calibration/check.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "calibration/condition.h"
#include "calibration/evidence.h"
#include "calibration/figures.h"
#include "calibration/panel-model.h"
#include "calibration/recipe.h"
#include "file/input.h"
#include "text/channels.h"
#include "text/failure.h"
#include "text/format.h"

namespace {

const double kNearBlack = 0.02; // of a channel's light at full drive
const double kStrayed = 0.05;   // in u'v', several times what two colours differ when just told apart
const double kFlat = 0.1;       // exponent of the response between two rows; displays have 1 to 5
const double kWeak = 0.1;       // of the strongest channel's light

int top_row(const vexo_lcnr &lcnr) { return lcnr.num - 1; }

float light(const vexo_lcnr &lcnr, int channel, int row) {
  vexo_vector XYZ = above_black(lcnr, channel, row);
  return vexo_vector_sum(&XYZ);
}

vexo_vector sum_of_channels(const vexo_lcnr &lcnr, int row) {
  vexo_vector sum = {};
  for (int c = 0; c < 3; c++) {
    vexo_vector XYZ = above_black(lcnr, c, row);
    vexo_vector_add(&sum, &XYZ);
  }
  return sum;
}

// Zeros where there is no light.
vexo_vector xyY(vexo_vector XYZ) { return vexo_XYZ_xyY(&XYZ) == 0 ? XYZ : vexo_vector{}; }

// Looks at each row above black and keeps what is suspicious.
class RowCheck {
public:
  explicit RowCheck(const vexo_lcnr &lcnr) : lcnr_(lcnr) {}

  std::vector<Finding> run() {
    for (int i = 1; i < lcnr_.num; i++) {
      for (int c = 0; c < 3; c++) {
        if (check_light(i, c)) {
          check_components(i, c);
          check_colour(i, c);
        }
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

  bool check_light(int i, int c) {
    const double all = light(lcnr_, c, i);
    if (!(all > 0.0)) {
      add("not above black", i, c, -1,
          format("%s is not above black: X + Y + Z minus black's is %g", kChannels[c], all));
    }
    return all > 0.0;
  }

  void check_components(int i, int c) {
    for (int m = 0; m < 3; m++) {
      const auto &column = lcnr_.data[c][m];
      if (column[i] < column[0]) {
        add("below black", i, c, m,
            format("%s of %s is %g, below black's %g", kComponents[m], kChannels[c], column[i], column[0]));
      }
    }
  }

  void check_colour(int i, int c) {
    const int top = top_row(lcnr_);
    const double strayed = uv_distance(xyY(above_black(lcnr_, c, i)), xyY(above_black(lcnr_, c, top)));
    if (light(lcnr_, c, i) >= kNearBlack * light(lcnr_, c, top) || strayed <= kStrayed) {
      return;
    }
    add("noise near black", i, c, -1,
        std::isnan(strayed) ? format("%s above black has no colour: noise near black", kChannels[c])
                            : format("%s above black is %.3f in u'v' from its colour at full drive: noise near black",
                                     kChannels[c], strayed));
  }

  // Not from black to row 1: that is below black.
  void check_falls(int i, int c) {
    for (int m = 0; m < 3 && i > 1; m++) {
      const auto &column = lcnr_.data[c][m];
      if (column[i] < column[i - 1]) {
        add("falls", i, c, m,
            format("%s of %s falls from %g to %g", kComponents[m], kChannels[c], column[i - 1], column[i]));
      }
    }
  }

  // Rows that fall have a finding of their own.
  void check_rise(int i, int c) {
    const double before = light(lcnr_, c, i - 1);
    const double now = light(lcnr_, c, i);
    if (i > 1 && before > 0.0 && now >= before &&
        std::log(now / before) < kFlat * std::log(double{lcnr_.sample[i]} / lcnr_.sample[i - 1])) {
      add("hardly rises", i, c, -1,
          format("%s hardly rises: X + Y + Z above black goes from %g to %g", kChannels[c], before, now));
    }
  }

  void check_weak(int c) {
    const int top = top_row(lcnr_);
    const float strongest = std::max({light(lcnr_, 0, top), light(lcnr_, 1, top), light(lcnr_, 2, top)});
    if (light(lcnr_, c, top) < kWeak * strongest) {
      add("hardly rises", top, c, -1,
          format("%s hardly rises: X + Y + Z above black at full drive is %g, %g in the strongest channel",
                 kChannels[c], light(lcnr_, c, top), strongest));
    }
  }

  const vexo_lcnr &lcnr_;
  std::vector<Finding> findings_;
};

void add(Additivity::Distance *distance, double value, double level) {
  distance->mean += value;
  if (value > distance->worst) {
    distance->worst = value;
    distance->worst_level = level;
  }
}

} // namespace

Additivity additivity(const GrayRamp &ramp, const PanelModel &model) {
  const vexo_lcnr &rows = model.measurements();
  const vexo_vector white = single(ramp.above_black(ramp.grays.size() - 1));
  Additivity result;
  for (size_t i = 0; i < ramp.grays.size(); i++) {
    const double t = ramp.grays[i].input;
    const double level = t * rows.sample[top_row(rows)];
    const vexo_vector measured = single(ramp.above_black(i));
    const vexo_vector sum = single(model.additive({t, t, t}));
    const double uv = uv_distance(xyY(measured), xyY(sum));
    if (!is_judged(t) || !std::isfinite(uv)) {
      continue;
    }
    result.levels++;
    add(&result.de2000, de2000(measured, sum, white), level);
    add(&result.luminance, std::fabs(double{measured.d[1]} / sum.d[1] - 1.0), level);
    add(&result.uv, uv, level);
  }
  for (Additivity::Distance *d : {&result.de2000, &result.luminance, &result.uv}) {
    d->mean /= std::max(result.levels, 1);
  }
  return result;
}

Check check(const Panel &panel, const std::string &gray, const std::string &mix) {
  const vexo_lcnr &lcnr = panel.lcnr;
  const int top = top_row(lcnr);
  const Panel conditioned = condition(panel).panel;
  vexo_vector white = sum_of_channels(lcnr, top);
  Check c = {};
  c.panel = panel;
  c.findings = RowCheck(lcnr).run();
  c.obstacle = obstacle(recipe_named("solve"), conditioned);
  c.recipes = {
      {{"aligned", obstacle(recipe_named("aligned"), panel)}, {"direct", obstacle(recipe_named("direct"), panel)}}};
  if (auto model = PanelModel::of(conditioned.lcnr)) {
    const MoreReadings more = read_more(gray, mix, panel);
    if (more.grays) {
      c.gray = additivity(*more.grays, *model);
      if (c.gray->levels == 0) {
        refuse_input(input_name(more.grays->path), "no gray above black from " + judged_from() + " of full drive up");
      }
    }
    if (more.mixtures) {
      learn(&*model, evidence_of(more, *model, noise_floor(lcnr)));
      c.mixtures = cross_validate(*more.mixtures, *model);
    }
  }
  c.black = black_of(lcnr);
  c.white = xyY(white);
  c.cct = vexo_XYZ_CCT(&white);
  c.contrast = contrast(c.white.d[2], c.black[1]);
  for (int channel = 0; channel < 3; channel++) {
    c.primary[channel] = xyY(above_black(lcnr, channel, top));
  }
  return c;
}
