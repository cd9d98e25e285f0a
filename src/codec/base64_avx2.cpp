#include "codec/base64.h"

#if QV_X86

#include <cstddef>
#include <immintrin.h>

namespace qv {

namespace {

// 24 bytes become 32 characters. Reads 28 bytes.
__attribute__((target("avx2"))) inline __m256i Encode24(const uint8_t* in) {
    const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
    const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + 12));
    // Every three bytes a b c become the 32-bit word "b a c b", in which the four values are reached by
    // shifting 16-bit halves.
    const __m256i spread = _mm256_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10,  //
                                            1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10);
    const __m256i words = _mm256_shuffle_epi8(_mm256_set_m128i(high, low), spread);
    // Multiplications serve as shifts by a different count in each half.
    const __m256i valuesAC = _mm256_mulhi_epu16(_mm256_and_si256(words, _mm256_set1_epi32(0x0FC0FC00)),
                                                _mm256_set1_epi32(0x04000040));
    const __m256i valuesBD = _mm256_mullo_epi16(_mm256_and_si256(words, _mm256_set1_epi32(0x003F03F0)),
                                                _mm256_set1_epi32(0x01000010));
    const __m256i values = _mm256_or_si256(valuesAC, valuesBD);
    // What to add to a value: chosen by 0 for upper case, 1 for lower case, 2 to 11 for a digit, 12 for "+"
    // and 13 for "/".
    const __m256i offsets =
        _mm256_setr_epi8(65, 71, -4, -4, -4, -4, -4, -4, -4, -4, -4, -4, -19, -16, 0, 0,  //
                         65, 71, -4, -4, -4, -4, -4, -4, -4, -4, -4, -4, -19, -16, 0, 0);
    const __m256i aboveUpper = _mm256_cmpgt_epi8(values, _mm256_set1_epi8(25));
    const __m256i kind = _mm256_sub_epi8(_mm256_subs_epu8(values, _mm256_set1_epi8(51)), aboveUpper);
    return _mm256_add_epi8(values, _mm256_shuffle_epi8(offsets, kind));
}

__attribute__((target("avx2"))) inline void EncodeAt(const uint8_t* in, char* out) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), Encode24(in));
}

__attribute__((target("avx2"))) size_t EncodeAvx2(const uint8_t* in, size_t size, char* out) {
    if (size < 28) return 0;
    const uint8_t* const start = in;
    const uint8_t* const last = in + (size - 28);
    for (; in <= last; in += 24, out += 32)
        EncodeAt(in, out);
    // Once more where the groups end that can be read: for the most part over what is there already.
    const ptrdiff_t groups = (last + 24 - in) / 3;
    EncodeAt(in + 3 * groups - 24, out + 4 * groups - 32);
    return static_cast<size_t>(in + 3 * groups - start);
}

// Decodes 32 characters into 24 bytes, and 4 zeros behind them; false, with nothing written, when a character
// is not of the alphabet.
__attribute__((target("avx2"))) inline bool Decode32(const char* text, uint8_t* out) {
    const __m256i chars = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(text));
    // A character is valid when the sets looked up by its two halves have no bit in common.
    const __m256i setsOfLow = _mm256_setr_epi8(0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11,  //
                                               0x11, 0x11, 0x13, 0x1A, 0x1B, 0x1B, 0x1B, 0x1A,  //
                                               0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11,  //
                                               0x11, 0x11, 0x13, 0x1A, 0x1B, 0x1B, 0x1B, 0x1A);
    const __m256i setsOfHigh = _mm256_setr_epi8(0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08,  //
                                                0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10,  //
                                                0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08,  //
                                                0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10);
    // The look-up uses four bits and gives 0 when the top bit is set, so the bits between may stay.
    const __m256i keep = _mm256_set1_epi8(0x2F);
    const __m256i high = _mm256_and_si256(_mm256_srli_epi32(chars, 4), keep);
    const __m256i low = _mm256_and_si256(chars, keep);
    if (!_mm256_testz_si256(_mm256_shuffle_epi8(setsOfLow, low), _mm256_shuffle_epi8(setsOfHigh, high)))
        return false;
    // What to add to a character, by its upper half; "/" shares that with "+" and takes the place before.
    const __m256i offsets = _mm256_setr_epi8(0, 16, 19, 4, -65, -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0,  //
                                             0, 16, 19, 4, -65, -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0);
    const __m256i isSlash = _mm256_cmpeq_epi8(chars, _mm256_set1_epi8('/'));
    const __m256i values =
        _mm256_add_epi8(chars, _mm256_shuffle_epi8(offsets, _mm256_add_epi8(isSlash, high)));
    // Four values of 6 bits become 24 bits of a word, then every three bytes are turned round and moved
    // together.
    const __m256i pairs = _mm256_maddubs_epi16(values, _mm256_set1_epi32(0x01400140));
    const __m256i words = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
    const __m256i gather = _mm256_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1,  //
                                            2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1);
    const __m256i bytes = _mm256_shuffle_epi8(words, gather);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm256_castsi256_si128(bytes));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 12), _mm256_extracti128_si256(bytes, 1));
    return true;
}

__attribute__((target("avx2"))) size_t DecodeAvx2(const char* text, size_t length, uint8_t* out) {
    // 38 characters have room for the 28 bytes that are written.
    if (length < 38) return 0;
    size_t done = 0;
    for (; length - done >= 38; done += 32, out += 24) {
        if (!Decode32(text + done, out)) return done;
    }
    // Once more where the groups end behind which there is room: for the most part over what is there
    // already.
    const size_t groups = (length - done - 6) / 4;
    const size_t end = done + 4 * groups;
    return Decode32(text + end - 32, out + 3 * groups - 24) ? end : done;
}

}  // namespace

const Base64Vectors kBase64Avx2 = {EncodeAvx2, DecodeAvx2};

}  // namespace qv

#endif
