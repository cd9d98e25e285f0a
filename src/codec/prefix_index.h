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

namespace qv {

// Finds the oldest of the longest matches in a window that has not been rebased.
//
// The dictionary's rules make every older place that shares the first two bytes a candidate, oldest first,
// and a later candidate wins only when it is strictly longer. Walking them all takes thousands of steps a
// search on data with few symbols. But the longest match is among the holders of the longest prefix that
// occurs at all, and the oldest of the longest is the oldest among those as well. So there are lists by
// prefixes of several lengths (levels), each from the oldest place to the newest, and a search climbs: the
// oldest holder of three bytes gives a length, and after that only holders of one byte more are worth a look.
//
// Levels above the first are switched on when walks get long, so data with short lists pays for one level
// only.
//
// A place is entered one byte late: at level n when n + 1 bytes are known from it on. The rules end a walk at
// the first place that comes within the best length so far (plus one) of the window's end; entered so, no
// list holds a place that the rules would have dropped in favour of a shorter, older match.
class PrefixIndex {
public:
    // The window is an array of this size, followed by kPadding readable bytes of any value.
    static constexpr int kWindowSize = 16384;
    static constexpr int kPadding = 8;

    // Throws std::bad_alloc.
    PrefixIndex();

    // Forgets every place.
    void Reset() noexcept;

    // The window has grown by `value` and ends at `end` now. It must not have been longer since the last
    // reset.
    void Append(const std::uint8_t* window, int end, std::uint8_t value) noexcept;

    // The window does not begin at `base` any longer, but one byte further.
    void DropOldest(const std::uint8_t* window, int base) noexcept;

    // An end of a list. Greater than every place.
    static constexpr std::int16_t kNone = 0x7FFF;

    // The oldest place before end - 3 that holds these three bytes, or kNone.
    [[nodiscard]] int FindTriple(const std::uint8_t* window, const std::uint8_t* triple) const noexcept;

    struct Match {
        int place;
        int length;
    };

    // The oldest of the longest matches with `lookahead` among the places before end - 3, of at most `limit`
    // (3 or more) bytes. `first` is what FindTriple answers. `lookahead` has limit + 8 readable bytes. Bytes
    // of the window behind `end` count as they are.
    [[nodiscard]] Match Search(const std::uint8_t* window, int base, int end, int first,
                               const std::uint8_t* lookahead, int limit) noexcept;

private:
    // Prefix lengths of the levels. Matches in text end at 3 to 5 bytes, which the first two sort out; data
    // of two symbols needs about 13 bytes to tell 8192 places apart.
    static constexpr std::array<int, 6> kPrefixLengths{3, 4, 6, 8, 12, 24};
    static constexpr int kLevelCount = static_cast<int>(kPrefixLengths.size());
    // 8192 buckets for at most 8192 places: one other prefix in a list on average, and 64 KiB a level.
    static constexpr int kBucketBits = 13;
    // The bits of a bucket that tell which prefixes have been entered into it. Few searches for a prefix that
    // is not there go any further.
    static constexpr int kSeenBits = 5;
    // Multiplying by 2^64 divided by the golden ratio spreads prefixes over the product's top bits.
    static constexpr std::uint64_t kSpread = 0x9E3779B97F4A7C15u;
    // A search may take this many steps for nothing; what it takes beyond is summed up, and at the second
    // number the next level pays for itself (entering 8192 places costs about as much as that many steps).
    static constexpr int kCheapSteps = 16;
    static constexpr int kStepsForNextLevel = 1024;

    // An empty bucket's last place is a spare entry behind the window's, so that entering needs no branch.
    static constexpr std::int16_t kSpare = kWindowSize;

    struct Bucket {
        std::int16_t oldest;
        std::int16_t newest;
        std::uint32_t seen;
    };
    static constexpr Bucket kEmpty{kNone, kSpare, 0};

    // A prefix's bucket, and the bit that stands for it there.
    struct Key {
        std::size_t bucket;
        std::uint32_t bit;
    };

    struct Level {
        std::array<Bucket, std::size_t{1} << kBucketBits> buckets;
        std::array<std::int16_t, kWindowSize + 1> next;
    };

    // A prefix of up to 8 bytes is a number: its bytes, most significant first.
    static Key KeyOf(std::uint64_t prefix) noexcept {
        const auto hash = static_cast<std::size_t>(prefix * kSpread >> (64 - kBucketBits - kSeenBits));
        return {hash >> kSeenBits, std::uint32_t{1} << hash % (1u << kSeenBits)};
    }
    static Key KeyAt(const std::uint8_t* bytes, int length) noexcept;

    static int OldestOf(const Level& level, Key key) noexcept {
        const Bucket bucket = level.buckets[key.bucket];
        return (bucket.seen & key.bit) != 0 ? bucket.oldest : kNone;
    }
    static void Enter(Level& level, Key key, int place) noexcept;
    static int MatchLength(const std::uint8_t* a, const std::uint8_t* b, int limit) noexcept;
    int HighestLevel(int length) const noexcept;
    void AppendToHigherLevels(const std::uint8_t* window, int end, std::uint64_t prefixes) noexcept;
    void SwitchNextLevelOn(const std::uint8_t* window, int base, int end) noexcept;

