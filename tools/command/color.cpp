// vexo color, delta, space, dci: colour quantities.
#include <CLI/CLI.hpp>

#include <cmath>
#include <cstring>
#include <map>

#include "colour/spaces.h"
#include "command/commands.h"
#include "file/input.h"
#include "text/failure.h"
#include "text/grammar.h"
#include "text/json.h"
#include "text/text.h"
#include "vexo-cs.h"
#include "vexo-dcine.h"

namespace {

struct ColorOptions {
  std::string first;
  std::string second;
  std::string file;
  std::string in = "XYZ";
  std::string white = "D65";
  std::string luminance = "100";
  bool json = false;
};

vexo_vector reference_white(const ColorOptions &options) {
  vexo_vector white = parse_white("--white", options.white).xyz;
  white.d[2] = parse_positive("--luminance", options.luminance);
  vexo_xyY_XYZ(&white);
  return white;
}

// The inverse of the CIE 1976 lightness function (CIE 15).
double inverse_lightness(double f) { return f > 6.0 / 29.0 ? f * f * f : (f - 4.0 / 29.0) * 108.0 / 841.0; }

// Light without a y is no colour.
bool from_xyY(vexo_vector *v) {
  const bool exists = v->d[1] > 0.0F || v->d[2] == 0.0F;
  return exists && vexo_xyY_XYZ(v) == 0;
}

bool from_uvY(vexo_vector *v) {
  const double u = static_cast<double>(v->d[0]);
  const double w = static_cast<double>(v->d[1]);
  const double denominator = 6.0 * u - 16.0 * w + 12.0;
  v->d[0] = static_cast<float>(9.0 * u / denominator);
  v->d[1] = static_cast<float>(4.0 * w / denominator);
  return from_xyY(v);
}

bool from_Lab(vexo_vector *v, const vexo_vector &white) {
  const double fy = (static_cast<double>(v->d[0]) + 16.0) / 116.0;
  const double f[3] = {fy + static_cast<double>(v->d[1]) / 500.0, fy, fy - static_cast<double>(v->d[2]) / 200.0};
  for (int i = 0; i < 3; i++) {
    v->d[i] = static_cast<float>(inverse_lightness(f[i]) * static_cast<double>(white.d[i]));
  }
  return true;
}

const size_t kLongestLine = 1000; // of a list
const std::vector<std::string> kForms = {"XYZ", "xyY", "uvY", "Lab"};

// Brings a triple of the given form to XYZ. Returns whether it is a colour.
bool to_XYZ(vexo_vector *v, const std::string &in, const vexo_vector &white) {
  const bool converted = in == "xyY"   ? from_xyY(v)
                         : in == "uvY" ? from_uvY(v)
                         : in == "Lab" ? from_Lab(v, white)
                                       : true;
  return converted && vexo_XYZ_valid(v) != 0;
}

// Everything the library knows of one colour.
struct Quantities {
  vexo_vector XYZ;
  vexo_vector xyY;
  vexo_vector uvY;
  vexo_vector Lab;
  vexo_vector LCh;
  vexo_vector Luv;
  int cct; // -1: none
};

Quantities quantities(vexo_vector XYZ, vexo_vector white) {
  Quantities q = {XYZ, XYZ, XYZ, XYZ, XYZ, XYZ, vexo_XYZ_CCT(&XYZ)};
  if (vexo_XYZ_xyY(&q.xyY) != 0) {
    vexo_vector_init(&q.xyY); // black has no chromaticity
  }
  vexo_XYZ_uvY(&q.uvY);
  vexo_XYZ_Lab(&q.Lab, &white);
  vexo_XYZ_LCH(&q.LCh, &white);
  vexo_XYZ_Luv(&q.Luv, &white);
  return q;
}

struct NamedTriple {
  const char *text;
  const char *key;
  vexo_vector Quantities::*triple;
};

const NamedTriple kTriples[] = {
    {"XYZ", "XYZ", &Quantities::XYZ},    {"xyY", "xyY", &Quantities::xyY}, {"u'v'Y", "uvY", &Quantities::uvY},
    {"L*a*b*", "Lab", &Quantities::Lab}, {"LCh", "LCh", &Quantities::LCh}, {"L*u*v*", "Luv", &Quantities::Luv},
};

// A number in its column; a hue that is not defined is a dash.
std::string column(float value) {
  return std::isfinite(value) ? format("%14.6f", static_cast<double>(value)) : format("%14s", "-");
}

void print_text(const Quantities &q) {
  for (const NamedTriple &named : kTriples) {
    const auto &d = (q.*named.triple).d;
    std::printf("%-8s %s %s %s%s\n", named.text, column(d[0]).c_str(), column(d[1]).c_str(), column(d[2]).c_str(),
                std::strcmp(named.text, "LCh") == 0 ? "   (h in radians, -pi/2 to pi/2)" : "");
  }
  std::printf("%-8s %s\n", "CCT", q.cct > 0 ? format("%d K", q.cct).c_str() : "none");
}

Json json_of(const Quantities &q) {
  Json document;
  for (const NamedTriple &named : kTriples) {
    document[named.key] = json_vector(q.*named.triple);
  }
  document["CCT"] = q.cct > 0 ? Json(q.cct) : Json(nullptr);
  return document;
}

// Calls take(text) for each line of the file that is neither blank nor a comment; a line that it refuses is named.
template <typename Take> bool each_line(const std::string &path, Take take) {
  const File f = open_input(path, "a list of colours");
  bool all = true;
  std::string line;
  int number = 1;
  for (int c = std::getc(f.get()); c != EOF; number++) {
    for (line.clear(); c != EOF && c != '\n'; c = std::getc(f.get())) {
      line.push_back(static_cast<char>(c));
      if (line.size() > kLongestLine) {
        throw Failure(kInputError, format("%s:%d: a line of more than %zu characters, expected three numbers",
                                          input_name(path).c_str(), number, kLongestLine));
      }
    }
    const size_t text = line.find_first_not_of(" \t\r");
    if (text != std::string::npos && line[text] != '#' && !take(line)) {
      std::fprintf(stderr, "vexo: %s:%d: '%s' is no colour, expected three numbers\n", input_name(path).c_str(), number,
                   line.c_str());
      all = false;
    }
    c = c == '\n' ? std::getc(f.get()) : c;
  }
  return all;
}

void color(const ColorOptions &options) {
  parse_name("--in", options.in, kForms);
  const vexo_vector white = reference_white(options);
  if (options.first.empty() == options.file.empty()) {
    throw Failure(kUsageError, "expected one colour, or --file with many");
  }
  if (options.file.empty()) {
    vexo_vector v = parse_triple("VALUE", options.first);
    if (!to_XYZ(&v, options.in, white)) {
      throw Failure(kInputError, "VALUE '" + options.first + "' is no colour in " + options.in);
    }
    const Quantities q = quantities(v, white);
    options.json ? print_json(json_of(q)) : print_text(q);
    return;
  }
  Json list = Json::array();
  bool first = true;
  const bool all = each_line(options.file, [&](const std::string &line) {
    vexo_vector v;
    if (!scan_triple(line, &v) || !to_XYZ(&v, options.in, white)) {
      return false;
    }
    const Quantities q = quantities(v, white);
    if (options.json) {
      list.push_back(json_of(q));
    } else {
      std::printf("%s%s\n", first ? "" : "\n", line.c_str());
      print_text(q);
    }
    first = false;
    return true;
  });
  if (options.json) {
    print_json(list);
  }
  if (!all) {
    throw Failure(kInputError, input_name(options.file) + ": some lines are no colours");
  }
}

void delta(const ColorOptions &options) {
  parse_name("--in", options.in, kForms);
  vexo_vector white = reference_white(options);
  vexo_vector colors[2];
  for (int i = 0; i < 2; i++) {
    const std::string &text = i == 0 ? options.first : options.second;
    const std::string name = format("COLOR%d", i + 1);
    colors[i] = parse_triple(name, text);
    if (!to_XYZ(&colors[i], options.in, white)) {
      throw Failure(kInputError, name + " '" + text + "' is no colour in " + options.in);
    }
  }
  const float ab = vexo_XYZ_DEab(&colors[0], &colors[1], &white);
  const float uv = vexo_XYZ_DEuv(&colors[0], &colors[1], &white);
  const float de2000 = vexo_XYZ_DE2000(&colors[0], &colors[1], &white);
  if (options.json) {
    print_json({{"white", json_vector(white)},
                {"DEab", json_number(ab)},
                {"DEuv", json_number(uv)},
                {"DE2000", json_number(de2000)}});
    return;
  }
  std::printf("White      X %.6g, Y %.6g, Z %.6g (%s)\n", static_cast<double>(white.d[0]),
              static_cast<double>(white.d[1]), static_cast<double>(white.d[2]), options.white.c_str());
  std::printf("dE*ab      %.6f\ndE*uv      %.6f\nCIEDE2000  %.6f\n", static_cast<double>(ab), static_cast<double>(uv),
              static_cast<double>(de2000));
}

struct SpaceOptions {
  std::string space;
  std::string to;
  bool json = false;
};

struct NamedMatrix {
  const char *text;
  const char *key;
  vexo_matrix matrix;
};

void space(const SpaceOptions &options) {
  Space from = parse_space("SPACE", options.space);
  vexo_cs &cs = from.cs;
  vexo_matrix inverse;
  if (vexo_matrix_invert(&inverse, &cs.npm) != 0) {
    throw Failure(kInputError, "SPACE '" + options.space + "': its matrix has no inverse");
  }
  vexo_vector cyan;
  vexo_vector magenta;
  vexo_vector yellow;
  vexo_cs_secondary(&cs, &cyan, &magenta, &yellow);
  const float area = vexo_cs_area(&cs);
  const std::pair<const char *, vexo_vector> points[] = {{"red", cs.r},     {"green", cs.g}, {"blue", cs.b},
                                                         {"white", cs.w},   {"cyan", cyan},  {"magenta", magenta},
                                                         {"yellow", yellow}};
  vexo_vector luma;
  vexo_matrix_get_row(&cs.npm, &luma, 1);
  std::vector<NamedMatrix> matrices = {{"RGB to XYZ", "npm", cs.npm}, {"XYZ to RGB", "inverse", inverse}};
  if (!options.to.empty()) {
    Space to = parse_space("--to", options.to);
    vexo_matrix plain;
    vexo_matrix adapted;
    if (vexo_cs_transform(&plain, &cs, &to.cs) != 0 || vexo_cs_chad_transform(&adapted, &to.cs, &cs) != 0) {
      throw Failure(kInputError, "--to '" + options.to + "': its matrix has no inverse");
    }
    matrices.push_back({"to the other space", "to", plain});
    matrices.push_back({"to the other space, white adapted (Bradford)", "to_adapted", adapted});
  }
  if (options.json) {
    Json document = {{"space", from.name}};
    for (const auto &[name, v] : points) {
      document[name] = {json_number(v.d[0]), json_number(v.d[1])};
    }
    document["luma"] = json_vector(luma);
    document["area"] = json_number(area);
    for (const NamedMatrix &m : matrices) {
      document[m.key] = json_matrix(m.matrix);
    }
    print_json(document);
    return;
  }
  std::printf("Space    %s\n", from.name.c_str());
  for (const auto &[name, v] : points) {
    std::printf("%-8s x %.6f, y %.6f\n", name, static_cast<double>(v.d[0]), static_cast<double>(v.d[1]));
  }
  std::printf("luma     %.8f %.8f %.8f\n", static_cast<double>(luma.d[0]), static_cast<double>(luma.d[1]),
              static_cast<double>(luma.d[2]));
  std::printf("area     %.8f in xy\n", static_cast<double>(area));
  for (const NamedMatrix &m : matrices) {
    std::printf("%s\n", m.text);
    for (const auto &row : m.matrix.d) {
      std::printf("  %14.8f %14.8f %14.8f\n", static_cast<double>(row[0]), static_cast<double>(row[1]),
                  static_cast<double>(row[2]));
    }
  }
}

struct DciOptions {
  std::string value;
  std::string from;
  std::string to;
  std::string bits = "12";
  bool json = false;
};

// One conversion between two forms of a cinema colour: by the depth, or by the primaries alone.
struct DciStep {
  const char *from;
  const char *to;
  void (*coded)(vexo_vector *, unsigned);
  int (*primaries)(vexo_vector *);
};

const DciStep kDciSteps[] = {
    {"XYZq", "xyz", vexo_dcine_XYZq_xyz, nullptr}, {"xyz", "XYZq", vexo_dcine_xyz_XYZq, nullptr},
    {"RGBq", "rgb", vexo_dcine_RGBq_rgb, nullptr}, {"rgb", "RGBq", vexo_dcine_rgb_RGBq, nullptr},
    {"XYZq", "XYZ", vexo_dcine_XYZq_XYZ, nullptr}, {"XYZ", "XYZq", vexo_dcine_XYZ_XYZq, nullptr},
    {"RGBq", "RGB", vexo_dcine_RGBq_RGB, nullptr}, {"RGB", "RGBq", vexo_dcine_RGB_RGBq, nullptr},
    {"XYZ", "xyz", vexo_dcine_XYZ_xyz, nullptr},   {"xyz", "XYZ", vexo_dcine_xyz_XYZ, nullptr},
    {"RGB", "rgb", vexo_dcine_RGB_rgb, nullptr},   {"rgb", "RGB", vexo_dcine_rgb_RGB, nullptr},
    {"rgb", "xyz", nullptr, vexo_dcine_rgb_xyz},   {"xyz", "rgb", nullptr, vexo_dcine_xyz_rgb},
};

const std::vector<std::string> kDciForms = {"XYZq", "XYZ", "xyz", "RGBq", "RGB", "rgb"};

// The fewest steps from one form to another.
std::vector<const DciStep *> dci_path(const std::string &from, const std::string &to) {
  std::map<std::string, std::vector<const DciStep *>> reached = {{from, {}}};
  while (reached.count(to) == 0) {
    auto farther = reached;
    for (const DciStep &step : kDciSteps) {
      if (reached.count(step.from) != 0 && reached.count(step.to) == 0) {
        auto path = reached[step.from];
        path.push_back(&step);
        farther.emplace(step.to, path);
      }
    }
    reached = farther;
  }
  return reached[to];
}

void dci(const DciOptions &options) {
  const std::string from = parse_name("--from", options.from, kDciForms);
  const std::string to = parse_name("--to", options.to, kDciForms);
  const auto bits = static_cast<unsigned>(parse_integer("--bits", options.bits, 1, 31));
  const vexo_vector in = parse_triple("VALUE", options.value);
  vexo_vector v = in;
  for (const DciStep *step : dci_path(from, to)) {
    if (step->coded != nullptr) {
      step->coded(&v, bits);
    } else {
      step->primaries(&v);
    }
  }
  if (options.json) {
    print_json({{"bits", bits},
                {"from", {{"form", from}, {"value", json_vector(in)}}},
                {"to", {{"form", to}, {"value", json_vector(v)}}}});
    return;
  }
  std::printf("%s %.9g %.9g %.9g\n", to.c_str(), static_cast<double>(v.d[0]), static_cast<double>(v.d[1]),
              static_cast<double>(v.d[2]));
}

void add_white_options(CLI::App *command, ColorOptions &options) {
  command->add_option("--in", options.in, "Form of the input: XYZ (default), xyY, uvY or Lab");
  command->add_option("--white", options.white, "Reference white: " + white_names() + ", or x,y (default D65)");
  command->add_option("--luminance", options.luminance, "Y of the reference white (default 100)");
  command->add_flag("--json", options.json, "Print JSON");
}

} // namespace

