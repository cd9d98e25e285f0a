/*
 * Dictionaries: values by wide text (type ID 14). A dictionary copies its keys, owns one reference to each
 * value, and gives its entries in key order: that of wcscmp, character by character, so "B" stands before "a"
 * and "a" before "ab".
 *
 *     void* sizes = QVDictionaryCreate();
 *     QVDictionarySetObject(sizes, number, L"width");        // value first, key second
 *     void* width = QVDictionaryGetObject(sizes, L"width");  // borrowed
 *     QVRelease(sizes);
 *
 * Finding, setting and removing take constant time on average. The order is made when it is first asked for.
 */
#ifndef QVFOUNDATION_QVDICTIONARY_H
#define QVFOUNDATION_QVDICTIONARY_H

#include <QVFoundation/QVObject.h>

QV_BEGIN_DECLS

/**
 * A new empty dictionary, owned by the caller. Null when memory runs out, after logging "Could not allocate
 * the dictionary.".
 */
QV_EXPORT void* QVDictionaryCreate(void) QV_NOTHROW;

/** The value under the key, borrowed; null when there is none, and for a null key. */
QV_EXPORT void* QVDictionaryGetObject(void* dictionary, const wchar_t* key) QV_NOTHROW;

/** The number of entries. */
QV_EXPORT unsigned long long QVDictionaryCount(void* dictionary) QV_NOTHROW;

/**
 * Puts the value, which is retained, under a copy of the key; NOTE THE ORDER: value first. A value that stood
 * there is released; when it is the same object, nothing changes. A null value is refused with "Attempt to
 * insert NULL value into the dictionary.", else a null key with "Attempt to insert the value with NULL key.".
 * When memory runs out it logs "The dictionary could not insert the value." and changes nothing; replacing a
 * value needs no memory.
 */
QV_EXPORT void QVDictionarySetObject(void* dictionary, void* value, const wchar_t* key) QV_NOTHROW;

/** Sets every entry of the other dictionary in this one, in key order, as QVDictionarySetObject does. Null
 * has none. */
QV_EXPORT void QVDictionaryAddEntriesFromDictionary(void* dictionary, void* other) QV_NOTHROW;

/** A new array of new strings, one per key, in key order; owned by the caller. Null when memory runs out. */
QV_EXPORT void* QVDictionaryKeyArray(void* dictionary) QV_NOTHROW;

/** A new array of the values, in key order; owned by the caller. Null when memory runs out. */
QV_EXPORT void* QVDictionaryObjectArray(void* dictionary) QV_NOTHROW;

/** Removes the entry and releases its value; nothing when there is none, and for a null key. */
QV_EXPORT void QVDictionaryRemoveObject(void* dictionary, const wchar_t* key) QV_NOTHROW;

/** Reserved: always null. */
QV_EXPORT void* QVDictionaryCreateData(void* dictionary) QV_NOTHROW;

QV_END_DECLS

#endif
