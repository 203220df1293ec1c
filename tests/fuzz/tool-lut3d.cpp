// 3D LUT files as the tool reads them: what its judgement accepts, the library reads. The first byte tells the format.
#include "file/lut3d.h"
#include "tool.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const char *const formats[] = {"cube", "dat", "eecolor", "cfe"};
  const unsigned choice = size > 0 ? data[0] : 0U;
  const MemoryFile file(size > 0 ? text_of(data + 1, size - 1) : "");
  Lut3dInput input;
  input.path = file.path();
  input.format = formats[choice % 4];
  input.size = static_cast<int>(choice / 4 % 8);
  input.max_size = 32;
  input.strict = choice >= 128;
  accepted([&] {
    const Lut3dFile read = read_lut3d(input);
    const int points = vexo_3dlut_size(read.lut.get());
    require(points >= 1 && points <= input.max_size, "a size within the limit");
    require(input.size == 0 || input.format != std::string("eecolor") || points == input.size, "the size asked for");
    require(!input.strict || read.warnings.empty(), "strict reading has no warnings");
  });
  return 0;
}
