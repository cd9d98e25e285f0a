#include "codec/word_scan.h"

#if QV_X86

#include <immintrin.h>

namespace qv {

__attribute__((target("avx512f"))) uint64_t ScanGreaterAvx512(const int32_t* words, size_t count,
                                                              int32_t bound) {
    const __m512i bounds = _mm512_set1_epi32(bound);
    uint64_t mask = 0;
    for (size_t i = 0; i < count; i += 16) {
        mask |= uint64_t{_mm512_cmpgt_epi32_mask(_mm512_loadu_si512(words + i), bounds)} << i;
    }
    return mask & LowBits(count);
}

}  // namespace qv

#endif
