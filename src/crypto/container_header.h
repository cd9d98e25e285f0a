// The 64 bytes before a container's body, as docs/encrypted-container.md shows them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "crypto/md5_steps.h"

namespace qv {

constexpr std::size_t kContainerHeaderSize = 64;
using ContainerHeaderBytes = std::array<std::uint8_t, kContainerHeaderSize>;

// 16 characters without a terminator.
constexpr std::size_t kContainerSignatureSize = 16;
extern const std::array<char, kContainerSignatureSize> kContainerSignature;

// Where the two enciphered fields lie: one chain of two blocks.
constexpr std::size_t kHeaderSizeOffset = 24;
constexpr std::size_t kPlaintextSizeOffset = 32;

struct ContainerHeader {
    std::uint64_t headerFeedbackCode = 0;
    std::uint64_t headerSize = 0;
    std::uint64_t plaintextSize = 0;
    Md5Words fingerprint{};
    std::uint64_t bodyFeedbackCode = 0;

    // All fields in their places; the two to be enciphered still plain.
    [[nodiscard]] ContainerHeaderBytes ToBytes() const noexcept;
};

}  // namespace qv
