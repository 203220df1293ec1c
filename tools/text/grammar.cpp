#include "text/grammar.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <numeric>

#include "text/failure.h"
#include "text/text.h"

namespace {

struct NamedSpace {
  const char *name;
  float primaries[4][2]; // red, green, blue, white
};

const NamedSpace kSpaces[] = {
    {"bt709", {{0.640F, 0.330F}, {0.300F, 0.600F}, {0.150F, 0.060F}, {0.3127F, 0.3290F}}},
    {"bt2020", {{0.708F, 0.292F}, {0.170F, 0.797F}, {0.131F, 0.046F}, {0.3127F, 0.3290F}}},
    {"p3-dci", {{0.680F, 0.320F}, {0.265F, 0.690F}, {0.150F, 0.060F}, {0.3140F, 0.3510F}}}, // SMPTE RP 431-2
    {"p3-d65", {{0.680F, 0.320F}, {0.265F, 0.690F}, {0.150F, 0.060F}, {0.3127F, 0.3290F}}}, // SMPTE EG 432-1
    {"bt601-525", {{0.630F, 0.340F}, {0.310F, 0.595F}, {0.155F, 0.070F}, {0.3127F, 0.3290F}}},
    {"bt601-625", {{0.640F, 0.330F}, {0.290F, 0.600F}, {0.150F, 0.060F}, {0.3127F, 0.3290F}}},
    {"adobe", {{0.640F, 0.330F}, {0.210F, 0.710F}, {0.150F, 0.060F}, {0.3127F, 0.3290F}}}, // Adobe RGB (1998)
    {"srgb", {{0.640F, 0.330F}, {0.300F, 0.600F}, {0.150F, 0.060F}, {0.3127F, 0.3290F}}},  // IEC 61966-2-1
};

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

// Reads the components in the order they travel, each exactly once.
bool parse_order(const std::string &text, bool ycbcr, int order[3]) {
  const char *const names[2][3] = {{"r", "g", "b"}, {"y", "cb", "cr"}};
  size_t at = 0;
  bool seen[3] = {false, false, false};
  for (int i = 0; i < 3; i++) {
    int component = 0;
    while (component < 3 && (seen[component] || text.compare(at, std::string(names[ycbcr][component]).size(),
                                                             names[ycbcr][component]) != 0)) {
      component++;
    }
    if (component == 3) {
      return false;
    }
    seen[component] = true;
    order[i] = component;
    at += std::string(names[ycbcr][component]).size();
  }
  return at == text.size();
}

size_t edit_distance(const std::string &a, const std::string &b) {
  std::vector<size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), size_t{0});
  for (size_t i = 1; i <= a.size(); i++) {
    size_t diagonal = row[0];
    row[0] = i;
    for (size_t j = 1; j <= b.size(); j++) {
      const size_t above = row[j];
      row[j] = std::min({above + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
      diagonal = above;
    }
  }
  return row[b.size()];
}

} // namespace

std::optional<float> finite_number(const std::string &text) {
  float value = 0.0F;
  const char *first = text.data() + (text.size() > 1 && text[0] == '+' && text[1] != '-' ? 1 : 0);
  const char *last = text.data() + text.size();
  const auto [end, error] = std::from_chars(first, last, value);
  if (error != std::errc() || end != last || !std::isfinite(value)) {
    return std::nullopt;
  }
  return value;
}

