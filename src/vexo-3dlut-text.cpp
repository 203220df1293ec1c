// Text files of 3D LUTs: cube, cfe and eeColor, COE memory images, and listings. Nodes are single precision; codes are
// formed in single precision.
#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "base/codes.h"
#include "base/lines.h"
#include "base/locale.h"
#include "base/numbers.h"
#include "base/owners.h"
#include "vexo-3dlut-readers.h"
#include "vexo-3dlut-table.h"
#include "vexo-3dlut-words.h"

using vexo_internal::Coding;
using vexo_internal::Collector;
using vexo_internal::node_count;
using vexo_internal::NumberLocale;
using vexo_internal::OwnedFile;
using vexo_internal::OwnedTable;
using vexo_internal::put_integer;
using vexo_internal::put_line;
using vexo_internal::Remark;
using vexo_internal::remark;
using vexo_internal::tell;
using vexo_internal::TextLines;

// ---- Lines of entries

namespace {

using FileLines = vexo_internal::StreamLines<256>;

// Goes on to the next line that begins with so many numbers and reads them. False at the end, or when the collector has
// heard enough of lines passed over.
template <typename Lines, size_t kNumbers>
bool next_numbers(Lines *lines, const Collector *collector, size_t entries, float (&numbers)[kNumbers]) {
  while (lines->next()) {
    if (vexo_internal::scan_all(lines->text(), lines->limit(), numbers) != nullptr) {
      return true;
    }
    if (!tell(collector, remark(Remark::passed_over, *lines, static_cast<long long>(entries), 0))) {
      return false;
    }
  }
  return false;
}

// Reads a table from lines of so many numbers, the last three of which are a node; other lines are passed over. Where
// there is no memory for it, a collector still hears what is wrong with the file.
template <size_t kNumbers, typename Lines>
vexo_3dlut *read_nodes(Lines *lines, int size, const char *title, const Collector *collector) {
  const size_t count = node_count(size);
  OwnedTable lut = vexo_internal::new_table(size, title);
  if (count == 0 || (lut == nullptr && collector == nullptr)) {
    return nullptr;
  }
  const auto expected = static_cast<long long>(count);
  float numbers[kNumbers];
  for (size_t i = 0; i < count; i++) {
    if (!next_numbers(lines, collector, i, numbers)) {
      tell(collector, remark(Remark::too_few, *lines, static_cast<long long>(i), expected));
      return nullptr;
    }
    if (lut != nullptr) {
      memcpy(lut->d[i].d, numbers + kNumbers - 3, sizeof lut->d[i].d);
    }
  }
  bool more = collector != nullptr;
  while (more) {
    more = next_numbers(lines, collector, count, numbers) &&
           tell(collector, remark(Remark::too_many, *lines, expected, expected));
  }
  return lut.release();
}

// The sum of what printf calls returned.
int characters(long long sum) { return static_cast<int>(std::clamp<long long>(sum, INT_MIN, INT_MAX)); }

} // namespace

// ---- Cube and cfe: lines with keywords, the last of which tells the size, then lines of three numbers

namespace {

using Title = char[256];

// What the lines before the entries say, with the title of a file that has none.
struct CubeHeader {
  Title title = "cube";
  long long size = 0;
};

const char kTitle[] = "TITLE";
const char kSize[] = "LUT_3D_SIZE";

// What follows the first occurrence of the keyword, or null.
const char *after(const char *line, const char *keyword) {
  const char *found = strstr(line, keyword);
  return found != nullptr ? found + strlen(keyword) : nullptr;
}

// Reads the quoted text after the keyword; the closing quote may be missing.
bool read_title(const char *line, Title &title) {
  const char *text = after(line, kTitle);
  if (text == nullptr) {
    return false;
  }
  text += strspn(text, " \t\n\v\f\r");
  if (*text != '"') {
    return false;
  }
  text++;
  const size_t length = std::min(strcspn(text, "\"\n"), sizeof title - 1);
  memcpy(title, text, length);
  title[length] = '\0';
  return true;
}

// Reads the number after the keyword.
bool read_size(const char *line, long long *size) {
  const char *text = after(line, kSize);
  if (text == nullptr) {
    return false;
  }
  char *end = nullptr;
  *size = strtoll(text, &end, 10);
  return end != text;
}

// Reads the entries; no table has a size that is no int.
template <typename Lines> vexo_3dlut *read_entries(Lines *lines, const CubeHeader &header, const Collector *collector) {
  const int size = header.size >= 1 && header.size <= INT_MAX ? static_cast<int>(header.size) : 0;
  return read_nodes<3>(lines, size, header.title, collector);
}

// Reads up to the line that tells the size. False without one, or when the collector does not want the size.
bool read_header(FileLines *lines, CubeHeader *header, const Collector *collector) {
  while (lines->next()) {
    const char *line = lines->text();
    if (line[0] == '#' || read_title(line, header->title)) {
      continue;
    }
    if (read_size(line, &header->size)) {
      return tell(collector, remark(Remark::size, *lines, header->size, 0));
    }
    if (!tell(collector, remark(Remark::passed_over, *lines, 0, 0))) {
      return false;
    }
  }
  tell(collector, remark(Remark::no_size, *lines, 0, 0));
  return false;
}

// The same in a text, where "#" begins no comment and a line with TITLE never tells the size.
bool read_header(TextLines *lines, CubeHeader *header) {
  while (lines->next()) {
    if (after(lines->text(), kTitle) != nullptr) {
      read_title(lines->text(), header->title);
    } else if (read_size(lines->text(), &header->size)) {
      return true;
    }
  }
  return false;
}

long long print_entries(const vexo_3dlut *lut, FILE *f) {
  const NumberLocale locale;
  long long sum = 0;
  const size_t count = node_count(lut->size);
  for (size_t i = 0; i < count; i++) {
    char line[3 * vexo_internal::kNumberRoom];
    char *end = line;
    for (int c = 0; c < 3; c++) {
      end = vexo_internal::put_decimal(end, lut->d[i].d[c]);
      *end++ = c < 2 ? ' ' : '\n';
    }
    sum += put_line(f, line, end);
  }
  return sum;
}

const char *text_or(const char *text, const char *otherwise) { return text != nullptr ? text : otherwise; }

} // namespace

