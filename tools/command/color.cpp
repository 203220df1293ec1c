// vexo color: a colour, or a list of colours, in every coordinate.
#include <cmath>
#include <cstring>

#include "calibration/target.h"
#include "colour/quantities.h"
#include "command/cli.h"
#include "command/colour-options.h"
#include "command/commands.h"
#include "file/colour-list.h"
#include "text/failure.h"
#include "text/format.h"
#include "text/grammar.h"
#include "text/json.h"

namespace {

struct ColorOptions {
  std::string value;
  std::string file;
  ColourOptions colour;
};

struct NamedTriple {
  const char *text; // null: in JSON only
  const char *key;
  vexo_vector Quantities::*triple;
};

const NamedTriple kTriples[] = {
    {"XYZ", "XYZ", &Quantities::XYZ},           {"xyY", "xyY", &Quantities::xyY},
    {"u'v'Y", "uvY", &Quantities::uvY},         {"L*a*b*", "Lab", &Quantities::Lab},
    {nullptr, "LCh", &Quantities::LCh_library}, {"LCh", "LCh_degrees", &Quantities::LCh},
    {"L*u*v*", "Luv", &Quantities::Luv},
};

// A number in its column. The hue of a gray is not defined and becomes a dash.
std::string column(float value) { return std::isfinite(value) ? format("%14.6f", value) : format("%14s", "-"); }

void print_text(const Quantities &q) {
  for (const NamedTriple &named : kTriples) {
    if (named.text == nullptr) {
      continue;
    }
    const auto &d = (q.*named.triple).d;
    std::printf("%-8s %s %s %s%s\n", named.text, column(d[0]).c_str(), column(d[1]).c_str(), column(d[2]).c_str(),
                std::strcmp(named.text, "LCh") == 0 ? "   (h in degrees)" : "");
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

void convert_one(const ColorOptions &options) {
  const vexo_vector white = reference_white(options.colour);
  const Quantities q = quantities(parse_colour("VALUE", options.value, options.colour), white);
  options.colour.json ? print_json(json_of(q)) : print_text(q);
}

// Prints each line that is a colour as soon as it is read. Names every line that is none.
void convert_list(const ColorOptions &options) {
  const vexo_vector white = reference_white(options.colour);
  Json document = Json::array();
  const char *separator = "";
  bool all = true;
  for (ColourList list(options.file); list.next();) {
    vexo_vector v;
    if (!scan_triple(list.line(), &v) || !to_XYZ(&v, options.colour.form, white)) {
      std::fprintf(stderr, "vexo: %s: '%s' is not a colour, expected three numbers\n", list.place().c_str(),
                   list.line().c_str());
      all = false;
    } else if (options.colour.json) {
      document.push_back(json_of(quantities(v, white)));
    } else {
      std::printf("%s%s\n", separator, list.line().c_str());
      print_text(quantities(v, white));
      separator = "\n";
    }
  }
  if (options.colour.json) {
    print_json(document);
  }
  if (!all) {
    throw Failure(kInputError, input_name(options.file) + ": some lines are not colours");
  }
}

void run(const ColorOptions &options) {
  if (options.value.empty() == options.file.empty()) {
    throw Failure(kUsageError, "expected either VALUE or --file");
  }
  options.file.empty() ? convert_one(options) : convert_list(options);
}

} // namespace

void add_color(CLI::App &app) {
  auto [command, options] =
      add_command<ColorOptions>(app, "color", "Convert a colour to XYZ, xyY, u'v'Y, Lab, LCh, Luv and CCT", run);
  command->add_option("VALUE", options.value, "Three numbers, a,b,c");
  command->add_option("--file", options.file, "Read many colours, one per line; - for standard input");
  add_colour_options(command, options.colour);
  command->footer("Example: vexo color 0.3127,0.3290,100 --in xyY --white D50");
}
