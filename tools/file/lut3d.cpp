#include "file/lut3d.h"

#include <cmath>
#include <cstring>
#include <iterator>
#include <sstream>
#include <utility>

#include "file/input.h"
#include "file/output.h"
#include "file/remarks.h"
#include "text/channels.h"
#include "text/failure.h"
#include "text/format.h"
#include "text/grammar.h"
#include "vexo-3dlut-readers.h"

namespace {

void write_cube(vexo_3dlut *lut, std::FILE *f, int /*bits*/) { vexo_3dlut_dump_cube(lut, f); }
void write_domain(std::FILE *f, const Lut3dDomain &domain) {
  const std::vector<float> &a = domain.min;
  const std::vector<float> &b = domain.max;
  std::fprintf(f, "DOMAIN_MIN %.9g %.9g %.9g\nDOMAIN_MAX %.9g %.9g %.9g\n", a[0], a[1], a[2], b[0], b[1], b[2]);
}
void write_cfe(vexo_3dlut *lut, std::FILE *f, int /*bits*/) { vexo_3dlut_dump_cfe(lut, f, nullptr, nullptr); }
void write_dat(vexo_3dlut *lut, std::FILE *f, int bits) { vexo_3dlut_dump_dat(lut, f, bits); }
void write_dat12(vexo_3dlut *lut, std::FILE *f, int bits) { vexo_3dlut_dump_dat_12bit(lut, f, bits); }
void write_dat_old(vexo_3dlut *lut, std::FILE *f, int bits) { vexo_3dlut_dump_old_dat(lut, f, bits); }
void write_coe(vexo_3dlut *lut, std::FILE *f, int bits) { vexo_3dlut_dump_coe(lut, f, bits); }
void write_debug(vexo_3dlut *lut, std::FILE *f, int bits) { vexo_3dlut_dump_debug(lut, f, bits); }
void write_debug_gray(vexo_3dlut *lut, std::FILE *f, int bits) { vexo_3dlut_dump_1dlut_debug(lut, f, bits); }

[[noreturn]] void unreadable(const Lut3dInput &input, const std::string &what) {
  throw Failure(kInputError, input_name(input.path) + ": " + what);
}

// What a cube file holds beside what its reader takes.
struct CubeJudge {
  const Lut3dInput &input;
  std::FILE *f;
  std::vector<std::string> warnings;
  Lut3dDomain domain;
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
      refuse(r, format("more than the %lld entries of LUT_3D_SIZE %lld", r.expected, size));
    case Remark::no_size:
      if (std::ferror(f) == 0) {
        unreadable(input, "no line with LUT_3D_SIZE, expected a cube");
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

  [[noreturn]] void refuse(const Remark &r, const std::string &what) const {
    refuse_input(format("%s:%ld", input_name(input.path).c_str(), r.line), what);
  }

  // Of the lines among the entries that are not understood, only the first is named.
  void judge_line(const Remark &line) {
    if (!take_keyword(line) && size > 0 && !blank(line.text) && !skipped) {
      skipped = true;
      warnings.push_back(format("%s:%ld: not three numbers, skipped", input_name(input.path).c_str(), line.line));
    }
  }

  // Keywords that change what the entries mean. Returns whether the line holds any keyword.
  bool take_keyword(const Remark &line) {
    std::istringstream in(line.text);
    const std::vector<std::string> words{std::istream_iterator<std::string>(in), {}};
    const std::string name = words.empty() ? "" : words[0];
    if (name == "LUT_1D_SIZE") {
      refuse(line, "LUT_1D_SIZE: a 1D LUT, expected a 3D LUT alone (vexo lut1d reads 1D LUTs)");
    } else if (name == "DOMAIN_MIN") {
      domain.min = inputs(line, words, 3);
    } else if (name == "DOMAIN_MAX") {
      domain.max = inputs(line, words, 3);
    } else if (name == "LUT_3D_INPUT_RANGE") {
      const std::vector<float> range = inputs(line, words, 2);
      domain = {std::vector<float>(3, range[0]), std::vector<float>(3, range[1])};
    }
    return line.text[0] == '#' || (line.text[0] >= 'A' && line.text[0] <= 'Z');
  }

  std::vector<float> inputs(const Remark &line, const std::vector<std::string> &words, size_t count) const {
    std::vector<float> values;
    for (size_t i = 1; i < words.size(); i++) {
      if (const auto value = finite_number(words[i])) {
        values.push_back(*value);
      }
    }
    if (words.size() != count + 1 || values.size() != count) {
      refuse(line, join(words) + format(", expected %zu numbers", count));
    }
    return values;
  }

  void check_domain() const {
    for (size_t c = 0; c < 3; c++) {
      if (!(domain.min[c] < domain.max[c])) {
        unreadable(input, "inputs from " + describe(domain) + ", expected a range above 0");
      }
    }
  }
};

Lut3dFile read_cube(const Lut3dInput &input, std::FILE *f) {
  Lut3dFile file;
  CubeJudge judge = {input, f, {}, {}};
  file.lut = judged(std::ref(judge),
                    [f](const Collector *collector) { return Lut3d(vexo_internal::read_cube(f, collector)); });
  judge.check_domain();
  file.warnings = std::move(judge.warnings);
  file.domain = std::move(judge.domain);
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
    unreadable(input, format("%lld lines of six numbers, expected a cube number of them", count));
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

// The format's limits, how it is told by a file name, its reader and its writer; a text format without codes has bits
// of 0.
struct Format {
  const char *name;
  const char *extension; // "" where only the name tells
  int min_bits;
  int max_bits;
  int default_bits;
  int min_size;
  int max_size;       // 0: no limit
  size_t title_limit; // 0: none
  Lut3dFile (*read)(const Lut3dInput &input, std::FILE *f);
  void (*write)(vexo_3dlut *lut, std::FILE *f, int bits);
};

// Name, extension; bits from, to, default; size from, to; characters of the title; reader, writer. The packed header
// holds the size in a byte.
const Format kFormats[] = {
    {"cube", ".cube", 0, 0, 0, 1, 0, 0, read_cube, write_cube},
    {"cfe", ".cfe", 0, 0, 0, 1, 0, 0, read_cube, write_cfe},
    {"dat", ".dat", 1, 10, 10, 1, 255, 16, read_dat, write_dat},
    {"dat12", "", 12, 12, 12, 33, 33, 16, nullptr, write_dat12},
    {"dat-old", "", 1, 10, 10, 2, 256, 16, nullptr, write_dat_old},
    {"eecolor", ".txt", 0, 0, 0, 1, 0, 0, read_eecolor, nullptr},
    {"coe", ".coe", 1, 10, 10, 2, 0, 0, nullptr, write_coe},
    {"debug", "", 1, 30, 10, 1, 0, 0, nullptr, write_debug},
    {"debug-gray", "", 1, 30, 10, 1, 0, 0, nullptr, write_debug_gray},
};

// Those that can be read, or those that can be written.
template <typename Function> std::vector<std::string> names_with(Function Format::*function) {
  std::vector<std::string> names;
  for (const Format &format : kFormats) {
    if (format.*function != nullptr) {
      names.emplace_back(format.name);
    }
  }
  return names;
}

// The format of a name, or of a path's extension, among those that can be read or written.
template <typename Function>
const Format &find_format(Function Format::*function, const std::string &option, const std::string &name,
                          const std::string &path) {
  const std::vector<std::string> names = names_with(function);
  const std::string known = name.empty() ? "" : parse_name(option, name, names);
  for (const Format &format : kFormats) {
    const bool told =
        name.empty() ? *format.extension != '\0' && has_extension(path, format.extension) : known == format.name;
    if (told && format.*function != nullptr) {
      return format;
    }
  }
  throw Failure(kUsageError, path + ": its name tells no format, expected " + option + " with one of " + join(names));
}

void check_finite(const Lut3dInput &input, vexo_3dlut *lut) {
  const int size = vexo_3dlut_size(lut);
  for (int i = 0; i < size * size * size; i++) {
    const int bi = i / size / size;
    const int gi = i / size % size;
    const int ri = i % size;
    const auto &rgb = vexo_3dlut_item(lut, bi, gi, ri)->d;
    for (int c = 0; c < 3; c++) {
      if (!std::isfinite(rgb[c])) {
        unreadable(input, format("entry %d (blue %d, green %d, red %d): %s is %g, expected a finite number", i + 1, bi,
                                 gi, ri, kChannels[c], static_cast<double>(rgb[c])));
      }
    }
  }
}

// In a cube file the title ends at a quote or at the end of a line that its reader sees as a whole.
void check_title(const Lut3dOutput &output, const Format &f, const char *title) {
  const size_t longest = 246;
  if (f.write != write_cube || title == nullptr ||
      (std::strpbrk(title, "\"\r\n") == nullptr && std::strlen(title) <= longest)) {
    return;
  }
  const std::string carried =
      format("the format %s carries up to %zu bytes without quotes and line breaks", f.name, longest);
  if (output.title_given || output.source.empty()) {
    throw Failure(kUsageError, "--title: " + carried);
  }
  refuse_input(output.source, "title '" + visible(title) + "': " + carried + "; --title gives another");
}

} // namespace

Lut3dFile read_lut3d(const Lut3dInput &input) {
  const Format &format = find_format(&Format::read, "--from", input.format, input.path);
  const File f = open_input(input.path, "a 3D LUT");
  Lut3dFile file = format.read(input, f.get());
  file.format = format.name;
  if (file.lut == nullptr) {
    unreadable(input, std::ferror(f.get()) != 0 ? "read failed" : "out of memory");
  }
  check_finite(input, file.lut.get());
  if (input.strict && !file.warnings.empty()) {
    throw Failure(kInputError, file.warnings.front());
  }
  return file;
}

bool operator==(const Lut3dDomain &a, const Lut3dDomain &b) { return a.min == b.min && a.max == b.max; }

std::string describe(const Lut3dDomain &domain) {
  const std::vector<float> &a = domain.min;
  const std::vector<float> &b = domain.max;
  return format("%g %g %g to %g %g %g", a[0], a[1], a[2], b[0], b[1], b[2]);
}

void check_output(const Lut3dOutput &output, int size) {
  const Format &f = find_format(&Format::write, "--to", output.format, output.path);
  if (f.write != write_cube && !(output.domain == Lut3dDomain{})) {
    refuse_input(output.source, "inputs from " + describe(output.domain) + ", which the format " + f.name +
                                    " does not carry, expected 0 to 1");
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
  const Format &format = find_format(&Format::write, "--to", output.format, output.path);
  const char *title = vexo_3dlut_title(lut);
  if (format.title_limit > 0 && title != nullptr && std::strlen(title) > format.title_limit) {
    std::fprintf(stderr, "vexo: warning: the title '%s' is cut to the %zu characters that the format %s carries\n",
                 visible(title).c_str(), format.title_limit, format.name);
  }
  check_title(output, format, title);
  OutputFile file(output.path);
  if (!(output.domain == Lut3dDomain{})) {
    write_domain(file.stream(), output.domain);
  }
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

std::vector<std::string> lut3d_input_formats() { return names_with(&Format::read); }

std::vector<std::string> lut3d_output_formats() { return names_with(&Format::write); }
