#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>

#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVCSSParser.h>
#include <QVFoundation/QVDictionary.h>
#include <QVFoundation/QVLibrary.h>
#include <QVFoundation/QVString.h>
#include <QVFoundation/QVTemporaryObjectsPool.h>

#include "runtime/Owned.h"
#include "support/failing_allocator.h"
#include "support/log_capture.h"

namespace {

using qv::Owned;

class CSS : public testing::Test {
protected:
    CSS() { QVFoundationInit(); }
    ~CSS() override { QVFoundationExit(); }

    static Owned String(const wchar_t* text) { return Owned{QVStringCreateWithWideString(text)}; }
    static std::wstring Text(void* string) { return string == nullptr ? L"null" : QVStringGetBuffer(string); }
    static std::wstring Joined(void* array) {
        std::wstring text;
        for (unsigned long i = 0; i < QVArrayGetCount(array); ++i) {
            text.append(L"[").append(Text(QVArrayGetObjectAtIndex(array, i))).append(L"]");
        }
        return text;
    }
};

TEST_F(CSS, AnElementHasSelectorsPropertiesAndTheirOrder) {
    const Owned sheet = String(L"h1, h2 { color: red; margin: 0; color: blue }");
    const Owned parser{QVCSSParserCreateWithString(sheet.Get())};
    EXPECT_EQ(QVGetTypeID(parser.Get()), 65535);
    EXPECT_EQ(QVGetRetainCount(sheet.Get()), 2UL);
    unsigned int start = 7;
    unsigned int length = 7;
    int error = 7;
    void* element = QVCSSParserFindNextCSSElement(parser.Get(), 0, &start, &length, &error);
    EXPECT_EQ(QVGetTypeID(element), 65535);
    EXPECT_EQ(QVGetRetainCount(element), 1UL);
    EXPECT_EQ(start, 0U);
    EXPECT_EQ(length, 45U);
    EXPECT_EQ(error, 0);
    EXPECT_EQ(Joined(QVCSSElementGetSelectors(element)), L"[h1][h2]");
    EXPECT_EQ(Joined(QVCSSElementGetPropertyOrder(element)), L"[color][margin][color]");
    EXPECT_EQ(QVDictionaryCount(QVCSSElementGetProperties(element)), 2U);
    EXPECT_EQ(Text(QVDictionaryGetObject(QVCSSElementGetProperties(element), L"color")), L"blue");
    EXPECT_EQ(Text(QVCSSElementGetString(element)),
              L"h1, h2 {\n\tcolor: blue;\n\tmargin: 0;\n\tcolor: blue;\n");
    EXPECT_EQ(QVCSSParserFindNextCSSElement(parser.Get(), 45, nullptr, nullptr, nullptr), nullptr);
}

TEST_F(CSS, OutsAreClearedWhenNothingIsFound) {
    const Owned sheet = String(L" /* nothing */ ");
    const Owned parser{QVCSSParserCreateWithString(sheet.Get())};
    for (const unsigned int from : {0U, 15U, 16U, 4000000000U}) {
        unsigned int start = 7;
        unsigned int length = 7;
        int error = 7;
        EXPECT_EQ(QVCSSParserFindNextCSSElement(parser.Get(), from, &start, &length, &error), nullptr);
        EXPECT_EQ(start, 0U);
        EXPECT_EQ(length, 0U);
        EXPECT_EQ(error, 0);
    }
}

TEST_F(CSS, SelectorsAreFoundIgnoringCase) {
    const Owned sheet = String(L"@charset \"x\";\np{a:b}\nh1,p{c:d}\nH1{e:f}");
    const Owned parser{QVCSSParserCreateWithString(sheet.Get())};
    unsigned int start = 7;
    unsigned int length = 7;
    void* element = QVCSSParserFindCSSElementWithSelector(parser.Get(), QVSTR(L"H1"), 0, &start, &length);
    EXPECT_EQ(QVGetRetainCount(element), 1UL);
    EXPECT_EQ(start, 21U);
    EXPECT_EQ(length, 9U);
    EXPECT_EQ(Joined(QVCSSElementGetSelectors(element)), L"[h1][p]");
    element =
        QVCSSParserFindCSSElementWithSelector(parser.Get(), QVSTR(L"h1"), start + length, &start, &length);
    EXPECT_EQ(Joined(QVCSSElementGetSelectors(element)), L"[H1]");
    EXPECT_EQ(QVCSSParserFindCSSElementWithSelector(parser.Get(), QVSTR(L"h2"), 0, &start, &length), nullptr);
    EXPECT_EQ(start, 0U);
    EXPECT_EQ(length, 0U);
    // Only the first selector of a rule counts.
    EXPECT_EQ(QVCSSParserFindCSSElementWithSelector(parser.Get(), QVSTR(L"p"), 21, nullptr, nullptr),
              nullptr);
}

TEST_F(CSS, TheTextOfAnAtRuleHasASpaceBehindItsName) {
    const Owned sheet = String(L"@media screen,print{");
    const Owned parser{QVCSSParserCreateWithString(sheet.Get())};
    void* element = QVCSSParserFindNextCSSElement(parser.Get(), 0, nullptr, nullptr, nullptr);
    EXPECT_EQ(Text(QVCSSElementGetString(element)), L"@media screen, print");
}

TEST_F(CSS, AnElementOfOnesOwnIsWrittenFromItsParts) {
    const Owned element{QVCSSElementCreate()};
    EXPECT_EQ(QVCSSElementGetSelectors(element.Get()), nullptr);
    EXPECT_EQ(QVCSSElementGetProperties(element.Get()), nullptr);
    EXPECT_EQ(QVCSSElementGetPropertyOrder(element.Get()), nullptr);
    EXPECT_EQ(QVCSSElementGetString(element.Get()), nullptr);
    const Owned none{QVArrayCreateWithCapacity(0)};
    QVCSSElementSetSelectors(element.Get(), none.Get());
    EXPECT_EQ(QVCSSElementGetString(element.Get()), nullptr);

    const Owned null{QVNullCreate()};
    const Owned selectors{QVArrayCreateWithObject(QVSTR(L"a"))};
    QVArrayAddObject(selectors.Get(), null.Get());
    QVArrayAddObject(selectors.Get(), QVSTR(L"b"));
    QVCSSElementSetSelectors(element.Get(), selectors.Get());
    EXPECT_EQ(QVGetRetainCount(none.Get()), 1UL);
    EXPECT_EQ(QVGetRetainCount(selectors.Get()), 2UL);
    QVCSSElementSetSelectors(element.Get(), selectors.Get());
    EXPECT_EQ(QVGetRetainCount(selectors.Get()), 2UL);
    EXPECT_EQ(Text(QVCSSElementGetString(element.Get())), L"a, b");

    const Owned properties{QVDictionaryCreate()};
    QVDictionarySetObject(properties.Get(), QVSTR(L"v"), L"k");
    QVDictionarySetObject(properties.Get(), null.Get(), L"no string");
    QVCSSElementSetProperties(element.Get(), properties.Get());
    EXPECT_EQ(Text(QVCSSElementGetString(element.Get())), L"a, b");
    const Owned order{QVArrayCreateWithObject(QVSTR(L"missing"))};
    for (const wchar_t* name : {L"no string", L"k"})
        QVArrayAddObject(order.Get(), QVSTR(name));
    QVArrayAddObject(order.Get(), null.Get());
    QVCSSElementSetPropertyOrder(element.Get(), order.Get());
    EXPECT_EQ(Text(QVCSSElementGetString(element.Get())), L"a, b {\n\tk: v;\n");
    QVCSSElementSetProperties(element.Get(), nullptr);
    EXPECT_EQ(Text(QVCSSElementGetString(element.Get())), L"a, b");
}

TEST_F(CSS, ReplacingEditsTheStringItself) {
    const Owned sheet = String(L"p{a:b}h1{c:d}q{e:f}");
    const Owned parser{QVCSSParserCreateWithString(sheet.Get())};
    unsigned int start = 0;
    unsigned int length = 0;
    void* element = QVCSSParserFindCSSElementWithSelector(parser.Get(), QVSTR(L"h1"), 0, &start, &length);
    QVDictionarySetObject(QVCSSElementGetProperties(element), QVSTR(L"new"), L"c");
    QVCSSParserReplaceCSSElement(parser.Get(), element, start, length);
    // The text of an element has no closing brace.
    EXPECT_EQ(Text(sheet.Get()), L"p{a:b}h1 {\n\tc: new;\nq{e:f}");

    QVCSSParserReplaceCSSElement(parser.Get(), element, 1000, 1);
    const Owned empty{QVCSSElementCreate()};
    QVCSSParserReplaceCSSElement(parser.Get(), empty.Get(), 0, 3);
    QVCSSParserReplaceCSSElement(parser.Get(), nullptr, 0, 3);
    EXPECT_EQ(Text(sheet.Get()), L"p{a:b}h1 {\n\tc: new;\nq{e:f}");
}

TEST_F(CSS, CharsetRulesNameTheEncoding) {
    const Owned sheet = String(L"");
    const Owned parser{QVCSSParserCreateWithString(sheet.Get())};
    const Owned element{QVCSSParserCreateCharSetElement(parser.Get(), {QVEncodingUTF8, 0, 0})};
    EXPECT_EQ(Joined(QVCSSElementGetSelectors(element.Get())), L"[@charset][\"UTF-8\";]");
    EXPECT_EQ(Text(QVCSSElementGetString(element.Get())), L"@charset \"UTF-8\";");
    QVCSSParserSetCharSet(parser.Get(), element.Get(), {QVEncodingUTF16, 2, 0});
    EXPECT_EQ(Text(QVCSSElementGetString(element.Get())), L"@charset \"UTF-16BE\";");
    QVCSSParserSetCharSet(parser.Get(), element.Get(), {QVEncodingUTF16, 0, 0});
    EXPECT_EQ(Text(QVCSSElementGetString(element.Get())), L"@charset \"UTF-16BE\";");
    EXPECT_EQ(QVCSSParserCreateCharSetElement(parser.Get(), {QVEncodingUTF16, 0, 0}), nullptr);

    // A rule that is written is found again.
    QVStringReplaceString(sheet.Get(), QVCSSElementGetString(element.Get()), 0, 0);
    void* found = QVCSSParserFindNextCSSElement(parser.Get(), 0, nullptr, nullptr, nullptr);
    EXPECT_EQ(Joined(QVCSSElementGetSelectors(found)), L"[@charset][\"UTF-16BE\";]");
    EXPECT_EQ(QVArrayGetCount(QVCSSElementGetPropertyOrder(found)), 0UL);
}

TEST_F(CSS, NullIsTolerated) {
    const Owned parser{QVCSSParserCreateWithString(nullptr)};
    unsigned int start = 7;
    EXPECT_EQ(QVCSSParserFindNextCSSElement(parser.Get(), 0, &start, nullptr, nullptr), nullptr);
    EXPECT_EQ(start, 0U);
    EXPECT_EQ(QVCSSParserFindCSSElementWithSelector(parser.Get(), QVSTR(L"x"), 0, nullptr, nullptr), nullptr);
    start = 7;
    EXPECT_EQ(QVCSSParserFindNextCSSElement(nullptr, 0, &start, nullptr, nullptr), nullptr);
    EXPECT_EQ(start, 0U);
    EXPECT_EQ(QVCSSParserFindCSSElementWithSelector(nullptr, nullptr, 0, nullptr, nullptr), nullptr);
    QVCSSParserReplaceCSSElement(nullptr, nullptr, 0, 0);
    QVCSSParserSetCharSet(nullptr, nullptr, {QVEncodingUTF8, 0, 0});
    QVCSSElementSetSelectors(nullptr, nullptr);
    QVCSSElementSetProperties(nullptr, nullptr);
    QVCSSElementSetPropertyOrder(nullptr, nullptr);
    EXPECT_EQ(QVCSSElementGetSelectors(nullptr), nullptr);
    EXPECT_EQ(QVCSSElementGetProperties(nullptr), nullptr);
    EXPECT_EQ(QVCSSElementGetPropertyOrder(nullptr), nullptr);
    EXPECT_EQ(QVCSSElementGetString(nullptr), nullptr);
}

TEST_F(CSS, EveryFailingAllocationLeavesNothingBehind) {
    const Owned sheet = String(L"a long selector, another { color/*c*/: red; margin: 0 auto }");
    const Owned selector = String(L"a");
    (void)QVGetMIMECharSetName(QVEncodingUTF8, 0);
    const std::size_t before = qvtest::LiveAllocations();
    const qvtest::LogCapture log;
    const std::size_t failures = qvtest::FailEachAllocation([&] {
        const Owned pool{QVTemporaryObjectsPoolCreate()};
        if (!pool) return;
        const Owned parser{QVCSSParserCreateWithString(sheet.Get())};
        void* element = QVCSSParserFindNextCSSElement(parser.Get(), 0, nullptr, nullptr, nullptr);
        (void)QVCSSElementGetString(element);
        (void)QVCSSParserFindCSSElementWithSelector(parser.Get(), selector.Get(), 0, nullptr, nullptr);
        const Owned charSet{QVCSSParserCreateCharSetElement(parser.Get(), {QVEncodingUTF8, 0, 0})};
    });
    EXPECT_GE(failures, 20U);
    EXPECT_EQ(qvtest::LiveAllocations(), before);
}

// Whether a text holds control characters, spaces and whole comments alone.
bool IsGap(const std::wstring& text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text.compare(i, 2, L"/*") == 0) {
            i = text.find(L"*/", i + 2);
            if (i == std::wstring::npos) return false;
            ++i;
        } else if (text[i] > L' ') {
            return false;
        }
    }
    return true;
}

