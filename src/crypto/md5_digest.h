// MD5 of a message that comes in pieces.
#pragma once

#include "crypto/md5_blocks.h"

namespace qv {

// What waits until a block is full.
using Md5Block = std::array<std::uint8_t, kMd5BlockSize>;

// A digest in progress: MD5 with a finishing rule of the library's own.
//
// The last block holds the mark 0x80 and the length in bits, always in one block. Where the message leaves no
// room for both (length modulo 64 is 56 to 63), the length overwrites the message's last bytes and the mark;
// for all other lengths the digest is the standard one. Files of the library carry such digests.
class Md5Digest {
public:
    // The block is borrowed and lives longer than the digest.
    explicit Md5Digest(Md5Block& block) noexcept : block_(block.data()) {}

    // Begins a new message.
    void Initialize() noexcept;
    void Update(const void* bytes, std::size_t size) noexcept;
    // After it the words are the digest. The block stays as it is: a later Update goes on from this state.
    void Finish() noexcept;

    [[nodiscard]] const Md5Words& GetWords() const noexcept { return words_; }

    // For a loop that compresses blocks beside other work: counts whole blocks as part of the message and
    // lends the words to compress them into. Only while the bytes so far fill whole blocks.
    [[nodiscard]] Md5Words& LendWords(std::size_t blocks) noexcept {
        size_ += std::uint64_t{blocks} * kMd5BlockSize;
        return words_;
    }

private:
    Md5Words words_{};
    std::uint8_t* block_;      // zeros beyond count_, until Finish
    std::uint32_t count_ = 0;  // 0 to 63
    std::uint64_t size_ = 0;   // of the whole message, in bytes
};

}  // namespace qv
