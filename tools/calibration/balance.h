// The lights of the three channels whose mixture is a target.
//
// A channel's light s is its X + Y + Z above black. A target has three components, and each channel has one light:
// three equations with three unknowns. Newton's method solves them. A channel's drive follows from its light: the
// lowest drive that gives it.
#ifndef VEXO_TOOLS_BALANCE_H
#define VEXO_TOOLS_BALANCE_H

#include <array>
#include <vector>

#include "calibration/panel-model.h"

// The drive of one channel by its light.
class ChannelDrives {
public:
  // A drive, and how it changes with the light that is asked for.
  struct Drive {
    double drive;
    double slope;
  };

  // No drive is above the most.
  ChannelDrives(const PanelModel &model, Eigen::Index channel, double most);

  double first() const { return light_[1]; } // of the first level above black
  double full() const { return light_.back(); }

  // The lowest drive that gives the light; that of full light where there is less.
  Drive of(double light) const;

private:
  std::vector<double> light_; // of each table level; it rises even where measurements fall
};

// What the panel shows, by the light of its channels. A channel that is asked for more than it has keeps the colour of
// its full light.
class PanelByLight {
public:
  // No drive is above the most.
  PanelByLight(const PanelModel &model, double most);

  const PanelModel &model() const { return model_; }
  const Triple &full() const { return full_; }   // the most light of each channel
  const Triple &first() const { return first_; } // the least above black
  Triple drives(const Triple &s) const;

  // The sum of three lights.
  Triple additive(const Triple &s) const;

  // The change of the sum with each light, a column each.
  Eigen::Matrix3d slopes(const Triple &s) const;

  // The same if each colour held from there down to black.
  Eigen::Matrix3d chords(const Triple &s) const;

  // The gray level of the lights. It goes on above 1 where a channel is asked for more than it has.
  double level(const Triple &s) const;

private:
  ChannelDrives::Drive of(Eigen::Index c, double s) const { return channels_[static_cast<size_t>(c)].of(s); }
  Triple alone(Eigen::Index c, double s) const;
  Triple chord(Eigen::Index c, double s) const;

  const PanelModel &model_;
  std::array<ChannelDrives, 3> channels_;
  Triple full_;
  Triple first_;
};

// The lights that show a target, as near as steps from s come. They may lie beyond what there is.
Triple balance(const PanelByLight &panel, Triple s, const Triple &target);

#endif
