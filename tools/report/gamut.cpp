#include "report/gamut.h"

#include <algorithm>
#include <cmath>

#include "calibration/figures.h"
#include "colour/spaces.h"

namespace {

const char *const kSpaces[] = {"bt709", "p3-d65", "bt2020"};

struct Point {
  double x;
  double y;
};

using Polygon = std::vector<Point>;

// Twice the area of the triangle a, b, p; above 0 where p is left of the way from a to b.
double side(const Point &a, const Point &b, const Point &p) {
  return (b.x - a.x) * (p.y - a.y) - (b.y - a.y) * (p.x - a.x);
}

double area(const Polygon &polygon) {
  double sum = 0.0;
  for (size_t i = 2; i < polygon.size(); i++) {
    sum += side(polygon[0], polygon[i - 1], polygon[i]);
  }
  return std::fabs(sum) / 2.0;
}

// The part of a convex polygon left of the way from a to b.
Polygon left_of(const Polygon &polygon, const Point &a, const Point &b) {
  Polygon result;
  for (size_t i = 0; i < polygon.size(); i++) {
    const Point &p = polygon[i];
    const Point &q = polygon[(i + 1) % polygon.size()];
    const double at_p = side(a, b, p);
    const double at_q = side(a, b, q);
    if (at_p >= 0.0) {
      result.push_back(p);
    }
    if ((at_p > 0.0 && at_q < 0.0) || (at_p < 0.0 && at_q > 0.0)) {
      const double t = at_p / (at_p - at_q);
      result.push_back({p.x + t * (q.x - p.x), p.y + t * (q.y - p.y)});
    }
  }
  return result;
}

// Red, green and blue, which run against the clock.
Polygon triangle_xy(const vexo_cs &cs) {
  const auto point = [](const vexo_vector &v) { return Point{v.d[0], v.d[1]}; };
  return {point(cs.r), point(cs.g), point(cs.b)};
}

Polygon in_uv(Polygon polygon) {
  for (Point &p : polygon) {
    const double d = -2.0 * p.x + 12.0 * p.y + 3.0;
    p = {4.0 * p.x / d, 9.0 * p.y / d};
  }
  return polygon;
}

double covered_percent(const Polygon &space, Polygon panel) {
  for (size_t i = 0; i < space.size(); i++) {
    panel = left_of(panel, space[i], space[(i + 1) % space.size()]);
  }
  return 100.0 * area(panel) / area(space);
}

vexo_vector column(const vexo_matrix &m, int c) { return {{m.d[0][c], m.d[1][c], m.d[2][c]}}; }

PrimaryDistance distance(const vexo_cs &panel, const vexo_cs &space, const vexo_vector &white, int c) {
  const vexo_vector *const of_panel[] = {&panel.r, &panel.g, &panel.b};
  const vexo_vector *const of_space[] = {&space.r, &space.g, &space.b};
  return {*of_panel[c], *of_space[c], de2000(column(panel.npm, c), column(space.npm, c), white)};
}

} // namespace

std::vector<Coverage> coverages(const vexo_cs &panel) {
  std::vector<Coverage> result;
  const Polygon xy = triangle_xy(panel);
  for (const char *name : kSpaces) {
    const vexo_cs cs = parse_space("", name).cs;
    const Polygon space = triangle_xy(cs);
    result.push_back({name, cs, covered_percent(space, xy), covered_percent(in_uv(space), in_uv(xy))});
  }
  return result;
}

NearestSpace nearest_space(const vexo_cs &panel) {
  NearestSpace nearest;
  double least = INFINITY;
  for (const char *name : kSpaces) {
    const vexo_cs space = parse_space("", name).cs;
    vexo_cs balanced = panel;
    vexo_cs_set_w(&balanced, space.w.d[0], space.w.d[1]);
    if (vexo_cs_matrix(&balanced, &balanced.npm) != 0) {
      continue;
    }
    const vexo_vector white =
        single(triple(column(space.npm, 0)) + triple(column(space.npm, 1)) + triple(column(space.npm, 2)));
    NearestSpace candidate = {name, {}};
    double sum = 0.0;
    for (int c = 0; c < 3; c++) {
      candidate.primaries[c] = distance(balanced, space, white, c);
      sum += candidate.primaries[c].de2000;
    }
    if (sum < least) {
      least = sum;
      nearest = candidate;
    }
  }
  return nearest;
}
