#include "base/processor.h"

#if QV_X86

#include <array>
#include <bit>
#include <cstdint>
// The unmasked forms of some instructions begin with a register of unspecified contents, which g++ 12 warns
// of.
#ifndef __clang__
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#include <immintrin.h>

#include "base/utf8_faults.h"
#include "base/utf8_kernels.h"

#define QV_AVX512 __attribute__((target("avx512f,avx512bw,avx512vbmi,avx512vbmi2,popcnt")))

namespace qv::avx512 {
namespace {

constexpr size_t kBlock = 64;
constexpr size_t kLanes = 16;

QV_AVX512 inline __m512i Load(const void* at) noexcept {
    return _mm512_loadu_si512(at);
}

QV_AVX512 inline void Store(void* at, __m512i value) noexcept {
    _mm512_storeu_si512(at, value);
}

QV_AVX512 inline __m512i Constant(uint32_t value) noexcept {
    return _mm512_set1_epi32(static_cast<int>(value));
}

// The same 16 entries in every quarter, for look-ups by a byte's low four bits.
QV_AVX512 inline __m512i Table(const utf8::NibbleTable& entries) noexcept {
    return _mm512_broadcast_i32x4(_mm_loadu_si128(reinterpret_cast<const __m128i*>(entries.data())));
}

constexpr bool IsLead(char byte) noexcept {
    return (byte & 0xC0) != 0x80;
}

// ---- decoding ----

struct alignas(64) BytePositions {
    std::array<uint8_t, 64> bytes;
};

struct alignas(64) LaneTable {
    std::array<uint32_t, 16> lanes;
};

constexpr BytePositions kPositions = [] {
    BytePositions positions{};
    for (size_t i = 0; i < 64; ++i) {
        positions.bytes[i] = static_cast<uint8_t>(i);
    }
    return positions;
}();

// By a lead's upper nibble: how far the four joined bytes must go down, and which bits are then the
// character's.
constexpr LaneTable kSurplus = {{18, 18, 18, 18, 18, 18, 18, 18, 0, 0, 0, 0, 12, 12, 6, 0}};
constexpr LaneTable kUsed = {
    {0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0x7F, 0, 0, 0, 0, 0x7FF, 0x7FF, 0xFFFF, 0x1FFFFF}};

// A character's last bytes may lie in the next block.
constexpr size_t kLookAhead = 3;

QV_AVX512 inline uint64_t Leads(__m512i block) noexcept {
    return _mm512_cmpgt_epi8_mask(block, _mm512_set1_epi8(-65));
}

QV_AVX512 inline bool IsAscii(__m512i block) noexcept {
    return _mm512_test_epi8_mask(block, Constant(0x80808080)) == 0;
}

QV_AVX512 inline void WidenAscii(const char* in, wchar_t* out) noexcept {
    for (size_t i = 0; i < kBlock; i += kLanes) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + i));
        Store(out + i, _mm512_cvtepu8_epi32(bytes));
    }
}

QV_AVX512 inline __m512i HighNibbles(__m512i bytes) noexcept {
    return _mm512_and_si512(_mm512_srli_epi16(bytes, 4), Constant(0x0F0F0F0F));
}

// Whether each byte of the block may follow the three in front of it. What the block's own last bytes still
// ask for is the next block's matter.
QV_AVX512 inline bool IsValid(__m512i previous, __m512i block) noexcept {
    // Each quarter's predecessor; then the bytes one, two and three places ahead.
    const __m512i before = _mm512_alignr_epi64(block, previous, 6);
    const __m512i first = _mm512_alignr_epi8(block, before, 15);
    const __m512i second = _mm512_alignr_epi8(block, before, 14);
    const __m512i third = _mm512_alignr_epi8(block, before, 13);

    const __m512i firstFaults = _mm512_and_si512(
        _mm512_shuffle_epi8(Table(utf8::kFirstHigh), HighNibbles(first)),
        _mm512_shuffle_epi8(Table(utf8::kFirstLow), _mm512_and_si512(first, Constant(0x0F0F0F0F))));
    const __m512i faults =
        _mm512_and_si512(firstFaults, _mm512_shuffle_epi8(Table(utf8::kSecondHigh), HighNibbles(block)));
    // The top bit is set where the second byte ahead is E0 or more, or the third one F0 or more.
    const __m512i asked = _mm512_or_si512(_mm512_subs_epu8(second, _mm512_set1_epi8(0xE0 - 0x80)),
                                          _mm512_subs_epu8(third, _mm512_set1_epi8(0xF0 - 0x80)));
    const __m512i wrong = _mm512_xor_si512(_mm512_and_si512(asked, Constant(0x80808080)), faults);
    return _mm512_test_epi8_mask(wrong, wrong) == 0;
}

