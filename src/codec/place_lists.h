// Lists of places, each for the prefixes of one hash, from the oldest place to the newest.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace qv {

// Places enter in ascending order, each at most once between two resets. They are not taken out: a caller who
// has left places behind says from where on they count, and a list forgets older ones when it is asked next.
class PlaceLists {
public:
    // Places are below this.
    static constexpr int kPlaces = 16384;
    // The end of a list. Greater than every place.
    static constexpr int kNone = 0xFFFF;

    // A prefix's list, and the mark that tells it from most other prefixes there.
    struct Key {
        std::uint32_t list;
        std::uint32_t mark;
    };

    // Multiplying by 2^64 divided by the golden ratio spreads prefixes over the product's top bits.
    static constexpr std::uint64_t kSpread = 0x9E3779B97F4A7C15u;
    static Key KeyOf(std::uint64_t prefix) noexcept {
        const auto hash = static_cast<std::uint32_t>(prefix * kSpread >> (64 - kListBits - kMarkBits));
        return {hash >> kMarkBits, hash % (1u << kMarkBits)};
    }

    // Forgets every place.
    void Reset() noexcept {
        links_.fill(kNone);
        for (std::uint32_t list = 0; list < kLists; ++list)
            tails_[list] = {static_cast<std::uint16_t>(HeadOf(list)), 0};
    }

    void Enter(Key key, int place) noexcept {
        Tail& tail = tails_[key.list];
        links_[tail.newest] = static_cast<std::uint16_t>(place);
        tail.newest = static_cast<std::uint16_t>(place);
        tail.marks = static_cast<std::uint16_t>(tail.marks | 1u << key.mark);
    }

    // The list's oldest place from `base` on, or kNone; kNone as well when its marks rule the prefix out. The
    // place may belong to another prefix of the same hash.
    [[nodiscard]] int Oldest(Key key, int base) noexcept {
        Tail& tail = tails_[key.list];
        if ((tail.marks >> key.mark & 1) == 0) return kNone;
        std::uint16_t& head = links_[HeadOf(key.list)];
        if (head >= base) return head;
        do
            head = links_[head];
        while (head < base);
        if (head == kNone) tail.newest = static_cast<std::uint16_t>(HeadOf(key.list));
        return head;
    }

    // The place behind this one on its list, or kNone.
    [[nodiscard]] int Next(int place) const noexcept { return links_[static_cast<std::size_t>(place)]; }

private:
    // Twice as many lists as a window has live places: half another prefix on a list at most, on average.
    static constexpr int kListBits = 14;
    static constexpr std::uint32_t kLists = 1u << kListBits;
    // One bit of 16. Few searches for a prefix that is not there go any further.
    static constexpr int kMarkBits = 4;

    // A list's first link stands behind those of the places, so that entering the first place needs no
    // branch.
    static constexpr std::size_t HeadOf(std::uint32_t list) noexcept { return kPlaces + list; }

    struct Tail {
        std::uint16_t newest;  // or the head, when the list is empty
        std::uint16_t marks;
    };

    std::array<std::uint16_t, kPlaces + kLists> links_;
    std::array<Tail, kLists> tails_;
};

}  // namespace qv
