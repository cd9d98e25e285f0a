#include "platform/japanese_text.h"

#include <gtest/gtest.h>
#include <string>
#include <thread>

#include "support/failing_allocator.h"

using namespace std::string_literals;

namespace {

using qv::DecodeJapanese;
using qv::EncodeJapanese;
using qv::JapaneseEncoding;

constexpr JapaneseEncoding kAll[] = {JapaneseEncoding::kShiftJis, JapaneseEncoding::kIso2022Jp,
                                     JapaneseEncoding::kEucJp};

constexpr wchar_t kWaveDash = 0x301C;
constexpr wchar_t kFullWidthTilde = 0xFF5E;

TEST(JapaneseText, KnownBytes) {
    const std::wstring text = L"\u65E5\u672C\u8A9E \u3042\u30A2A";
    const std::string shiftJis = "\x93\xFA\x96\x7B\x8C\xEA \x82\xA0\x83\x41\x41";
    const std::string eucJp = "\xC6\xFC\xCB\xDC\xB8\xEC \xA4\xA2\xA5\xA2\x41";
    const std::string iso2022Jp = "\x1B$B\x46\x7C\x4B\x5C\x38\x6C\x1B(B \x1B$B\x24\x22\x25\x22\x1B(B\x41";
    EXPECT_EQ(EncodeJapanese(JapaneseEncoding::kShiftJis, text), shiftJis);
    EXPECT_EQ(EncodeJapanese(JapaneseEncoding::kEucJp, text), eucJp);
    EXPECT_EQ(EncodeJapanese(JapaneseEncoding::kIso2022Jp, text), iso2022Jp);
    EXPECT_EQ(DecodeJapanese(JapaneseEncoding::kShiftJis, shiftJis), text);
    EXPECT_EQ(DecodeJapanese(JapaneseEncoding::kEucJp, eucJp), text);
    EXPECT_EQ(DecodeJapanese(JapaneseEncoding::kIso2022Jp, iso2022Jp), text);
}

TEST(JapaneseText, AsciiIsItselfWithBackslashAndTilde) {
    std::string ascii;
    std::wstring wide;
    for (char c = 0; c < 0x7F; ++c) {
        if (c == 0x0E || c == 0x0F || c == 0x1B) continue;  // shifts and escapes
        ascii += c;
        wide += static_cast<wchar_t>(c);
    }
    for (const JapaneseEncoding encoding : kAll) {
        EXPECT_EQ(EncodeJapanese(encoding, wide), ascii);
        EXPECT_EQ(DecodeJapanese(encoding, ascii), wide);
    }
    EXPECT_EQ(DecodeJapanese(JapaneseEncoding::kShiftJis, "\x5C\x7E"), L"\\~");
}

TEST(JapaneseText, HalfWidthKatakanaAndVendorCharactersFitShiftJis) {
    EXPECT_EQ(DecodeJapanese(JapaneseEncoding::kShiftJis, "\xB1\x87\x40"), L"\uFF71\u2460");
    EXPECT_EQ(EncodeJapanese(JapaneseEncoding::kShiftJis, L"\uFF71\u2460"), "\xB1\x87\x40");
    EXPECT_EQ(EncodeJapanese(JapaneseEncoding::kEucJp, L"\uFF71"), "\x8E\xB1");
}

TEST(JapaneseText, WaveDashAndFullWidthTildeBothFit) {
    const std::wstring both = {kWaveDash, kFullWidthTilde};
    EXPECT_EQ(EncodeJapanese(JapaneseEncoding::kShiftJis, both), "\x81\x60\x81\x60");
    EXPECT_EQ(EncodeJapanese(JapaneseEncoding::kIso2022Jp, both), "\x1B$B\x21\x41\x21\x41\x1B(B");
    EXPECT_EQ(EncodeJapanese(JapaneseEncoding::kEucJp, {&kWaveDash, 1}), "\xA1\xC1");
    EXPECT_EQ(EncodeJapanese(JapaneseEncoding::kEucJp, both)->find('?'), std::string::npos);
}

TEST(JapaneseText, EachCharacterThatDoesNotFitIsOneQuestionMark) {
    // An emoji, a combining mark, a lone surrogate, values beyond Unicode and an invisible tag.
    const std::wstring text = {L'a', 0x1F600, L'b', 0x0301, 0xD800, 0x110000, -1, 0xE0041, 0xE0001, L'c'};
    for (const JapaneseEncoding encoding : kAll)
        EXPECT_EQ(EncodeJapanese(encoding, text), "a?b??????c");
}

TEST(JapaneseText, Iso2022JpEndsInAscii) {
    EXPECT_EQ(EncodeJapanese(JapaneseEncoding::kIso2022Jp, L"\u3042"), "\x1B$B\x24\x22\x1B(B");
    EXPECT_EQ(EncodeJapanese(JapaneseEncoding::kIso2022Jp, L"\u3042\u3042"), "\x1B$B\x24\x22\x24\x22\x1B(B");
    // A question mark is ASCII: the text leaves the double-byte set for it.
    EXPECT_EQ(EncodeJapanese(JapaneseEncoding::kIso2022Jp, L"\u3042\U0001F600"), "\x1B$B\x24\x22\x1B(B?");
    EXPECT_EQ(EncodeJapanese(JapaneseEncoding::kIso2022Jp, L"\U0001F600\u3042"), "?\x1B$B\x24\x22\x1B(B");
}

TEST(JapaneseText, NoTextLeavesAShiftStateToTheNext) {
    ASSERT_NE(DecodeJapanese(JapaneseEncoding::kIso2022Jp, "\x1B$B\x24\x22"), std::nullopt);
    EXPECT_EQ(DecodeJapanese(JapaneseEncoding::kIso2022Jp, "$\""), L"$\"");
    ASSERT_EQ(DecodeJapanese(JapaneseEncoding::kIso2022Jp, "\x1B$B\x24"), std::nullopt);
    EXPECT_EQ(DecodeJapanese(JapaneseEncoding::kIso2022Jp, "$\""), L"$\"");
}

TEST(JapaneseText, BytesThatAreNotValidOrNotWholeAreRefused) {
    EXPECT_EQ(DecodeJapanese(JapaneseEncoding::kShiftJis, "a\x82"), std::nullopt);
    EXPECT_EQ(DecodeJapanese(JapaneseEncoding::kShiftJis, "\x82\x20"), std::nullopt);
    EXPECT_EQ(DecodeJapanese(JapaneseEncoding::kShiftJis, "\xFD"), std::nullopt);
    EXPECT_EQ(DecodeJapanese(JapaneseEncoding::kEucJp, "\xA4"), std::nullopt);
    EXPECT_EQ(DecodeJapanese(JapaneseEncoding::kEucJp, "\xFF"), std::nullopt);
    EXPECT_EQ(DecodeJapanese(JapaneseEncoding::kIso2022Jp, "\x80"), std::nullopt);
}

TEST(JapaneseText, EmptyTextAndZeroesAreFine) {
    for (const JapaneseEncoding encoding : kAll) {
        EXPECT_EQ(EncodeJapanese(encoding, L""), "");
        EXPECT_EQ(DecodeJapanese(encoding, ""), L"");
        EXPECT_EQ(EncodeJapanese(encoding, {L"a\0b", 3}), "a\0b"s);
        EXPECT_EQ(DecodeJapanese(encoding, "a\0b"s), std::wstring(L"a\0b", 3));
    }
}

// Texts are converted in pieces; no piece's edge may show.
TEST(JapaneseText, LongTextsOfEveryLengthSurviveBothWays) {
    for (const JapaneseEncoding encoding : kAll) {
        for (size_t length = 100; length < 1200; length += 7) {
            std::wstring text;
            for (size_t i = 0; i < length; ++i)
                text += i % 5 == 0 ? L'x' : static_cast<wchar_t>(0x3041 + i % 80);
            const auto bytes = EncodeJapanese(encoding, text);
            ASSERT_TRUE(bytes);
            ASSERT_EQ(DecodeJapanese(encoding, *bytes), text) << length;
        }
    }
}

TEST(JapaneseText, ALongTextThatDoesNotFitIsAllQuestionMarks) {
    for (const JapaneseEncoding encoding : kAll)
        EXPECT_EQ(EncodeJapanese(encoding, std::wstring(5000, 0x1F600)), std::string(5000, '?'));
}

TEST(JapaneseText, EveryThreadHasItsOwnShiftState) {
    std::thread threads[4];
    for (std::thread& thread : threads) {
        thread = std::thread([] {
            for (int i = 0; i < 200; ++i) {
                ASSERT_EQ(EncodeJapanese(JapaneseEncoding::kIso2022Jp, L"\u3042a"), "\x1B$B\x24\x22\x1B(Ba");
                ASSERT_EQ(DecodeJapanese(JapaneseEncoding::kIso2022Jp, "\x1B$B\x24\x22\x1B(Ba"), L"\u3042a");
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

TEST(JapaneseText, RunningOutOfMemoryHarmsNoLaterText) {
    const std::wstring text(3000, L'\u3042');
    qvtest::FailEachAllocation([&] {
        try {
            EncodeJapanese(JapaneseEncoding::kIso2022Jp, text);
        } catch (const std::bad_alloc&) {
        }
    });
    EXPECT_EQ(EncodeJapanese(JapaneseEncoding::kIso2022Jp, L"a"), "a");
}

}  // namespace