vexo_3dlut *vexo_internal::read_cube(FILE *f, const Collector *collector) {
  const NumberLocale locale;
  FileLines lines(f);
  CubeHeader header;
  return read_header(&lines, &header, collector) ? read_entries(&lines, header, collector) : nullptr;
}

vexo_3dlut *vexo_3dlut_load_cube(FILE *f) { return vexo_internal::read_cube(f, nullptr); }

vexo_3dlut *vexo_3dlut_cube_load_file(const char *path) {
  const OwnedFile f(fopen(path, "r"));
  if (f == nullptr) {
    fprintf(stderr, "open file: %s failed.\n", path);
    return nullptr;
  }
  return vexo_3dlut_load_cube(f.get());
}

vexo_3dlut *vexo_3dlut_cube_load_buf(char *buf, int len) {
  const NumberLocale locale;
  TextLines lines(buf);
  CubeHeader header;
  if (!read_header(&lines, &header)) {
    return nullptr;
  }
  lines.stop_at(len);
  return read_entries(&lines, header, nullptr);
}

int vexo_3dlut_dump_cube(vexo_3dlut *lut, FILE *f) {
  long long sum = fprintf(f, "%s \"%s\"\n", kTitle, text_or(lut->title, ""));
  sum += fprintf(f, "\n");
  sum += fprintf(f, "%s %d\n", kSize, lut->size);
  sum += fprintf(f, "\n");
  return characters(sum + print_entries(lut, f));
}

int vexo_3dlut_dump_cfe(vexo_3dlut *lut, FILE *f, const char *model, const char *version) {
  fprintf(f, "%s %s\n", "LUT_3D_AUTHOR", "Tavrinel");
  fprintf(f, "%s %s\n", "LUT_3D_MODEL", text_or(model, "KX600"));
  fprintf(f, "%s %s\n", "LUT_3D_VERSION", text_or(version, "2.0.0"));
  fprintf(f, "%s %d\n", kSize, lut->size);
  fprintf(f, "\n");
  return characters(print_entries(lut, f));
}

// ---- eeColor: lines of six numbers, the inputs and the outputs of a node

vexo_3dlut *vexo_internal::read_eecolor(FILE *f, int size, const Collector *collector) {
  const NumberLocale locale;
  FileLines lines(f);
  return read_nodes<6>(&lines, size, nullptr, collector);
}

long long vexo_internal::count_eecolor(FILE *f) {
  const NumberLocale locale;
  FileLines lines(f);
  long long count = 0;
  for (float numbers[6]; next_numbers(&lines, nullptr, 0, numbers);) {
    count++;
  }
  return count;
}

vexo_3dlut *vexo_3dlut_load_eecolor(FILE *f, int size) { return vexo_internal::read_eecolor(f, size, nullptr); }

vexo_3dlut *vexo_3dlut_eecolor_load_file(const char *path, int size) {
  const OwnedFile f(fopen(path, "r"));
  return f != nullptr ? vexo_3dlut_load_eecolor(f.get(), size) : nullptr;
}

// ---- COE memory images

