#include "base/line_breaks.h"

#include <gtest/gtest.h>
#include <random>
#include <string>

namespace {

using qv::WideText;

std::wstring Converted(const std::wstring& text, QVLineBreakType from, QVLineBreakType to) {
    WideText converted(text);
    qv::ConvertLineBreaks(converted, qv::LineBreakText(from), qv::LineBreakText(to));
    return std::wstring(converted.View());
}

TEST(LineBreaks, WhateverComesFirstDecides) {
    EXPECT_EQ(qv::FirstLineBreak(L""), QVLineBreakNone);
    EXPECT_EQ(qv::FirstLineBreak(L"abc"), QVLineBreakNone);
    EXPECT_EQ(qv::FirstLineBreak(L"a\nb\r\u2028"), QVLineBreakLF);
    EXPECT_EQ(qv::FirstLineBreak(L"a\u2028b\n"), QVLineBreakLineSeparator);
    EXPECT_EQ(qv::FirstLineBreak(L"a\rb\nc"), QVLineBreakCR);
    EXPECT_EQ(qv::FirstLineBreak(L"a\r"), QVLineBreakCR);
    EXPECT_EQ(qv::FirstLineBreak(L"a\r\r\n"), QVLineBreakCR);
    EXPECT_EQ(qv::FirstLineBreak(L"a\r\nb"), QVLineBreakCRLF);
}

TEST(LineBreaks, NoOtherTypeHasAText) {
    for (const int type : {0, 5, -1, 1000})
        EXPECT_EQ(qv::LineBreakText(type), L"");
}

TEST(LineBreaks, OneBreakIsReplacedByTheOther) {
    EXPECT_EQ(Converted(L"a\nb\n", QVLineBreakLF, QVLineBreakCRLF), L"a\r\nb\r\n");
    EXPECT_EQ(Converted(L"a\r\nb", QVLineBreakCRLF, QVLineBreakLineSeparator), L"a\u2028b");
    EXPECT_EQ(Converted(L"a\r\nb", QVLineBreakCR, QVLineBreakLF), L"a\n\nb");
    EXPECT_EQ(Converted(L"a\r\nb", QVLineBreakLF, QVLineBreakCRLF), L"a\r\r\nb");
    EXPECT_EQ(Converted(L"abc", QVLineBreakLF, QVLineBreakCR), L"abc");
    EXPECT_EQ(Converted(L"", QVLineBreakLF, QVLineBreakCR), L"");
}

// Two million breaks: quadratic work would take minutes.
TEST(LineBreaks, ConvertingTakesLinearTime) {
    const std::wstring converted = Converted(std::wstring(2000000, L'\n'), QVLineBreakLF, QVLineBreakCRLF);
    EXPECT_EQ(converted.size(), 4000000U);
}

// The rule as it is told: find the next one, replace it in place, go on behind what was put in.
std::wstring PlainlyConverted(std::wstring text, std::wstring_view from, std::wstring_view to) {
    size_t position = 0;
    while (position < text.size()) {
        const size_t found = text.find(from, position);
        if (found == std::wstring::npos) break;
        text.replace(found, from.size(), to);
        position = found + to.size();
    }
    return text;
}

TEST(LineBreaksModel, AgreesWithReplacingOneAtATime) {
    std::mt19937 random(20260119);
    for (int round = 0; round < 5000; ++round) {
        std::wstring text(random() % 50, L' ');
        for (wchar_t& character : text)
            character = L"\r\n\u2028x"[random() % 4];
        const auto from = static_cast<QVLineBreakType>(1 + random() % 4);
        const auto to = static_cast<QVLineBreakType>(1 + random() % 4);
        ASSERT_EQ(Converted(text, from, to),
                  PlainlyConverted(text, qv::LineBreakText(from), qv::LineBreakText(to)))
            << "round " << round;
    }
}

}  // namespace
