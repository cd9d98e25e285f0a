// An entry of a map from wide text to a value: one block that holds the value and the copy of its key.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qv {

struct KeyedEntry {
    void* value;
    std::uint32_t place;      // where the map lists it
    std::uint32_t keyLength;  // without the terminator

    // The key lies behind the entry, terminated.
    [[nodiscard]] const wchar_t* Key() const noexcept { return reinterpret_cast<const wchar_t*>(this + 1); }
    [[nodiscard]] wchar_t* Key() noexcept { return reinterpret_cast<wchar_t*>(this + 1); }
};

// The bytes of an entry whose key has this many characters. Throws std::length_error when that is not for
// this machine.
[[nodiscard]] std::size_t KeyedEntrySize(std::size_t keyLength);

// A new entry with a copy of the key. Throws std::bad_alloc or std::length_error.
[[nodiscard]] KeyedEntry* CreateKeyedEntry(const wchar_t* key, std::size_t keyLength, void* value);
void FreeKeyedEntry(KeyedEntry* entry) noexcept;

// Whether one key stands before the other, in the order of wcscmp.
[[nodiscard]] bool KeyStandsBefore(const KeyedEntry* one, const KeyedEntry* other) noexcept;

// Sorts entries with different keys by their keys. Uses memory where there is some, and does without where
// there is not.
void SortByKey(KeyedEntry** entries, std::size_t count) noexcept;

}  // namespace qv
