#include "file/lut1d-output.h"

#include <algorithm>

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

const Layout kLayouts[] = {{"integer", write_integer},
                           {"listing", write_listing},
                           {"listing-int", write_codes},
                           {"listing-int3", write_three_codes}};

} // namespace

std::vector<std::string> lut1d_output_layouts() { return names_of(kLayouts); }

bool holds_codes(const std::string &layout) { return find_name(kLayouts, layout)->write != write_listing; }

void write_luts(const Lut1dOutput &output, LutSet &luts) {
  const auto channel = std::find(kChannels, kChannels + 3, output.channel) - kChannels;
  OutputFile file(output.path);
  find_name(kLayouts, output.layout)->write(file.stream(), luts.get(), static_cast<int>(channel), output.bits);
  file.commit();
}
