// Moving the contents of a block to a larger one.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace qv {

// Copies `size` bytes from a block that became too small to the one that takes its place. In one piece the C
// library would leave a long block to a string instruction, which some processors run at a twentieth of the
// speed when both blocks lie alike in their pages, as blocks of doubling sizes do.
inline void CopyToGrownBlock(void* to, const void* from, std::size_t size) noexcept {
    constexpr std::size_t kPiece = 2048;
    auto* target = static_cast<char*>(to);
    const auto* source = static_cast<const char*>(from);
    while (size > 0) {
        const std::size_t count = std::min(size, kPiece);
        std::memcpy(target, source, count);
        target += count;
        source += count;
        size -= count;
    }
}

}  // namespace qv
