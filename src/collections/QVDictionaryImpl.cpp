#include "collections/QVDictionaryImpl.h"

#include <exception>

#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVLibrary.h>
#include <QVFoundation/QVString.h>

#include "runtime/Handle.h"
#include "runtime/Owned.h"

using qv::Owned;

QVDictionaryImpl::~QVDictionaryImpl() {
    map_.Drain([](void* value) { QVRelease(value); });
}

void* QVDictionaryImpl::GetObject(const wchar_t* key) const {
    return key != nullptr ? map_.Find(key) : nullptr;
}

void QVDictionaryImpl::SetObject(void* value, const wchar_t* key) {
    if (value == nullptr) return QVLog(L"Attempt to insert NULL value into the dictionary.");
    if (key == nullptr) return QVLog(L"Attempt to insert the value with NULL key.");
    try {
        void* replaced = map_.Put(key, value);
        if (replaced == value) return;
        QVRetain(value);
        QVRelease(replaced);
    } catch (const std::exception&) {
        QVLog(L"The dictionary could not insert the value.");
    }
}

void QVDictionaryImpl::AdoptObject(void* value, const wchar_t* key) {
    QVRelease(map_.Put(key, value));
}

void QVDictionaryImpl::RemoveObject(const wchar_t* key) {
    if (key != nullptr) QVRelease(map_.Remove(key));
}

void QVDictionaryImpl::AddEntriesFromDictionary(QVDictionaryImpl* other) {
    if (other == nullptr) return;
    // The other dictionary may be a value that is replaced on the way.
    const Owned kept = Owned::Retaining(qv::ToHandle(other));
    for (const qv::KeyedEntry* entry : other->map_.InOrder())
        SetObject(entry->value, entry->Key());
}

void* QVDictionaryImpl::KeyArray() const {
    Owned keys{QVArrayCreateWithCapacity(static_cast<unsigned long>(GetCount()))};
    if (!keys) return nullptr;
    for (const qv::KeyedEntry* entry : map_.InOrder()) {
        const Owned key{QVStringCreateWithWideString(entry->Key())};
        if (!key) return nullptr;
        QVArrayAddObject(keys.Get(), key.Get());
    }
    return keys.Detach();
}

void* QVDictionaryImpl::ObjectArray() const {
    Owned values{QVArrayCreateWithCapacity(static_cast<unsigned long>(GetCount()))};
    if (!values) return nullptr;
    for (const qv::KeyedEntry* entry : map_.InOrder())
        QVArrayAddObject(values.Get(), entry->value);
    return values.Detach();
}
