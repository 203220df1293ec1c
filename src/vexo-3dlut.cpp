// Three-dimensional LUTs: the table, trilinear resampling, and the cube, packed binary, eeColor, COE and listing
// formats, a section each. Entries are single precision; grid positions and codes are formed in single precision, the
// identity and the blend in double, rounded once.
#include "vexo-3dlut.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

#include "base/clones.h"
#include "base/codes.h"
#include "base/exact.h"
#include "base/lines.h"
#include "base/locale.h"
#include "base/numbers.h"

using vexo_internal::kBigEndian;
using vexo_internal::lerp;
using vexo_internal::LineWriter;
using vexo_internal::nearest;
using vexo_internal::NumberLocale;
using vexo_internal::put_integer;

struct vexo_3dlut {
  char *title;    // owned; may be null
  int size;       // grid points per axis, at least 1
  vexo_vector *d; // owned; size^3 entries, red index fastest
};

// ---- The table

namespace {

struct Destroy {
  void operator()(vexo_3dlut *lut) const { vexo_3dlut_destroy(lut); }
};
using OwnedLut = std::unique_ptr<vexo_3dlut, Destroy>;

// The bytes of size^3 entries; 0 when size is below 1 or the host cannot count them (32-bit hosts from size 711).
size_t table_bytes(int size) {
  if (size < 1) {
    return 0;
  }
  const auto points = static_cast<size_t>(size);
  size_t bytes = sizeof(vexo_vector);
  for (int axis = 0; axis < 3; axis++) {
    if (bytes > SIZE_MAX / points) {
      return 0;
    }
    bytes *= points;
  }
  return bytes;
}

size_t entry_count(const vexo_3dlut *lut) { return table_bytes(lut->size) / sizeof(vexo_vector); }

enum class Entries { zero, to_be_set };

// A table. One that a file promises and does not deliver never becomes resident.
OwnedLut created(int size, const char *title, Entries entries = Entries::to_be_set) {
  const size_t bytes = table_bytes(size);
  if (bytes == 0) {
    return nullptr;
  }
  OwnedLut lut(static_cast<vexo_3dlut *>(calloc(1, sizeof(vexo_3dlut))));
  if (lut == nullptr) {
    return nullptr;
  }
  lut->d = static_cast<vexo_vector *>(entries == Entries::zero ? calloc(bytes, 1) : malloc(bytes));
  if (lut->d == nullptr) {
    return nullptr;
  }
  lut->size = size;
  vexo_3dlut_set_title(lut.get(), title);
  return lut;
}

bool on_axis(const vexo_3dlut *lut, int i) { return i >= 0 && i < lut->size; }

// Fills the entries in order from next(entry), which is false when the source has no more. A table that stays
// incomplete is destroyed.
template <typename Next> vexo_3dlut *filled(OwnedLut lut, Next next) {
  if (lut == nullptr) {
    return nullptr;
  }
  const vexo_vector *end = lut->d + entry_count(lut.get());
  for (vexo_vector *entry = lut->d; entry < end; entry++) {
    if (!next(entry)) {
      return nullptr;
    }
  }
  return lut.release();
}

} // namespace

vexo_3dlut *vexo_3dlut_create(int size, const char *title) { return created(size, title, Entries::zero).release(); }

void vexo_3dlut_destroy(vexo_3dlut *lut) {
  free(lut->title);
  free(lut->d);
  free(lut);
}

int vexo_3dlut_init_unit(vexo_3dlut *lut) {
  const double last = static_cast<double>(lut->size) - 1.0;
  const auto input = [last](int i) { return last > 0.0 ? static_cast<float>(static_cast<double>(i) / last) : 0.0F; };
  vexo_vector *entry = lut->d;
  for (int bi = 0; bi < lut->size; bi++) {
    for (int gi = 0; gi < lut->size; gi++) {
      for (int ri = 0; ri < lut->size; ri++) {
        *entry++ = vexo_vector{{input(ri), input(gi), input(bi)}};
      }
    }
  }
  return 0;
}

vexo_vector *vexo_3dlut_item(vexo_3dlut *lut, int bi, int gi, int ri) {
  if (!on_axis(lut, bi) || !on_axis(lut, gi) || !on_axis(lut, ri)) {
    return nullptr;
  }
  const auto size = static_cast<size_t>(lut->size);
  return &lut->d[(static_cast<size_t>(bi) * size + static_cast<size_t>(gi)) * size + static_cast<size_t>(ri)];
}

