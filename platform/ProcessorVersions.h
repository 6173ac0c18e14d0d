#pragma once

/// Kernels that are compiled twice: for any processor and, where that pays, for x86-64 with AVX2. The results
/// are the same bits either way; `ZEB_NO_MULTIVERSIONING` leaves the general version only.

/// Marks the parts that such a kernel's versions share, so that each compiles them for its own instructions.
#define ZEB_ALWAYS_INLINE inline __attribute__((always_inline))

#if defined(__x86_64__) && !defined(ZEB_NO_MULTIVERSIONING)
#define ZEB_FOR_AVX2 __attribute__((target("avx2")))
#else
#define ZEB_FOR_AVX2
#endif

namespace zeb {

/// True when functions marked `ZEB_FOR_AVX2` may be called and are worth calling.
inline bool processorHasAVX2() {
#if defined(__x86_64__) && !defined(ZEB_NO_MULTIVERSIONING)
    return __builtin_cpu_supports("avx2");
#else
    return false;
#endif
}

}  // namespace zeb
