/*
 * Property lists: dictionaries, arrays, strings, numbers, Data and dates as an XML property list
 * (version 1.0).
 *
 *     void* settings = QVDictionaryCreate();
 *     QVDictionarySetObject(settings, QVSTR(L"Helvetica"), L"font");
 *     void* data = QVPlistCreateData(settings);   // UTF-8; release it
 *     QVDataWriteToFile(data, path);
 */
#ifndef QVFOUNDATION_QVPLIST_H
#define QVFOUNDATION_QVPLIST_H

#include <QVFoundation/QVObject.h>

QV_BEGIN_DECLS

/**
 * The property list of an object as a new Data in UTF-8, owned by the caller, without added white space.
 *
 * - String: <string>, with & " < > as entities. Data: <data> in Base64 without line breaks.
 * - Number: a boolean is <true/> when its value is 1, else <false/>; float and double are <real> with six
 * decimal places. Integers are <integer>, but a value of 2147483648 or more is a <real> without decimal
 * places, converted to double first. A negative signed 64-bit value is printed by its low 32 bits as a signed
 * number, which is right down to -2147483648.
 * - Date: <date> in UTC, such as 2026-11-15T15:08:30Z.
 * - Array: <array> of its objects. Dictionary: <dict> of <key> and value, in key order.
 *
 * Numbers look the same in every locale. Null, without a log line, when any object in it is of another class
 * (a null object, a list, a tree, a null element), when a container contains itself, when containers are
 * nested more than 10,000 deep, when a date cannot be represented, or when memory runs out.
 */
QV_EXPORT void* QVPlistCreateData(void* root) QV_NOTHROW;

QV_END_DECLS

#endif
