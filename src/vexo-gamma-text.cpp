// One-dimensional LUT text files: the three-channel and the one-column readers, the integer writer and the listings.
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "base/codes.h"
#include "base/lines.h"
#include "base/locale.h"
#include "base/numbers.h"
#include "vexo-gamma.h"

using vexo_internal::LineWriter;
using vexo_internal::max_code;
using vexo_internal::NumberLocale;
using vexo_internal::put_integer;
using vexo_internal::quantise;
using vexo_internal::valid_depth;

namespace {

const int kDefaultSize = 1024; // entries of a file without a size line
const int kIntegerDepth = 16;  // depth of an integer file without a bits line
const int kDecimalDepth = 8;   // depth of a decimal file without a bits line
const int kColumnLimit = 1024; // numbers read from a one-column file

// The codes of entry i of three tables, a line "%*d %*d %*d\n".
char *put_codes(char *text, const vexo_lut *lut, int i, float max_value, int width) {
  for (int c = 0; c < 3; c++) {
    text = put_integer(text, quantise(lut[c].d[i], max_value), width);
    *text++ = c < 2 ? ' ' : '\n';
  }
  return text;
}

// What distinguishes the two three-channel readers.
struct TextLayout {
  int nbits;         // default depth
  bool size_is_log2; // the size line gives the base-2 logarithm
};

// Unsigned integers as %u takes them: a minus sign wraps, and the low 32 bits count on every host.
bool scan_codes(const char *line, uint32_t (&codes)[3]) {
  unsigned long long wide[3];
  if (sscanf(line, "%llu %llu %llu", &wide[0], &wide[1], &wide[2]) != 3) {
    return false;
  }
  for (int c = 0; c < 3; c++) {
    codes[c] = static_cast<uint32_t>(wide[c]);
  }
  return true;
}

bool scan_codes(const char *line, float (&codes)[3]) {
  return sscanf(line, "%f %f %f", &codes[0], &codes[1], &codes[2]) == 3;
}

const TextLayout kIntegerFile = {kIntegerDepth, false};
const TextLayout kDecimalFile = {kDecimalDepth, true};

// The number of a header line "KEYWORD number", low 32 bits, as %d takes it.
bool header_number(const char *line, const char *format, int *number) {
  long long wide = 0;
  if (sscanf(line, format, &wide) != 1) {
    return false;
  }
  *number = static_cast<int>(static_cast<uint32_t>(wide));
  return true;
}

using StreamLines = vexo_internal::StreamLines<1024>;

enum class Line { none, other, codes };

// The codes of a line, if it holds three.
template <typename Code> Line read_codes(const char *line, Code (&codes)[3]) {
  const char *limit = line + strlen(line) + 1;
  return vexo_internal::read_numbers(line, limit, codes) != nullptr || scan_codes(line, codes) ? Line::codes
                                                                                               : Line::other;
}

// The same for the next line of the stream.
template <typename Code> Line next_codes(StreamLines *lines, Code (&codes)[3]) {
  if (lines->take(codes)) {
    return Line::codes;
  }
  const char *line = lines->next();
  return line != nullptr ? read_codes(line, codes) : Line::none;
}

template <typename Code> int load_three_channels(FILE *f, vexo_lut *lut, const TextLayout &layout) {
  const NumberLocale locale;
  StreamLines lines(f);
  int size = kDefaultSize;
  int nbits = layout.nbits;
  const char *line = lines.next();
  if (line == nullptr) {
    return -1;
  }
  if (header_number(line, "LUT_1D_SIZE %lld", &size)) {
    if (layout.size_is_log2) {
      if (size < 0 || size > 30) {
        return -1;
      }
      size = 1 << size;
    }
    line = lines.next();
    if (line == nullptr) {
      return -1;
    }
    if (header_number(line, "LUT_1D_BITS %lld", &nbits)) {
      line = lines.next();
      if (line == nullptr) {
        return -1;
      }
    }
  }
  if (!valid_depth(nbits)) {
    return -1;
  }
  for (int c = 0; c < 3; c++) {
    if (vexo_lut_init_zero(&lut[c], size) != 0) {
      return -1;
    }
  }
  const float max_value = max_code(nbits);
  if (size <= 0) {
    return 0;
  }
  Code codes[3];
  Line found = read_codes(line, codes);
  for (int i = 0; i < size; i++) {
    if (found == Line::none) {
      return -1;
    }
    if (found == Line::codes) {
      for (int c = 0; c < 3; c++) {
        lut[c].d[i] = static_cast<float>(codes[c]) / max_value;
      }
    }
    found = next_codes(&lines, codes); // after the last entry, too
  }
  return 0;
}

} // namespace

