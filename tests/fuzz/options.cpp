// Allocations as on the device: one beyond its memory fails.
extern "C" const char *__asan_default_options() { return "allocator_may_return_null=1:max_allocation_size_mb=64"; }
