#include "crypto/container_decipher.h"

#include <utility>

#include "crypto/container_decipher_avx2.h"

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

BlowfishHalves DecipherBlocks(const BlowfishTables& borrowedKey, BlowfishHalves chain, std::uint8_t* piece,
                              std::size_t size) noexcept {
    constexpr std::size_t kTogether = kLanes * kBlowfishBlockSize;
    const BlowfishTables key = borrowedKey;  // local copies may stay in registers
    for (; size >= kTogether; piece += kTogether, size -= kTogether)
        chain = DecipherTogether(key, chain, piece, std::make_index_sequence<kLanes>{});
    for (; size >= kBlowfishBlockSize; piece += kBlowfishBlockSize, size -= kBlowfishBlockSize)
        chain = DecipherTogether(key, chain, piece, std::make_index_sequence<1>{});
    return chain;
}

}  // namespace

void ContainerDecipher::Decipher(std::uint8_t* piece, std::size_t size) noexcept {
    chain_ = DecipherBlocks(key_, chain_, piece, size);
}

FingerprintingDecipher::FingerprintingDecipher(const BlowfishTables& key, std::uint64_t feedbackCode) noexcept
    : key_(key), chain_(BlowfishFeedback(feedbackCode).Halves()), digest_(*block_) {
    digest_.Initialize();
}

void FingerprintingDecipher::Decipher(std::uint8_t* piece, std::size_t size) noexcept {
    std::size_t hashed = 0;
    if constexpr (avx2::kHasDecipherBesideHash) {
        // The hash is one group ahead of the cipher and needs another group behind its own.
        const std::size_t groups = size / kMd5BlockSize;
        if (groups > 2 && avx2::CanDecipherBesideHash()) {
            digest_.Update(piece, kMd5BlockSize);
            chain_ = avx2::DecipherBesideHash(key_, chain_, digest_.LendWords(groups - 2), piece, groups - 2);
            piece += (groups - 2) * kMd5BlockSize;
            size -= (groups - 2) * kMd5BlockSize;
            hashed = kMd5BlockSize;
        }
    }
    digest_.Update(piece + hashed, size - hashed);
    chain_ = DecipherBlocks(key_, chain_, piece, size);
}

Md5Words FingerprintingDecipher::Finish(const void* key, std::size_t size) noexcept {
    digest_.Update(key, size);
    digest_.Finish();
    return digest_.GetWords();
}

}  // namespace qv
