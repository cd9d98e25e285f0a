// The rules by which path texts are taken apart and joined. "/" is the only separator, and nothing is
// normalised.
#pragma once

#include <string_view>

namespace qv {

// Everything up to and including the last "/"; without one, nothing. "/a/b" gives "/a/", "a/b/" itself.
std::wstring_view DirectoryOfPath(std::wstring_view path) noexcept;

// The name after the last "/", where one "/" at the very end does not count: "a/b/" gives "b", "/" gives "".
std::wstring_view LastPathComponent(std::wstring_view path) noexcept;

// Whether joining `text` and `added` needs `separator` in between: neither is empty and neither brings one
// along.
bool NeedsSeparator(std::wstring_view text, std::wstring_view added, wchar_t separator) noexcept;

}  // namespace qv