// Style sheets that people use, from Debian's packages.
TEST_F(CSS, RealStyleSheetsAreTiledByTheirElements) {
    for (const char* path : {"/usr/share/javascript/bootstrap5/css/bootstrap.css",
                             "/usr/share/nodejs/normalize.css/normalize.css"}) {
        SCOPED_TRACE(path);
        ASSERT_TRUE(std::filesystem::exists(path)) << "install libjs-bootstrap5 and node-normalize.css";
        std::ifstream file(path, std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(file), {}};
        const Owned sheet{QVStringCreateWithCStringAndLength(bytes.data(), bytes.size())};
        const std::wstring text = QVStringGetBuffer(sheet.Get());
        ASSERT_GT(text.size(), 1000U);
        const Owned parser{QVCSSParserCreateWithString(sheet.Get())};

        std::size_t elements = 0;
        unsigned int end = 0;
        for (;;) {
            const Owned pool{QVTemporaryObjectsPoolCreate()};
            unsigned int start = 0;
            unsigned int length = 0;
            int error = 0;
            void* element = QVCSSParserFindNextCSSElement(parser.Get(), end, &start, &length, &error);
            ASSERT_EQ(error, 0);
            const std::size_t next = element == nullptr ? text.size() : start;
            EXPECT_TRUE(IsGap(text.substr(end, next - end)));
            if (element == nullptr) break;
            ++elements;
            EXPECT_NE(std::wstring(L"{};").find(text[start + length - 1]), std::wstring::npos);
            end = start + length;
        }
        EXPECT_GT(elements, 30U);
    }
}

}  // namespace
