// MD5 word by word after RFC 1321, with the library's rule for the last block: mark and length always share
// one.
#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

namespace qvmodel {

using Md5State = std::array<std::uint32_t, 4>;
using Md5Message = std::vector<std::uint8_t>;

inline constexpr Md5State kMd5Start = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476};

// The compression of one block of 64 bytes.
inline Md5State CompressMd5(const Md5State& state, const std::uint8_t* block) {
    static const int kTurn[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};
    std::uint32_t a = state[0], b = state[1], c = state[2], d = state[3];
    for (int i = 0; i < 64; ++i) {
        std::uint32_t f;
        int word;
        switch (i / 16) {
            case 0:
                f = (b & c) | (~b & d), word = i;
                break;
            case 1:
                f = (b & d) | (c & ~d), word = (5 * i + 1) % 16;
                break;
            case 2:
                f = b ^ c ^ d, word = (3 * i + 5) % 16;
                break;
            default:
                f = c ^ (b | ~d), word = (7 * i) % 16;
                break;
        }
        const std::uint8_t* m = block + 4 * word;
        const std::uint32_t message = m[0] | m[1] << 8 | m[2] << 16 | std::uint32_t{m[3]} << 24;
        const auto sine = static_cast<std::uint32_t>(std::floor(std::fabs(std::sin(i + 1.0)) * 4294967296.0));
        const std::uint32_t sum = a + f + message + sine;
        const int turn = kTurn[i / 16][i % 4];
        a = d, d = c, c = b;
        b += sum << turn | sum >> (32 - turn);
    }
    return {state[0] + a, state[1] + b, state[2] + c, state[3] + d};
}

inline Md5State HashMd5(const Md5Message& message) {
    Md5State state = kMd5Start;
    std::size_t done = 0;
    for (; message.size() - done >= 64; done += 64)
        state = CompressMd5(state, message.data() + done);

    std::uint8_t last[64] = {};
    std::size_t count = 0;
    while (done < message.size())
        last[count++] = message[done++];
    last[count] = 0x80;
    const std::uint64_t bits = std::uint64_t{message.size()} * 8;
    for (int i = 0; i < 8; ++i)
        last[56 + i] = static_cast<std::uint8_t>(bits >> (8 * i));
    return CompressMd5(state, last);
}

}  // namespace qvmodel
