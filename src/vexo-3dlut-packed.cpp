// Packed binary files of 3D LUTs: a header of 128 bytes, then a word of three codes per node, most significant byte
// first. Codes are formed in single precision.
#include <stdio_ext.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstring>
#include <utility>

#include "base/clones.h"
#include "base/codes.h"
#include "base/owners.h"
#include "vexo-3dlut-readers.h"
#include "vexo-3dlut-table.h"
#include "vexo-3dlut-words.h"

using vexo_internal::all_ones;
using vexo_internal::Coding;
using vexo_internal::node_count;
using vexo_internal::OwnedTable;
using vexo_internal::packable;
using vexo_internal::PackedHeader;

static_assert(sizeof(vexo_dat_3dlut_header) == 128, "the header's image in the file");
static_assert(offsetof(vexo_dat_3dlut_header, data_cs) == 40 && offsetof(vexo_dat_3dlut_header, nbits) == 64 &&
                  offsetof(vexo_dat_3dlut_header, reserved) == 84 && offsetof(vexo_dat_3dlut_header, size) == 126,
              "the header's image in the file");

// ---- Codes and words

namespace {

// To nearest, halves away from zero, between 0 and most; a NaN is 0.
inline uint32_t packed_code(float value, Coding coding) {
  const float scaled = coding.scale * value;
  const float positive = scaled > 0.0F ? scaled : 0.0F;
  return static_cast<uint32_t>(vexo_internal::nearest(positive < coding.most ? positive : coding.most));
}

// The nodes that the words stand for: each component is code / (2^nbits - 1).
VEXO_VECTORISED void dequantise(const uint32_t *word, size_t count, int nbits, vexo_vector *rgb) {
  const uint32_t mask = all_ones(nbits);
  const auto most = static_cast<float>(mask);
  for (size_t i = 0; i < count; i++) {
    for (int c = 0; c < 3; c++) {
      rgb[i].d[c] = static_cast<float>(static_cast<int>(word[i] >> c * nbits & mask)) / most;
    }
  }
}

const bool kBigEndian = __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__;

// From the host's order to the file's and back.
VEXO_VECTORISED void to_big_endian(uint32_t *word, size_t count) {
  for (size_t i = 0; i < count && !kBigEndian; i++) {
    word[i] = __builtin_bswap32(word[i]);
  }
}

void to_big_endian(uint64_t *word, size_t count) {
  for (size_t i = 0; i < count && !kBigEndian; i++) {
    word[i] = __builtin_bswap64(word[i]);
  }
}

} // namespace

namespace vexo_internal {

VEXO_VECTORISED void pack(const vexo_vector *rgb, size_t count, Coding coding, uint32_t *word) {
  for (size_t i = 0; i < count; i++) {
    const uint32_t green = packed_code(rgb[i].d[1], coding);
    const uint32_t blue = packed_code(rgb[i].d[2], coding);
    word[i] = packed_code(rgb[i].d[0], coding) | green << coding.shift | blue << 2 * coding.shift;
  }
}

VEXO_VECTORISED void pack(const vexo_vector *rgb, size_t count, Coding coding, uint64_t *word) {
  for (size_t i = 0; i < count; i++) {
    const uint64_t green = packed_code(rgb[i].d[1], coding);
    const uint64_t blue = packed_code(rgb[i].d[2], coding);
    word[i] = packed_code(rgb[i].d[0], coding) | green << coding.shift | blue << 2 * coding.shift;
  }
}

} // namespace vexo_internal

// ---- The header

namespace {

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

PackedHeader decoded(const vexo_dat_3dlut_header &image) {
  PackedHeader header = {header_integer(image.magic), header_integer(image.ver), header_integer(image.nbits),
                         image.size, ""};
  memcpy(header.model, image.model, sizeof image.model);
  return header;
}

// A depth beyond int comes out negative, which no format has.
bool packable_header(const PackedHeader &header) { return packable(static_cast<int>(header.nbits)); }

size_t write_header(const vexo_3dlut *lut, FILE *f, uint32_t version, int nbits, int size) {
  vexo_dat_3dlut_header header = {};
  set_header_integer(&header.magic, vexo_internal::kPackedMagic);
  set_header_integer(&header.ver, version);
  if (lut->title != nullptr) {
    memcpy(header.model, lut->title, strnlen(lut->title, sizeof header.model));
  }
  set_header_integer(&header.nbits, static_cast<uint32_t>(nbits));
  header.size = static_cast<uint8_t>(size & 0xFF);
  return fwrite(&header, sizeof header, 1, f);
}

} // namespace

namespace vexo_internal {

bool read_packed_header(FILE *f, PackedHeader *header) {
  vexo_dat_3dlut_header image;
  if (fread(&image, sizeof image, 1, f) != 1) {
    return false;
  }
  *header = decoded(image);
  return true;
}

bool packed_version(uint32_t version) { return version >= kPackedVersion && version != kWideVersion; }

} // namespace vexo_internal

// ---- Readers: blocks of words that read(words, count) delivers, until the table is full

namespace {

template <typename Read> vexo_3dlut *filled(OwnedTable lut, int nbits, Read read) {
  const size_t count = node_count(lut->size);
  const size_t block = 4096;
  for (size_t done = 0; done < count; done += block) {
    uint32_t word[block];
    const size_t nodes = std::min(count - done, block);
    if (!read(word, nodes)) {
      return nullptr;
    }
    to_big_endian(word, nodes);
    dequantise(word, nodes, nbits, lut->d + done);
  }
  return lut.release();
}

} // namespace

