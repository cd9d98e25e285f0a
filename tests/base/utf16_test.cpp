#include "base/utf16.h"

#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

#include "base/utf32.h"

using namespace std::string_literals;

namespace {

constexpr std::endian kOrders[] = {std::endian::little, std::endian::big};

std::string EncodeUtf16(std::wstring_view text, std::endian order) {
    std::string bytes(qv::Utf16Size(text.data(), text.size()), '\0');
    qv::EncodeUtf16(text.data(), text.size(), order, bytes.data());
    return bytes;
}

std::optional<std::wstring> DecodeUtf16(std::string_view bytes, std::endian order) {
    std::vector<wchar_t> text(qv::Utf16ToWideMax(bytes.size()));
    const auto count = qv::DecodeUtf16(bytes.data(), bytes.size(), order, text.data());
    if (!count) return std::nullopt;
    return std::wstring(text.data(), *count);
}

std::string EncodeUtf32(std::wstring_view text, std::endian order) {
    std::string bytes(qv::Utf32Size(text.size()), '\0');
    qv::EncodeUtf32(text.data(), text.size(), order, bytes.data());
    return bytes;
}

std::optional<std::wstring> DecodeUtf32(std::string_view bytes, std::endian order) {
    std::vector<wchar_t> text(qv::Utf32ToWideMax(bytes.size()));
    const auto count = qv::DecodeUtf32(bytes.data(), bytes.size(), order, text.data());
    if (!count) return std::nullopt;
    return std::wstring(text.data(), *count);
}

std::wstring EveryCodePoint() {
    std::wstring all;
    for (wchar_t c = 0; c <= 0x10FFFF; ++c) {
        if (c < 0xD800 || c > 0xDFFF) all += c;
    }
    return all;
}

TEST(Utf16, KnownBytesInBothOrders) {
    const std::wstring text = L"a\u20AC\U00010437\U0010FFFF";
    const std::string big = "\x00\x61\x20\xAC\xD8\x01\xDC\x37\xDB\xFF\xDF\xFF"s;
    const std::string little = "\x61\x00\xAC\x20\x01\xD8\x37\xDC\xFF\xDB\xFF\xDF"s;
    EXPECT_EQ(EncodeUtf16(text, std::endian::big), big);
    EXPECT_EQ(EncodeUtf16(text, std::endian::little), little);
    EXPECT_EQ(DecodeUtf16(big, std::endian::big), text);
    EXPECT_EQ(DecodeUtf16(little, std::endian::little), text);
}

TEST(Utf16, EveryCodePointSurvivesBothWays) {
    const std::wstring all = EveryCodePoint();
    for (const std::endian order : kOrders)
        EXPECT_TRUE(DecodeUtf16(EncodeUtf16(all, order), order) == all);
}

TEST(Utf16, OddSizesAreRefused) {
    EXPECT_EQ(DecodeUtf16("a", std::endian::little), std::nullopt);
    EXPECT_EQ(DecodeUtf16("a\0b"s, std::endian::little), std::nullopt);
}

TEST(Utf16, LoneSurrogatesAreRefused) {
    // High at the end, high before something else, two highs, low alone, the pair the wrong way round.
    for (const std::string& bytes : {"\xD8\x01"s, "\xD8\x01\x00\x61"s, "\xD8\x01\xD8\x01"s,
                                     "\xDC\x37\x00\x61"s, "\xDC\x37\xD8\x01"s, "\xDF\xFF"s, "\xDB\xFF"s}) {
        EXPECT_EQ(DecodeUtf16(bytes, std::endian::big), std::nullopt);
        EXPECT_EQ(DecodeUtf16("\x00\x7A"s + bytes, std::endian::big), std::nullopt);
    }
}

TEST(Utf16, WhatDoesNotFitBecomesAQuestionMark) {
    const std::wstring text = {L'a', 0xD800, 0xDFFF, 0x110000, -1, L'b'};
    EXPECT_EQ(EncodeUtf16(text, std::endian::little), "a\0?\0?\0?\0?\0b\0"s);
}

TEST(Utf16, AByteOrderMarkIsACharacterLikeAnyOther) {
    EXPECT_EQ(DecodeUtf16("\xFE\xFF\x00\x61"s, std::endian::big), L"\uFEFFa");
    EXPECT_EQ(DecodeUtf16("\xFF\xFE\x00\x61"s, std::endian::big), L"\uFFFEa");
}

TEST(Utf32, KnownBytesInBothOrders) {
    const std::wstring text = L"a\u20AC\U0010FFFF";
    const std::string big = "\x00\x00\x00\x61\x00\x00\x20\xAC\x00\x10\xFF\xFF"s;
    const std::string little = "\x61\x00\x00\x00\xAC\x20\x00\x00\xFF\xFF\x10\x00"s;
    EXPECT_EQ(EncodeUtf32(text, std::endian::big), big);
    EXPECT_EQ(EncodeUtf32(text, std::endian::little), little);
    EXPECT_EQ(DecodeUtf32(big, std::endian::big), text);
    EXPECT_EQ(DecodeUtf32(little, std::endian::little), text);
}

TEST(Utf32, EveryCodePointSurvivesBothWays) {
    const std::wstring all = EveryCodePoint();
    for (const std::endian order : kOrders)
        EXPECT_TRUE(DecodeUtf32(EncodeUtf32(all, order), order) == all);
}

TEST(Utf32, OddSizesSurrogatesAndHighValuesAreRefused) {
    for (const std::string& bytes : {"a"s, "a\0\0"s, "a\0\0\0b"s, "\x00\xD8\x00\x00"s, "\xFF\xDF\x00\x00"s,
                                     "\x00\x00\x11\x00"s, "\x61\x00\x00\x80"s, "\xFF\xFF\xFF\xFF"s}) {
        EXPECT_EQ(DecodeUtf32(bytes, std::endian::little), std::nullopt);
    }
}

TEST(Utf32, WhatDoesNotFitBecomesAQuestionMark) {
    const std::wstring text = {0xD800, 0x110000, -1};
    EXPECT_EQ(EncodeUtf32(text, std::endian::big), "\0\0\0?\0\0\0?\0\0\0?"s);
}

}  // namespace
