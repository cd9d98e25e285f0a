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

}  // namespace qv
