// The style-sheet parser: a position-by-position search over a string that it keeps.
#pragma once

#include <cstdint>

#include <QVFoundation/QVEncoding.h>
#include <QVFoundation/QVObject.h>

#include "formats/css_rules.h"
#include "runtime/Owned.h"
#include "runtime/QVCBase.h"

class QVCCSSParser final : public QVCBase {
public:
    explicit QVCCSSParser(void* string) : string_(qv::Owned::Retaining(string)) {}

    [[nodiscard]] std::uint16_t GetTypeID() const override { return QVTypeIDUnregistered; }

    // An element and its range, or nothing and a result code.
    struct Found {
        qv::Owned element;
        std::uint32_t start = 0;
        std::uint32_t length = 0;
        int error = QVNoErr;
    };
    // Throw std::bad_alloc.
    [[nodiscard]] Found FindNextCSSElement(std::uint32_t start) const;
    [[nodiscard]] Found FindCSSElementWithSelector(void* selector, std::uint32_t start) const;

    void ReplaceCSSElement(void* element, std::uint32_t start, std::uint32_t length);

    // The selectors of the "@charset" rule for an encoding, or nothing when it has no name. Throws
    // std::bad_alloc.
    [[nodiscard]] static qv::Owned CreateCharSetSelectors(QVEncodingInfo encoding);

private:
    [[nodiscard]] std::wstring_view Sheet() const;

    qv::Owned string_;
};
