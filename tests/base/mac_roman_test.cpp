#include "base/mac_roman.h"

#include <gtest/gtest.h>
#include <set>
#include <string>
#include <string_view>

namespace {

std::string Encode(std::wstring_view text) {
    std::string bytes(text.size(), '\0');
    qv::EncodeMacRoman(text.data(), text.size(), bytes.data());
    return bytes;
}

std::wstring Decode(std::string_view bytes) {
    std::wstring text(bytes.size(), L'\0');
    qv::DecodeMacRoman(bytes.data(), bytes.size(), text.data());
    return text;
}

std::string EveryByte() {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte)
        bytes += static_cast<char>(byte);
    return bytes;
}

TEST(MacRoman, TheLowerHalfIsAscii) {
    for (wchar_t c = 0; c < 0x80; ++c)
        EXPECT_EQ(Decode({reinterpret_cast<const char*>(&c), 1}), std::wstring(1, c));
}

// The published table of the character set, written as text rather than numbers.
TEST(MacRoman, TheUpperHalfIsThePublishedTable) {
    EXPECT_EQ(Decode(EveryByte().substr(0x80)),
              L"ÄÅÇÉÑÖÜáàâäãåçéè"
              L"êëíìîïñóòôöõúùûü"
              L"†°¢£§•¶ß®©™´¨≠ÆØ"
              L"∞±≤≥¥µ∂∑∏π∫ªº\u03A9æø"
              L"¿¡¬√ƒ≈∆«»…\u00A0ÀÃÕŒœ"
              L"–—“”‘’÷◊ÿŸ⁄€‹›ﬁﬂ"
              L"‡·‚„‰ÂÊÁËÈÍÎÏÌÓÔ"
              L"\uF8FFÒÚÛÙıˆ˜¯˘˙˚¸˝˛ˇ");
}

TEST(MacRoman, EveryByteSurvivesBothWays) {
    const std::string bytes = EveryByte();
    EXPECT_EQ(Encode(Decode(bytes)), bytes);
}

TEST(MacRoman, EveryOtherCharacterBecomesAQuestionMark) {
    const std::wstring all = Decode(EveryByte());
    std::set<wchar_t> known(all.begin(), all.end());
    known.insert(0x2126);
    for (wchar_t c = 0; c < 0x20000; ++c) {
        if (known.count(c) == 0) {
            ASSERT_EQ(Encode({&c, 1}), "?") << static_cast<long>(c);
        }
    }
    EXPECT_EQ(Encode(std::wstring{0x10FFFF, 0x110000, -1, 0x100041}), "????");
}

TEST(MacRoman, TheOhmSignCountsAsOmega) {
    EXPECT_EQ(Encode(L"\u2126\u03A9"), "\xBD\xBD");
}

}  // namespace