int vexo_3dlut_set_item(vexo_3dlut *lut, vexo_vector *v, int bi, int gi, int ri) {
  vexo_vector *entry = vexo_3dlut_item(lut, bi, gi, ri);
  if (entry == nullptr) {
    return -1;
  }
  vexo_vector_copy(entry, v);
  return 0;
}

int vexo_3dlut_size(vexo_3dlut *lut) { return lut->size; }

char *vexo_3dlut_title(vexo_3dlut *lut) { return lut->title; }

int vexo_3dlut_set_title(vexo_3dlut *lut, const char *title) {
  char *copy = title != nullptr ? strdup(title) : nullptr; // before the release: title may be the LUT's own
  free(lut->title);
  lut->title = copy;
  return title != nullptr && copy == nullptr ? -1 : 0;
}

// ---- Resampling

namespace {

// Where a target index falls on an axis of the source.
struct Place {
  int lower;      // the lower neighbour
  float fraction; // between the two
  bool on_last;   // the lower neighbour is the last index: the axis drops out
};

// The target steps per source step; infinite for a source of one point, which puts every position at 0.
float scale_of(int target, int source) {
  return static_cast<float>((static_cast<double>(target) - 1.0) / (static_cast<double>(source) - 1.0));
}

// The position of the last target index comes out a little above or below the last source index. Never a whole step
// above, so the index is at most last; below it, the fraction is just short of 1.
Place place_of(int i, float scale, int last) {
  const float position = static_cast<float>(i) / scale;
  const int index = static_cast<int>(std::floor(position));
  return Place{index, position - static_cast<float>(index), index == last};
}

// out = low to high at fraction 0 for all values: the blend, without a need of double. 0 times the upper value is a
// zero, whose sign counts where the lower one is -0, or a NaN.
VEXO_VECTORISED void blend_at_low(const float *low, const float *high, float *out, size_t count) {
  for (size_t i = 0; i < count; i++) {
    out[i] = 0.0F * high[i] + low[i];
  }
}

// out = low to high at a fraction for all values.
VEXO_VECTORISED void blend_all(const float *low, const float *high, float fraction, float *out, size_t count) {
  for (size_t i = 0; i < count; i++) {
    out[i] = lerp(low[i], high[i], fraction);
  }
}

// The same with a fraction for each value; out begins as the lower values.
VEXO_VECTORISED void blend_each(const float *high, const float *fraction, float *out, size_t count) {
  for (size_t i = 0; i < count; i++) {
    out[i] = lerp(out[i], high[i], fraction[i]);
  }
}

struct Free {
  void operator()(void *p) const { free(p); }
};
template <typename T> using Block = std::unique_ptr<T[], Free>;

template <typename T> Block<T> block_of(size_t count) {
  return Block<T>(count <= SIZE_MAX / sizeof(T) ? static_cast<T *>(malloc(count * sizeof(T))) : nullptr);
}

// Resamples an axis at a time: a row along red, then a plane of rows along green, then planes along blue. Each value
// comes from the same blends as if the eight neighbours of every target entry were interpolated on their own, along
// red first; the blends that target entries share are made once. The source rows and planes in use are two at a time,
// neighbours, so a place for the even and one for the odd index holds them.
class Resampling {
public:
  Resampling(vexo_3dlut *dst, const vexo_3dlut *src)
      : dst_(dst), src_(src), size_(static_cast<size_t>(dst->size)), row_(3 * size_), plane_(size_ * row_),
        place_(block_of<Place>(size_)), red_fraction_(block_of<float>(row_)), red_upper_(block_of<float>(row_)),
        rows_(block_of<float>(2 * row_)), planes_(block_of<float>(2 * plane_)) {}

  bool run() {
    if (place_ == nullptr || red_fraction_ == nullptr || red_upper_ == nullptr || rows_ == nullptr ||
        planes_ == nullptr) {
      return false;
    }
    find_places();
    Held held;
    float *out = dst_->d->d;
    for (size_t bi = 0; bi < size_; bi++) {
      inbetween(place_[bi], plane_, out + bi * plane_, [&](int b) { return plane(b, &held); });
    }
    return true;
  }

private:
  // Which index each of a pair of places holds.
  struct Held {
    int index[2] = {-1, -1};
  };

