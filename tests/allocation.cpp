#include "allocation.h"

#include <cstddef>

namespace {
int countdown; // allocations up to the one that fails; 0: none does
} // namespace

FailingAllocation::FailingAllocation(int n) { countdown = n; }
FailingAllocation::~FailingAllocation() { countdown = 0; }
bool FailingAllocation::happened() const { return countdown == 0; }

#ifndef __SANITIZE_ADDRESS__
extern "C" {
void *__libc_malloc(size_t size);
void *__libc_calloc(size_t count, size_t size);

static bool fails() { return countdown > 0 && --countdown == 0; }

void *malloc(size_t size) noexcept { return fails() ? nullptr : __libc_malloc(size); }
void *calloc(size_t count, size_t size) noexcept { return fails() ? nullptr : __libc_calloc(count, size); }
}
#endif
