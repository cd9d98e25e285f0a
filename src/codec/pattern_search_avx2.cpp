#include "codec/pattern_search.h"

#if QV_X86

#include <algorithm>
#include <bit>
#include <cstring>
#include <immintrin.h>
#include <string_view>

namespace qv {

namespace {

constexpr size_t kLanes = 64;

// A guess how often a byte occurs, in prose, source text and binary data alike.
constexpr int Commonness(uint8_t byte) {
    constexpr std::string_view kMostCommon("\0 etaoinsrhl", 12);
    if (kMostCommon.find(static_cast<char>(byte)) != std::string_view::npos) return 3;
    if (byte >= 'a' && byte <= 'z') return 2;
    return byte > ' ' && byte < 0x7F ? 1 : 0;
}

// The offset of the byte of the pattern that should be the rarest in the text, `other` left out.
size_t FindRarest(const uint8_t* pattern, size_t length, size_t other) {
    const size_t considered = std::min(length, size_t{64});
    size_t best = other == 0 && length > 1 ? 1 : 0;
    for (size_t i = best + 1; i < considered; ++i) {
        if (i != other && Commonness(pattern[i]) < Commonness(pattern[best])) best = i;
    }
    return best;
}

struct Probe {
    __m256i byte;
    size_t offset;
};

__attribute__((target("avx2"))) inline Probe MakeProbe(const uint8_t* pattern, size_t offset) {
    return {_mm256_set1_epi8(static_cast<char>(pattern[offset])), offset};
}

__attribute__((target("avx2"))) inline __m256i Alike(const uint8_t* text, const Probe& probe) {
    const __m256i bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(text + probe.offset));
    return _mm256_cmpeq_epi8(bytes, probe.byte);
}

// Bit i tells whether the place text + i has both bytes.
__attribute__((target("avx2"))) inline uint64_t Lookalikes(const uint8_t* text, const Probe& a,
                                                           const Probe& b) {
    const __m256i low = _mm256_and_si256(Alike(text, a), Alike(text, b));
    const __m256i high = _mm256_and_si256(Alike(text + 32, a), Alike(text + 32, b));
    if (_mm256_testz_si256(_mm256_or_si256(low, high), _mm256_set1_epi8(-1))) return 0;
    return static_cast<uint32_t>(_mm256_movemask_epi8(low)) |
           uint64_t{static_cast<uint32_t>(_mm256_movemask_epi8(high))} << 32;
}

}  // namespace

__attribute__((target("avx2"))) size_t ScanForPatternAvx2(const uint8_t* text, size_t textLength, size_t from,
                                                          const uint8_t* pattern, size_t patternLength,
                                                          size_t& budget) {
    const size_t places = textLength - patternLength + 1;
    if (places < kLanes) return from;
    const size_t rarest = FindRarest(pattern, patternLength, patternLength);
    const Probe a = MakeProbe(pattern, rarest);
    const Probe b = MakeProbe(pattern, FindRarest(pattern, patternLength, rarest));
    const Probe first = MakeProbe(pattern, 0);
    const Probe last = MakeProbe(pattern, patternLength - 1);
    while (from < places) {
        // The last block is moved back to end with the last place; places before `from` are dropped.
        const size_t block = std::min(from, places - kLanes);
        uint64_t alike = Lookalikes(text + block, a, b);
        if (alike != 0) alike &= Lookalikes(text + block, first, last);
        for (alike >>= from - block; alike != 0; alike &= alike - 1) {
            const size_t place = from + static_cast<size_t>(std::countr_zero(alike));
            if (std::memcmp(text + place, pattern, patternLength) == 0) return place;
            if (--budget == 0) return place;
        }
        from = block + kLanes;
    }
    return places;
}

}  // namespace qv

#endif
