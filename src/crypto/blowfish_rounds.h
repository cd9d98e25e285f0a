// Blowfish on numbers: the key schedule, the rounds, and how eight bytes become two halves.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/little_endian.h"
#include "crypto/blowfish_tables.h"

namespace qv {

constexpr std::size_t kBlowfishBlockSize = 8;
constexpr std::size_t kBlowfishLongestKey = 56;

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

[[nodiscard]] BlowfishHalves EncipherBlowfish(const BlowfishTables& key, BlowfishHalves x) noexcept;
[[nodiscard]] BlowfishHalves DecipherBlowfish(const BlowfishTables& key, BlowfishHalves x) noexcept;

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

// The 64-bit feedback code holds the word that meets a block's left half on top.
[[nodiscard]] constexpr BlowfishHalves SplitFeedbackCode(std::uint64_t code) noexcept {
    return {static_cast<std::uint32_t>(code >> 32), static_cast<std::uint32_t>(code)};
}

[[nodiscard]] constexpr std::uint64_t JoinFeedbackCode(BlowfishHalves halves) noexcept {
    return std::uint64_t{halves.left} << 32 | halves.right;
}

// The round function F.
[[nodiscard]] inline std::uint32_t BlowfishF(const std::uint32_t* substitutes, std::uint32_t x) noexcept {
    const std::uint32_t a = substitutes[x >> 24];
    const std::uint32_t b = (substitutes + 256)[(x >> 16) & 0xFF];
    const std::uint32_t c = (substitutes + 512)[(x >> 8) & 0xFF];
    const std::uint32_t d = (substitutes + 768)[x & 0xFF];
    return ((a + b) ^ c) + d;
}

// Rounds `round` and `round + 1` of enciphering (0 to 14), without swapping the halves in between. Before
// round 0 the left half has taken subkey 0; each further subkey joins the half that waits, so that it never
// lengthens the chain of look-ups.
inline void EncipherTwoRounds(const BlowfishTables& key, int round, BlowfishHalves& x) noexcept {
    x.right = BlowfishF(key.substitutes, x.left) ^ (x.right ^ key.subkeys[round + 1]);
    x.left = BlowfishF(key.substitutes, x.right) ^ (x.left ^ key.subkeys[round + 2]);
}

// The same of deciphering, which takes the subkeys from the other end: before round 0, subkey 17.
inline void DecipherTwoRounds(const BlowfishTables& key, int round, BlowfishHalves& x) noexcept {
    x.right = BlowfishF(key.substitutes, x.left) ^ (x.right ^ key.subkeys[16 - round]);
    x.left = BlowfishF(key.substitutes, x.right) ^ (x.left ^ key.subkeys[15 - round]);
}

}  // namespace qv