vexo_3dlut *vexo_3dlut_load_dat(FILE *f) {
  PackedHeader header;
  if (!vexo_internal::read_packed_header(f, &header)) {
    return nullptr;
  }
  if (header.magic != vexo_internal::kPackedMagic) {
    fprintf(stderr, "magic code error: 0x%08x - 0x08%x\n", header.magic, vexo_internal::kPackedMagic);
    return nullptr;
  }
  if (!vexo_internal::packed_version(header.version) || !packable_header(header)) {
    return nullptr;
  }
  OwnedTable lut = vexo_internal::new_table(header.size, header.model);
  if (lut == nullptr) {
    fprintf(stderr, "create 3dlut failed, size = %d, name = %s\n", header.size, header.model);
    return nullptr;
  }
  return filled(std::move(lut), static_cast<int>(header.nbits),
                [f](uint32_t *words, size_t count) { return fread(words, sizeof *words, count, f) == count; });
}

vexo_3dlut *vexo_3dlut_dat_load_file(const char *path) {
  const vexo_internal::OwnedFile f(fopen(path, "rb"));
  return f != nullptr ? vexo_3dlut_load_dat(f.get()) : nullptr;
}

vexo_3dlut *vexo_3dlut_dat_load_buf(uint8_t *buf, int len) {
  vexo_dat_3dlut_header image;
  if (len < static_cast<int>(sizeof image)) {
    return nullptr;
  }
  memcpy(&image, buf, sizeof image);
  const PackedHeader header = decoded(image);
  if (header.magic != vexo_internal::kPackedMagic || !packable_header(header)) {
    return nullptr;
  }
  OwnedTable lut = vexo_internal::new_table(header.size, header.model);
  if (lut == nullptr) {
    return nullptr;
  }
  const uint8_t *rest = buf + sizeof image;
  size_t left = (static_cast<size_t>(len) - sizeof image) / sizeof(uint32_t);
  return filled(std::move(lut), static_cast<int>(header.nbits), [&rest, &left](uint32_t *words, size_t count) {
    if (left < count) {
      return false;
    }
    memcpy(words, rest, count * sizeof *words);
    rest += count * sizeof *words;
    left -= count;
    return true;
  });
}

// ---- Writers

namespace {

// How many words of that size one call may write: as many as the stream's buffer takes without passing it on, which
// never fails. A line-buffered stream passes on every line feed.
size_t words_at_once(FILE *f, size_t bytes) {
  const size_t space = __flbf(f) != 0 ? 0 : __fbufsize(f) - __fpending(f);
  return std::max<size_t>(space / bytes, 1);
}

// Writes the words of nodes. The count is that of a call per word: a word that the stream does not take is given up,
// and the next is tried.
template <typename Word> size_t write_nodes(const vexo_vector *rgb, size_t count, Coding coding, FILE *f) {
  const size_t block = 512;
  size_t written = 0;
  for (size_t done = 0; done < count; done += block) {
    Word word[block];
    const size_t nodes = std::min(count - done, block);
    vexo_internal::pack(rgb + done, nodes, coding, word);
    to_big_endian(word, nodes);
    for (size_t i = 0, words = 0; i < nodes; i += words) {
      words = std::min(words_at_once(f, sizeof *word), nodes - i);
      written += fwrite(word + i, sizeof *word, words, f);
    }
  }
  return written;
}

int items(size_t count) { return static_cast<int>(std::min<size_t>(count, INT_MAX)); }

template <typename Word> int write_table(const vexo_3dlut *lut, FILE *f, uint32_t version, int nbits, int shift) {
  const auto full = static_cast<float>(all_ones(nbits));
  const size_t header = write_header(lut, f, version, nbits, lut->size);
  return items(header + write_nodes<Word>(lut->d, node_count(lut->size), Coding{full, full, shift}, f));
}

int floor_log2(int n) {
  int k = 0;
  while (n >> (k + 1) > 0) {
    k++;
  }
  return k;
}

} // namespace

int vexo_3dlut_dump_dat(vexo_3dlut *lut, FILE *f, int nbits) {
  if (!packable(nbits)) {
    return -1;
  }
  return write_table<uint32_t>(lut, f, vexo_internal::kPackedVersion, nbits, nbits);
}

int vexo_3dlut_dump_dat_12bit(vexo_3dlut *lut, FILE *f, int nbits) {
  if (nbits != kWideDepth || lut->size != kWideSize) {
    return -1;
  }
  return write_table<uint64_t>(lut, f, kWideVersion, nbits, 16);
}

int vexo_3dlut_dump_old_dat(vexo_3dlut *lut, FILE *f, int nbits) {
  const int points = lut->size - 1;
  if (!packable(nbits) || nbits < floor_log2(points)) {
    return -1;
  }
  const int full = 1 << nbits;
  const int most = full - (1 << (nbits - floor_log2(points)));
  fprintf(stderr, "mask = %d, max = %d\n", full, most);
  const Coding coding = {static_cast<float>(full), static_cast<float>(most), nbits};
  size_t sum = write_header(lut, f, kLatticeVersion, nbits, points);
  for (int bi = 0; bi < points; bi++) {
    for (int gi = 0; gi < points; gi++) {
      sum += write_nodes<uint32_t>(vexo_3dlut_item(lut, bi, gi, 0), static_cast<size_t>(points), coding, f);
    }
  }
  return items(sum);
}
