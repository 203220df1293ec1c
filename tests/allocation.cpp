#include "allocation.h"

#include <atomic>
#include <cstddef>

namespace {
std::atomic<int> countdown; // allocations up to the one that fails; 0: none does
std::atomic<long> held;     // blocks that are allocated and not freed
} // namespace

FailingAllocation::FailingAllocation(int n) { countdown = n; }
FailingAllocation::~FailingAllocation() { countdown = 0; }
bool FailingAllocation::happened() const { return countdown == 0; }

long blocks_held() { return held; }

#if !VEXO_OWN_ALLOCATOR
extern "C" {
void *__libc_malloc(size_t size);
void *__libc_calloc(size_t count, size_t size);
void *__libc_realloc(void *block, size_t size);
void __libc_free(void *block);

static bool fails() { return countdown > 0 && --countdown == 0; }

static void *counted(void *block) {
  held += block != nullptr ? 1 : 0;
  return block;
}

void *malloc(size_t size) noexcept { return fails() ? nullptr : counted(__libc_malloc(size)); }
void *calloc(size_t count, size_t size) noexcept { return fails() ? nullptr : counted(__libc_calloc(count, size)); }
void *realloc(void *block, size_t size) noexcept {
  if (fails()) {
    return nullptr;
  }
  return block == nullptr ? counted(__libc_malloc(size)) : __libc_realloc(block, size);
}
void free(void *block) noexcept {
  held -= block != nullptr ? 1 : 0;
  __libc_free(block);
}
}
#endif
