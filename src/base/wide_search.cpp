#include "base/wide_search.h"

#include <cwchar>

#include "base/wide_search_avx2.h"
#include "base/wide_search_plain.h"

namespace qv {
namespace {

size_t PlaceIn(std::wstring_view text, const wchar_t* found) noexcept {
    return found ? static_cast<size_t>(found - text.data()) : kNotFound;
}

}  // namespace

size_t FindText(std::wstring_view text, std::wstring_view searched, size_t start) noexcept {
    if (start > text.size()) return kNotFound;
    if (searched.empty()) return start;
    const wchar_t* from = text.data() + start;
    const wchar_t* end = text.data() + text.size();
    if constexpr (avx2::kBuilt) {
        if (avx2::IsSupported()) return PlaceIn(text, avx2::FindText(from, end, searched));
    }
    return PlaceIn(text, plain::FindText(from, end, searched));
}

size_t FindCharacter(std::wstring_view text, wchar_t searched, size_t start) noexcept {
    if (start >= text.size()) return kNotFound;
    return PlaceIn(text, std::wmemchr(text.data() + start, searched, text.size() - start));
}

std::wstring_view UpToZero(std::wstring_view text) noexcept {
    return text.substr(0, FindCharacter(text, L'\0', 0));
}

}  // namespace qv
