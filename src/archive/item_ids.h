// How item IDs are handed out.
#pragma once

#include <cstdint>
#include <set>

#include "archive/archive_layout.h"

namespace qv {

// The next ID upward from the counter that was never written; kNoItemID once the counter has reached the last
// value, which no item ever gets. The counter passes the ID, so that an ID is never handed out twice, written
// or not.
[[nodiscard]] inline std::uint32_t TakeItemID(std::uint64_t& counter, const std::set<std::uint32_t>& used) {
    while (counter != kItemIDLimit) {
        const auto candidate = static_cast<std::uint32_t>(counter++);
        if (used.count(candidate) == 0) return candidate;
    }
    return kNoItemID;
}

}  // namespace qv
