/*
 * Conversion to and from the native objects of a desktop's own frameworks.
 *
 * This build has no native objects: every function here answers null, whatever it is given, and does nothing
 * else. They exist so that a program written against the native build links. The generic forms, QVGetNSObject
 * and QVCreateCFObject, are in QVObject.h.
 */
#ifndef QVFOUNDATION_QVPLATFORMOBJECT_H
#define QVFOUNDATION_QVPLATFORMOBJECT_H

#include <QVFoundation/QVObject.h>

QV_BEGIN_DECLS

/** The string's native string, borrowed. Always null in this build. */
QV_EXPORT void* QVCreateNSObjectFromString(void* string) QV_NOTHROW;

/** The number's native number of the given native type, borrowed. Always null in this build. */
QV_EXPORT void* QVCreateNSObjectFromNumber(void* number, int type) QV_NOTHROW;

/** A native copy of the Data, borrowed. Always null in this build. */
QV_EXPORT void* QVCreateNSObjectFromData(void* data) QV_NOTHROW;

/** A native array of the elements' native objects, borrowed. Always null in this build. */
QV_EXPORT void* QVCreateNSObjectFromArray(void* array) QV_NOTHROW;

/** A native array of the elements' native objects, borrowed. Always null in this build. */
QV_EXPORT void* QVCreateNSObjectFromLinkedList(void* list) QV_NOTHROW;

/** A new string from a native string. Always null in this build. */
QV_EXPORT void* QVStringCreateWithNSString(void* nativeString) QV_NOTHROW;

/** A temporary string from a native string. Always null in this build. */
QV_EXPORT void* QVStringFromNSString(void* nativeString) QV_NOTHROW;

/** A new string from a native string. Always null in this build. */
QV_EXPORT void* QVStringCreateWithCFString(void* nativeString) QV_NOTHROW;

/** A new native string, owned by the caller. Always null in this build. */
QV_EXPORT void* QVStringCreateCFString(void* string) QV_NOTHROW;

QV_END_DECLS

#endif
