// Colorimetry, a call at a time: the library, which forms what is prescribed in single and double precision, beside the
// same formulas in plain double.
#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <cstddef>

#include "vexo-cs.h"

namespace {

using Color = std::array<double, 3>;
const double kPi = 3.141592653589793;

double chroma(double a, double b) { return std::sqrt(a * a + b * b); }

double strength(double C) {
  const double C7 = std::pow(C, 7.0);
  return std::sqrt(C7 / (C7 + 6103515625.0));
}

double hue(double a, double b) {
  const double h = std::atan2(b, a);
  return h < 0.0 ? h + 2.0 * kPi : h;
}

double double_DE2000(const Color &c1, const Color &c2) {
  const double G = 0.5 * (1.0 - strength((chroma(c1[1], c1[2]) + chroma(c2[1], c2[2])) / 2.0));
  const double a1 = (1.0 + G) * c1[1];
  const double a2 = (1.0 + G) * c2[1];
  const double C1 = chroma(a1, c1[2]);
  const double C2 = chroma(a2, c2[2]);
  const double h1 = hue(a1, c1[2]);
  const double h2 = hue(a2, c2[2]);
  double dh = h2 - h1;
  double h = (h1 + h2) / 2.0;
  if (std::fabs(dh) > kPi) {
    dh += h1 > h2 ? 2.0 * kPi : -2.0 * kPi;
    h += h < kPi ? kPi : -kPi;
  }
  const double dH = 2.0 * std::sqrt(C1 * C2) * std::sin(dh / 2.0);
  const double T = 1.0 - 0.17 * std::cos(h - kPi / 6.0) + 0.24 * std::cos(2.0 * h) +
                   0.32 * std::cos(3.0 * h + kPi / 30.0) - 0.20 * std::cos(4.0 * h - 0.35 * kPi);
  const double C = (C1 + C2) / 2.0;
  const double from50 = (c1[0] + c2[0]) / 2.0 - 50.0;
  const double SL = 1.0 + 0.015 * from50 * from50 / std::sqrt(20.0 + from50 * from50);
  const double z = (h * 180.0 / kPi - 275.0) / 25.0;
  const double RT = -2.0 * strength(C) * std::sin(60.0 * std::exp(-z * z) * kPi / 180.0);
  const double l = (c2[0] - c1[0]) / SL;
  const double c = (C2 - C1) / (1.0 + 0.045 * C);
  const double H = dH / (1.0 + 0.015 * C * T);
  return std::sqrt(l * l + c * c + H * H + RT * c * H);
}

double uniformity(double t) { return t < 0.008856451679035631 ? t * 7.787037037037037 + 16.0 / 116.0 : std::cbrt(t); }

Color double_Lab(const Color &XYZ, const Color &white) {
  const double fX = uniformity(XYZ[0] / white[0]);
  const double fY = uniformity(XYZ[1] / white[1]);
  const double fZ = uniformity(XYZ[2] / white[2]);
  return {116.0 * fY - 16.0, 500.0 * (fX - fY), 200.0 * (fY - fZ)};
}

struct Line {
  double u;
  double v;
  double t;
};
// Stand-ins for the isotemperature lines, their coordinates fitted to the published ones: only the work counts here.
std::array<Line, 31> lines() {
  std::array<Line, 31> all;
  for (size_t i = 0; i < all.size(); i++) {
    const double s = static_cast<double>(i) / 30.0;
    all[i] = Line{0.18 + 0.157 * s * s, 0.2635 + 0.1 * s * (2.0 - s), -0.243 - 2.0 * s - 110.0 * std::pow(s, 12.0)};
  }
  return all;
}

double double_CCT(const std::array<Line, 31> &all, const Color &XYZ) {
  const double den = XYZ[0] + 15.0 * XYZ[1] + 3.0 * XYZ[2];
  const double u = 4.0 * XYZ[0] / den;
  const double v = 6.0 * XYZ[1] / den;
  double before = 0.0;
  for (size_t i = 0; i < all.size(); i++) {
    const double d = v - all[i].v - all[i].t * (u - all[i].u);
    if (i > 0 && (d < 0.0) != (before < 0.0)) {
      const double a = before / std::sqrt(1.0 + all[i - 1].t * all[i - 1].t);
      const double b = d / std::sqrt(1.0 + all[i].t * all[i].t);
      const double step = i <= 10 ? 1e-5 : 2.5e-5;
      return std::round(1.0 / (static_cast<double>(i - 1) * step + 1e-16 + step * a / (a - b)));
    }
    before = d;
  }
  return -1.0;
}

const size_t kColors = 64;

// Colours spread over the space, those of Lab and those of XYZ.
std::array<vexo_vector, kColors> colors(bool Lab) {
  std::array<vexo_vector, kColors> spread;
  for (size_t i = 0; i < kColors; i++) {
    const float u = static_cast<float>(i) / static_cast<float>(kColors);
    const float v = static_cast<float>(i * 37 % kColors) / static_cast<float>(kColors);
    const float w = static_cast<float>(i * 23 % kColors) / static_cast<float>(kColors);
    spread[i] = Lab ? vexo_vector{{100.0F * u, 120.0F * v - 60.0F, 120.0F * w - 60.0F}}
                    : vexo_vector{{0.2F + 0.7F * v, 0.2F + 0.8F * u, 0.1F + 0.9F * w}};
  }
  return spread;
}

Color widened(const vexo_vector &v) {
  return {static_cast<double>(v.d[0]), static_cast<double>(v.d[1]), static_cast<double>(v.d[2])};
}

const vexo_vector kWhite = {{0.9505F, 1.0F, 1.089F}};

void Lab_DE2000(benchmark::State &state) {
  auto c = colors(true);
  for (auto _ : state) {
    for (size_t i = 0; i < kColors; i++) {
      benchmark::DoNotOptimize(vexo_Lab_DE2000(&c[i], &c[(i * 5 + 3) % kColors]));
    }
  }
}
BENCHMARK(Lab_DE2000);

void Lab_DE2000_double(benchmark::State &state) {
  const auto c = colors(true);
  for (auto _ : state) {
    for (size_t i = 0; i < kColors; i++) {
      benchmark::DoNotOptimize(double_DE2000(widened(c[i]), widened(c[(i * 5 + 3) % kColors])));
    }
  }
}
BENCHMARK(Lab_DE2000_double);

void XYZ_Lab(benchmark::State &state) {
  const auto c = colors(false);
  vexo_vector white = kWhite;
  for (auto _ : state) {
    for (vexo_vector v : c) {
      vexo_XYZ_Lab(&v, &white);
      benchmark::DoNotOptimize(v);
    }
  }
}
BENCHMARK(XYZ_Lab);

void XYZ_Lab_double(benchmark::State &state) {
  const auto c = colors(false);
  const Color white = widened(kWhite);
  for (auto _ : state) {
    for (const vexo_vector &v : c) {
      benchmark::DoNotOptimize(double_Lab(widened(v), white));
    }
  }
}
BENCHMARK(XYZ_Lab_double);

void XYZ_CCT(benchmark::State &state) {
  auto c = colors(false);
  for (auto _ : state) {
    for (vexo_vector &v : c) {
      benchmark::DoNotOptimize(vexo_XYZ_CCT(&v));
    }
  }
}
BENCHMARK(XYZ_CCT);

void XYZ_CCT_double(benchmark::State &state) {
  const auto c = colors(false);
  const auto all = lines();
  for (auto _ : state) {
    for (const vexo_vector &v : c) {
      benchmark::DoNotOptimize(double_CCT(all, widened(v)));
    }
  }
}
BENCHMARK(XYZ_CCT_double);

} // namespace
