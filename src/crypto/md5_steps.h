// The 64 steps of the MD5 compression, one inline function each, so that a loop can run them back to back or
// spread them between other work.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "base/keep_order.h"
#include "base/little_endian.h"

namespace qv {

// The running digest: the words A, B, C, D.
using Md5Words = std::array<std::uint32_t, 4>;

constexpr std::size_t kMd5BlockSize = 64;
constexpr int kMd5Steps = 64;

namespace md5_detail {

// floor(2^32 * |sin(i + 1)|), i + 1 in radians.
constexpr std::array<std::uint32_t, kMd5Steps> kSines = {
    0xD76AA478, 0xE8C7B756, 0x242070DB, 0xC1BDCEEE, 0xF57C0FAF, 0x4787C62A, 0xA8304613, 0xFD469501,
    0x698098D8, 0x8B44F7AF, 0xFFFF5BB1, 0x895CD7BE, 0x6B901122, 0xFD987193, 0xA679438E, 0x49B40821,
    0xF61E2562, 0xC040B340, 0x265E5A51, 0xE9B6C7AA, 0xD62F105D, 0x02441453, 0xD8A1E681, 0xE7D3FBC8,
    0x21E1CDE6, 0xC33707D6, 0xF4D50D87, 0x455A14ED, 0xA9E3E905, 0xFCEFA3F8, 0x676F02D9, 0x8D2A4C8A,
    0xFFFA3942, 0x8771F681, 0x6D9D6122, 0xFDE5380C, 0xA4BEEA44, 0x4BDECFA9, 0xF6BB4B60, 0xBEBFBC70,
    0x289B7EC6, 0xEAA127FA, 0xD4EF3085, 0x04881D05, 0xD9D4D039, 0xE6DB99E5, 0x1FA27CF8, 0xC4AC5665,
    0xF4292244, 0x432AFF97, 0xAB9423A7, 0xFC93A039, 0x655B59C3, 0x8F0CCC92, 0xFFEFF47D, 0x85845DD1,
    0x6FA87E4F, 0xFE2CE6E0, 0xA3014314, 0x4E0811A1, 0xF7537E82, 0xBD3AF235, 0x2AD7D2BB, 0xEB86D391,
};

constexpr int kRotations[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};

// Which of the sixteen message words a step adds.
constexpr std::size_t MessageWord(int step) {
    constexpr int kFactor[4] = {1, 5, 3, 7};
    constexpr int kOffset[4] = {0, 1, 5, 0};
    return static_cast<std::size_t>((kFactor[step / 16] * step + kOffset[step / 16]) % 16);
}

}  // namespace md5_detail

// One step over the block's bytes. Its input b is the step's before, the last to arrive, so whatever does not
// need b is summed up first. In the second round the halves of (b & d) | (c & ~d) share no bit: added instead
// of joined, the half without b leaves the chain of dependent operations. Always inline, so that the words
// stay in registers.
template <int kStep>
[[gnu::always_inline]] inline void Md5Step(Md5Words& words, const std::uint8_t* block) noexcept {
    using namespace md5_detail;
    std::uint32_t& a = words[(64 - kStep) % 4];
    const std::uint32_t b = words[(65 - kStep) % 4];
    const std::uint32_t c = words[(66 - kStep) % 4];
    const std::uint32_t d = words[(67 - kStep) % 4];
    std::uint32_t early = a + LoadLittle32(block + 4 * MessageWord(kStep)) + kSines[kStep];
    std::uint32_t late;
    if constexpr (kStep < 16) {
        late = d ^ (b & (c ^ d));
    } else if constexpr (kStep < 32) {
        early += c & ~d;
        late = b & d;
    } else if constexpr (kStep < 48) {
        late = b ^ (c ^ d);
    } else {
        late = c ^ (b | ~d);
    }
    KeepOrder(early);
    a = b + std::rotl(early + late, kRotations[kStep / 16][kStep % 4]);
}

}  // namespace qv
