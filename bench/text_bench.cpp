// Strings.

#include <cstdlib>
#include <cstring>
#include <glib.h>
#include <memory>
#include <string>

#include <QVFoundation/QVData.h>
#include <QVFoundation/QVEncoding.h>
#include <QVFoundation/QVString.h>

#include "bench.h"
#include "inputs.h"

namespace bench {

namespace {

std::string EnglishText(std::size_t size) {
    const Bytes bytes = English(size);
    return {bytes.begin(), bytes.end()};
}

// Words of several scripts, two to four bytes a character.
std::string MixedText(std::size_t size) {
    static constexpr const char* kWords[] = {"Grüße ",  "naïve ",  "Ελλάδα ", "Москва ",
                                             "日本語 ", "한국어 ", "plain ",  "εὐρήματα ",
                                             "😀🎈 ",     "ça va ",  "中文 ",   "тест "};
    std::string text;
    for (std::size_t i = 0; text.size() + 20 < size; ++i)
        text += kWords[i * 7 % 12];
    return text;
}

std::wstring Widen(const std::string& text) {
    return {text.begin(), text.end()};
}

void RequireText(void* string, const std::wstring& text) {
    Require(QVStringGetLength(string) == text.size() && text == QVStringGetBuffer(string), "another text");
}

Comparison CompareFromAscii(std::size_t size) {
    const std::string text = EnglishText(size);
    void* string = QVStringCreateWithCStringAndLength(text.data(), text.size());
    RequireText(string, Widen(text));
    QVRelease(string);
    return {Times([text] {
                void* made = QVStringCreateWithCStringAndLength(text.data(), text.size());
                Keep(made);
                QVRelease(made);
            }),
            Times([text] {
                auto* out = static_cast<wchar_t*>(std::malloc((text.size() + 1) * sizeof(wchar_t)));
                for (std::size_t i = 0; i < text.size(); ++i)
                    out[i] = static_cast<unsigned char>(text[i]);
                Keep(out[0]);
                std::free(out);
            }),
            "floor: widening without any check + malloc/free, for simdutf", 1, true};
}

Comparison CompareFromMixed() {
    const std::string text = MixedText(1 << 20);
    glong length = 0;
    gunichar* expected =
        g_utf8_to_ucs4(text.data(), static_cast<glong>(text.size()), nullptr, &length, nullptr);
    void* string = QVStringCreateWithCStringAndLength(text.data(), text.size());
    RequireText(string, std::wstring(expected, expected + length));
    QVRelease(string);
    g_free(expected);
    return {Times([text] {
                void* made = QVStringCreateWithCStringAndLength(text.data(), text.size());
                Keep(made);
                QVRelease(made);
            }),
            Times([text] {
                gunichar* made =
                    g_utf8_to_ucs4(text.data(), static_cast<glong>(text.size()), nullptr, nullptr, nullptr);
                Keep(made);
                g_free(made);
            }),
            "g_utf8_to_ucs4, for simdutf", 1, true};
}

constexpr QVEncodingInfo kUtf8 = {QVEncodingUTF8, 0, 0};

std::shared_ptr<void> MakeString(const std::string& text) {
    return {QVStringCreateWithCStringAndLength(text.data(), text.size()), QVRelease};
}

void RequireUtf8(void* string, const std::string& text) {
    const std::shared_ptr<void> data(QVStringMakeData(string, kUtf8), QVRelease);
    Require(QVDataGetSize(data.get()) == text.size() &&
                std::memcmp(QVDataGetImutableBuffer(data.get()), text.data(), text.size()) == 0,
            "other bytes");
}

Work ConvertToUtf8(std::shared_ptr<void> string) {
    return Times([string = std::move(string)] {
        void* data = QVStringMakeData(string.get(), kUtf8);
        Keep(data);
        QVRelease(data);
    });
}

Comparison CompareToAscii(std::size_t size) {
    const std::string text = EnglishText(size);
    const auto string = MakeString(text);
    RequireUtf8(string.get(), text);
    return {ConvertToUtf8(string), Times([wide = Widen(text)] {
                auto* out = static_cast<char*>(std::malloc(wide.size()));
                for (std::size_t i = 0; i < wide.size(); ++i)
                    out[i] = static_cast<char>(wide[i]);
                Keep(out[0]);
                std::free(out);
            }),
            "floor: narrowing without any check + malloc/free, for simdutf", 1, true};
}

Comparison CompareToMixed() {
    const std::string text = MixedText(1 << 20);
    const auto string = MakeString(text);
    RequireUtf8(string.get(), text);
    static_assert(sizeof(wchar_t) == sizeof(gunichar));
    return {ConvertToUtf8(string),
            Times([string, length = static_cast<glong>(QVStringGetLength(string.get()))] {
                const auto* wide = reinterpret_cast<const gunichar*>(QVStringGetBuffer(string.get()));
                gchar* made = g_ucs4_to_utf8(wide, length, nullptr, nullptr, nullptr);
                Keep(made);
                g_free(made);
            }),
            "g_ucs4_to_utf8, for simdutf", 1, true};
}

Comparison CompareShortStrings() {
    return {Times([] {
                void* string = QVStringCreateWithCString("short text");
                Keep(string);
                QVRelease(string);
            }),
            Times([] {
                GString* string = g_string_new("short text");
                Keep(string);
                g_string_free(string, TRUE);
            }),
            "GString (bytes)"};
}

Comparison CompareAppending() {
    constexpr std::size_t kPieces = 1000;
    void* piece = QVStringCreateWithCString("twelve chars");
    return {Times([piece] {
                void* string = QVStringCreate();
                for (std::size_t i = 0; i < kPieces; ++i)
                    QVStringAppendString(string, piece);
                Keep(string);
                QVRelease(string);
            }),
            Times([widePiece = std::wstring(L"twelve chars")] {
                std::wstring string;
                for (std::size_t i = 0; i < kPieces; ++i)
                    string.append(widePiece);
                Keep(string);
            }),
            "std::wstring::append", kPieces};
}

struct FindInput {
    std::wstring text;
    std::wstring searched;
    void* textString;
    void* searchedString;
};

// Prose with the searched words at its end only.
FindInput MakeFindInput(const std::string& searched) {
    FindInput input;
    input.searched = Widen(searched);
    input.text = Widen(EnglishText(1 << 18)) + input.searched;
    input.textString = QVStringCreateWithWideString(input.text.c_str());
    input.searchedString = QVStringCreateWithWideString(input.searched.c_str());
    const std::size_t place = input.text.size() - input.searched.size();
    Require(input.text.find(input.searched) == place, "the words occur earlier");
    Require(QVStringFindString(input.textString, input.searchedString, 0) == place, "found elsewhere");
    return input;
}

Work FindOurs(const FindInput& input) {
    return Times([input] { Keep(QVStringFindString(input.textString, input.searchedString, 0)); });
}

Comparison CompareFindingRare() {
    const FindInput input = MakeFindInput("#rare words");
    return {FindOurs(input), Times([input] { Keep(input.text.find(input.searched)); }), "std::wstring::find"};
}

Comparison CompareFindingCommon() {
    const FindInput input = MakeFindInput("the end of the tale");
    return {FindOurs(input), Times([input] { Keep(wcsstr(input.text.c_str(), input.searched.c_str())); }),
            "wcsstr"};
}

}  // namespace

void AddTextComparisons(Suite& suite) {
    suite.Add("string.from_utf8.ascii_1MB", [] { return CompareFromAscii(1 << 20); });
    suite.Add("string.from_utf8.multi_1MB", CompareFromMixed);
    suite.Add("string.from_utf8.ascii_1KB", [] { return CompareFromAscii(1 << 10); });
    suite.Add("string.to_utf8.ascii_1MB", [] { return CompareToAscii(1 << 20); });
    suite.Add("string.to_utf8.multi_1MB", CompareToMixed);
    suite.Add("string.to_utf8.ascii_1KB", [] { return CompareToAscii(1 << 10); });
    suite.Add("string.create_short", CompareShortStrings);
    suite.Add("string.append", CompareAppending);
    suite.Add("string.find.rare", CompareFindingRare);
    suite.Add("string.find.common", CompareFindingCommon);
}

}  // namespace bench
