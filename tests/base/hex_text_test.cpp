#include "base/hex_text.h"

#include <gtest/gtest.h>
#include <string>

namespace {

TEST(HexText, DigitsOfBothCases) {
    EXPECT_EQ(qv::HexDigitValue(L'0'), 0);
    EXPECT_EQ(qv::HexDigitValue(L'9'), 9);
    EXPECT_EQ(qv::HexDigitValue(L'a'), 10);
    EXPECT_EQ(qv::HexDigitValue(L'F'), 15);
    for (const wchar_t other : L"/:@G`g\u0660")
        EXPECT_EQ(qv::HexDigitValue(other), -1);
}

TEST(HexText, TheLeadingDigitsAreTheNumber) {
    EXPECT_EQ(qv::ParseHex(L""), 0U);
    EXPECT_EQ(qv::ParseHex(L"1Fz9"), 31U);
    EXPECT_EQ(qv::ParseHex(L"0x1F"), 0U);
    EXPECT_EQ(qv::ParseHex(L" 1"), 0U);
    EXPECT_EQ(qv::ParseHex(L"aBcDeF01"), 0xABCDEF01U);
    EXPECT_EQ(qv::ParseHex(L"123456789"), 0x23456789U);
    EXPECT_EQ(qv::CountHexDigits(L"00ffg"), 4U);
}

TEST(HexText, BytesAreWrittenFromTheLowest) {
    std::wstring digits(8, L' ');
    qv::PutHexBytes(0xD98C1D04U, digits.data());
    EXPECT_EQ(digits, L"041D8CD9");
}

}  // namespace
