#include <gtest/gtest.h>
#include <string>
#include <vector>

#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVData.h>
#include <QVFoundation/QVDictionary.h>
#include <QVFoundation/QVString.h>
#include <QVFoundation/QVTemporaryObjectsPool.h>
#include <QVFoundation/QVTree.h>
#include <QVFoundation/QVXMLTree.h>

#include "formats/QVXMLTreeImpl.h"
#include "runtime/Guard.h"
#include "runtime/Owned.h"
#include "support/consumers.h"
#include "support/failing_allocator.h"
#include "support/log_capture.h"

namespace {

using qv::Owned;

constexpr unsigned int kFull = 0;
constexpr unsigned int kLimited = 1;

class XMLTree : public testing::Test {
protected:
    const Owned pool_{QVTemporaryObjectsPoolCreate()};

    // The text of a tree, or "null".
    static std::string Text(void* root, unsigned int flags = kLimited) {
        const Owned data{QVXMLTreeCreateData(root, flags)};
        if (!data) return "null";
        return {static_cast<const char*>(QVDataGetImutableBuffer(data.Get())), QVDataGetSize(data.Get())};
    }

    // Nodes as temporaries, so that a tree reads as it nests.
    static void* Element(const wchar_t* name, const std::vector<void*>& children = {}, QVBoolean empty = 0) {
        return With(QVXMLTreeCreateElementNode(QVSTR(name), nullptr, nullptr, empty), children);
    }
    static void* TextNode(const wchar_t* text) { return QVTEMPOBJ(QVXMLTreeCreateTextNode(QVSTR(text))); }
    static void* Document(const std::vector<void*>& children) {
        return With(QVXMLTreeCreateDocumentNode(), children);
    }
    static void* DocumentType(void* systemID, void* publicID) {
        return QVTEMPOBJ(QVXMLTreeCreateDocumentTypeNode(QVSTR(L"N"), systemID, publicID));
    }

