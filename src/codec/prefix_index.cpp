#include "codec/prefix_index.h"

namespace qv {

PrefixIndex::PrefixIndex() : levels_(new std::array<PlaceLists, kLevelCount>) {
    Reset();
}

void PrefixIndex::Reset() noexcept {
    (*levels_)[0].Reset();
    newestBytes_ = 0;
    activeLevels_ = 1;
    wastedSteps_ = 0;
}

PlaceLists::Key PrefixIndex::KeyAt(const std::uint8_t* bytes, int length) noexcept {
    std::uint64_t hash = LoadBig64(bytes);
    if (length <= 8) return PlaceLists::KeyOf(hash >> (64 - 8 * length));
    for (int at = length - 8; at > 0; at -= 8)
        hash = (hash * PlaceLists::kSpread >> 32) ^ LoadBig64(bytes + at);
    return PlaceLists::KeyOf(hash);
}

// `newest` are the window's newest 8 bytes.
void PrefixIndex::AppendToHigherLevels(const std::uint8_t* window, int end, std::uint64_t newest) noexcept {
    for (int level = 2; level < activeLevels_; ++level) {
        const int length = kPrefixLengths[level];
        const int place = end - length;
        if (place < 0) return;
        const auto key = length <= 8 ? PlaceLists::KeyOf(newest & (~std::uint64_t{0} >> (64 - 8 * length)))
                                     : KeyAt(window + place, length);
        (*levels_)[level].Enter(key, place);
    }
}

// The level with the longest prefix of at most `length` bytes among the active ones.
int PrefixIndex::HighestLevel(int length) const noexcept {
    int level = activeLevels_ - 1;
    while (kPrefixLengths[level] > length)
        --level;
    return level;
}

// The oldest of the longest matches, given the oldest place in the level's list of its prefix.
PrefixIndex::Match PrefixIndex::Climb(const std::uint8_t* window, int base, int end, int first, int level,
                                      const std::uint8_t* lookahead, int limit) noexcept {
    Match best{first, LengthAt(window, first, lookahead, limit)};
    int steps = 0;
    while (best.length < limit && best.length + best.place + 1 < end) {
        const int higher = HighestLevel(best.length + 1);
        if (higher != level) steps = 0;
        level = higher;
        PlaceLists& lists = (*levels_)[level];
        int place = kPrefixLengths[level] > best.length
                        ? lists.Oldest(KeyAt(lookahead, best.length + 1), base)
                        : lists.Next(best.place);
        int length = best.length;
        // The end of the list ends this as well.
        for (; best.length + place + 1 < end; place = lists.Next(place)) {
            ++steps;
            if (window[place + best.length] != lookahead[best.length]) continue;
            length = LengthAt(window, place, lookahead, limit);
            if (length > best.length) break;
        }
        if (length <= best.length) break;
        best = {place, length};
    }
    if (steps > kCheapSteps && level == activeLevels_ - 1)
        CountWastedSteps(steps - kCheapSteps, window, base, end);
    return best;
}

// Switches the next level on when the steps are too many.
void PrefixIndex::CountWastedSteps(int steps, const std::uint8_t* window, int base, int end) noexcept {
    wastedSteps_ += steps;
    if (wastedSteps_ < kStepsForNextLevel || activeLevels_ == kLevelCount) return;
    wastedSteps_ = 0;
    const int length = kPrefixLengths[activeLevels_];
    PlaceLists& lists = (*levels_)[activeLevels_];
    ++activeLevels_;
    lists.Reset();
    for (int place = base; place + length + 1 <= end; ++place)
        lists.Enter(KeyAt(window + place, length), place);
}

}  // namespace qv
