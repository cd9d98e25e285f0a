// The token list of a chunk by plain loops: what the sliding dictionary is measured against.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace bench {

// The window and the rules that every way of searching shares.
class PlainWindow {
public:
    struct Match {
        int place = 0;
        int length = 0;
    };

protected:
    static constexpr int kSize = 16384;
    static constexpr int kMostLive = 8192;

    [[nodiscard]] int End() const { return base_ + count_; }
    [[nodiscard]] std::size_t PairAt(int place) const {
        const auto at = static_cast<std::size_t>(place);
        return static_cast<std::size_t>(window_[at] << 8 | window_[at + 1]);
    }

    // The candidate's length, given the best one so far; its first two bytes are equal. Bytes behind the live
    // end count as they are.
    [[nodiscard]] int LengthAt(int place, const std::uint8_t* lookahead, std::size_t size, int best) const {
        if (best + place + 1 >= End()) return 2;
        const int most =
            std::min({255, static_cast<int>(std::min<std::size_t>(size, 255)), count_, kSize - place});
        int length = 2;
        while (length < most && window_[static_cast<std::size_t>(place + length)] == lookahead[length])
            ++length;
        return length;
    }

    std::array<std::uint8_t, kSize + 8> window_{};
    int base_ = 0;
    int count_ = 0;
};

// Lists by pairs of bytes, each with a place near its end, where the walk to the end begins.
class PairLists : public PlainWindow {
public:
    void Reset() {
        window_.fill(0);
        base_ = count_ = 0;
        heads_.fill(-1);
        next_.fill(-1);
    }

    void Append(std::uint8_t value) {
        window_[static_cast<std::size_t>(End())] = value;
        if (count_ > 0) Link(End() - 1);
        Grow();
    }

    [[nodiscard]] Match Search(const std::uint8_t* lookahead, std::size_t size) const {
        Match best;
        if (size < 3 || count_ < 3) return best;
        int place = heads_[static_cast<std::size_t>(lookahead[0] << 8 | lookahead[1])];
        for (; place != -1 && place < End(); place = next_[static_cast<std::size_t>(place)]) {
            if (place < base_) continue;
            const int length = LengthAt(place, lookahead, size, best.length);
            if (length > best.length) best = {place, length};
            if (length == 255) break;
        }
        return best.length < 3 ? Match() : Match{best.place - base_, best.length};
    }

    // Takes a window over that has come to its end for the first time.
    void TakeOver(const std::array<std::uint8_t, kSize + 8>& window) {
        Reset();
        window_ = window;
        base_ = kMostLive;
        count_ = kMostLive;
        for (int place = 0; place < kSize - 1; ++place)
            Link(place);
        Rebase();
    }

private:
    void Link(int place) {
        const std::size_t pair = PairAt(place);
        if (heads_[pair] == -1) {
            heads_[pair] = tails_[pair] = static_cast<std::int16_t>(place);
            return;
        }
        auto last = static_cast<std::size_t>(tails_[pair]);
        while (next_[last] != -1)
            last = static_cast<std::size_t>(next_[last]);
        next_[last] = tails_[pair] = static_cast<std::int16_t>(place);
    }

    void Grow() {
        if (count_ < kMostLive) {
            ++count_;
        } else if (++base_ == kMostLive) {
            Rebase();
        }
    }

    // The bytes stay where they are.
    void Rebase() {
        base_ = 0;
        heads_.fill(-1);
        for (int place = 0; place < kMostLive - 1; ++place) {
            const std::size_t pair = PairAt(place);
            if (heads_[pair] == -1) heads_[pair] = tails_[pair] = static_cast<std::int16_t>(place);
        }
        for (std::size_t i = 0; i < kMostLive; ++i) {
            const std::int16_t later = next_[i + kMostLive];
            next_[i] = later == -1 ? later : static_cast<std::int16_t>(later - kMostLive);
            next_[i + kMostLive] = -1;
        }
    }

    std::array<std::int16_t, 65536> heads_;
    std::array<std::int16_t, 65536> tails_;
    std::array<std::int16_t, kSize> next_;
};

// Lists by three bytes until the window comes to its end, pair lists from there on. Where a pair stands at
// one live place only, that place is the candidate; else only places that hold three bytes can win.
class TripleLists : public PlainWindow {
public:
    void Reset() {
        window_.fill(0);
        base_ = count_ = 0;
        hasPairs_ = false;
        newestOfPair_.fill(-1);
        heads_.fill(-1);
    }

