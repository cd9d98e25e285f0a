// Lists of the places in the sliding dictionary's window by what they start with.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

#include "base/big_endian.h"
#include "codec/place_lists.h"

namespace qv {

// Finds the oldest of the longest matches in a window that has not been rebased.
//
// The dictionary's rules make every older place that shares the first two bytes a candidate, oldest first,
// and a later candidate wins only when it is strictly longer. Walking them all takes thousands of steps a
// search on data with few symbols. But the longest match is among the holders of the longest prefix that
// occurs at all, and the oldest of the longest is the oldest among those as well. So there are lists by
// prefixes of several lengths (levels):
//
// - Where no place holds four bytes of the lookahead, the oldest one that holds three is the match.
// - Otherwise a search climbs from the oldest holder of four: it gives a length, and after that only holders
//   of one byte more are worth a look.
//
// Levels above the first are switched on when they pay: the second when there are matches at all, higher ones
// when walks get long.
//
// A place is entered one byte late: at level n when n + 1 bytes are known from it on. The rules end a walk at
// the first place that comes within the best length so far (plus one) of the window's end; entered so, no
// list holds a place that the rules would have dropped in favour of a shorter, older match.
class PrefixIndex {
public:
    // The window is an array of this size, followed by kPadding readable bytes of any value.
    static constexpr int kWindowSize = PlaceLists::kPlaces;
    static constexpr int kPadding = 8;

    // Throws std::bad_alloc.
    PrefixIndex();

    // Forgets every place.
    void Reset() noexcept;

    // The window, which ends at `end`, is going to grow by `value`. It must not have been longer since the
    // last reset.
    void Append(const std::uint8_t* window, int end, std::uint8_t value) noexcept;

    struct Match {
        int place;
        int length;  // 3 or more, or 0: there is no match
    };

    // The oldest of the longest matches with `lookahead` among the places from `base` to end - 4, of at most
    // `limit` (3 or more) bytes. `base` must not have been greater since the last reset. `lookahead` has
    // limit + 8 readable bytes. Bytes of the window behind `end` count as they are.
    [[nodiscard]] Match Search(const std::uint8_t* window, int base, int end, const std::uint8_t* lookahead,
                               int limit) noexcept;

private:
    static constexpr int kNone = PlaceLists::kNone;

    // Prefix lengths of the levels. Matches in text end at 3 to 5 bytes, which the first two sort out; data
    // of two symbols needs about 13 bytes to tell 8192 places apart.
    static constexpr std::array<int, 5> kPrefixLengths{3, 4, 6, 8, 16};
    static constexpr int kLevelCount = static_cast<int>(kPrefixLengths.size());
    // A search may take this many steps for nothing; what it takes beyond is summed up, and at the second
    // number the next level pays for itself (entering 8192 places costs about as much as that many steps).
    static constexpr int kCheapSteps = 16;
    static constexpr int kStepsForNextLevel = 1024;
    // What a match costs without the second level.
    static constexpr int kStepsOfTriple = 16;

    static PlaceLists::Key KeyAt(const std::uint8_t* bytes, int length) noexcept;
    static int LengthAt(const std::uint8_t* window, int place, const std::uint8_t* lookahead,
                        int limit) noexcept;

    // The oldest place in the level's list of the prefix's first bytes that holds all of them, or kNone.
    template <class Holds>
    int FindOldest(int level, std::uint32_t prefix, int base, Holds holds) noexcept;
    Match Climb(const std::uint8_t* window, int base, int end, int first, int level,
                const std::uint8_t* lookahead, int limit) noexcept;
    int HighestLevel(int length) const noexcept;
    void AppendToHigherLevels(const std::uint8_t* window, int end, std::uint64_t newest) noexcept;
    void CountWastedSteps(int steps, const std::uint8_t* window, int base, int end) noexcept;

    std::unique_ptr<std::array<PlaceLists, kLevelCount>> levels_;
    // The newest 8 bytes, the newest in the low byte. Reading them back from the window would wait for
    // single-byte stores that are still under way.
    std::uint64_t newestBytes_ = 0;
    int activeLevels_ = 1;
    int wastedSteps_ = 0;
};

// The functions below run once or more a token and are inline for that reason.

[[gnu::always_inline]] inline void PrefixIndex::Append(const std::uint8_t* window, int end,
                                                       std::uint8_t value) noexcept {
    const std::uint64_t newest = newestBytes_;
    newestBytes_ = newest << 8 | value;
    if (end < 4) {
        if (end == 3) (*levels_)[0].Enter(PlaceLists::KeyOf(newest & 0xFFFFFF), 0);
        return;
    }
    (*levels_)[0].Enter(PlaceLists::KeyOf(newest & 0xFFFFFF), end - 3);
    if (activeLevels_ == 1) return;
    (*levels_)[1].Enter(PlaceLists::KeyOf(newest & 0xFFFFFFFF), end - 4);
    if (activeLevels_ > 2) AppendToHigherLevels(window, end, newest);
}

// How many bytes are equal. Nothing lies behind the window's array: there every match ends.
inline int PrefixIndex::LengthAt(const std::uint8_t* window, int place, const std::uint8_t* lookahead,
                                 int limit) noexcept {
    const int most = std::min(limit, kWindowSize - place);
    for (int length = 0; length < most; length += 8) {
        std::uint64_t wordA, wordB;
        std::memcpy(&wordA, window + place + length, sizeof wordA);
        std::memcpy(&wordB, lookahead + length, sizeof wordB);
        const std::uint64_t difference = wordA ^ wordB;
        if (difference == 0) continue;
        constexpr bool kLowestFirst = std::endian::native == std::endian::little;
        const int equalBits = kLowestFirst ? std::countr_zero(difference) : std::countl_zero(difference);
        return std::min(most, length + equalBits / 8);
    }
    return most;
}

template <class Holds>
inline int PrefixIndex::FindOldest(int level, std::uint32_t prefix, int base, Holds holds) noexcept {
    PlaceLists& lists = (*levels_)[static_cast<std::size_t>(level)];
    int place = lists.Oldest(PlaceLists::KeyOf(prefix), base);
    while (place != kNone && !holds(place))
        place = lists.Next(place);
    return place;
}

[[gnu::always_inline]] inline PrefixIndex::Match PrefixIndex::Search(const std::uint8_t* window, int base,
                                                                     int end, const std::uint8_t* lookahead,
                                                                     int limit) noexcept {
    const std::uint32_t quad = LoadBig32(lookahead);
    const std::uint32_t triple = quad >> 8;
    const auto holdsTriple = [=](int place) { return LoadBig32(window + place) >> 8 == triple; };
    if (activeLevels_ == 1) {
        const int first = FindOldest(0, triple, base, holdsTriple);
        if (first == kNone) return {0, 0};
        const Match match = Climb(window, base, end, first, 0, lookahead, limit);
        CountWastedSteps(kStepsOfTriple, window, base, end);
        return match;
    }
    const auto holdsQuad = [=](int place) { return LoadBig32(window + place) == quad; };
    const int longer = FindOldest(1, quad, base, holdsQuad);
    if (longer != kNone && limit > 3) return Climb(window, base, end, longer, 1, lookahead, limit);
    const int place = FindOldest(0, triple, base, holdsTriple);
    if (place == kNone) return {0, 0};
    // The newest place has not been entered by four bytes yet.
    if (place == end - 4) return {place, LengthAt(window, place, lookahead, limit)};
    return {place, 3};
}

}  // namespace qv
