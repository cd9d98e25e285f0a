#include "collections/handle_scan.h"

#if defined(__x86_64__)

#include <immintrin.h>

namespace qv {
namespace {

constexpr std::size_t kStep = 16;

__attribute__((target("avx2"))) inline __m256i EqualsFour(void* const* handles, __m256i wanted) {
    return _mm256_cmpeq_epi64(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(handles)), wanted);
}

__attribute__((target("avx2"))) inline bool AmongSixteen(void* const* handles, __m256i wanted) {
    const __m256i low = _mm256_or_si256(EqualsFour(handles, wanted), EqualsFour(handles + 4, wanted));
    const __m256i high = _mm256_or_si256(EqualsFour(handles + 8, wanted), EqualsFour(handles + 12, wanted));
    const __m256i all = _mm256_or_si256(low, high);
    return _mm256_testz_si256(all, all) == 0;
}

}  // namespace

__attribute__((target("avx2"))) std::size_t FindHandleAvx2(void* const* handles, std::size_t count,
                                                           const void* wanted) noexcept {
    const __m256i key = _mm256_set1_epi64x(reinterpret_cast<long long>(wanted));
    std::size_t index = 0;
    while (count - index >= kStep && !AmongSixteen(handles + index, key))
        index += kStep;
    return index + FindHandlePlain(handles + index, count - index, wanted);
}

}  // namespace qv

#endif
