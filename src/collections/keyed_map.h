// The map under the dictionary: wide text to values, which it knows as pointers only. A hash table finds the
// entries; the list of them is put in key order when that is first asked for, and stays in order while no key
// is added.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

#include "collections/keyed_entry.h"

namespace qv {

class KeyedMap {
public:
    KeyedMap() noexcept = default;
    KeyedMap(const KeyedMap&) = delete;
    KeyedMap& operator=(const KeyedMap&) = delete;
    ~KeyedMap();

    [[nodiscard]] std::size_t Count() const noexcept { return placesUsed_ - holes_; }

    // The value under the key, or null.
    [[nodiscard]] void* Find(const wchar_t* key) const noexcept;

    // Puts the value, which is not null, under a copy of the key. Answers the value that it replaces, or
    // null. Replacing needs no memory; adding throws std::bad_alloc or std::length_error, and then changes
    // nothing.
    void* Put(const wchar_t* key, void* value);

    // Answers the removed value, or null when there was none.
    void* Remove(const wchar_t* key) noexcept;

    // All entries in key order; valid until the map changes.
    [[nodiscard]] std::span<KeyedEntry* const> InOrder() const noexcept;

    // Empties the map in key order: frees each entry, then passes its value on.
    template <class Receive>
    void Drain(Receive receive) noexcept {
        SortPlaces();
        const std::size_t count = Count();
        placesUsed_ = placesInOrder_ = holes_ = 0;
        for (std::size_t i = 0; i < count; ++i) {
            PrefetchPlace(i + kPrefetchDistance, count);
            void* value = places_[i]->value;
            FreeKeyedEntry(places_[i]);
            receive(value);
        }
        FreeTable();
    }

private:
    struct Slot {
        KeyedEntry* entry;  // null in a free slot
        std::uint32_t hash;
    };
    struct Hashed;

    static constexpr std::size_t kPrefetchDistance = 8;

    static Hashed HashKey(const wchar_t* key) noexcept;
    [[nodiscard]] std::size_t FindSlot(const wchar_t* key, Hashed hashed) const noexcept;
    void MakeRoom();
    void Grow();
    void FreeSlot(std::size_t slot) noexcept;
    void FreeTable() noexcept;
    void CloseHoles() const noexcept;
    void SortPlaces() const noexcept;
    void NumberPlaces() const noexcept;
    void PrefetchPlace(std::size_t place, std::size_t count) const noexcept {
        if (place < count) __builtin_prefetch(places_[place]);
    }

    // One block: the slots, a power of two of them, and behind them the places, which fill three quarters of
    // the slots at most. A place holds an entry or, where one was removed, null.
    Slot* slots_ = nullptr;
    KeyedEntry** places_ = nullptr;
    std::uint32_t slotCount_ = 0;
    // Looking at the entries in order puts the places in order, which changes nothing that can be seen.
    mutable std::uint32_t placesUsed_ = 0;
    mutable std::uint32_t placesInOrder_ = 0;  // this many of the first places are in key order
    mutable std::uint32_t holes_ = 0;
};

}  // namespace qv
