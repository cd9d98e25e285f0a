/*
 * Linked lists: ordered collections for adding at the back and taking from either end (type ID 7). A list
 * owns one reference to each element; elements are never null.
 *
 *     void* queue = QVLinkedListCreate();
 *     QVLinkedListAddObject(queue, job);                  // retained
 *     void* next = QVLinkedListGetFrontObject(queue);     // borrowed
 *     QVLinkedListRemoveFrontObject(queue);               // released
 *     QVRelease(queue);
 *
 * Work at the ends takes constant time; counting, and reaching an index, walk the list.
 */
#ifndef QVFOUNDATION_QVLINKEDLIST_H
#define QVFOUNDATION_QVLINKEDLIST_H

#include <QVFoundation/QVEnumerator.h>
#include <QVFoundation/QVObject.h>

QV_BEGIN_DECLS

/**
 * A new empty list, owned by the caller. Null when memory runs out, after logging "Couldn't allocate the
 * instance of the QVLinkedList.".
 */
QV_EXPORT void* QVLinkedListCreate(void) QV_NOTHROW;

/** The number of elements, counted by walking the list. */
QV_EXPORT unsigned long QVLinkedListGetCount(void* list) QV_NOTHROW;

/** The first element, borrowed; null when the list is empty. */
QV_EXPORT void* QVLinkedListGetFrontObject(void* list) QV_NOTHROW;

/** The last element, borrowed; null when the list is empty. */
QV_EXPORT void* QVLinkedListGetLastObject(void* list) QV_NOTHROW;

/**
 * The element at the index from the front, borrowed; the cost grows with the index. Null when the list is too
 * short, after logging "The index(%u) is an out of range.".
 */
QV_EXPORT void* QVLinkedListGetObjectAtIndex(void* list, unsigned long index) QV_NOTHROW;

/**
 * Adds the object, which is retained, at the back. Null is refused with "Add the NULL item into the list.".
 * When memory runs out it logs "Couldn't add the object into the list.", and the reference taken is not given
 * back.
 */
QV_EXPORT void QVLinkedListAddObject(void* list, void* object) QV_NOTHROW;

/** Removes and releases the first element; nothing when the list is empty. */
QV_EXPORT void QVLinkedListRemoveFrontObject(void* list) QV_NOTHROW;

/** Removes and releases the last element; nothing when the list is empty. */
QV_EXPORT void QVLinkedListRemoveLastObject(void* list) QV_NOTHROW;

/**
 * A new enumerator that stands at the first element, owned by the caller; it keeps the list alive. Null when
 * memory runs out, after logging "Couldn't allocate the instance of the QVEnumerator for the linked list.".
 */
QV_EXPORT void* QVLinkedListCreateObjectEnumerator(void* list) QV_NOTHROW;

/**
 * The index of the first element that QVCompareObject(element, object) finds equal, or -1. Every class of the
 * library compares by identity, so this finds the object itself, not one with equal contents.
 */
QV_EXPORT long QVLinkedListIndexOfObject(void* list, void* object) QV_NOTHROW;

QV_END_DECLS

#endif
