#include "base/path_text.h"

namespace qv {

std::wstring_view DirectoryOfPath(std::wstring_view path) noexcept {
    return path.substr(0, path.rfind(L'/') + 1);  // npos + 1 is 0
}

std::wstring_view LastPathComponent(std::wstring_view path) noexcept {
    if (path.ends_with(L'/')) path.remove_suffix(1);
    return path.substr(path.rfind(L'/') + 1);
}

bool NeedsSeparator(std::wstring_view text, std::wstring_view added, wchar_t separator) noexcept {
    return !text.empty() && !text.ends_with(separator) && !added.empty() && !added.starts_with(separator);
}

}  // namespace qv
