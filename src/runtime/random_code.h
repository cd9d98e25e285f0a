// The random 64-bit value that stands in archive headers and in fresh feedback registers.
#pragma once

#include <cstdint>

#include <QVFoundation/QVLibrary.h>

namespace qv {

// Four draws of the library's generator, two to each half-built value. The second draw of a pair is widened
// with its sign, so that a generator with negative results would fill the high half; both values are then
// joined by exclusive or.
[[nodiscard]] inline std::uint64_t RandomCode() noexcept {
    const auto drawPair = [] {
        const std::uint64_t high = static_cast<std::uint32_t>(QVRandom());
        const auto low = static_cast<std::uint64_t>(std::int64_t{QVRandom()});
        return high << 32 | low;
    };
    const std::uint64_t first = drawPair();
    return first ^ drawPair();
}

}  // namespace qv
