#include "base/html_entities.h"

#include <gtest/gtest.h>
#include <random>
#include <string>

namespace {

using qv::HtmlCharSet;

// A character at a time, by a search through the rows.
std::wstring PlainlyReplaced(const std::wstring& text, HtmlCharSet charSet) {
    std::wstring result;
    for (const wchar_t character : text) {
        const qv::HtmlEntity* found = nullptr;
        for (const qv::HtmlEntity& row : qv::HtmlEntities(charSet)) {
            if (row.character == character) found = &row;
        }
        if (found != nullptr) {
            result += found->entity;
        } else {
            result += character;
        }
    }
    return result;
}

TEST(HtmlEntities, AreTheFourOfMarkupAndTheLatin1Letters) {
    EXPECT_EQ(qv::HtmlEntities(HtmlCharSet::kFull).size(), 65U);
    EXPECT_EQ(qv::HtmlEntities(HtmlCharSet::kLimited).size(), 4U);
    std::wstring missing;
    for (wchar_t c = 0xC0; c <= 0xFF; ++c) {
        if (qv::FindHtmlEntity(c, HtmlCharSet::kFull).empty()) missing += c;
    }
    // The signs for multiplication and division are no letters; the small n with a tilde has no row either.
    EXPECT_EQ(missing, L"\u00D7\u00F1\u00F7");
    EXPECT_EQ(qv::FindHtmlEntity(L'&', HtmlCharSet::kLimited), L"&amp;");
    EXPECT_EQ(qv::FindHtmlEntity(L'"', HtmlCharSet::kLimited), L"&quot;");
    EXPECT_EQ(qv::FindHtmlEntity(L'<', HtmlCharSet::kLimited), L"&lt;");
    EXPECT_EQ(qv::FindHtmlEntity(L'>', HtmlCharSet::kLimited), L"&gt;");
    EXPECT_EQ(qv::FindHtmlEntity(L'\u00E9', HtmlCharSet::kFull), L"&eacute;");
    EXPECT_EQ(qv::FindHtmlEntity(L'\u00E9', HtmlCharSet::kLimited), L"");
    EXPECT_EQ(qv::FindHtmlEntity(static_cast<wchar_t>(-1), HtmlCharSet::kFull), L"");
}

TEST(HtmlEntities, ReplacementAgreesWithThePlainWay) {
    std::mt19937 random(5);
    for (int round = 0; round < 20000; ++round) {
        std::wstring text(random() % 100, L'x');
        const auto often = 1 + random() % 40;
        for (wchar_t& character : text) {
            if (random() % often == 0)
                character = static_cast<wchar_t>(random() % (random() % 2 ? 0x180 : 0x110000));
        }
        for (const HtmlCharSet charSet : {HtmlCharSet::kLimited, HtmlCharSet::kFull}) {
            ASSERT_EQ(qv::ReplaceWithHtmlEntities(text, charSet).View(), PlainlyReplaced(text, charSet));
        }
    }
}

}  // namespace