void add_colour(CLI::App &app) {
  {
    const auto options = std::make_shared<ColorOptions>();
    CLI::App *command = app.add_subcommand("color", "Say everything about a colour");
    command->add_option("VALUE", options->first, "Three numbers, a,b,c");
    command->add_option("--file", options->file, "Read many colours, one a line; - for standard input");
    add_white_options(command, *options);
    command->footer("Example: vexo color 0.3127,0.3290,100 --in xyY --white D50");
    command->callback([options] { color(*options); });
  }
  {
    const auto options = std::make_shared<ColorOptions>();
    CLI::App *command = app.add_subcommand("delta", "Compare two colours: dE*ab, dE*uv, CIEDE2000");
    command->add_option("COLOR1", options->first, "Three numbers, a,b,c")->required();
    command->add_option("COLOR2", options->second, "Three numbers, a,b,c")->required();
    add_white_options(command, *options);
    command->footer("Example: vexo delta 50,2.6772,-79.7751 50,0,-82.7485 --in Lab");
    command->callback([options] { delta(*options); });
  }
  {
    const auto options = std::make_shared<SpaceOptions>();
    CLI::App *command = app.add_subcommand("space", "Say everything about an RGB colour space");
    command->add_option("SPACE", options->space, space_names() + ", or rx,ry,gx,gy,bx,by,wx,wy")->required();
    command->add_option("--to", options->to, "Another colour space: print the RGB-to-RGB matrices as well");
    command->add_flag("--json", options->json, "Print JSON");
    command->footer("Example: vexo space bt2020 --to bt709");
    command->callback([options] { space(*options); });
  }
  {
    const auto options = std::make_shared<DciOptions>();
    CLI::App *command = app.add_subcommand("dci", "Convert between the forms of a digital cinema colour");
    command->add_option("VALUE", options->value, "Three numbers, a,b,c")->required();
    const std::string forms =
        "XYZq coded X'Y'Z', XYZ linear in code units, xyz relative; RGBq, RGB, rgb likewise for P3";
    command->add_option("--from", options->from, "Form of the input: " + forms)->required();
    command->add_option("--to", options->to, "Form of the output")->required();
    command->add_option("--bits", options->bits, "Depth of the codes (default 12)");
    command->add_flag("--json", options->json, "Print JSON");
    command->footer("Example: vexo dci 1,1,1 --from xyz --to XYZq");
    command->callback([options] { dci(*options); });
  }
}
