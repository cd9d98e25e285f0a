#include "codec/word_scan.h"

namespace qv {

uint64_t ScanGreaterPlain(const int32_t* words, size_t count, int32_t bound) {
    uint64_t mask = 0;
    for (size_t i = 0; i < count; ++i) mask |= uint64_t{words[i] > bound} << i;
    return mask;
}

ScanGreater GetScanGreater() noexcept {
#if defined(__x86_64__) || defined(__i386__)
    if (__builtin_cpu_supports("avx512f")) return ScanGreaterAvx512;
    if (__builtin_cpu_supports("avx2")) return ScanGreaterAvx2;
#endif
    return ScanGreaterPlain;
}

}  // namespace qv
