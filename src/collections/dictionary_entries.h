// Looking at a dictionary's entries where they lie: for writers that need neither a key array nor new key
// strings.
#pragma once

#include <cstddef>

namespace qv {

struct DictionaryEntry {
    const wchar_t* key;
    std::size_t keyLength;
    void* value;  // borrowed
};

// The entry at a place in key order. `index` lies below QVDictionaryCount. The key stays where it is until
// the entry goes.
[[nodiscard]] DictionaryEntry GetDictionaryEntry(void* dictionary, std::size_t index) noexcept;

}  // namespace qv
