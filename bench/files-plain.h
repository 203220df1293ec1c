// The file formats in their plain form, one call of the C library per line or word: what the library's readers and
// writers are measured by. In the "C" locale.
#ifndef VEXO_BENCH_FILES_PLAIN_H
#define VEXO_BENCH_FILES_PLAIN_H

#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "vexo-gamma.h"
#include "vexo-matrix.h"

namespace plain {

using Entries = std::vector<vexo_vector>;

inline bool scan_cube_entry(const char *line, vexo_vector *v) {
  vexo_vector rgb;
  if (std::sscanf(line, "%f %f %f", &rgb.d[0], &rgb.d[1], &rgb.d[2]) != 3) {
    return false;
  }
  *v = rgb;
  return true;
}

inline bool scan_eecolor_entry(const char *line, vexo_vector *v) {
  float in[3];
  vexo_vector rgb;
  if (std::sscanf(line, "%f %f %f %f %f %f", &in[0], &in[1], &in[2], &rgb.d[0], &rgb.d[1], &rgb.d[2]) != 6) {
    return false;
  }
  *v = rgb;
  return true;
}

using Scan = bool (*)(const char *, vexo_vector *);

// Entries from the lines of a stream; fewer than count at its end.
inline Entries read_entries(std::FILE *f, size_t count, Scan scan) {
  Entries entries;
  entries.reserve(count);
  char line[256];
  vexo_vector v;
  while (entries.size() < count && std::fgets(line, sizeof line, f) != nullptr) {
    if (scan(line, &v)) {
      entries.push_back(v);
    }
  }
  return entries;
}

// The same from a text in memory, which is cut at its line feeds. No line begins at or after text + len.
inline Entries read_entries(char *text, std::ptrdiff_t len, size_t count) {
  Entries entries;
  entries.reserve(count);
  vexo_vector v;
  char *rest = text;
  while (entries.size() < count) {
    while (*rest == '\n') {
      *rest++ = '\0';
    }
    if (*rest == '\0' || rest - text >= len) {
      break;
    }
    const char *line = rest;
    rest += std::strcspn(rest, "\n");
    if (*rest == '\n') {
      *rest++ = '\0';
    }
    if (scan_cube_entry(line, &v)) {
      entries.push_back(v);
    }
  }
  return entries;
}

inline long long print_entries(std::FILE *f, const Entries &entries) {
  long long sum = 0;
  for (const vexo_vector &v : entries) {
    sum += std::fprintf(f, "%0.8f %0.8f %0.8f\n", static_cast<double>(v.d[0]), static_cast<double>(v.d[1]),
                        static_cast<double>(v.d[2]));
  }
  return sum;
}

// ---- Three-channel 1D files. Rows are red, green and blue of an entry.

inline int code_of(float value, int nbits) {
  const float code = std::round(static_cast<float>((1 << nbits) - 1) * value);
  if (std::isnan(code)) {
    return 0;
  }
  return code >= 2147483648.0F ? INT_MAX : code <= -2147483648.0F ? INT_MIN : static_cast<int>(code);
}

// "%5d %5d %5d\n" and the like.
inline void print_codes(std::FILE *f, const vexo_lut *lut, int nbits, const char *format) {
  for (int i = 0; i < lut[0].size; i++) {
    std::fprintf(f, format, code_of(lut[0].d[i], nbits), code_of(lut[1].d[i], nbits), code_of(lut[2].d[i], nbits));
  }
}

// Codes from count lines, each of which uses up an entry; one line more is read where there is one. False when there
// are too few lines.
inline bool read_codes(std::FILE *f, int count, bool decimals, Entries *entries) {
  entries->assign(static_cast<size_t>(count), vexo_vector{});
  char line[1024];
  bool more = std::fgets(line, sizeof line, f) != nullptr;
  for (vexo_vector &entry : *entries) {
    if (!more) {
      return false;
    }
    if (decimals) {
      vexo_vector v;
      if (std::sscanf(line, "%f %f %f", &v.d[0], &v.d[1], &v.d[2]) == 3) {
        entry = v;
      }
    } else {
      unsigned long long v[3];
      if (std::sscanf(line, "%llu %llu %llu", &v[0], &v[1], &v[2]) == 3) {
        for (int c = 0; c < 3; c++) {
          entry.d[c] = static_cast<float>(static_cast<uint32_t>(v[c]));
        }
      }
    }
    more = std::fgets(line, sizeof line, f) != nullptr;
  }
  return true;
}

// ---- Packed words

inline uint32_t packed_code(float value, float scale, uint32_t most) {
  const float code = std::round(scale * value);
  return !(code > 0.0F) ? 0 : code < static_cast<float>(most) ? static_cast<uint32_t>(code) : most;
}

inline uint32_t word_of(const vexo_vector &v, float scale, uint32_t most, int shift) {
  return packed_code(v.d[2], scale, most) << 2 * shift | packed_code(v.d[1], scale, most) << shift |
         packed_code(v.d[0], scale, most);
}

// Words of ten bits a component. Gives the words written.
inline size_t write_words(std::FILE *f, const vexo_vector *entries, size_t count) {
  size_t written = 0;
  for (size_t i = 0; i < count; i++) {
    const uint32_t word = word_of(entries[i], 1023.0F, 1023, 10);
    const uint8_t byte[4] = {static_cast<uint8_t>(word >> 24), static_cast<uint8_t>(word >> 16 & 0xFFU),
                             static_cast<uint8_t>(word >> 8 & 0xFFU), static_cast<uint8_t>(word & 0xFFU)};
    written += std::fwrite(byte, sizeof byte, 1, f);
  }
  return written;
}

inline bool read_words(std::FILE *f, vexo_vector *entries, size_t count) {
  for (size_t i = 0; i < count; i++) {
    uint8_t byte[4];
    if (std::fread(byte, sizeof byte, 1, f) != 1) {
      return false;
    }
    const uint32_t word =
        uint32_t{byte[0]} << 24 | uint32_t{byte[1]} << 16 | uint32_t{byte[2]} << 8 | uint32_t{byte[3]};
    for (int c = 0; c < 3; c++) {
      entries[i].d[c] = static_cast<float>(word >> 10 * c & 1023U) / 1023.0F;
    }
  }
  return true;
}

} // namespace plain

#endif
