#include "file/lut3d.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "file/input.h"
#include "file/output.h"
#include "text/failure.h"
#include "text/format.h"
#include "text/grammar.h"
#include "text/lines.h"

namespace {

// The format's limits, how it is told by a file name, and its writer; a text format without codes has bits of 0.
struct Format {
  const char *name;
  const char *extension; // "" where only the name tells
  int min_bits;
  int max_bits;
  int default_bits;
  int min_size;
  int max_size;       // 0: no limit
  size_t title_limit; // 0: none
  void (*write)(vexo_3dlut *lut, std::FILE *f, int bits);
};

void write_cube(vexo_3dlut *lut, std::FILE *f, int /*bits*/) { vexo_3dlut_dump_cube(lut, f); }
void write_cfe(vexo_3dlut *lut, std::FILE *f, int /*bits*/) { vexo_3dlut_dump_cfe(lut, f, nullptr, nullptr); }
void write_dat(vexo_3dlut *lut, std::FILE *f, int bits) { vexo_3dlut_dump_dat(lut, f, bits); }
void write_dat12(vexo_3dlut *lut, std::FILE *f, int bits) { vexo_3dlut_dump_dat_12bit(lut, f, bits); }
void write_dat_old(vexo_3dlut *lut, std::FILE *f, int bits) { vexo_3dlut_dump_old_dat(lut, f, bits); }
void write_coe(vexo_3dlut *lut, std::FILE *f, int bits) { vexo_3dlut_dump_coe(lut, f, bits); }
void write_debug(vexo_3dlut *lut, std::FILE *f, int bits) { vexo_3dlut_dump_debug(lut, f, bits); }
void write_debug_gray(vexo_3dlut *lut, std::FILE *f, int bits) { vexo_3dlut_dump_1dlut_debug(lut, f, bits); }

// Name, extension; bits from, to, default; size from, to; characters of the title; writer. The packed header holds the
// size in a byte.
const Format kFormats[] = {
    {"cube", ".cube", 0, 0, 0, 1, 0, 0, write_cube},          {"cfe", ".cfe", 0, 0, 0, 1, 0, 0, write_cfe},
    {"dat", ".dat", 1, 10, 10, 1, 255, 16, write_dat},        {"dat12", "", 12, 12, 12, 33, 33, 16, write_dat12},
    {"dat-old", "", 1, 10, 10, 2, 256, 16, write_dat_old},    {"eecolor", ".txt", 0, 0, 0, 1, 0, 0, nullptr},
    {"coe", ".coe", 1, 10, 10, 2, 0, 0, write_coe},           {"debug", "", 1, 30, 10, 1, 0, 0, write_debug},
    {"debug-gray", "", 1, 30, 10, 1, 0, 0, write_debug_gray},
};

std::vector<std::string> format_names() {
  std::vector<std::string> names;
  for (const Format &format : kFormats) {
    names.emplace_back(format.name);
  }
  return names;
}

const Format &find_format(const std::string &option, const std::string &name, const std::string &path) {
  const std::string known = name.empty() ? "" : parse_name(option, name, format_names());
  for (const Format &format : kFormats) {
    if (name.empty() ? *format.extension != '\0' && has_extension(path, format.extension) : known == format.name) {
      return format;
    }
  }
  throw Failure(kUsageError,
                path + ": its name tells no format, expected " + option + " with one of " + lut3d_format_names());
}

// Whether a line begins with so many plain decimal numbers: most do, and scanf takes ten times as long to say so.
bool plain_numbers(const char *line, int count) {
  const auto is_digit = [](char c) { return c >= '0' && c <= '9'; };
  for (int n = 0; n < count; n++) {
    line += *line == ' ' ? 1 : 0;
    if (!is_digit(*line)) {
      return false;
    }
    while (is_digit(*line)) {
      line++;
    }
    line += *line == '.' ? 1 : 0;
    while (is_digit(*line)) {
      line++;
    }
    if (*line != ' ' && *line != '\n') {
      return false;
    }
  }
  return true;
}

bool three_numbers(const char *line) {
  float d[3];
  return plain_numbers(line, 3) || std::sscanf(line, "%f %f %f", &d[0], &d[1], &d[2]) == 3;
}

bool six_numbers(const char *line) {
  float d[6];
  return plain_numbers(line, 6) ||
         std::sscanf(line, "%f %f %f %f %f %f", &d[0], &d[1], &d[2], &d[3], &d[4], &d[5]) == 6;
}

// Whether the reader takes a title from the line, and so no size.
bool has_title(const char *line) {
  const char *title = std::strstr(line, "TITLE");
  return title != nullptr && title[5 + std::strspn(title + 5, " \t\n\v\f\r")] == '"';
}

const size_t kMostWarnings = 1000; // of a file

// What a cube file holds beside what its reader takes.
class CubeScan {
public:
  CubeScan(const Lut3dInput &input, std::FILE *f) : input_(input), lines_(f) {}

