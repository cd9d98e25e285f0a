// The strings of one temporary pool, each text once, found through a hash index.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qv {

class InternedStrings {
public:
    InternedStrings() = default;
    InternedStrings(InternedStrings&&) noexcept = default;
    InternedStrings& operator=(InternedStrings&&) noexcept = default;

    // The string with this text, made when there is none yet; borrowed. Throws std::bad_alloc and then
    // changes nothing.
    void* Get(const wchar_t* text);

    [[nodiscard]] bool IsEmpty() const { return strings_.empty(); }
    // Releases every string, in the order they were made, and keeps the storage.
    void ReleaseAll() noexcept;

private:
    struct Entry {
        void* string;
        std::size_t hash;
    };

    [[nodiscard]] std::size_t FindSlot(const wchar_t* text, std::size_t hash) const;
    void GrowIndex();

    std::vector<Entry> strings_;
    // Open addressing with linear steps: the entry's number plus one, 0 for a free slot. A power of two in
    // size.
    std::vector<std::uint32_t> index_;
};

}  // namespace qv
