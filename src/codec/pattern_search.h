// The byte pattern search. It skips by the leftmost place of the unequal text byte in the pattern, aligned
// from the pattern's end, and may thereby step over places where the pattern stands; what it finds is defined
// by these steps, so they must stay.
//
// It never finds what is not there, though. A scan in vectors therefore goes ahead and tells where the
// pattern cannot stand; the steps are taken only when it may stand somewhere.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "base/processor.h"

namespace qv {

// The first place that the steps find, or nothing. An empty pattern is never found.
std::optional<size_t> SearchPattern(const uint8_t* text, size_t textLength, const uint8_t* pattern,
                                    size_t patternLength);

// A scan for a pattern of 1 to `textLength` bytes. Returns a place, not before `from`, in front of which
// (from `from` on) the pattern does not stand; textLength - patternLength + 1 when it stands nowhere. `from`
// is at most that. It gives up before the end where the pattern stands, or when `budget`, the number of
// places that look alike but are not, is used up.
using ScanForPattern = size_t (*)(const uint8_t* text, size_t textLength, size_t from, const uint8_t* pattern,
                                  size_t patternLength, size_t& budget);

// The search with a given scan, or with the steps alone when it is null.
std::optional<size_t> SearchPattern(const uint8_t* text, size_t textLength, const uint8_t* pattern,
                                    size_t patternLength, ScanForPattern scan);

// The scan for this processor, or null.
ScanForPattern GetScanForPattern() noexcept;

#if QV_X86
size_t ScanForPatternAvx2(const uint8_t* text, size_t textLength, size_t from, const uint8_t* pattern,
                          size_t patternLength, size_t& budget);
#endif

}  // namespace qv
