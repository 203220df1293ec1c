// Loops that the compiler turns into vector code, compiled once more for processors with wider vectors; the loader
// chooses. Only the width differs: no clone may fuse a multiplication and an addition, so the bits are the same.
#ifndef VEXO_CLONES_H
#define VEXO_CLONES_H

// Sanitizers instrument the choice itself, which runs before they are ready.
#ifdef __has_feature
#if __has_feature(address_sanitizer) || __has_feature(undefined_behavior_sanitizer) || __has_feature(thread_sanitizer)
#define VEXO_SANITIZED
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define VEXO_SANITIZED
#endif

#define VEXO_CLONES
#if defined(__x86_64__) && defined(__linux__) && defined(__has_attribute) && !defined(VEXO_SANITIZED)
#if __has_attribute(target_clones)
#undef VEXO_CLONES
#define VEXO_CLONES __attribute__((target_clones("default", "avx2")))
#endif
#endif

#endif
