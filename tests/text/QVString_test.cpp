#include <cwchar>
#include <gtest/gtest.h>
#include <string>
#include <vector>

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
using Messages = std::vector<std::string>;

constexpr char kNoCStringInstance[] = "Couldn't allocate the instance of QVString.";
constexpr char kNoInstance[] = "Couldn't allocate the instance of the QVString.";
constexpr char kNoBuffer[] = "Couldn't allocate the buffer for the string.";

// A text that does not lie inside its object.
const std::wstring kLong(100, L'x');

std::wstring FromCString(const char* text) {
    return TextOf(Owned{QVStringCreateWithCString(text)});
}

std::wstring SubString(const wchar_t* text, int location, int length) {
    return TextOf(Owned{QVStringCreateSubString(MakeString(text).Get(), QVRange{location, length})});
}

TEST(StringCreation, OneOwnedReferenceOfTypeThree) {
    const Owned string{QVStringCreate()};
    EXPECT_EQ(QVGetTypeID(string.Get()), 3);
    EXPECT_EQ(QVGetRetainCount(string.Get()), 1UL);
    EXPECT_EQ(QVStringGetLength(string.Get()), 0UL);
    EXPECT_STREQ(QVStringGetBuffer(string.Get()), L"");
}

TEST(StringCreation, CStringsAreUtf8) {
    EXPECT_EQ(FromCString(""), L"");
    EXPECT_EQ(FromCString("hello"), L"hello");
    EXPECT_EQ(FromCString("\xC3\xA9\xE3\x81\x82\xF0\x9F\x98\x80"), L"\u00E9\u3042\U0001F600");
    std::string bytes;
    std::wstring text;
    for (int i = 0; i < 1000; ++i) {
        bytes += "a\xE2\x82\xAC";
        text += L"a\u20AC";
        ASSERT_EQ(FromCString(bytes.c_str()), text);
    }
}

TEST(StringCreation, BytesThatAreNotUtf8GiveAnEmptyString) {
    const std::string longStart(200, 'a');
    for (const std::string bad : {"\xFF", "\x80", "\xC3", "\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80"}) {
        EXPECT_EQ(FromCString(("ok" + bad).c_str()), L"");
        EXPECT_EQ(FromCString((longStart + bad).c_str()), L"");
    }
}

TEST(StringCreation, ACountTakesZerosAlong) {
    EXPECT_EQ(TextOf(Owned{QVStringCreateWithCStringAndLength("a\0b", 3)}), L"a\0b"s);
    EXPECT_EQ(TextOf(Owned{QVStringCreateWithCStringAndLength("abc", 2)}), L"ab");
    EXPECT_EQ(TextOf(Owned{QVStringCreateWithWideStringAndLength(L"a\0b", 3)}), L"a\0b"s);
    EXPECT_EQ(TextOf(Owned{QVStringCreateWithWideString(L"a\0b")}), L"a");
}

TEST(StringCreation, NullTextIsEmptyText) {
    EXPECT_EQ(FromCString(nullptr), L"");
    EXPECT_EQ(TextOf(Owned{QVStringCreateWithCStringAndLength(nullptr, 5)}), L"");
    EXPECT_EQ(TextOf(Owned{QVStringCreateWithWideString(nullptr)}), L"");
    EXPECT_EQ(TextOf(Owned{QVStringCreateWithWideStringAndLength(nullptr, 5)}), L"");
}

TEST(StringCreation, TheCharactersAreFollowedByAZero) {
    for (size_t length = 0; length < 70; ++length) {
        const Owned string = MakeString(std::wstring(length, L'x'));
        EXPECT_EQ(std::wcslen(QVStringGetBuffer(string.Get())), length);
    }
}

TEST(StringCreation, AShortStringIsOneAllocation) {
    const size_t before = qvtest::LiveAllocations();
    const Owned string = MakeString(L"twenty-one characters");
    EXPECT_EQ(qvtest::LiveAllocations(), before + 1);
}

TEST(StringCreation, TextsOfTwoToTheThirtyTwoCharactersAreRefused) {
    if constexpr (sizeof(unsigned long) == 8) {
        const qvtest::LogCapture log;
        EXPECT_EQ(QVStringCreateWithWideStringAndLength(L"x", 0x100000000UL), nullptr);
        EXPECT_EQ(QVStringCreateWithCStringAndLength("x", ~0UL), nullptr);
        EXPECT_EQ(log.Messages(), (Messages{kNoInstance, kNoCStringInstance}));
    }
}