    std::unique_ptr<std::array<Level, kLevelCount>> levels_;
    // The newest 8 bytes, the newest in the low byte. Reading them back from the window would wait for
    // single-byte stores that are still under way.
    std::uint64_t newestBytes_ = 0;
    int activeLevels_ = 1;
    int wastedSteps_ = 0;
};

// The functions below run once or more a token and are inline for that reason.

inline PrefixIndex::Key PrefixIndex::KeyAt(const std::uint8_t* bytes, int length) noexcept {
    std::uint64_t hash = LoadBig64(bytes);
    if (length <= 8) return KeyOf(hash >> (64 - 8 * length));
    for (int at = length - 8; at > 0; at -= 8)
        hash = (hash * kSpread >> 32) ^ LoadBig64(bytes + at);
    return KeyOf(hash);
}

inline void PrefixIndex::Enter(Level& level, Key key, int place) noexcept {
    Bucket& bucket = level.buckets[key.bucket];
    const Bucket before = bucket;
    const auto entry = static_cast<std::int16_t>(place);
    bucket = {std::min(before.oldest, entry), entry, before.seen | key.bit};
    level.next[place] = kNone;
    level.next[before.newest] = entry;
}

inline void PrefixIndex::Append(const std::uint8_t* window, int end, std::uint8_t value) noexcept {
    const std::uint64_t before = newestBytes_;
    newestBytes_ = before << 8 | value;
    if (end < 4) return;
    Enter((*levels_)[0], KeyOf(before & 0xFFFFFF), end - 4);
    if (activeLevels_ > 1) AppendToHigherLevels(window, end, before);
}

inline void PrefixIndex::DropOldest(const std::uint8_t* window, int base) noexcept {
    for (int i = 0; i < activeLevels_; ++i) {
        Level& level = (*levels_)[i];
        level.buckets[KeyAt(window + base, kPrefixLengths[i]).bucket].oldest = level.next[base];
    }
}

inline int PrefixIndex::FindTriple(const std::uint8_t* window, const std::uint8_t* triple) const noexcept {
    const std::uint32_t prefix = std::uint32_t{triple[0]} << 16 | std::uint32_t{triple[1]} << 8 | triple[2];
    const Level& level = (*levels_)[0];
    int place = OldestOf(level, KeyOf(prefix));
    while (place != kNone && LoadBig32(window + place) >> 8 != prefix)
        place = level.next[place];
    return place;
}

inline int PrefixIndex::MatchLength(const std::uint8_t* a, const std::uint8_t* b, int limit) noexcept {
    for (int length = 0; length < limit; length += 8) {
        std::uint64_t wordA, wordB;
        std::memcpy(&wordA, a + length, sizeof wordA);
        std::memcpy(&wordB, b + length, sizeof wordB);
        const std::uint64_t difference = wordA ^ wordB;
        if (difference == 0) continue;
        constexpr bool kLowestFirst = std::endian::native == std::endian::little;
        const int equalBits = kLowestFirst ? std::countr_zero(difference) : std::countl_zero(difference);
        return std::min(limit, length + equalBits / 8);
    }
    return limit;
}

// The level with the longest prefix of at most `length` bytes among the active ones.
inline int PrefixIndex::HighestLevel(int length) const noexcept {
    int level = activeLevels_ - 1;
    while (kPrefixLengths[level] > length)
        --level;
    return level;
}

inline PrefixIndex::Match PrefixIndex::Search(const std::uint8_t* window, int base, int end, int first,
                                              const std::uint8_t* lookahead, int limit) noexcept {
    const auto lengthAt = [=](int place) {
        return MatchLength(window + place, lookahead, std::min(limit, kWindowSize - place));
    };
    Match best{first, lengthAt(first)};
    int levelIndex = 0;
    int steps = 0;
    while (best.length < limit && best.length + best.place + 1 < end) {
        const int higher = HighestLevel(best.length + 1);
        if (higher != levelIndex) steps = 0;
        levelIndex = higher;
        const Level& level = (*levels_)[levelIndex];
        int place = kPrefixLengths[levelIndex] > best.length
                        ? OldestOf(level, KeyAt(lookahead, best.length + 1))
                        : level.next[best.place];
        int length = best.length;
        // The end of the list ends this as well.
        for (; best.length + place + 1 < end; place = level.next[place]) {
            ++steps;
            if (window[place + best.length] != lookahead[best.length]) continue;
            length = lengthAt(place);
            if (length > best.length) break;
        }
        if (length <= best.length) break;
        best = {place, length};
    }
    if (steps > kCheapSteps && levelIndex == activeLevels_ - 1) {
        wastedSteps_ += steps - kCheapSteps;
        if (wastedSteps_ > kStepsForNextLevel) SwitchNextLevelOn(window, base, end);
    }
    return best;
}

}  // namespace qv
