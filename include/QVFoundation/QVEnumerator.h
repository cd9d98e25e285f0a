/*
 * Enumerators: objects that give a collection's elements one by one. They are made by the collections
 * (QVArrayCreateObjectEnumerator, QVLinkedListCreateObjectEnumerator) and keep their collection alive.
 *
 *     void* enumerator = QVArrayCreateObjectEnumerator(array);
 *     for (void* object; (object = QVEnumeratorNextObject(enumerator)) != NULL;) Use(object);
 *     QVRelease(enumerator);
 *
 * Changing a collection under a live enumerator is safe. One over an array stands at an index: it goes on
 * with whatever stands there, and elements added behind it are still met, also after it has answered null.
 * One over a linked list stands at an element: it moves to the next one when its own is removed, and once at
 * the end it stays there until it is reset.
 */
#ifndef QVFOUNDATION_QVENUMERATOR_H
#define QVFOUNDATION_QVENUMERATOR_H

#include <QVFoundation/QVObject.h>

QV_BEGIN_DECLS

/**
 * The next element, borrowed, or null at the end. An array's null element comes out as null too: compare with
 * the count where an array may hold such elements.
 */
QV_EXPORT void* QVEnumeratorNextObject(void* enumerator) QV_NOTHROW;

/** Back to the first element. */
QV_EXPORT void QVEnumeratorReset(void* enumerator) QV_NOTHROW;

QV_END_DECLS

#endif
