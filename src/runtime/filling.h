// Filling collections where a failure must not pass unnoticed: the collections themselves report one in the
// log only.
#pragma once

#include <new>

#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVDictionary.h>
#include <QVFoundation/QVObject.h>

namespace qv {

// Appends an object that is not null, or throws std::bad_alloc.
inline void AppendOrThrow(void* array, void* object) {
    const unsigned long count = QVArrayGetCount(array);
    QVArrayAddObject(array, object);
    if (QVArrayGetCount(array) > count) return;
    QVRelease(object);  // the reference that a failed append keeps
    throw std::bad_alloc();
}

// Puts a value that is not null under the key, or throws std::bad_alloc.
inline void SetOrThrow(void* dictionary, void* value, const wchar_t* key) {
    const auto count = QVDictionaryCount(dictionary);
    QVDictionarySetObject(dictionary, value, key);
    if (QVDictionaryCount(dictionary) > count) return;
    // An equal count is a value that was replaced, or one that found no room.
    if (QVDictionaryGetObject(dictionary, key) != value) throw std::bad_alloc();
}

}  // namespace qv
