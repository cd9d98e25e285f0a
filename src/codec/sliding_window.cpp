#include "codec/sliding_window.h"

namespace qv {

SlidingWindow::SlidingWindow()
    : window_(new std::uint8_t[kSize + PrefixIndex::kPadding]),
      chain_(new std::uint16_t[kSize]),
      heads_(new std::uint16_t[kPairCount]),
      later_(new std::uint16_t[kSize]) {
    Reset();
}

void SlidingWindow::Reset() noexcept {
    // What lies behind the live end is compared as it is, so it must be zero at the start.
    std::fill_n(window_.get(), kSize + PrefixIndex::kPadding, std::uint8_t{0});
    end_ = 0;
    rebased_ = false;
    index_.Reset();
}

void SlidingWindow::CopyPadded(const std::uint8_t* bytes, std::size_t size, std::uint8_t* copy,
                               std::size_t copySize) noexcept {
    std::memcpy(copy, bytes, size);
    std::memset(copy + size, 0, copySize - size);
}

inline int SlidingWindow::LengthAt(int place, const std::uint8_t* lookahead, int limit) const noexcept {
    // Nothing lies behind the array itself: there every match ends.
    const int most = std::min(limit, kSize - place);
    int length = 2;
    while (length < most && window_[place + length] == lookahead[length])
        ++length;
    return length;
}

bool SlidingWindow::HasPairBefore(const std::uint8_t* pair, int stop) const noexcept {
    const std::uint8_t* const last = window_.get() + stop;
    for (const std::uint8_t* at = window_.get() + Base();; ++at) {
        at = static_cast<const std::uint8_t*>(std::memchr(at, pair[0], static_cast<std::size_t>(last - at)));
        if (at == nullptr) return false;
        if (at[1] == pair[1]) return true;
    }
}

// The two newest places that a pair is known of. The rules leave no room for a match there once an older
// place has the pair, even if nothing else there fits; so they count only as the pair's first occurrence.
SlidingWindow::Match SlidingWindow::SearchNewestPlaces(const std::uint8_t* lookahead,
                                                       int limit) const noexcept {
    const auto hasPair = [&](int place) { return PairKey(&window_[place]) == PairKey(lookahead); };
    const int place = hasPair(end_ - 3) ? end_ - 3 : end_ - 2;
    if (!hasPair(place) || window_[place + 2] != lookahead[2]) return {0, 0};
    if (HasPairBefore(lookahead, place)) return {0, 0};
    return MatchAt(place, LengthAt(place, lookahead, limit));
}

// The walk of the rules. The first two bytes are taken as equal, though after a rebase they need not be.
SlidingWindow::Match SlidingWindow::SearchLists(const std::uint8_t* lookahead, int limit) const noexcept {
    int place = heads_[PairKey(lookahead)];
    while (place < Base())
        place = chain_[place];
    if (place == kNone) return {0, 0};

    // Places ascend along a list, so the first one within the best length (plus one) of the end is the last
    // one to look at; so is the list's end. The very first place is looked at wherever it lies.
    int best = LengthAt(place, lookahead, limit);
    int bestPlace = place;
    for (place = chain_[place]; best + place + 1 < end_ && best < limit; place = chain_[place]) {
        if (place + best >= kSize || window_[place + best] != lookahead[best]) continue;
        const int length = LengthAt(place, lookahead, limit);
        if (length > best) {
            best = length;
            bestPlace = place;
        }
    }
    return best < 3 ? Match{0, 0} : MatchAt(bestPlace, best);
}

// The end of the list that leads through `place`. Lists run into each other, so each walk shortens the way
// for all later ones.
int SlidingWindow::FindEnd(int place) noexcept {
    const auto next = [this](int at) { return later_[at] != at ? later_[at] : chain_[at]; };
    int end = place;
    for (int at = place; at != kNone; at = next(at))
        end = at;
    while (place != end) {
        const int following = next(place);
        later_[place] = static_cast<std::uint16_t>(end);
        place = following;
    }
    return end;
}

void SlidingWindow::Link(int start, std::size_t key) noexcept {
    std::uint16_t& head = heads_[key];
    std::uint16_t& last = head == kNone ? head : chain_[FindEnd(head)];
    last = static_cast<std::uint16_t>(start);
}

// Gives the upper half of the array the links by pairs that the first rebase moves down.
void SlidingWindow::MakeLists() noexcept {
    std::fill_n(heads_.get(), kPairCount, std::uint16_t{kNone});
    chain_[kSize - 1] = kNone;
    for (int place = kSize - 2; place >= kLiveSize; --place) {
        std::uint16_t& newer = heads_[PairKey(&window_[place])];
        chain_[place] = newer;
        newer = static_cast<std::uint16_t>(place);
    }
}

// Starts over at the array's beginning. That the bytes stay where they are is required: heads are those of
// the bytes in the lower half (which stay the chunk's first ones for good), links are those of the upper
// half.
void SlidingWindow::Rebase() noexcept {
    end_ = kLiveSize;
    if (!rebased_) MakeLists();
    rebased_ = true;

    for (int place = kLiveSize - 1; place < kSize - 1; ++place)
        heads_[PairKey(&window_[place])] = kNone;
    for (int place = kLiveSize - 2; place >= 0; --place)
        heads_[PairKey(&window_[place])] = static_cast<std::uint16_t>(place);
    for (int place = 0; place < kLiveSize; ++place) {
        const int next = chain_[place + kLiveSize];
        chain_[place] = static_cast<std::uint16_t>(next == kNone ? kNone : next - kLiveSize);
        chain_[place + kLiveSize] = kNone;
        later_[place] = static_cast<std::uint16_t>(place);
        later_[place + kLiveSize] = static_cast<std::uint16_t>(place + kLiveSize);
    }
}

}  // namespace qv
