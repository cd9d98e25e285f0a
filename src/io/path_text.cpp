#include "io/path_text.h"

#include <QVFoundation/QVString.h>

#include "base/utf8.h"
#include "platform/file_system.h"

namespace qv {

std::wstring_view CharactersOf(void* string) noexcept {
    if (string == nullptr) return {};
    return {QVStringGetBuffer(string), static_cast<std::size_t>(QVStringGetLength(string))};
}

std::optional<std::string> PathBytes(std::wstring_view text) {
    if (text.find(L'\0') != text.npos) return std::nullopt;
    return ToUtf8(text);
}

std::optional<std::string> PathBytes(void* string) {
    return PathBytes(CharactersOf(string));
}

std::string_view LastComponent(std::string_view path) noexcept {
    if (path.ends_with('/')) path.remove_suffix(1);
    return path.substr(path.rfind('/') + 1);  // no "/" gives npos, and npos + 1 is 0
}

std::string ItemPath(std::string_view directory, std::string_view name) {
    std::string path(directory);
    if (!path.empty() && path.back() != '/') path += '/';
    return path += name;
}

std::string AbsolutePath(std::string path) {
    if (path.starts_with('/')) return path;
    std::string current;
    if (Files().Canonicalise(".", current) != FileError::kNone) return path;
    return ItemPath(current, path);
}

}  // namespace qv
