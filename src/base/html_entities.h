// The named entities of HTML that the library writes, and their replacement in wide text.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "base/wide_text.h"

namespace qv {

struct HtmlEntity {
    wchar_t character;
    const wchar_t* entity;
};

// Which characters are replaced: the four of markup, or those and the Latin-1 letters.
enum class HtmlCharSet { kLimited, kFull };

[[nodiscard]] std::span<const HtmlEntity> HtmlEntities(HtmlCharSet charSet) noexcept;

// The character's entity, or an empty text when it has none.
[[nodiscard]] std::wstring_view FindHtmlEntity(wchar_t character, HtmlCharSet charSet) noexcept;

// Where the next character that has an entity stands, from `start` on; the text's length when there is none.
// Stretches without any are passed at memory speed.
[[nodiscard]] std::size_t FindHtmlCharacter(std::wstring_view text, std::size_t start,
                                            HtmlCharSet charSet) noexcept;

// The text with its entities. Linear. Throws when memory runs out.
[[nodiscard]] WideText ReplaceWithHtmlEntities(std::wstring_view text, HtmlCharSet charSet);

}  // namespace qv
