#include "report/chart.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "report/markup.h"
#include "text/format.h"

namespace {

const double kWidth = 640.0;
const double kHeight = 340.0;
const double kSquareHeight = 560.0; // where one unit is as long on both axes
const double kLeft = 64.0;          // margins around the plot
const double kRight = 16.0;
const double kTop = 12.0;
const double kBottom = 44.0;

struct Range {
  double low;
  double high;
};

// The range of the data and the reference lines on an axis, with a little air.
Range data_range(const Chart &chart, bool vertical) {
  Range range = {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};
  const auto include = [&](double value) {
    if (std::isfinite(value)) {
      range.low = std::min(range.low, value);
      range.high = std::max(range.high, value);
    }
  };
  for (const ChartSeries &series : chart.series) {
    for (const ChartPoint &point : series.points) {
      include(vertical ? point.y : point.x);
    }
  }
  for (const ChartReference &reference : chart.references) {
    if (vertical) {
      include(reference.y);
    }
  }
  if (!(range.low <= range.high)) {
    return Range{0.0, 1.0};
  }
  const double air =
      range.high > range.low ? (range.high - range.low) * 0.05 : std::max(std::fabs(range.low) * 0.05, 0.5);
  return Range{range.low >= 0.0 && range.low < air ? 0.0 : range.low - air, range.high + air};
}

Range axis_range(const Chart &chart, const ChartAxis &axis, bool vertical) {
  return axis.low < axis.high ? Range{axis.low, axis.high} : data_range(chart, vertical);
}

// A step of 1, 2 or 5 times a power of ten that gives about the wanted number of ticks.
double tick_step(const Range &range, int wanted) {
  const double rough = (range.high - range.low) / wanted;
  const double power = std::pow(10.0, std::floor(std::log10(rough)));
  for (const double factor : {1.0, 2.0, 5.0}) {
    if (rough <= factor * power) {
      return factor * power;
    }
  }
  return 10.0 * power;
}

class Plot {
public:
  explicit Plot(const Chart &chart)
      : chart_(chart), total_height_(chart.square ? kSquareHeight : kHeight), x_(axis_range(chart, chart.x, false)),
        y_(axis_range(chart, chart.y, true)) {
    if (chart.square) {
      make_square();
    }
  }

  std::string svg() {
    out_ = format("<svg viewBox=\"0 0 %g %g\" role=\"img\" aria-labelledby=\"%s-t %s-d\">\n", kWidth, total_height_,
                  chart_.id.c_str(), chart_.id.c_str());
    out_ += "<title id=\"" + chart_.id + "-t\">" + escaped(chart_.title) + "</title>\n";
    out_ += "<desc id=\"" + chart_.id + "-d\">" + escaped(chart_.summary) + "</desc>\n";
    out_ += format("<clipPath id=\"%s-c\"><rect x=\"%g\" y=\"%g\" width=\"%g\" height=\"%g\"/></clipPath>\n",
                   chart_.id.c_str(), kLeft, kTop, width(), height());
    shade();
    axes();
    for (const ChartSeries &series : chart_.series) {
      draw(series);
    }
    references();
    return out_ + "</svg>\n";
  }

private:
  static double width() { return kWidth - kLeft - kRight; }
  double height() const { return total_height_ - kTop - kBottom; }
  double px(double x) const {
    return kLeft + (scaled(x) - scaled(x_.low)) / (scaled(x_.high) - scaled(x_.low)) * width();
  }
  double scaled(double x) const { return chart_.x.logarithmic ? std::log(x) : x; }
  double py(double y) const { return kTop + (y_.high - y) / (y_.high - y_.low) * height(); }
  bool inside(const ChartPoint &p) const { return p.x >= x_.low && p.x <= x_.high && p.y >= y_.low && p.y <= y_.high; }

  void make_square() {
    const double unit = std::max((x_.high - x_.low) / width(), (y_.high - y_.low) / height());
    widen(&x_, unit * width());
    widen(&y_, unit * height());
  }

  static void widen(Range *range, double span) {
    const double centre = 0.5 * (range->low + range->high);
    *range = Range{centre - 0.5 * span, centre + 0.5 * span};
  }

  void shade() {
    if (chart_.shaded_below > 0.0) {
      const double right = std::clamp(px(chart_.shaded_below), kLeft, kLeft + width());
      out_ +=
          format("<rect class=\"shade\" x=\"%.2f\" y=\"%g\" width=\"%.2f\" height=\"%g\"><title>%s</title></rect>\n",
                 kLeft, kTop, right - kLeft, height(), escaped(chart_.shaded_label).c_str());
    }
  }

