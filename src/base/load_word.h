// Words out of byte buffers at any address, in a byte order that does not depend on the machine.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace qv {

// Reads 8 bytes; the first one is the most significant.
[[nodiscard]] inline std::uint64_t LoadBigEndian64(const std::uint8_t* bytes) noexcept {
    std::uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    return std::endian::native == std::endian::little ? __builtin_bswap64(word) : word;
}

// Reads 4 bytes; the first one is the most significant.
[[nodiscard]] inline std::uint32_t LoadBigEndian32(const std::uint8_t* bytes) noexcept {
    std::uint32_t word;
    std::memcpy(&word, bytes, sizeof word);
    return std::endian::native == std::endian::little ? __builtin_bswap32(word) : word;
}

// Writes 8 bytes, the most significant first.
inline void StoreBigEndian64(std::uint8_t* bytes, std::uint64_t word) noexcept {
    if constexpr (std::endian::native == std::endian::little) word = __builtin_bswap64(word);
    std::memcpy(bytes, &word, sizeof word);
}

}  // namespace qv
