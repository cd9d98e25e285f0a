/*
 * Arrays: ordered collections that own one reference to each element (type ID 6).
 *
 *     void* names = QVArrayCreateWithCapacity(2);
 *     QVArrayAddObject(names, first);                  // retained
 *     QVArrayInsertObjectAtIndex(names, second, 0);
 *     void* last = QVArrayGetLastObject(names);        // borrowed: first
 *     QVRelease(names);                                // releases both
 *
 * Adding at the end, and adding or removing at the front, take constant time; elsewhere the shorter side
 * moves.
 */
#ifndef QVFOUNDATION_QVARRAY_H
#define QVFOUNDATION_QVARRAY_H

#include <QVFoundation/QVEnumerator.h>
#include <QVFoundation/QVObject.h>

QV_BEGIN_DECLS

/**
 * A new empty array with room for `capacity` elements, owned by the caller; 0 reserves nothing. Null when
 * memory runs out, after logging "Couldn't allocate the instance of the QVArray. (capacity=%d)".
 */
QV_EXPORT void* QVArrayCreateWithCapacity(unsigned long capacity) QV_NOTHROW;

/**
 * A new array from a list of objects that -1 ends, owned by the caller. THE FIRST OBJECT IS NOT STORED: it
 * counts for the initial room only, and the elements begin with the second one:
 *
 *     QVArrayCreateWithObjects(a, b, c)   holds b and c
 *
 * A null first object gives an empty array; a later null is stored as a null element. An argument counts as
 * -1 when its low 32 bits are all ones. The macro of the same name ends every list with -1. Code that calls
 * the function itself, by
 * `(QVArrayCreateWithObjects)(...)`, passes its own -1. Null when memory runs out, after logging "Couldn't
 * allocate the instance of the QVArray.".
 */
QV_EXPORT void* QVArrayCreateWithObjects(void* first, ...) QV_NOTHROW;
#define QVArrayCreateWithObjects(...) QVArrayCreateWithObjects(__VA_ARGS__, (void*)-1)

/**
 * A new array that holds the one object, owned by the caller; empty for null. Null when memory runs out,
 * after logging "Couldn't allocate the instance of the QVArray.".
 */
QV_EXPORT void* QVArrayCreateWithObject(void* object) QV_NOTHROW;

/** The element, borrowed; null when the index is not below the count (nothing is logged). */
QV_EXPORT void* QVArrayGetObjectAtIndex(void* array, unsigned long index) QV_NOTHROW;

/** The last element, borrowed; null when the array is empty. */
QV_EXPORT void* QVArrayGetLastObject(void* array) QV_NOTHROW;

/** The number of elements. */
QV_EXPORT unsigned long QVArrayGetCount(void* array) QV_NOTHROW;

/**
 * Appends the object, which is retained. Null is refused with "Add NULL object into the array.". When memory
 * runs out it logs "Failed adding the object into the array.", and the reference taken is not given back.
 */
QV_EXPORT void QVArrayAddObject(void* array, void* object) QV_NOTHROW;

/**
 * Inserts the object, which is retained, before the element at `index`; the count as index appends. Null is
 * stored as a null element. A larger index changes nothing and logs "The index(%d) is out of range.". When
 * memory runs out it logs "Failed inserting the object.", and the reference taken is not given back.
 */
QV_EXPORT void QVArrayInsertObjectAtIndex(void* array, void* object, unsigned long index) QV_NOTHROW;

/**
 * Removes and releases the element; later ones move down. An index not below the count changes nothing and
 * logs "The index(%d) is out of range.".
 */
QV_EXPORT void QVArrayRemoveObjectAtIndex(void* array, unsigned long index) QV_NOTHROW;

/** Removes and releases the first element that QVArrayIndexOfObject finds; nothing when there is none. */
QV_EXPORT void QVArrayRemoveObject(void* array, void* object) QV_NOTHROW;

/** Releases every element, first to last. The room stays reserved. */
QV_EXPORT void QVArrayRemoveAllObjects(void* array) QV_NOTHROW;

/**
 * A new enumerator that stands at the first element, owned by the caller; it keeps the array alive. Null when
 * memory runs out, after logging "Couldn't allocate the instance of the QVEnumerator for the array.".
 */
QV_EXPORT void* QVArrayCreateObjectEnumerator(void* array) QV_NOTHROW;

/**
 * Replaces the element: the new object, which may be null, is retained and the old one released. An index not
 * below the count changes nothing (nothing is logged).
 */
QV_EXPORT void QVArraySetObjectAtIndex(void* array, void* object, unsigned long index) QV_NOTHROW;

/**
 * The index of the first element that QVCompareObject(element, object) finds equal, or -1. Every class of the
 * library compares by identity, so this finds the object itself, not one with equal contents. Null finds the
 * first null element.
 */
QV_EXPORT long QVArrayIndexOfObject(void* array, void* object) QV_NOTHROW;

QV_END_DECLS

#endif
