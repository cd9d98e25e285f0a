#include "base/processor.h"

#if QV_X86

#include <algorithm>
#include <array>
#include <cstdint>
#include <immintrin.h>

#include "base/utf8_kernels.h"

#define QV_AVX2 __attribute__((target("avx2,popcnt")))

namespace qv::avx2 {
namespace {

QV_AVX2 inline __m256i Load(const void* at) noexcept {
    return _mm256_loadu_si256(static_cast<const __m256i*>(at));
}

QV_AVX2 inline void Store(void* at, __m256i value) noexcept {
    _mm256_storeu_si256(static_cast<__m256i*>(at), value);
}

// The same 32-bit value in all lanes.
QV_AVX2 inline __m256i Constant(uint32_t value) noexcept {
    return _mm256_set1_epi32(static_cast<int>(value));
}

// The same 16 entries in both halves, for look-ups by a byte's low four bits.
QV_AVX2 inline __m256i Table(const std::array<uint8_t, 16>& entries) noexcept {
    return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(entries.data())));
}

QV_AVX2 inline __m256i HighNibbles(__m256i bytes) noexcept {
    return _mm256_and_si256(_mm256_srli_epi16(bytes, 4), _mm256_set1_epi8(0x0F));
}

QV_AVX2 inline uint32_t Mask(__m256i bytes) noexcept {
    return static_cast<uint32_t>(_mm256_movemask_epi8(bytes));
}

// One bit for each byte that begins a character, that is, for all but 80..BF.
QV_AVX2 inline uint32_t Leads(__m256i bytes) noexcept {
    return Mask(_mm256_cmpgt_epi8(bytes, _mm256_set1_epi8(-65)));
}

constexpr bool IsLead(char byte) noexcept {
    return (byte & 0xC0) != 0x80;
}

// ---- validation ----
//
// What is wrong with two neighbouring bytes can be told from three nibbles: both of the first byte and the
// upper one of the second. Each nibble's table lists the faults that it is compatible with; a fault that all
// three list has happened. kTwoContinuations is no fault where a lead byte two or three places ahead asks for
// it.

enum Fault : uint8_t {
    kTooShort = 0x01,          // a lead byte without its continuation
    kTooLong = 0x02,           // ASCII with a continuation
    kOverlong3 = 0x04,         // E0 80..9F
    kTooLarge = 0x08,          // F4 90..BF, F5.. with 90..BF
    kSurrogate = 0x10,         // ED A0..BF
    kOverlong2 = 0x20,         // C0, C1
    kOverlong4 = 0x40,         // F0 80..8F
    kTooLarge1000 = 0x40,      // F5.. with 80..8F
    kTwoContinuations = 0x80,  // a continuation after a continuation
    kAnyLow = kTooShort | kTooLong | kTwoContinuations
};

constexpr std::array<uint8_t, 16> kFirstHigh = {
    kTooLong,
    kTooLong,
    kTooLong,
    kTooLong,
    kTooLong,
    kTooLong,
    kTooLong,
    kTooLong,
    kTwoContinuations,
    kTwoContinuations,
    kTwoContinuations,
    kTwoContinuations,
    kTooShort | kOverlong2,
    kTooShort,
    kTooShort | kOverlong3 | kSurrogate,
    kTooShort | kTooLarge | kTooLarge1000 | kOverlong4,
};

constexpr std::array<uint8_t, 16> kFirstLow = {
    kAnyLow | kOverlong2 | kOverlong3 | kOverlong4,
    kAnyLow | kOverlong2,
    kAnyLow,
    kAnyLow,
    kAnyLow | kTooLarge,
    kAnyLow | kTooLarge | kTooLarge1000,
    kAnyLow | kTooLarge | kTooLarge1000,
    kAnyLow | kTooLarge | kTooLarge1000,
    kAnyLow | kTooLarge | kTooLarge1000,
    kAnyLow | kTooLarge | kTooLarge1000,
    kAnyLow | kTooLarge | kTooLarge1000,
    kAnyLow | kTooLarge | kTooLarge1000,
    kAnyLow | kTooLarge | kTooLarge1000,
    kAnyLow | kTooLarge | kTooLarge1000 | kSurrogate,
    kAnyLow | kTooLarge | kTooLarge1000,
    kAnyLow | kTooLarge | kTooLarge1000,
};

