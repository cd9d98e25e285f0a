#include <cwchar>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

#include <QVFoundation/QVString.h>

#include "support/environment.h"
#include "support/failing_allocator.h"
#include "support/log_capture.h"
#include "support/strings.h"
#include "text/QVStringImpl.h"

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

TEST(StringCreation, BytesThatAreNotUtf8LeaveNoRoomBehind) {
    std::string bad(1000, 'a');
    bad += '\xFF';
    const size_t before = qvtest::LiveAllocations();
    const Owned string{QVStringCreateWithCString(bad.c_str())};
    EXPECT_EQ(qvtest::LiveAllocations(), before + 1);
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

TEST(StringOrder, IsThatOfWcscmp) {
    const Owned abc = MakeString(L"abc");
    EXPECT_LT(QVStringCompare(abc.Get(), MakeString(L"abd").Get()), 0);
    EXPECT_GT(QVStringCompare(abc.Get(), MakeString(L"ab").Get()), 0);
    EXPECT_EQ(QVStringCompare(abc.Get(), MakeString(L"abc").Get()), 0);
    EXPECT_EQ(QVStringCompare(MakeString(L"abc\0x"s).Get(), MakeString(L"abc\0y"s).Get()), 0);
    EXPECT_NE(QVStringCompare(abc.Get(), MakeString(L"ABC").Get()), 0);
}

TEST(StringOrder, CaseInsensitiveComparesTheUpperCaseForms) {
    const Owned abc = MakeString(L"aBc");
    EXPECT_EQ(QVStringCaseInsensitiveCompare(abc.Get(), MakeString(L"AbC").Get()), 0);
    EXPECT_LT(QVStringCaseInsensitiveCompare(abc.Get(), MakeString(L"abd").Get()), 0);
    EXPECT_GT(QVStringCaseInsensitiveCompare(abc.Get(), MakeString(L"ab").Get()), 0);
    EXPECT_EQ(QVStringCaseInsensitiveCompare(abc.Get(), MakeString(L"ABC\0z"s).Get()), 0);
    // "_" lies between the upper-case and the lower-case letters.
    EXPECT_GT(QVStringCaseInsensitiveCompare(MakeString(L"_").Get(), MakeString(L"a").Get()), 0);
}

TEST(StringOrder, NullStandsBelowEveryString) {
    const Owned empty = MakeString(L"");
    for (const auto compare : {QVStringCompare, QVStringCaseInsensitiveCompare}) {
        EXPECT_EQ(compare(nullptr, nullptr), 0);
        EXPECT_LT(compare(nullptr, empty.Get()), 0);
        EXPECT_GT(compare(empty.Get(), nullptr), 0);
    }
}

TEST(StringOrder, LeavesNothingInThePool) {
    const LocalPool pool;
    const Owned text = MakeString(kLong);
    const size_t before = qvtest::LiveAllocations();
    EXPECT_EQ(QVStringCaseInsensitiveCompare(text.Get(), text.Get()), 0);
    EXPECT_EQ(qvtest::LiveAllocations(), before);
}

TEST(StringCase, MapsEachCharacterByItself) {
    const LocalPool pool;
    const Owned text = MakeString(L"aZ9\0z"s);
    EXPECT_EQ(TextOf(QVStringUpperCaseString(text.Get())), L"AZ9\0Z"s);
    EXPECT_EQ(TextOf(QVStringLowerCaseString(text.Get())), L"az9\0z"s);
    EXPECT_EQ(TextOf(text), L"aZ9\0z"s);
    const std::wstring wild = {static_cast<wchar_t>(-1), static_cast<wchar_t>(0x7FFFFFFF), L'a'};
    EXPECT_EQ(TextOf(QVStringUpperCaseString(MakeString(wild).Get())).size(), 3U);
}

// The C locale knows the letters of ASCII only.
TEST(StringCase, FollowsTheLocale) {
    const LocalPool pool;
    const Owned text = MakeString(L"\u00E9\u03C9");
    EXPECT_EQ(TextOf(QVStringUpperCaseString(text.Get())), L"\u00E9\u03C9");
    const Owned capitals = MakeString(L"\u00C9\u03A9");
    EXPECT_NE(QVStringCaseInsensitiveCompare(text.Get(), capitals.Get()), 0);
    const qvtest::ScopedLocale locale("C.UTF-8");
    EXPECT_EQ(TextOf(QVStringUpperCaseString(text.Get())), L"\u00C9\u03A9");
    EXPECT_EQ(TextOf(QVStringLowerCaseString(capitals.Get())), L"\u00E9\u03C9");
    EXPECT_EQ(QVStringCaseInsensitiveCompare(text.Get(), capitals.Get()), 0);
}

TEST(StringPath, LastComponent) {
    const LocalPool pool;
    const auto last = [](const std::wstring& path) {
        return TextOf(QVStringLastPathComponent(MakeString(path).Get()));
    };
    EXPECT_EQ(last(L"/usr/lib"), L"lib");
    EXPECT_EQ(last(L"/usr/lib/"), L"lib");
    EXPECT_EQ(last(L"a/" + kLong), kLong);
}

TEST(StringPath, DeletingTheLastComponentKeepsTheSeparator) {
    const LocalPool pool;
    EXPECT_EQ(TextOf(QVStringByDeletingLastPathComponent(MakeString(L"/usr/lib").Get())), L"/usr/");
    EXPECT_EQ(TextOf(QVStringByDeletingLastPathComponent(MakeString(L"name").Get())), L"");
}

TEST(StringPath, AppendingComponentsAndExtensions) {
    const LocalPool pool;
    const auto component = [](const std::wstring& path, const std::wstring& name) {
        return TextOf(QVStringByAppendingPathComponent(MakeString(path).Get(), MakeString(name).Get()));
    };
    const auto extension = [](const std::wstring& path, const std::wstring& name) {
        return TextOf(QVStringByAppendingPathExtension(MakeString(path).Get(), MakeString(name).Get()));
    };
    EXPECT_EQ(component(L"a", L"b"), L"a/b");
    EXPECT_EQ(component(L"a/", L"/b"), L"a//b");
    EXPECT_EQ(component(L"", L"b"), L"b");
    EXPECT_EQ(component(L"a", L"b\0c"s), L"a/b");
    EXPECT_EQ(component(kLong, kLong), kLong + L"/" + kLong);
    EXPECT_EQ(extension(L"file", L"txt"), L"file.txt");
    EXPECT_EQ(extension(L"file.", L"txt"), L"file.txt");
    EXPECT_EQ(extension(L"file", L".txt"), L"file.txt");
    EXPECT_EQ(extension(L"", L"txt"), L"txt");
}

TEST(StringPath, ANullComponentGivesACopy) {
    const LocalPool pool;
    const Owned path = MakeString(L"a");
    EXPECT_EQ(TextOf(QVStringByAppendingPathComponent(path.Get(), nullptr)), L"a");
    EXPECT_EQ(TextOf(QVStringByAppendingPathExtension(path.Get(), nullptr)), L"a");
}

TEST(StringPath, TheFirstTildeBecomesTheHomeDirectory) {
    const LocalPool pool;
    const auto expanded = [](const std::wstring& path) {
        return TextOf(QVStringByExpandingTildeInPath(MakeString(path).Get()));
    };
    const qvtest::ScopedVariable home("HOME", "/home/\xC3\xA9");
    EXPECT_EQ(expanded(L"~/x"), L"/home/\u00E9/x");
    EXPECT_EQ(expanded(L"a~b~c"), L"a/home/\u00E9b~c");
    EXPECT_EQ(expanded(L"~"), L"/home/\u00E9");
    EXPECT_EQ(expanded(L"a\0b"s), L"a\0b"s);
    EXPECT_EQ(expanded(L"a\0b~c\0d"s), L"a/home/\u00E9c");
    EXPECT_EQ(expanded(L"~" + kLong), L"/home/\u00E9" + kLong);
}

TEST(StringPath, AHomeThatIsNoTextIsNone) {
    const LocalPool pool;
    const qvtest::ScopedVariable home("HOME", "/\xFF");
    EXPECT_EQ(TextOf(QVStringByExpandingTildeInPath(MakeString(L"~/x").Get())), L"~/x");
}

TEST(StringTemporaries, BelongToThePoolAlone) {
    const LocalPool pool;
    const Owned text = MakeString(L"a/~");
    for (void* temporary :
         {QVStringUpperCaseString(text.Get()), QVStringLowerCaseString(text.Get()),
          QVStringLastPathComponent(text.Get()), QVStringByDeletingLastPathComponent(text.Get()),
          QVStringByAppendingPathComponent(text.Get(), text.Get()),
          QVStringByAppendingPathExtension(text.Get(), text.Get()),
          QVStringByExpandingTildeInPath(text.Get())}) {
        EXPECT_EQ(QVGetRetainCount(temporary), 1UL);
        EXPECT_NE(temporary, text.Get());
    }
}

TEST(StringHex, ReadsTheLeadingDigits) {
    const auto value = [](const wchar_t* text) { return QVStringHexUIntValue(MakeString(text).Get()); };
    EXPECT_EQ(value(L"1Fz9"), 31UL);
    EXPECT_EQ(value(L"0x1F"), 0UL);
    EXPECT_EQ(value(L""), 0UL);
    EXPECT_EQ(value(L"123456789"), 0x23456789UL);
}

TEST(StringAppend, TakesTheOtherTextUpToItsFirstZero) {
    const Owned string = MakeString(L"a\0b"s);
    QVStringAppendString(string.Get(), MakeString(L"c\0d"s).Get());
    EXPECT_EQ(TextOf(string), L"a\0bc"s);
    QVStringAppendString(string.Get(), nullptr);
    EXPECT_EQ(TextOf(string), L"a\0bc"s);
}

TEST(StringAppend, AStringToItself) {
    const Owned string = MakeString(L"abc");
    std::wstring model = L"abc";
    for (int i = 0; i < 10; ++i) {
        QVStringAppendString(string.Get(), string.Get());
        model += std::wstring(model);
        ASSERT_EQ(TextOf(string), model);
    }
}

class StringTrim : public testing::Test {
protected:
    static std::wstring Trimmed(void (*trim)(void*), const std::wstring& text) {
        const Owned string = MakeString(text);
        trim(string.Get());
        return TextOf(string);
    }
};

TEST_F(StringTrim, LeftRemovesLeadingSpace) {
    EXPECT_EQ(Trimmed(QVStringTrimLeft, L" \t\n\v\f\rx "), L"x ");
    EXPECT_EQ(Trimmed(QVStringTrimLeft, L"   "), L"");
    EXPECT_EQ(Trimmed(QVStringTrimLeft, L""), L"");
    EXPECT_EQ(Trimmed(QVStringTrimLeft, L"\0 x"s), L"\0 x"s);
}

TEST_F(StringTrim, RightNeverLooksAtTheFirstCharacter) {
    EXPECT_EQ(Trimmed(QVStringTrimRight, L" ab \t\n\v\f\r"), L" ab");
    EXPECT_EQ(Trimmed(QVStringTrimRight, L"   "), L" ");
    EXPECT_EQ(Trimmed(QVStringTrimRight, L" "), L" ");
    EXPECT_EQ(Trimmed(QVStringTrimRight, L""), L"");
    EXPECT_EQ(Trimmed(QVStringTrimRight, L"x \0"s), L"x \0"s);
}

TEST_F(StringTrim, BothEndsEmptiesAStringOfSpaces) {
    EXPECT_EQ(Trimmed(QVStringTrim, L"  x  "), L"x");
    EXPECT_EQ(Trimmed(QVStringTrim, L"   "), L"");
    EXPECT_EQ(Trimmed(QVStringTrim, kLong + L" "), kLong);
}

TEST_F(StringTrim, FollowsTheLocale) {
    const std::wstring emQuads = L"\u2001x\u2001";
    EXPECT_EQ(Trimmed(QVStringTrim, emQuads), emQuads);
    const qvtest::ScopedLocale locale("C.UTF-8");
    EXPECT_EQ(Trimmed(QVStringTrim, emQuads), L"x");
}

TEST(StringErase, IsClippedToTheEnd) {
    const Owned string = MakeString(L"abcdef");
    QVStringErase(string.Get(), 1, 2);
    EXPECT_EQ(TextOf(string), L"adef");
    QVStringErase(string.Get(), 2, ~0UL);
    EXPECT_EQ(TextOf(string), L"ad");
    QVStringErase(string.Get(), 2, 1);
    QVStringErase(string.Get(), 3, 1);
    QVStringErase(string.Get(), ~0UL, ~0UL);
    QVStringErase(string.Get(), 0, 0);
    EXPECT_EQ(TextOf(string), L"ad");
}

TEST(StringReplace, PutsTheWholeTextInPlaceOfAStretch) {
    const Owned string = MakeString(L"abcdef");
    QVStringReplaceString(string.Get(), MakeString(L"X\0Y"s).Get(), 1, 2);
    EXPECT_EQ(TextOf(string), L"aX\0Ydef"s);
    QVStringReplaceString(string.Get(), MakeString(L"").Get(), 1, 3);
    EXPECT_EQ(TextOf(string), L"adef");
    QVStringReplaceString(string.Get(), MakeString(L"Z").Get(), 3, ~0UL);
    EXPECT_EQ(TextOf(string), L"adeZ");
    QVStringReplaceString(string.Get(), MakeString(L"!").Get(), 4, 1);
    EXPECT_EQ(TextOf(string), L"adeZ!");
    QVStringReplaceString(string.Get(), MakeString(kLong).Get(), 0, 3);
    EXPECT_EQ(TextOf(string), kLong + L"Z!");
}

TEST(StringReplace, BeyondTheEndOrByNullChangesNothing) {
    const Owned string = MakeString(L"abc");
    QVStringReplaceString(string.Get(), MakeString(L"x").Get(), 4, 0);
    QVStringReplaceString(string.Get(), MakeString(L"x").Get(), ~0UL, ~0UL);
    QVStringReplaceString(string.Get(), nullptr, 0, 3);
    EXPECT_EQ(TextOf(string), L"abc");
}

TEST(StringReplace, APartOfAStringByItself) {
    const Owned string = MakeString(L"abc");
    QVStringReplaceString(string.Get(), string.Get(), 1, 1);
    EXPECT_EQ(TextOf(string), L"aabcc");
}

TEST(StringFind, GivesTheFirstPlaceFromTheStartOn) {
    const Owned string = MakeString(L"abcabc");
    const auto find = [&](const std::wstring& searched, unsigned long start) {
        return QVStringFindString(string.Get(), MakeString(searched).Get(), start);
    };
    EXPECT_EQ(find(L"bc", 0), 1UL);
    EXPECT_EQ(find(L"bc", 1), 1UL);
    EXPECT_EQ(find(L"bc", 2), 4UL);
    EXPECT_EQ(find(L"bc", 5), 0xFFFFFFFFUL);
    EXPECT_EQ(find(L"d", 0), 0xFFFFFFFFUL);
    EXPECT_EQ(find(L"abcabcd", 0), 0xFFFFFFFFUL);
    EXPECT_EQ(find(L"b", ~0UL), 0xFFFFFFFFUL);
}

TEST(StringFind, AnEmptyTextIsFoundAtTheStart) {
    const Owned string = MakeString(L"abc");
    const Owned empty = MakeString(L"");
    EXPECT_EQ(QVStringFindString(string.Get(), empty.Get(), 0), 0UL);
    EXPECT_EQ(QVStringFindString(string.Get(), empty.Get(), 3), 3UL);
    EXPECT_EQ(QVStringFindString(string.Get(), empty.Get(), 4), 0xFFFFFFFFUL);
}

TEST(StringFind, GoesBeyondAZeroForATextUpToItsFirstZero) {
    const Owned string = MakeString(L"a\0bc"s);
    EXPECT_EQ(QVStringFindString(string.Get(), MakeString(L"bc\0d"s).Get(), 0), 2UL);
    EXPECT_EQ(QVStringFindString(string.Get(), MakeString(L"\0b"s).Get(), 1), 1UL);
    EXPECT_EQ(QVStringFindString(string.Get(), nullptr, 0), 0xFFFFFFFFUL);
}

TEST(StringLineBreaks, TheFirstOneDecides) {
    const auto type = [](const std::wstring& text) {
        return QVStringGetLineBreakType(MakeString(text).Get());
    };
    EXPECT_EQ(type(L"abc"), 0);
    EXPECT_EQ(type(L"a\nb\r"), 1);
    EXPECT_EQ(type(L"a\rb\nc"), 2);
    EXPECT_EQ(type(L"a\r\nb"), 3);
    EXPECT_EQ(type(L"a\u2028b\n"), 4);
}

TEST(StringLineBreaks, EachOneIsConvertedLiterally) {
    const auto converted = [](const std::wstring& text, QVLineBreakType from, QVLineBreakType to) {
        const Owned string = MakeString(text);
        QVStringConvertLineBreak(string.Get(), from, to);
        return TextOf(string);
    };
    EXPECT_EQ(converted(L"a\r\nb\r\n", QVLineBreakCRLF, QVLineBreakLF), L"a\nb\n");
    EXPECT_EQ(converted(L"a\r\nb", QVLineBreakCR, QVLineBreakLF), L"a\n\nb");
    EXPECT_EQ(converted(L"\n\n", QVLineBreakLF, QVLineBreakCRLF), L"\r\n\r\n");
    EXPECT_EQ(converted(L"a\u2028\0\u2028"s, QVLineBreakLineSeparator, QVLineBreakCR), L"a\r\0\r"s);
    for (const QVLineBreakType none : {0, 5, -1, 0x7FFFFFFF}) {
        EXPECT_EQ(converted(L"a\nb", QVLineBreakLF, none), L"a\nb");
        EXPECT_EQ(converted(L"a\nb", none, QVLineBreakLF), L"a\nb");
    }
}

TEST(StringLineBreaks, TheirTextsAreTemporaryStrings) {
    const LocalPool pool;
    EXPECT_EQ(TextOf(QVStringImpl::GetLineBreakString(QVLineBreakLF)), L"\n");
    EXPECT_EQ(TextOf(QVStringImpl::GetLineBreakString(QVLineBreakCR)), L"\r");
    EXPECT_EQ(TextOf(QVStringImpl::GetLineBreakString(QVLineBreakCRLF)), L"\r\n");
    EXPECT_EQ(TextOf(QVStringImpl::GetLineBreakString(QVLineBreakLineSeparator)), L"\u2028");
    EXPECT_EQ(QVStringImpl::GetLineBreakString(QVLineBreakNone), nullptr);
    EXPECT_EQ(QVStringImpl::GetLineBreakString(5), nullptr);
}

TEST(StringNull, NoFunctionNeedsAString) {
    const qvtest::LogCapture log;
    const Owned other = MakeString(L"x");
    EXPECT_EQ(QVStringCreateCopy(nullptr), nullptr);
    EXPECT_EQ(QVStringCreateSubString(nullptr, QVRange{0, 1}), nullptr);
    EXPECT_EQ(QVStringGetBuffer(nullptr), nullptr);
    EXPECT_EQ(QVStringGetLength(nullptr), 0UL);
    EXPECT_EQ(QVStringGetCharacterAtIndex(nullptr, 0), L'\0');
    EXPECT_EQ(QVStringUpperCaseString(nullptr), nullptr);
    EXPECT_EQ(QVStringLowerCaseString(nullptr), nullptr);
    EXPECT_EQ(QVStringLastPathComponent(nullptr), nullptr);
    EXPECT_EQ(QVStringByDeletingLastPathComponent(nullptr), nullptr);
    EXPECT_EQ(QVStringByAppendingPathComponent(nullptr, other.Get()), nullptr);
    EXPECT_EQ(QVStringByAppendingPathExtension(nullptr, other.Get()), nullptr);
    EXPECT_EQ(QVStringByExpandingTildeInPath(nullptr), nullptr);
    EXPECT_EQ(QVStringHexUIntValue(nullptr), 0UL);
    EXPECT_EQ(QVStringFindString(nullptr, other.Get(), 0), 0xFFFFFFFFUL);
    EXPECT_EQ(QVStringGetLineBreakType(nullptr), 0);
    QVStringAppendString(nullptr, other.Get());
    QVStringTrimLeft(nullptr);
    QVStringTrimRight(nullptr);
    QVStringTrim(nullptr);
    QVStringErase(nullptr, 0, 1);
    QVStringReplaceString(nullptr, other.Get(), 0, 0);
    QVStringConvertLineBreak(nullptr, QVLineBreakLF, QVLineBreakCR);
    EXPECT_EQ(TextOf(other), L"x");
    EXPECT_EQ(log.Text(), "");
}

// What a creating function logs when each of its allocations fails in turn; nothing may be left behind.
template <class Create>
Messages MessagesOfFailingAllocations(Create create) {
    const qvtest::LogCapture log;
    const size_t before = qvtest::LiveAllocations();
    size_t made = 0;
    const size_t failures = qvtest::FailEachAllocation([&] {
        const Owned string{create()};
        if (string) ++made;
    });
    EXPECT_EQ(made, 1U) << "an allocation failed, and there was a string all the same";
    EXPECT_EQ(qvtest::LiveAllocations(), before);
    EXPECT_EQ(log.Messages().size(), failures);
    return log.Messages();
}

TEST(StringMemory, CreationNamesWhatCouldNotBeAllocated) {
    const std::string bytes(kLong.size(), 'x');
    const Owned text = MakeString(kLong);
    const QVRange all = {0, 1000};
    EXPECT_EQ(MessagesOfFailingAllocations(QVStringCreate), (Messages{kNoInstance}));
    EXPECT_EQ(MessagesOfFailingAllocations([] { return QVStringCreateWithCString("short"); }),
              (Messages{kNoCStringInstance}));
    EXPECT_EQ(MessagesOfFailingAllocations([&] { return QVStringCreateWithCString(bytes.c_str()); }),
              (Messages{kNoCStringInstance, kNoCStringInstance}));
    EXPECT_EQ(MessagesOfFailingAllocations([] { return QVStringCreateWithWideString(L"short"); }),
              (Messages{kNoInstance}));
    EXPECT_EQ(MessagesOfFailingAllocations([] { return QVStringCreateWithWideString(kLong.c_str()); }),
              (Messages{kNoInstance, kNoInstance}));
    EXPECT_EQ(MessagesOfFailingAllocations([&] { return QVStringCreateCopy(text.Get()); }),
              (Messages{kNoBuffer, kNoInstance}));
    EXPECT_EQ(MessagesOfFailingAllocations([&] { return QVStringCreateSubString(text.Get(), all); }),
              (Messages{kNoBuffer, kNoInstance}));
}

TEST(StringMemory, TemporariesThatCannotBeMadeAreNull) {
    const LocalPool pool;
    const Owned path = MakeString(L"~/a/" + kLong);
    for (const auto function : {QVStringUpperCaseString, QVStringLowerCaseString, QVStringLastPathComponent,
                                QVStringByExpandingTildeInPath}) {
        QVStringUpperCaseString(path.Get());  // the pool has room for another temporary now
        const qvtest::LogCapture log;
        for (size_t k = 0; k < 2; ++k) {
            const qvtest::FailAllocation failing(k);
            EXPECT_EQ(function(path.Get()), nullptr);
        }
        EXPECT_EQ(log.Messages(), (Messages{kNoInstance, kNoInstance}));
    }
}

TEST(StringMemory, EditsThatFindNoRoomChangeNothing) {
    const Owned other = MakeString(kLong);
    const Owned string = MakeString(L"a\nb");
    const qvtest::LogCapture log;
    {
        const qvtest::FailAllocation failing(0, true);
        QVStringAppendString(string.Get(), other.Get());
        QVStringReplaceString(string.Get(), other.Get(), 1, 1);
    }
    EXPECT_EQ(TextOf(string), L"a\nb");
    const Owned lines = MakeString(std::wstring(50, L'\n'));
    {
        const qvtest::FailAllocation failing(0, true);
        QVStringConvertLineBreak(lines.Get(), QVLineBreakLF, QVLineBreakCRLF);
    }
    EXPECT_EQ(TextOf(lines), std::wstring(50, L'\n'));
    EXPECT_EQ(log.Text(), "");
}

// Random edits, checked against the standard wide string after each step.
TEST(StringModel, AgreesWithTheStandardWideString) {
    std::mt19937 random(20260115);
    const auto below = [&](size_t bound) { return static_cast<size_t>(random() % bound); };
    const auto randomText = [&] {
        std::wstring text(below(8) == 0 ? below(90) : below(6), L'\0');
        for (wchar_t& character : text)
            character = L"ab \n\r\0"[below(6)];
        return text;
    };
    const Owned string = MakeString(L"");
    std::wstring model;
    for (int step = 0; step < 100000; ++step) {
        const std::wstring text = randomText();
        const std::wstring upToZero = text.c_str();
        const bool itself = below(16) == 0;
        const Owned other = itself ? Owned::Retaining(string.Get()) : MakeString(text);
        const std::wstring whole = itself ? model : text;
        const std::wstring cText = itself ? model.c_str() : upToZero;
        const size_t location = below(model.size() + 2);
        const size_t length = below(20);
        switch (below(6)) {
            case 0:
                QVStringAppendString(string.Get(), other.Get());
                model += cText;
                break;
            case 1:
                QVStringReplaceString(string.Get(), other.Get(), location, length);
                if (location <= model.size()) model.replace(location, length, whole);
                break;
            case 2:
                QVStringErase(string.Get(), location, length);
                if (location <= model.size()) model.erase(location, length);
                break;
            case 3: {
                const size_t found = model.find(cText.c_str(), location);
                ASSERT_EQ(QVStringFindString(string.Get(), other.Get(), location),
                          found == std::wstring::npos ? 0xFFFFFFFFUL : found);
                break;
            }
            case 4: {
                const QVRange range = {static_cast<int>(location), static_cast<int>(length)};
                ASSERT_EQ(TextOf(Owned{QVStringCreateSubString(string.Get(), range)}),
                          location <= model.size() ? model.substr(location, length) : L"");
                break;
            }
            default:
                ASSERT_EQ(TextOf(Owned{QVStringCreateCopy(string.Get())}), model);
                const int order = QVStringCompare(string.Get(), other.Get());
                const int expected = std::wcscmp(model.c_str(), cText.c_str());
                ASSERT_EQ((order > 0) - (order < 0), (expected > 0) - (expected < 0));
        }
        ASSERT_EQ(TextOf(string), model) << "step " << step;
        if (model.size() > 400) {
            QVStringErase(string.Get(), 0, ~0UL);
            model.clear();
        }
    }
}

}  // namespace
