// Loops that gain from the host's vector units are compiled several times; the loader takes the version that the host
// can run. The arithmetic stays what it is: every element is rounded as in the scalar code, and nothing is fused.
#ifndef VEXO_CLONES_H
#define VEXO_CLONES_H

#include <cstddef> // __GLIBC__

#ifdef __has_feature
#if __has_feature(address_sanitizer) || __has_feature(memory_sanitizer) || __has_feature(thread_sanitizer)
#define VEXO_SANITIZED
#endif
#elif defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define VEXO_SANITIZED
#endif

#if defined(__x86_64__) && defined(__GLIBC__) && defined(__OPTIMIZE__) && !defined(VEXO_SANITIZED)
#define VEXO_VECTORISED __attribute__((target_clones("avx512f", "avx2", "default")))
#else
#define VEXO_VECTORISED // one version; sanitizers are not ready when the loader chooses
#endif

#endif
