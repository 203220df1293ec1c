// vexo space: the properties of an RGB colour space, and the conversion to another.
#include <optional>
#include <utility>
#include <vector>

#include "colour/spaces.h"
#include "command/cli.h"
#include "command/commands.h"
#include "text/failure.h"
#include "text/json.h"

namespace {

struct SpaceOptions {
  Space space;
  std::optional<Space> to;
  bool json = false;
};

struct NamedMatrix {
  const char *text;
  const char *key;
  vexo_matrix matrix;
};

struct Description {
  std::string name;
  std::vector<std::pair<const char *, vexo_vector>> points; // x, y
  vexo_vector luma;
  float area;
  std::vector<NamedMatrix> matrices;
};

Description describe(const SpaceOptions &options) {
  const vexo_cs &cs = options.space.cs;
  const auto p = properties(cs);
  if (!p) {
    throw Failure(kInputError, "SPACE '" + options.space.name + "': its matrix has no inverse");
  }
  Description d = {options.space.name,
                   {{"red", cs.r},
                    {"green", cs.g},
                    {"blue", cs.b},
                    {"white", cs.w},
                    {"cyan", p->cyan},
                    {"magenta", p->magenta},
                    {"yellow", p->yellow}},
                   p->luma,
                   p->area,
                   {{"RGB to XYZ", "npm", p->RGB_to_XYZ}, {"XYZ to RGB", "inverse", p->XYZ_to_RGB}}};
  if (options.to) {
    const auto to = conversion(cs, options.to->cs);
    if (!to) {
      throw Failure(kInputError, "--to '" + options.to->name + "': its matrix has no inverse");
    }
    d.matrices.push_back({"to the other space", "to", to->absolute});
    d.matrices.push_back({"to the other space, white adapted (Bradford)", "to_adapted", to->adapted});
  }
  return d;
}

void print_text(const Description &d) {
  std::printf("Space    %s\n", d.name.c_str());
  for (const auto &[name, v] : d.points) {
    std::printf("%-8s x %.6f, y %.6f\n", name, v.d[0], v.d[1]);
  }
  std::printf("luma     %.8f %.8f %.8f\n", d.luma.d[0], d.luma.d[1], d.luma.d[2]);
  std::printf("area     %.8f in xy\n", d.area);
  for (const NamedMatrix &m : d.matrices) {
    std::printf("%s\n", m.text);
    for (const auto &row : m.matrix.d) {
      std::printf("  %14.8f %14.8f %14.8f\n", row[0], row[1], row[2]);
    }
  }
}

Json json_of(const Description &d) {
  Json document = {{"space", d.name}};
  for (const auto &[name, v] : d.points) {
    document[name] = {json_number(v.d[0]), json_number(v.d[1])};
  }
  document["luma"] = json_vector(d.luma);
  document["area"] = json_number(d.area);
  for (const NamedMatrix &m : d.matrices) {
    document[m.key] = json_matrix(m.matrix);
  }
  return document;
}

void run(const SpaceOptions &options) {
  const Description d = describe(options);
  options.json ? print_json(json_of(d)) : print_text(d);
}

} // namespace

void add_space(CLI::App &app) {
  auto [command, options] = add_command<SpaceOptions>(
      app, "space", "Describe an RGB colour space: points, luma weights, area and matrices", run);
  CLI::Option *space =
      add_parsed(command, "SPACE", options.space, parse_space, "Colour space by name, or rx,ry,gx,gy,bx,by,wx,wy");
  CLI::Option *to = add_parsed(command, "--to", options.to, parse_space,
                               "Colour space to convert to: print the RGB to RGB matrices as well");
  space->type_name(words_among_others(space_names()))->required();
  to->type_name(words_among_others(space_names()));
  command->add_flag("--json", options.json, "Print JSON");
  command->footer("Example: vexo space bt2020 --to bt709");
}
