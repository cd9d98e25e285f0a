#include "crypto/container_decipher.h"

#include <utility>

namespace qv {
namespace {

// Deciphering needs only the cipher block before, so several blocks can go through their rounds together and
// hide the time that each look-up takes. Five use the registers of a 64-bit x86 up.
constexpr std::size_t kLanes = 5;

template <std::size_t... kLane>
BlowfishHalves DecipherTogether(const BlowfishTables& key, BlowfishHalves chain, std::uint8_t* blocks,
                                std::index_sequence<kLane...>) noexcept {
    BlowfishHalves x[] = {LoadBlowfishBlock(blocks + kLane * kBlowfishBlockSize)...};
    ((x[kLane].left ^= key.subkeys[17]), ...);
    for (int round = 0; round < kBlowfishRounds; round += 2) {
        (BlowfishRound(key.substitutes, x[kLane].left, key.subkeys[16 - round], x[kLane].right), ...);
        (BlowfishRound(key.substitutes, x[kLane].right, key.subkeys[15 - round], x[kLane].left), ...);
    }
    const auto finish = [&](BlowfishHalves halves, std::uint8_t* block) {
        const BlowfishHalves cipher = LoadBlowfishBlock(block);
        StoreBlowfishBlock({halves.right ^ key.subkeys[0] ^ chain.left, halves.left ^ chain.right}, block);
        chain = cipher;
    };
    (finish(x[kLane], blocks + kLane * kBlowfishBlockSize), ...);
    return chain;
}

}  // namespace

void ContainerDecipher::Decipher(std::uint8_t* piece, std::size_t size) noexcept {
    constexpr std::size_t kTogether = kLanes * kBlowfishBlockSize;
    const BlowfishTables key = key_;  // local copies may stay in registers
    BlowfishHalves chain = chain_;
    for (; size >= kTogether; piece += kTogether, size -= kTogether)
        chain = DecipherTogether(key, chain, piece, std::make_index_sequence<kLanes>{});
    for (; size >= kBlowfishBlockSize; piece += kBlowfishBlockSize, size -= kBlowfishBlockSize)
        chain = DecipherTogether(key, chain, piece, std::make_index_sequence<1>{});
    chain_ = chain;
}

}  // namespace qv
