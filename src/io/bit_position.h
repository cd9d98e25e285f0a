// Where a bit stream stands, and how its marker moves.
#pragma once

#include <algorithm>
#include <cstdint>

namespace qv {

// Byte and bit inside it. The marker is the byte index times 8 plus the bit index.
struct BitPosition {
    std::uint64_t byteIndex = 0;
    std::uint32_t bitIndex = 0;  // 0 .. 7; 0 is the byte's most significant bit

    [[nodiscard]] static BitPosition At(std::uint64_t marker) noexcept {
        return {marker / 8, static_cast<std::uint32_t>(marker % 8)};
    }
    [[nodiscard]] std::uint64_t Marker() const noexcept { return byteIndex * 8 + bitIndex; }
};

// Where a request to move the marker leads before it is limited to the number of bits: origin 0 counts from
// the start and 1 from the number of bits, both not below 0; 2 counts from the marker, and a target before
// the start wraps around to a very large one; any other origin stays.
[[nodiscard]] inline std::uint64_t MarkerTarget(std::uint64_t marker, std::uint64_t numberOfBits, int origin,
                                                long long offset) noexcept {
    const auto step = static_cast<std::uint64_t>(offset);
    switch (origin) {
        case 0:
            return offset < 0 ? 0 : step;
        case 1:
            return offset < 0 && 0 - step > numberOfBits ? 0 : numberOfBits + step;
        case 2:
            return marker + step;
        default:
            return marker;
    }
}

}  // namespace qv
