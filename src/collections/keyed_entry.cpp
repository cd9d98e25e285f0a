#include "collections/keyed_entry.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <cwchar>
#include <limits>
#include <memory>
#include <new>
#include <stdexcept>
#include <utility>

#include "base/block_cache.h"

namespace qv {
namespace {

// Long keys take long to compare, and their characters lie apart in memory. So the sort works on items that
// carry two characters of the key at a time, in one number: a quicksort into smaller, equal and larger, which
// looks at the next two characters of the equal ones only.
struct Item {
    std::uint64_t head;
    KeyedEntry* entry;
};

constexpr std::size_t kCharactersPerHead = 2;
constexpr std::size_t kWorthItems = 32;
constexpr std::ptrdiff_t kWorthPartition = 16;

// Characters as unsigned numbers in the order of wcscmp, which compares them as they are signed on this
// machine.
constexpr std::uint32_t kSignBit = std::numeric_limits<wchar_t>::is_signed ? 0x80000000U : 0U;
constexpr std::uint32_t OrderedCharacter(wchar_t character) {
    return static_cast<std::uint32_t>(character) ^ kSignBit;
}
constexpr std::uint32_t kTerminator = OrderedCharacter(L'\0');

std::uint64_t HeadAt(const wchar_t* text) {
    const std::uint32_t second = text[0] == L'\0' ? kTerminator : OrderedCharacter(text[1]);
    return static_cast<std::uint64_t>(OrderedCharacter(text[0])) << 32 | second;
}

bool EndsKey(std::uint64_t head) {
    return static_cast<std::uint32_t>(head) == kTerminator ||
           static_cast<std::uint32_t>(head >> 32) == kTerminator;
}

void LoadHeads(Item* first, Item* last, std::size_t depth) {
    for (; first != last; ++first)
        first->head = HeadAt(first->entry->Key() + depth);
}

// Items whose keys are alike in their first `depth` characters, with the heads of that depth.
struct BehindDepth {
    std::size_t depth;

    bool operator()(const Item& one, const Item& other) const {
        if (one.head != other.head) return one.head < other.head;
        if (EndsKey(one.head)) return false;
        const std::size_t next = depth + kCharactersPerHead;
        return std::wcscmp(one.entry->Key() + next, other.entry->Key() + next) < 0;
    }
};

void InsertionSort(Item* first, Item* last, BehindDepth before) {
    for (Item* item = first + 1; item < last; ++item) {
        const Item moving = *item;
        Item* place = item;
        for (; place > first && before(moving, place[-1]); --place)
            *place = place[-1];
        *place = moving;
    }
}

std::uint64_t MedianHead(const Item* first, const Item* last) {
    const std::uint64_t a = first->head;
    const std::uint64_t b = first[(last - first) / 2].head;
    const std::uint64_t c = last[-1].head;
    return std::max(std::min(a, b), std::min(std::max(a, b), c));
}

// Moves the items with a smaller head to the front and those with a larger one to the back; answers the equal
// ones.
std::pair<Item*, Item*> Partition(Item* first, Item* last, std::uint64_t pivot) {
    for (Item* item = first; item < last;) {
        if (item->head < pivot) {
            std::swap(*first++, *item++);
        } else if (item->head > pivot) {
            std::swap(*item, *--last);
        } else {
            ++item;
        }
    }
    return {first, last};
}

// `budget` bounds the depth of the recursion, however unlucky the pivots.
void SortItems(Item* first, Item* last, std::size_t depth, int budget) {
    while (last - first > kWorthPartition) {
        if (budget == 0) return std::sort(first, last, BehindDepth{depth});
        const std::uint64_t pivot = MedianHead(first, last);
        const auto [equalFirst, equalLast] = Partition(first, last, pivot);
        SortItems(first, equalFirst, depth, budget - 1);
        SortItems(equalLast, last, depth, budget - 1);
        if (EndsKey(pivot)) return;
        first = equalFirst;
        last = equalLast;
        depth += kCharactersPerHead;
        LoadHeads(first, last, depth);
    }
    InsertionSort(first, last, BehindDepth{depth});
}

void SortByItems(KeyedEntry** entries, Item* items, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        items[i].entry = entries[i];
    LoadHeads(items, items + count, 0);
    SortItems(items, items + count, 0, 2 * static_cast<int>(std::bit_width(count)));
    for (std::size_t i = 0; i < count; ++i)
        entries[i] = items[i].entry;
}

}  // namespace

std::size_t KeyedEntrySize(std::size_t keyLength) {
    constexpr std::size_t kMost = std::min<std::size_t>(
        std::numeric_limits<std::uint32_t>::max(),
        (static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max()) - sizeof(KeyedEntry)) /
                sizeof(wchar_t) -
            1);
    if (keyLength > kMost) throw std::length_error("KeyedEntry");
    return sizeof(KeyedEntry) + (keyLength + 1) * sizeof(wchar_t);
}

KeyedEntry* CreateKeyedEntry(const wchar_t* key, std::size_t keyLength, void* value) {
    auto* entry = new (AllocateBlock(KeyedEntrySize(keyLength)))
        KeyedEntry{value, 0, static_cast<std::uint32_t>(keyLength)};
    std::memcpy(entry->Key(), key, keyLength * sizeof(wchar_t));
    entry->Key()[keyLength] = L'\0';
    return entry;
}

void FreeKeyedEntry(KeyedEntry* entry) noexcept {
    FreeBlock(entry, KeyedEntrySize(entry->keyLength));
}

bool KeyStandsBefore(const KeyedEntry* one, const KeyedEntry* other) noexcept {
    return std::wcscmp(one->Key(), other->Key()) < 0;
}

void SortByKey(KeyedEntry** entries, std::size_t count) noexcept {
    if (std::is_sorted(entries, entries + count, KeyStandsBefore)) return;
    if (count >= kWorthItems) {
        const std::unique_ptr<Item[]> items(new (std::nothrow) Item[count]);
        if (items != nullptr) return SortByItems(entries, items.get(), count);
    }
    std::sort(entries, entries + count, KeyStandsBefore);
}

}  // namespace qv
