// Finding in wide text by exact code point. Embedded 0s are characters like any other.
#pragma once

#include <cstddef>
#include <string_view>

namespace qv {

inline constexpr size_t kNotFound = static_cast<size_t>(-1);

// The first place at or after `start` where `text` goes on with `searched`, or kNotFound. An empty
// `searched` is found at `start` as long as that does not lie beyond the end.
size_t FindText(std::wstring_view text, std::wstring_view searched, size_t start) noexcept;

// The first place at or after `start` where `text` holds `searched`, or kNotFound.
size_t FindCharacter(std::wstring_view text, wchar_t searched, size_t start) noexcept;

// `text` up to its first 0, as the C library's wide-string functions see it.
std::wstring_view UpToZero(std::wstring_view text) noexcept;

}  // namespace qv
