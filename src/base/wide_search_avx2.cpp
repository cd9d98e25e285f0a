#include "base/wide_search_avx2.h"

#if defined(__x86_64__) || defined(__i386__)

#include <bit>
#include <cstdint>
#include <immintrin.h>

#include "base/wide_search_plain.h"

#define QV_AVX2 __attribute__((target("avx2,bmi")))

namespace qv::avx2 {
namespace {

constexpr size_t kLane = 8;            // characters of one vector
constexpr size_t kStride = 4 * kLane;  // places looked at together while the first character is rare

QV_AVX2 inline __m256i Load(const wchar_t* place) noexcept {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(place));
}

QV_AVX2 inline uint32_t LaneBits(__m256i equal) noexcept {
    return static_cast<uint32_t>(_mm256_movemask_ps(_mm256_castsi256_ps(equal)));
}

// What a place must show before the whole of the searched text is compared with it.
struct Probe {
    std::wstring_view searched;
    __m256i first;
    __m256i last;

    QV_AVX2 explicit Probe(std::wstring_view text) noexcept
        : searched(text), first(_mm256_set1_epi32(text.front())), last(_mm256_set1_epi32(text.back())) {}

    QV_AVX2 __m256i FirstAt(const wchar_t* place) const noexcept {
        return _mm256_cmpeq_epi32(Load(place), first);
    }

    // The first occurrence at one of the eight places from `place` on; `equal` tells where the first
    // character is.
    QV_AVX2 const wchar_t* Among(const wchar_t* place, __m256i equal) const noexcept {
        const __m256i ends = _mm256_cmpeq_epi32(Load(place + searched.size() - 1), last);
        for (uint32_t bits = LaneBits(_mm256_and_si256(equal, ends)); bits != 0; bits &= bits - 1) {
            const wchar_t* candidate = place + std::countr_zero(bits);
            if (searched.size() <= 2 || plain::StartsWith(candidate, searched)) return candidate;
        }
        return nullptr;
    }

    QV_AVX2 const wchar_t* AmongEight(const wchar_t* place) const noexcept {
        return Among(place, FirstAt(place));
    }
};

}  // namespace

// The first and the last character of the searched text are compared at eight places at once; only where both
// are right is the rest looked at. While the first character does not turn up at all, 32 places go by in one
// step.
QV_AVX2 const wchar_t* FindText(const wchar_t* text, const wchar_t* end,
                                std::wstring_view searched) noexcept {
    if (static_cast<size_t>(end - text) < searched.size() + kLane - 1)
        return plain::FindText(text, end, searched);
    const Probe probe(searched);
    const wchar_t* const places = end - (searched.size() - 1);  // the end of the places where it could begin

    while (static_cast<size_t>(places - text) >= kStride) {
        const __m256i a = probe.FirstAt(text);
        const __m256i b = probe.FirstAt(text + kLane);
        const __m256i c = probe.FirstAt(text + 2 * kLane);
        const __m256i d = probe.FirstAt(text + 3 * kLane);
        const __m256i any = _mm256_or_si256(_mm256_or_si256(a, b), _mm256_or_si256(c, d));
        if (!_mm256_testz_si256(any, any)) {
            if (const wchar_t* found = probe.Among(text, a)) return found;
            if (const wchar_t* found = probe.Among(text + kLane, b)) return found;
            if (const wchar_t* found = probe.Among(text + 2 * kLane, c)) return found;
            if (const wchar_t* found = probe.Among(text + 3 * kLane, d)) return found;
        }
        text += kStride;
    }
    for (; static_cast<size_t>(places - text) >= kLane; text += kLane) {
        if (const wchar_t* found = probe.AmongEight(text)) return found;
    }
    // The last eight places; those that were looked at before hold no occurrence.
    return text == places ? nullptr : probe.AmongEight(places - kLane);
}

}  // namespace qv::avx2

#endif
