// Finding out and changing how lines end.
#pragma once

#include <string_view>

#include <QVFoundation/QVString.h>

#include "base/wide_text.h"

namespace qv {

// Which break comes first; a CR right before a LF is a CR LF.
QVLineBreakType FirstLineBreak(std::wstring_view text) noexcept;

// The characters of a break; nothing for values that are none.
std::wstring_view LineBreakText(QVLineBreakType type) noexcept;

// Replaces every `from`, literally and from left to right, by `to`, neither of which is empty: CR to LF
// makes two LF of each CR LF. Takes linear time. When memory runs out the text stays as it was
// (std::bad_alloc).
void ConvertLineBreaks(WideText& text, std::wstring_view from, std::wstring_view to);

}  // namespace qv