namespace {

// "%08x,\n" with the word of a node, which is 0 outside the table. A component always has ten bits.
void print_coe_word(FILE *f, const vexo_vector *node, int nbits) {
  const Coding coding = {static_cast<float>(1 << nbits), static_cast<float>(vexo_internal::all_ones(nbits)), 10};
  uint32_t word = 0;
  if (node != nullptr) {
    vexo_internal::pack(node, 1, coding, &word);
  }
  char line[16];
  for (int digit = 0; digit < 8; digit++) {
    line[digit] = "0123456789abcdef"[word >> (28 - 4 * digit) & 15U];
  }
  memcpy(line + 8, ",\n", 2);
  put_line(f, line, line + 10);
}

// One memory image: the main block, then the last green and the last red plane, blue indexes from first on.
void print_coe_image(vexo_3dlut *lut, FILE *f, int nbits, int first) {
  const int n = lut->size - 1;
  fputs("memory_initialization_radix=16;\n", f);
  fputs("memory_initialization_vector=\n\n", f);
  for (int bi = first; bi < first + n; bi++) {
    for (int gi = 0; gi < n; gi++) {
      for (int ri = 0; ri < n; ri++) {
        print_coe_word(f, vexo_3dlut_item(lut, bi, gi, ri), nbits);
      }
    }
  }
  for (int ri = 0; ri < 2 * n; ri++) {
    for (int bi = first; bi < first + n; bi++) {
      print_coe_word(f, vexo_3dlut_item(lut, bi, n, ri), nbits);
    }
  }
  for (int gi = 0; gi < 2 * n; gi++) {
    for (int bi = first; bi < first + n; bi++) {
      print_coe_word(f, vexo_3dlut_item(lut, bi, gi, n), nbits);
    }
  }
}

} // namespace

int vexo_3dlut_dump_coe(vexo_3dlut *lut, FILE *f, int nbits) {
  if (nbits != 0 && !vexo_internal::packable(nbits)) {
    return -1;
  }
  print_coe_image(lut, f, nbits, 0);
  print_coe_image(lut, f, nbits, 1);
  return 0;
}

// ---- Listings

namespace {

bool listable(int nbits) { return nbits >= 0 && nbits <= 30; }

// The code as "%d" shows an unsigned one. Nothing limits it to the depth.
int listed_code(float value, int nbits) {
  const float code = static_cast<float>(vexo_internal::all_ones(nbits)) * value;
  if (!(code > 0.0F)) {
    return 0;
  }
  if (code < 2147483648.0F) {
    return vexo_internal::nearest(code);
  }
  return static_cast<int>(code < 4294967296.0F ? static_cast<uint32_t>(code) : UINT32_MAX);
}

// "%5d,%5d,%5d\t" with the codes of a node.
char *put_codes(char *text, const vexo_vector &rgb, int nbits) {
  for (int c = 0; c < 3; c++) {
    text = put_integer(text, listed_code(rgb.d[c], nbits), 5);
    *text++ = c < 2 ? ',' : '\t';
  }
  return text;
}

// "[%4d]".
char *put_index(char *text, int i) {
  *text++ = '[';
  text = put_integer(text, i, 4);
  *text++ = ']';
  return text;
}

using ListingLine = char[6 * vexo_internal::kNumberRoom];

long long print_listing_header(const vexo_3dlut *lut, FILE *f, int nbits) {
  long long sum = fprintf(f, "SIZE: %d\n", lut->size);
  sum += fprintf(f, "BITS: %d\n", nbits);
  return sum;
}

} // namespace

int vexo_3dlut_dump_debug(vexo_3dlut *lut, FILE *f, int nbits) {
  if (!listable(nbits)) {
    return -1;
  }
  long long sum = print_listing_header(lut, f, nbits);
  sum += fprintf(f, "\n%5s,%5s,%5s\t[%4s][%4s][%4s]\n", "red", "green", "blue", "bi", "gi", "ri");
  const vexo_vector *rgb = lut->d;
  for (int bi = 0; bi < lut->size; bi++) {
    for (int gi = 0; gi < lut->size; gi++) {
      for (int ri = 0; ri < lut->size; ri++) {
        ListingLine line;
        char *end = put_codes(line, *rgb++, nbits);
        end = put_index(put_index(put_index(end, bi), gi), ri);
        *end++ = '\n';
        sum += put_line(f, line, end);
      }
    }
  }
  return characters(sum);
}

int vexo_3dlut_dump_1dlut_debug(vexo_3dlut *lut, FILE *f, int nbits) {
  if (!listable(nbits)) {
    return -1;
  }
  long long sum = print_listing_header(lut, f, nbits);
  for (int i = 0; i < lut->size; i++) {
    ListingLine line;
    char *end = put_index(put_codes(line, *vexo_3dlut_item(lut, i, i, i), nbits), i);
    *end++ = '\n';
    sum += put_line(f, line, end);
  }
  return characters(sum);
}
