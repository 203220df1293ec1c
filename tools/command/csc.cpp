// vexo csc: the conversion between two video signals, and the registers of the hardware converter.
#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>

#include "colour/spaces.h"
#include "command/commands.h"
#include "signal/signal.h"
#include "text/failure.h"
#include "text/grammar.h"
#include "text/json.h"
#include "text/text.h"
#include "vexo-csc.h"

namespace {

// Options as they stand on the command line; empty where not given.
struct Options {
  std::string from;
  std::string to;
  std::string space;
  std::string from_space;
  std::string to_space;
  std::string hue;
  std::string saturation;
  std::string contrast;
  std::string brightness;
  std::string gain;
  std::string offset;
  std::string apply;
  bool registers = false;
  bool json = false;
};

struct Job {
  Signal from;
  Signal to;
  Space from_space;
  Space to_space;
  vexo_ccp controls;
};

void set_number(float *control, const std::string &option, const std::string &text) {
  if (!text.empty()) {
    *control = parse_number(option, text);
  }
}

vexo_ccp parse_controls(const Options &options) {
  vexo_ccp controls;
  vexo_ccp_init(&controls);
  set_number(&controls.hue, "--hue", options.hue);
  controls.hue = static_cast<float>(static_cast<double>(controls.hue) * 3.141592653589793 / 180.0);
  set_number(&controls.saturation, "--saturation", options.saturation);
  set_number(&controls.contrast, "--contrast", options.contrast);
  set_number(&controls.brightness, "--brightness", options.brightness);
  if (!options.gain.empty()) {
    controls.gain = parse_triple("--gain", options.gain);
  }
  if (!options.offset.empty()) {
    controls.offset = parse_triple("--offset", options.offset);
  }
  return controls;
}

Job parse(const Options &options) {
  if (!options.space.empty() && !(options.from_space.empty() && options.to_space.empty())) {
    throw Failure(kUsageError, "--space names both colour spaces, expected it without --from-space and --to-space");
  }
  if (options.from_space.empty() != options.to_space.empty()) {
    throw Failure(kUsageError, "--from-space and --to-space go together, or --space for both");
  }
  const std::string both = options.space.empty() ? "bt709" : options.space;
  return Job{parse_signal("FROM", options.from), parse_signal("TO", options.to),
             options.from_space.empty() ? parse_space("--space", both)
                                        : parse_space("--from-space", options.from_space),
             options.to_space.empty() ? parse_space("--space", both) : parse_space("--to-space", options.to_space),
             parse_controls(options)};
}

// The matrix that brings the canonical components into the signal's order.
vexo_matrix order_matrix(const Signal &signal) {
  vexo_matrix m = {};
  for (int i = 0; i < 3; i++) {
    m.d[i][signal.order[i]] = 1.0F;
  }
  return m;
}

vexo_matrix transposed(const vexo_matrix &m) {
  vexo_matrix t;
  for (int i = 0; i < 3; i++) {
    for (int j = 0; j < 3; j++) {
      t.d[i][j] = m.d[j][i];
    }
  }
  return t;
}

vexo_csc build(Job job) {
  auto *const builder = job.from.ycbcr ? (job.to.ycbcr ? _vexo_csc_ycbcr_ycbcr : _vexo_csc_ycbcr_rgb)
                                       : (job.to.ycbcr ? _vexo_csc_rgb_ycbcr : _vexo_csc_rgb_rgb);
  vexo_csc csc;
  if (builder(&csc, &job.from_space.cs, &job.to_space.cs, job.from.range, job.to.range, &job.controls, job.from.bits,
              job.to.bits) != 0) {
    throw Failure(kInputError, "no conversion between these signals and colour spaces can be built");
  }
  vexo_matrix arrive = transposed(order_matrix(job.from));
  vexo_matrix leave = order_matrix(job.to);
  vexo_csc_prev_matrix(&csc, &arrive);
  vexo_csc_post_matrix(&csc, &leave);
  return csc;
}

// What the registers make of a triple, before the output clip.
vexo_vector apply_registers(const vexo_csc_reg &reg, const vexo_vector &v) {
  vexo_vector out;
  for (int i = 0; i < 3; i++) {
    double sum = reg.offset[i] / 4.0;
    for (int j = 0; j < 3; j++) {
      sum += reg.gain[i][j] / 2048.0 * static_cast<double>(v.d[j]);
    }
    out.d[i] = static_cast<float>(sum);
  }
  return out;
}

// The largest distance, in output codes, between the conversion and its registers over the corners of the input cube.
float largest_error(vexo_csc csc, const vexo_csc_reg &reg, int bits) {
  const float top = static_cast<float>((1 << bits) - 1);
  float largest = 0.0F;
  for (int corner = 0; corner < 8; corner++) {
    const vexo_vector in = {
        {(corner & 1) != 0 ? top : 0.0F, (corner & 2) != 0 ? top : 0.0F, (corner & 4) != 0 ? top : 0.0F}};
    vexo_vector exact = in;
    vexo_csc_transfrom(&csc, &exact);
    const vexo_vector fixed = apply_registers(reg, in);
    for (int i = 0; i < 3; i++) {
      largest = std::max(largest, std::fabs(exact.d[i] - fixed.d[i]));
    }
  }
  return largest;
}

struct Saturated {
  std::string name;
  float value;   // what was asked for
  double stored; // what the register stands for
};

// Rounding alone moves a value by half a step at most.
void note_saturation(std::vector<Saturated> &list, const std::string &name, float value, short code, double scale) {
  if (!(std::fabs(static_cast<double>(value) * scale - code) <= 0.51)) {
    list.push_back({name, value, code / scale});
  }
}

std::vector<Saturated> saturated(const vexo_csc &csc, const vexo_csc_reg &reg, int bits) {
  std::vector<Saturated> list;
  for (int i = 0; i < 3; i++) {
    for (int j = 0; j < 3; j++) {
      note_saturation(list, format("gain[%d][%d]", i, j), csc.matrix.d[i][j], reg.gain[i][j], 2048.0);
    }
  }
  for (int i = 0; i < 3; i++) {
    note_saturation(list, format("offset[%d]", i), csc.offset.d[i], reg.offset[i], 4.0);
  }
  const float top = static_cast<float>((1 << bits) - 1);
  for (int i = 0; i < 3; i++) {
    if (top > static_cast<float>(reg.clip_max[i])) {
      list.push_back({format("max[%d]", i), top, static_cast<double>(reg.clip_max[i])});
    }
  }
  return list;
}

struct Result {
  vexo_csc csc;
  vexo_csc_reg reg;
  std::vector<Saturated> limits;
  float error;
};

void print_register(const char *name, short value) {
  std::printf("  %-10s 0x%04x  %6d\n", name, static_cast<unsigned>(static_cast<unsigned short>(value)), value);
}

void print_registers(const Result &r) {
  std::printf("Registers (16 bits, two's complement; gain 1/2048, offset 1/4 code)\n");
  for (int i = 0; i < 3; i++) {
    for (int j = 0; j < 3; j++) {
      print_register(format("gain[%d][%d]", i, j).c_str(), r.reg.gain[i][j]);
    }
  }
  for (int i = 0; i < 3; i++) {
    print_register(format("offset[%d]", i).c_str(), r.reg.offset[i]);
  }
  for (int i = 0; i < 3; i++) {
    print_register(format("max[%d]", i).c_str(), r.reg.clip_max[i]);
  }
  for (int i = 0; i < 3; i++) {
    print_register(format("min[%d]", i).c_str(), r.reg.clip_min[i]);
  }
  std::printf("Largest error of the registers over the corners of the input cube: %.4f output codes\n",
              static_cast<double>(r.error));
}

void print_text(const Job &job, const Result &r, bool registers) {
  std::printf("From    %s, %s\nTo      %s, %s\n", job.from.name.c_str(), job.from_space.name.c_str(),
              job.to.name.c_str(), job.to_space.name.c_str());
  for (int i = 0; i < 3; i++) {
    std::printf("%s  %14.8f %14.8f %14.8f\n", i == 0 ? "Matrix" : "      ", static_cast<double>(r.csc.matrix.d[i][0]),
                static_cast<double>(r.csc.matrix.d[i][1]), static_cast<double>(r.csc.matrix.d[i][2]));
  }
  std::printf("Offset  %14.6f %14.6f %14.6f\n", static_cast<double>(r.csc.offset.d[0]),
              static_cast<double>(r.csc.offset.d[1]), static_cast<double>(r.csc.offset.d[2]));
  if (registers) {
    print_registers(r);
  }
}

Json json_registers(const Result &r) {
  Json document;
  for (const auto &row : r.reg.gain) {
    document["gain"].push_back(row);
  }
  document["offset"] = r.reg.offset;
  document["clip_max"] = r.reg.clip_max;
  document["clip_min"] = r.reg.clip_min;
  document["saturated"] = Json::array();
  for (const Saturated &s : r.limits) {
    document["saturated"].push_back({{"register", s.name}, {"value", json_number(s.value)}, {"stored", s.stored}});
  }
  document["largest_error"] = json_number(r.error);
  return document;
}

void run(const Options &options) {
  const Job job = parse(options);
  Result result = {build(job), {}, {}, 0.0F};
  vexo_csc_float_reg(&result.csc, &result.reg);
  result.limits = saturated(result.csc, result.reg, job.to.bits);
  result.error = largest_error(result.csc, result.reg, job.from.bits);
  vexo_vector in = {};
  vexo_vector out = {};
  if (!options.apply.empty()) {
    in = out = parse_triple("--apply", options.apply);
    vexo_csc_transfrom(&result.csc, &out);
  }
  if (options.registers) {
    for (const Saturated &s : result.limits) {
      std::fprintf(stderr, "vexo: warning: %s: %g is beyond the register, which saturates at %g\n", s.name.c_str(),
                   static_cast<double>(s.value), s.stored);
    }
  }
  if (options.json) {
    Json document = {{"from", {{"signal", job.from.name}, {"space", job.from_space.name}}},
                     {"to", {{"signal", job.to.name}, {"space", job.to_space.name}}},
                     {"matrix", json_matrix(result.csc.matrix)},
                     {"offset", json_vector(result.csc.offset)},
                     {"registers", json_registers(result)}};
    if (!options.apply.empty()) {
      document["apply"] = {{"in", json_vector(in)}, {"out", json_vector(out)}};
    }
    print_json(document);
    return;
  }
  print_text(job, result, options.registers);
  if (!options.apply.empty()) {
    std::printf("Apply   %g %g %g gives %.6g %.6g %.6g\n", static_cast<double>(in.d[0]), static_cast<double>(in.d[1]),
                static_cast<double>(in.d[2]), static_cast<double>(out.d[0]), static_cast<double>(out.d[1]),
                static_cast<double>(out.d[2]));
  }
}

} // namespace