constexpr std::array<uint8_t, 16> kSecondHigh = {
    kTooShort,
    kTooShort,
    kTooShort,
    kTooShort,
    kTooShort,
    kTooShort,
    kTooShort,
    kTooShort,
    kTooLong | kTwoContinuations | kOverlong2 | kOverlong3 | kOverlong4 | kTooLarge1000,
    kTooLong | kTwoContinuations | kOverlong2 | kOverlong3 | kTooLarge,
    kTooLong | kTwoContinuations | kOverlong2 | kSurrogate | kTooLarge,
    kTooLong | kTwoContinuations | kOverlong2 | kSurrogate | kTooLarge,
    kTooShort,
    kTooShort,
    kTooShort,
    kTooShort,
};

// The block as it looked N bytes earlier: the last N bytes of `previous`, then the block's first ones.
template <int N>
QV_AVX2 inline __m256i Earlier(__m256i previous, __m256i block) noexcept {
    return _mm256_alignr_epi8(block, _mm256_permute2x128_si256(previous, block, 0x21), 16 - N);
}

// Whether each byte of the block may follow the three in front of it. What the block's own last bytes still
// ask for is the next block's matter.
QV_AVX2 inline bool IsValid(__m256i previous, __m256i block) noexcept {
    const __m256i first = Earlier<1>(previous, block);
    const __m256i faults = _mm256_and_si256(
        _mm256_and_si256(
            _mm256_shuffle_epi8(Table(kFirstHigh), HighNibbles(first)),
            _mm256_shuffle_epi8(Table(kFirstLow), _mm256_and_si256(first, _mm256_set1_epi8(0x0F)))),
        _mm256_shuffle_epi8(Table(kSecondHigh), HighNibbles(block)));
    // The top bit is set where the byte two places ahead is E0 or more, or the one three places ahead F0 or
    // more.
    const __m256i asked =
        _mm256_or_si256(_mm256_subs_epu8(Earlier<2>(previous, block), _mm256_set1_epi8(0xE0 - 0x80)),
                        _mm256_subs_epu8(Earlier<3>(previous, block), _mm256_set1_epi8(0xF0 - 0x80)));
    const __m256i wrong = _mm256_xor_si256(_mm256_and_si256(asked, _mm256_set1_epi8(-128)), faults);
    return _mm256_testz_si256(wrong, wrong) != 0;
}

// ---- decoding ----

// For each set of lead positions among eight bytes: moves the first lead byte and the three bytes behind it
// into the first 32-bit lane, the lead on top, the second into the second lane, and so on.
struct alignas(32) LaneControl {
    std::array<uint8_t, 32> bytes;
};

constexpr auto kGather = [] {
    std::array<LaneControl, 256> controls{};
    for (unsigned leads = 0; leads < 256; ++leads) {
        size_t lane = 0;
        for (unsigned position = 0; position < 8; ++position) {
            if ((leads >> position & 1) == 0) continue;
            for (unsigned i = 0; i < 4; ++i) {
                controls[leads].bytes[4 * lane + i] = static_cast<uint8_t>(position + 3 - i);
            }
            ++lane;
        }
    }
    return controls;
}();

// By a lead's upper nibble: how far the four joined bytes must go down, and how many bits on top are not the
// character's.
constexpr std::array<uint8_t, 16> kSurplus = {18, 18, 18, 18, 18, 18, 18, 18, 0, 0, 0, 0, 12, 12, 6, 0};
constexpr std::array<uint8_t, 16> kUnused = {25, 25, 25, 25, 25, 25, 25, 25, 0, 0, 0, 0, 21, 21, 16, 11};

// Eight lanes that hold a lead byte and the three bytes behind it to eight characters.
QV_AVX2 inline __m256i JoinBytes(__m256i lanes) noexcept {
    const __m256i lead = _mm256_or_si256(_mm256_srli_epi32(lanes, 28), Constant(0x80808000));
    const __m256i surplus = _mm256_shuffle_epi8(Table(kSurplus), lead);
    const __m256i unused = _mm256_shuffle_epi8(Table(kUnused), lead);
    const __m256i bits = _mm256_and_si256(lanes, Constant(0xFF3F3F3F));
    const __m256i pairs =
        _mm256_maddubs_epi16(bits, Constant(0x40014001));  // lead << 6 | second, third << 6 | fourth
    const __m256i joined = _mm256_madd_epi16(pairs, Constant(0x10000001));  // first pair << 12 | second pair
    return _mm256_and_si256(_mm256_srlv_epi32(joined, surplus), _mm256_srlv_epi32(Constant(~0u), unused));
}