    static void* With(void* node, const std::vector<void*>& children) {
        for (void* child : children)
            QVTreeAddChild(node, child);
        return QVTEMPOBJ(node);
    }
};

TEST_F(XMLTree, NodesHoldWhatTheyAreMadeOf) {
    const Owned order{QVArrayCreateWithCapacity(0)};
    const Owned attributes{QVDictionaryCreate()};
    void* name = QVSTR(L"name");
    const Owned element{QVXMLTreeCreateElementNode(name, order.Get(), attributes.Get(), 7)};
    EXPECT_EQ(QVGetTypeID(element.Get()), 16);
    EXPECT_EQ(QVGetRetainCount(element.Get()), 1UL);
    EXPECT_EQ(QVXMLTreeGetNodeType(element.Get()), 2UL);
    EXPECT_EQ(QVXMLTreeGetStringValue(element.Get()), name);
    EXPECT_EQ(QVXMLTreeGetAttributeOrder(element.Get()), order.Get());
    EXPECT_EQ(QVXMLTreeGetAttributes(element.Get()), attributes.Get());
    EXPECT_EQ(QVXMLTreeIsEmpty(element.Get()), 1);
    EXPECT_EQ(QVGetRetainCount(order.Get()), 2UL);
    EXPECT_EQ(QVGetRetainCount(attributes.Get()), 2UL);
    EXPECT_EQ(QVXMLTreeGetParent(element.Get()), nullptr);
    EXPECT_EQ(QVXMLTreeGetChildren(element.Get()), QVTreeGetChildren(element.Get()));

    EXPECT_EQ(QVXMLTreeGetNodeType(Document({})), 1UL);
    const Owned instruction{QVXMLTreeCreateProcessingInstructionNode(name)};
    EXPECT_EQ(QVXMLTreeGetNodeType(instruction.Get()), 3UL);
    EXPECT_EQ(QVXMLTreeGetStringValue(instruction.Get()), name);
    EXPECT_EQ(QVXMLTreeGetNodeType(TextNode(L"x")), 5UL);
    EXPECT_EQ(QVXMLTreeIsEmpty(TextNode(L"x")), 0);
}

TEST_F(XMLTree, ADocumentTypeListsItsIdentifiersPublicFirst) {
    void* systemID = QVSTR(L"s");
    void* publicID = QVSTR(L"p");
    void* both = DocumentType(systemID, publicID);
    EXPECT_EQ(QVXMLTreeGetNodeType(both), 7UL);
    ASSERT_EQ(QVArrayGetCount(QVXMLTreeGetAttributeOrder(both)), 2UL);
    EXPECT_STREQ(QVStringGetBuffer(QVArrayGetObjectAtIndex(QVXMLTreeGetAttributeOrder(both), 0)),
                 L"publicID");
    EXPECT_STREQ(QVStringGetBuffer(QVArrayGetObjectAtIndex(QVXMLTreeGetAttributeOrder(both), 1)),
                 L"systemID");
    EXPECT_EQ(QVDictionaryGetObject(QVXMLTreeGetAttributes(both), L"publicID"), publicID);
    EXPECT_EQ(QVDictionaryGetObject(QVXMLTreeGetAttributes(both), L"systemID"), systemID);

    void* systemOnly = DocumentType(systemID, nullptr);
    ASSERT_EQ(QVArrayGetCount(QVXMLTreeGetAttributeOrder(systemOnly)), 1UL);
    EXPECT_STREQ(QVStringGetBuffer(QVArrayGetObjectAtIndex(QVXMLTreeGetAttributeOrder(systemOnly), 0)),
                 L"systemID");
    EXPECT_EQ(QVDictionaryCount(QVXMLTreeGetAttributes(systemOnly)), 1U);
}

TEST_F(XMLTree, DocumentTypesAreWrittenWithTheIdentifiersTheyHave) {
    EXPECT_EQ(Text(DocumentType(QVSTR(L"S"), QVSTR(L"P"))), "<!DOCTYPE N PUBLIC \"P\" \"S\">");
    EXPECT_EQ(Text(DocumentType(QVSTR(L"S"), nullptr)), "<!DOCTYPE N SYSTEM \"S\">");
    EXPECT_EQ(Text(DocumentType(nullptr, QVSTR(L"P"))), "<!DOCTYPE N PUBLIC \"P\">");
    EXPECT_EQ(Text(DocumentType(nullptr, nullptr)), "<!DOCTYPE N>");
    EXPECT_EQ(Text(DocumentType(QVSTR(L"a\"b"), nullptr)), "<!DOCTYPE N SYSTEM 'a\"b'>");
    void* withChildren = DocumentType(nullptr, nullptr);
    QVTreeAddChild(withChildren, TextNode(L"child"));
    EXPECT_EQ(Text(withChildren), "<!DOCTYPE N [child]>");
}

TEST_F(XMLTree, ElementsNestWithoutAddedWhiteSpace) {
    EXPECT_EQ(Text(Element(L"a", {Element(L"b", {TextNode(L"x")}), Element(L"c")})),
              "<a><b>x</b><c></c></a>");
    EXPECT_EQ(Text(Element(L"a", {}, 1)), "<a/>");
    EXPECT_EQ(Text(Element(L"a", {TextNode(L"x")}, 1)), "<a/>x");
    EXPECT_EQ(Text(Document({Element(L"a"), Element(L"b")})), "<a></a><b></b>");
    EXPECT_EQ(Text(Document({})), "");
    void* text = TextNode(L"x");
    QVTreeAddChild(text, TextNode(L"y"));
    EXPECT_EQ(Text(text), "xy");
}

TEST_F(XMLTree, InstructionsAreWrittenAsTheyAre) {
    const Owned instruction{QVXMLTreeCreateProcessingInstructionNode(QVSTR(L"a=\"<&>\""))};
    EXPECT_EQ(Text(instruction.Get()), "<?xml a=\"<&>\"?>");
    const Owned empty{QVXMLTreeCreateProcessingInstructionNode(nullptr)};
    EXPECT_EQ(Text(empty.Get()), "<?xml ?>");
}

// No function makes comments and unknown nodes; the class does.
void* NodeOfType(unsigned int type, void* value) {
    return QVTEMPOBJ(qv::CreateObject<QVXMLTreeImpl>(type, value, nullptr, nullptr, false));
}

TEST_F(XMLTree, CommentsFollowTheFlag) {
    void* comment = NodeOfType(QVXMLNodeComment, QVSTR(L" \u00E9 < e "));
    EXPECT_EQ(Text(comment, kLimited), "<!-- \xC3\xA9 &lt; e -->");
    EXPECT_EQ(Text(comment, kFull), "<!-- &eacute; &lt; e -->");
}

TEST_F(XMLTree, NodesOfUnknownTypesAreLeftOutWithTheirChildren) {
    void* unknown = With(QVRetain(NodeOfType(99, nullptr)), {TextNode(L"hidden")});
    EXPECT_EQ(Text(Element(L"a", {unknown, TextNode(L"shown")})), "<a>shown</a>");
}

TEST_F(XMLTree, TextUsesTheLimitedTableWhateverTheFlagsSay) {
    for (const unsigned int flags : {kFull, kLimited}) {
        EXPECT_EQ(Text(TextNode(L"a<b>&\"'\u00E9"), flags), "a&lt;b&gt;&amp;&quot;'\xC3\xA9");
    }
}

TEST_F(XMLTree, ElementsAndAttributesFollowTheFlag) {
    const Owned order{QVArrayCreateWithObject(QVSTR(L"k\u00E9"))};
    const Owned attributes{QVDictionaryCreate()};
    QVDictionarySetObject(attributes.Get(), QVSTR(L"v\u00E9\"<"), L"k\u00E9");
    const Owned element{QVXMLTreeCreateElementNode(QVSTR(L"\u00E9"), order.Get(), attributes.Get(), 0)};
    EXPECT_EQ(Text(element.Get(), kLimited), "<\xC3\xA9 k\xC3\xA9=\"v\xC3\xA9&quot;&lt;\"></\xC3\xA9>");
    EXPECT_EQ(Text(element.Get(), kFull), "<&eacute; k&eacute;=\"v&eacute;&quot;&lt;\"></&eacute;>");
    EXPECT_EQ(Text(element.Get(), 2), Text(element.Get(), kFull));
    EXPECT_EQ(Text(element.Get(), 3), Text(element.Get(), kLimited));
}

TEST_F(XMLTree, AttributesComeInTheOrderThatIsGiven) {
    const Owned null{QVNullCreate()};
    const Owned attributes{QVDictionaryCreate()};
    QVDictionarySetObject(attributes.Get(), QVSTR(L"1"), L"a");
    QVDictionarySetObject(attributes.Get(), QVSTR(L"2"), L"b");
    QVDictionarySetObject(attributes.Get(), null.Get(), L"no string");
    QVDictionarySetObject(attributes.Get(), QVSTR(L"3"), L"unlisted");
    const Owned order{QVArrayCreateWithCapacity(0)};
    for (const wchar_t* name : {L"b", L"missing", L"a", L"no string", L"b"})
        QVArrayAddObject(order.Get(), QVSTR(name));
    QVArrayAddObject(order.Get(), null.Get());
    QVArrayInsertObjectAtIndex(order.Get(), nullptr, 0);
    const Owned element{QVXMLTreeCreateElementNode(QVSTR(L"e"), order.Get(), attributes.Get(), 1)};
    EXPECT_EQ(Text(element.Get()), "<e b=\"2\" a=\"1\" b=\"2\"/>");
    const Owned noOrder{QVXMLTreeCreateElementNode(QVSTR(L"e"), nullptr, attributes.Get(), 1)};
    EXPECT_EQ(Text(noOrder.Get()), "<e/>");
    const Owned noAttributes{QVXMLTreeCreateElementNode(QVSTR(L"e"), order.Get(), nullptr, 1)};
    EXPECT_EQ(Text(noAttributes.Get()), "<e/>");
}

TEST_F(XMLTree, PlainTreeNodesAreLeftOutWithTheirChildren) {
    void* plain = QVTEMPOBJ(QVTreeCreate());
    QVTreeAddChild(plain, TextNode(L"hidden"));
    EXPECT_EQ(Text(Element(L"a", {plain, TextNode(L"x")})), "<a>x</a>");
    EXPECT_EQ(Text(plain), "null");
    EXPECT_EQ(QVXMLTreeGetNodeType(plain), 0UL);
    EXPECT_EQ(QVXMLTreeGetStringValue(plain), nullptr);
}

TEST_F(XMLTree, ANodeInsideItselfIsRefusedButSharedNodesAreFine) {
    void* a = Element(L"a");
    void* b = Element(L"b", {a, a});
    EXPECT_EQ(Text(b), "<b><a></a><a></a></b>");
    QVTreeAddChild(a, b);
    EXPECT_EQ(Text(b), "null");
    QVTreeRemoveChildren(a);
}

TEST_F(XMLTree, NestingHasALimit) {
    for (const int depth : {10000, 10001}) {
        const Owned inner{QVTemporaryObjectsPoolCreate()};
        void* root = Element(L"e");
        void* node = root;
        for (int i = 1; i < depth; ++i) {
            void* child = Element(L"e");
            QVTreeAddChild(node, child);
            node = child;
        }
        const std::string text = Text(root);
        EXPECT_EQ(text.size(), depth == 10000 ? 70000U : 4U);
    }
}

TEST_F(XMLTree, NullIsTolerated) {
    EXPECT_EQ(Text(nullptr), "null");
    EXPECT_EQ(QVXMLTreeCreateDataMac(nullptr, 0), nullptr);
    EXPECT_EQ(QVXMLTreeGetNodeType(nullptr), 0UL);
    EXPECT_EQ(QVXMLTreeGetStringValue(nullptr), nullptr);
    EXPECT_EQ(QVXMLTreeGetAttributeOrder(nullptr), nullptr);
    EXPECT_EQ(QVXMLTreeGetAttributes(nullptr), nullptr);
    EXPECT_EQ(QVXMLTreeGetChildren(nullptr), nullptr);
    EXPECT_EQ(QVXMLTreeGetParent(nullptr), nullptr);
    EXPECT_EQ(QVXMLTreeIsEmpty(nullptr), 0);
    const Owned element{QVXMLTreeCreateElementNode(nullptr, nullptr, nullptr, 0)};
    EXPECT_EQ(Text(element.Get()), "<></>");
    const Owned text{QVXMLTreeCreateTextNode(nullptr)};
    EXPECT_EQ(Text(text.Get()), "");
}

TEST_F(XMLTree, EveryFailingAllocationLeavesNothingBehind) {
    void* name = QVSTR(L"name");
    const std::size_t before = qvtest::LiveAllocations();
    const qvtest::LogCapture log;
    const std::size_t failures = qvtest::FailEachAllocation([name] {
        const Owned document{QVXMLTreeCreateDocumentNode()};
        const Owned type{QVXMLTreeCreateDocumentTypeNode(name, name, name)};
        const Owned element{QVXMLTreeCreateElementNode(name, nullptr, nullptr, 0)};
        const Owned instruction{QVXMLTreeCreateProcessingInstructionNode(name)};
        const Owned text{QVXMLTreeCreateTextNode(name)};
        const Owned data{QVXMLTreeCreateData(element.Get(), 0)};
    });
    EXPECT_GE(failures, 8U);
    EXPECT_EQ(qvtest::LiveAllocations(), before);
}

TEST_F(XMLTree, ARealReaderAcceptsTheText) {
    const Owned order{QVArrayCreateWithObject(QVSTR(L"k"))};
    const Owned attributes{QVDictionaryCreate()};
    QVDictionarySetObject(attributes.Get(), QVSTR(L"a \"b\" <c> & 'd' \u65E5"), L"k");
    void* element = QVTEMPOBJ(QVXMLTreeCreateElementNode(QVSTR(L"e"), order.Get(), attributes.Get(), 0));
    QVTreeAddChild(element, TextNode(L"x < y && z > \"\U0001F600\""));
    const Owned instruction{
        QVXMLTreeCreateProcessingInstructionNode(QVSTR(L"version=\"1.0\" encoding=\"UTF-8\""))};
    const std::string text = Text(Document({instruction.Get(), element}));
    EXPECT_EQ(qvtest::OutputOf("xmllint --noout -", text), "");
    EXPECT_EQ(qvtest::OutputOf("xmllint --xpath 'string(/e/@k)' -", text),
              "a \"b\" <c> & 'd' \xE6\x97\xA5\n");
    EXPECT_EQ(qvtest::OutputOf("xmllint --xpath 'string(/e)' -", text),
              "x < y && z > \"\xF0\x9F\x98\x80\"\n");
}

}  // namespace
