// An XML node: a tree node with a type, a string value, attributes and the empty-element flag.
#pragma once

#include <cstdint>

#include "collections/QVTreeImpl.h"
#include "runtime/Owned.h"

class QVXMLTreeImpl final : public QVTreeImpl {
public:
    // Everything given is retained; null is possible. Throws std::bad_alloc.
    QVXMLTreeImpl(std::uint32_t nodeType, void* stringValue, void* attributeOrder, void* attributes,
                  bool empty);

    // A document type with those identifiers that are not null. Throws std::bad_alloc.
    [[nodiscard]] static void* CreateDocumentType(void* name, void* systemID, void* publicID);

    [[nodiscard]] std::uint32_t GetNodeType() const { return nodeType_; }
    [[nodiscard]] void* GetStringValue() const { return stringValue_.Get(); }
    [[nodiscard]] void* GetAttributeOrder() const { return attributeOrder_.Get(); }
    [[nodiscard]] void* GetAttributes() const { return attributes_.Get(); }
    [[nodiscard]] bool IsEmpty() const { return empty_; }

private:
    std::uint32_t nodeType_;
    qv::Owned stringValue_;
    qv::Owned attributeOrder_;
    qv::Owned attributes_;
    bool empty_;
};
