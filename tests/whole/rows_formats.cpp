// The binary object format, property lists, XML trees and style sheets.
#include <QVFoundation/QVAdditions.h>
#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVBinaryFormat.h>
#include <QVFoundation/QVCSSParser.h>
#include <QVFoundation/QVData.h>
#include <QVFoundation/QVDate.h>
#include <QVFoundation/QVDictionary.h>
#include <QVFoundation/QVEncoding.h>
#include <QVFoundation/QVNumber.h>
#include <QVFoundation/QVPlist.h>
#include <QVFoundation/QVTree.h>
#include <QVFoundation/QVXMLTree.h>

#include "support/strings.h"
#include "support/temporary_directory.h"
#include "whole/row.h"

namespace qvtest {
namespace {

using qv::Owned;

const std::wstring kLong(100, L'x');
constexpr QVEncodingInfo kUtf8 = {QVEncodingUTF8, 0, 0};
constexpr QVEncodingInfo kUtf32 = {QVEncodingUTF32, 2, 0};

// A dictionary with one object of every class that the formats can write.
Owned EveryKind() {
    const Owned string = MakeString(kLong);
    const Owned number{QVNumberCreateWithDouble(0.5)};
    const Owned data{QVDataCreate(kLong.data(), 100)};
    const Owned array{QVArrayCreateWithCapacity(0)};
    QVArrayAddObject(array.Get(), string.Get());
    QVArrayAddObject(array.Get(), number.Get());
    Owned dictionary{QVDictionaryCreate()};
    QVDictionarySetObject(dictionary.Get(), array.Get(), L"array");
    QVDictionarySetObject(dictionary.Get(), data.Get(), L"data");
    QVDictionarySetObject(dictionary.Get(), QVDateNow(), kLong.c_str());
    return dictionary;
}

Owned EveryKindAsData() {
    return Owned{QVBinaryFormatCreateData(EveryKind().Get())};
}

// A path of a file with an object of every kind in a directory.
Owned WrittenFile(const TemporaryDirectory& directory) {
    Owned path{QVStringCreateWithCString((directory / "a file with a name of some length").c_str())};
    QVBinaryFormatWriteToFile(path.Get(), EveryKind().Get());
    return path;
}

Rows BinaryFormatRows() {
    return {
        {"QVBinaryFormatCreateData",
         [](Attempt& attempt) {
             const Owned object = EveryKind();
             attempt.OthersLog().Creates([&] { return QVBinaryFormatCreateData(object.Get()); });
         },
         [] { return QVBinaryFormatCreateData(nullptr) == nullptr; }},
        {"QVBinaryFormatWriteToStream",
         [](Attempt& attempt) {
             const Owned object = EveryKind();
             const Owned data{QVDataCreate(nullptr, 0)};
             const Owned stream{QVStreamCreateWithMemory(data.Get())};
             attempt.OthersLog().AnswersCode(
                 [&] { return QVBinaryFormatWriteToStream(stream.Get(), object.Get()); });
         },
         [] {
             const Owned data{QVDataCreate(nullptr, 0)};
             const Owned stream{QVStreamCreateWithMemory(data.Get())};
             return QVBinaryFormatWriteToStream(nullptr, nullptr) == QVErrParam &&
                    QVBinaryFormatWriteToStream(nullptr, data.Get()) == QVErrParam &&
                    QVBinaryFormatWriteToStream(stream.Get(), nullptr) == QVErrParam;
         }},
        {"QVBinaryFormatWriteToFile",
         [](Attempt& attempt) {
             const TemporaryDirectory directory;
             const Owned path = WrittenFile(directory);
             const Owned object = EveryKind();
             attempt.OthersLog().MayDoWithout().AnswersCode(
                 [&] { return QVBinaryFormatWriteToFile(path.Get(), object.Get()); });
         },
         [] {
             const Owned object = EveryKind();
             return QVBinaryFormatWriteToFile(nullptr, nullptr) == QVErrParam &&
                    QVBinaryFormatWriteToFile(nullptr, object.Get()) == QVErrParam;
         }},
        {"QVBinaryFormatReadFromStream",
         [](Attempt& attempt) {
             const Owned stream{QVStreamCreateWithMemory(EveryKindAsData().Get())};
             void* object = nullptr;
             attempt.OthersLog().AnswersCode(
                 [&] { return QVBinaryFormatReadFromStream(stream.Get(), &object); });
             EXPECT_EQ(object == nullptr, attempt.MetShortage());
         },
         [] {
             void* object = nullptr;
             return QVBinaryFormatReadFromStream(nullptr, &object) == QVErrParam;
         }},
        {"QVBinaryFormatReadFromData",
         [](Attempt& attempt) {
             const Owned data = EveryKindAsData();
             void* object = nullptr;
             attempt.OthersLog().AnswersCode([&] { return QVBinaryFormatReadFromData(data.Get(), &object); });
             EXPECT_EQ(object == nullptr, attempt.MetShortage());
         },
         [] {
             void* object = nullptr;
             return QVBinaryFormatReadFromData(nullptr, &object) == QVErrParam;
         }},
        {"QVBinaryFormatReadFromFile",
         [](Attempt& attempt) {
             const TemporaryDirectory directory;
             const Owned path = WrittenFile(directory);
             void* object = nullptr;
             QVRetain(path.Get());  // the function releases it
             int code = 0;
             attempt.OthersLog().MayDoWithout().AnswersCode(
                 [&] { return code = QVBinaryFormatReadFromFile(path.Get(), &object); });
             EXPECT_EQ(object != nullptr, code == QVNoErr);
             EXPECT_EQ(QVGetRetainCount(path.Get()), 1U);
         },
         [] {
             void* object = nullptr;
             return QVBinaryFormatReadFromFile(nullptr, &object) == QVErrParam;
         }},
        {"QVPlistCreateData",
         [](Attempt& attempt) {
             const Owned object = EveryKind();
             attempt.OthersLog().Creates([&] { return QVPlistCreateData(object.Get()); });
         },
         [] { return QVPlistCreateData(nullptr) == nullptr; }},
    };
}

// A document with an element that has an attribute and a text.
struct Document {
    Document() {
        QVDictionarySetObject(attributes.Get(), MakeString(kLong).Get(), L"name");
        QVTreeAddChild(element.Get(), text.Get());
        QVTreeAddChild(node.Get(), element.Get());
    }
    Owned name = MakeString(L"name");
    Owned order{QVArrayCreateWithObject(name.Get())};
    Owned attributes{QVDictionaryCreate()};
    Owned element{QVXMLTreeCreateElementNode(name.Get(), order.Get(), attributes.Get(), 0)};
    Owned text{QVXMLTreeCreateTextNode(MakeString(L"<" + kLong).Get())};
    Owned node{QVXMLTreeCreateDocumentNode()};
};

// A node made of a string, which may be null.
Row CreatesNode(const char* name, void* (*create)(void*)) {
    return {name,
            [create](Attempt& attempt) {
                const Owned string = MakeString(L"text");
                attempt.OthersLog().Creates([&] { return create(string.Get()); });
            },
            [create] {
                const Owned node{create(nullptr)};
                return node && QVXMLTreeGetStringValue(node.Get()) == nullptr;
            }};
}

// A question to the document's element.
Row OnElementNode(const char* name, bool (*isRight)(const Document&), bool (*isRightForNull)()) {
    return {name,
            [isRight](Attempt& attempt) {
                const Document document;
                attempt.NeedsNoMemory([&] { return isRight(document); });
            },
            isRightForNull};
}

Row WritesDocument(const char* name, void* (*function)(void*, unsigned int)) {
    return {name,
            [function](Attempt& attempt) {
                const Document document;
                attempt.OthersLog().Creates([&] { return function(document.node.Get(), 0); });
            },
            [function] { return function(nullptr, 0) == nullptr; }};
}

Rows XMLTreeRows() {
    return {
        {"QVXMLTreeCreateDocumentNode",
         [](Attempt& attempt) { attempt.OthersLog().Creates(QVXMLTreeCreateDocumentNode); }, TakesNoHandle},
        {"QVXMLTreeCreateElementNode",
         [](Attempt& attempt) {
             const Document document;
             attempt.OthersLog().Creates([&] {
                 return QVXMLTreeCreateElementNode(document.name.Get(), document.order.Get(),
                                                   document.attributes.Get(), 0);
             });
         },
         [] {
             const Owned node{QVXMLTreeCreateElementNode(nullptr, nullptr, nullptr, 1)};
             return QVXMLTreeIsEmpty(node.Get()) == 1;
         }},
        {"QVXMLTreeCreateDocumentTypeNode",
         [](Attempt& attempt) {
             const Owned string = MakeString(L"text");
             attempt.OthersLog().Creates(
                 [&] { return QVXMLTreeCreateDocumentTypeNode(string.Get(), string.Get(), string.Get()); });
         },
         [] {
             const Owned node{QVXMLTreeCreateDocumentTypeNode(nullptr, nullptr, nullptr)};
             return QVXMLTreeGetNodeType(node.Get()) == QVXMLNodeDocumentType;
         }},
        CreatesNode("QVXMLTreeCreateProcessingInstructionNode", QVXMLTreeCreateProcessingInstructionNode),
        CreatesNode("QVXMLTreeCreateTextNode", QVXMLTreeCreateTextNode),
        OnElementNode(
            "QVXMLTreeGetNodeType",
            [](const Document& d) { return QVXMLTreeGetNodeType(d.element.Get()) == QVXMLNodeElement; },
            [] { return QVXMLTreeGetNodeType(nullptr) == 0; }),
        OnElementNode(
            "QVXMLTreeGetStringValue",
            [](const Document& d) { return QVXMLTreeGetStringValue(d.element.Get()) == d.name.Get(); },
            [] { return QVXMLTreeGetStringValue(nullptr) == nullptr; }),
        OnElementNode(
            "QVXMLTreeGetAttributeOrder",
            [](const Document& d) { return QVXMLTreeGetAttributeOrder(d.element.Get()) == d.order.Get(); },
            [] { return QVXMLTreeGetAttributeOrder(nullptr) == nullptr; }),
        OnElementNode(
            "QVXMLTreeGetAttributes",
            [](const Document& d) { return QVXMLTreeGetAttributes(d.element.Get()) == d.attributes.Get(); },
            [] { return QVXMLTreeGetAttributes(nullptr) == nullptr; }),
        OnElementNode(
            "QVXMLTreeGetChildren",
            [](const Document& d) { return QVArrayGetCount(QVXMLTreeGetChildren(d.element.Get())) == 1; },
            [] { return QVXMLTreeGetChildren(nullptr) == nullptr; }),
        OnElementNode(
            "QVXMLTreeGetParent",
            [](const Document& d) { return QVXMLTreeGetParent(d.element.Get()) == d.node.Get(); },
            [] { return QVXMLTreeGetParent(nullptr) == nullptr; }),
        OnElementNode(
            "QVXMLTreeIsEmpty", [](const Document& d) { return QVXMLTreeIsEmpty(d.element.Get()) == 0; },
            [] { return QVXMLTreeIsEmpty(nullptr) == 0; }),
        WritesDocument("QVXMLTreeCreateData", QVXMLTreeCreateData),
        WritesDocument("QVXMLTreeCreateDataMac", QVXMLTreeCreateDataMac),
    };
}

// A sheet with one rule, and a parser over it.
struct Sheet {
    Owned text = MakeString(L"h1, h2 { colour: " + kLong + L"; width: 1px }");
    Owned parser{QVCSSParserCreateWithString(text.Get())};
    Owned selector = MakeString(L"H1");
};

// The sheet's rule.
Owned MakeElement() {
    const Sheet sheet;
    return Owned::Retaining(QVCSSParserFindNextCSSElement(sheet.parser.Get(), 0, nullptr, nullptr, nullptr));
}

// Sets one of an element's three objects and gets it.
Row SetsPart(const char* name, void (*set)(void*, void*), void* (*get)(void*)) {
    return {name,
            [=](Attempt& attempt) {
                const Owned element{QVCSSElementCreate()};
                const Owned part{QVArrayCreateWithCapacity(0)};
                attempt.NeedsNoMemory([&] { set(element.Get(), part.Get()); },
                                      [&] { return get(element.Get()) == part.Get(); });
            },
            [=] {
                const Owned element = MakeElement();
                const Owned part{QVArrayCreateWithCapacity(0)};
                set(nullptr, nullptr);
                set(nullptr, part.Get());
                set(element.Get(), nullptr);
                return get(element.Get()) == nullptr;
            }};
}

Row GetsPart(const char* name, void* (*get)(void*)) {
    return {name,
            [get](Attempt& attempt) {
                const Owned element = MakeElement();
                attempt.NeedsNoMemory([&] { return get(element.Get()) != nullptr; });
            },
            [get] { return get(nullptr) == nullptr; }};
}

Rows CSSRows() {
    return {
        {"QVCSSParserCreateWithString",
         [](Attempt& attempt) {
             const Sheet sheet;
             attempt.Creates([&] { return QVCSSParserCreateWithString(sheet.text.Get()); });
         },
         [] {
             const Owned parser{QVCSSParserCreateWithString(nullptr)};
             return QVCSSParserFindNextCSSElement(parser.Get(), 0, nullptr, nullptr, nullptr) == nullptr;
         }},
        {"QVCSSParserFindNextCSSElement",
         [](Attempt& attempt) {
             const Sheet sheet;
             unsigned int length = 1;
             attempt.OthersLog().Lends([&] {
                 return QVCSSParserFindNextCSSElement(sheet.parser.Get(), 0, nullptr, &length, nullptr);
             });
             EXPECT_EQ(length == 0, attempt.MetShortage());
         },
         [] { return QVCSSParserFindNextCSSElement(nullptr, 0, nullptr, nullptr, nullptr) == nullptr; }},
        {"QVCSSParserFindCSSElementWithSelector",
         [](Attempt& attempt) {
             const Sheet sheet;
             unsigned int length = 1;
             attempt.OthersLog().Lends([&] {
                 return QVCSSParserFindCSSElementWithSelector(sheet.parser.Get(), sheet.selector.Get(), 0,
                                                              nullptr, &length);
             });
             EXPECT_EQ(length == 0, attempt.MetShortage());
         },
         [] {
             const Sheet sheet;
             const auto find = [](void* parser, void* selector) {
                 return QVCSSParserFindCSSElementWithSelector(parser, selector, 0, nullptr, nullptr);
             };
             return find(nullptr, nullptr) == nullptr && find(nullptr, sheet.selector.Get()) == nullptr &&
                    find(sheet.parser.Get(), nullptr) == nullptr;
         }},
        {"QVCSSParserReplaceCSSElement",
         [](Attempt& attempt) {
             const Owned text = MakeString(L"");
             const Owned parser{QVCSSParserCreateWithString(text.Get())};
             const Owned element = MakeElement();
             attempt.OthersLog().Changes(
                 false, true, [&] { QVCSSParserReplaceCSSElement(parser.Get(), element.Get(), 0, 0); },
                 [&] { return TextOf(text).empty(); });
         },
         [] {
             const Sheet sheet;
             const Owned element = MakeElement();
             QVCSSParserReplaceCSSElement(nullptr, nullptr, 0, 1);
             QVCSSParserReplaceCSSElement(nullptr, element.Get(), 0, 1);
             QVCSSParserReplaceCSSElement(sheet.parser.Get(), nullptr, 0, 1);
             return QVStringGetCharacterAtIndex(sheet.text.Get(), 0) == L'h';
         }},
        {"QVCSSParserSetCharSet",
         [](Attempt& attempt) {
             const Sheet sheet;
             const Owned element{QVCSSElementCreate()};
             attempt.OthersLog().MayDoWithout().Changes(
                 2U, 0U, [&] { QVCSSParserSetCharSet(sheet.parser.Get(), element.Get(), kUtf8); },
                 [&] { return QVArrayGetCount(QVCSSElementGetSelectors(element.Get())); });
         },
         [] {
             const Sheet sheet;
             const Owned element{QVCSSElementCreate()};
             QVCSSParserSetCharSet(nullptr, nullptr, kUtf8);
             QVCSSParserSetCharSet(sheet.parser.Get(), nullptr, kUtf8);
             QVCSSParserSetCharSet(nullptr, element.Get(), kUtf8);
             return true;
         }},
        {"QVCSSParserCreateCharSetElement",
         [](Attempt& attempt) {
             const Sheet sheet;
             attempt.OthersLog().MayDoWithout().Creates(
                 [&] { return QVCSSParserCreateCharSetElement(sheet.parser.Get(), kUtf32); });
         },
         [] {
             QVRelease(QVCSSParserCreateCharSetElement(nullptr, kUtf8));
             return true;
         }},
        {"QVCSSElementCreate", [](Attempt& attempt) { attempt.Creates(QVCSSElementCreate); }, TakesNoHandle},
        SetsPart("QVCSSElementSetSelectors", QVCSSElementSetSelectors, QVCSSElementGetSelectors),
        GetsPart("QVCSSElementGetSelectors", QVCSSElementGetSelectors),
        SetsPart("QVCSSElementSetProperties", QVCSSElementSetProperties, QVCSSElementGetProperties),
        GetsPart("QVCSSElementGetProperties", QVCSSElementGetProperties),
        SetsPart("QVCSSElementSetPropertyOrder", QVCSSElementSetPropertyOrder, QVCSSElementGetPropertyOrder),
        GetsPart("QVCSSElementGetPropertyOrder", QVCSSElementGetPropertyOrder),
        {"QVCSSElementGetString",
         [](Attempt& attempt) {
             const Owned element = MakeElement();
             attempt.OthersLog().Lends([&] { return QVCSSElementGetString(element.Get()); });
         },
         [] { return QVCSSElementGetString(nullptr) == nullptr; }},
    };
}

}  // namespace

Rows FormatRows() {
    return Joined({BinaryFormatRows(), XMLTreeRows(), CSSRows()});
}

}  // namespace qvtest
