// Runs of bits between byte buffers, the first bit of each byte being its most significant one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

#include "base/big_endian.h"

namespace qv {

// The `count` (1 .. 57) bits from bit `first` (0 .. 7) of the first byte on, at the top; the bits below are
// zero. Bytes without one of those bits are not read.
[[nodiscard]] inline std::uint64_t LoadBits(const std::uint8_t* bytes, unsigned first,
                                            unsigned count) noexcept {
    const unsigned size = (first + count + 7) / 8;
    std::uint64_t word = 0;
    for (unsigned i = 0; i < size; ++i)
        word |= std::uint64_t{bytes[i]} << (56 - 8 * i);
    return word << first & ~std::uint64_t{0} << (64 - count);
}

// The `count` (1 .. 16) bits from bit `first` (0 .. 7) of the first of four readable bytes on, at the top;
// the bits below are zero.
[[nodiscard]] inline std::uint32_t LoadCode(const std::uint8_t* bytes, unsigned first,
                                            unsigned count) noexcept {
    // The sign bit, spread over `count` bits.
    const auto mask = static_cast<std::uint32_t>(std::numeric_limits<std::int32_t>::min() >> (count - 1));
    return LoadBig32(bytes) << first & mask;
}

// Fills the one or two bytes that the top `count` (1 .. 16) bits take. The second store goes to the first
// byte when there is no second one: which it is would be hard to predict.
inline void StoreCode(std::uint32_t code, std::uint8_t* target, unsigned count) noexcept {
    const unsigned last = (count - 1) / 8;
    std::uint8_t bytes[sizeof code];
    StoreBig32(code, bytes);
    target[0] = bytes[0];
    target[last] = bytes[last];
}

// Copies `count` bits from bit `first` (0 .. 7) of the source's first byte on to the start of the target. The
// rest of the target's last byte becomes zero.
void CopyBits(const std::uint8_t* source, unsigned first, std::uint8_t* target, std::size_t count) noexcept;

}  // namespace qv
