#include "formats/QVXMLTreeImpl.h"

#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVDictionary.h>
#include <QVFoundation/QVString.h>
#include <QVFoundation/QVXMLTree.h>

#include "runtime/Handle.h"
#include "runtime/filling.h"

using qv::Owned;

namespace {

void AddIdentifier(void* order, void* attributes, const wchar_t* name, void* identifier) {
    if (identifier == nullptr) return;
    const Owned nameText{qv::RequireObject(QVStringCreateWithWideString(name))};
    qv::AppendOrThrow(order, nameText.Get());
    qv::SetOrThrow(attributes, identifier, name);
}

}  // namespace

QVXMLTreeImpl::QVXMLTreeImpl(std::uint32_t nodeType, void* stringValue, void* attributeOrder,
                             void* attributes, bool empty)
    : nodeType_(nodeType),
      stringValue_(Owned::Retaining(stringValue)),
      attributeOrder_(Owned::Retaining(attributeOrder)),
      attributes_(Owned::Retaining(attributes)),
      empty_(empty) {}

void* QVXMLTreeImpl::CreateDocumentType(void* name, void* systemID, void* publicID) {
    const Owned order{qv::RequireObject(QVArrayCreateWithCapacity(2))};
    const Owned attributes{qv::RequireObject(QVDictionaryCreate())};
    AddIdentifier(order.Get(), attributes.Get(), L"publicID", publicID);
    AddIdentifier(order.Get(), attributes.Get(), L"systemID", systemID);
    return qv::ToHandle(new QVXMLTreeImpl(QVXMLNodeDocumentType, name, order.Get(), attributes.Get(), false));
}
