#include "base/wide_search_avx2.h"

#if defined(__x86_64__) || defined(__i386__)

#include <bit>
#include <cstddef>
#include <cstdint>
#include <immintrin.h>

#include "base/wide_search_plain.h"

#define QV_AVX2 __attribute__((target("avx2,bmi")))

namespace qv::avx2 {
namespace {

constexpr ptrdiff_t kLane = 8;           // characters of one vector
constexpr ptrdiff_t kBlock = 4 * kLane;  // places that go by in one step

QV_AVX2 inline __m256i Load(const wchar_t* place) noexcept {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(place));
}

QV_AVX2 inline bool AnyOf(__m256i a, __m256i b, __m256i c, __m256i d) noexcept {
    return _mm256_movemask_epi8(_mm256_or_si256(_mm256_or_si256(a, b), _mm256_or_si256(c, d))) != 0;
}

// The first place after `place` where a vector can be loaded without crossing a cache line.
inline const wchar_t* NextAligned(const wchar_t* place) noexcept {
    const ptrdiff_t beyond =
        static_cast<ptrdiff_t>(reinterpret_cast<uintptr_t>(place) / sizeof(wchar_t)) % kLane;
    return place + (kLane - beyond);
}

// What a place must show before the whole of the searched text is compared with it: its first, its last and
// the character in the middle. Two alone would let every twelfth vector of prose through, and a mispredicted
// branch for each.
class Probe {
public:
    QV_AVX2 explicit Probe(std::wstring_view text) noexcept
        : searched_(text),
          first_(_mm256_set1_epi32(text.front())),
          middle_(_mm256_set1_epi32(text[text.size() / 2])),
          last_(_mm256_set1_epi32(text.back())) {}

    // The first occurrence at one of the eight places from `place` on, or null.
    QV_AVX2 const wchar_t* AmongEight(const wchar_t* place) const noexcept {
        const __m256i candidates = RestAt(place, FirstAt(place));
        auto bits = static_cast<uint32_t>(_mm256_movemask_ps(_mm256_castsi256_ps(candidates)));
        for (; bits != 0; bits &= bits - 1) {
            const wchar_t* candidate = place + std::countr_zero(bits);
            if (plain::StartsWith(candidate, searched_)) return candidate;
        }
        return nullptr;
    }

    // Eight masks: where the first character stands.
    QV_AVX2 __m256i FirstAt(const wchar_t* place) const noexcept {
        return _mm256_cmpeq_epi32(Load(place), first_);
    }

    // Those of them where the two others are right as well.
    QV_AVX2 __m256i RestAt(const wchar_t* place, __m256i firsts) const noexcept {
        const __m256i lasts = _mm256_cmpeq_epi32(Load(place + searched_.size() - 1), last_);
        const __m256i middles = _mm256_cmpeq_epi32(Load(place + searched_.size() / 2), middle_);
        return _mm256_and_si256(firsts, _mm256_and_si256(lasts, middles));
    }

private:
    std::wstring_view searched_;
    __m256i first_;
    __m256i middle_;
    __m256i last_;
};

// The first of the blocks from `block` on that has a candidate; where less than a block is left before
// `places` if none has. A function of its own, and the block without the first character its shortest way: so
// the compiler keeps the vectors in registers and that loop in one piece, which makes a fifth of its speed.
[[gnu::noinline]] QV_AVX2 const wchar_t* SkipBlocks(const wchar_t* block, const wchar_t* places,
                                                    std::wstring_view searched) noexcept {
    const Probe probe(searched);
    for (; places - block >= kBlock; block += kBlock) {
        const __m256i a = probe.FirstAt(block);
        const __m256i b = probe.FirstAt(block + kLane);
        const __m256i c = probe.FirstAt(block + 2 * kLane);
        const __m256i d = probe.FirstAt(block + 3 * kLane);
        if (!AnyOf(a, b, c, d)) [[likely]]
            continue;
        if (AnyOf(probe.RestAt(block, a), probe.RestAt(block + kLane, b), probe.RestAt(block + 2 * kLane, c),
                  probe.RestAt(block + 3 * kLane, d)))
            break;
    }
    return block;
}

}  // namespace

// In a long text the first eight places wherever they lie, then whole blocks from an aligned place on; only
// blocks with a candidate are looked at place by place.
QV_AVX2 const wchar_t* FindText(const wchar_t* text, const wchar_t* end,
                                std::wstring_view searched) noexcept {
    if (static_cast<size_t>(end - text) < searched.size() + kLane - 1)
        return plain::FindText(text, end, searched);
    const Probe probe(searched);
    const wchar_t* const places = end - (searched.size() - 1);  // the end of the places where it could begin

    if (places - text >= kLane + kBlock) {
        if (const wchar_t* found = probe.AmongEight(text)) return found;
        for (text = SkipBlocks(NextAligned(text), places, searched); places - text >= kBlock;
             text = SkipBlocks(text, places, searched)) {
            for (const wchar_t* const blockEnd = text + kBlock; text != blockEnd; text += kLane) {
                if (const wchar_t* found = probe.AmongEight(text)) return found;
            }
        }
    }
    for (; places - text >= kLane; text += kLane) {
        if (const wchar_t* found = probe.AmongEight(text)) return found;
    }
    // The last eight places; those that were looked at before hold no occurrence.
    return text == places ? nullptr : probe.AmongEight(places - kLane);
}

}  // namespace qv::avx2

#endif
