#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

#include <QVFoundation/QVData.h>
#include <QVFoundation/QVEncoding.h>
#include <QVFoundation/QVString.h>
#include <QVFoundation/QVTemporaryObjectsPool.h>

#include "support/failing_allocator.h"
#include "support/log_capture.h"
#include "support/strings.h"

namespace {

using namespace std::string_literals;
using qv::LocalPool;
using qv::Owned;
using qvtest::MakeString;
using qvtest::TextOf;

constexpr uint32_t kNoOrder = 0;
constexpr uint32_t kLittle = 1;
constexpr uint32_t kBig = 2;

constexpr QVEncodingInfo Plain(uint32_t encoding, uint32_t order = kNoOrder) {
    return {encoding, order, 0};
}

constexpr QVEncodingInfo Marked(uint32_t encoding, uint32_t order = kNoOrder) {
    return {encoding, order, 1};
}

std::string BytesOf(void* data) {
    const auto* const bytes = static_cast<const char*>(QVDataGetImutableBuffer(data));
    return bytes == nullptr ? "" : std::string(bytes, QVDataGetSize(data));
}

std::string Encoded(const std::wstring& text, QVEncodingInfo info) {
    const Owned string{QVStringCreateWithWideStringAndLength(text.data(), text.size())};
    const Owned data{QVStringMakeData(string.Get(), info)};
    EXPECT_TRUE(data);
    return BytesOf(data.Get());
}

constexpr wchar_t kNoString[] = L"(null)";

std::wstring Decoded(const std::string& bytes, QVEncodingInfo info) {
    const Owned data{QVDataCreate(bytes.data(), bytes.size())};
    const Owned string{QVStringCreateWithData(data.Get(), info)};
    return string ? TextOf(string) : kNoString;
}

// ---- strings to bytes ----

TEST(StringToBytes, EveryEncodingHasItsNumber) {
    const std::wstring text = L"a\u3042";
    EXPECT_EQ(Encoded(text, Plain(1)), "a\x82\xA0");
    EXPECT_EQ(Encoded(text, Plain(2)), "a\x1B$B$\"\x1B(B");
    EXPECT_EQ(Encoded(text, Plain(3)), "a\xA4\xA2");
    EXPECT_EQ(Encoded(text, Plain(4)), "a\xE3\x81\x82");
    EXPECT_EQ(Encoded(text, Plain(5, kLittle)), "a\0\x42\x30"s);
    EXPECT_EQ(Encoded(text, Plain(5, kBig)), "\0a\x30\x42"s);
    EXPECT_EQ(Encoded(text, Plain(6, kLittle)), "a\0\0\0\x42\x30\0\0"s);
    EXPECT_EQ(Encoded(text, Plain(6, kBig)), "\0\0\0a\0\0\x30\x42"s);
}

TEST(StringToBytes, EveryOtherNumberIsMacRoman) {
    for (const uint32_t encoding : {0U, 7U, 100U, 0xFFFFFFFFU})
        EXPECT_EQ(Encoded(L"\u00E9\u20AC", Plain(encoding)), "\x8E\xDB");
}

TEST(StringToBytes, TheMarkStandsFirst) {
    EXPECT_EQ(Encoded(L"abc", Marked(4)),
              "\xEF\xBB\xBF"
              "abc");
    EXPECT_EQ(Encoded(L"abc", Marked(5, kBig)), "\xFE\xFF\0a\0b\0c"s);
    EXPECT_EQ(Encoded(L"a", Marked(5, kLittle)),
              "\xFF\xFE"
              "a\0"s);
    EXPECT_EQ(Encoded(L"a", Marked(6, kBig)), "\0\0\xFE\xFF\0\0\0a"s);
    EXPECT_EQ(Encoded(L"a", Marked(6, kLittle)), "\xFF\xFE\0\0a\0\0\0"s);
    for (const uint32_t encoding : {0U, 1U, 2U, 3U, 7U})
        EXPECT_EQ(Encoded(L"a", Marked(encoding, kBig)), "a");
}

TEST(StringToBytes, AnEmptyStringIsTheMarkAlone) {
    EXPECT_EQ(Encoded(L"", Marked(4)), "\xEF\xBB\xBF");
    EXPECT_EQ(Encoded(L"", Marked(5, kBig)), "\xFE\xFF");
    for (uint32_t encoding = 0; encoding < 8; ++encoding)
        EXPECT_EQ(Encoded(L"", Plain(encoding, kLittle)), "");
}

TEST(StringToBytes, WithoutAByteOrderTheLittleEndianMarkStandsBeforeMacRoman) {
    for (const uint32_t order : {0U, 3U, 0xFFFFFFFFU}) {
        EXPECT_EQ(Encoded(L"\u00E9", Marked(5, order)), "\xFF\xFE\x8E");
        EXPECT_EQ(Encoded(L"\u00E9", Marked(6, order)), "\xFF\xFE\0\0\x8E"s);
        EXPECT_EQ(Encoded(L"\u00E9", Plain(5, order)), "\x8E");
        EXPECT_EQ(Encoded(L"\u00E9", Plain(6, order)), "\x8E");
    }
}

TEST(StringToBytes, TheByteOrderOfUtf8DoesNotMatter) {
    for (const uint32_t order : {0U, 1U, 2U, 3U})
        EXPECT_EQ(Encoded(L"\u00E9", Marked(4, order)), "\xEF\xBB\xBF\xC3\xA9");
}

TEST(StringToBytes, EachCharacterThatDoesNotFitIsOneQuestionMark) {
    const std::wstring text = {L'a', 0xD800, 0x110000, -1, L'b'};
    EXPECT_EQ(Encoded(text, Plain(4)), "a???b");
    EXPECT_EQ(Encoded(text, Plain(5, kLittle)), "a\0?\0?\0?\0b\0"s);
    EXPECT_EQ(Encoded(text, Plain(6, kLittle)), "a\0\0\0?\0\0\0?\0\0\0?\0\0\0b\0\0\0"s);
    for (const uint32_t encoding : {0U, 1U, 2U, 3U}) {
        EXPECT_EQ(Encoded(text, Plain(encoding)), "a???b");
        EXPECT_EQ(Encoded(L"a\U0001F600b", Plain(encoding)), "a?b");
    }
}

TEST(StringToBytes, ZeroesAreCharacters) {
    for (const uint32_t encoding : {0U, 1U, 2U, 3U, 4U})
        EXPECT_EQ(Encoded(L"a\0b"s, Plain(encoding)), "a\0b"s);
    EXPECT_EQ(Encoded(L"\0a"s, Plain(5, kBig)), "\0\0\0a"s);
}

TEST(StringToBytes, BothFunctionsDoTheSame) {
    const Owned string = MakeString(L"\u00E9");
    const Owned data{QVStringCreateDataMac(string.Get(), Marked(4))};
    EXPECT_EQ(BytesOf(data.Get()), "\xEF\xBB\xBF\xC3\xA9");
    EXPECT_EQ(QVGetRetainCount(data.Get()), 1U);
}

// The room for UTF-8 is guessed from the length of the text first; every relation of the two must come out
// right.
TEST(StringToBytes, Utf8OfEveryMixtureOfSizes) {
    for (size_t ascii = 0; ascii <= 70; ascii += 7) {
        for (size_t wide = 0; wide <= 70; wide += 5) {
            for (const auto& [character, bytes] :
                 {std::pair{L'\u00E9', "\xC3\xA9"}, std::pair{L'\u3042', "\xE3\x81\x82"},
                  std::pair{L'\U0001F600', "\xF0\x9F\x98\x80"},
                  std::pair{static_cast<wchar_t>(0xD800), "?"}}) {
                std::string expected(ascii, 'a');
                for (size_t i = 0; i < wide; ++i)
                    expected += bytes;
                ASSERT_EQ(Encoded(std::wstring(ascii, L'a') + std::wstring(wide, character), Plain(4)),
                          expected);
            }
        }
    }
}

TEST(StringToBytes, NullGivesNull) {
    EXPECT_EQ(QVStringMakeData(nullptr, Plain(4)), nullptr);
    EXPECT_EQ(QVStringCreateDataMac(nullptr, Marked(4)), nullptr);
}

// ---- bytes to strings ----

TEST(BytesToString, EveryEncodingHasItsNumber) {
    EXPECT_EQ(Decoded("a\x82\xA0", Plain(1)), L"a\u3042");
    EXPECT_EQ(Decoded("a\x1B$B$\"\x1B(B", Plain(2)), L"a\u3042");
    EXPECT_EQ(Decoded("a\xA4\xA2", Plain(3)), L"a\u3042");
    EXPECT_EQ(Decoded("a\xE3\x81\x82", Plain(4)), L"a\u3042");
    EXPECT_EQ(Decoded("a\0\x42\x30"s, Plain(5, kLittle)), L"a\u3042");
    EXPECT_EQ(Decoded("\0a\x30\x42"s, Plain(5, kBig)), L"a\u3042");
    EXPECT_EQ(Decoded("a\0\0\0\x42\x30\0\0"s, Plain(6, kLittle)), L"a\u3042");
    EXPECT_EQ(Decoded("\0\0\0a\0\0\x30\x42"s, Plain(6, kBig)), L"a\u3042");
    for (const uint32_t encoding : {0U, 7U, 0xFFFFFFFFU})
        EXPECT_EQ(Decoded("\x8E\xDB", Plain(encoding)), L"\u00E9\u20AC");
}

TEST(BytesToString, TheMarkIsSkippedUnseen) {
    EXPECT_EQ(Decoded("\xFF\xFE\x61\x00"s, Marked(5, kLittle)), L"a");
    EXPECT_EQ(Decoded("xya\0"s, Marked(5, kLittle)), L"a");
    EXPECT_EQ(Decoded("\xEF\xBB\xBFz", Marked(4)), L"z");
    EXPECT_EQ(Decoded("xyz!", Marked(4)), L"!");
    EXPECT_EQ(Decoded("wxyz\0\0\0a"s, Marked(6, kBig)), L"a");
    for (const uint32_t encoding : {0U, 1U, 2U, 3U, 7U})
        EXPECT_EQ(Decoded("abc", Marked(encoding)), L"abc");
}

TEST(BytesToString, SkippingEndsWithTheData) {
    for (const char* bytes : {"x", "xy", "xyz"})
        EXPECT_EQ(Decoded(bytes, Marked(4)), L"");
    EXPECT_EQ(Decoded("x", Marked(5, kBig)), L"");
    EXPECT_EQ(Decoded("xy", Marked(5, kBig)), L"");
    EXPECT_EQ(Decoded("xyz", Marked(6, kBig)), L"");
    EXPECT_EQ(Decoded("wxyz", Marked(6, kBig)), L"");
}

TEST(BytesToString, WithoutTheFlagAMarkIsACharacter) {
    EXPECT_EQ(Decoded("\xEF\xBB\xBFz", Plain(4)), L"\uFEFFz");
    EXPECT_EQ(Decoded("\xFE\xFF\0z"s, Plain(5, kBig)), L"\uFEFFz");
}

TEST(BytesToString, WithoutAByteOrderUtf16AndUtf32AreShiftJis) {
    for (const uint32_t order : {0U, 3U, 0xFFFFFFFFU}) {
        for (const uint32_t encoding : {5U, 6U})
            EXPECT_EQ(Decoded("a\x82\xA0", Plain(encoding, order)), L"a\u3042");
        EXPECT_EQ(Decoded("xya\x82\xA0", Marked(5, order)), L"a\u3042");
        EXPECT_EQ(Decoded("wxyza\x82\xA0", Marked(6, order)), L"a\u3042");
    }
}

TEST(BytesToString, WhatIsNotValidGivesNull) {
    EXPECT_EQ(Decoded("a\xFF", Plain(4)), kNoString);
    EXPECT_EQ(Decoded("\xC0\x80", Plain(4)), kNoString);
    EXPECT_EQ(Decoded(std::string(100, 'a').append("\xE3\x81"), Plain(4)), kNoString);
    EXPECT_EQ(Decoded("a", Plain(5, kLittle)), kNoString);
    EXPECT_EQ(Decoded("\0\xD8"s, Plain(5, kLittle)), kNoString);
    EXPECT_EQ(Decoded("abc", Plain(6, kLittle)), kNoString);
    EXPECT_EQ(Decoded("\0\0\x11\0"s, Plain(6, kLittle)), kNoString);
    EXPECT_EQ(Decoded("\x82", Plain(1)), kNoString);
    EXPECT_EQ(Decoded("\x80", Plain(2)), kNoString);
    EXPECT_EQ(Decoded("\xA4", Plain(3)), kNoString);
}

TEST(BytesToString, DataWithoutABufferGivesNull) {
    const Owned empty{QVDataCreate(nullptr, 0)};
    const Owned nothing{QVDataCreateNoCopy(nullptr, 0, 0)};
    for (uint32_t encoding = 0; encoding < 8; ++encoding) {
        EXPECT_EQ(QVStringCreateWithData(empty.Get(), Plain(encoding, kLittle)), nullptr);
        EXPECT_EQ(QVStringCreateWithData(nothing.Get(), Marked(encoding, kLittle)), nullptr);
        EXPECT_EQ(QVStringCreateWithData(nullptr, Plain(encoding, kLittle)), nullptr);
    }
}

TEST(BytesToString, DataWithABufferOfNoBytesIsAnEmptyString) {
    char bytes[1] = {};
    const Owned data{QVDataCreateNoCopy(bytes, 0, 0)};
    const Owned string{QVStringCreateWithData(data.Get(), Plain(4))};
    ASSERT_TRUE(string);
    EXPECT_EQ(QVStringGetLength(string.Get()), 0U);
}

TEST(BytesToString, WhatWasEncodedComesBack) {
    std::wstring text = L"\uFEFF\0x\u00E9"s;
    for (wchar_t c = 0x20; c < 0x10FFFF; c += 0x111) {
        if (c < 0xD800 || c > 0xDFFF) text += c;
    }
    for (const QVEncodingInfo info :
         {Marked(4), Marked(5, kLittle), Marked(5, kBig), Marked(6, kLittle), Marked(6, kBig), Plain(4),
          Plain(5, kLittle), Plain(5, kBig), Plain(6, kLittle), Plain(6, kBig)}) {
        EXPECT_EQ(Decoded(Encoded(text, info), info), text);
    }
}

// ---- UTF-8 for the caller ----

TEST(UTF8String, IsATemporaryZeroTerminatedText) {
    const std::size_t before = qvtest::LiveAllocations();
    {
        const LocalPool pool;
        EXPECT_STREQ(QVStringGetUTF8String(MakeString(L"a\u00E9\u3042").Get()), "a\xC3\xA9\xE3\x81\x82");
        EXPECT_STREQ(QVStringGetUTF8String(MakeString(L"").Get()), "");
        const std::wstring longText(1000, L'\u3042');
        EXPECT_EQ(std::strlen(QVStringGetUTF8String(MakeString(longText.c_str()).Get())), 3000U);
    }
    EXPECT_EQ(qvtest::LiveAllocations(), before);
}

TEST(UTF8String, ANullStringIsAnEmptyText) {
    const LocalPool pool;
    EXPECT_STREQ(QVStringGetUTF8String(nullptr), "");
}

TEST(UTF8String, EachCharacterThatUtf8CannotHoldIsAQuestionMark) {
    const LocalPool pool;
    const std::wstring text = {L'a', 0xDC00, L'b'};
    EXPECT_STREQ(QVStringGetUTF8String(MakeString(text.c_str()).Get()), "a?b");
}

// ---- the encoder with the zero bytes ----

TEST(EncodeWideString, TwoZeroBytesACharacterComeFirst) {
    void* data = nullptr;
    unsigned long second = 5;
    EXPECT_EQ(QVEncodeWideStringWithUTF8(L"\u00E9", 1, &data, &second), QVNoErr);
    EXPECT_EQ(BytesOf(data), "\0\0\xC3\xA9"s);
    EXPECT_EQ(second, 0U);
    EXPECT_EQ(QVGetRetainCount(data), 1U);
    QVRelease(data);
}

TEST(EncodeWideString, AnyValueIsEncoded) {
    const wchar_t characters[] = {L'a', 0x7FF, 0xD800, 0x10FFFF, 0x200000, 0x7FFFFFFF, -2};
    void* data = nullptr;
    ASSERT_EQ(QVEncodeWideStringWithUTF8(characters, 7, &data, nullptr), QVNoErr);
    EXPECT_EQ(BytesOf(data),
              std::string(14, '\0').append("a\xDF\xBF\xED\xA0\x80\xF4\x8F\xBF\xBF\xF8\x88\x80\x80\x80"
                                           "\xFD\xBF\xBF\xBF\xBF\xBF\x7E"));
    QVRelease(data);
}

TEST(EncodeWideString, NoCharactersGiveEmptyData) {
    for (const wchar_t* characters : {static_cast<const wchar_t*>(nullptr), L""}) {
        void* data = nullptr;
        ASSERT_EQ(QVEncodeWideStringWithUTF8(characters, 0, &data, nullptr), QVNoErr);
        ASSERT_NE(data, nullptr);
        EXPECT_EQ(QVDataGetSize(data), 0U);
        QVRelease(data);
    }
}

TEST(EncodeWideString, BadArgumentsClearBothResults) {
    void* data = &data;
    unsigned long second = 5;
    EXPECT_EQ(QVEncodeWideStringWithUTF8(nullptr, 1, &data, &second), QVErrParam);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(second, 0U);
    second = 5;
    EXPECT_EQ(QVEncodeWideStringWithUTF8(L"a", 1, nullptr, &second), QVErrParam);
    EXPECT_EQ(second, 0U);
}

TEST(EncodeWideString, ACountBeyondAllMemoryIsOutOfMemory) {
    const qvtest::LogCapture log;
    void* data = &data;
    for (const unsigned long count : {~0UL, ~0UL / 2 + 1, ~0UL / 2}) {
        EXPECT_EQ(QVEncodeWideStringWithUTF8(L"a", count, &data, nullptr), QVErrMemory);
        EXPECT_EQ(data, nullptr);
    }
}

// ---- without memory ----

TEST(EncodingWithoutMemory, StringsToBytesGiveNull) {
    const qvtest::LogCapture log;
    const Owned string = MakeString(std::wstring(500, L'\u3042').c_str());
    for (uint32_t encoding = 0; encoding < 8; ++encoding) {
        const Owned expected{QVStringMakeData(string.Get(), Marked(encoding, kLittle))};
        const std::size_t before = qvtest::LiveAllocations();
        std::size_t nulls = 0;
        const std::size_t failures = qvtest::FailEachAllocation([&] {
            const Owned data{QVStringMakeData(string.Get(), Marked(encoding, kLittle))};
            nulls += data ? 0 : 1;
        });
        EXPECT_GT(failures, 0U);
        EXPECT_EQ(nulls, failures) << encoding;
        EXPECT_EQ(qvtest::LiveAllocations(), before) << encoding;
    }
}

TEST(EncodingWithoutMemory, BytesToStringsGiveNull) {
    const qvtest::LogCapture log;
    const std::wstring text(500, L'\u3042');
    for (uint32_t encoding = 0; encoding < 8; ++encoding) {
        const std::string bytes = Encoded(text, Plain(encoding, kLittle));
        const Owned data{QVDataCreate(bytes.data(), bytes.size())};
        const std::size_t before = qvtest::LiveAllocations();
        std::size_t nulls = 0;
        const std::size_t failures = qvtest::FailEachAllocation([&] {
            const Owned string{QVStringCreateWithData(data.Get(), Plain(encoding, kLittle))};
            nulls += string ? 0 : 1;
        });
        EXPECT_GT(failures, 0U);
        EXPECT_EQ(nulls, failures) << encoding;
        EXPECT_EQ(qvtest::LiveAllocations(), before) << encoding;
    }
}

TEST(EncodingWithoutMemory, TheUtf8StringIsRightOrEmptyOrNull) {
    const qvtest::LogCapture log;
    const std::wstring text(500, L'\u3042');
    const Owned string = MakeString(text.c_str());
    const LocalPool pool;
    qvtest::FailEachAllocation([&] {
        const char* const bytes = QVStringGetUTF8String(string.Get());
        if (bytes != nullptr) {
            EXPECT_TRUE(std::strlen(bytes) == 1500 || *bytes == '\0');
        }
    });
}

TEST(EncodingWithoutMemory, TheWideStringEncoderGivesItsCode) {
    const qvtest::LogCapture log;
    const std::wstring text(500, L'\u3042');
    const std::size_t before = qvtest::LiveAllocations();
    qvtest::FailEachAllocation([&] {
        void* data = nullptr;
        const int result = QVEncodeWideStringWithUTF8(text.data(), text.size(), &data, nullptr);
        EXPECT_EQ(result, data != nullptr ? QVNoErr : QVErrMemory);
        QVRelease(data);
    });
    EXPECT_EQ(qvtest::LiveAllocations(), before);
}

TEST(EncodingWithoutMemory, NoDataIsToldByTheLog) {
    const qvtest::LogCapture log;
    const Owned string = MakeString(L"a");
    {
        const qvtest::FailAllocation failing(0, true);
        EXPECT_EQ(QVStringMakeData(string.Get(), Plain(4)), nullptr);
    }
    EXPECT_EQ(log.Messages(), std::vector{"Can't allocate the object for the QVDataRef. (size=0)"s});
}

}  // namespace
