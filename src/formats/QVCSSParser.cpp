#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVCSSParser.h>
#include <QVFoundation/QVString.h>
#include <QVFoundation/QVTemporaryObjectsPool.h>

#include "formats/QVCCSSElement.h"
#include "formats/QVCCSSParser.h"
#include "runtime/Guard.h"

using qv::CreateObject;
using qv::Owned;
using qv::With;

namespace {

constexpr void* kNone = nullptr;

template <class Value>
void Store(Value* out, Value value) {
    if (out != nullptr) *out = value;
}

// Runs a search, fills the outs and hands the element to the pool.
template <class Search>
void* FindTemporary(void* parser, unsigned int* outStart, unsigned int* outLength, int* outError,
                    Search search) noexcept {
    Store(outStart, 0U);
    Store(outLength, 0U);
    Store(outError, 0);
    return With<QVCCSSParser>(parser, kNone, [&](const QVCCSSParser& p) -> void* {
        QVCCSSParser::Found found = search(p);
        Store(outError, found.error);
        if (!found.element) return nullptr;
        void* element = QVTEMPOBJ(found.element.Detach());
        if (element == nullptr) return nullptr;
        Store(outStart, found.start);
        Store(outLength, found.length);
        return element;
    });
}

}  // namespace

void* QVCSSParserCreateWithString(void* string) noexcept {
    return CreateObject<QVCCSSParser>(string);
}

void* QVCSSParserFindNextCSSElement(void* parser, unsigned int start, unsigned int* outStart,
                                    unsigned int* outLength, int* outError) noexcept {
    return FindTemporary(parser, outStart, outLength, outError,
                         [start](const QVCCSSParser& p) { return p.FindNextCSSElement(start); });
}

void* QVCSSParserFindCSSElementWithSelector(void* parser, void* selector, unsigned int start,
                                            unsigned int* outStart, unsigned int* outLength) noexcept {
    return FindTemporary(parser, outStart, outLength, nullptr, [selector, start](const QVCCSSParser& p) {
        return p.FindCSSElementWithSelector(selector, start);
    });
}

void QVCSSParserReplaceCSSElement(void* parser, void* element, unsigned int start,
                                  unsigned int length) noexcept {
    if (element == nullptr) return;
    With<QVCCSSParser>(parser, [=](QVCCSSParser& p) { p.ReplaceCSSElement(element, start, length); });
}

void QVCSSParserSetCharSet(void*, void* element, QVEncodingInfo encoding) noexcept {
    With<QVCCSSElement>(element, [encoding](QVCCSSElement& e) {
        const Owned selectors = QVCCSSParser::CreateCharSetSelectors(encoding);
        if (selectors) e.SetSelectors(selectors.Get());
    });
}

void* QVCSSParserCreateCharSetElement(void*, QVEncodingInfo encoding) noexcept {
    return qv::Guard(kNone, [encoding]() -> void* {
        const Owned selectors = QVCCSSParser::CreateCharSetSelectors(encoding);
        if (!selectors) return nullptr;
        Owned element{qv::RequireObject(QVCSSElementCreate())};
        QVCSSElementSetSelectors(element.Get(), selectors.Get());
        return element.Detach();
    });
}

void* QVCSSElementCreate() noexcept {
    return CreateObject<QVCCSSElement>();
}

void QVCSSElementSetSelectors(void* element, void* selectors) noexcept {
    With<QVCCSSElement>(element, [selectors](QVCCSSElement& e) { e.SetSelectors(selectors); });
}

void* QVCSSElementGetSelectors(void* element) noexcept {
    return With<QVCCSSElement>(element, kNone, [](const QVCCSSElement& e) { return e.GetSelectors(); });
}

void QVCSSElementSetProperties(void* element, void* properties) noexcept {
    With<QVCCSSElement>(element, [properties](QVCCSSElement& e) { e.SetProperties(properties); });
}

void* QVCSSElementGetProperties(void* element) noexcept {
    return With<QVCCSSElement>(element, kNone, [](const QVCCSSElement& e) { return e.GetProperties(); });
}

void QVCSSElementSetPropertyOrder(void* element, void* order) noexcept {
    With<QVCCSSElement>(element, [order](QVCCSSElement& e) { e.SetPropertyOrder(order); });
}

void* QVCSSElementGetPropertyOrder(void* element) noexcept {
    return With<QVCCSSElement>(element, kNone, [](const QVCCSSElement& e) { return e.GetPropertyOrder(); });
}

void* QVCSSElementGetString(void* element) noexcept {
    return With<QVCCSSElement>(element, kNone, [](const QVCCSSElement& e) -> void* {
        if (QVArrayGetCount(e.GetSelectors()) == 0) return nullptr;
        const std::wstring text = e.GetElementString();
        return QVTEMPOBJ(
            QVStringCreateWithWideStringAndLength(text.data(), static_cast<unsigned long>(text.size())));
    });
}
