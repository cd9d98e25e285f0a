// Blowfish on numbers: the key schedule, the rounds, and how eight bytes become two halves.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/keep_order.h"
#include "base/little_endian.h"
#include "crypto/blowfish_tables.h"

namespace qv {

constexpr std::size_t kBlowfishBlockSize = 8;
constexpr std::size_t kBlowfishLongestKey = 56;
constexpr int kBlowfishRounds = 16;

struct BlowfishHalves {
    std::uint32_t left;
    std::uint32_t right;
};

[[nodiscard]] constexpr BlowfishHalves operator^(BlowfishHalves x, BlowfishHalves y) noexcept {
    return {x.left ^ y.left, x.right ^ y.right};
}

// The tables of one key, borrowed from whoever scheduled it.
struct BlowfishTables {
    const std::uint32_t* substitutes;  // BlowfishSubstitutes
    const std::uint32_t* subkeys;      // BlowfishSubkeys
};

// The key schedule. `size` is 1 to kBlowfishLongestKey.
void ExpandBlowfishKey(const void* key, std::size_t size, BlowfishSubstitutes& substitutes,
                       BlowfishSubkeys& subkeys) noexcept;

// A block's halves are little-endian numbers, left half first. Published test vectors read them big-endian;
// the library's files use this order.
[[nodiscard]] inline BlowfishHalves LoadBlowfishBlock(const void* block) noexcept {
    const auto* bytes = static_cast<const std::uint8_t*>(block);
    return {LoadLittle32(bytes), LoadLittle32(bytes + 4)};
}

inline void StoreBlowfishBlock(BlowfishHalves halves, void* block) noexcept {
    auto* bytes = static_cast<std::uint8_t*>(block);
    StoreLittle32(halves.left, bytes);
    StoreLittle32(halves.right, bytes + 4);
}

// The state of a chain, as a 64-bit number and as the two words it meets a block with: the number's high word
// meets the left half.
struct BlowfishFeedback {
    std::uint32_t low = 0;
    std::uint32_t high = 0;

    BlowfishFeedback() noexcept = default;
    explicit constexpr BlowfishFeedback(std::uint64_t code) noexcept
        : low(static_cast<std::uint32_t>(code)), high(static_cast<std::uint32_t>(code >> 32)) {}
    explicit constexpr BlowfishFeedback(BlowfishHalves block) noexcept : low(block.right), high(block.left) {}

    [[nodiscard]] constexpr std::uint64_t Code() const noexcept { return std::uint64_t{high} << 32 | low; }
    [[nodiscard]] constexpr BlowfishHalves Halves() const noexcept { return {high, low}; }
};

// The round function F. Always inline, as the rounds are: with many callers compilers tend to make calls of
// them.
[[nodiscard, gnu::always_inline]] inline std::uint32_t BlowfishF(const std::uint32_t* substitutes,
                                                                 std::uint32_t x) noexcept {
    const std::uint32_t a = substitutes[x >> 24];
    const std::uint32_t b = (substitutes + 256)[(x >> 16) & 0xFF];
    const std::uint32_t c = (substitutes + 512)[(x >> 8) & 0xFF];
    const std::uint32_t d = (substitutes + 768)[x & 0xFF];
    return ((a + b) ^ c) + d;
}

// One round without the swap of the halves. The subkey, which is the next round's, joins the half that waits,
// so that it does not lengthen the chain of look-ups.
[[gnu::always_inline]] inline void BlowfishRound(const std::uint32_t* substitutes, std::uint32_t half,
                                                 std::uint32_t nextSubkey, std::uint32_t& waiting) noexcept {
    waiting ^= nextSubkey;
    KeepOrder(waiting);
    waiting ^= BlowfishF(substitutes, half);
}

// Rounds `round` and `round + 1` of enciphering (0 to 14). Before round 0 the left half has taken subkey 0.
[[gnu::always_inline]] inline void EncipherTwoRounds(const BlowfishTables& key, int round,
                                                     BlowfishHalves& x) noexcept {
    BlowfishRound(key.substitutes, x.left, key.subkeys[round + 1], x.right);
    BlowfishRound(key.substitutes, x.right, key.subkeys[round + 2], x.left);
}

// The same of deciphering, which takes the subkeys from the other end: before round 0, subkey 17.
[[gnu::always_inline]] inline void DecipherTwoRounds(const BlowfishTables& key, int round,
                                                     BlowfishHalves& x) noexcept {
    BlowfishRound(key.substitutes, x.left, key.subkeys[16 - round], x.right);
    BlowfishRound(key.substitutes, x.right, key.subkeys[15 - round], x.left);
}

// A whole block. Inline, because a call would pack the halves into one register and unpack them again, which
// the next block of a chain has to wait for.
[[nodiscard, gnu::always_inline]] inline BlowfishHalves EncipherBlowfish(const BlowfishTables& key,
                                                                         BlowfishHalves x) noexcept {
    x.left ^= key.subkeys[0];
    for (int round = 0; round < kBlowfishRounds; round += 2)
        EncipherTwoRounds(key, round, x);
    return {x.right ^ key.subkeys[17], x.left};
}

[[nodiscard, gnu::always_inline]] inline BlowfishHalves DecipherBlowfish(const BlowfishTables& key,
                                                                         BlowfishHalves x) noexcept {
    x.left ^= key.subkeys[17];
    for (int round = 0; round < kBlowfishRounds; round += 2)
        DecipherTwoRounds(key, round, x);
    return {x.right ^ key.subkeys[0], x.left};
}

}  // namespace qv
