#include <QVFoundation/QVTree.h>
#include <QVFoundation/QVXMLTree.h>

#include "formats/QVXMLTreeImpl.h"
#include "formats/xml_tree_writer.h"
#include "runtime/Guard.h"

using qv::CreateObject;
using qv::Guard;

namespace {

// What a getter answers for null.
constexpr void* kNone = nullptr;

// The border for XML nodes. A plain tree node has the same type ID, so nobody could tell by it: the class is
// checked, and a plain node answers as null does.
template <class Result, class Body>
Result WithNode(void* handle, Result failure, Body&& body) noexcept {
    const auto* node = qv::CheckedHandle<QVXMLTreeImpl>(handle);
    return node == nullptr ? failure : static_cast<Result>(body(*node));
}

}  // namespace

void* QVXMLTreeCreateDocumentNode() noexcept {
    return CreateObject<QVXMLTreeImpl>(QVXMLNodeDocument, nullptr, nullptr, nullptr, false);
}

void* QVXMLTreeCreateProcessingInstructionNode(void* string) noexcept {
    return CreateObject<QVXMLTreeImpl>(QVXMLNodeProcessingInstruction, string, nullptr, nullptr, false);
}

void* QVXMLTreeCreateElementNode(void* name, void* order, void* attributes, QVBoolean empty) noexcept {
    return CreateObject<QVXMLTreeImpl>(QVXMLNodeElement, name, order, attributes, empty != 0);
}

void* QVXMLTreeCreateTextNode(void* string) noexcept {
    return CreateObject<QVXMLTreeImpl>(QVXMLNodeText, string, nullptr, nullptr, false);
}

void* QVXMLTreeCreateDocumentTypeNode(void* name, void* systemID, void* publicID) noexcept {
    return Guard(kNone, [&] { return QVXMLTreeImpl::CreateDocumentType(name, systemID, publicID); });
}

unsigned long QVXMLTreeGetNodeType(void* node) noexcept {
    return WithNode(node, 0UL, [](const QVXMLTreeImpl& n) { return n.GetNodeType(); });
}

void* QVXMLTreeGetStringValue(void* node) noexcept {
    return WithNode(node, kNone, [](const QVXMLTreeImpl& n) { return n.GetStringValue(); });
}

void* QVXMLTreeGetAttributeOrder(void* node) noexcept {
    return WithNode(node, kNone, [](const QVXMLTreeImpl& n) { return n.GetAttributeOrder(); });
}

void* QVXMLTreeGetAttributes(void* node) noexcept {
    return WithNode(node, kNone, [](const QVXMLTreeImpl& n) { return n.GetAttributes(); });
}

void* QVXMLTreeGetChildren(void* node) noexcept {
    return QVTreeGetChildren(node);
}

void* QVXMLTreeGetParent(void* node) noexcept {
    return QVTreeGetParent(node);
}

QVBoolean QVXMLTreeIsEmpty(void* node) noexcept {
    return WithNode(node, QVBoolean{0}, [](const QVXMLTreeImpl& n) { return n.IsEmpty(); });
}

void* QVXMLTreeCreateData(void* root, unsigned int flags) noexcept {
    return QVXMLTreeCreateDataMac(root, flags);
}

void* QVXMLTreeCreateDataMac(void* root, unsigned int flags) noexcept {
    constexpr unsigned int kLimitedFlag = 1;
    const qv::HtmlCharSet charSet =
        (flags & kLimitedFlag) != 0 ? qv::HtmlCharSet::kLimited : qv::HtmlCharSet::kFull;
    return Guard(kNone, [&] { return qv::CreateXMLData(root, charSet).Detach(); });
}
