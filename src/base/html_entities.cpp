#include "base/html_entities.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace qv {
namespace {

constexpr HtmlEntity kEntities[] = {
    {0x26, L"&amp;"},    {0x22, L"&quot;"},   {0x3C, L"&lt;"},     {0x3E, L"&gt;"},     {0xC1, L"&Aacute;"},
    {0xC2, L"&Acirc;"},  {0xC0, L"&Agrave;"}, {0xC5, L"&Aring;"},  {0xC3, L"&Atilde;"}, {0xC4, L"&Auml;"},
    {0xC6, L"&AElig;"},  {0xC9, L"&Eacute;"}, {0xCA, L"&Ecirc;"},  {0xC8, L"&Egrave;"}, {0xCB, L"&Euml;"},
    {0xCD, L"&Iacute;"}, {0xCE, L"&Icirc;"},  {0xCC, L"&Igrave;"}, {0xCF, L"&Iuml;"},   {0xD3, L"&Oacute;"},
    {0xD4, L"&Ocirc;"},  {0xD2, L"&Ograve;"}, {0xD5, L"&Otilde;"}, {0xD6, L"&Ouml;"},   {0xDA, L"&Uacute;"},
    {0xDB, L"&Ucirc;"},  {0xD9, L"&Ugrave;"}, {0xDC, L"&Uuml;"},   {0xDD, L"&Yacute;"}, {0xE1, L"&aacute;"},
    {0xE2, L"&acirc;"},  {0xE0, L"&agrave;"}, {0xE5, L"&aring;"},  {0xE3, L"&atilde;"}, {0xE4, L"&auml;"},
    {0xE6, L"&aelig;"},  {0xE9, L"&eacute;"}, {0xEA, L"&ecirc;"},  {0xE8, L"&egrave;"}, {0xEB, L"&euml;"},
    {0xED, L"&iacute;"}, {0xEE, L"&icirc;"},  {0xEC, L"&igrave;"}, {0xEF, L"&iuml;"},   {0xF3, L"&oacute;"},
    {0xF4, L"&ocirc;"},  {0xF2, L"&ograve;"}, {0xF5, L"&otilde;"}, {0xF6, L"&ouml;"},   {0xFA, L"&uacute;"},
    {0xFB, L"&ucirc;"},  {0xF9, L"&ugrave;"}, {0xFC, L"&uuml;"},   {0xFD, L"&yacute;"}, {0xFF, L"&yuml;"},
    {0xC7, L"&Ccedil;"}, {0xE7, L"&ccedil;"}, {0xD1, L"&Ntilde;"}, {0xD8, L"&Oslash;"}, {0xF8, L"&oslash;"},
    {0xD0, L"&ETH;"},    {0xF0, L"&eth;"},    {0xDE, L"&THORN;"},  {0xFE, L"&thorn;"},  {0xDF, L"&szlig;"},
};
constexpr std::size_t kLimitedCount = 4;

// Every character of the table is below this.
constexpr std::size_t kCharacters = 256;

using EntityIndex = std::array<std::wstring_view, kCharacters>;

constexpr EntityIndex MakeIndex(std::size_t count) {
    EntityIndex index = {};
    for (std::size_t i = 0; i < count; ++i)
        index[static_cast<std::size_t>(kEntities[i].character)] = kEntities[i].entity;
    return index;
}

constexpr EntityIndex kFullIndex = MakeIndex(std::size(kEntities));
constexpr EntityIndex kLimitedIndex = MakeIndex(kLimitedCount);

// No character that has an entity fails this; some others pass it. Written without branches, so that the
// compiler compares several characters at once.
template <HtmlCharSet charSet>
constexpr bool MayHaveEntity(std::uint32_t character) {
    const bool markup = (character == '&') | (character == '"') | (character == '<') | (character == '>');
    if constexpr (charSet == HtmlCharSet::kLimited) return markup;
    return markup | (character - 0xC0U < 0x40U);
}

constexpr std::size_t kBlock = 32;

template <HtmlCharSet charSet>
bool BlockMayHaveEntity(const wchar_t* block) {
    std::uint32_t found = 0;
    for (std::size_t i = 0; i < kBlock; ++i)
        found |= MayHaveEntity<charSet>(static_cast<std::uint32_t>(block[i]));
    return found != 0;
}

// Where the next character that has an entity stands, from `start` on; the text's length when there is none.
template <HtmlCharSet charSet>
std::size_t FindReplaced(std::wstring_view text, std::size_t start) {
    std::size_t i = start;
    while (i < text.size()) {
        if (text.size() - i >= kBlock && !BlockMayHaveEntity<charSet>(text.data() + i)) {
            i += kBlock;
            continue;
        }
        const std::size_t end = std::min(i + kBlock, text.size());
        for (; i < end; ++i) {
            if (!FindHtmlEntity(text[i], charSet).empty()) return i;
        }
    }
    return text.size();
}

template <HtmlCharSet charSet>
WideText Replace(std::wstring_view text) {
    WideText replaced;
    replaced.Reserve(text.size());
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = FindReplaced<charSet>(text, start);
        replaced.Append(text.substr(start, end - start));
        if (end < text.size()) replaced.Append(FindHtmlEntity(text[end], charSet));
        start = end + 1;
    }
    return replaced;
}

}  // namespace

std::span<const HtmlEntity> HtmlEntities(HtmlCharSet charSet) noexcept {
    const std::span<const HtmlEntity> all(kEntities);
    return charSet == HtmlCharSet::kLimited ? all.first(kLimitedCount) : all;
}

std::wstring_view FindHtmlEntity(wchar_t character, HtmlCharSet charSet) noexcept {
    const auto code = static_cast<std::uint32_t>(character);
    if (code >= kCharacters) return {};
    return (charSet == HtmlCharSet::kLimited ? kLimitedIndex : kFullIndex)[code];
}

std::size_t FindHtmlCharacter(std::wstring_view text, std::size_t start, HtmlCharSet charSet) noexcept {
    return charSet == HtmlCharSet::kLimited ? FindReplaced<HtmlCharSet::kLimited>(text, start)
                                            : FindReplaced<HtmlCharSet::kFull>(text, start);
}

WideText ReplaceWithHtmlEntities(std::wstring_view text, HtmlCharSet charSet) {
    return charSet == HtmlCharSet::kLimited ? Replace<HtmlCharSet::kLimited>(text)
                                            : Replace<HtmlCharSet::kFull>(text);
}

}  // namespace qv
