#include "collections/keyed_map.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <stdexcept>

#include "base/block_cache.h"
#include "platform/large_pages.h"

namespace qv {

struct KeyedMap::Hashed {
    std::uint32_t hash;
    std::size_t length;
};

namespace {

// Six entries fit the first table, which is one of the small blocks.
constexpr std::uint32_t kFirstSlotCount = 8;
// A power of two whose table is within reach of the machine's addresses.
constexpr std::uint32_t kMostSlots = sizeof(std::size_t) > 4 ? 0x80000000U : 0x04000000U;

constexpr std::uint32_t PlacesFor(std::uint32_t slotCount) {
    return slotCount - slotCount / 4;
}

// A table that many small pages would hold; it has a hundred thousand entries or more.
constexpr std::size_t kWorthLargePages = 4 << 20;

constexpr std::uint64_t kMultiplier = 0x9E3779B97F4A7C15U;

// Every process starts its hashes elsewhere, so that nobody can prepare keys that collide. Keys come out in
// order, so the order of the table never shows.
std::uint64_t Seed() noexcept {
    static const char anchor = 0;
    return reinterpret_cast<std::uintptr_t>(&anchor) * kMultiplier;
}

std::uint64_t Mix(std::uint64_t hash, std::uint64_t characters) noexcept {
    hash = (hash ^ characters) * kMultiplier;
    return hash ^ (hash >> 32);
}

}  // namespace

KeyedMap::~KeyedMap() {
    Drain([](void*) {});
}

void* KeyedMap::Find(const wchar_t* key) const noexcept {
    if (Count() == 0) return nullptr;
    const KeyedEntry* entry = slots_[FindSlot(key, HashKey(key))].entry;
    return entry != nullptr ? entry->value : nullptr;
}

void* KeyedMap::Put(const wchar_t* key, void* value) {
    const Hashed hashed = HashKey(key);
    std::size_t slot = 0;
    if (slots_ != nullptr) {
        slot = FindSlot(key, hashed);
        KeyedEntry* entry = slots_[slot].entry;
        if (entry != nullptr) return std::exchange(entry->value, value);
    }
    if (placesUsed_ == PlacesFor(slotCount_)) {
        MakeRoom();
        slot = FindSlot(key, hashed);
    }
    KeyedEntry* entry = CreateKeyedEntry(key, hashed.length, value);
    slots_[slot] = {entry, hashed.hash};
    entry->place = placesUsed_;
    places_[placesUsed_++] = entry;
    return nullptr;
}

void* KeyedMap::Remove(const wchar_t* key) noexcept {
    if (Count() == 0) return nullptr;
    const std::size_t slot = FindSlot(key, HashKey(key));
    KeyedEntry* entry = slots_[slot].entry;
    if (entry == nullptr) return nullptr;
    void* value = entry->value;
    FreeSlot(slot);
    places_[entry->place] = nullptr;
    ++holes_;
    if (Count() == 0) placesUsed_ = placesInOrder_ = holes_ = 0;
    FreeKeyedEntry(entry);
    return value;
}

std::span<KeyedEntry* const> KeyedMap::InOrder() const noexcept {
    if (placesInOrder_ < placesUsed_ || holes_ > 0) {
        SortPlaces();
        NumberPlaces();
    }
    return {places_, placesUsed_};
}

// One pass over the key, two characters at a time, that finds its length as well.
KeyedMap::Hashed KeyedMap::HashKey(const wchar_t* key) noexcept {
    std::uint64_t hash = Seed();
    const wchar_t* at = key;
    while (at[0] != L'\0') {
        std::uint64_t characters = static_cast<std::uint32_t>(at[0]);
        ++at;
        if (at[0] != L'\0') {
            characters |= static_cast<std::uint64_t>(at[0]) << 32;
            ++at;
        }
        hash = Mix(hash, characters);
    }
    return {static_cast<std::uint32_t>((hash * kMultiplier) >> 32), static_cast<std::size_t>(at - key)};
}

// The slot of the key's entry, or the free slot where it belongs. A quarter of the slots is free, so the
// search ends.
std::size_t KeyedMap::FindSlot(const wchar_t* key, Hashed hashed) const noexcept {
    const std::size_t mask = slotCount_ - 1;
    for (std::size_t slot = hashed.hash & mask;; slot = (slot + 1) & mask) {
        const KeyedEntry* entry = slots_[slot].entry;
        if (entry == nullptr) return slot;
        if (slots_[slot].hash == hashed.hash && entry->keyLength == hashed.length &&
            std::memcmp(entry->Key(), key, hashed.length * sizeof(wchar_t)) == 0) {
            return slot;
        }
    }
}

// Holes are closed when there are enough of them to pay for it.
void KeyedMap::MakeRoom() {
    if (holes_ > placesUsed_ / 4) {
        CloseHoles();
        NumberPlaces();
    } else {
        Grow();
    }
}

void KeyedMap::Grow() {
    if (slotCount_ == kMostSlots) throw std::length_error("KeyedMap");
    const std::uint32_t slotCount = std::max(kFirstSlotCount, 2 * slotCount_);
    const std::size_t size = slotCount * sizeof(Slot) + PlacesFor(slotCount) * sizeof(KeyedEntry*);
    auto* slots = static_cast<Slot*>(AllocateBlock(size));
    if (size >= kWorthLargePages) PreferLargePages(slots, size);
    auto* places = reinterpret_cast<KeyedEntry**>(slots + slotCount);
    std::fill_n(slots, slotCount, Slot{});
    std::copy_n(places_, placesUsed_, places);

    // The old table is read in order, so the new one is written in two orderly runs.
    const std::size_t mask = slotCount - 1;
    for (std::size_t old = 0; old < slotCount_; ++old) {
        if (slots_[old].entry == nullptr) continue;
        std::size_t slot = slots_[old].hash & mask;
        while (slots[slot].entry != nullptr)
            slot = (slot + 1) & mask;
        slots[slot] = slots_[old];
    }
    FreeTable();
    slots_ = slots;
    places_ = places;
    slotCount_ = slotCount;
}

// Closes the gap in the run of slots: each later entry that may stand in the gap moves there and leaves a new
// one.
void KeyedMap::FreeSlot(std::size_t slot) noexcept {
    const std::size_t mask = slotCount_ - 1;
    std::size_t gap = slot;
    for (std::size_t next = (gap + 1) & mask; slots_[next].entry != nullptr; next = (next + 1) & mask) {
        const std::size_t home = slots_[next].hash & mask;
        if (((next - home) & mask) < ((next - gap) & mask)) continue;
        slots_[gap] = slots_[next];
        gap = next;
    }
    slots_[gap] = {};
}

void KeyedMap::FreeTable() noexcept {
    if (slots_ == nullptr) return;
    FreeBlock(slots_, slotCount_ * sizeof(Slot) + PlacesFor(slotCount_) * sizeof(KeyedEntry*));
    slots_ = nullptr;
    places_ = nullptr;
    slotCount_ = 0;
}

void KeyedMap::CloseHoles() const noexcept {
    if (holes_ == 0) return;
    KeyedEntry** const orderEnd = places_ + placesInOrder_;
    const auto lost = std::count(places_, orderEnd, nullptr);
    std::remove(places_, places_ + placesUsed_, nullptr);
    placesInOrder_ -= static_cast<std::uint32_t>(lost);
    placesUsed_ -= holes_;
    holes_ = 0;
}

// What was added since the last time is sorted alone and then merged into what was in order before.
void KeyedMap::SortPlaces() const noexcept {
    CloseHoles();
    KeyedEntry** const end = places_ + placesUsed_;
    KeyedEntry** const added = places_ + placesInOrder_;
    if (added == end) return;
    SortByKey(added, static_cast<std::size_t>(end - added));
    std::inplace_merge(places_, added, end, KeyStandsBefore);
    placesInOrder_ = placesUsed_;
}

void KeyedMap::NumberPlaces() const noexcept {
    for (std::uint32_t place = 0; place < placesUsed_; ++place) {
        PrefetchPlace(place + kPrefetchDistance, placesUsed_);
        places_[place]->place = place;
    }
}

}  // namespace qv
