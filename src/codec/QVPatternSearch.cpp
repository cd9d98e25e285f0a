#include <QVFoundation/QVPatternSearch.h>

#include "codec/pattern_search.h"

QVBoolean QVBMSearchPattern(const unsigned char* text, unsigned long textLength, const unsigned char* pattern,
                            unsigned long patternLength, unsigned long* position) noexcept {
    if (text == nullptr || pattern == nullptr) return false;
    const auto found = qv::SearchPattern(text, textLength, pattern, patternLength);
    if (found && position != nullptr) *position = *found;
    return found.has_value();
}
