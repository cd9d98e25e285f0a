#include "codec/pattern_search.h"

#include <array>

namespace qv {

namespace {

// Shorter texts are walked at once.
constexpr size_t kScanFrom = 128;

// One place that looks alike in so many places of the text is what a scan should bear; a text made to be
// full of them is walked instead.
constexpr size_t kPlacesPerLookalike = 32;

using SkipTable = std::array<size_t, 256>;

// How far a text byte moves the pattern on: by its leftmost place in the pattern (not its rightmost, as is
// usual; this is required), and never by 0.
SkipTable MakeSkipTable(const uint8_t* pattern, size_t length) {
    SkipTable skip;
    skip.fill(length);
    for (size_t i = length; i-- > 0;)
        skip[pattern[i]] = length - 1 - i;
    size_t& last = skip[pattern[length - 1]];
    if (last == 0) last = 1;
    return skip;
}

// The text's bytes against the pattern's from the last to the first: the number that are still to be
// compared when two differ, the differing one included; 0 when all are equal.
size_t CompareFromEnd(const uint8_t* text, const uint8_t* pattern, size_t length) {
    while (length > 0 && text[length - 1] == pattern[length - 1])
        --length;
    return length;
}

}  // namespace

ScanForPattern GetScanForPattern() noexcept {
#if QV_X86
    if (HasAvx2()) return ScanForPatternAvx2;
#endif
    return nullptr;
}

std::optional<size_t> SearchPattern(const uint8_t* text, size_t textLength, const uint8_t* pattern,
                                    size_t patternLength) {
    return SearchPattern(text, textLength, pattern, patternLength,
                         textLength < kScanFrom ? nullptr : GetScanForPattern());
}

std::optional<size_t> SearchPattern(const uint8_t* text, size_t textLength, const uint8_t* pattern,
                                    size_t patternLength, ScanForPattern scan) {
    if (patternLength == 0 || patternLength > textLength) return std::nullopt;
    const size_t places = textLength - patternLength + 1;
    size_t budget = scan == nullptr ? 0 : places / kPlacesPerLookalike;
    size_t absentBefore = 0;
    if (budget > 0) absentBefore = scan(text, textLength, 0, pattern, patternLength, budget);
    if (absentBefore == places) return std::nullopt;

    const SkipTable skip = MakeSkipTable(pattern, patternLength);
    const uint8_t* const ends = text + patternLength - 1;  // the last byte of the window at place 0
    const uint8_t last = pattern[patternLength - 1];
    for (size_t s = 0; s < places;) {
        if (s > absentBefore && budget > 0) {
            // The steps went past the place where the pattern stands.
            absentBefore = scan(text, textLength, s, pattern, patternLength, budget);
            if (absentBefore == places) return std::nullopt;
        }
        // Most steps see an unequal last byte; up to `absentBefore` there is nothing else to look at.
        const size_t stop = budget > 0 ? absentBefore : places - 1;
        while (s < stop && ends[s] != last)
            s += skip[ends[s]];
        if (s >= places) return std::nullopt;
        const size_t unequal = CompareFromEnd(text + s, pattern, patternLength);
        if (unequal == 0) return s;
        s += skip[text[s + unequal - 1]];
    }
    return std::nullopt;
}

}  // namespace qv
