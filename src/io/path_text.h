// Paths as the file system takes them, from strings.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace qv {

// All characters of a string, those behind an embedded 0 included; none for null.
[[nodiscard]] std::wstring_view CharactersOf(void* string) noexcept;

// The bytes of a path or name. Nothing when the text has an embedded 0 or no UTF-8 form, so that it never
// names another file than the one that was meant.
[[nodiscard]] std::optional<std::string> PathBytes(std::wstring_view text);
[[nodiscard]] std::optional<std::string> PathBytes(void* string);

// The path's last component, without a "/" at its end; empty for "" and "/".
[[nodiscard]] std::string_view LastComponent(std::string_view path) noexcept;

// The path with the name of an item in that directory.
[[nodiscard]] std::string ItemPath(std::string_view directory, std::string_view name);

// The path from the root. It stays as it is when the current directory cannot be told.
[[nodiscard]] std::string AbsolutePath(std::string path);

}  // namespace qv
