#include "signal/signal.h"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <vector>

#include "text/grammar.h"
#include "text/hints.h"

namespace {

struct NamedRange {
  const char *name;
  bool ycbcr;
  color_range range;
};

const NamedRange kRanges[] = {
    {"video", false, RGB_VIDEO_RANGE},
    {"video", true, YCBCR_VIDEO_RANGE},
    {"full", false, RGB_GRAPHIC_RANGE},
    {"graphic", false, RGB_GRAPHIC_RANGE},
    {"full", true, YCBCR_FULL_RANGE},
    {"extended", false, RGB_EXTENDED_RANGE},
    {"extended", true, YCBCR_EXTENDED_RANGE},
    {"smpte-full", false, RGB_SMPTE_FULL_RANGE},
    {"smpte-full", true, YCBCR_SMPTE_FULL_RANGE},
};

const std::string kComponents[2][3] = {{"r", "g", "b"}, {"y", "cb", "cr"}};

// Finds the order in which the text names the components. Returns whether it names each exactly once.
bool parse_order(const std::string &text, bool ycbcr, int (&order)[3]) {
  const std::string *name = kComponents[ycbcr ? 1 : 0];
  std::iota(order, order + 3, 0);
  do {
    if (text == name[order[0]] + name[order[1]] + name[order[2]]) {
      return true;
    }
  } while (std::next_permutation(order, order + 3));
  return false;
}

} // namespace

Signal parse_signal(const std::string &option, const std::string &text) {
  const std::vector<std::string> parts = split(lower(text), ':');
  if (parts.size() < 3 || parts.size() > 4 || (parts[0] != "rgb" && parts[0] != "ycbcr")) {
    reject(option, text, "FORMAT:RANGE:BITS[:ORDER], such as ycbcr:video:10 or rgb:full:12:gbr");
  }
  Signal signal = {text, parts[0] == "ycbcr", RGB_GRAPHIC_RANGE, 0, {0, 1, 2}};
  const auto range = std::find_if(std::begin(kRanges), std::end(kRanges),
                                  [&](const NamedRange &r) { return r.ycbcr == signal.ycbcr && parts[1] == r.name; });
  if (range == std::end(kRanges)) {
    reject(option, text,
           "a range of video full extended smpte-full (graphic is the RGB name of full)" +
               hint(parts[1], names_of(kRanges)));
  }
  signal.range = range->range;
  signal.bits = parse_integer(option + " bits", parts[2], 8, 30);
  if (parts.size() == 4 && !parse_order(parts[3], signal.ycbcr, signal.order)) {
    reject(option, text,
           signal.ycbcr ? "an order of y, cb and cr, such as cbycr" : "an order of r, g and b, such as gbr");
  }
  return signal;
}
