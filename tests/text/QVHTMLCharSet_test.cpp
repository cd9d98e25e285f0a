#include <gtest/gtest.h>
#include <string>
#include <vector>

#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVDictionary.h>
#include <QVFoundation/QVHTMLCharSet.h>
#include <QVFoundation/QVLibrary.h>
#include <QVFoundation/QVString.h>
#include <QVFoundation/QVTemporaryObjectsPool.h>

#include "base/html_entities.h"
#include "runtime/Owned.h"
#include "support/failing_allocator.h"
#include "support/log_capture.h"

namespace {

using qv::Owned;

class HTMLCharSet : public testing::Test {
protected:
    HTMLCharSet() { QVFoundationInit(); }
    ~HTMLCharSet() override { QVFoundationExit(); }

    static std::wstring Text(void* string) { return {QVStringGetBuffer(string), QVStringGetLength(string)}; }
    static std::wstring Full(const wchar_t* text) {
        return Text(QVStringByReplacingToHTMLCharSet(QVSTR(text), 0));
    }
    static std::wstring Limited(const wchar_t* text) {
        return Text(QVStringByReplacingToHTMLCharSet(QVSTR(text), 1));
    }
    static void* Singleton(const char* name) {
        const std::string key = std::string("org.qvfoundation.QVFoundation.QVString.HTMLCharSet") + name;
        return QVSingletonGetObject(std::wstring(key.begin(), key.end()).c_str());
    }
};

TEST_F(HTMLCharSet, MarkupCharactersAreReplacedInBothVariants) {
    EXPECT_EQ(Limited(L"x<y"), L"x&lt;y");
    EXPECT_EQ(Limited(L"R&D"), L"R&amp;D");
    EXPECT_EQ(Full(L"a > \"b\""), L"a &gt; &quot;b&quot;");
}

TEST_F(HTMLCharSet, LettersAreReplacedInTheFullVariantAlone) {
    EXPECT_EQ(Full(L"caf\u00E9"), L"caf&eacute;");
    EXPECT_EQ(Limited(L"caf\u00E9"), L"caf\u00E9");
}

TEST_F(HTMLCharSet, WhatHasNoEntityStays) {
    EXPECT_EQ(Full(L"It's \u00A0\u00A9 \u65E5\U0001F600"), L"It's \u00A0\u00A9 \u65E5\U0001F600");
    EXPECT_EQ(Limited(L"It's"), L"It's");
    EXPECT_EQ(Full(L""), L"");
    const wchar_t zero[] = {L'<', 0, L'>'};
    const Owned string{QVStringCreateWithWideStringAndLength(zero, 3)};
    EXPECT_EQ(Text(QVStringByReplacingToHTMLCharSet(string.Get(), 1)), std::wstring(L"&lt;\0&gt;", 9));
}

TEST_F(HTMLCharSet, EntitiesInTheTextAreEscapedAgain) {
    EXPECT_EQ(Full(L"&amp;"), L"&amp;amp;");
}

TEST_F(HTMLCharSet, TheResultIsATemporaryOfItsOwn) {
    const Owned string{QVStringCreateWithWideString(L"plain")};
    void* replaced = QVStringByReplacingToHTMLCharSet(string.Get(), 0);
    EXPECT_NE(replaced, string.Get());
    EXPECT_EQ(QVGetRetainCount(replaced), 1UL);
}

TEST_F(HTMLCharSet, FourTablesAreRegisteredWithEveryRow) {
    (void)Full(L"x");
    const struct {
        const char* to;
        const char* from;
        qv::HtmlCharSet charSet;
    } tables[] = {{"To", "From", qv::HtmlCharSet::kFull},
                  {"LimitedTo", "LimitedFrom", qv::HtmlCharSet::kLimited}};
    for (const auto& table : tables) {
        void* to = Singleton(table.to);
        void* from = Singleton(table.from);
        const auto rows = qv::HtmlEntities(table.charSet);
        EXPECT_EQ(QVDictionaryCount(to), rows.size());
        EXPECT_EQ(QVDictionaryCount(from), rows.size());
        for (const qv::HtmlEntity& row : rows) {
            const wchar_t character[] = {row.character, 0};
            EXPECT_EQ(Text(QVDictionaryGetObject(to, character)), row.entity);
            EXPECT_EQ(Text(QVDictionaryGetObject(from, row.entity)), character);
        }
    }
}

TEST_F(HTMLCharSet, AnArrayKeepsItsOrderAndItsOtherObjects) {
    const Owned null{QVNullCreate()};
    const Owned inner{QVArrayCreateWithObject(QVSTR(L"<"))};
    const Owned array{QVArrayCreateWithCapacity(0)};
    QVArrayAddObject(array.Get(), QVSTR(L"<a>"));
    QVArrayAddObject(array.Get(), null.Get());
    QVArrayInsertObjectAtIndex(array.Get(), nullptr, 2);
    QVArrayAddObject(array.Get(), inner.Get());
    QVArrayAddObject(array.Get(), QVSTR(L"\u00FC"));
    void* replaced = QVArrayByReplacingToHTMLCharSet(array.Get(), 1);
    ASSERT_EQ(QVArrayGetCount(replaced), 5UL);
    EXPECT_EQ(Text(QVArrayGetObjectAtIndex(replaced, 0)), L"&lt;a&gt;");
    EXPECT_EQ(QVArrayGetObjectAtIndex(replaced, 1), null.Get());
    EXPECT_EQ(QVArrayGetObjectAtIndex(replaced, 2), nullptr);
    EXPECT_EQ(QVArrayGetObjectAtIndex(replaced, 3), inner.Get());
    EXPECT_EQ(Text(QVArrayGetObjectAtIndex(replaced, 4)), L"\u00FC");
    EXPECT_EQ(Text(QVArrayGetObjectAtIndex(inner.Get(), 0)), L"<");
    EXPECT_EQ(QVGetRetainCount(replaced), 1UL);
    EXPECT_EQ(QVGetRetainCount(null.Get()), 3UL);
}

TEST_F(HTMLCharSet, ADictionaryHasItsKeysAndStringsReplaced) {
    const Owned null{QVNullCreate()};
    const Owned dictionary{QVDictionaryCreate()};
    QVDictionarySetObject(dictionary.Get(), null.Get(), L"<k>");
    QVDictionarySetObject(dictionary.Get(), QVSTR(L"\u00E9&"), L"plain");
    void* replaced = QVDictionaryByReplacingToHTMLCharSet(dictionary.Get(), 0);
    EXPECT_EQ(QVDictionaryCount(replaced), 2U);
    EXPECT_EQ(QVDictionaryGetObject(replaced, L"&lt;k&gt;"), null.Get());
    EXPECT_EQ(Text(QVDictionaryGetObject(replaced, L"plain")), L"&eacute;&amp;");
    EXPECT_EQ(QVDictionaryGetObject(dictionary.Get(), L"<k>"), null.Get());
}

TEST_F(HTMLCharSet, NullIsTolerated) {
    EXPECT_EQ(QVStringByReplacingToHTMLCharSet(nullptr, 0), nullptr);
    EXPECT_EQ(QVArrayByReplacingToHTMLCharSet(nullptr, 0), nullptr);
    EXPECT_EQ(QVDictionaryByReplacingToHTMLCharSet(nullptr, 0), nullptr);
}

TEST_F(HTMLCharSet, EveryFailingAllocationLeavesNothingBehind) {
    const Owned dictionary{QVDictionaryCreate()};
    QVDictionarySetObject(dictionary.Get(), QVSTR(L"<>"), L"&");
    const Owned array{QVArrayCreateWithObject(QVSTR(L"a text that is too long to lie inside its object <>"))};
    (void)Full(L"tables");
    const std::size_t before = qvtest::LiveAllocations();
    const qvtest::LogCapture log;
    const std::size_t failures = qvtest::FailEachAllocation([&] {
        const Owned pool{QVTemporaryObjectsPoolCreate()};
        if (!pool) return;
        (void)QVArrayByReplacingToHTMLCharSet(array.Get(), 0);
        (void)QVDictionaryByReplacingToHTMLCharSet(dictionary.Get(), 0);
    });
    EXPECT_GE(failures, 8U);
    EXPECT_EQ(qvtest::LiveAllocations(), before);
}

TEST(HTMLCharSetWithoutLibrary, LeavesTextUnchangedAndSaysWhy) {
    const Owned pool{QVTemporaryObjectsPoolCreate()};
    const Owned string{QVStringCreateWithWideString(L"<>")};
    qvtest::LogCapture log;
    EXPECT_EQ(QVStringByReplacingToHTMLCharSet(string.Get(), 1), string.Get());
    EXPECT_FALSE(log.Messages().empty());
    for (const std::string& message : log.Messages())
        EXPECT_EQ(message, "QVFoundation is not initialized.");
}

}  // namespace