TEST(StringCreation, CopiesAreIndependent) {
    const Owned string = MakeString(L"a\0b"s);
    const Owned copy{QVStringCreateCopy(string.Get())};
    EXPECT_NE(copy.Get(), string.Get());
    QVStringAppendString(string.Get(), MakeString(L"c").Get());
    EXPECT_EQ(TextOf(string), L"a\0bc"s);
    EXPECT_EQ(TextOf(copy), L"a\0b"s);
}

TEST(StringSubString, IsClippedAndNeverAnError) {
    EXPECT_EQ(SubString(L"abcdefgh", 5, 10), L"fgh");
    EXPECT_EQ(SubString(L"abcdefgh", 2, 3), L"cde");
    EXPECT_EQ(SubString(L"abcdefgh", 0, 8), L"abcdefgh");
    EXPECT_EQ(SubString(L"abcdefgh", 8, 1), L"");
    EXPECT_EQ(SubString(L"abcdefgh", 9, 1), L"");
    EXPECT_EQ(SubString(L"abcdefgh", 1, 0), L"");
    EXPECT_EQ(SubString(L"abcdefgh", 1, -1), L"");
    EXPECT_EQ(SubString(L"abcdefgh", -1, 3), L"");
    EXPECT_EQ(SubString(L"abcdefgh", 3, 0x7FFFFFFF), L"defgh");
    EXPECT_EQ(SubString(L"abcdefgh", 0x7FFFFFFF, 0x7FFFFFFF), L"");
    EXPECT_EQ(SubString(L"", 0, 1), L"");
}

TEST(StringFormat, FormatsAsTheWideFormattingFunctionsDo) {
    const Owned format = MakeString(L"%d|%ls|%C|%x|%%");
    EXPECT_EQ(TextOf(Owned{QVStringCreateWithFormat(format.Get(), -5, L"text", L'\u3042', 255U)}),
              L"-5|text|\u3042|ff|%");
}

TEST(StringFormat, TheResultEndsAtItsFirstZero) {
    EXPECT_EQ(TextOf(Owned{QVStringCreateWithFormat(MakeString(L"a%Cb").Get(), 0)}), L"a");
    EXPECT_EQ(TextOf(Owned{QVStringCreateWithFormat(MakeString(L"a\0b"s).Get())}), L"a");
    EXPECT_EQ(TextOf(Owned{QVStringCreateWithFormat(MakeString(L"").Get())}), L"");
}

TEST(StringFormat, TheBufferGrowsWithTheResult) {
    for (const size_t length : {1022U, 1023U, 1024U, 2047U, 2048U, 100000U}) {
        const std::wstring text(length, L'y');
        EXPECT_EQ(TextOf(Owned{QVStringCreateWithFormat(MakeString(L"%ls").Get(), text.c_str())}), text);
    }
    const std::wstring format(5000, L'f');
    EXPECT_EQ(TextOf(Owned{QVStringCreateWithFormat(MakeString(format).Get())}), format);
}

TEST(StringFormat, WhatCannotBeConvertedEndsTheText) {
    EXPECT_EQ(TextOf(Owned{QVStringCreateWithFormat(MakeString(L"abc%sdef").Get(), "\xFF\xFF")}), L"abc");
}

TEST(StringFormat, WithoutAFormatOrMemoryThereIsNoString) {
    const qvtest::LogCapture log;
    EXPECT_EQ(QVStringCreateWithFormat(nullptr), nullptr);
    const Owned format = MakeString(L"x");
    {
        const qvtest::FailAllocation failing(0);
        EXPECT_EQ(QVStringCreateWithFormat(format.Get()), nullptr);
    }
    EXPECT_EQ(log.Messages(), Messages{});
    {
        const qvtest::FailAllocation failing(1);
        EXPECT_EQ(QVStringCreateWithFormat(format.Get()), nullptr);
    }
    EXPECT_EQ(log.Messages(), Messages{kNoInstance});
}

TEST(StringHash, ListsTheBytesOfTheHashInMemoryOrder) {
    const QVHashValue128 emptyTextHash = {0xD98C1DD4U, 0x04B2008FU, 0x980980E9U, 0x7E42F8ECU};
    EXPECT_EQ(TextOf(Owned{QVStringCreateWithHashValue128(emptyTextHash)}),
              L"D41D8CD98F00B204E9800998ECF8427E");
}

TEST(StringAccess, NoCharacterStandsAtTheLengthOrBeyond) {
    const Owned string = MakeString(L"ab");
    EXPECT_EQ(QVStringGetCharacterAtIndex(string.Get(), 0), L'a');
    EXPECT_EQ(QVStringGetCharacterAtIndex(string.Get(), 1), L'b');
    EXPECT_EQ(QVStringGetCharacterAtIndex(string.Get(), 2), L'\0');
    EXPECT_EQ(QVStringGetCharacterAtIndex(string.Get(), ~0UL), L'\0');
}

}  // namespace
