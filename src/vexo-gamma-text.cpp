// Text files of 1D LUTs: the integer writer and the listings, the two three-channel readers and the column reader.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "base/codes.h"
#include "base/lines.h"
#include "base/locale.h"
#include "base/numbers.h"
#include "vexo-gamma-readers.h"

using vexo_internal::Collector;
using vexo_internal::kNumberRoom;
using vexo_internal::max_code;
using vexo_internal::NumberLocale;
using vexo_internal::put_integer;
using vexo_internal::put_line;
using vexo_internal::quantise;
using vexo_internal::Remark;
using vexo_internal::remark;
using vexo_internal::tell;
using vexo_internal::valid_depth;

// ---- Writers

namespace {

using ListingLine = char[4 * kNumberRoom];

// The codes of entry i of three tables, a line "%*d %*d %*d\n".
char *put_codes(char *text, const vexo_lut *lut, int i, float max_value, int width) {
  for (int c = 0; c < 3; c++) {
    text = put_integer(text, quantise(lut[c].d[i], max_value), width);
    *text++ = c < 2 ? ' ' : '\n';
  }
  return text;
}

} // namespace

int vexo_lut_dump(FILE *f, vexo_lut *lut, char *prefix) {
  const NumberLocale locale;
  if (prefix != nullptr) {
    fprintf(f, "%s LUT(%d):\n", prefix, lut->size);
  } else {
    fprintf(f, "LUT(%d):\n", lut->size);
  }
  const double last = std::max(static_cast<double>(lut->size) - 1.0, 1.0); // a single entry is at input 0
  for (int i = 0; i < lut->size; i++) {
    const double input = static_cast<double>(static_cast<float>(i)) / last;
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
  for (int i = 0; i < lut->size; i++) {
    ListingLine line;
    char *end = put_integer(line, quantise(lut->d[i], max_value), 5);
    *end++ = '\t';
    *end++ = '#';
    end = put_integer(end, i, 5);
    *end++ = ',';
    *end++ = '\n';
    put_line(f, line, end);
  }
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
  for (int i = 0; i < lut[0].size; i++) {
    ListingLine line;
    memcpy(line, "\t[", 2);
    char *end = put_integer(line + 2, i, 4);
    memcpy(end, "] - ", 4);
    put_line(f, line, put_codes(end + 4, lut, i, max_value, 8));
  }
}

int vexo_luts_store_int(FILE *f, vexo_lut *lut, int nbits) {
  if (!valid_depth(nbits)) {
    return -1;
  }
  fprintf(f, "LUT_1D_SIZE %d\nLUT_1D_BITS %d\n", lut[0].size, nbits);
  const float max_value = max_code(nbits);
  for (int i = 0; i < lut[0].size; i++) {
    ListingLine line;
    put_line(f, line, put_codes(line, lut, i, max_value, 5));
  }
  return 0;
}

// ---- Three-channel files: a header or none, then a line of three codes per entry

namespace {

// What distinguishes the two readers.
struct Layout {
  int nbits;         // depth of a file without a bits line
  bool size_is_log2; // the size line gives the base-2 logarithm
};

const Layout kIntegerFile = {16, false};
const Layout kDecimalFile = {8, true};

const int kDefaultSize = 1024; // entries of a file without a size line

struct Header {
  int size;
  int nbits;
};

using LutLines = vexo_internal::StreamLines<1024>;

// The low 32 bits of a number, as %d takes it.
int low_int(long long number) { return static_cast<int>(static_cast<uint32_t>(number)); }

// Reads the header and goes on to the first line behind it. False when there is none.
bool read_header(LutLines *lines, const Layout &layout, Header *header, const Collector *collector) {
  long long size = kDefaultSize;
  long long nbits = layout.nbits;
  if (!lines->next()) {
    return false;
  }
  const bool has_size = sscanf(lines->text(), "LUT_1D_SIZE %lld", &size) == 1;
  if (has_size && !tell(collector, remark(Remark::size, *lines, size, 0))) {
    return false;
  }
  header->size = low_int(size);
  if (has_size && layout.size_is_log2) {
    if (header->size < 0 || header->size > 30) {
      return false;
    }
    header->size = 1 << header->size;
  }
  if (has_size && !lines->next()) {
    return false;
  }
  const bool has_bits = has_size && sscanf(lines->text(), "LUT_1D_BITS %lld", &nbits) == 1;
  header->nbits = low_int(nbits);
  return tell(collector, has_bits ? remark(Remark::bits, *lines, nbits, header->size)
                                  : Remark{Remark::no_bits, 0, "", nbits, header->size}) &&
         (!has_bits || lines->next());
}

// Integer codes are the low 32 bits, as %u takes them: a minus sign wraps.
float value_of(unsigned long long code, float max_value) {
  return static_cast<float>(static_cast<uint32_t>(code)) / max_value;
}
float value_of(float code, float max_value) { return code / max_value; }

// The number as written, with its sign.
float as_written(unsigned long long code) { return static_cast<float>(static_cast<long long>(code)); }
float as_written(float code) { return code; }

// Reads entry i from the line in hand. A line without three codes leaves it as it is. False when the collector has
// heard enough.
template <typename Code>
bool read_entry(const LutLines &lines, vexo_lut *lut, int i, float max_value, const Collector *collector) {
  Code codes[3];
  const char *rest = vexo_internal::scan_all(lines.text(), lines.limit(), codes);
  if (rest == nullptr) {
    return tell(collector, remark(Remark::passed_over, lines, i, lut->size));
  }
  for (int c = 0; c < 3; c++) {
    lut[c].d[i] = value_of(codes[c], max_value);
  }
  if (collector == nullptr) {
    return true;
  }
  const float values[] = {as_written(codes[0]), as_written(codes[1]), as_written(codes[2])};
  return tell(collector, {Remark::entry, lines.number(), rest, i, lut->size, values});
}

template <typename Code> int read_luts(FILE *f, vexo_lut *lut, const Layout &layout, const Collector *collector) {
  const NumberLocale locale;
  LutLines lines(f);
  Header header;
  if (!read_header(&lines, layout, &header, collector) || !valid_depth(header.nbits)) {
    return -1;
  }
  for (int c = 0; c < 3; c++) {
    if (vexo_lut_init_zero(&lut[c], header.size) != 0) {
      return -1;
    }
  }
  const float max_value = max_code(header.nbits);
  bool more = true;
  for (int i = 0; i < header.size; i++) {
    if (!more) {
      tell(collector, {Remark::too_few, 0, "", i, header.size});
      return -1;
    }
    if (!read_entry<Code>(lines, lut, i, max_value, collector)) {
      return -1;
    }
    more = lines.next(); // after the last entry, too
  }
  more = more && collector != nullptr;
  while (more) {
    more = tell(collector, remark(Remark::too_many, lines, header.size, header.size)) && lines.next();
  }
  return 0;
}

} // namespace

int vexo_internal::read_integer_luts(FILE *f, vexo_lut *lut, const Collector *collector) {
  return read_luts<unsigned long long>(f, lut, kIntegerFile, collector);
}

int vexo_internal::read_decimal_luts(FILE *f, vexo_lut *lut, const Collector *collector) {
  return read_luts<float>(f, lut, kDecimalFile, collector);
}

int vexo_luts_load_int(FILE *f, vexo_lut *lut) { return vexo_internal::read_integer_luts(f, lut, nullptr); }

int vexo_luts_load_file(FILE *f, vexo_lut *lut) { return vexo_internal::read_decimal_luts(f, lut, nullptr); }

// ---- Columns: lines of one number, which are made to rise from 0 to 1

namespace {

using ColumnLines = vexo_internal::StreamLines<128>;

const int kColumnLimit = 1024; // numbers read

// Goes on to the next line that begins with a number. Gives what follows the number; null at the end, or when the
// collector has heard enough of lines passed over.
const char *next_number(ColumnLines *lines, int count, float *number, const Collector *collector) {
  while (lines->next()) {
    const char *rest = vexo_internal::scan(lines->text(), lines->limit(), number);
    if (rest != nullptr) {
      return rest;
    }
    if (!tell(collector, remark(Remark::passed_over, *lines, count, kColumnLimit))) {
      break;
    }
  }
  return nullptr;
}

} // namespace

int vexo_internal::read_column(FILE *f, vexo_lut *lut, const Collector *collector) {
  const NumberLocale locale;
  ColumnLines lines(f);
  float column[kColumnLimit];
  int count = 0;
  while (count < kColumnLimit) {
    float *number = &column[count];
    const char *rest = next_number(&lines, count, number, collector);
    if (rest == nullptr) {
      break;
    }
    if (!tell(collector, {Remark::entry, lines.number(), rest, count, kColumnLimit, number})) {
      return -1;
    }
    count++;
  }
  float surplus = 0.0F;
  bool more = collector != nullptr && count == kColumnLimit;
  while (more) {
    more = next_number(&lines, count, &surplus, collector) != nullptr &&
           tell(collector, remark(Remark::too_many, lines, count, kColumnLimit));
  }
  if (vexo_lut_data_normalize(column, count) != 0 || vexo_lut_init(lut, count) != 0) {
    return -1;
  }
  vexo_lut_set_data(lut, column);
  return 0;
}

int vexo_lut_load_custom(FILE *f, vexo_lut *lut) { return vexo_internal::read_column(f, lut, nullptr); }
