#include <clocale>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <string>

#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVData.h>
#include <QVFoundation/QVDate.h>
#include <QVFoundation/QVDictionary.h>
#include <QVFoundation/QVLinkedList.h>
#include <QVFoundation/QVNumber.h>
#include <QVFoundation/QVPlist.h>
#include <QVFoundation/QVString.h>
#include <QVFoundation/QVTemporaryObjectsPool.h>
#include <QVFoundation/QVTree.h>
#include <QVFoundation/QVXMLTree.h>

#include "runtime/Owned.h"
#include "support/consumers.h"
#include "support/failing_allocator.h"
#include "support/log_capture.h"

namespace {

using qv::Owned;

constexpr char kHead[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?><!DOCTYPE plist PUBLIC \"-//Apple Computer//DTD PLIST "
    "1.0//EN\" "
    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\"><plist version=\"1.0\">";

std::string Bytes(void* data) {
    return {static_cast<const char*>(QVDataGetImutableBuffer(data)), QVDataGetSize(data)};
}

// The same without memory of its own, for tests in which memory fails.
bool HoldsBytes(void* data, const std::string& bytes) {
    return QVDataGetSize(data) == bytes.size() &&
           std::memcmp(QVDataGetImutableBuffer(data), bytes.data(), bytes.size()) == 0;
}

class Plist : public testing::Test {
protected:
    const Owned pool_{QVTemporaryObjectsPoolCreate()};

    static std::string Whole(void* root) {
        const Owned data{QVPlistCreateData(root)};
        return data ? Bytes(data.Get()) : "null";
    }

    // What stands inside the plist element, or "null".
    static std::string Inner(void* root) {
        const std::string text = Whole(root);
        if (text == "null") return text;
        const std::string head = kHead;
        const std::string tail = "</plist>";
        EXPECT_EQ(text.substr(0, head.size()), head);
        EXPECT_EQ(text.substr(text.size() - tail.size()), tail);
        return text.substr(head.size(), text.size() - head.size() - tail.size());
    }

    static std::string InnerOfNew(void* number) { return Inner(QVTEMPOBJ(number)); }
};

TEST_F(Plist, StringsAreEscapedByTheLimitedTable) {
    EXPECT_EQ(Inner(QVSTR(L"a & b < c > \"d\" 'e' \u00E9\U0001F600")),
              "<string>a &amp; b &lt; c &gt; &quot;d&quot; 'e' \xC3\xA9\xF0\x9F\x98\x80</string>");
    EXPECT_EQ(Inner(QVSTR(L"")), "<string></string>");
    const std::wstring text(100000, L'<');
    EXPECT_EQ(Inner(QVSTR(text.c_str())).size(), 4 * text.size() + 17);
}

TEST_F(Plist, BooleansAreEmptyElements) {
    EXPECT_EQ(InnerOfNew(QVNumberCreateWithBool(1)), "<true/>");
    EXPECT_EQ(InnerOfNew(QVNumberCreateWithBool(0)), "<false/>");
}

TEST_F(Plist, RealsHaveSixDecimalPlaces) {
    EXPECT_EQ(InnerOfNew(QVNumberCreateWithDouble(1.5)), "<real>1.500000</real>");
    EXPECT_EQ(InnerOfNew(QVNumberCreateWithFloat(-0.1F)), "<real>-0.100000</real>");
    EXPECT_EQ(InnerOfNew(QVNumberCreateWithDouble(1e-9)), "<real>0.000000</real>");
    char expected[400];
    for (const double value :
         {1.7976931348623157e308, -1.7976931348623157e308, 0.5, 2.5e-7, 123456789.987654321}) {
        std::snprintf(expected, sizeof expected, "<real>%f</real>", value);
        EXPECT_EQ(InnerOfNew(QVNumberCreateWithDouble(value)), expected);
    }
    EXPECT_EQ(InnerOfNew(QVNumberCreateWithDouble(INFINITY)), "<real>inf</real>");
    EXPECT_EQ(InnerOfNew(QVNumberCreateWithDouble(std::numeric_limits<double>::quiet_NaN())),
              "<real>nan</real>");
}

TEST_F(Plist, SmallIntegersAreIntegers) {
    EXPECT_EQ(InnerOfNew(QVNumberCreateWithSInt8(-128)), "<integer>-128</integer>");
    EXPECT_EQ(InnerOfNew(QVNumberCreateWithSInt16(-32768)), "<integer>-32768</integer>");
    EXPECT_EQ(InnerOfNew(QVNumberCreateWithSInt32(INT32_MIN)), "<integer>-2147483648</integer>");
    EXPECT_EQ(InnerOfNew(QVNumberCreateWithSInt32(INT32_MAX)), "<integer>2147483647</integer>");
    EXPECT_EQ(InnerOfNew(QVNumberCreateWithUInt8(255)), "<integer>255</integer>");
    EXPECT_EQ(InnerOfNew(QVNumberCreateWithUInt16(65535)), "<integer>65535</integer>");
    EXPECT_EQ(InnerOfNew(QVNumberCreateWithUInt32(2147483647U)), "<integer>2147483647</integer>");
    EXPECT_EQ(InnerOfNew(QVNumberCreateWithUInt64(0)), "<integer>0</integer>");
    EXPECT_EQ(InnerOfNew(QVNumberCreateWithUInt64(2147483647U)), "<integer>2147483647</integer>");
    EXPECT_EQ(InnerOfNew(QVNumberCreateWithSInt64(2147483647)), "<integer>2147483647</integer>");
    EXPECT_EQ(InnerOfNew(QVNumberCreateWithSInt64(-1)), "<integer>-1</integer>");
    EXPECT_EQ(InnerOfNew(QVNumberCreateWithSInt64(-2147483648LL)), "<integer>-2147483648</integer>");
}

TEST_F(Plist, LargeIntegersAreReals) {
    EXPECT_EQ(InnerOfNew(QVNumberCreateWithUInt32(2147483648U)), "<real>2147483648</real>");
    EXPECT_EQ(InnerOfNew(QVNumberCreateWithUInt32(3000000000U)), "<real>3000000000</real>");
    EXPECT_EQ(InnerOfNew(QVNumberCreateWithSInt64(2147483648LL)), "<real>2147483648</real>");
    EXPECT_EQ(InnerOfNew(QVNumberCreateWithSInt64(5000000000LL)), "<real>5000000000</real>");
    EXPECT_EQ(InnerOfNew(QVNumberCreateWithSInt64(INT64_MAX)), "<real>9223372036854775808</real>");
    EXPECT_EQ(InnerOfNew(QVNumberCreateWithUInt64(UINT64_MAX)), "<real>18446744073709551616</real>");
}

TEST_F(Plist, NegativeIntegersBelow32BitsShowTheirLowHalf) {
    EXPECT_EQ(InnerOfNew(QVNumberCreateWithSInt64(-2147483649LL)), "<integer>2147483647</integer>");
    EXPECT_EQ(InnerOfNew(QVNumberCreateWithSInt64(INT64_MIN)), "<integer>0</integer>");
}

TEST_F(Plist, NumbersLookTheSameInEveryLocale) {
    // No locale with a decimal comma need be installed: the text must not go through the locale at all.
    const std::string before = std::setlocale(LC_ALL, nullptr);
    for (const char* name : {"de_DE.UTF-8", "C.UTF-8", "C"}) {
        if (std::setlocale(LC_ALL, name) == nullptr) continue;
        EXPECT_EQ(InnerOfNew(QVNumberCreateWithDouble(1234567.25)), "<real>1234567.250000</real>");
    }
    std::setlocale(LC_ALL, before.c_str());
}

TEST_F(Plist, DataIsBase64WithoutLineBreaks) {
    EXPECT_EQ(InnerOfNew(QVDataCreate("Man", 3)), "<data>TWFu</data>");
    EXPECT_EQ(InnerOfNew(QVDataCreate("M", 1)), "<data>TQ==</data>");
    EXPECT_EQ(InnerOfNew(QVDataCreate(nullptr, 0)), "<data></data>");
    const std::string text = InnerOfNew(QVDataCreate(nullptr, 100000));
    EXPECT_EQ(text, "<data>" + std::string(133334, 'A') + "==</data>");
}

TEST_F(Plist, DatesAreUTC) {
    setenv("TZ", "Europe/Berlin", 1);
    void* date = QVDateNow();
    QVDateSetYear(date, 2026);
    QVDateSetMonthOfYear(date, 11);
    QVDateSetDayOfMonth(date, 15);
    QVDateSetHour(date, 16);
    QVDateSetMinutes(date, 8);
    QVDateSetSeconds(date, 30);
    QVDateAdjustComponents(date);
    const bool summer = QVDateIsSummerTime(date);
    EXPECT_FALSE(summer);
    const int hour = QVDateGetHour(date);
    EXPECT_EQ(Inner(date),
              hour == 16 ? "<date>2026-11-15T15:08:30Z</date>" : "<date>2026-11-15T14:08:30Z</date>");
    // In July the UTC components must not be read as local time again.
    QVDateSetMonthOfYear(date, 7);
    QVDateSetHour(date, 16);
    QVDateAdjustComponents(date);
    QVDateSetHour(date, 16);
    QVDateAdjustComponents(date);
    ASSERT_TRUE(QVDateIsSummerTime(date));
    EXPECT_EQ(Inner(date), "<date>2026-07-15T14:08:30Z</date>");
    QVDateSetYear(date, std::numeric_limits<int>::min());
    EXPECT_EQ(Inner(date), "null");
    unsetenv("TZ");
}

TEST_F(Plist, ContainersKeepTheirOrder) {
    const Owned array{QVArrayCreateWithCapacity(0)};
    EXPECT_EQ(Inner(array.Get()), "<array></array>");
    const Owned dictionary{QVDictionaryCreate()};
    EXPECT_EQ(Inner(dictionary.Get()), "<dict></dict>");
    QVArrayAddObject(array.Get(), QVSTR(L"x"));
    QVArrayAddObject(array.Get(), dictionary.Get());
    QVArrayAddObject(array.Get(), dictionary.Get());
    EXPECT_EQ(Inner(array.Get()), "<array><string>x</string><dict></dict><dict></dict></array>");
    QVDictionarySetObject(dictionary.Get(), QVSTR(L"2"), L"b");
    QVDictionarySetObject(dictionary.Get(), QVSTR(L"1"), L"B & a");
    EXPECT_EQ(Inner(dictionary.Get()),
              "<dict><key>B &amp; a</key><string>1</string><key>b</key><string>2</string></dict>");
}

TEST_F(Plist, WhatCannotBeWrittenMakesTheWholeListNull) {
    const Owned null{QVNullCreate()};
    const Owned list{QVLinkedListCreate()};
    const Owned tree{QVTreeCreate()};
    for (void* object : {null.Get(), list.Get(), tree.Get(), static_cast<void*>(nullptr)}) {
        EXPECT_EQ(Inner(object), "null");
        if (object == nullptr) continue;
        const Owned dictionary{QVDictionaryCreate()};
        QVDictionarySetObject(dictionary.Get(), object, L"k");
        const Owned array{QVArrayCreateWithObject(dictionary.Get())};
        EXPECT_EQ(Inner(array.Get()), "null");
    }
    const Owned array{QVArrayCreateWithCapacity(0)};
    QVArrayInsertObjectAtIndex(array.Get(), nullptr, 0);
    EXPECT_EQ(Inner(array.Get()), "null");
}

TEST_F(Plist, AContainerInsideItselfIsRefused) {
    const Owned array{QVArrayCreateWithCapacity(0)};
    const Owned dictionary{QVDictionaryCreate()};
    QVDictionarySetObject(dictionary.Get(), array.Get(), L"k");
    QVArrayAddObject(array.Get(), dictionary.Get());
    EXPECT_EQ(Inner(array.Get()), "null");
    QVArrayRemoveAllObjects(array.Get());
}

TEST_F(Plist, NestingHasALimit) {
    Owned array{QVArrayCreateWithCapacity(0)};
    for (int i = 1; i < 10000; ++i)
        array = Owned{QVArrayCreateWithObject(array.Get())};
    // QVArrayCreateWithObject retains, so each level has one owner once the outer one stands.
    EXPECT_EQ(Inner(array.Get()).size(), 10000U * 15);
    array = Owned{QVArrayCreateWithObject(array.Get())};
    EXPECT_EQ(Inner(array.Get()), "null");
}

// The text is defined as that of an XML tree: this builds the tree and compares.
void* NodeWithText(const wchar_t* element, void* text) {
    void* node = QVTEMPOBJ(QVXMLTreeCreateElementNode(QVSTR(element), nullptr, nullptr, 0));
    QVTreeAddChild(node, QVTEMPOBJ(QVXMLTreeCreateTextNode(text)));
    return node;
}

TEST_F(Plist, TheTextIsThatOfTheEquivalentXMLTree) {
    const Owned inner{QVArrayCreateWithCapacity(0)};
    QVArrayAddObject(inner.Get(), QVSTR(L"a<b"));
    const Owned number{QVNumberCreateWithSInt32(42)};
    QVArrayAddObject(inner.Get(), number.Get());
    const Owned dictionary{QVDictionaryCreate()};
    QVDictionarySetObject(dictionary.Get(), inner.Get(), L"k&");

    void* array = QVTEMPOBJ(QVXMLTreeCreateElementNode(QVSTR(L"array"), nullptr, nullptr, 0));
    QVTreeAddChild(array, NodeWithText(L"string", QVSTR(L"a<b")));
    QVTreeAddChild(array, NodeWithText(L"integer", QVSTR(L"42")));
    void* dict = QVTEMPOBJ(QVXMLTreeCreateElementNode(QVSTR(L"dict"), nullptr, nullptr, 0));
    QVTreeAddChild(dict, NodeWithText(L"key", QVSTR(L"k&")));
    QVTreeAddChild(dict, array);
    const Owned order{QVArrayCreateWithObject(QVSTR(L"version"))};
    const Owned attributes{QVDictionaryCreate()};
    QVDictionarySetObject(attributes.Get(), QVSTR(L"1.0"), L"version");
    void* plist = QVTEMPOBJ(QVXMLTreeCreateElementNode(QVSTR(L"plist"), order.Get(), attributes.Get(), 0));
    QVTreeAddChild(plist, dict);
    void* document = QVTEMPOBJ(QVXMLTreeCreateDocumentNode());
    QVTreeAddChild(
        document,
        QVTEMPOBJ(QVXMLTreeCreateProcessingInstructionNode(QVSTR(L"version=\"1.0\" encoding=\"UTF-8\""))));
    QVTreeAddChild(document, QVTEMPOBJ(QVXMLTreeCreateDocumentTypeNode(
                                 QVSTR(L"plist"), QVSTR(L"http://www.apple.com/DTDs/PropertyList-1.0.dtd"),
                                 QVSTR(L"-//Apple Computer//DTD PLIST 1.0//EN"))));
    QVTreeAddChild(document, plist);
    const Owned expected{QVXMLTreeCreateData(document, 1)};
    EXPECT_EQ(Whole(dictionary.Get()), Bytes(expected.Get()));
}

TEST_F(Plist, OtherReadersFindTheSameValues) {
    const Owned dictionary{QVDictionaryCreate()};
    const auto set = [&](const wchar_t* key, void* value) {
        QVDictionarySetObject(dictionary.Get(), QVTEMPOBJ(value), key);
    };
    set(L"bool", QVNumberCreateWithBool(1));
    set(L"int", QVNumberCreateWithSInt32(-42));
    set(L"big", QVNumberCreateWithUInt64(5000000000ULL));
    set(L"real", QVNumberCreateWithDouble(1.5));
    set(L"data", QVDataCreate("\0\1\2\377", 4));
    set(L"text <&>", QVStringCreateWithWideString(L"\"caf\u00E9\" <b> & 'c' \U0001F600"));
    void* array = QVArrayCreateWithCapacity(0);
    QVArrayAddObject(array, QVSTR(L"x"));
    set(L"array", array);
    const std::string text = Whole(dictionary.Get());
    const char* expected =
        "{'array': ['x'], 'big': 5000000000.0, 'bool': True, 'data': b'\\x00\\x01\\x02\\xff', 'int': -42, "
        "'real': 1.5, 'text <&>': '\"caf\\xe9\" <b> & \\'c\\' \\U0001f600'}\n";
    EXPECT_EQ(qvtest::OutputOf("python3 -c 'import plistlib, sys; "
                               "print(ascii(plistlib.load(sys.stdin.buffer, fmt=plistlib.FMT_XML)))'",
                               text),
              expected);
    EXPECT_EQ(qvtest::OutputOf("xmllint --noout --nonet -", text), "");
    // Through libplist into its binary form and back, read by plistlib again.
    EXPECT_EQ(qvtest::OutputOf("plistutil -i - -f bin | python3 -c 'import plistlib, sys; "
                               "print(ascii(plistlib.loads(sys.stdin.buffer.read())))'",
                               text),
              expected);
}

TEST_F(Plist, EveryFailingAllocationLeavesNothingBehind) {
    const Owned dictionary{QVDictionaryCreate()};
    const Owned array{QVArrayCreateWithObject(QVSTR(L"a text"))};
    const Owned data{QVDataCreate(nullptr, 10000)};
    QVArrayAddObject(array.Get(), data.Get());
    QVArrayAddObject(array.Get(), QVDateNow());
    QVDictionarySetObject(dictionary.Get(), array.Get(), L"k");
    const std::string expected = Whole(dictionary.Get());
    const qvtest::LogCapture log;
    const std::size_t before = qvtest::LiveAllocations();
    const std::size_t failures = qvtest::FailEachAllocation([&] {
        const Owned plist{QVPlistCreateData(dictionary.Get())};
        if (plist) {
            EXPECT_TRUE(HoldsBytes(plist.Get(), expected));
        }
    });
    EXPECT_GE(failures, 5U);
    EXPECT_EQ(qvtest::LiveAllocations(), before);
}

}  // namespace
