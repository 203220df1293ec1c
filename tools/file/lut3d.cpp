#include "file/lut3d.h"

#include <cmath>
#include <cstring>
#include <utility>

#include "file/input.h"
#include "file/output.h"
#include "file/remarks.h"
#include "text/failure.h"
#include "text/format.h"
#include "text/grammar.h"
#include "vexo-3dlut-readers.h"

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

[[noreturn]] void unreadable(const Lut3dInput &input, const std::string &what) {
  throw Failure(kInputError, input_name(input.path) + ": " + what);
}

const size_t kMostWarnings = 1000; // of a file

// What a cube file holds beside what its reader takes.
struct CubeJudge {
  const Lut3dInput &input;
  std::FILE *f;
  std::vector<std::string> warnings;
  long long size = 0; // 0 in the header
  bool skipped = false;

  bool operator()(const Remark &r) {
    switch (r.kind) {
    case Remark::size:
      if (r.found < 1 || r.found > input.max_size) {
        refuse(r, format("LUT_3D_SIZE %lld, expected 1 to %d (--max-size)", r.found, input.max_size));
      }
      size = r.found;
      return true;
    case Remark::passed_over:
      judge_line(r);
      return true;
    case Remark::too_many:
      warn(r, format("more than the %lld entries of LUT_3D_SIZE %lld; this row and those after it are not read",
                     r.expected, size));
      return false;
    case Remark::no_size:
      if (std::ferror(f) == 0) {
        unreadable(input, "no LUT_3D_SIZE line");
      }
      return false;
    case Remark::too_few:
      if (std::ferror(f) == 0) {
        refuse(r, format("the file ends after %lld entries, expected %lld for LUT_3D_SIZE %lld", r.found, r.expected,
                         size));
      }
      return false;
    default:
      return true;
    }
  }

  std::string at(const Remark &r) const { return format("%s:%ld: ", input_name(input.path).c_str(), r.line); }

  [[noreturn]] void refuse(const Remark &r, const std::string &what) const { throw Failure(kInputError, at(r) + what); }

  void warn(const Remark &r, const std::string &what) {
    if (warnings.size() == kMostWarnings) {
      refuse(r, what + format("; more than %zu warnings", kMostWarnings));
    }
    warnings.push_back(at(r) + what);
  }

  // Of the lines among the entries that are not understood, only the first is named.
  void judge_line(const Remark &line) {
    if (!check_keyword(line) && size > 0 && !blank(line.text) && !skipped) {
      skipped = true;
      warn(line, "not three numbers, skipped");
    }
  }

  // Warns about a keyword that changes what the entries mean. Returns whether the line holds any keyword.
  bool check_keyword(const Remark &line) {
    const char *text = line.text;
    if (text[0] == '#') {
      return true;
    }
    float v[3];
    if (std::sscanf(text, " DOMAIN_MIN %f %f %f", &v[0], &v[1], &v[2]) == 3) {
      warn_unless(line, v, 0.0F, "DOMAIN_MIN");
    } else if (std::sscanf(text, " DOMAIN_MAX %f %f %f", &v[0], &v[1], &v[2]) == 3) {
      warn_unless(line, v, 1.0F, "DOMAIN_MAX");
    } else if (std::strstr(text, "LUT_3D_INPUT_RANGE") != nullptr) {
      warn(line, "LUT_3D_INPUT_RANGE is not applied: inputs are taken as 0 to 1");
    } else if (std::strstr(text, "LUT_1D_SIZE") != nullptr) {
      warn(line, "LUT_1D_SIZE: a 1D shaper is not applied, and its rows are read as the first entries of the 3D table");
    } else {
      return text[0] >= 'A' && text[0] <= 'Z';
    }
    return true;
  }

  void warn_unless(const Remark &line, const float (&v)[3], float expected, const char *keyword) {
    if (v[0] != expected || v[1] != expected || v[2] != expected) {
      warn(line, format("%s %g %g %g is not applied: inputs are taken as 0 to 1", keyword, static_cast<double>(v[0]),
                        static_cast<double>(v[1]), static_cast<double>(v[2])));
    }
  }
};

Lut3dFile read_cube(const Lut3dInput &input, std::FILE *f) {
  Lut3dFile file;
  CubeJudge judge = {input, f, {}};
  file.lut = judged(std::ref(judge),
                    [f](const Collector *collector) { return Lut3d(vexo_internal::read_cube(f, collector)); });
  file.warnings = std::move(judge.warnings);
  return file;
}

// As given, or the cube root of the number of entries.
int eecolor_size(const Lut3dInput &input, std::FILE *f) {
  long long count = 0;
  long long size = input.size;
  if (size == 0) {
    count = vexo_internal::count_eecolor(f);
    size = std::llround(std::cbrt(static_cast<double>(count)));
    std::rewind(f);
  }
  if (size > input.max_size) {
    unreadable(input, format("%lld grid points, expected at most %d (--max-size)", size, input.max_size));
  }
  if (input.size == 0 && (count < 1 || size * size * size != count)) {
    unreadable(input, format("%lld lines of six numbers, which is no cube number", count));
  }
  return static_cast<int>(size);
}

Lut3dFile read_eecolor(const Lut3dInput &input, std::FILE *f) {
  const int size = eecolor_size(input, f);
  long left_over = 0;
  const auto judge = [&](const Remark &remark) {
    if (remark.kind == Remark::too_few && std::ferror(f) == 0) {
      unreadable(input, format("%lld lines of six numbers, expected %lld for %d grid points", remark.found,
                               remark.expected, size));
    }
    left_over += remark.kind == Remark::too_many ? 1 : 0;
    return true;
  };
  Lut3dFile file;
  file.lut =
      judged(judge, [&](const Collector *collector) { return Lut3d(vexo_internal::read_eecolor(f, size, collector)); });
  if (left_over > 0) {
    file.warnings.push_back(
        format("%s: the last %ld lines of six numbers are not read", input_name(input.path).c_str(), left_over));
  }
  return file;
}

Lut3dFile read_dat(const Lut3dInput &input, std::FILE *f) {
  vexo_internal::PackedHeader header = {};
  if (!vexo_internal::read_packed_header(f, &header)) {
    unreadable(input, "shorter than the header of 128 bytes");
  }
  if (header.magic != vexo_internal::kPackedMagic) {
    unreadable(input,
               format("not a packed 3D LUT: magic 0x%08x, expected 0x%08x", header.magic, vexo_internal::kPackedMagic));
  }
  if (!vexo_internal::packed_version(header.version)) {
    unreadable(input, format("version 0x%08x, which has no reader; expected 0x%08x", header.version,
                             vexo_internal::kPackedVersion));
  }
  if (header.nbits < 1 || header.nbits > 10 || header.size < 1 || header.size > input.max_size) {
    unreadable(input, format("%u bits and %d grid points, expected 1 to 10 and 1 to %d", header.nbits, header.size,
                             input.max_size));
  }
  std::fseek(f, 0, SEEK_END);
  const long wanted = 128 + 4L * header.size * header.size * header.size;
  const long length = std::ftell(f);
  if (length < wanted) {
    unreadable(input, format("%ld bytes, expected %ld for %d grid points", length, wanted, header.size));
  }
  std::rewind(f);
  Lut3dFile file;
  if (length > wanted) {
    file.warnings.push_back(
        format("%s: %ld bytes after the last entry are not read", input_name(input.path).c_str(), length - wanted));
  }
  file.bits = static_cast<int>(header.nbits);
  file.version = header.version;
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
