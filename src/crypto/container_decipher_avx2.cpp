#include "crypto/container_decipher_avx2.h"

#if defined(__x86_64__)

#include <immintrin.h>
#include <utility>

#define QV_AVX2 __attribute__((target("avx2,bmi")))
#define QV_INLINE __attribute__((target("avx2,bmi"), always_inline)) inline

namespace qv::avx2 {
namespace {

// Deciphering four blocks together keeps the integer units busy; the hash is one long chain. So the hash runs
// in the vector units, which have nothing else to do.

constexpr std::size_t kLanes = 4;
static_assert(2 * kLanes * kBlowfishBlockSize == kMd5BlockSize && 2 * 2 * kBlowfishRounds == kMd5Steps,
              "a group of eight blocks, in two halves, goes with one block of the hash: two steps a round");

// ---- the hash ----

// The digest's words, each in the lowest lane of a vector. What the other lanes hold is of no meaning.
struct WideWords {
    __m128i lowest[4];
};

// The constants of the steps; a vector may be loaded from each of them.
constexpr auto kSines = [] {
    std::array<std::uint32_t, kMd5Steps + 3> sines{};
    for (std::size_t i = 0; i < kMd5Steps; ++i)
        sines[i] = md5_detail::kSines[i];
    return sines;
}();

QV_INLINE __m128i LoadLanes(const void* lowest) noexcept {
    return _mm_loadu_si128(static_cast<const __m128i*>(lowest));
}

template <int kCount>
QV_INLINE __m128i RotateLeft(__m128i x) noexcept {
    return _mm_or_si128(_mm_slli_epi32(x, kCount), _mm_srli_epi32(x, 32 - kCount));
}

// Md5Step in vectors, with what does not need b summed up first as there.
template <int kStep>
QV_INLINE void HashStep(WideWords& words, const std::uint8_t* block) noexcept {
    using namespace md5_detail;
    __m128i& a = words.lowest[(64 - kStep) % 4];
    const __m128i b = words.lowest[(65 - kStep) % 4];
    const __m128i c = words.lowest[(66 - kStep) % 4];
    const __m128i d = words.lowest[(67 - kStep) % 4];
    __m128i early = _mm_add_epi32(a, LoadLanes(block + 4 * MessageWord(kStep)));
    early = _mm_add_epi32(early, LoadLanes(&avx2::kSines[kStep]));
    __m128i late;
    if constexpr (kStep < 16) {
        late = _mm_xor_si128(d, _mm_and_si128(b, _mm_xor_si128(c, d)));
    } else if constexpr (kStep < 32) {
        early = _mm_add_epi32(early, _mm_andnot_si128(d, c));
        late = _mm_and_si128(b, d);
    } else if constexpr (kStep < 48) {
        late = _mm_xor_si128(b, _mm_xor_si128(c, d));
    } else {
        late = _mm_xor_si128(c, _mm_or_si128(b, _mm_xor_si128(d, _mm_set1_epi32(-1))));
    }
    asm("" : "+x"(early));  // KeepOrder, for vectors
    a = _mm_add_epi32(b, RotateLeft<kRotations[kStep / 16][kStep % 4]>(_mm_add_epi32(early, late)));
}

// ---- the cipher ----

// BlowfishRound with the bytes in the middle each taken by one instruction.
QV_INLINE void DecipherRound(const std::uint32_t* substitutes, std::uint32_t half, std::uint32_t nextSubkey,
                             std::uint32_t& waiting) noexcept {
    const std::uint64_t x = half;
    waiting ^= nextSubkey;
    KeepOrder(waiting);
    const std::uint32_t a = substitutes[x >> 24];
    const std::uint32_t b = (substitutes + 256)[_bextr_u64(x, 16, 8)];
    const std::uint32_t c = (substitutes + 512)[_bextr_u64(x, 8, 8)];
    const std::uint32_t d = (substitutes + 768)[x & 0xFF];
    waiting ^= ((a + b) ^ c) + d;
}

// ---- both ----

// Two rounds of every block, and the steps of the hash that go beside them.
template <int kRound, int kStep, std::size_t... kLane>
QV_INLINE void TwoRounds(const BlowfishTables& key, BlowfishHalves* x, WideWords& words,
                         const std::uint8_t* hashed, std::index_sequence<kLane...>) noexcept {
    (DecipherRound(key.substitutes, x[kLane].left, key.subkeys[16 - kRound], x[kLane].right), ...);
    HashStep<kStep>(words, hashed);
    HashStep<kStep + 1>(words, hashed);
    (DecipherRound(key.substitutes, x[kLane].right, key.subkeys[15 - kRound], x[kLane].left), ...);
    HashStep<kStep + 2>(words, hashed);
    HashStep<kStep + 3>(words, hashed);
}

// Deciphers four blocks while the hash takes half of its steps, from kFirstStep on.
template <int kFirstStep, int... kPairs, std::size_t... kLane>
QV_INLINE BlowfishHalves DecipherHalfGroup(const BlowfishTables& key, BlowfishHalves chain,
                                           std::uint8_t* blocks, WideWords& words, const std::uint8_t* hashed,
                                           std::integer_sequence<int, kPairs...>,
                                           std::index_sequence<kLane...> lanes) noexcept {
    BlowfishHalves x[] = {LoadBlowfishBlock(blocks + kLane * kBlowfishBlockSize)...};
    ((x[kLane].left ^= key.subkeys[17]), ...);
    (TwoRounds<2 * kPairs, kFirstStep + 4 * kPairs>(key, x, words, hashed, lanes), ...);
    const auto finish = [&](BlowfishHalves halves, std::uint8_t* block) {
        const BlowfishHalves cipher = LoadBlowfishBlock(block);
        StoreBlowfishBlock({halves.right ^ key.subkeys[0] ^ chain.left, halves.left ^ chain.right}, block);
        chain = cipher;
    };
    (finish(x[kLane], blocks + kLane * kBlowfishBlockSize), ...);
    return chain;
}

}  // namespace

QV_AVX2 BlowfishHalves DecipherBesideHash(const BlowfishTables& borrowedKey, BlowfishHalves chain,
                                          Md5Words& words, std::uint8_t* groups, std::size_t count) noexcept {
    constexpr auto kPairs = std::make_integer_sequence<int, kBlowfishRounds / 2>{};
    constexpr auto kLane = std::make_index_sequence<kLanes>{};
    constexpr std::size_t kHalfGroup = kMd5BlockSize / 2;
    const BlowfishTables key = borrowedKey;  // local copies may stay in registers
    WideWords sums;
    for (std::size_t i = 0; i < words.size(); ++i)
        sums.lowest[i] = _mm_cvtsi32_si128(static_cast<int>(words[i]));
    for (; count > 0; --count, groups += kMd5BlockSize) {
        WideWords now = sums;
        const std::uint8_t* const hashed = groups + kMd5BlockSize;
        chain = DecipherHalfGroup<0>(key, chain, groups, now, hashed, kPairs, kLane);
        chain = DecipherHalfGroup<kMd5Steps / 2>(key, chain, groups + kHalfGroup, now, hashed, kPairs, kLane);
        for (std::size_t i = 0; i < words.size(); ++i)
            sums.lowest[i] = _mm_add_epi32(sums.lowest[i], now.lowest[i]);
    }
    for (std::size_t i = 0; i < words.size(); ++i)
        words[i] = static_cast<std::uint32_t>(_mm_cvtsi128_si32(sums.lowest[i]));
    return chain;
}

}  // namespace qv::avx2

#undef QV_AVX2
#undef QV_INLINE
#endif