// A block is 32 bytes; its last characters may lie in the bytes behind it, and eight more are loaded.
constexpr size_t kBlock = 32;
constexpr size_t kLookAhead = 8;
constexpr size_t kLanes = 8;

QV_AVX2 inline void WidenAscii(const char* in, wchar_t* out) noexcept {
    for (size_t i = 0; i < kBlock; i += kLanes) {
        Store(out + i, _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(in + i))));
    }
}

// Decodes the characters that begin in the block at `in`; up to kLanes - 1 unused characters are written
// behind them.
QV_AVX2 inline void DecodeBlock(const char* in, uint32_t leads, wchar_t* out) noexcept {
    for (size_t i = 0; i < kBlock; i += 8, leads >>= 8) {
        const __m256i bytes =
            _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(in + i)));
        const __m256i control = _mm256_load_si256(reinterpret_cast<const __m256i*>(&kGather[leads & 0xFF]));
        Store(out, JoinBytes(_mm256_shuffle_epi8(bytes, control)));
        out += _mm_popcnt_u32(leads & 0xFF);
    }
}

// ---- encoding ----

// By the lengths of four characters (bits 0..3: the length less one is odd; bits 4..7: it is two or more):
// the bytes that each of four 32-bit lanes uses, its last ones, moved together.
struct PackControl {
    std::array<uint8_t, 16> bytes;
};

constexpr size_t LengthOf(unsigned lengths, unsigned lane) {
    return 1 + (lengths >> lane & 1) + 2 * (lengths >> (lane + 4) & 1);
}

constexpr auto kPack = [] {
    std::array<PackControl, 256> controls{};
    for (unsigned lengths = 0; lengths < 256; ++lengths) {
        size_t to = 0;
        for (unsigned lane = 0; lane < 4; ++lane) {
            for (size_t i = 4 - LengthOf(lengths, lane); i < 4; ++i) {
                controls[lengths].bytes[to++] = static_cast<uint8_t>(4 * lane + i);
            }
        }
    }
    return controls;
}();

constexpr auto kPackedSize = [] {
    std::array<uint8_t, 256> sizes{};
    for (unsigned lengths = 0; lengths < 256; ++lengths) {
        for (unsigned lane = 0; lane < 4; ++lane) {
            sizes[lengths] = static_cast<uint8_t>(sizes[lengths] + LengthOf(lengths, lane));
        }
    }
    return sizes;
}();

QV_AVX2 inline bool AreCodePoints(__m256i characters) noexcept {
    const __m256i surrogates =
        _mm256_cmpeq_epi32(_mm256_and_si256(characters, Constant(0xFFFFF800)), Constant(0xD800));
    const __m256i inRange = _mm256_cmpeq_epi32(_mm256_min_epu32(characters, Constant(0x10FFFF)), characters);
    return Mask(_mm256_andnot_si256(surrogates, inRange)) == 0xFFFFFFFF;
}

// Stores the bytes of four lanes at `out`, where 16 are written; how many of them count.
QV_AVX2 inline size_t StorePacked(__m128i lanes, unsigned lengths, char* out) noexcept {
    const __m128i control = _mm_loadu_si128(reinterpret_cast<const __m128i*>(&kPack[lengths]));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_shuffle_epi8(lanes, control));
    return kPackedSize[lengths];
}

