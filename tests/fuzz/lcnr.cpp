// The LCNR reader: what is stored reads back to the same text, and the two judges of falling rows agree.
#include "fuzz.h"
#include "vexo.h"

namespace {

std::string stored(vexo_lcnr *lcnr) {
  MemoryFile file("");
  require(vexo_store_lcnr_xml(lcnr, file.path().c_str()) == 0, "a record is stored");
  return file.contents();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const MemoryFile file(text_of(data, size));
  vexo_lcnr lcnr = {};
  const int status = vexo_load_lcnr_xml(&lcnr, file.path().c_str());
  require(status == 0 || status == -1, "status");
  require(lcnr.num >= 0 && lcnr.num <= 64, "rows");
  const std::string text = stored(&lcnr);
  const MemoryFile copy(text);
  vexo_lcnr again = {};
  require(vexo_load_lcnr_xml(&again, copy.path().c_str()) == 0, "what was stored is read");
  require(again.num == lcnr.num && stored(&again) == text, "what was stored reads back");
  const bool falls = vexo_lcnr_sanity_check(&lcnr) != 0;
  require((vexo_lcnr_normalize(&lcnr) > 0) == falls, "rows fall where rows are lowered");
  require(vexo_lcnr_sanity_check(&lcnr) == 0, "normalised rows rise");
  return 0;
}
