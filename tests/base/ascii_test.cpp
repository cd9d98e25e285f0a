#include "base/ascii.h"

#include <gtest/gtest.h>
#include <random>
#include <string>

namespace {

// Text of up to 40 characters in which every eighth one, on average, may be outside ASCII.
std::wstring RandomText(std::mt19937& random) {
    static constexpr wchar_t kOthers[] = {0x80,   0xFF,     0x100,
                                          0x4100, 0x10FFFF, static_cast<wchar_t>(0x80000041)};
    const bool isPlain = random() % 2 == 0;
    std::wstring text(random() % 41, L'\0');
    for (wchar_t& character : text) {
        const bool isOther = !isPlain && random() % 8 == 0;
        character = isOther ? kOthers[random() % std::size(kOthers)] : static_cast<wchar_t>(random() % 0x80);
    }
    return text;
}

TEST(Ascii, NarrowingGoesUpToTheFirstOtherCharacterAndWritesNoMore) {
    std::mt19937 random(21);
    for (int round = 0; round < 20000; ++round) {
        const std::wstring text = RandomText(random);
        std::string expected;
        while (expected.size() < text.size() && static_cast<std::uint32_t>(text[expected.size()]) < 0x80)
            expected += static_cast<char>(text[expected.size()]);
        std::string out(text.size() + 1, '#');
        ASSERT_EQ(qv::NarrowAscii(text.data(), text.size(), out.data()), expected.size());
        ASSERT_EQ(out.substr(0, expected.size()), expected);
        ASSERT_EQ(out.back(), '#');
    }
}

TEST(Ascii, WideningGoesUpToTheFirstOtherByteAndWritesNoMore) {
    std::mt19937 random(22);
    for (int round = 0; round < 20000; ++round) {
        std::string bytes;
        for (const wchar_t character : RandomText(random))
            bytes += static_cast<char>(static_cast<std::uint32_t>(character) < 0x80 ? character
                                                                                    : 0x80 | character);
        std::wstring expected;
        while (expected.size() < bytes.size() && static_cast<unsigned char>(bytes[expected.size()]) < 0x80)
            expected += static_cast<wchar_t>(bytes[expected.size()]);
        std::wstring out(bytes.size() + 1, L'#');
        ASSERT_EQ(qv::WidenAscii(bytes.data(), bytes.size(), out.data()), expected.size());
        ASSERT_EQ(out.substr(0, expected.size()), expected);
        ASSERT_EQ(out.back(), L'#');
    }
}

}  // namespace