  void find_places() {
    const float scale = scale_of(dst_->size, src_->size);
    for (size_t i = 0; i < size_; i++) {
      place_[i] = place_of(static_cast<int>(i), scale, src_->size - 1);
      if (!place_[i].on_last) { // from the first index on
        std::fill_n(&red_fraction_[3 * blended_], 3, place_[i].fraction);
        on_points_ = on_points_ && place_[i].fraction == 0.0F;
        blended_++;
      }
    }
  }

  // out = the target line at a place between two source lines of count values.
  template <typename Line> static void inbetween(const Place &place, size_t count, float *out, Line line) {
    const float *low = line(place.lower);
    if (place.on_last) {
      memcpy(out, low, count * sizeof *out);
    } else if (place.fraction == 0.0F) {
      blend_at_low(low, line(place.lower + 1), out, count);
    } else {
      blend_all(low, line(place.lower + 1), place.fraction, out, count);
    }
  }

  // Source plane b along red and green.
  const float *plane(int b, Held *held) {
    float *out = &planes_[static_cast<size_t>(b % 2) * plane_];
    if (held->index[b % 2] != b) {
      held->index[b % 2] = b;
      Held rows;
      for (size_t gi = 0; gi < size_; gi++) {
        inbetween(place_[gi], row_, out + gi * row_, [&](int g) { return row(b, g, &rows); });
      }
    }
    return out;
  }

  // Source row (b, g) along red.
  const float *row(int b, int g, Held *held) {
    float *out = &rows_[static_cast<size_t>(g % 2) * row_];
    if (held->index[g % 2] != g) {
      held->index[g % 2] = g;
      const auto size = static_cast<size_t>(src_->size);
      const vexo_vector *source = src_->d + (static_cast<size_t>(b) * size + static_cast<size_t>(g)) * size;
      for (size_t ri = 0; ri < size_; ri++) {
        memcpy(out + 3 * ri, source + place_[ri].lower, sizeof *source);
      }
      for (size_t ri = 0; ri < blended_; ri++) {
        memcpy(&red_upper_[3 * ri], source + place_[ri].lower + 1, sizeof *source);
      }
      if (on_points_) {
        blend_at_low(out, red_upper_.get(), out, 3 * blended_);
      } else {
        blend_each(red_upper_.get(), red_fraction_.get(), out, 3 * blended_);
      }
    }
    return out;
  }

  vexo_3dlut *dst_;
  const vexo_3dlut *src_;
  size_t size_; // of the target
  size_t row_;  // the values of a target row and plane
  size_t plane_;
  bool on_points_ = true; // all positions are source indexes
  size_t blended_ = 0;    // target indexes that are not on the last source index; they come first
  Block<Place> place_;
  Block<float> red_fraction_;
  Block<float> red_upper_;
  Block<float> rows_;
  Block<float> planes_;
};

} // namespace

vexo_3dlut *vexo_3dlut_dup(vexo_3dlut *src, int size, const char *title) {
  OwnedLut lut = created(size != 0 ? size : src->size, title != nullptr ? title : src->title);
  if (lut == nullptr) {
    return nullptr;
  }
  if (lut->size == src->size || lut->size == 1) { // a single point takes the first entry
    memcpy(lut->d, src->d, table_bytes(lut->size));
  } else if (!Resampling(lut.get(), src).run()) {
    return nullptr;
  }
  return lut.release();
}

// ---- Text lines and numbers

namespace {

struct CloseFile {
  void operator()(FILE *f) const { fclose(f); }
};
using OwnedFile = std::unique_ptr<FILE, CloseFile>;

using StreamLines = vexo_internal::StreamLines<256>;

// The lines of a NUL-terminated text, cut in place at its line feeds. Runs of line feeds make no empty lines.
class TextLines {
public:
  explicit TextLines(char *text) : text_(text), rest_(text) {}

  const char *next() {
    while (*rest_ == '\n') {
      *rest_++ = '\0';
    }
    if (*rest_ == '\0' || rest_ - text_ >= end_) {
      return nullptr;
    }
    const char *line = rest_;
    rest_ += strcspn(rest_, "\n");
    if (*rest_ == '\n') {
      *rest_++ = '\0';
    }
    return line;
  }

