// The sliding dictionary: the last 8192 bytes appended to it, and the longest earlier occurrence of a
// lookahead.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "codec/prefix_index.h"

namespace qv {

// The window is the live stretch of an array of twice its size. When it has slid to the array's end it starts
// over (the rebase), and there the rules change what the lists mean, so the dictionary has two lives:
//
// - Before the first rebase every list by byte pairs holds exactly the live places of its pair. Any way to
//   the oldest of the longest matches gives the defined answer; PrefixIndex is a quick one.
// - A rebase moves the window's position and the links of the lists, but not the bytes. This looks like a
//   mistake and is required: the compressed format's offsets depend on it. From then on a list leads over
//   places that hold other pairs, lists run into each other, and only walking them as they are gives the
//   defined answer.
//
// A chunk of 32768 bytes gets to its first rebase only when it makes more than 16384 tokens.
class SlidingWindow {
public:
    // Throws std::bad_alloc. Nothing after construction allocates.
    SlidingWindow();

    // Back to an empty dictionary.
    void Reset() noexcept;

    void Append(std::uint8_t value) noexcept;

    struct Match {
        std::uint16_t offset;  // from the oldest byte of the live window
        std::uint8_t length;   // 3 .. 255, or 0: there is no match
    };

    // The longest match with the start of lookahead[0 .. size), the oldest one of equal length.
    [[nodiscard]] Match Search(const std::uint8_t* lookahead, std::size_t size) noexcept;

private:
    // The live window's limit. Offsets have 13 bits in the compressed format.
    static constexpr int kLiveSize = 8192;
    static constexpr int kSize = PrefixIndex::kWindowSize;
    static constexpr int kPairCount = 65536;
    // Lengths are stored in a byte.
    static constexpr int kLongest = 255;
    // The end of a list. Greater than every place.
    static constexpr int kNone = 0xFFFF;

    static std::size_t PairKey(const std::uint8_t* bytes) noexcept { return bytes[0] << 8 | bytes[1]; }

    // The oldest live place.
    int Base() const noexcept { return std::max(0, end_ - kLiveSize); }
    // A match never grows beyond the number of bytes in the window.
    int LongestFor(std::size_t size) const noexcept {
        const int longest = std::min(kLongest, end_);
        return size < static_cast<std::size_t>(longest) ? static_cast<int>(size) : longest;
    }
    static void CopyPadded(const std::uint8_t* bytes, std::size_t size, std::uint8_t* copy,
                           std::size_t copySize) noexcept;
    [[nodiscard]] Match SearchNewestPlaces(const std::uint8_t* lookahead, int limit) const noexcept;
    [[nodiscard]] bool HasPairBefore(const std::uint8_t* pair, int stop) const noexcept;
    [[nodiscard]] Match SearchLists(const std::uint8_t* lookahead, int limit) const noexcept;
    int LengthAt(int place, const std::uint8_t* lookahead, int limit) const noexcept;
    Match MatchAt(int place, int length) const noexcept;

    void Link(int start, std::size_t key) noexcept;
    int FindEnd(int place) noexcept;
    void MakeLists() noexcept;
    void Rebase() noexcept;

    std::unique_ptr<std::uint8_t[]> window_;
    // Behind the newest byte. The live window begins kLiveSize before it, or with the array.
    std::int32_t end_ = 0;
    // For a place the next newer place on its list, and for a pair the oldest place on its list. Made at the
    // first rebase.
    std::unique_ptr<std::uint16_t[]> chain_;
    std::unique_ptr<std::uint16_t[]> heads_;
    // For a place some later place on its list, or itself when none is known: short cuts to the list's end.
    std::unique_ptr<std::uint16_t[]> later_;
    bool rebased_ = false;
    PrefixIndex index_;
};

// Both are made part of their callers: a call costs a twentieth of what they do.

[[gnu::always_inline]] inline void SlidingWindow::Append(std::uint8_t value) noexcept {
    if (!rebased_) {
        index_.Append(window_.get(), end_, value);
    } else {
        // The pair's second byte is taken from the argument: a two-byte load would wait for single-byte
        // stores.
        Link(end_ - 1, static_cast<std::size_t>(window_[end_ - 1] << 8 | value));
    }
    window_[end_] = value;
    if (++end_ == kSize) Rebase();
}

inline SlidingWindow::Match SlidingWindow::MatchAt(int place, int length) const noexcept {
    return {static_cast<std::uint16_t>(place - Base()), static_cast<std::uint8_t>(length)};
}

[[gnu::always_inline]] inline SlidingWindow::Match SlidingWindow::Search(const std::uint8_t* lookahead,
                                                                         std::size_t size) noexcept {
    if (size < 3 || end_ < 3) return {0, 0};
    const int limit = LongestFor(size);
    if (rebased_) return SearchLists(lookahead, limit);

    // The index reads whole words; near its end the lookahead moves to where that is harmless.
    std::uint8_t copy[kLongest + PrefixIndex::kPadding];
    if (size < sizeof copy) {
        CopyPadded(lookahead, size, copy, sizeof copy);
        lookahead = copy;
    }
    const auto found = index_.Search(window_.get(), Base(), end_, lookahead, limit);
    if (found.length != 0) return MatchAt(found.place, found.length);
    // Few lookaheads continue like this, so the rest is out of the way.
    const std::uint8_t* const end = &window_[end_];
    if (lookahead[2] != end[-1] && lookahead[2] != end[0]) return {0, 0};
    return SearchNewestPlaces(lookahead, limit);
}

}  // namespace qv
