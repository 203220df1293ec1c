// What the tests of 3D LUTs share: owned tables, a decimal-comma locale, processes with little memory.
#ifndef VEXO_TESTS_LUT3D_SUPPORT_H
#define VEXO_TESTS_LUT3D_SUPPORT_H

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "vexo-3dlut.h"

struct DestroyLut {
  void operator()(vexo_3dlut *lut) const { vexo_3dlut_destroy(lut); }
};
using Lut = std::unique_ptr<vexo_3dlut, DestroyLut>;

// All components in memory order.
inline std::vector<float> components(vexo_3dlut *lut) {
  const size_t size = static_cast<size_t>(vexo_3dlut_size(lut));
  const float *first = vexo_3dlut_item(lut, 0, 0, 0)->d;
  return std::vector<float>(first, first + 3 * size * size * size);
}

// A table whose entry (bi, gi, ri) is value(bi, gi, ri).
template <typename Value> Lut table(int size, const char *title, Value value) {
  Lut lut(vexo_3dlut_create(size, title));
  for (int bi = 0; bi < size; bi++) {
    for (int gi = 0; gi < size; gi++) {
      for (int ri = 0; ri < size; ri++) {
        vexo_vector v = value(bi, gi, ri);
        vexo_3dlut_set_item(lut.get(), &v, bi, gi, ri);
      }
    }
  }
  return lut;
}

// A scratch folder that goes with its owner.
class Folder {
public:
  Folder() : path_((std::filesystem::temp_directory_path() / "vexo-XXXXXX").string()) {
    if (mkdtemp(path_.data()) == nullptr) {
      std::abort();
    }
  }
  ~Folder() { std::filesystem::remove_all(path_); }
  Folder(const Folder &) = delete;
  Folder &operator=(const Folder &) = delete;
  std::string file(const std::string &name) const { return path_ + "/" + name; }

private:
  std::string path_;
};

// Sets the process to a locale with a decimal comma, built for the purpose, as long as the guard lives.
class CommaLocale {
public:
  CommaLocale() {
    const std::string build = "localedef -c -i de_DE -f UTF-8 '" + folder_.file("de_DE.UTF-8") + "' >/dev/null 2>&1";
    // localedef complains about harmless things: what counts is whether the locale can be set.
    if (std::system(build.c_str()) != -1) {
      setenv("LOCPATH", folder_.file("").c_str(), 1);
      active_ = std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr && *std::localeconv()->decimal_point == ',';
    }
  }
  ~CommaLocale() {
    std::setlocale(LC_ALL, "C");
    unsetenv("LOCPATH");
  }
  CommaLocale(const CommaLocale &) = delete;
  CommaLocale &operator=(const CommaLocale &) = delete;
  bool active() const { return active_; }

private:
  Folder folder_;
  bool active_ = false;
};

#if defined(__SANITIZE_ADDRESS__)
const bool kSanitized = true;
#elif defined(__has_feature)
const bool kSanitized = __has_feature(address_sanitizer);
#else
const bool kSanitized = false;
#endif

#endif