  // As of a stream. A line that is not known to lie within the text is left to next().
  template <typename Number, size_t kCount> bool take(Number (&values)[kCount]) {
    const char *end = reader_.read(rest_, limit_, values);
    if (end == nullptr) {
      return false;
    }
    rest_ += end - rest_;
    rest_[-1] = '\0';
    return true;
  }

  // From now on no line begins at or after this offset.
  void stop_at(ptrdiff_t end) {
    end_ = end;
    const ptrdiff_t ahead = end - (rest_ - text_);
    limit_ = ahead > 0 ? rest_ + strnlen(rest_, static_cast<size_t>(ahead)) : rest_;
  }

private:
  const char *text_;
  char *rest_;
  ptrdiff_t end_ = PTRDIFF_MAX;
  const char *limit_ = nullptr;
  vexo_internal::LineReader reader_;
};

bool scan_numbers(const char *line, float (&v)[3]) { return sscanf(line, "%f %f %f", &v[0], &v[1], &v[2]) == 3; }

bool scan_numbers(const char *line, float (&v)[6]) {
  return sscanf(line, "%f %f %f %f %f %f", &v[0], &v[1], &v[2], &v[3], &v[4], &v[5]) == 6;
}

// Reads the numbers of the next line that holds so many; other lines are skipped. False at the end.
template <typename Lines, size_t kNumbers> bool next_numbers(Lines *lines, float (&numbers)[kNumbers]) {
  if (lines->take(numbers)) {
    return true;
  }
  for (const char *line = lines->next(); line != nullptr; line = lines->next()) {
    if (vexo_internal::read_numbers(line, line + strlen(line) + 1, numbers) != nullptr || scan_numbers(line, numbers)) {
      return true;
    }
  }
  return false;
}

// Fills the table from lines of so many numbers, the last three of which are the entry.
template <size_t kNumbers, typename Lines> vexo_3dlut *filled_from(Lines *lines, OwnedLut lut) {
  return filled(std::move(lut), [lines](vexo_vector *entry) {
    if constexpr (kNumbers == 3) {
      return next_numbers(lines, entry->d);
    } else {
      float numbers[kNumbers];
      if (!next_numbers(lines, numbers)) {
        return false;
      }
      memcpy(entry->d, numbers + kNumbers - 3, sizeof entry->d);
      return true;
    }
  });
}

// The sum of what printf calls returned.
int characters(long long sum) { return static_cast<int>(std::clamp<long long>(sum, INT_MIN, INT_MAX)); }

} // namespace

// ---- Cube and cfe text

