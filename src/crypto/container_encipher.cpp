#include "crypto/container_encipher.h"

#include <utility>

namespace qv {
namespace {

// A block's sixteen rounds take two at a time beside one step of the hash, so eight blocks go with the 64
// steps of one hash block.
constexpr int kStepsInBlock = 8;
static_assert(kMd5BlockSize == kStepsInBlock * kBlowfishBlockSize);

BlowfishHalves EncipherNext(const BlowfishTables& key, BlowfishHalves chain, std::uint8_t* block) noexcept {
    chain = EncipherBlowfish(key, LoadBlowfishBlock(block) ^ chain);
    StoreBlowfishBlock(chain, block);
    return chain;
}

// Enciphers block kBlock of a group while the hash takes its steps over the enciphered group before it.
template <int kBlock, int... kSteps>
[[gnu::always_inline]] inline void EncipherBesideHash(const BlowfishTables& key, BlowfishHalves& chain,
                                                      Md5Words& words, std::uint8_t* group,
                                                      std::integer_sequence<int, kSteps...>) noexcept {
    std::uint8_t* block = group + kBlock * kBlowfishBlockSize;
    BlowfishHalves x = LoadBlowfishBlock(block) ^ chain;
    x.left ^= key.subkeys[0];
    ((EncipherTwoRounds(key, 2 * kSteps, x),
      Md5Step<kBlock * kStepsInBlock + kSteps>(words, group - kMd5BlockSize)),
     ...);
    chain = {x.right ^ key.subkeys[17], x.left};
    StoreBlowfishBlock(chain, block);
}

// One function for a whole group, so that chain and words stay in registers; on its own, so that no
// surroundings compete for them.
template <int... kBlocks>
[[gnu::noinline]] void EncipherGroupBesideHash(const BlowfishTables& key, BlowfishHalves& chain,
                                               Md5Words& words, std::uint8_t* group,
                                               std::integer_sequence<int, kBlocks...>) noexcept {
    Md5Words now = words;
    (EncipherBesideHash<kBlocks>(key, chain, now, group, std::make_integer_sequence<int, kStepsInBlock>{}),
     ...);
    words = {words[0] + now[0], words[1] + now[1], words[2] + now[2], words[3] + now[3]};
}

// Enciphers groups of 64 bytes and hashes them. Both the cipher and the hash are chains in which each
// operation waits for the one before; run side by side, with the hash one group behind, they share the time
// that the cipher needs alone.
BlowfishHalves EncipherGroups(const BlowfishTables& borrowedKey, BlowfishHalves chain, Md5Words& words,
                              std::uint8_t* groups, std::size_t count) noexcept {
    if (count == 0) return chain;
    const BlowfishTables key = borrowedKey;  // local copies may stay in registers
    Md5Words now = words;
    std::uint8_t* group = groups;
    std::uint8_t* const end = groups + count * kMd5BlockSize;
    for (; group != groups + kMd5BlockSize; group += kBlowfishBlockSize)
        chain = EncipherNext(key, chain, group);
    for (; group != end; group += kMd5BlockSize) {
        EncipherGroupBesideHash(key, chain, now, group,
                                std::make_integer_sequence<int, kMd5BlockSize / kBlowfishBlockSize>{});
    }
    TransformMd5Blocks(now, end - kMd5BlockSize, 1);
    words = now;
    return chain;
}

}  // namespace

ContainerEncipher::ContainerEncipher(const BlowfishTables& key, std::uint64_t feedbackCode) noexcept
    : key_(key), chain_(BlowfishFeedback(feedbackCode).Halves()), digest_(*block_) {
    digest_.Initialize();
}

void ContainerEncipher::Encipher(std::uint8_t* piece, std::size_t size) noexcept {
    const std::size_t groups = size / kMd5BlockSize;
    chain_ = EncipherGroups(key_, chain_, digest_.LendWords(groups), piece, groups);

    const std::size_t grouped = groups * kMd5BlockSize;
    for (std::size_t i = grouped; i < size; i += kBlowfishBlockSize)
        chain_ = EncipherNext(key_, chain_, piece + i);
    digest_.Update(piece + grouped, size - grouped);
}

Md5Words ContainerEncipher::Finish(const void* key, std::size_t size) noexcept {
    digest_.Update(key, size);
    digest_.Finish();
    return digest_.GetWords();
}

}  // namespace qv
