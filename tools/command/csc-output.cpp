#include "command/csc-output.h"

#include <cstdio>

#include "text/format.h"

namespace {

void print_signal(const char *title, const SignalInSpace &side) {
  std::printf("%-7s %s, %s", title, side.signal.name.c_str(), side.space.name.c_str());
  if (side.signal.ycbcr) {
    const auto &luma = side.space.cs.npm.d[1];
    std::printf(", luma %.4f %.4f %.4f", luma[0], luma[1], luma[2]);
  }
  std::printf("\n");
}

Json json_of(const SignalInSpace &side) {
  Json document = {{"signal", side.signal.name}, {"space", side.space.name}};
  if (side.signal.ycbcr) {
    const auto &luma = side.space.cs.npm.d[1];
    document["luma"] = json_vector({{luma[0], luma[1], luma[2]}});
  }
  return document;
}

void print_registers(const Registers &registers) {
  const auto print = [](const std::string &name, short value) {
    std::printf("  %-10s 0x%04x  %6d\n", name.c_str(), static_cast<unsigned>(static_cast<unsigned short>(value)),
                value);
  };
  std::printf("Registers (16 bits, two's complement; gain 1/2048, offset 1/4 code)\n");
  for (int i = 0; i < 3; i++) {
    for (int j = 0; j < 3; j++) {
      print(format("gain[%d][%d]", i, j), registers.codes.gain[i][j]);
    }
  }
  const auto print_three = [&](const char *name, const short(&values)[3]) {
    for (int i = 0; i < 3; i++) {
      print(format("%s[%d]", name, i), values[i]);
    }
  };
  print_three("offset", registers.codes.offset);
  print_three("max", registers.codes.clip_max);
  print_three("min", registers.codes.clip_min);
  std::printf("Largest error of the registers over the corners of the input cube: %.4f output codes\n",
              registers.largest_error);
}

Json json_of(const Registers &registers) {
  Json document;
  for (const auto &row : registers.codes.gain) {
    document["gain"].push_back(row);
  }
  document["offset"] = registers.codes.offset;
  document["clip_max"] = registers.codes.clip_max;
  document["clip_min"] = registers.codes.clip_min;
  document["saturated"] = Json::array();
  for (const SaturatedRegister &s : registers.saturated) {
    document["saturated"].push_back({{"register", s.name}, {"value", json_number(s.value)}, {"stored", s.stored}});
  }
  document["largest_error"] = json_number(registers.largest_error);
  return document;
}

} // namespace

void print_text(const CscResult &r, bool registers) {
  print_signal("From", r.from);
  print_signal("To", r.to);
  const char *title = "Matrix";
  for (const auto &row : r.conversion.matrix.d) {
    std::printf("%-6s  %14.8f %14.8f %14.8f\n", title, row[0], row[1], row[2]);
    title = "";
  }
  const auto &offset = r.conversion.offset.d;
  std::printf("Offset  %14.6f %14.6f %14.6f\n", offset[0], offset[1], offset[2]);
  if (registers) {
    print_registers(r.registers);
  }
  if (r.applied) {
    const auto &in = r.applied->in.d;
    const auto &out = r.applied->out.d;
    std::printf("Apply   %g %g %g gives %.6g %.6g %.6g\n", in[0], in[1], in[2], out[0], out[1], out[2]);
  }
  if (r.effect) {
    std::printf("Leaves  CIEDE2000 mean %.2f, worst %.2f at 24 colours, if the channels add; without the conversion "
                "%.2f, %.2f\n",
                r.effect->with.mean, r.effect->with.worst, r.effect->without.mean, r.effect->without.worst);
  }
}

Json json_of(const CscResult &r) {
  Json document = {{"from", json_of(r.from)},
                   {"to", json_of(r.to)},
                   {"matrix", json_matrix(r.conversion.matrix)},
                   {"offset", json_vector(r.conversion.offset)},
                   {"registers", json_of(r.registers)}};
  if (r.applied) {
    document["apply"] = {{"in", json_vector(r.applied->in)}, {"out", json_vector(r.applied->out)}};
  }
  if (r.effect) {
    const auto json = [](const Spread &s) { return Json{{"mean", s.mean}, {"worst", s.worst}}; };
    document["colours"] = {{"without", json(r.effect->without)}, {"with", json(r.effect->with)}};
  }
  return document;
}
