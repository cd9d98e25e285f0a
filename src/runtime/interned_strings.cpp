#include "runtime/interned_strings.h"

#include <algorithm>
#include <cwchar>

#include <QVFoundation/QVString.h>

#include "runtime/Owned.h"

namespace qv {
namespace {

constexpr std::size_t kFirstIndexSize = 16;

// FNV-1a over characters, spread by a final multiplication.
std::size_t HashText(const wchar_t* text) {
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (; *text != L'\0'; ++text)
        hash = (hash ^ static_cast<std::uint32_t>(*text)) * 0x100000001B3U;
    return static_cast<std::size_t>((hash * 0x9E3779B97F4A7C15U) >> 24);
}

}  // namespace

void* InternedStrings::Get(const wchar_t* text) {
    const std::size_t hash = HashText(text);
    // At most half of the slots are taken, so a search always meets a free one.
    if (2 * (strings_.size() + 1) > index_.size()) GrowIndex();
    const std::size_t slot = FindSlot(text, hash);
    if (index_[slot] != 0) return strings_[index_[slot] - 1].string;

    Owned string{RequireObject(QVStringCreateWithWideString(text))};
    strings_.push_back({string.Get(), hash});
    index_[slot] = static_cast<std::uint32_t>(strings_.size());
    return string.Detach();
}

void InternedStrings::ReleaseAll() noexcept {
    for (const Entry& entry : strings_)
        QVRelease(entry.string);
    strings_.clear();
    std::fill(index_.begin(), index_.end(), 0U);
}

std::size_t InternedStrings::FindSlot(const wchar_t* text, std::size_t hash) const {
    const std::size_t mask = index_.size() - 1;
    std::size_t slot = hash & mask;
    while (index_[slot] != 0) {
        const Entry& entry = strings_[index_[slot] - 1];
        if (entry.hash == hash && std::wcscmp(QVStringGetBuffer(entry.string), text) == 0) break;
        slot = (slot + 1) & mask;
    }
    return slot;
}

void InternedStrings::GrowIndex() {
    std::vector<std::uint32_t> larger(std::max(kFirstIndexSize, 2 * index_.size()), 0U);
    const std::size_t mask = larger.size() - 1;
    for (std::size_t i = 0; i < strings_.size(); ++i) {
        std::size_t slot = strings_[i].hash & mask;
        while (larger[slot] != 0)
            slot = (slot + 1) & mask;
        larger[slot] = static_cast<std::uint32_t>(i + 1);
    }
    index_.swap(larger);
}

}  // namespace qv
