#include "calibration/curve.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <vector>

#include "file/input.h"
#include "file/table.h"
#include "text/failure.h"
#include "text/format.h"
#include "text/grammar.h"

namespace {

const double kMostLuminance = 10000.0; // of SMPTE ST 2084, cd/m2

struct NamedCurve {
  const char *name;
  vexo_gamma gamma; // slope, transition, gamma, offset
};

// Encoding curves: linear light to signal.
const NamedCurve kCameraCurves[] = {
    {"linear", {0.0F, 0.0F, 1.0F, 0.0F}},
    {"bt709", {4.5F, 0.018F, 0.45F, 0.099F}},            // BT.709, BT.601, BT.2020 at 10 bits
    {"bt2020", {4.5F, 0.0181F, 0.45F, 0.0993F}},         // BT.2020 at 12 bits
    {"bt1886", {0.0F, 0.0F, 1.0F / 2.4F, 0.0F}},         // inverse of BT.1886 over a black of 0
    {"srgb", {12.92F, 0.0031308F, 1.0F / 2.4F, 0.055F}}, // IEC 61966-2-1
    {"smpte240m", {4.0F, 0.0228F, 0.45F, 0.1115F}},      // SMPTE 240M
    {"adobe", {0.0F, 0.0F, 256.0F / 563.0F, 0.0F}},      // Adobe RGB (1998)
    {"dci", {0.0F, 0.0F, 1.0F / 2.6F, 0.0F}},            // SMPTE ST 428-1
};

// Which option gives the light of a signal that the curve encoded.
const char *display_side(const std::string &camera_curve) {
  if (camera_curve == "srgb") {
    return "--curve srgb";
  }
  return camera_curve == "dci" ? "--gamma 2.6" : "--gamma 2.4, or --curve bt1886 over the panel's own black";
}

// Whether slope, transition, gamma and offset make a curve that has an inverse.
bool is_curve(const std::vector<float> &v) {
  return v.size() == 4 && v[0] >= 0.0F && v[1] >= 0.0F && v[1] < 1.0F && v[2] > 0.0F && v[3] >= 0.0F &&
         (v[0] > 0.0F || v[1] == 0.0F);
}

std::optional<LibraryCurve> curve_of_numbers(const std::string &text) {
  const std::vector<float> values = number_list(text);
  if (values.size() == 1 && values[0] > 0.0F) {
    LibraryCurve curve = {"power law " + text, {}};
    vexo_gamma_init(&curve.gamma, values[0]);
    return curve;
  }
  if (is_curve(values)) {
    return LibraryCurve{"custom", {values[0], values[1], values[2], values[3]}};
  }
  return std::nullopt;
}

const char *const kNumbers = "an exponent above 0, or slope,transition,gamma,offset (slope above 0 where there is a "
                             "toe, transition below 1, gamma above 0, offset not below 0)";

// BT.2100: 1.2 at 1000 cd/m2. The formula in the logarithm holds from 400 to 2000 cd/m2, beyond that its extended form.
double hlg_gamma(double peak) {
  return peak >= 400.0 && peak <= 2000.0 ? 1.2 + 0.42 * std::log10(peak / 1000.0)
                                         : 1.2 * std::pow(1.111, std::log2(peak / 1000.0));
}

// BT.2100: scene light of an HLG signal, 0..1.
double hlg_scene_light(double signal) {
  const double a = 0.17883277;
  const double b = 1.0 - 4.0 * a;
  const double c = 0.5 - a * std::log(4.0 * a);
  return signal <= 0.5 ? signal * signal / 3.0 : (std::exp((signal - c) / a) + b) / 12.0;
}

// A curve that follows a standard and refers to black. fixed: what the standard takes from the panel, given by hand.
struct StandardCurve {
  const char *name;
  const char *meaning;
  const char *fixed; // name of the number after a colon
  bool fixed_is_black;
  double (*luminance)(double input, const LightRange &range);
};

double pq_up_to_white(double input, const LightRange &range) { return std::min(pq(input), range.white); }

const StandardCurve kStandardCurves[] = {
    {"bt1886", "ITU-R BT.1886", "black", true, bt1886},
    {"pq", "SMPTE ST 2084, clipped at the peak", "peak", false, pq_up_to_white},
    {"hlg", "ITU-R BT.2100 HLG", "peak", false, hlg},
};

ToneCurve standard_curve(const StandardCurve &standard, std::optional<double> fixed) {
  ToneCurve curve = {standard.name, standard.meaning, true, standard.luminance, std::nullopt, std::nullopt};
  if (!fixed) {
    return curve;
  }
  curve.name += format(":%.9g", *fixed);
  curve.meaning += format(", %s %.9g cd/m2", standard.fixed, *fixed);
  if (standard.fixed_is_black) {
    curve.luminance = [standard, black = *fixed](double input, const LightRange &range) {
      return standard.luminance(input, {range.white, black});
    };
  } else {
    curve.peak = fixed;
  }
  return curve;
}

struct CurvePoint {
  double input;
  double light;
};

// Straight lines between the points.
double light_of(const std::vector<CurvePoint> &points, double input) {
  const auto above =
      std::find_if(points.begin() + 1, points.end() - 1, [input](const CurvePoint &p) { return p.input >= input; });
  const CurvePoint &low = *(above - 1);
  const CurvePoint &high = *above;
  return low.light + (high.light - low.light) * (input - low.input) / (high.input - low.input);
}

// Inputs and light as parts of those of the last row. A first row above input 0 follows on (0, 0).
std::vector<CurvePoint> read_points(const std::string &path) {
  Table table(input_name(path), read_text(path, "a tone curve"));
  std::vector<CurvePoint> points;
  for (const TableRow &row : table.rows()) {
    if (row.cells.size() != 2) {
      refuse_input(table.place(row), format("%zu columns, expected 2 (input,light)", row.cells.size()));
    }
    const CurvePoint point = {table.number(row, 0, "input"), table.number(row, 1, "light")};
    if (points.empty() && point.input > 0.0) {
      points.push_back({0.0, 0.0});
    }
    const bool rises = points.empty() ? point.input == 0.0 && point.light >= 0.0
                                      : point.input > points.back().input && point.light >= points.back().light;
    if (!rises) {
      refuse_input(table.place(row), "expected inputs that rise from 0, and light that does not fall");
    }
    points.push_back(point);
  }
  if (points.size() < 2 || !(points.back().light > points.front().light)) {
    refuse_input(table.name(), "expected rows of input,light up to white");
  }
  const CurvePoint white = points.back();
  for (CurvePoint &point : points) {
    point = {point.input / white.input, point.light / white.light};
  }
  return points;
}

ToneCurve table_curve(const std::string &path) {
  const auto points = read_points(path);
  const auto luminance = [points](double input, const LightRange &range) {
    return range.white * light_of(points, input);
  };
  return {path, format("%zu points of a file", points.size()), false, luminance, std::nullopt, std::nullopt};
}

ToneCurve named(ToneCurve curve, const std::string &name, const std::string &meaning) {
  curve.name = name;
  curve.meaning = meaning;
  return curve;
}

} // namespace

