#include "formats/xml_tree_writer.h"

#include <optional>
#include <vector>

#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVDictionary.h>
#include <QVFoundation/QVString.h>
#include <QVFoundation/QVXMLTree.h>

#include "formats/QVXMLTreeImpl.h"
#include "formats/container_path.h"
#include "formats/xml_text.h"
#include "runtime/Handle.h"

namespace qv {
namespace {

using Text = std::wstring_view;

// The text of a string, or nothing for null and for objects of other classes.
std::optional<Text> TextOf(void* object) {
    if (QVGetTypeID(object) != QVTypeIDString) return std::nullopt;
    return Text(QVStringGetBuffer(object), QVStringGetLength(object));
}

Text ValueOf(const QVXMLTreeImpl& node) {
    return TextOf(node.GetStringValue()).value_or(Text());
}

bool IsKnown(const QVXMLTreeImpl* node) {
    if (node == nullptr) return false;
    switch (node->GetNodeType()) {
        case QVXMLNodeDocument:
        case QVXMLNodeElement:
        case QVXMLNodeProcessingInstruction:
        case QVXMLNodeComment:
        case QVXMLNodeText:
        case QVXMLNodeDocumentType:
            return true;
        default:
            return false;
    }
}

std::optional<Text> AttributeOf(const QVXMLTreeImpl& node, const wchar_t* name) {
    return TextOf(QVDictionaryGetObject(node.GetAttributes(), name));
}

// Walks the tree with a stack of its own, so that depth costs no stack of the thread.
class TreeWriter {
public:
    explicit TreeWriter(HtmlCharSet charSet) : charSet_(charSet) {}

    // False when a node contains itself or nodes are nested too deep.
    [[nodiscard]] bool Write(QVXMLTreeImpl* root) {
        if (!Enter(root)) return false;
        while (!open_.empty()) {
            OpenNode& top = open_.back();
            if (top.nextChild == QVArrayGetCount(top.node->GetChildren())) {
                Leave();
                continue;
            }
            void* child = QVArrayGetObjectAtIndex(top.node->GetChildren(), top.nextChild++);
            auto* node = CheckedHandle<QVXMLTreeImpl>(child);
            if (IsKnown(node) && !Enter(node)) return false;
        }
        return true;
    }

    [[nodiscard]] Owned Finish() { return out_.Finish(); }

private:
    struct OpenNode {
        QVXMLTreeImpl* node;
        unsigned long nextChild;
    };

    bool Enter(QVXMLTreeImpl* node) {
        if (!path_.Enter(node)) return false;
        open_.push_back({node, 0});
        WriteStart(*node);
        return true;
    }

    void Leave() {
        WriteEnd(*open_.back().node);
        open_.pop_back();
        path_.Leave();
    }

    void WriteStart(const QVXMLTreeImpl& node) {
        switch (node.GetNodeType()) {
            case QVXMLNodeElement:
                return WriteElementStart(node);
            case QVXMLNodeProcessingInstruction:
                return WriteXMLInstruction(out_, ValueOf(node));
            case QVXMLNodeComment:
                return WriteXMLComment(out_, ValueOf(node), charSet_);
            case QVXMLNodeText:
                return WriteXMLText(out_, ValueOf(node));
            case QVXMLNodeDocumentType:
                WriteXMLDocumentType(out_, ValueOf(node), AttributeOf(node, L"publicID"),
                                     AttributeOf(node, L"systemID"));
                if (HasChildren(node)) out_.Append(" [");
                return;
            default:
                return;  // a document is its children
        }
    }

    void WriteElementStart(const QVXMLTreeImpl& node) {
        WriteXMLTagStart(out_, ValueOf(node), charSet_);
        const unsigned long count = QVArrayGetCount(node.GetAttributeOrder());
        for (unsigned long i = 0; i < count; ++i) {
            void* name = QVArrayGetObjectAtIndex(node.GetAttributeOrder(), i);
            const std::optional<Text> nameText = TextOf(name);
            if (!nameText) continue;
            const std::optional<Text> value = AttributeOf(node, nameText->data());
            if (value) WriteXMLAttribute(out_, *nameText, *value, charSet_);
        }
        WriteXMLTagEnd(out_, node.IsEmpty() ? XMLTagEnd::kEmpty : XMLTagEnd::kOpen);
    }

    void WriteEnd(const QVXMLTreeImpl& node) {
        if (node.GetNodeType() == QVXMLNodeElement && !node.IsEmpty())
            WriteXMLEndTag(out_, ValueOf(node), charSet_);
        if (node.GetNodeType() == QVXMLNodeDocumentType) out_.Append(HasChildren(node) ? "]>" : ">");
    }

    static bool HasChildren(const QVXMLTreeImpl& node) { return QVArrayGetCount(node.GetChildren()) != 0; }

    const HtmlCharSet charSet_;
    DataWriter out_;
    ContainerPath path_;
    std::vector<OpenNode> open_;
};

}  // namespace

Owned CreateXMLData(void* root, HtmlCharSet charSet) {
    auto* node = CheckedHandle<QVXMLTreeImpl>(root);
    if (!IsKnown(node)) return Owned();
    TreeWriter writer(charSet);
    return writer.Write(node) ? writer.Finish() : Owned();
}

}  // namespace qv
