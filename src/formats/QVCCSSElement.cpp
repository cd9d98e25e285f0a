#include "formats/QVCCSSElement.h"

#include <string_view>

#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVDictionary.h>
#include <QVFoundation/QVString.h>

namespace {

// A string's text; nothing (a null pointer) for objects of other classes.
std::wstring_view TextOf(void* object) {
    if (QVGetTypeID(object) != QVTypeIDString) return {};
    return {QVStringGetBuffer(object), QVStringGetLength(object)};
}

}  // namespace

std::wstring QVCCSSElement::GetElementString() const {
    std::wstring text;
    const unsigned long count = QVArrayGetCount(selectors_.Get());
    bool isFirst = true;
    for (unsigned long i = 0; i < count; ++i) {
        const std::wstring_view selector = TextOf(QVArrayGetObjectAtIndex(selectors_.Get(), i));
        if (selector.data() == nullptr) continue;
        if (!isFirst) {
            // A rule such as "@media screen, print" has a space behind its name.
            const bool isAtRule = i == 1 && text.starts_with(L'@');
            text += isAtRule ? L" " : L", ";
        }
        text += selector;
        isFirst = false;
    }
    if (count != 0) AppendProperties(text);
    return text;
}

// No closing brace: the text of an element is defined without it.
void QVCCSSElement::AppendProperties(std::wstring& text) const {
    const unsigned long count = QVArrayGetCount(propertyOrder_.Get());
    if (properties_.Get() == nullptr || count == 0) return;
    text += L" {\n";
    for (unsigned long i = 0; i < count; ++i) {
        const std::wstring_view name = TextOf(QVArrayGetObjectAtIndex(propertyOrder_.Get(), i));
        if (name.data() == nullptr) continue;
        const std::wstring_view value = TextOf(QVDictionaryGetObject(properties_.Get(), name.data()));
        if (value.data() == nullptr) continue;
        text.append(L"\t").append(name).append(L": ").append(value).append(L";\n");
    }
}