int vexo_lut_dump(FILE *f, vexo_lut *lut, char *prefix) {
  if (lut->size == 1) {
    return -1;
  }
  const NumberLocale locale;
  if (prefix != nullptr) {
    fprintf(f, "%s LUT(%d):\n", prefix, lut->size);
  } else {
    fprintf(f, "LUT(%d):\n", lut->size);
  }
  for (int i = 0; i < lut->size; i++) {
    const double input = static_cast<double>(static_cast<float>(i)) / (static_cast<double>(lut->size) - 1.0);
    fprintf(f, "\t[%4d(%8lf)] - %.10lf\n", i, input, static_cast<double>(lut->d[i]));
  }
  return 0;
}

void vexo_lut_dump_int(FILE *f, vexo_lut *lut, int nbits, char *title) {
  if (!valid_depth(nbits)) {
    return;
  }
  if (title != nullptr) {
    fprintf(f, "TITLE: %s\n", title);
  }
  fprintf(f, "LUT_1D_SIZE %d\nLUT_1D_BITS %d\n", lut->size, nbits);
  const float max_value = max_code(nbits);
  LineWriter lines(f);
  for (int i = 0; i < lut->size; i++) {
    char *text = put_integer(lines.line(), quantise(lut->d[i], max_value), 5);
    *text++ = '\t';
    *text++ = '#';
    text = put_integer(text, i, 5);
    *text++ = ',';
    *text++ = '\n';
    lines.add(text);
  }
  lines.finish();
}

void vexo_lut_dump_int3(FILE *f, vexo_lut *lut, int nbits, char *prefix) {
  if (!valid_depth(nbits)) {
    return;
  }
  if (prefix != nullptr) {
    fprintf(f, "%s LUT(%d x %d):\n", prefix, lut[0].size, nbits);
  } else {
    fprintf(f, "LUT(%d x %d):\n", lut[0].size, nbits);
  }
  const float max_value = max_code(nbits);
  LineWriter lines(f);
  for (int i = 0; i < lut[0].size; i++) {
    char *text = lines.line();
    *text++ = '\t';
    *text++ = '[';
    text = put_integer(text, i, 4);
    memcpy(text, "] - ", 4);
    lines.add(put_codes(text + 4, lut, i, max_value, 8));
  }
  lines.finish();
}

int vexo_luts_store_int(FILE *f, vexo_lut *lut, int nbits) {
  if (!valid_depth(nbits)) {
    return -1;
  }
  fprintf(f, "LUT_1D_SIZE %d\nLUT_1D_BITS %d\n", lut[0].size, nbits);
  const float max_value = max_code(nbits);
  LineWriter lines(f);
  for (int i = 0; i < lut[0].size; i++) {
    lines.add(put_codes(lines.line(), lut, i, max_value, 5));
  }
  lines.finish();
  return 0;
}

int vexo_luts_load_int(FILE *f, vexo_lut *lut) { return load_three_channels<uint32_t>(f, lut, kIntegerFile); }

int vexo_luts_load_file(FILE *f, vexo_lut *lut) { return load_three_channels<float>(f, lut, kDecimalFile); }

int vexo_lut_load_custom(FILE *f, vexo_lut *lut) {
  const NumberLocale locale;
  float column[kColumnLimit];
  char line[128];
  int count = 0;
  while (count < kColumnLimit && fgets(line, sizeof line, f) != nullptr) {
    if (sscanf(line, "%f", &column[count]) == 1) {
      count++;
    }
  }
  if (vexo_lut_data_normalize(column, count) != 0 || vexo_lut_init(lut, count) != 0) {
    return -1;
  }
  vexo_lut_set_data(lut, column);
  return 0;
}
