// Short ways to make strings and to see their contents.
#pragma once

#include <string>
#include <string_view>

#include <QVFoundation/QVString.h>

#include "runtime/Owned.h"

namespace qvtest {

// A string with these characters, which may hold 0s.
inline qv::Owned MakeString(std::wstring_view text) {
    return qv::Owned{QVStringCreateWithWideStringAndLength(text.data(), text.size())};
}

// The whole contents; a null handle shows as such.
inline std::wstring TextOf(void* string) {
    if (string == nullptr) return L"(null)";
    return {QVStringGetBuffer(string), QVStringGetLength(string)};
}

inline std::wstring TextOf(const qv::Owned& string) {
    return TextOf(string.Get());
}

}  // namespace qvtest
