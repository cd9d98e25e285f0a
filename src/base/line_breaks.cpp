#include "base/line_breaks.h"

#include <utility>

#include "base/wide_search.h"

namespace qv {
namespace {

size_t CountOccurrences(std::wstring_view text, std::wstring_view searched) noexcept {
    size_t count = 0;
    for (size_t at = FindText(text, searched, 0); at != kNotFound; ++count) {
        at = FindText(text, searched, at + searched.size());
    }
    return count;
}

}  // namespace

QVLineBreakType FirstLineBreak(std::wstring_view text) noexcept {
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == L'\n') return QVLineBreakLF;
        if (text[i] == L'\u2028') return QVLineBreakLineSeparator;
        if (text[i] == L'\r') return text.substr(i + 1).starts_with(L'\n') ? QVLineBreakCRLF : QVLineBreakCR;
    }
    return QVLineBreakNone;
}

std::wstring_view LineBreakText(QVLineBreakType type) noexcept {
    switch (type) {
        case QVLineBreakLF:
            return L"\n";
        case QVLineBreakCR:
            return L"\r";
        case QVLineBreakCRLF:
            return L"\r\n";
        case QVLineBreakLineSeparator:
            return L"\u2028";
        default:
            return {};
    }
}

void ConvertLineBreaks(WideText& text, std::wstring_view from, std::wstring_view to) {
    const size_t count = CountOccurrences(text.View(), from);
    if (count == 0 || from == to) return;

    WideText converted;
    converted.Reserve(text.Length() - count * from.size() + count * to.size());
    size_t copied = 0;
    for (size_t at = FindText(text.View(), from, 0); at != kNotFound;
         at = FindText(text.View(), from, copied)) {
        converted.Append(text.View().substr(copied, at - copied));
        converted.Append(to);
        copied = at + from.size();
    }
    converted.Append(text.View().substr(copied));
    text = std::move(converted);
}

}  // namespace qv
