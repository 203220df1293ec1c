// Allocation failures on demand, for every allocation of the process. Sanitizers bring their own allocator, so there
// it is impossible.
#ifndef VEXO_TESTS_ALLOCATION_H
#define VEXO_TESTS_ALLOCATION_H

#ifdef __has_feature
#if __has_feature(address_sanitizer)
#define __SANITIZE_ADDRESS__ 1
#endif
#endif

#ifdef __SANITIZE_ADDRESS__
const bool kAllocationCanFail = false;
#else
const bool kAllocationCanFail = true;
#endif

// While it lives, the n-th allocation (1 the first) fails.
class FailingAllocation {
public:
  explicit FailingAllocation(int n);
  ~FailingAllocation();
  FailingAllocation(const FailingAllocation &) = delete;
  FailingAllocation &operator=(const FailingAllocation &) = delete;
  bool happened() const; // whether there was an n-th allocation
};

#endif
