// Charts as inline SVG: axes, series, reference lines, the value of each point under the pointer.
#ifndef VEXO_TOOLS_CHART_H
#define VEXO_TOOLS_CHART_H

#include <string>
#include <vector>

struct ChartPoint {
  double x;
  double y; // a value that is not finite leaves a gap
};

struct ChartSeries {
  std::string name;
  std::string style; // CSS classes of style.css, such as before, red or outline
  std::vector<ChartPoint> points;
  bool line = true;
  bool marks = true; // points that show their value; visible ones where there is no line
};

struct ChartReference {
  double y;
  std::string label;
};

struct ChartAxis {
  std::string label;
  double low = 0.0;
  double high = 0.0;        // low = high: from the data
  int decimals = 0;         // of values under the pointer
  bool logarithmic = false; // of x only; low is above 0
};

struct Chart {
  std::string id; // unique in the page
  std::string title;
  std::string summary; // one sentence for those who do not see the chart
  ChartAxis x;
  ChartAxis y;
  std::vector<ChartReference> references;
  std::vector<ChartSeries> series;
  double shaded_below = 0.0; // the x range from its start to here is marked; 0: none
  std::string shaded_label;
  bool square = false; // one unit is as long on both axes
};

// A figure element: title, legend, drawing, summary.
std::string render(const Chart &chart);

#endif
