#include "models/pattern_search_model.h"

namespace qv::model {

std::optional<size_t> SearchPattern(const std::vector<uint8_t>& text, const std::vector<uint8_t>& pattern) {
    const size_t length = pattern.size();
    if (length == 0) return std::nullopt;
    std::vector<size_t> skip(256, length);
    for (size_t i = 0; i < length; ++i) {
        if (skip[pattern[i]] != length) continue;
        skip[pattern[i]] = length - 1 - i;
        if (skip[pattern[i]] == 0) skip[pattern[i]] = 1;
    }
    size_t s = 0;
    while (s + length - 1 < text.size()) {
        size_t j = length;
        while (j >= 1 && text[s + j - 1] == pattern[j - 1])
            --j;
        if (j == 0) return s;
        s += skip[text[s + j - 1]];
    }
    return std::nullopt;
}

}  // namespace qv::model
