// Allocation failures on demand, for every allocation of the process, and a count of the blocks that it holds.
// Sanitizers bring their own allocator, so there neither is possible.
#ifndef VEXO_TESTS_ALLOCATION_H
#define VEXO_TESTS_ALLOCATION_H

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define VEXO_OWN_ALLOCATOR 1
#elif defined(__has_feature)
#define VEXO_OWN_ALLOCATOR (__has_feature(address_sanitizer) || __has_feature(thread_sanitizer))
#else
#define VEXO_OWN_ALLOCATOR 0
#endif

const bool kAllocationCanFail = !VEXO_OWN_ALLOCATOR;

// While it lives, the n-th allocation (1 the first) fails; none with n = 0.
class FailingAllocation {
public:
  explicit FailingAllocation(int n);
  ~FailingAllocation();
  FailingAllocation(const FailingAllocation &) = delete;
  FailingAllocation &operator=(const FailingAllocation &) = delete;
  bool happened() const; // whether there was an n-th allocation
};

// Blocks allocated and not freed so far.
long blocks_held();

#endif
