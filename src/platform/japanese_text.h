// The Japanese character sets, whose tables the operating system holds.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace qv {

enum class JapaneseEncoding {
    kShiftJis,   // with the desktop's extensions: 5C is a backslash, 7E a tilde
    kIso2022Jp,  // escape sequences switch between ASCII and double-byte text
    kEucJp,
};

// The characters of `bytes`, or nothing when they are not valid or end inside a character, or when the system
// does not know the encoding.
std::optional<std::wstring> DecodeJapanese(JapaneseEncoding encoding, std::string_view bytes);

// The bytes of `text`, with one "?" for each character that does not fit; ISO-2022-JP always ends in ASCII.
// The wave dash (U+301C) and the full-width tilde (U+FF5E), which stand for the same character in different
// tables, both fit. Nothing when the system does not know the encoding.
std::optional<std::string> EncodeJapanese(JapaneseEncoding encoding, std::wstring_view text);

}  // namespace qv
