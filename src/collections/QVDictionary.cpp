#include <QVFoundation/QVDictionary.h>
#include <QVFoundation/QVLibrary.h>

#include "collections/QVDictionaryImpl.h"
#include "collections/dictionary_entries.h"
#include "collections/handover.h"
#include "runtime/Guard.h"

using qv::CreateObject;
using qv::FromHandle;
using qv::With;

void* QVDictionaryCreate() noexcept {
    void* dictionary = CreateObject<QVDictionaryImpl>();
    if (dictionary == nullptr) QVLog(L"Could not allocate the dictionary.");
    return dictionary;
}

void* QVDictionaryGetObject(void* dictionary, const wchar_t* key) noexcept {
    return With<QVDictionaryImpl>(dictionary, static_cast<void*>(nullptr),
                                  [key](const QVDictionaryImpl& d) { return d.GetObject(key); });
}

unsigned long long QVDictionaryCount(void* dictionary) noexcept {
    return With<QVDictionaryImpl>(dictionary, 0ULL, [](const QVDictionaryImpl& d) { return d.GetCount(); });
}

void QVDictionarySetObject(void* dictionary, void* value, const wchar_t* key) noexcept {
    With<QVDictionaryImpl>(dictionary, [=](QVDictionaryImpl& d) { d.SetObject(value, key); });
}

void QVDictionaryAddEntriesFromDictionary(void* dictionary, void* other) noexcept {
    With<QVDictionaryImpl>(dictionary, [other](QVDictionaryImpl& d) {
        d.AddEntriesFromDictionary(FromHandle<QVDictionaryImpl>(other));
    });
}

void* QVDictionaryKeyArray(void* dictionary) noexcept {
    return With<QVDictionaryImpl>(dictionary, static_cast<void*>(nullptr),
                                  [](const QVDictionaryImpl& d) { return d.KeyArray(); });
}

void* QVDictionaryObjectArray(void* dictionary) noexcept {
    return With<QVDictionaryImpl>(dictionary, static_cast<void*>(nullptr),
                                  [](const QVDictionaryImpl& d) { return d.ObjectArray(); });
}

void QVDictionaryRemoveObject(void* dictionary, const wchar_t* key) noexcept {
    With<QVDictionaryImpl>(dictionary, [key](QVDictionaryImpl& d) { d.RemoveObject(key); });
}

void* QVDictionaryCreateData(void* dictionary) noexcept {
    return With<QVDictionaryImpl>(dictionary, static_cast<void*>(nullptr),
                                  [](QVDictionaryImpl& d) { return d.CreateData(); });
}

qv::DictionaryEntry qv::GetDictionaryEntry(void* dictionary, std::size_t index) noexcept {
    // Whoever asks for one entry asks for the next ones, which in large dictionaries lie anywhere in memory.
    constexpr std::size_t kEntryDistance = 8;
    constexpr std::size_t kValueDistance = 4;
    const auto entries = FromHandle<QVDictionaryImpl>(dictionary)->Entries().InOrder();
    if (index + kEntryDistance < entries.size()) __builtin_prefetch(entries[index + kEntryDistance]);
    if (index + kValueDistance < entries.size()) __builtin_prefetch(entries[index + kValueDistance]->value);
    const KeyedEntry* entry = entries[index];
    return {entry->Key(), entry->keyLength, entry->value};
}

void qv::HandToDictionary(void* dictionary, Owned&& value, const wchar_t* key) {
    FromHandle<QVDictionaryImpl>(dictionary)->AdoptObject(value.Get(), key);
    (void)value.Detach();
}
