#include "base/extended_utf8.h"

#include <gtest/gtest.h>
#include <string>

namespace {

std::string Encode(const std::wstring& characters) {
    std::string bytes(qv::ExtendedUtf8Size(characters.data(), characters.size()), '\0');
    qv::EncodeExtendedUtf8(characters.data(), characters.size(), bytes.data());
    return bytes;
}

struct Case {
    int character;
    std::string bytes;
};

TEST(ExtendedUtf8, BothEndsOfEverySize) {
    const Case cases[] = {
        {0x00, std::string(1, '\0')},
        {0x7F, "\x7F"},
        {0x80, "\xC2\x80"},
        {0x7FF, "\xDF\xBF"},
        {0x800, "\xE0\xA0\x80"},
        {0xFFFF, "\xEF\xBF\xBF"},
        {0x10000, "\xF0\x90\x80\x80"},
        {0x1FFFFF, "\xF7\xBF\xBF\xBF"},
        {0x200000, "\xF8\x88\x80\x80\x80"},
        {0x3FFFFFF, "\xFB\xBF\xBF\xBF\xBF"},
        {0x4000000, "\xFC\x84\x80\x80\x80\x80"},
        {0x7FFFFFFF, "\xFD\xBF\xBF\xBF\xBF\xBF"},
    };
    std::wstring all;
    std::string allBytes;
    for (const Case& c : cases) {
        EXPECT_EQ(Encode({static_cast<wchar_t>(c.character)}), c.bytes) << c.character;
        all += static_cast<wchar_t>(c.character);
        allBytes += c.bytes;
    }
    EXPECT_EQ(Encode(all), allBytes);
}

TEST(ExtendedUtf8, SurrogatesAreValuesLikeAnyOther) {
    EXPECT_EQ(Encode({0xD800, 0xDFFF}), "\xED\xA0\x80\xED\xBF\xBF");
}

TEST(ExtendedUtf8, NegativeValuesKeepTheirLowSevenBits) {
    EXPECT_EQ(Encode({-1, -128 + 'A', static_cast<wchar_t>(0x80000000u)}), std::string("\x7F"
                                                                                       "A\0",
                                                                                       3));
}

}  // namespace
