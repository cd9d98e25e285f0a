// The searches of wide_search.h, eight places at a time.
#pragma once

#include <string_view>

namespace qv::avx2 {

#if defined(__x86_64__) || defined(__i386__)
inline constexpr bool kBuilt = true;
#else
inline constexpr bool kBuilt = false;
#endif

// Whether this processor runs the functions below.
inline bool IsSupported() noexcept {
#if defined(__x86_64__) || defined(__i386__)
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi");
#else
    return false;
#endif
}

// The first occurrence of `searched`, which is not empty, in [text, end), or null.
const wchar_t* FindText(const wchar_t* text, const wchar_t* end, std::wstring_view searched) noexcept;

}  // namespace qv::avx2
