#include "codec/base64.h"

#if QV_X86

#include <immintrin.h>

namespace qv {

namespace {

// The unmasked forms of the byte permutations begin with a register of unspecified contents, which g++ 12
// warns of. A mask of all lanes costs nothing.
constexpr __mmask64 kAll = ~uint64_t{0};

constexpr __mmask64 k48Bytes = (uint64_t{1} << 48) - 1;

// In each 32-bit word, the bytes of one group of three: b a c b for encoding.
alignas(64) constexpr uint8_t kSpread[64] = {1,  0,  2,  1,  4,  3,  5,  4,  7,  6,  8,  7,  10, 9,  11, 10,
                                             13, 12, 14, 13, 16, 15, 17, 16, 19, 18, 20, 19, 22, 21, 23, 22,
                                             25, 24, 26, 25, 28, 27, 29, 28, 31, 30, 32, 31, 34, 33, 35, 34,
                                             37, 36, 38, 37, 40, 39, 41, 40, 43, 42, 44, 43, 46, 45, 47, 46};

// The three bytes of each 32-bit word, last first, for decoding; the rest is not stored.
alignas(64) constexpr uint8_t kGather[64] = {2,  1,  0,  6,  5,  4,  10, 9,  8,  14, 13, 12, 18, 17, 16, 22,
                                             21, 20, 26, 25, 24, 30, 29, 28, 34, 33, 32, 38, 37, 36, 42, 41,
                                             40, 46, 45, 44, 50, 49, 48, 54, 53, 52, 58, 57, 56, 62, 61, 60};

// The value of each of the 128 ASCII characters; the top bit set for those that have none.
struct Values {
    alignas(64) uint8_t of[128];
};

constexpr Values kValues = [] {
    Values values{};
    for (uint8_t& value : values.of)
        value = 0x80;
    for (uint8_t i = 0; i < 64; ++i)
        values.of[static_cast<uint8_t>(kBase64Alphabet[i])] = i;
    return values;
}();

__attribute__((target("avx512f,avx512bw,avx512vbmi"))) size_t EncodeAvx512(const uint8_t* in, size_t size,
                                                                           char* out) {
    const __m512i spread = _mm512_loadu_si512(kSpread);
    const __m512i alphabet = _mm512_loadu_si512(kBase64Alphabet);
    // Where the four values begin in a 32-bit word b a c b, twice in 64 bits.
    const __m512i shifts = _mm512_set1_epi64(0x3036242A1016040A);
    size_t done = 0;
    for (; size - done >= 64; done += 48, out += 64) {
        const __m512i words = _mm512_maskz_permutexvar_epi8(kAll, spread, _mm512_loadu_si512(in + done));
        const __m512i values = _mm512_maskz_multishift_epi64_epi8(kAll, shifts, words);
        _mm512_storeu_si512(out, _mm512_maskz_permutexvar_epi8(kAll, values, alphabet));
    }
    return done;
}

__attribute__((target("avx512f,avx512bw,avx512vbmi"))) size_t DecodeAvx512(const char* text, size_t length,
                                                                           uint8_t* out) {
    const __m512i valuesLow = _mm512_loadu_si512(kValues.of);
    const __m512i valuesHigh = _mm512_loadu_si512(kValues.of + 64);
    const __m512i gather = _mm512_loadu_si512(kGather);
    size_t done = 0;
    for (; length - done >= 64; done += 64, out += 48) {
        const __m512i chars = _mm512_loadu_si512(text + done);
        const __m512i values = _mm512_permutex2var_epi8(valuesLow, chars, valuesHigh);
        if (_mm512_movepi8_mask(_mm512_or_si512(chars, values)) != 0) break;
        const __m512i pairs = _mm512_maddubs_epi16(values, _mm512_set1_epi32(0x01400140));
        const __m512i words = _mm512_madd_epi16(pairs, _mm512_set1_epi32(0x00011000));
        _mm512_mask_storeu_epi8(out, k48Bytes, _mm512_maskz_permutexvar_epi8(kAll, gather, words));
    }
    return done;
}

}  // namespace

const Base64Vectors kBase64Avx512 = {EncodeAvx512, DecodeAvx512};

}  // namespace qv

#endif
