#include "formats/css_rules.h"

#include <gtest/gtest.h>
#include <random>
#include <string>

namespace {

using qv::CssResult;
using qv::CssRule;
using Text = std::wstring_view;

// The rules of a sheet in one line: start+length selectors{name=value}...
std::wstring Rules(Text sheet) {
    std::wstring result;
    CssRule rule;
    std::size_t position = 0;
    while (qv::FindNextCssRule(sheet, position, rule) == CssResult::kFound) {
        result += std::to_wstring(rule.start) + L"+" + std::to_wstring(rule.length) + L" ";
        for (const Text selector : rule.selectors)
            result.append(L"[").append(selector).append(L"]");
        for (const CssRule::Property& property : rule.properties) {
            result.append(L"{").append(property.name).append(L"=").append(property.value).append(L"}");
        }
        result += L"\n";
        position = rule.start + rule.length;
    }
    return result;
}

TEST(CssRules, ARuleHasSelectorsAndProperties) {
    EXPECT_EQ(Rules(L"h1, h2 { color: red; margin: 0 }"), L"0+32 [h1][h2]{color=red}{margin=0}\n");
    EXPECT_EQ(Rules(L"a{b:c}d{e:f;}"), L"0+6 [a]{b=c}\n6+7 [d]{e=f}\n");
    EXPECT_EQ(Rules(L"a>b c,d\t\re\nf{}"), L"0+14 [a>b][c][d][e][f]\n");
    EXPECT_EQ(Rules(L"{a:b}"), L"0+5 {a=b}\n");
}

TEST(CssRules, RulesWithoutABodyEndWithTheirLastSelector) {
    EXPECT_EQ(Rules(L"@charset \"UTF-8\";\nh1{a:b}"), L"0+17 [@charset][\"UTF-8\";]\n18+7 [h1]{a=b}\n");
    EXPECT_EQ(Rules(L";"), L"0+1 [;]\n");
    EXPECT_EQ(Rules(L"a ;"), L"0+3 [a][;]\n");
}

TEST(CssRules, AMediaRuleEndsBehindItsBrace) {
    EXPECT_EQ(Rules(L"@MEDIA screen, print { h1 { a: b } }"),
              L"0+22 [@MEDIA][screen][print]\n22+12 [h1]{a=b}\n34+2 [}]\n");
}

TEST(CssRules, ControlCharactersAndCommentsBeforeARuleAreNoPartOfIt) {
    EXPECT_EQ(Rules(L"\r\n\t/* c */\nh1{a:b}"), L"11+7 [h1]{a=b}\n");
    EXPECT_EQ(Rules(L" h1{a:b}"), L"0+8 [h1]{a=b}\n");  // a space is printable
    EXPECT_EQ(Rules(L"\uFEFFh1{}\u2028h2{}\u2029h3{}"), L"1+4 [h1]\n6+4 [h2]\n11+4 [h3]\n");
    EXPECT_EQ(Rules(L"\x7F\x80\x9Fh1{}"), L"3+4 [h1]\n");
    EXPECT_EQ(Rules(L"\u00A0x{}"), L"0+4 [\u00A0x]\n");
}

TEST(CssRules, CommentsAreDroppedFromSelectorsNamesAndValues) {
    EXPECT_EQ(Rules(L"h/* x{ */1{co/**/lor:r/*;}*/ed}"), L"0+31 [h1]{color=red}\n");
    EXPECT_EQ(Rules(L"a/*c*/;"), L"0+7 [a;]\n");
    EXPECT_EQ(Rules(L"a/*c*/{}"), L"0+8 [a]\n");
    EXPECT_EQ(Rules(L"a / b{}"), L"0+7 [a][/][b]\n");
    // The end is searched from the opening slash itself.
    EXPECT_EQ(Rules(L"/*/a{}"), L"3+3 [a]\n");
    EXPECT_EQ(Rules(L"a{b:c/* never closed"), L"0+20 [a]\n");
}

TEST(CssRules, WhatIsLeftAtTheEndIsARuleOnlyWhenItHasASelector) {
    EXPECT_EQ(Rules(L""), L"");
    EXPECT_EQ(Rules(L" \t\r\n /* c */ "), L"");
    EXPECT_EQ(Rules(L"  h1 "), L"0+5 [h1]\n");
    EXPECT_EQ(Rules(L"h1{"), L"0+3 [h1]\n");
    EXPECT_EQ(Rules(L"h1{a"), L"0+4 [h1]\n");
    EXPECT_EQ(Rules(L"h1{a:b"), L"0+6 [h1]\n");
    EXPECT_EQ(Rules(L"h1{a:b;c"), L"0+8 [h1]{a=b}\n");
}

TEST(CssRules, APropertyWithoutAColonEndsTheRule) {
    EXPECT_EQ(Rules(L"h1{a:b;c}h2{}"), L"0+9 [h1]{a=b}\n9+4 [h2]\n");
    EXPECT_EQ(Rules(L"h1{a:b;;c:d}"), L"0+12 [h1]{a=b}{;c=d}\n");
    EXPECT_EQ(Rules(L"h1{:b;a:}"), L"0+9 [h1]{=b}{a=}\n");  // empty parts count as present
}

TEST(CssBody, BeginsBehindTheBraceUnlessSomethingElseComesFirst) {
    EXPECT_EQ(qv::SkipToCssBody(L" /* c */\n{x", 0), 10U);
    EXPECT_EQ(qv::SkipToCssBody(L"  ", 0), 2U);
    EXPECT_EQ(qv::SkipToCssBody(L" x{", 0), std::nullopt);
    EXPECT_EQ(qv::SkipToCssBody(L"/{", 0), std::nullopt);
}

TEST(CssCase, IsIgnoredCharacterByCharacter) {
    EXPECT_TRUE(qv::EqualIgnoringCase(L"@Media", L"@mEDIA"));
    EXPECT_FALSE(qv::EqualIgnoringCase(L"h1", L"h"));
    EXPECT_FALSE(qv::EqualIgnoringCase(L"h1", L"h2"));
    EXPECT_TRUE(qv::EqualIgnoringCase(L"", L""));
}

TEST(CssRules, AnyTextIsTiledByRulesAndGaps) {
    std::mt19937 random(3);
    constexpr wchar_t kAlphabet[] = L"ab{}:;/* ,\t\n@\uFEFF\u00E9";
    for (int round = 0; round < 20000; ++round) {
        std::wstring sheet(random() % 40, L' ');
        for (wchar_t& character : sheet)
            character = kAlphabet[random() % (std::size(kAlphabet) - 1)];
        CssRule rule;
        std::size_t position = 0;
        while (qv::FindNextCssRule(sheet, position, rule) == CssResult::kFound) {
            ASSERT_GE(rule.start, position);
            ASSERT_GT(rule.length, 0U);
            position = rule.start + rule.length;
            ASSERT_LE(position, sheet.size());
        }
    }
}

}  // namespace
