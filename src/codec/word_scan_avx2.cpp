#include "codec/word_scan.h"

#if QV_X86

#include <immintrin.h>

namespace qv {

namespace {

__attribute__((target("avx2"))) inline __m256i Greater8(const int32_t* words, __m256i bound) {
    return _mm256_cmpgt_epi32(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(words)), bound);
}

__attribute__((target("avx2"))) inline uint32_t Greater32(const int32_t* words, __m256i bound) {
    const __m256i low = _mm256_packs_epi32(Greater8(words, bound), Greater8(words + 8, bound));
    const __m256i high = _mm256_packs_epi32(Greater8(words + 16, bound), Greater8(words + 24, bound));
    // Packing works within 16-byte halves, so the groups of four bytes come out of order.
    const __m256i order = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
    const __m256i bytes = _mm256_permutevar8x32_epi32(_mm256_packs_epi16(low, high), order);
    return static_cast<uint32_t>(_mm256_movemask_epi8(bytes));
}

}  // namespace

__attribute__((target("avx2"))) uint64_t ScanGreaterAvx2(const int32_t* words, size_t count, int32_t bound) {
    const __m256i bounds = _mm256_set1_epi32(bound);
    uint64_t mask = Greater32(words, bounds);
    if (count > 32) mask |= uint64_t{Greater32(words + 32, bounds)} << 32;
    return mask & LowBits(count);
}

}  // namespace qv

#endif
