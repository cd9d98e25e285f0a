// The search of wide_search.h in portable code: the path of processors without vectors, and the measure of
// the others. It takes the text from the place where the search starts; `searched` is not empty.
#pragma once

#include <cwchar>
#include <string_view>

namespace qv::plain {

inline bool StartsWith(const wchar_t* place, std::wstring_view searched) noexcept {
    return std::wmemcmp(place, searched.data(), searched.size()) == 0;
}

// The first occurrence in [text, end), or null.
inline const wchar_t* FindText(const wchar_t* text, const wchar_t* end, std::wstring_view searched) noexcept {
    const size_t size = searched.size();
    while (static_cast<size_t>(end - text) >= size) {
        const size_t places = static_cast<size_t>(end - text) - size + 1;
        text = std::wmemchr(text, searched.front(), places);
        if (!text) return nullptr;
        if (StartsWith(text, searched)) return text;
        ++text;
    }
    return nullptr;
}

}  // namespace qv::plain