std::vector<std::string> split(const std::string &text, char separator) {
  std::vector<std::string> parts;
  for (size_t begin = 0; begin <= text.size();) {
    const size_t end = std::min(text.find(separator, begin), text.size());
    parts.push_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  return parts;
}

std::string lower(std::string text) {
  for (char &c : text) {
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  return text;
}

std::vector<float> number_list(const std::string &text) {
  std::vector<float> values;
  for (const std::string &part : split(text, ',')) {
    const auto value = finite_number(part);
    if (!value) {
      return {};
    }
    values.push_back(*value);
  }
  return values;
}

void reject(const std::string &option, const std::string &text, const std::string &expected,
            const std::vector<std::string> &names) {
  const std::string meant = nearest(text, names);
  throw Failure(kUsageError, option + " '" + text + "': expected " + expected +
                                 (meant.empty() ? "" : "; did you mean " + meant + "?"));
}

int parse_integer(const std::string &option, const std::string &text, int min, int max) {
  int value = 0;
  const char *last = text.data() + text.size();
  const auto [end, error] = std::from_chars(text.data(), last, value);
  if (error != std::errc() || end != last || value < min || value > max) {
    reject(option, text, "a whole number from " + std::to_string(min) + " to " + std::to_string(max));
  }
  return value;
}

float parse_number(const std::string &option, const std::string &text) {
  const auto value = finite_number(text);
  if (!value) {
    reject(option, text, "a number, with a decimal point");
  }
  return *value;
}

float parse_positive(const std::string &option, const std::string &text) {
  const auto value = finite_number(text);
  if (!value || !(*value > 0.0F)) {
    reject(option, text, "a number above 0, with a decimal point");
  }
  return *value;
}

float parse_not_negative(const std::string &option, const std::string &text) {
  const auto value = finite_number(text);
  if (!value || !(*value >= 0.0F)) {
    reject(option, text, "a number not below 0, with a decimal point");
  }
  return *value;
}

std::string parse_name(const std::string &option, const std::string &text, const std::vector<std::string> &names) {
  if (std::find(names.begin(), names.end(), text) == names.end()) {
    reject(option, text, "one of " + join(names), names);
  }
  return text;
}

bool scan_triple(const std::string &text, vexo_vector *v) {
  const auto after_blanks = [&](size_t at) { return std::min(text.find_first_not_of(" \t\r", at), text.size()); };
  size_t at = after_blanks(0);
  for (int i = 0; i < 3; i++) {
    if (i > 0 && at < text.size() && text[at] == ',') {
      at = after_blanks(at + 1);
    }
    const size_t end = std::min(text.find_first_of(" \t\r,", at), text.size());
    const auto value = finite_number(text.substr(at, end - at));
    if (!value) {
      return false;
    }
    v->d[i] = *value;
    at = after_blanks(end);
  }
  return at == text.size();
}

vexo_vector parse_triple(const std::string &option, const std::string &text) {
  const std::vector<float> values = number_list(text);
  if (values.size() != 3) {
    reject(option, text, "three numbers separated by commas, with decimal points");
  }
  return vexo_vector{{values[0], values[1], values[2]}};
}

Space parse_space(const std::string &option, const std::string &text) {
  Space space = {text, {}};
  float primaries[4][2];
  if (const NamedSpace *named = find_name(kSpaces, text)) {
    space.name = named->name;
    std::copy_n(&named->primaries[0][0], 8, &primaries[0][0]);
  } else {
    const std::vector<float> values = number_list(text);
    if (values.size() != 8) {
      reject(option, text, "one of " + space_names() + ", or the chromaticities rx,ry,gx,gy,bx,by,wx,wy",
             names_of(kSpaces));
    }
    std::copy_n(values.data(), 8, &primaries[0][0]);
  }
  if (vexo_cs_init(&space.cs, primaries) != 0) {
    reject(option, text, "primaries that span a triangle and a white with y above 0");
  }
  return space;
}

Signal parse_signal(const std::string &option, const std::string &text) {
  const std::string expected = "FORMAT:RANGE:BITS[:ORDER], such as ycbcr:video:10 or rgb:full:12:gbr";
  const std::vector<std::string> parts = split(lower(text), ':');
  if (parts.size() < 3 || parts.size() > 4 || (parts[0] != "rgb" && parts[0] != "ycbcr")) {
    reject(option, text, expected);
  }
  Signal signal = {text, parts[0] == "ycbcr", RGB_GRAPHIC_RANGE, 0, {0, 1, 2}};
  const auto range = std::find_if(std::begin(kRanges), std::end(kRanges),
                                  [&](const NamedRange &r) { return r.ycbcr == signal.ycbcr && parts[1] == r.name; });
  if (range == std::end(kRanges)) {
    const std::string meant = nearest(parts[1], names_of(kRanges));
    reject(option, text, "a range of video full extended smpte-full (graphic is the RGB name of full)" +
                             (meant.empty() ? "" : "; did you mean " + meant + "?"));
  }
  signal.range = range->range;
  signal.bits = parse_integer(option + " bits", parts[2], 8, 30);
  if (parts.size() == 4 && !parse_order(parts[3], signal.ycbcr, signal.order)) {
    reject(option, text,
           signal.ycbcr ? "an order of y, cb and cr, such as cbycr" : "an order of r, g and b, such as gbr");
  }
  return signal;
}

std::string space_names() { return join(names_of(kSpaces)); }

std::string nearest(const std::string &text, const std::vector<std::string> &candidates) {
  std::string best;
  size_t best_distance = std::max<size_t>(1, text.size() / 3) + 1;
  for (const std::string &candidate : candidates) {
    const size_t distance = edit_distance(lower(text), lower(candidate));
    if (distance < best_distance) {
      best = candidate;
      best_distance = distance;
    }
  }
  return best;
}