  std::vector<std::string> run() {
    read_header();
    read_entries();
    return std::move(warnings_);
  }

private:
  std::string here() const { return format("%s:%ld: ", input_name(input_.path).c_str(), lines_.number()); }

  [[noreturn]] void refuse(const std::string &what) const { throw Failure(kInputError, here() + what); }

  void warn(const std::string &what) {
    if (warnings_.size() == kMostWarnings) {
      refuse(what + format("; more than %zu warnings", kMostWarnings));
    }
    warnings_.push_back(here() + what);
  }

  void read_header() {
    while (size_ == 0) {
      if (!lines_.next()) {
        throw Failure(kInputError, input_name(input_.path) + ": no LUT_3D_SIZE line");
      }
      const char *size_line = std::strstr(lines_.text(), "LUT_3D_SIZE");
      long size = 0;
      if (lines_.text()[0] == '#' || has_title(lines_.text())) {
        continue;
      }
      if (size_line != nullptr && std::sscanf(size_line + 11, "%ld", &size) == 1) {
        if (size < 1 || size > input_.max_size) {
          refuse(format("LUT_3D_SIZE %ld, expected 1 to %d (--max-size)", size, input_.max_size));
        }
        size_ = static_cast<int>(size);
      } else {
        check_keyword();
      }
    }
  }

  void read_entries() {
    const long wanted = static_cast<long>(size_) * size_ * size_;
    long found = 0;
    long skipped = 0; // only the first is named
    while (lines_.next()) {
      if (!three_numbers(lines_.text())) {
        if (!blank(lines_.text()) && !check_keyword() && skipped++ == 0) {
          warn("not three numbers, skipped");
        }
      } else if (++found == wanted + 1) {
        warn(format("more than the %ld entries of LUT_3D_SIZE %d; this row and those after it are not read", wanted,
                    size_));
        return;
      }
    }
    if (found < wanted) {
      refuse(format("the file ends after %ld entries, expected %ld for LUT_3D_SIZE %d", found, wanted, size_));
    }
  }

  // Warns about a keyword that changes what the entries mean. Returns whether the line holds any keyword.
  bool check_keyword() {
    const char *text = lines_.text();
    if (text[0] == '#') {
      return true;
    }
    float v[3];
    if (std::sscanf(text, " DOMAIN_MIN %f %f %f", &v[0], &v[1], &v[2]) == 3) {
      warn_unless(v, 0.0F, "DOMAIN_MIN");
    } else if (std::sscanf(text, " DOMAIN_MAX %f %f %f", &v[0], &v[1], &v[2]) == 3) {
      warn_unless(v, 1.0F, "DOMAIN_MAX");
    } else if (std::strstr(text, "LUT_3D_INPUT_RANGE") != nullptr) {
      warn("LUT_3D_INPUT_RANGE is not applied: inputs are taken as 0 to 1");
    } else if (std::strstr(text, "LUT_1D_SIZE") != nullptr) {
      warn("LUT_1D_SIZE: a 1D shaper is not applied, and its rows are read as the first entries of the 3D table");
    } else {
      return text[0] >= 'A' && text[0] <= 'Z';
    }
    return true;
  }

  void warn_unless(const float v[3], float expected, const char *keyword) {
    if (v[0] != expected || v[1] != expected || v[2] != expected) {
      warn(format("%s %g %g %g is not applied: inputs are taken as 0 to 1", keyword, static_cast<double>(v[0]),
                  static_cast<double>(v[1]), static_cast<double>(v[2])));
    }
  }

