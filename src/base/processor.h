// Which vector instructions the running processor has. The plain code beside every vector version is the
// portable path; there are vector versions for x86 only.
#pragma once

#if defined(__x86_64__) || defined(__i386__)
#define QV_X86 1
#else
#define QV_X86 0
#endif

namespace qv {

inline bool HasAvx2() noexcept {
#if QV_X86
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("popcnt");
#else
    return false;
#endif
}

// Operations on 32-bit words in vectors of 64 bytes.
inline bool HasAvx512() noexcept {
#if QV_X86
    return __builtin_cpu_supports("avx512f");
#else
    return false;
#endif
}

// Those on bytes, and the permutations of bytes.
inline bool HasAvx512Bytes() noexcept {
#if QV_X86
    return __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vbmi");
#else
    return false;
#endif
}

// And those that move chosen bytes together.
inline bool HasAvx512Compress() noexcept {
#if QV_X86
    return HasAvx512Bytes() && __builtin_cpu_supports("avx512vbmi2") && __builtin_cpu_supports("popcnt");
#else
    return false;
#endif
}

}  // namespace qv
