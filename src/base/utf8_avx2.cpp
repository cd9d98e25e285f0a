#include "base/processor.h"

#if QV_X86

#include <algorithm>
#include <array>
#include <cstdint>
#include <immintrin.h>

#include "base/utf8_faults.h"
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

QV_AVX2 inline uint32_t Mask(__m256i bytes) noexcept {
    return static_cast<uint32_t>(_mm256_movemask_epi8(bytes));
}

// All ones in each byte that begins a character, that is, in all but 80..BF.
QV_AVX2 inline __m256i LeadBytes(__m256i bytes) noexcept {
    return _mm256_cmpgt_epi8(bytes, _mm256_set1_epi8(-65));
}

QV_AVX2 inline uint32_t Leads(__m256i bytes) noexcept {
    return Mask(LeadBytes(bytes));
}

// The sum of all bytes.
QV_AVX2 inline size_t Sum(__m256i bytes) noexcept {
    alignas(32) uint64_t sums[4];
    Store(sums, _mm256_sad_epu8(bytes, _mm256_setzero_si256()));
    return static_cast<size_t>(sums[0] + sums[1] + sums[2] + sums[3]);
}

constexpr bool IsLead(char byte) noexcept {
    return (byte & 0xC0) != 0x80;
}

// ---- decoding ----

// The block as it looked N bytes earlier: the last N bytes of `previous`, then the block's first ones.
template <int N>
QV_AVX2 inline __m256i Earlier(__m256i previous, __m256i block) noexcept {
    return _mm256_alignr_epi8(block, _mm256_permute2x128_si256(previous, block, 0x21), 16 - N);
}

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

// A block is 32 bytes; its last characters may lie in the bytes behind it, and eight more are loaded.
constexpr size_t kBlock = 32;
constexpr size_t kLookAhead = 8;
constexpr size_t kLanes = 8;

// With less to decode, getting the constants ready takes longer than the plain loop takes for all of it.
constexpr size_t kWorthwhile = 2 * kBlock;

QV_AVX2 inline void WidenAscii(const char* in, wchar_t* out) noexcept {
    for (size_t i = 0; i < kBlock; i += kLanes) {
        Store(out + i, _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(in + i))));
    }
}

// The work on one block, with the constants that it needs. The compiler must not know what they are: it would
// make most of them anew for every block, which costs a quarter of the speed.
struct Decoder {
    __m256i firstHigh = Table(utf8::kFirstHigh);
    __m256i firstLow = Table(utf8::kFirstLow);
    __m256i secondHigh = Table(utf8::kSecondHigh);
    __m256i lowNibble = Constant(0x0F0F0F0F);
    __m256i below3Bytes = Constant(0x60606060);  // the largest lead byte of two bytes, less 80 and rounded up
    __m256i below4Bytes = Constant(0x70707070);
    __m256i topBit = Constant(0x80808080);
    __m256i surplus = Table(kSurplus);
    __m256i unused = Table(kUnused);
    __m256i onlyLowestByte = Constant(0x80808000);
    __m256i payload = Constant(0xFF3F3F3F);
    __m256i joinBytes = Constant(0x40014001);
    __m256i joinPairs = Constant(0x10000001);
    __m256i allBits = Constant(0xFFFFFFFF);

    QV_AVX2 Decoder() noexcept { asm("" : "+m"(*this)); }

    QV_AVX2 __m256i HighNibbles(__m256i bytes) const noexcept {
        return _mm256_and_si256(_mm256_srli_epi16(bytes, 4), lowNibble);
    }

    // Whether each byte of the block may follow the three in front of it. What the block's own last bytes
    // still ask for is the next block's matter.
    QV_AVX2 bool IsValid(__m256i previous, __m256i block) const noexcept {
        const __m256i first = Earlier<1>(previous, block);
        const __m256i firstFaults =
            _mm256_and_si256(_mm256_shuffle_epi8(firstHigh, HighNibbles(first)),
                             _mm256_shuffle_epi8(firstLow, _mm256_and_si256(first, lowNibble)));
        const __m256i faults =
            _mm256_and_si256(firstFaults, _mm256_shuffle_epi8(secondHigh, HighNibbles(block)));
        // The top bit is set where the byte two places ahead is E0 or more, or the one three places ahead F0
        // or more.
        const __m256i asked = _mm256_or_si256(_mm256_subs_epu8(Earlier<2>(previous, block), below3Bytes),
                                              _mm256_subs_epu8(Earlier<3>(previous, block), below4Bytes));
        const __m256i wrong = _mm256_xor_si256(_mm256_and_si256(asked, topBit), faults);
        return _mm256_testz_si256(wrong, wrong) != 0;
    }