const vexo_gamma kLstar = {9.033F, 0.008856F, 1.0F / 3.0F, 0.16F};

double bt1886(double input, const LightRange &range) {
  const double gamma = 2.4;
  const double white = std::pow(range.white, 1.0 / gamma);
  const double black = std::pow(range.black, 1.0 / gamma);
  return std::pow(std::max((white - black) * input + black, 0.0), gamma);
}

double pq(double input) {
  const double m1 = 2610.0 / 16384.0;
  const double m2 = 2523.0 / 4096.0 * 128.0;
  const double c1 = 3424.0 / 4096.0;
  const double c2 = 2413.0 / 4096.0 * 32.0;
  const double c3 = 2392.0 / 4096.0 * 32.0;
  const double p = std::pow(input, 1.0 / m2);
  return 10000.0 * std::pow(std::max(p - c1, 0.0) / (c2 - c3 * p), 1.0 / m1);
}

double hlg(double input, const LightRange &range) {
  const double gamma = hlg_gamma(range.white);
  const double lift = std::sqrt(3.0 * std::pow(range.black / range.white, 1.0 / gamma));
  return range.white * std::pow(hlg_scene_light(std::max((1.0 - lift) * input + lift, 0.0)), gamma);
}

ToneCurve power_law(float exponent) {
  LibraryCurve system = {"power law " + shortest(exponent), {}};
  vexo_gamma_init(&system.gamma, exponent);
  return named(two_steps(kLinear, system), shortest(exponent), system.name);
}

