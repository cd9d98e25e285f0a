/*
 * Base64: bytes as text of the standard alphabet ("A" to "Z", "a" to "z", "0" to "9", "+", "/") and back. No
 * line breaks are written, none are accepted.
 *
 *     void* text = QVBase64Encode("Man", 3);                    // Data "TWFu", in the temporary pool
 *     void* bytes = QVBase64Decode(QVDataGetImutableBuffer(text), QVDataGetSize(text));
 */
#ifndef QVFOUNDATION_QVBASE64_H
#define QVFOUNDATION_QVBASE64_H

#include <QVFoundation/QVObject.h>

QV_BEGIN_DECLS

/**
 * The text for `length` bytes as a temporary Data object, padded with "=" to a multiple of four characters
 * and without a terminating zero. Null for null bytes with a length, without memory, and for 2^32 characters
 * and more.
 */
QV_EXPORT void* QVBase64Encode(const void* bytes, unsigned long long length) QV_NOTHROW;

/**
 * The bytes that `length` characters stand for, as a temporary Data object. The first "=" ends the text and
 * what follows it is not looked at; bits at the end that do not fill a byte are dropped. Null when another
 * character is not of the alphabet (white space and line breaks are not), for null text with a length,
 * without memory, and for a length whose bytes would be 2^32 and more.
 */
QV_EXPORT void* QVBase64Decode(const void* text, unsigned long long length) QV_NOTHROW;

QV_END_DECLS

#endif
