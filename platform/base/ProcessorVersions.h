#pragma once

/// Support for kernels that are compiled twice: for every processor, and for x86-64 with AVX2. Both versions
/// give the same bits. `ZEB_NO_MULTIVERSIONING` disables the AVX2 version.

/// Marks functions that both versions of a kernel share, so that each version compiles them for its
/// instruction set.
#define ZEB_ALWAYS_INLINE inline __attribute__((always_inline))

#if defined(__x86_64__) && !defined(ZEB_NO_MULTIVERSIONING)
#define ZEB_FOR_AVX2 __attribute__((target("avx2")))
#else
#define ZEB_FOR_AVX2
#endif

namespace zeb {

/// True if functions marked `ZEB_FOR_AVX2` may be called and are faster.
inline bool processorHasAVX2() {
#if defined(__x86_64__) && !defined(ZEB_NO_MULTIVERSIONING)
    return __builtin_cpu_supports("avx2");
#else
    return false;
#endif
}

}  // namespace zeb