  void axes() {
    for (const double x : x_ticks()) {
      out_ += format("<line class=\"grid\" x1=\"%.2f\" y1=\"%g\" x2=\"%.2f\" y2=\"%g\"/>", px(x), kTop, px(x),
                     kTop + height());
      out_ += format("<text class=\"tick\" x=\"%.2f\" y=\"%g\" text-anchor=\"middle\">%.6g</text>\n", px(x),
                     kTop + height() + 20.0, x);
    }
    const double y_step = tick_step(y_, 6);
    for (double y = std::ceil(y_.low / y_step - 1e-9) * y_step; y <= y_.high + y_step * 1e-9; y += y_step) {
      out_ += format("<line class=\"grid\" x1=\"%g\" y1=\"%.2f\" x2=\"%g\" y2=\"%.2f\"/>", kLeft, py(y),
                     kLeft + width(), py(y));
      out_ += format("<text class=\"tick\" x=\"%g\" y=\"%.2f\" text-anchor=\"end\">%.6g</text>\n", kLeft - 6.0,
                     py(y) + 4.0, tidy(y, y_step));
    }
    out_ += format("<text class=\"label\" x=\"%g\" y=\"%g\" text-anchor=\"middle\">%s</text>\n", kLeft + 0.5 * width(),
                   total_height_ - 8.0, escaped(chart_.x.label).c_str());
    out_ +=
        format("<text class=\"label\" transform=\"translate(14 %g) rotate(-90)\" text-anchor=\"middle\">%s</text>\n",
               kTop + 0.5 * height(), escaped(chart_.y.label).c_str());
  }

  std::vector<double> x_ticks() const {
    std::vector<double> ticks;
    if (chart_.x.logarithmic) {
      for (double power = 1.0; power <= x_.high; power *= 10.0) {
        for (const double factor : {1.0, 2.0, 5.0}) {
          if (factor * power >= x_.low && factor * power <= x_.high) {
            ticks.push_back(factor * power);
          }
        }
      }
      return ticks;
    }
    const double step = tick_step(x_, 10);
    for (double x = std::ceil(x_.low / step - 1e-9) * step; x <= x_.high + step * 1e-9; x += step) {
      ticks.push_back(tidy(x, step));
    }
    return ticks;
  }

  // A tick at zero is not a rounding error beside it.
  static double tidy(double value, double step) { return std::fabs(value) < step * 1e-6 ? 0.0 : value; }

  void references() {
    for (const ChartReference &reference : chart_.references) {
      if (reference.y >= y_.low && reference.y <= y_.high) {
        out_ += format("<line class=\"reference\" x1=\"%g\" y1=\"%.2f\" x2=\"%g\" y2=\"%.2f\"/>", kLeft,
                       py(reference.y), kLeft + width(), py(reference.y));
        out_ += format("<text class=\"tick note\" x=\"%g\" y=\"%.2f\" text-anchor=\"end\">%s</text>\n",
                       kLeft + width() - 4.0, py(reference.y) - 4.0, escaped(reference.label).c_str());
      }
    }
  }

  void draw(const ChartSeries &series) {
    out_ += format("<g class=\"%s\" clip-path=\"url(#%s-c)\">\n", series.style.c_str(), chart_.id.c_str());
    if (series.line) {
      draw_line(series);
    }
    for (const ChartPoint &p : series.points) {
      if (series.marks && std::isfinite(p.y) && inside(p)) {
        out_ += format("<circle class=\"%s\" cx=\"%.2f\" cy=\"%.2f\" r=\"%d\"><title>%s: %.*f, %.*f</title></circle>\n",
                       series.line ? "point" : "mark", px(p.x), py(p.y), series.line ? 5 : 4,
                       escaped(series.name).c_str(), chart_.x.decimals, p.x, chart_.y.decimals, p.y);
      }
    }
    out_ += "</g>\n";
  }

  void draw_line(const ChartSeries &series) {
    std::string path;
    bool pen_down = false;
    for (const ChartPoint &p : series.points) {
      if (std::isfinite(p.y)) {
        // Far outside, coordinates are cut: the clip hides them anyway.
        path += format("%s%.2f %.2f", pen_down ? "L" : "M", px(p.x), std::clamp(py(p.y), -1e4, 1e4));
      }
      pen_down = std::isfinite(p.y);
    }
    out_ += "<path d=\"" + path + "\"/>\n";
  }

  const Chart &chart_;
  double total_height_;
  Range x_;
  Range y_;
  std::string out_;
};

std::string legend(const Chart &chart) {
  std::string out = "<p class=\"legend\">";
  for (const ChartSeries &series : chart.series) {
    if (!series.name.empty()) {
      out += "<span><svg viewBox=\"0 0 28 10\" aria-hidden=\"true\" class=\"" + series.style + "\">";
      out += series.line ? "<path d=\"M0 5L28 5\"/>" : "<circle class=\"mark\" cx=\"14\" cy=\"5\" r=\"4\"/>";
      out += "</svg>" + escaped(series.name) + "</span> ";
    }
  }
  return out + "</p>\n";
}

} // namespace

std::string render(const Chart &chart) {
  return "<figure id=\"" + chart.id + "\">\n<h3>" + escaped(chart.title) + "</h3>\n" + legend(chart) +
         Plot(chart).svg() + "<figcaption>" + escaped(chart.summary) + "</figcaption>\n</figure>\n";
}