namespace {

using Title = char[256];

// What the lines before the entries say, with the title of a file that has none.
struct CubeHeader {
  Title title = "cube";
  int size = 0;
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

// Reads the number after the keyword; one that is no int becomes 0, which no LUT has.
bool read_size(const char *line, int *size) {
  const char *text = after(line, kSize);
  if (text == nullptr) {
    return false;
  }
  char *end = nullptr;
  const long long number = strtoll(text, &end, 10);
  *size = number >= 0 && number <= INT_MAX ? static_cast<int>(number) : 0;
  return end != text;
}

long long print_entries(vexo_3dlut *lut, FILE *f) {
  const NumberLocale locale;
  LineWriter lines(f);
  const size_t count = entry_count(lut);
  for (size_t i = 0; i < count; i++) {
    const float(&rgb)[3] = lut->d[i].d;
    char *text = lines.line();
    for (int c = 0; c < 3; c++) {
      text = vexo_internal::put_decimal(text, rgb[c]);
      *text++ = c < 2 ? ' ' : '\n';
    }
    lines.add(text);
  }
  return lines.finish();
}

const char *text_or(const char *text, const char *otherwise) { return text != nullptr ? text : otherwise; }

} // namespace

vexo_3dlut *vexo_3dlut_load_cube(FILE *f) {
  const NumberLocale locale;
  StreamLines lines(f);
  CubeHeader header;
  for (const char *line = lines.next(); line != nullptr; line = lines.next()) {
    if (line[0] != '#' && !read_title(line, header.title) && read_size(line, &header.size)) {
      return filled_from<3>(&lines, created(header.size, header.title));
    }
  }
  return nullptr;
}

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
  for (const char *line = lines.next(); line != nullptr; line = lines.next()) {
    if (after(line, kTitle) != nullptr) {
      read_title(line, header.title);
    } else if (read_size(line, &header.size)) {
      lines.stop_at(len);
      return filled_from<3>(&lines, created(header.size, header.title));
    }
  }
  return nullptr;
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

// ---- Codes and packed words

namespace {

// How a value becomes a code, and three codes a word.
struct Coding {
  float scale; // the code of 1.0 before the limit
  float most;  // the largest code
  int shift;   // bits from one component to the next
};

uint32_t all_ones(int nbits) { return (uint32_t{1} << nbits) - 1; }

// Three components of nbits fit into 32 bits.
bool packable(int nbits) { return nbits >= 1 && nbits <= 10; }

// Codes of values: to nearest, halves away from zero, between 0 and most; a NaN is 0.
VEXO_VECTORISED void find_codes(const float *value, size_t count, float scale, float most, int *code) {
  for (size_t i = 0; i < count; i++) {
    const float scaled = scale * value[i];
    const float positive = scaled > 0.0F ? scaled : 0.0F;
    code[i] = nearest(positive < most ? positive : most);
  }
}

// The three codes of each entry in a word.
template <typename Word> void join_all(const int *code, size_t count, int shift, Word *word) {
  for (size_t i = 0; i < count; i++) {
    const auto field = [code, i](size_t c) { return static_cast<Word>(code[3 * i + c]); };
    word[i] = field(0) | field(1) << shift | field(2) << 2 * shift;
  }
}
VEXO_VECTORISED void join(const int *code, size_t count, int shift, uint32_t *word) {
  join_all(code, count, shift, word);
}
void join(const int *code, size_t count, int shift, uint64_t *word) { join_all(code, count, shift, word); }

const size_t kWords = 512; // at a time

// Gives the words of the entries to use(words, count), in order.
template <typename Word, typename Use>
void make_words(const vexo_vector *rgb, size_t count, const Coding &coding, Use use) {
  for (size_t done = 0; done < count; done += kWords) {
    int code[3 * kWords];
    Word word[kWords];
    const size_t entries = std::min(count - done, kWords);
    find_codes(rgb[done].d, 3 * entries, coding.scale, coding.most, code);
    join(code, entries, coding.shift, word);
    use(word, entries);
  }
}

} // namespace

// ---- Packed binary files

static_assert(sizeof(vexo_dat_3dlut_header) == 128, "the header's image in the file");
static_assert(offsetof(vexo_dat_3dlut_header, data_cs) == 40 && offsetof(vexo_dat_3dlut_header, nbits) == 64 &&
                  offsetof(vexo_dat_3dlut_header, reserved) == 84 && offsetof(vexo_dat_3dlut_header, size) == 126,
              "the header's image in the file");

namespace {

const uint32_t kMagic = 0x42340299;
const uint32_t kPackedVersion = 0x02000000;
const uint32_t kWideVersion = 0x03000000;
const uint32_t kLatticeVersion = 0x01000003;
const int kWideDepth = 12;
const int kWideSize = 33;

// The header's integers lie in the record as in the file, lowest byte first whatever the host's order.
uint32_t header_integer(const uint32_t &field) {
  uint8_t byte[4];
  memcpy(byte, &field, sizeof byte);
  return uint32_t{byte[0]} | uint32_t{byte[1]} << 8 | uint32_t{byte[2]} << 16 | uint32_t{byte[3]} << 24;
}

void set_header_integer(uint32_t *field, uint32_t value) {
  uint8_t byte[4];
  for (int i = 0; i < 4; i++) {
    byte[i] = static_cast<uint8_t>(value >> 8 * i & 0xFFU);
  }
  memcpy(field, byte, sizeof byte);
}

// The header's model as a title of its own.
struct Model {
  explicit Model(const vexo_dat_3dlut_header &header) { memcpy(text, header.model, sizeof header.model); }
  char text[sizeof(vexo_dat_3dlut_header::model) + 1] = "";
};

// A depth beyond int comes out negative, which no format has.
int depth_of(const vexo_dat_3dlut_header &header) { return static_cast<int>(header_integer(header.nbits)); }

// Files have their words most significant byte first.
VEXO_VECTORISED void turn(uint32_t *word, size_t count) {
  for (size_t i = 0; i < count; i++) {
    word[i] = kBigEndian ? word[i] : __builtin_bswap32(word[i]);
  }
}

void turn(uint64_t *word, size_t count) {
  for (size_t i = 0; i < count; i++) {
    word[i] = kBigEndian ? word[i] : __builtin_bswap64(word[i]);
  }
}

// The components that the words stand for: code / (2^nbits - 1). The product with the reciprocal in double rounds to
// the same float, for quotients of numbers so small stay far from the midpoints between floats.
VEXO_VECTORISED void find_levels(const uint32_t *word, size_t count, int nbits, vexo_vector *rgb) {
  const uint32_t mask = all_ones(nbits);
  const double step = 1.0 / static_cast<double>(mask);
  for (size_t i = 0; i < count; i++) {
    for (int c = 0; c < 3; c++) {
      rgb[i].d[c] = static_cast<float>(static_cast<double>(static_cast<int>(word[i] >> c * nbits & mask)) * step);
    }
  }
}

// Fills the table from 32-bit words, which read(words, count) delivers.
template <typename Read> vexo_3dlut *filled_from_words(OwnedLut lut, int nbits, Read read) {
  if (lut == nullptr) {
    return nullptr;
  }
  const size_t count = entry_count(lut.get());
  const size_t block = 4096;
  for (size_t done = 0; done < count; done += block) {
    uint32_t word[block];
    const size_t entries = std::min(count - done, block);
    if (!read(word, entries)) {
      return nullptr;
    }
    turn(word, entries);
    find_levels(word, entries, nbits, lut->d + done);
  }
  return lut.release();
}

size_t write_header(const vexo_3dlut *lut, FILE *f, uint32_t version, int nbits, int size) {
  vexo_dat_3dlut_header header = {};
  set_header_integer(&header.magic, kMagic);
  set_header_integer(&header.ver, version);
  if (lut->title != nullptr) {
    memcpy(header.model, lut->title, strnlen(lut->title, sizeof header.model));
  }
  set_header_integer(&header.nbits, static_cast<uint32_t>(nbits));
  header.size = static_cast<uint8_t>(size & 0xFF);
  return fwrite(&header, sizeof header, 1, f);
}

// Turns the words and writes them, with the effects of a call a word: one that the stream does not take is given up,
// and the next is tried. Gives how many it took.
template <typename Word> size_t write_words(Word *word, size_t count, FILE *f) {
  turn(word, count);
  size_t written = 0;
  for (size_t done = 0; done < count; done++) {
    const size_t taken = fwrite(word + done, sizeof *word, count - done, f);
    written += taken;
    done += taken;
  }
  return written;
}

// The words of the entries.
template <typename Word> size_t write_entries(const vexo_vector *rgb, size_t count, const Coding &coding, FILE *f) {
  size_t written = 0;
  make_words<Word>(rgb, count, coding, [&](Word *word, size_t n) { written += write_words(word, n, f); });
  return written;
}

int items(size_t count) { return static_cast<int>(std::min<size_t>(count, INT_MAX)); }

template <typename Word> int write_table(const vexo_3dlut *lut, FILE *f, uint32_t version, int nbits, int shift) {
  const auto full = static_cast<float>(all_ones(nbits));
  const size_t header = write_header(lut, f, version, nbits, lut->size);
  return items(header + write_entries<Word>(lut->d, entry_count(lut), Coding{full, full, shift}, f));
}

int floor_log2(int n) {
  int k = 0;
  while (n >> (k + 1) > 0) {
    k++;
  }
  return k;
}

} // namespace

vexo_3dlut *vexo_3dlut_load_dat(FILE *f) {
  vexo_dat_3dlut_header header;
  if (fread(&header, sizeof header, 1, f) != 1) {
    return nullptr;
  }
  const uint32_t magic = header_integer(header.magic);
  if (magic != kMagic) {
    fprintf(stderr, "magic code error: 0x%08x - 0x08%x\n", magic, kMagic);
    return nullptr;
  }
  const uint32_t version = header_integer(header.ver);
  const int nbits = depth_of(header);
  if (version < kPackedVersion || version == kWideVersion || !packable(nbits)) {
    return nullptr;
  }
  const Model model(header);
  OwnedLut lut = created(header.size, model.text);
  if (lut == nullptr) {
    fprintf(stderr, "create 3dlut failed, size = %d, name = %s\n", header.size, model.text);
    return nullptr;
  }
  return filled_from_words(std::move(lut), nbits,
                           [f](uint32_t *words, size_t count) { return fread(words, 4, count, f) == count; });
}

vexo_3dlut *vexo_3dlut_dat_load_file(const char *path) {
  const OwnedFile f(fopen(path, "rb"));
  return f != nullptr ? vexo_3dlut_load_dat(f.get()) : nullptr;
}

vexo_3dlut *vexo_3dlut_dat_load_buf(uint8_t *buf, int len) {
  vexo_dat_3dlut_header header;
  if (len < static_cast<int>(sizeof header)) {
    return nullptr;
  }
  memcpy(&header, buf, sizeof header);
  const int nbits = depth_of(header);
  if (header_integer(header.magic) != kMagic || !packable(nbits)) {
    return nullptr;
  }
  const uint8_t *word = buf + sizeof header;
  size_t left = static_cast<size_t>(len) - sizeof header;
  const auto read = [&word, &left](uint32_t *words, size_t count) {
    if (left / 4 < count) {
      return false;
    }
    memcpy(words, word, 4 * count);
    word += 4 * count;
    left -= 4 * count;
    return true;
  };
  return filled_from_words(created(header.size, Model(header).text), nbits, read);
}

int vexo_3dlut_dump_dat(vexo_3dlut *lut, FILE *f, int nbits) {
  if (!packable(nbits)) {
    return -1;
  }
  return write_table<uint32_t>(lut, f, kPackedVersion, nbits, nbits);
}

int vexo_3dlut_dump_dat_12bit(vexo_3dlut *lut, FILE *f, int nbits) {
  if (nbits != kWideDepth || lut->size != kWideSize) {
    return -1;
  }
  return write_table<uint64_t>(lut, f, kWideVersion, nbits, 16);
}

int vexo_3dlut_dump_old_dat(vexo_3dlut *lut, FILE *f, int nbits) {
  const int points = lut->size - 1;
  if (points < 1 || !packable(nbits) || nbits < floor_log2(points)) {
    return -1;
  }
  const int full = 1 << nbits;
  const int most = full - (1 << (nbits - floor_log2(points)));
  fprintf(stderr, "mask = %d, max = %d\n", full, most);
  const Coding coding = {static_cast<float>(full), static_cast<float>(most), nbits};
  size_t sum = write_header(lut, f, kLatticeVersion, nbits, points);
  for (int bi = 0; bi < points; bi++) {
    for (int gi = 0; gi < points; gi++) {
      sum += write_entries<uint32_t>(vexo_3dlut_item(lut, bi, gi, 0), static_cast<size_t>(points), coding, f);
    }
  }
  return items(sum);
}

// ---- eeColor text, COE memory images, listings

namespace {

// A COE word always leaves ten bits to a component.
Coding coe_coding(int nbits) { return Coding{static_cast<float>(1 << nbits), static_cast<float>(all_ones(nbits)), 10}; }

VEXO_VECTORISED void find_digits(const uint32_t *word, size_t count, uint64_t *digits) {
  for (size_t i = 0; i < count; i++) {
    digits[i] = vexo_internal::hexadecimal_of(word[i]);
  }
}

// "%08x,\n" for each word.
void print_coe_words(const vexo_vector *rgb, size_t count, const Coding &coding, LineWriter *lines) {
  make_words<uint32_t>(rgb, count, coding, [lines](const uint32_t *word, size_t n) {
    uint64_t digits[kWords];
    find_digits(word, n, digits);
    for (size_t i = 0; i < n; i++) {
      char *text = lines->line();
      vexo_internal::store_eight(text, digits[i]);
      memcpy(text + 8, ",\n", 2);
      lines->add(text + 10);
    }
  });
}

// The same for the entries along blue. Those outside the table have words of 0.
void print_coe_column(vexo_3dlut *lut, LineWriter *lines, const Coding &coding, int first, int count, int gi, int ri) {
  const int block = 64;
  for (int done = 0; done < count; done += block) {
    vexo_vector column[block] = {};
    const int entries = std::min(count - done, block);
    for (int i = 0; i < entries; i++) {
      const vexo_vector *rgb = vexo_3dlut_item(lut, first + done + i, gi, ri);
      if (rgb != nullptr) {
        column[i] = *rgb;
      }
    }
    print_coe_words(column, static_cast<size_t>(entries), coding, lines);
  }
}

// One memory image: the main block and the last green and red plane, blue indexes from first on.
void print_coe_image(vexo_3dlut *lut, FILE *f, const Coding &coding, int first) {
  const int n = lut->size - 1;
  fputs("memory_initialization_radix=16;\n", f);
  fputs("memory_initialization_vector=\n\n", f);
  LineWriter lines(f);
  for (int bi = first; bi < first + n; bi++) {
    for (int gi = 0; gi < n; gi++) {
      print_coe_words(vexo_3dlut_item(lut, bi, gi, 0), static_cast<size_t>(n), coding, &lines);
    }
  }
  for (int ri = 0; ri < 2 * n; ri++) {
    print_coe_column(lut, &lines, coding, first, n, n, ri);
  }
  for (int gi = 0; gi < 2 * n; gi++) {
    print_coe_column(lut, &lines, coding, first, n, gi, n);
  }
  lines.finish();
}

bool listable(int nbits) { return nbits >= 1 && nbits <= 30; }

// The code as "%d" shows an unsigned one. Nothing limits it to the depth.
int listed_code(float value, int nbits) {
  const float code = static_cast<float>(all_ones(nbits)) * value;
  if (!(code > 0.0F)) {
    return 0;
  }
  if (code < 2147483648.0F) {
    return nearest(code);
  }
  return static_cast<int>(code < 4294967296.0F ? static_cast<uint32_t>(code) : UINT32_MAX);
}

// "%5d,%5d,%5d\t" with the codes of an entry.
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

long long print_listing_header(const vexo_3dlut *lut, FILE *f, int nbits) {
  long long sum = fprintf(f, "SIZE: %d\n", lut->size);
  sum += fprintf(f, "BITS: %d\n", nbits);
  return sum;
}

} // namespace

vexo_3dlut *vexo_3dlut_load_eecolor(FILE *f, int size) {
  const NumberLocale locale;
  StreamLines lines(f);
  return filled_from<6>(&lines, created(size, nullptr));
}

vexo_3dlut *vexo_3dlut_eecolor_load_file(const char *path, int size) {
  const OwnedFile f(fopen(path, "r"));
  return f != nullptr ? vexo_3dlut_load_eecolor(f.get(), size) : nullptr;
}

int vexo_3dlut_dump_coe(vexo_3dlut *lut, FILE *f, int nbits) {
  if (!packable(nbits)) {
    return -1;
  }
  print_coe_image(lut, f, coe_coding(nbits), 0);
  print_coe_image(lut, f, coe_coding(nbits), 1);
  return 0;
}

int vexo_3dlut_dump_debug(vexo_3dlut *lut, FILE *f, int nbits) {
  if (!listable(nbits)) {
    return -1;
  }
  long long sum = print_listing_header(lut, f, nbits);
  sum += fprintf(f, "\n%5s,%5s,%5s\t[%4s][%4s][%4s]\n", "red", "green", "blue", "bi", "gi", "ri");
  LineWriter lines(f);
  const vexo_vector *rgb = lut->d;
  for (int bi = 0; bi < lut->size; bi++) {
    for (int gi = 0; gi < lut->size; gi++) {
      char indices[2 * vexo_internal::kNumberRoom]; // the same along the row
      const auto length = static_cast<size_t>(put_index(put_index(indices, bi), gi) - indices);
      for (int ri = 0; ri < lut->size; ri++) {
        char *text = put_codes(lines.line(), *rgb++, nbits);
        memcpy(text, indices, length);
        text = put_index(text + length, ri);
        *text++ = '\n';
        lines.add(text);
      }
    }
  }
  return characters(sum + lines.finish());
}

int vexo_3dlut_dump_1dlut_debug(vexo_3dlut *lut, FILE *f, int nbits) {
  if (!listable(nbits)) {
    return -1;
  }
  long long sum = print_listing_header(lut, f, nbits);
  LineWriter lines(f);
  for (int i = 0; i < lut->size; i++) {
    char *text = put_index(put_codes(lines.line(), *vexo_3dlut_item(lut, i, i, i), nbits), i);
    *text++ = '\n';
    lines.add(text);
  }
  return characters(sum + lines.finish());
}
