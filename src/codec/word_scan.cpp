#include "codec/word_scan.h"

namespace qv {

uint64_t ScanGreaterPlain(const int32_t* words, size_t count, int32_t bound) {
    uint64_t mask = 0;
    for (size_t i = 0; i < count; ++i)
        mask |= uint64_t{words[i] > bound} << i;
    return mask;
}

ScanGreater GetScanGreater() noexcept {
#if QV_X86
    if (HasAvx512()) return ScanGreaterAvx512;
    if (HasAvx2()) return ScanGreaterAvx2;
#endif
    return ScanGreaterPlain;
}

}  // namespace qv