// Sixteen lanes that hold a lead byte and the three bytes behind it to sixteen characters.
QV_AVX512 inline __m512i JoinLanes(__m512i lanes) noexcept {
    const __m512i lead = _mm512_srli_epi32(lanes, 28);
    const __m512i surplus = _mm512_permutexvar_epi32(lead, Load(&kSurplus));
    const __m512i used = _mm512_permutexvar_epi32(lead, Load(&kUsed));
    const __m512i bits = _mm512_and_si512(lanes, Constant(0xFF3F3F3F));
    // lead << 6 | second byte, third << 6 | fourth; then first pair << 12 | second pair
    const __m512i pairs = _mm512_maddubs_epi16(bits, Constant(0x40014001));
    const __m512i joined = _mm512_madd_epi16(pairs, Constant(0x10000001));
    return _mm512_and_si512(_mm512_srlv_epi32(joined, surplus), used);
}

// Decodes the characters that begin in the block at `in`, `count` of them; up to kLanes - 1 unused ones are
// written behind.
QV_AVX512 inline void DecodeBlock(const char* in, uint64_t leads, size_t count, wchar_t* out) noexcept {
    const __m512i block = Load(in);
    const __m512i next = _mm512_maskz_loadu_epi8(0b111, in + kBlock);
    // Where the characters begin, in order.
    BytePositions starts;
    Store(&starts, _mm512_maskz_compress_epi8(leads, Load(&kPositions)));
    for (size_t done = 0; done < count; done += kLanes) {
        // Each lane becomes the four places from the character's start, the last one lowest.
        const __m128i begin = _mm_load_si128(reinterpret_cast<const __m128i*>(&starts.bytes[done]));
        const __m512i places = _mm512_add_epi8(
            _mm512_shuffle_epi8(
                _mm512_cvtepu8_epi32(begin),
                _mm512_broadcast_i32x4(_mm_setr_epi8(0, 0, 0, 0, 4, 4, 4, 4, 8, 8, 8, 8, 12, 12, 12, 12))),
            Constant(0x00010203));
        Store(out + done, JoinLanes(_mm512_permutex2var_epi8(block, places, next)));
    }
}

// ---- encoding ----

QV_AVX512 inline bool AreCodePoints(__m512i characters) noexcept {
    const __m512i upper = _mm512_and_si512(characters, Constant(0xFFFFF800));
    return (_mm512_cmpeq_epi32_mask(upper, Constant(0xD800)) |
            _mm512_cmpgt_epu32_mask(characters, Constant(0x10FFFF))) == 0;
}

