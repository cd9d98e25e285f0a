// Strings, encodings, HTML entities and scanners.
#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVData.h>
#include <QVFoundation/QVDictionary.h>
#include <QVFoundation/QVEncoding.h>
#include <QVFoundation/QVHTMLCharSet.h>
#include <QVFoundation/QVScanner.h>
#include <QVFoundation/QVString.h>
#include <QVFoundation/QVTemporaryObjectsPool.h>

#include "support/strings.h"
#include "whole/row.h"

namespace qvtest {
namespace {

using qv::Owned;

constexpr const char* kNoInstance = "Couldn't allocate the instance of the QVString.";
constexpr const char* kNoCStringInstance = "Couldn't allocate the instance of QVString.";
constexpr const char* kNoBuffer = "Couldn't allocate the buffer for the string.";

constexpr QVEncodingInfo kUtf8 = {QVEncodingUTF8, 0, 0};

// Too long for a string's own room.
const std::wstring kLong(300, L'x');

// A function that gives a temporary string made from one.
Row TemporaryFrom(const char* name, const std::wstring& text, void* (*function)(void*)) {
    return {name,
            [=](Attempt& attempt) {
                const Owned string = MakeString(text);
                attempt.Logs(kNoInstance).OrNothing().Lends([&] { return function(string.Get()); });
            },
            [function] { return function(nullptr) == nullptr; }};
}

// The same from two.
Row TemporaryFromTwo(const char* name, void* (*function)(void*, void*)) {
    return {
        name,
        [function](Attempt& attempt) {
            const Owned string = MakeString(kLong);
            attempt.Logs(kNoInstance).OrNothing().Lends([&] { return function(string.Get(), string.Get()); });
        },
        [function] {
            const Owned string = MakeString(L"a");
            return function(nullptr, nullptr) == nullptr && function(nullptr, string.Get()) == nullptr &&
                   TextOf(function(string.Get(), nullptr)) == L"a";
        }};
}

// A function that changes a string in place; without memory the string stays as it is.
Row InPlace(const char* name, const std::wstring& before, const std::wstring& after,
            void (*function)(void*)) {
    return {name,
            [=](Attempt& attempt) {
                const Owned string = MakeString(before);
                attempt.Changes(
                    after, before, [&] { function(string.Get()); }, [&] { return TextOf(string); });
            },
            [function] {
                function(nullptr);
                return true;
            }};
}

// The same for one that only makes the string shorter.
Row InPlaceWithoutMemory(const char* name, const std::wstring& before, const std::wstring& after,
                         void (*function)(void*)) {
    return {name,
            [=](Attempt& attempt) {
                const Owned string = MakeString(before);
                attempt.NeedsNoMemory([&] { function(string.Get()); },
                                      [&] { return TextOf(string) == after; });
            },
            [function] {
                function(nullptr);
                return true;
            }};
}

// A question to the string "1f\n".
template <class Value, class Question>
Row Asks(const char* name, Value answer, Value answerOfNull, Question question) {
    return {name,
            [=](Attempt& attempt) {
                const Owned string = MakeString(L"1f\n");
                attempt.NeedsNoMemory([&] { return question(string.Get()) == answer; });
            },
            [=] { return question(nullptr) == answerOfNull; }};
}

Row Compares(const char* name, int (*function)(void*, void*)) {
    return {name,
            [function](Attempt& attempt) {
                const Owned a = MakeString(kLong);
                const Owned b = MakeString(kLong);
                attempt.NeedsNoMemory([&] { return function(a.Get(), b.Get()) == 0; });
            },
            [function] {
                const Owned string = MakeString(L"");
                return function(nullptr, nullptr) == 0 && function(nullptr, string.Get()) < 0 &&
                       function(string.Get(), nullptr) > 0;
            }};
}

Rows CreationRows() {
    return {
        {"QVStringCreate", [](Attempt& attempt) { attempt.Logs(kNoInstance).Creates(QVStringCreate); },
         TakesNoHandle},
        {"QVStringCreateWithCString",
         [](Attempt& attempt) {
             const std::string text(300, 'x');
             attempt.Logs(kNoCStringInstance).Creates([&] {
                 return QVStringCreateWithCString(text.c_str());
             });
         },
         TakesNoHandle},
        {"QVStringCreateWithCStringAndLength",
         [](Attempt& attempt) {
             const std::string text(300, 'x');
             attempt.Logs(kNoCStringInstance).Creates([&] {
                 return QVStringCreateWithCStringAndLength(text.data(), text.size());
             });
         },
         TakesNoHandle},
        {"QVStringCreateWithWideString",
         [](Attempt& attempt) {
             attempt.Logs(kNoInstance).Creates([] { return QVStringCreateWithWideString(kLong.c_str()); });
         },
         TakesNoHandle},
        {"QVStringCreateWithWideStringAndLength",
         [](Attempt& attempt) {
             attempt.Logs(kNoInstance).Creates([] {
                 return QVStringCreateWithWideStringAndLength(kLong.data(), kLong.size());
             });
         },
         TakesNoHandle},
        {"QVStringCreateWithFormat",
         [](Attempt& attempt) {
             const Owned format = MakeString(L"%ls %d");
             // The buffer's failure is silent, the string's is not.
             attempt.Logs(kNoInstance).OrNothing().Creates([&] {
                 return QVStringCreateWithFormat(format.Get(), kLong.c_str(), 1);
             });
         },
         [] {
             const Owned string{QVStringCreateWithFormat(nullptr)};
             return !string || TextOf(string).empty();
         }},
        {"QVStringCreateWithHashValue128",
         [](Attempt& attempt) {
             attempt.Logs(kNoInstance).Creates([] { return QVStringCreateWithHashValue128({1, 2, 3, 4}); });
         },
         TakesNoHandle},
        {"QVStringCreateCopy",
         [](Attempt& attempt) {
             const Owned string = MakeString(kLong);
             attempt.LogsOneOf({kNoBuffer, kNoInstance}).Creates([&] {
                 return QVStringCreateCopy(string.Get());
             });
         },
         [] { return QVStringCreateCopy(nullptr) == nullptr; }},
        {"QVStringCreateSubString",
         [](Attempt& attempt) {
             const Owned string = MakeString(kLong);
             attempt.LogsOneOf({kNoBuffer, kNoInstance}).Creates([&] {
                 return QVStringCreateSubString(string.Get(), {10, 200});
             });
         },
         [] {
             return QVStringCreateSubString(nullptr, {0, 1}) == nullptr;
         }},
    };
}

Rows QuestionRows() {
    return {
        Asks("QVStringGetBuffer", true, false,
             [](void* string) {
                 const wchar_t* const text = QVStringGetBuffer(string);
                 return text != nullptr && text[0] == L'1';
             }),
        Asks("QVStringGetLength", 3UL, 0UL, QVStringGetLength),
        Asks("QVStringGetCharacterAtIndex", L'f', L'\0',
             [](void* string) { return QVStringGetCharacterAtIndex(string, 1); }),
        Asks("QVStringHexUIntValue", 0x1FUL, 0UL, QVStringHexUIntValue),
        Asks("QVStringGetLineBreakType", int{QVLineBreakLF}, int{QVLineBreakNone}, QVStringGetLineBreakType),
        Compares("QVStringCompare", QVStringCompare),
        Compares("QVStringCaseInsensitiveCompare", QVStringCaseInsensitiveCompare),
        {"QVStringFindString",
         [](Attempt& attempt) {
             const Owned string = MakeString(kLong + L"y");
             const Owned searched = MakeString(L"xy");
             attempt.NeedsNoMemory(
                 [&] { return QVStringFindString(string.Get(), searched.Get(), 0) == kLong.size() - 1; });
         },
         [] {
             const Owned string = MakeString(L"a");
             return QVStringFindString(nullptr, nullptr, 0) == QVStringNotFound &&
                    QVStringFindString(nullptr, string.Get(), 0) == QVStringNotFound &&
                    QVStringFindString(string.Get(), nullptr, 0) == QVStringNotFound;
         }},
    };
}

Rows TemporaryRows() {
    return {
        TemporaryFrom("QVStringUpperCaseString", kLong, QVStringUpperCaseString),
        TemporaryFrom("QVStringLowerCaseString", kLong, QVStringLowerCaseString),
        TemporaryFrom("QVStringLastPathComponent", L"/" + kLong, QVStringLastPathComponent),
        TemporaryFrom("QVStringByDeletingLastPathComponent", kLong + L"/a",
                      QVStringByDeletingLastPathComponent),
        TemporaryFrom("QVStringByExpandingTildeInPath", L"~/" + kLong, QVStringByExpandingTildeInPath),
        TemporaryFromTwo("QVStringByAppendingPathComponent", QVStringByAppendingPathComponent),
        TemporaryFromTwo("QVStringByAppendingPathExtension", QVStringByAppendingPathExtension),
    };
}

Rows ChangeRows() {
    return {
        {"QVStringAppendString",
         [](Attempt& attempt) {
             const Owned string = MakeString(L"a");
             const Owned other = MakeString(kLong);
             attempt.Changes(
                 L"a" + kLong, L"a", [&] { QVStringAppendString(string.Get(), other.Get()); },
                 [&] { return TextOf(string); });
         },
         [] {
             const Owned string = MakeString(L"a");
             QVStringAppendString(nullptr, nullptr);
             QVStringAppendString(nullptr, string.Get());
             QVStringAppendString(string.Get(), nullptr);
             return TextOf(string) == L"a";
         }},
        InPlaceWithoutMemory("QVStringTrimLeft", L" a ", L"a ", QVStringTrimLeft),
        InPlaceWithoutMemory("QVStringTrimRight", L" a ", L" a", QVStringTrimRight),
        InPlaceWithoutMemory("QVStringTrim", L" a ", L"a", QVStringTrim),
        InPlaceWithoutMemory("QVStringErase", L"abc", L"ac",
                             [](void* string) { QVStringErase(string, 1, 1); }),
        {"QVStringReplaceString",
         [](Attempt& attempt) {
             const Owned string = MakeString(L"abc");
             const Owned replacement = MakeString(kLong);
             attempt.Changes(
                 L"a" + kLong + L"c", L"abc",
                 [&] { QVStringReplaceString(string.Get(), replacement.Get(), 1, 1); },
                 [&] { return TextOf(string); });
         },
         [] {
             const Owned string = MakeString(L"a");
             QVStringReplaceString(nullptr, nullptr, 0, 1);
             QVStringReplaceString(nullptr, string.Get(), 0, 1);
             QVStringReplaceString(string.Get(), nullptr, 0, 1);
             return TextOf(string) == L"a";
         }},
        InPlace("QVStringConvertLineBreak", kLong + L"\n", kLong + L"\r\n",
                [](void* string) { QVStringConvertLineBreak(string, QVLineBreakLF, QVLineBreakCRLF); }),
    };
}

Row MakesData(const char* name, void* (*function)(void*, QVEncodingInfo)) {
    return {name,
            [function](Attempt& attempt) {
                const Owned string = MakeString(kLong);
                attempt.OthersLog().Creates([&] { return function(string.Get(), kUtf8); });
            },
            [function] { return function(nullptr, kUtf8) == nullptr; }};
}

Rows EncodingRows() {
    return {
        MakesData("QVStringMakeData", QVStringMakeData),
        MakesData("QVStringCreateDataMac", QVStringCreateDataMac),
        {"QVStringCreateWithData",
         [](Attempt& attempt) {
             const std::string text(300, 'x');
             const Owned data{QVDataCreate(text.data(), text.size())};
             attempt.OthersLog().Creates([&] { return QVStringCreateWithData(data.Get(), kUtf8); });
         },
         [] { return QVStringCreateWithData(nullptr, kUtf8) == nullptr; }},
        {"QVStringGetUTF8String",
         [](Attempt& attempt) {
             const Owned string = MakeString(kLong);
             // An empty text stands for one that cannot be converted.
             attempt.OthersLog().MayDoWithout().Lends([&] { return QVStringGetUTF8String(string.Get()); });
         },
         [] { return *QVStringGetUTF8String(nullptr) == '\0'; }},
        {"QVGetMIMECharSetName",
         [](Attempt& attempt) {
             attempt.OthersLog().MayDoWithout().Lends([] { return QVGetMIMECharSetName(QVEncodingUTF8, 0); });
         },
         TakesNoHandle},
        {"QVEncodeWideStringWithUTF8",
         [](Attempt& attempt) {
             void* data = nullptr;
             unsigned long second = 1;
             attempt.OthersLog().AnswersCode(
                 [&] { return QVEncodeWideStringWithUTF8(kLong.data(), kLong.size(), &data, &second); });
             EXPECT_EQ(data == nullptr, attempt.MetShortage());
             QVRelease(data);
         },
         TakesNoHandle},
    };
}

// The replacing functions on <text>, <array> and <dictionary>.
Row Replaces(const char* name, void* (*make)(), void* (*function)(void*, QVBoolean)) {
    return {name,
            [=](Attempt& attempt) {
                const Owned object{make()};
                attempt.OthersLog().MayDoWithout().Lends([&] { return function(object.Get(), 0); });
            },
            [function] { return function(nullptr, 0) == nullptr; }};
}

Rows HTMLRows() {
    return {
        Replaces(
            "QVStringByReplacingToHTMLCharSet", [] { return MakeString(L"<" + kLong).Detach(); },
            QVStringByReplacingToHTMLCharSet),
        Replaces(
            "QVArrayByReplacingToHTMLCharSet",
            [] { return QVArrayCreateWithObject(MakeString(L"<" + kLong).Get()); },
            QVArrayByReplacingToHTMLCharSet),
        Replaces(
            "QVDictionaryByReplacingToHTMLCharSet",
            [] {
                void* const dictionary = QVDictionaryCreate();
                QVDictionarySetObject(dictionary, MakeString(L"<" + kLong).Get(), L">");
                return dictionary;
            },
            QVDictionaryByReplacingToHTMLCharSet),
    };
}

// A scanner over text, with its marker at the start.
Owned MakeScanner(const std::wstring& text) {
    return Owned{QVScannerCreateWithString(MakeString(text).Get())};
}

Rows ScannerRows() {
    return {
        {"QVScannerCreateWithString",
         [](Attempt& attempt) {
             const Owned string = MakeString(L"a");
             attempt.Creates([&] { return QVScannerCreateWithString(string.Get()); });
         },
         [] {
             const Owned scanner{QVScannerCreateWithString(nullptr)};
             return QVScannerGetLength(scanner.Get()) == 0;
         }},
        {"QVScannerSetMarker",
         [](Attempt& attempt) {
             const Owned scanner = MakeScanner(L"abc");
             attempt.NeedsNoMemory(
                 [&] { return QVScannerSetMarker(scanner.Get(), QVScannerFromStart, 1) == 3; });
         },
         [] { return QVScannerSetMarker(nullptr, QVScannerFromStart, 1) == 0; }},
        {"QVScannerGetMarker",
         [](Attempt& attempt) {
             const Owned scanner = MakeScanner(L"abc");
             attempt.NeedsNoMemory([&] { return QVScannerGetMarker(scanner.Get()) == 0; });
         },
         [] { return QVScannerGetMarker(nullptr) == 0; }},
        {"QVScannerGetLength",
         [](Attempt& attempt) {
             const Owned scanner = MakeScanner(L"abc");
             attempt.NeedsNoMemory([&] { return QVScannerGetLength(scanner.Get()) == 3; });
         },
         [] { return QVScannerGetLength(nullptr) == 0; }},
        {"QVScannerScanUpToCharacters",
         [](Attempt& attempt) {
             const Owned scanner = MakeScanner(kLong + L"=");
             void* piece = nullptr;
             attempt.OthersLog().Answers(
                 1, 0, [&] { return QVScannerScanUpToCharacters(scanner.Get(), L"=", &piece); });
             EXPECT_EQ(QVScannerGetMarker(scanner.Get()), attempt.MetShortage() ? 0 : 301);
             EXPECT_EQ(piece == nullptr, attempt.MetShortage());
         },
         [] { return QVScannerScanUpToCharacters(nullptr, L"=", nullptr) == 0; }},
        {"QVScannerScanUpToNotCharacters",
         [](Attempt& attempt) {
             const Owned scanner = MakeScanner(kLong + L"=");
             void* piece = nullptr;
             attempt.OthersLog().Answers(
                 1, 0, [&] { return QVScannerScanUpToNotCharacters(scanner.Get(), L"x", &piece); });
             EXPECT_EQ(QVScannerGetMarker(scanner.Get()), attempt.MetShortage() ? 0 : 300);
             EXPECT_EQ(piece == nullptr, attempt.MetShortage());
             QVRelease(piece);
         },
         [] { return QVScannerScanUpToNotCharacters(nullptr, L"=", nullptr) == 0; }},
        {"QVScannerScanHexUInt",
         [](Attempt& attempt) {
             const Owned scanner = MakeScanner(L"ff");
             unsigned int value = 0;
             attempt.NeedsNoMemory(
                 [&] { return QVScannerScanHexUInt(scanner.Get(), &value) != 0 && value == 0xFF; });
         },
         [] {
             unsigned int value = 1;
             return QVScannerScanHexUInt(nullptr, &value) == 0 && QVScannerScanHexUInt(nullptr, nullptr) == 0;
         }},
    };
}

}  // namespace

Rows StringRows() {
    return Joined({CreationRows(), QuestionRows(), TemporaryRows(), ChangeRows(), EncodingRows(), HTMLRows(),
                   ScannerRows()});
}

}  // namespace qvtest