    // Eight lanes that hold a lead byte and the three bytes behind it to eight characters.
    QV_AVX2 __m256i JoinLanes(__m256i lanes) const noexcept {
        const __m256i lead = _mm256_or_si256(_mm256_srli_epi32(lanes, 28), onlyLowestByte);
        const __m256i bits = _mm256_and_si256(lanes, payload);
        const __m256i pairs =
            _mm256_maddubs_epi16(bits, joinBytes);  // lead << 6 | second, third << 6 | fourth
        const __m256i joined = _mm256_madd_epi16(pairs, joinPairs);  // first pair << 12 | second pair
        return _mm256_and_si256(_mm256_srlv_epi32(joined, _mm256_shuffle_epi8(surplus, lead)),
                                _mm256_srlv_epi32(allBits, _mm256_shuffle_epi8(unused, lead)));
    }

    // Decodes the characters that begin in the block at `in`; up to kLanes - 1 unused characters are written
    // behind them.
    QV_AVX2 void DecodeBlock(const char* in, uint32_t leads, wchar_t* out) const noexcept {
        for (size_t i = 0; i < kBlock; i += 8, leads >>= 8) {
            const __m256i bytes =
                _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(in + i)));
            const __m256i control =
                _mm256_load_si256(reinterpret_cast<const __m256i*>(&kGather[leads & 0xFF]));
            Store(out, JoinLanes(_mm256_shuffle_epi8(bytes, control)));
            out += _mm_popcnt_u32(leads & 0xFF);
        }
    }
};

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

// By which of eight characters of one or two bytes are ASCII: the bytes of each 16-bit lane that count, moved
// together.
constexpr auto kPackPairs = [] {
    std::array<PackControl, 256> controls{};
    for (unsigned ascii = 0; ascii < 256; ++ascii) {
        size_t to = 0;
        for (unsigned lane = 0; lane < 8; ++lane) {
            controls[ascii].bytes[to++] = static_cast<uint8_t>(2 * lane);
            if ((ascii >> lane & 1) == 0) controls[ascii].bytes[to++] = static_cast<uint8_t>(2 * lane + 1);
        }
    }
    return controls;
}();

// Stores the bytes of eight 16-bit lanes at `out`, where 16 are written; how many of them count.
QV_AVX2 inline size_t StorePackedPairs(__m128i lanes, unsigned ascii, char* out) noexcept {
    const __m128i control = _mm_loadu_si128(reinterpret_cast<const __m128i*>(&kPackPairs[ascii]));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_shuffle_epi8(lanes, control));
    return 16 - static_cast<size_t>(_mm_popcnt_u32(ascii));
}

// Encodes sixteen characters below U+0800 at `out`, which has room for 32 bytes; the bytes written.
QV_AVX2 inline size_t EncodePairs(__m256i first, __m256i second, char* out) noexcept {
    // Packing works in the halves of the registers: the middle groups of four change places.
    const __m256i words = _mm256_permute4x64_epi64(_mm256_packus_epi32(first, second), 0b11011000);
    const __m256i ascii = _mm256_cmpgt_epi16(_mm256_set1_epi16(0x80), words);
    const __m256i low = _mm256_slli_epi16(_mm256_and_si256(words, _mm256_set1_epi16(0x3F)), 8);
    const __m256i pairs =
        _mm256_or_si256(_mm256_or_si256(low, _mm256_srli_epi16(words, 6)), Constant(0x80C080C0));
    const __m256i lanes = _mm256_blendv_epi8(pairs, words, ascii);

    const uint32_t bits =
        Mask(_mm256_packs_epi16(ascii, ascii));  // the low half's in bits 0..7, the high one's in 16..23
    const size_t size = StorePackedPairs(_mm256_castsi256_si128(lanes), bits & 0xFF, out);
    return size + StorePackedPairs(_mm256_extracti128_si256(lanes, 1), bits >> 16 & 0xFF, out + size);
}

// Four registers of characters.
constexpr size_t kRun = 4 * kLanes;

struct Run {
    __m256i a, b, c, d;
};

// Whether no character has a bit beyond the limit's, which is a power of two.
QV_AVX2 inline bool AreBelow(const Run& run, uint32_t limit) noexcept {
    const __m256i any = _mm256_or_si256(_mm256_or_si256(run.a, run.b), _mm256_or_si256(run.c, run.d));
    return _mm256_testz_si256(any, Constant(~(limit - 1))) != 0;
}