  const Lut3dInput &input_;
  Lines<256> lines_;
  int size_ = 0;
  std::vector<std::string> warnings_;
};

[[noreturn]] void unreadable(const Lut3dInput &input, const std::string &what) {
  throw Failure(kInputError, input_name(input.path) + ": " + what);
}

Lut3dFile read_cube(const Lut3dInput &input, std::FILE *f) {
  Lut3dFile file;
  file.warnings = CubeScan(input, f).run();
  std::rewind(f);
  file.lut.reset(vexo_3dlut_load_cube(f));
  return file;
}

long count_eecolor_lines(std::FILE *f) {
  long count = 0;
  for (Lines<256> lines(f); lines.next();) {
    count += six_numbers(lines.text()) ? 1 : 0;
  }
  std::rewind(f);
  return count;
}

// The cube root of the number of entry lines, unless the size is given.
int eecolor_size(const Lut3dInput &input, long count) {
  const long size = input.size > 0 ? input.size : std::lround(std::cbrt(static_cast<double>(count)));
  if (size > input.max_size) {
    unreadable(input, format("%ld grid points, expected at most %d (--max-size)", size, input.max_size));
  }
  if (input.size > 0 ? count < size * size * size : count < 1 || size * size * size != count) {
    unreadable(input, input.size > 0 ? format("%ld lines of six numbers, expected %ld for %ld grid points", count,
                                              size * size * size, size)
                                     : format("%ld lines of six numbers, which is no cube number", count));
  }
  return static_cast<int>(size);
}

Lut3dFile read_eecolor(const Lut3dInput &input, std::FILE *f) {
  Lut3dFile file;
  const long count = count_eecolor_lines(f);
  const int size = eecolor_size(input, count);
  const long left_over = count - static_cast<long>(size) * size * size;
  if (left_over > 0) {
    file.warnings.push_back(
        format("%s: the last %ld lines of six numbers are not read", input_name(input.path).c_str(), left_over));
  }
  file.lut.reset(vexo_3dlut_load_eecolor(f, size));
  return file;
}

Lut3dFile read_dat(const Lut3dInput &input, std::FILE *f) {
  unsigned char header[128];
  if (std::fread(header, 1, sizeof header, f) != sizeof header) {
    unreadable(input, "shorter than the header of 128 bytes");
  }
  const auto integer = [&](size_t at) {
    return header[at] | static_cast<unsigned>(header[at + 1]) << 8 | static_cast<unsigned>(header[at + 2]) << 16 |
           static_cast<unsigned>(header[at + 3]) << 24;
  };
  const unsigned magic = integer(0);
  const unsigned version = integer(4);
  const unsigned bits = integer(64);
  const int size = header[126];
  if (magic != 0x42340299U) {
    unreadable(input, format("not a packed 3D LUT: magic 0x%08x, expected 0x42340299", magic));
  }
  if (version < 0x02000000U || version == 0x03000000U) {
    unreadable(input, format("version 0x%08x, which has no reader; expected 0x02000000", version));
  }
  if (bits < 1 || bits > 10 || size < 1 || size > input.max_size) {
    unreadable(input, format("%u bits and %d grid points, expected 1 to 10 and 1 to %d", bits, size, input.max_size));
  }
  std::fseek(f, 0, SEEK_END);
  const long wanted = 128 + 4L * size * size * size;
  const long length = std::ftell(f);
  if (length < wanted) {
    unreadable(input, format("%ld bytes, expected %ld for %d grid points", length, wanted, size));
  }
  std::rewind(f);
  Lut3dFile file;
  if (length > wanted) {
    file.warnings.push_back(
        format("%s: %ld bytes after the last entry are not read", input_name(input.path).c_str(), length - wanted));
  }
  file.bits = static_cast<int>(bits);
  file.version = version;
  file.lut.reset(vexo_3dlut_load_dat(f));
  return file;
}

// In a cube file the title ends at a quote or at the end of a line that its reader sees as a whole.
void check_title(const Format &f, const char *title) {
  const size_t longest = 246;
  if (f.write == write_cube && title != nullptr &&
      (std::strpbrk(title, "\"\r\n") != nullptr || std::strlen(title) > longest)) {
    throw Failure(kUsageError, format("--title: the format %s carries up to %zu bytes without quotes and line breaks",
                                      f.name, longest));
  }
}

} // namespace