// Encodes eight code points at `out`, which has room for 32 bytes; the bytes written.
QV_AVX2 inline size_t EncodeLanes(__m256i characters, char* out) noexcept {
    const __m256i from2 = _mm256_cmpgt_epi32(characters, Constant(0x7F));  // characters of two bytes and more
    const __m256i from3 = _mm256_cmpgt_epi32(characters, Constant(0x7FF));
    const __m256i from4 = _mm256_cmpgt_epi32(characters, Constant(0xFFFF));

    // Six bits go into each byte of a lane, the lowest into its last.
    const __m256i bits = _mm256_or_si256(
        _mm256_or_si256(_mm256_and_si256(_mm256_slli_epi32(characters, 24), Constant(0x3F000000)),
                        _mm256_and_si256(_mm256_slli_epi32(characters, 10), Constant(0x003F0000))),
        _mm256_or_si256(_mm256_and_si256(_mm256_srli_epi32(characters, 4), Constant(0x00003F00)),
                        _mm256_srli_epi32(characters, 18)));
    // The marks are 80C00000 for two bytes, 8080E000 for three and 808080F0 for four; each step toggles the
    // difference.
    const __m256i marks =
        _mm256_xor_si256(_mm256_xor_si256(_mm256_and_si256(from2, Constant(0x80C00000)),
                                          _mm256_and_si256(from3, Constant(0x80C00000 ^ 0x8080E000))),
                         _mm256_and_si256(from4, Constant(0x8080E000 ^ 0x808080F0)));
    const __m256i lanes =
        _mm256_blendv_epi8(_mm256_slli_epi32(characters, 24), _mm256_or_si256(bits, marks), from2);

    const __m256i oddSurplus = _mm256_xor_si256(_mm256_xor_si256(from2, from3), from4);
    const auto odd = static_cast<unsigned>(_mm256_movemask_ps(_mm256_castsi256_ps(oddSurplus)));
    const auto two = static_cast<unsigned>(_mm256_movemask_ps(_mm256_castsi256_ps(from3)));
    const size_t first = StorePacked(_mm256_castsi256_si128(lanes), (odd & 0x0F) | (two & 0x0F) << 4, out);
    return first + StorePacked(_mm256_extracti128_si256(lanes, 1), odd >> 4 | (two & 0xF0), out + first);
}

// Stores 32 characters as bytes when all of them are ASCII.
QV_AVX2 inline bool NarrowAscii(const wchar_t* text, char* out) noexcept {
    const __m256i a = Load(text);
    const __m256i b = Load(text + 8);
    const __m256i c = Load(text + 16);
    const __m256i d = Load(text + 24);
    const __m256i any = _mm256_or_si256(_mm256_or_si256(a, b), _mm256_or_si256(c, d));
    if (_mm256_testz_si256(any, Constant(~0x7Fu)) == 0) return false;
    // Packing works in the halves of the registers and leaves groups of four in the order a0 b0 c0 d0 a4 b4
    // c4 d4.
    const __m256i groups = _mm256_packus_epi16(_mm256_packus_epi32(a, b), _mm256_packus_epi32(c, d));
    Store(out, _mm256_permutevar8x32_epi32(groups, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7)));
    return true;
}

}  // namespace

QV_AVX2 size_t CountUtf8Characters(const char* bytes, size_t size) noexcept {
    size_t count = 0;
    size_t at = 0;
    for (; size - at >= kBlock; at += kBlock) {
        count += static_cast<size_t>(_mm_popcnt_u32(Leads(Load(bytes + at))));
    }
    return count + plain::CountUtf8Characters(bytes + at, size - at);
}

QV_AVX2 Utf8Progress DecodeUtf8(const char* bytes, size_t size, wchar_t* out, size_t room) noexcept {
    size_t at = 0;
    size_t written = 0;
    __m256i previous = _mm256_setzero_si256();
    bool previousIsAscii = true;
    while (size - at >= kBlock) {
        const __m256i block = Load(bytes + at);
        const bool isAscii = Mask(block) == 0;
        if (!(isAscii && previousIsAscii) && !IsValid(previous, block)) break;
        if (isAscii) {
            if (room - written < kBlock) break;
            WidenAscii(bytes + at, out + written);
            written += kBlock;
        } else {
            const uint32_t leads = Leads(block);
            const auto count = static_cast<size_t>(_mm_popcnt_u32(leads));
            if (size - at < kBlock + kLookAhead || room - written < count + kLanes) break;
            DecodeBlock(bytes + at, leads, out + written);
            written += count;
        }
        at += kBlock;
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

QV_AVX2 Utf8Progress EncodeUtf8(const wchar_t* text, size_t count, char* out, size_t room,
                                Utf8Progress from) noexcept {
    auto [at, written] = from;
    while (count - at >= kLanes && room - written >= 4 * kLanes) {
        if (count - at >= 4 * kLanes && NarrowAscii(text + at, out + written)) {
            at += 4 * kLanes;
            written += 4 * kLanes;
            continue;
        }
        const size_t end = at + std::min(4 * kLanes, (count - at) / kLanes * kLanes);
        for (; at < end && room - written >= 4 * kLanes; at += kLanes) {
            const __m256i characters = Load(text + at);
            if (!AreCodePoints(characters)) return {at, written};
            written += EncodeLanes(characters, out + written);
        }
    }
    return {at, written};
}

}  // namespace qv::avx2

#undef QV_AVX2
#endif