QV_AVX2 inline void NarrowAscii(const Run& run, char* out) noexcept {
    // Packing in the halves leaves groups of four in the order a0 b0 c0 d0 a4 b4 c4 d4.
    const __m256i groups =
        _mm256_packus_epi16(_mm256_packus_epi32(run.a, run.b), _mm256_packus_epi32(run.c, run.d));
    Store(out, _mm256_permutevar8x32_epi32(groups, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7)));
}

// Encodes a run at `out`; the bytes written, or 0 when it may need more than `room` or holds something else
// than code points.
QV_AVX2 inline size_t EncodeRun(const Run& run, char* out, size_t room) noexcept {
    if (AreBelow(run, 0x80)) {
        if (room < kRun) return 0;
        NarrowAscii(run, out);
        return kRun;
    }
    if (AreBelow(run, 0x800)) {
        if (room < 2 * kRun) return 0;
        const size_t size = EncodePairs(run.a, run.b, out);
        return size + EncodePairs(run.c, run.d, out + size);
    }
    if (room < 4 * kRun) return 0;
    if (!AreCodePoints(run.a) || !AreCodePoints(run.b) || !AreCodePoints(run.c) || !AreCodePoints(run.d))
        return 0;
    size_t size = EncodeLanes(run.a, out);
    size += EncodeLanes(run.b, out + size);
    size += EncodeLanes(run.c, out + size);
    return size + EncodeLanes(run.d, out + size);
}

}  // namespace

// In long texts each byte of a vector counts its own lead bytes, for as many rounds as a byte can count.
QV_AVX2 size_t CountUtf8Characters(const char* bytes, size_t size) noexcept {
    constexpr size_t kRound = 4 * kBlock;
    constexpr size_t kMostRounds = 255 / 4;
    size_t count = 0;
    size_t at = 0;
    while (size - at >= kRound) {
        const size_t end = at + std::min((size - at) / kRound, kMostRounds) * kRound;
        __m256i counts = _mm256_setzero_si256();
        for (; at < end; at += kRound) {
            const char* const in = bytes + at;
            const __m256i first = _mm256_add_epi8(LeadBytes(Load(in)), LeadBytes(Load(in + kBlock)));
            const __m256i second =
                _mm256_add_epi8(LeadBytes(Load(in + 2 * kBlock)), LeadBytes(Load(in + 3 * kBlock)));
            counts = _mm256_sub_epi8(counts, _mm256_add_epi8(first, second));
        }
        count += Sum(counts);
    }
    for (; size - at >= kBlock; at += kBlock)
        count += static_cast<size_t>(_mm_popcnt_u32(Leads(Load(bytes + at))));
    return count + plain::CountUtf8Characters(bytes + at, size - at);
}

QV_AVX2 Utf8Progress DecodeUtf8(const char* bytes, size_t size, wchar_t* out, size_t room) noexcept {
    size_t at = 0;
    for (; std::min(size, room) - at >= kBlock && Mask(Load(bytes + at)) == 0; at += kBlock) {
        WidenAscii(bytes + at, out + at);
    }
    size_t written = at;
    if (size - at < kWorthwhile) return {at, written};

    const Decoder decoder;
    __m256i previous = _mm256_setzero_si256();
    bool previousIsAscii = true;
    while (size - at >= kBlock + kLookAhead) {
        const __m256i block = Load(bytes + at);
        const bool isAscii = Mask(block) == 0;
        if (!(isAscii && previousIsAscii) && !decoder.IsValid(previous, block)) break;
        const uint32_t leads = Leads(block);
        const auto count = static_cast<size_t>(_mm_popcnt_u32(leads));
        if (room - written < count + kLanes) break;
        if (isAscii) {
            WidenAscii(bytes + at, out + written);
        } else {
            decoder.DecodeBlock(bytes + at, leads, out + written);
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

QV_AVX2 Utf8Progress EncodeUtf8(const wchar_t* text, size_t count, char* out, size_t room,
                                Utf8Progress from) noexcept {
    auto [at, written] = from;
    while (count - at >= kRun) {
        const wchar_t* const in = text + at;
        const Run run = {Load(in), Load(in + kLanes), Load(in + 2 * kLanes), Load(in + 3 * kLanes)};
        const size_t size = EncodeRun(run, out + written, room - written);
        if (size == 0) break;
        at += kRun;
        written += size;
    }
    while (count - at >= kLanes && room - written >= 4 * kLanes) {
        const __m256i characters = Load(text + at);
        if (!AreCodePoints(characters)) break;
        written += EncodeLanes(characters, out + written);
        at += kLanes;
    }
    return {at, written};
}

}  // namespace qv::avx2

#undef QV_AVX2
#endif
