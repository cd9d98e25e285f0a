#include "formats/QVCCSSParser.h"

#include <string>
#include <utility>

#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVDictionary.h>
#include <QVFoundation/QVString.h>

#include "collections/handover.h"
#include "formats/QVCCSSElement.h"
#include "runtime/Handle.h"

using qv::CssResult;
using qv::CssRule;
using qv::Owned;
using qv::RequireObject;

namespace {

Owned CreateString(std::wstring_view text) {
    return Owned{RequireObject(
        QVStringCreateWithWideStringAndLength(text.data(), static_cast<unsigned long>(text.size())))};
}

Owned CreateArray(std::size_t capacity) {
    return Owned{RequireObject(QVArrayCreateWithCapacity(static_cast<unsigned long>(capacity)))};
}

Owned CreateElement(const CssRule& rule) {
    const Owned selectors = CreateArray(rule.selectors.size());
    for (const std::wstring_view selector : rule.selectors) {
        qv::HandToArray(selectors.Get(), CreateString(selector));
    }
    const Owned order = CreateArray(rule.properties.size());
    const Owned properties{RequireObject(QVDictionaryCreate())};
    for (const CssRule::Property& property : rule.properties) {
        Owned name = CreateString(property.name);
        qv::HandToDictionary(properties.Get(), CreateString(property.value), QVStringGetBuffer(name.Get()));
        qv::HandToArray(order.Get(), std::move(name));
    }
    auto* element = new QVCCSSElement;
    Owned handle{qv::ToHandle(element)};
    element->SetSelectors(selectors.Get());
    element->SetProperties(properties.Get());
    element->SetPropertyOrder(order.Get());
    return handle;
}

QVCCSSParser::Found FoundRule(const CssRule& rule) {
    return {CreateElement(rule), static_cast<std::uint32_t>(rule.start),
            static_cast<std::uint32_t>(rule.length)};
}

}  // namespace

std::wstring_view QVCCSSParser::Sheet() const {
    return {QVStringGetBuffer(string_.Get()), QVStringGetLength(string_.Get())};
}

QVCCSSParser::Found QVCCSSParser::FindNextCSSElement(std::uint32_t start) const {
    CssRule rule;
    switch (qv::FindNextCssRule(Sheet(), start, rule)) {
        case CssResult::kFound:
            return FoundRule(rule);
        case CssResult::kSyntaxError:
            return {Owned(), 0, 0, QVErrSyntax};
        default:
            return {};
    }
}

// Only the rule that is found becomes objects; the others are passed over as text.
QVCCSSParser::Found QVCCSSParser::FindCSSElementWithSelector(void* selector, std::uint32_t start) const {
    const std::wstring_view wanted(QVStringGetBuffer(selector), QVStringGetLength(selector));
    CssRule rule;
    for (std::size_t position = start; qv::FindNextCssRule(Sheet(), position, rule) == CssResult::kFound;
         position = rule.start + rule.length) {
        if (!rule.selectors.empty() && qv::EqualIgnoringCase(rule.selectors.front(), wanted))
            return FoundRule(rule);
    }
    return {};
}

void QVCCSSParser::ReplaceCSSElement(void* element, std::uint32_t start, std::uint32_t length) {
    const std::wstring text = qv::FromHandle<QVCCSSElement>(element)->GetElementString();
    if (text.empty()) return;
    QVStringReplaceString(string_.Get(), CreateString(text).Get(), start, length);
}

Owned QVCCSSParser::CreateCharSetSelectors(QVEncodingInfo encoding) {
    void* name = QVGetMIMECharSetName(encoding.encoding, encoding.byteOrder);
    if (name == nullptr || QVStringGetLength(name) == 0) return Owned();
    Owned selectors = CreateArray(2);
    qv::HandToArray(selectors.Get(), CreateString(L"@charset"));
    const std::wstring quoted = std::wstring(L"\"").append(QVStringGetBuffer(name)).append(L"\";");
    qv::HandToArray(selectors.Get(), CreateString(quoted));
    return selectors;
}
