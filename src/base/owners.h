// Owners of what C functions hand out: they release it on every way out of a function.
#ifndef VEXO_BASE_OWNERS_H
#define VEXO_BASE_OWNERS_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace vexo_internal {

struct CloseFile {
  void operator()(FILE *f) const { fclose(f); }
};
using OwnedFile = std::unique_ptr<FILE, CloseFile>;

struct Free {
  void operator()(void *p) const { free(p); }
};
template <typename T> using Block = std::unique_ptr<T[], Free>;

// Room for count values, not initialised; null when their bytes cannot be counted or allocated.
template <typename T> Block<T> block_of(size_t count) {
  return Block<T>(count <= SIZE_MAX / sizeof(T) ? static_cast<T *>(malloc(count * sizeof(T))) : nullptr);
}

} // namespace vexo_internal

#endif