void add_csc(CLI::App &app) {
  const auto shared = std::make_shared<Options>();
  Options &options = *shared;
  CLI::App *command = app.add_subcommand("csc", "Build the conversion between two video signals");
  const std::string signal =
      "signal, FORMAT:RANGE:BITS[:ORDER]: rgb or ycbcr; video full extended smpte-full; 8 to 30; "
      "such as gbr or cbycr";
  command->add_option("FROM", options.from, "Input " + signal)->required();
  command->add_option("TO", options.to, "Output signal, likewise")->required();
  command->add_option("--space", options.space,
                      "Colour space of both: " + space_names() + ", or rx,ry,gx,gy,bx,by,wx,wy (default bt709)");
  command->add_option("--from-space", options.from_space, "Colour space of the input");
  command->add_option("--to-space", options.to_space, "Colour space of the output; whites are adapted (Bradford)");
  command->add_option("--hue", options.hue, "Rotation of the colour differences in degrees");
  command->add_option("--saturation", options.saturation, "Gain on the colour differences, on top of the contrast");
  command->add_option("--contrast", options.contrast, "Gain on luma and colour differences");
  command->add_option("--brightness", options.brightness, "Luma offset as a fraction of the luma span");
  command->add_option("--gain", options.gain, "Gains on R,G,B");
  command->add_option("--offset", options.offset, "Offsets on R,G,B as fractions of the RGB span");
  command->add_flag("--registers", options.registers, "Print the registers of the hardware converter as well");
  command->add_option("--apply", options.apply, "Convert the triple a,b,c of input codes");
  command->add_flag("--json", options.json, "Print everything as JSON");
  command->footer("Example: vexo csc rgb:full:10 ycbcr:video:10 --space bt2020 --registers");
  command->callback([shared] { run(*shared); });
}