    void Append(std::uint8_t value) {
        if (hasPairs_) return pairs_.Append(value);
        window_[static_cast<std::size_t>(End())] = value;
        if (count_ > 0) LinkPair(End() - 1);
        if (count_ > 1) LinkTriple(End() - 2);
        if (count_ < kMostLive) {
            ++count_;
        } else if (++base_ == kMostLive) {
            pairs_.TakeOver(window_);
            hasPairs_ = true;
        }
    }

    [[nodiscard]] Match Search(const std::uint8_t* lookahead, std::size_t size) {
        if (hasPairs_) return pairs_.Search(lookahead, size);
        Match best;
        if (size < 3 || count_ < 3) return best;
        int place = newestOfPair_[static_cast<std::size_t>(lookahead[0] << 8 | lookahead[1])];
        if (place < base_) return best;
        // In a run of one value the newest two places hold the same pair.
        if (place == End() - 2 && olderOfPair_[static_cast<std::size_t>(place)] == place - 1) --place;
        if (olderOfPair_[static_cast<std::size_t>(place)] < base_) {
            best = {place, LengthAt(place, lookahead, size, 0)};
        } else {
            best = WalkTriples(lookahead, size);
        }
        return best.length < 3 ? Match() : Match{best.place - base_, best.length};
    }

private:
    static constexpr unsigned kListBits = 14;

    static std::uint32_t TripleAt(const std::uint8_t* bytes) {
        return static_cast<std::uint32_t>(bytes[0] << 16 | bytes[1] << 8 | bytes[2]);
    }
    static std::size_t ListOf(std::uint32_t triple) { return triple * 0x9E3779B1U >> (32 - kListBits); }

    void LinkPair(int place) {
        std::int16_t& newest = newestOfPair_[PairAt(place)];
        olderOfPair_[static_cast<std::size_t>(place)] = newest;
        newest = static_cast<std::int16_t>(place);
    }

    void LinkTriple(int place) {
        const std::size_t list = ListOf(TripleAt(&window_[static_cast<std::size_t>(place)]));
        const auto link = static_cast<std::int16_t>(place);
        next_[static_cast<std::size_t>(place)] = -1;
        (heads_[list] == -1 ? heads_[list] : next_[static_cast<std::size_t>(tails_[list])]) = link;
        tails_[list] = link;
    }

    Match WalkTriples(const std::uint8_t* lookahead, std::size_t size) {
        const std::uint32_t triple = TripleAt(lookahead);
        std::int16_t& head = heads_[ListOf(triple)];
        while (head != -1 && head < base_)
            head = next_[static_cast<std::size_t>(head)];
        Match best{0, 2};
        for (int place = head; place != -1; place = next_[static_cast<std::size_t>(place)]) {
            const auto at = static_cast<std::size_t>(place);
            if (best.length + place + 1 >= End()) break;
            if (window_[at + static_cast<std::size_t>(best.length)] != lookahead[best.length]) continue;
            if (TripleAt(&window_[at]) != triple) continue;
            const int length = LengthAt(place, lookahead, size, best.length);
            if (length > best.length) best = {place, length};
            if (length == 255 || static_cast<std::size_t>(length) == size) break;
        }
        return best;
    }

    bool hasPairs_ = false;
    std::array<std::int16_t, 65536> newestOfPair_;
    std::array<std::int16_t, kSize> olderOfPair_;
    std::array<std::int16_t, std::size_t{1} << kListBits> heads_;
    std::array<std::int16_t, std::size_t{1} << kListBits> tails_;
    std::array<std::int16_t, kSize> next_;
    PairLists pairs_;
};

// Answers the number of values: a literal is its byte; a match is its length + 253, then its offset.
template <class Lists>
std::size_t TokenizePlain(Lists& lists, const std::uint8_t* bytes, std::size_t size, std::uint16_t* tokens) {
    lists.Reset();
    std::uint16_t* out = tokens;
    for (std::size_t at = 0; at < size;) {
        const PlainWindow::Match match = lists.Search(bytes + at, size - at);
        lists.Append(bytes[at]);
        if (match.length > 0) {
            *out++ = static_cast<std::uint16_t>(match.length + 253);
            *out++ = static_cast<std::uint16_t>(match.place);
            at += static_cast<std::size_t>(match.length);
        } else {
            *out++ = bytes[at++];
        }
    }
    return static_cast<std::size_t>(out - tokens);
}

}  // namespace bench