// Encodes sixteen code points at `out`, which has room for 64 bytes; the bytes written.
QV_AVX512 inline size_t EncodeLanes(__m512i characters, char* out) noexcept {
    const __mmask16 from2 =
        _mm512_cmpgt_epu32_mask(characters, Constant(0x7F));  // characters of two bytes and more
    const __mmask16 from3 = _mm512_cmpgt_epu32_mask(characters, Constant(0x7FF));
    const __mmask16 from4 = _mm512_cmpgt_epu32_mask(characters, Constant(0xFFFF));

    // Six bits go into each byte of a lane, the lowest into its last.
    const __m512i low = _mm512_slli_epi32(characters, 24);
    const __m512i bits = _mm512_or_si512(
        _mm512_or_si512(_mm512_and_si512(low, Constant(0x3F000000)),
                        _mm512_and_si512(_mm512_slli_epi32(characters, 10), Constant(0x003F0000))),
        _mm512_or_si512(_mm512_and_si512(_mm512_srli_epi32(characters, 4), Constant(0x00003F00)),
                        _mm512_srli_epi32(characters, 18)));
    const __m512i marks =
        _mm512_mask_mov_epi32(_mm512_mask_mov_epi32(Constant(0x80C00000), from3, Constant(0x8080E000)), from4,
                              Constant(0x808080F0));
    const __m512i lanes = _mm512_mask_mov_epi32(low, from2, _mm512_or_si512(bits, marks));

    // Unused bytes are 0; the last one of a lane is always used.
    const __mmask64 used = _mm512_test_epi8_mask(lanes, lanes) | 0x8888888888888888;
    Store(out, _mm512_maskz_compress_epi8(used, lanes));
    return static_cast<size_t>(std::popcount(static_cast<uint64_t>(used)));
}

// Stores 64 characters as bytes when all of them are ASCII.
QV_AVX512 inline bool NarrowAscii(const wchar_t* text, char* out) noexcept {
    const __m512i a = Load(text);
    const __m512i b = Load(text + kLanes);
    const __m512i c = Load(text + 2 * kLanes);
    const __m512i d = Load(text + 3 * kLanes);
    const __m512i any = _mm512_or_si512(_mm512_or_si512(a, b), _mm512_or_si512(c, d));
    if (_mm512_test_epi32_mask(any, Constant(~0x7Fu)) != 0) return false;
    auto* const to = reinterpret_cast<__m128i*>(out);
    _mm_storeu_si128(to, _mm512_cvtepi32_epi8(a));
    _mm_storeu_si128(to + 1, _mm512_cvtepi32_epi8(b));
    _mm_storeu_si128(to + 2, _mm512_cvtepi32_epi8(c));
    _mm_storeu_si128(to + 3, _mm512_cvtepi32_epi8(d));
    return true;
}

}  // namespace

QV_AVX512 Utf8Progress DecodeUtf8(const char* bytes, size_t size, wchar_t* out, size_t room) noexcept {
    size_t at = 0;
    size_t written = 0;
    __m512i previous = _mm512_setzero_si512();
    bool previousIsAscii = true;
    while (size - at >= kBlock + kLookAhead) {
        const __m512i block = Load(bytes + at);
        const bool isAscii = IsAscii(block);
        if (!(isAscii && previousIsAscii) && !IsValid(previous, block)) break;
        const uint64_t leads = Leads(block);
        const auto count = static_cast<size_t>(std::popcount(leads));
        if (room - written < count + kLanes) break;
        if (isAscii) {
            WidenAscii(bytes + at, out + written);
        } else {
            DecodeBlock(bytes + at, leads, count, out + written);
        }
        at += kBlock;
        written += count;
        previous = block;
        previousIsAscii = isAscii;
    }
    // The last block may end inside a character, and has then written it without having seen all of it.
    if (!previousIsAscii) {
        do {
            --at;
        } while (!IsLead(bytes[at]));
        --written;
    }
    return {at, written};
}

QV_AVX512 Utf8Progress EncodeUtf8(const wchar_t* text, size_t count, char* out, size_t room,
                                  Utf8Progress from) noexcept {
    auto [at, written] = from;
    while (count - at >= kLanes && room - written >= 4 * kLanes) {
        if (count - at >= 4 * kLanes && NarrowAscii(text + at, out + written)) {
            at += 4 * kLanes;
            written += 4 * kLanes;
            continue;
        }
        const __m512i characters = Load(text + at);
        if (!AreCodePoints(characters)) break;
        written += EncodeLanes(characters, out + written);
        at += kLanes;
    }
    return {at, written};
}

}  // namespace qv::avx512

#undef QV_AVX512
#endif
