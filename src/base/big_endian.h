// Numbers as big-endian bytes at any address, on any processor.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace qv {

[[nodiscard]] inline std::uint32_t LoadBig32(const void* bytes) noexcept {
    std::uint32_t value;
    std::memcpy(&value, bytes, sizeof value);
    if constexpr (std::endian::native == std::endian::little) value = __builtin_bswap32(value);
    return value;
}

[[nodiscard]] inline std::uint64_t LoadBig64(const void* bytes) noexcept {
    std::uint64_t value;
    std::memcpy(&value, bytes, sizeof value);
    if constexpr (std::endian::native == std::endian::little) value = __builtin_bswap64(value);
    return value;
}

inline void StoreBig32(std::uint32_t value, void* bytes) noexcept {
    if constexpr (std::endian::native == std::endian::little) value = __builtin_bswap32(value);
    std::memcpy(bytes, &value, sizeof value);
}

inline void StoreBig64(std::uint64_t value, void* bytes) noexcept {
    if constexpr (std::endian::native == std::endian::little) value = __builtin_bswap64(value);
    std::memcpy(bytes, &value, sizeof value);
}

}  // namespace qv
