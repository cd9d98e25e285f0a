// The containers a walk is inside of: keeps walks over data finite and their depth bounded.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace qv {

// How deep data may be nested in the formats: far beyond sensible data, and a walk this deep still takes no
// time.
inline constexpr std::size_t kDeepestNesting = 10000;

class ContainerPath {
public:
    // False when the walk is inside this container already, or as deep as it may go. Throws std::bad_alloc.
    [[nodiscard]] bool Enter(const void* container) {
        if (path_.size() == kDeepestNesting) return false;
        if (std::find(path_.rbegin(), path_.rend(), container) != path_.rend()) return false;
        path_.push_back(container);
        return true;
    }
    void Leave() noexcept { path_.pop_back(); }

private:
    std::vector<const void*> path_;
};

}  // namespace qv