Lut3dFile read_lut3d(const Lut3dInput &input) {
  const Format &format = find_format("--from", input.format, input.path);
  const std::string name = format.name;
  Lut3dFile (*read)(const Lut3dInput &, std::FILE *) = name == "cube" || name == "cfe" ? read_cube
                                                       : name == "dat"                 ? read_dat
                                                       : name == "eecolor"             ? read_eecolor
                                                                                       : nullptr;
  if (read == nullptr) {
    throw Failure(kUsageError,
                  "--from " + name + ": this format can be written only, expected cube, cfe, dat or eecolor");
  }
  const File f = open_input(input.path, "a 3D LUT");
  Lut3dFile file = read(input, f.get());
  file.format = name;
  if (file.lut == nullptr) {
    unreadable(input, std::ferror(f.get()) != 0 ? "read failed" : "out of memory");
  }
  if (input.strict && !file.warnings.empty()) {
    throw Failure(kInputError, file.warnings.front());
  }
  return file;
}

void check_output(const Lut3dOutput &output, int size) {
  const Format &f = find_format("--to", output.format, output.path);
  if (f.write == nullptr) {
    throw Failure(kUsageError, std::string("--to ") + f.name + ": this format can be read only");
  }
  const int bits = output.bits > 0 ? output.bits : f.default_bits;
  if (output.bits > 0 && f.max_bits == 0) {
    throw Failure(kUsageError, std::string("--bits: the format ") + f.name + " holds decimal numbers, not codes");
  }
  if (bits < f.min_bits || bits > f.max_bits) {
    throw Failure(kUsageError,
                  format("--bits %d: the format %s carries %d to %d bits", bits, f.name, f.min_bits, f.max_bits));
  }
  if (size < f.min_size || (f.max_size > 0 && size > f.max_size)) {
    throw Failure(kUsageError,
                  f.max_size > 0
                      ? format("%d grid points: the format %s carries %d to %d", size, f.name, f.min_size, f.max_size)
                      : format("%d grid points: the format %s carries %d and more", size, f.name, f.min_size));
  }
  if (f.write == write_dat_old && size - 1 >= 2 << bits) {
    throw Failure(kUsageError, format("--bits %d: too few for the lattice of %d points", bits, size));
  }
}

void write_lut3d(const Lut3dOutput &output, vexo_3dlut *lut) {
  check_output(output, vexo_3dlut_size(lut));
  const Format &format = find_format("--to", output.format, output.path);
  const char *title = vexo_3dlut_title(lut);
  if (format.title_limit > 0 && title != nullptr && std::strlen(title) > format.title_limit) {
    std::fprintf(stderr, "vexo: warning: the title '%s' is cut to the %zu characters that the format %s carries\n",
                 title, format.title_limit, format.name);
  }
  check_title(format, title);
  OutputFile file(output.path);
  format.write(lut, file.stream(), output.bits > 0 ? output.bits : format.default_bits);
  file.commit();
}

Lut3d new_lut3d(int size, const std::string &title) {
  Lut3d lut(vexo_3dlut_create(size, title.c_str()));
  if (lut == nullptr) {
    throw Failure(kInputError, format("out of memory for %d grid points", size));
  }
  return lut;
}

Lut3d resampled(vexo_3dlut *src, int size) {
  Lut3d lut(vexo_3dlut_dup(src, size, nullptr));
  if (lut == nullptr) {
    throw Failure(kInputError, format("out of memory for %d grid points", size));
  }
  return lut;
}

std::string lut3d_format_names() { return join(format_names()); }

std::vector<std::string> lut3d_input_formats() { return {"cube", "cfe", "dat", "eecolor"}; }

std::vector<std::string> lut3d_output_formats() {
  std::vector<std::string> names;
  for (const Format &format : kFormats) {
    if (format.write != nullptr) {
      names.emplace_back(format.name);
    }
  }
  return names;
}
