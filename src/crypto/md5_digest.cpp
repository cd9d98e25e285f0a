#include "crypto/md5_digest.h"

#include <cstring>

namespace qv {
namespace {

constexpr Md5Words kInitialWords = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476};
constexpr std::size_t kLengthOffset = 56;

}  // namespace

void Md5Digest::Initialize() noexcept {
    words_ = kInitialWords;
    count_ = 0;
    size_ = 0;
    std::memset(block_, 0, kMd5BlockSize);
}

void Md5Digest::Update(const void* bytes, std::size_t size) noexcept {
    if (size == 0) return;
    const auto* input = static_cast<const std::uint8_t*>(bytes);
    size_ += size;
    const std::size_t room = kMd5BlockSize - count_;
    if (size < room) {
        std::memcpy(block_ + count_, input, size);
        count_ += static_cast<std::uint32_t>(size);
        return;
    }
    std::memcpy(block_ + count_, input, room);
    TransformMd5Blocks(words_, block_, 1);
    input += room;
    size -= room;
    const std::size_t tail = size % kMd5BlockSize;
    TransformMd5Blocks(words_, input, size / kMd5BlockSize);
    std::memset(block_, 0, kMd5BlockSize);
    std::memcpy(block_, input + (size - tail), tail);
    count_ = static_cast<std::uint32_t>(tail);
}

void Md5Digest::Finish() noexcept {
    block_[count_] = 0x80;
    StoreLittle64(size_ * 8, block_ + kLengthOffset);
    TransformMd5Blocks(words_, block_, 1);
}

}  // namespace qv
