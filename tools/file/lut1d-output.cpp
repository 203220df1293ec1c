#include "file/lut1d-output.h"

#include <algorithm>

#include "file/lut1d-cube.h"
#include "file/output.h"
#include "text/channels.h"
#include "text/grammar.h"

namespace {

struct Layout {
  const char *name;
  void (*write)(std::FILE *f, vexo_lut *luts, int channel, int bits);
};

void write_integer(std::FILE *f, vexo_lut *luts, int /*channel*/, int bits) { vexo_luts_store_int(f, luts, bits); }
void write_listing(std::FILE *f, vexo_lut *luts, int c, int /*bits*/) { vexo_lut_dump(f, luts + c, nullptr); }
void write_codes(std::FILE *f, vexo_lut *luts, int c, int bits) { vexo_lut_dump_int(f, luts + c, bits, nullptr); }
void write_three_codes(std::FILE *f, vexo_lut *luts, int /*channel*/, int bits) {
  vexo_lut_dump_int3(f, luts, bits, nullptr);
}

void write_fractions(std::FILE *f, vexo_lut *luts, int /*channel*/, int /*bits*/) { write_cube1d(f, luts); }

const Layout kLayouts[] = {{"integer", write_integer},
                           {"cube", write_fractions},
                           {"listing", write_listing},
                           {"listing-int", write_codes},
                           {"listing-int3", write_three_codes}};

} // namespace

std::vector<std::string> lut1d_output_layouts() { return names_of(kLayouts); }

bool holds_codes(const std::string &layout) {
  const Layout *known = find_name(kLayouts, layout);
  return known->write != write_listing && known->write != write_fractions;
}

std::string lut1d_layout_of(const std::string &path) { return has_extension(path, ".cube") ? "cube" : "integer"; }

void store_luts(std::FILE *f, const Lut1dOutput &output, LutSet &luts) {
  const auto channel = std::find(kChannels, kChannels + 3, output.channel) - kChannels;
  find_name(kLayouts, output.layout)->write(f, luts.get(), static_cast<int>(channel), output.bits);
}

void write_luts(const Lut1dOutput &output, LutSet &luts) {
  OutputFile file(output.path);
  store_luts(file.stream(), output, luts);
  file.commit();
}