ToneCurve two_steps(const LibraryCurve &camera, const LibraryCurve &system) {
  const auto luminance = [camera = camera.gamma, system = system.gamma](double input, const LightRange &range) mutable {
    return range.white * double{vexo_gamma_evaluate(&system, vexo_gamma_inverse(&camera, static_cast<float>(input)))};
  };
  return {"camera and system",
          "camera " + describe(camera) + ", system " + describe(system),
          false,
          luminance,
          LibraryCurves{camera, system},
          std::nullopt};
}

ToneCurve parse_tone_curve(const std::string &option, const std::string &text) {
  if (has_extension(text, ".csv")) {
    return table_curve(text);
  }
  const std::string name = lower(text.substr(0, text.find(':')));
  const StandardCurve *standard = find_name(kStandardCurves, name);
  if (standard != nullptr && name.size() < text.size()) {
    const double fixed = parse_positive(option, text.substr(name.size() + 1));
    if (fixed > kMostLuminance) {
      reject(option, text, format("up to %g cd/m2", kMostLuminance));
    }
    return standard_curve(*standard, fixed);
  }
  if (standard != nullptr) {
    return standard_curve(*standard, std::nullopt);
  }
  if (lower(text) == "srgb") {
    return named(two_steps({"srgb", find_name(kCameraCurves, "srgb")->gamma}, kLinear), "srgb",
                 "IEC 61966-2-1, display side");
  }
  if (lower(text) == "lstar") {
    return named(two_steps({"lstar", kLstar}, kLinear), "lstar", "CIE 1976 L*");
  }
  if (const auto exponent = finite_number(text); exponent && *exponent > 0.0F) {
    return power_law(*exponent);
  }
  reject(option, text, "one of " + tone_curve_names(), split(tone_curve_words(), ' '));
}

std::string tone_curve_words() { return "srgb lstar bt1886 pq hlg"; }

std::string tone_curve_names() {
  return "an exponent such as 2.2, srgb, lstar, bt1886[:BLACK], pq[:PEAK], hlg[:PEAK] (cd/m2), or FILE.csv of "
         "input,light";
}

LibraryCurve parse_camera_curve(const std::string &option, const std::string &text) {
  if (const NamedCurve *curve = find_name(kCameraCurves, text)) {
    return {curve->name, curve->gamma};
  }
  if (const auto curve = curve_of_numbers(text)) {
    return *curve;
  }
  reject(option, text, "one of " + camera_curve_names() + ", " + kNumbers, names_of(kCameraCurves));
}

LibraryCurve parse_system_curve(const std::string &option, const std::string &text) {
  const NamedCurve *encoding = find_name(kCameraCurves, text);
  if (encoding != nullptr && encoding->name != kLinear.name) {
    throw Failure(kUsageError, format("%s %s: this curve leads from light to signal and would invert the display; for "
                                      "the way from signal to light give %s",
                                      option.c_str(), encoding->name, display_side(encoding->name)));
  }
  if (encoding != nullptr) {
    return kLinear;
  }
  if (const auto curve = curve_of_numbers(text)) {
    return *curve;
  }
  reject(option, text, std::string("linear, ") + kNumbers);
}

std::string camera_curve_names() { return join(names_of(kCameraCurves)); }

std::string describe(const LibraryCurve &curve) {
  const vexo_gamma &g = curve.gamma;
  return curve.name + " (slope " + shortest(g.slope) + ", transition " + shortest(g.transition) + ", gamma " +
         shortest(g.gamma) + ", offset " + shortest(g.offset) + ")";
}
