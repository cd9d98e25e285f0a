// A style-sheet rule: selectors, properties and the order of the properties.
#pragma once

#include <string>

#include <QVFoundation/QVObject.h>

#include "runtime/Owned.h"
#include "runtime/QVCBase.h"

class QVCCSSElement final : public QVCBase {
public:
    [[nodiscard]] std::uint16_t GetTypeID() const override { return QVTypeIDUnregistered; }

    // Setters retain; null is possible.
    void SetSelectors(void* selectors) { selectors_ = qv::Owned::Retaining(selectors); }
    void SetProperties(void* properties) { properties_ = qv::Owned::Retaining(properties); }
    void SetPropertyOrder(void* order) { propertyOrder_ = qv::Owned::Retaining(order); }
    [[nodiscard]] void* GetSelectors() const { return selectors_.Get(); }
    [[nodiscard]] void* GetProperties() const { return properties_.Get(); }
    [[nodiscard]] void* GetPropertyOrder() const { return propertyOrder_.Get(); }

    // The element's text; empty when it has no selectors. Throws std::bad_alloc.
    [[nodiscard]] std::wstring GetElementString() const;

private:
    void AppendProperties(std::wstring& text) const;

    qv::Owned selectors_;
    qv::Owned properties_;
    qv::Owned propertyOrder_;
};
