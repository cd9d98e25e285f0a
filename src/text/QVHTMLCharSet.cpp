#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVDictionary.h>
#include <QVFoundation/QVHTMLCharSet.h>
#include <QVFoundation/QVLibrary.h>
#include <QVFoundation/QVString.h>
#include <QVFoundation/QVTemporaryObjectsPool.h>

#include "base/html_entities.h"
#include "runtime/Guard.h"
#include "runtime/Owned.h"
#include "runtime/filling.h"
#include "runtime/singleton_keys.h"
#include "text/QVStringImpl.h"

using qv::Guard;
using qv::HtmlCharSet;
using qv::Owned;
using qv::RequireObject;

namespace {

HtmlCharSet CharSetFor(QVBoolean limited) {
    return limited != 0 ? HtmlCharSet::kLimited : HtmlCharSet::kFull;
}

void Register(const Owned& to, const wchar_t* toKey, const Owned& from, const wchar_t* fromKey) {
    QVSingletonSetObject(to.Get(), toKey);
    QVSingletonSetObject(from.Get(), fromKey);
}

// The dictionaries are for applications; the library itself replaces by the table they are made from.
void RegisterTables(HtmlCharSet charSet, const wchar_t* toKey, const wchar_t* fromKey) {
    const Owned to{RequireObject(QVDictionaryCreate())};
    const Owned from{RequireObject(QVDictionaryCreate())};
    for (const qv::HtmlEntity& row : qv::HtmlEntities(charSet)) {
        const wchar_t character[] = {row.character, L'\0'};
        const Owned characterText{RequireObject(QVStringCreateWithWideString(character))};
        const Owned entityText{RequireObject(QVStringCreateWithWideString(row.entity))};
        QVDictionarySetObject(to.Get(), entityText.Get(), character);
        QVDictionarySetObject(from.Get(), characterText.Get(), row.entity);
    }
    Register(to, toKey, from, fromKey);
}

void InitHTMLCharSetTable() {
    RegisterTables(HtmlCharSet::kFull, qv::kHTMLCharSetToKey, qv::kHTMLCharSetFromKey);
    RegisterTables(HtmlCharSet::kLimited, qv::kHTMLCharSetLimitedToKey, qv::kHTMLCharSetLimitedFromKey);
}

// Whether text may be replaced: the tables are registered, or could be just now.
bool HaveTables(HtmlCharSet charSet) {
    const wchar_t* key =
        charSet == HtmlCharSet::kLimited ? qv::kHTMLCharSetLimitedToKey : qv::kHTMLCharSetToKey;
    if (QVSingletonGetObject(key) != nullptr) return true;
    InitHTMLCharSetTable();
    return QVSingletonGetObject(key) != nullptr;
}

Owned CreateReplaced(void* string, HtmlCharSet charSet) {
    const std::wstring_view text(QVStringGetBuffer(string), QVStringGetLength(string));
    return Owned{qv::ToHandle(new QVStringImpl([&] { return qv::ReplaceWithHtmlEntities(text, charSet); }))};
}

// The element as it goes into the result: a replaced string, or the same object.
Owned ReplacedElement(void* object, HtmlCharSet charSet) {
    if (QVGetTypeID(object) != QVTypeIDString) return Owned::Retaining(object);
    return CreateReplaced(object, charSet);
}

Owned CreateReplacedArray(void* array, HtmlCharSet charSet) {
    const unsigned long count = QVArrayGetCount(array);
    Owned result{RequireObject(QVArrayCreateWithCapacity(count))};
    for (unsigned long i = 0; i < count; ++i) {
        const Owned element = ReplacedElement(QVArrayGetObjectAtIndex(array, i), charSet);
        // Unlike adding, inserting takes a null element as well.
        QVArrayInsertObjectAtIndex(result.Get(), element.Get(), i);
        if (QVArrayGetCount(result.Get()) != i + 1) throw std::bad_alloc();
    }
    return result;
}

Owned CreateReplacedDictionary(void* dictionary, HtmlCharSet charSet) {
    const Owned keys{RequireObject(QVDictionaryKeyArray(dictionary))};
    Owned result{RequireObject(QVDictionaryCreate())};
    const unsigned long count = QVArrayGetCount(keys.Get());
    for (unsigned long i = 0; i < count; ++i) {
        void* key = QVArrayGetObjectAtIndex(keys.Get(), i);
        const Owned value =
            ReplacedElement(QVDictionaryGetObject(dictionary, QVStringGetBuffer(key)), charSet);
        const Owned replacedKey = CreateReplaced(key, charSet);
        const wchar_t* keyText = QVStringGetBuffer(replacedKey.Get());
        qv::SetOrThrow(result.Get(), value.Get(), keyText);
    }
    return result;
}

// What all three functions share: without the tables the object comes back unchanged.
template <class CreateResult>
void* Replaced(void* object, QVBoolean limited, CreateResult createResult) noexcept {
    if (object == nullptr) return nullptr;
    return Guard<void*>(nullptr, [&] {
        const HtmlCharSet charSet = CharSetFor(limited);
        if (!HaveTables(charSet)) return QVTEMPOBJ(QVRetain(object));
        return QVTEMPOBJ(createResult(object, charSet).Detach());
    });
}

}  // namespace

void* QVStringByReplacingToHTMLCharSet(void* string, QVBoolean limited) noexcept {
    return Replaced(string, limited, CreateReplaced);
}

void* QVArrayByReplacingToHTMLCharSet(void* array, QVBoolean limited) noexcept {
    return Replaced(array, limited, CreateReplacedArray);
}

void* QVDictionaryByReplacingToHTMLCharSet(void* dictionary, QVBoolean limited) noexcept {
    return Replaced(dictionary, limited, CreateReplacedDictionary);
}
