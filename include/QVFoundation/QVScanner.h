/*
 * Scanners: a string and a marker that walks through it and cuts pieces out.
 *
 *     void* scanner = QVScannerCreateWithString(line);                 // "key=ff"
 *     void* key;
 *     QVScannerScanUpToCharacters(scanner, L"=", &key);                // "key=", temporary
 *     unsigned int value;
 *     QVScannerScanHexUInt(scanner, &value);                           // 0xFF
 *     QVRelease(scanner);
 *
 * Sets of characters are matched by exact code point and end at their terminating 0, which itself never
 * matches. A scan whose piece cannot be allocated answers false and leaves the marker where it was; a null
 * `out` only moves the marker.
 */
#ifndef QVFOUNDATION_QVSCANNER_H
#define QVFOUNDATION_QVSCANNER_H

#include <QVFoundation/QVObject.h>

QV_BEGIN_DECLS

/** What the offset of QVScannerSetMarker counts from. */
enum { QVScannerFromStart = 0, QVScannerFromEnd = 1, QVScannerFromMarker = 2 };

/** A scanner at the start of the string, which is retained. Over null every scan is false. */
QV_EXPORT void* QVScannerCreateWithString(void* string) QV_NOTHROW;

/**
 * Moves the marker to `offset` (mode 0), to the length less `offset` (1) or by `offset` (2); any other mode
 * leaves it. The marker then stays within the string. Answers the string's length, not the marker.
 */
QV_EXPORT int QVScannerSetMarker(void* scanner, int mode, int offset) QV_NOTHROW;

/** The index of the next character to examine. */
QV_EXPORT int QVScannerGetMarker(void* scanner) QV_NOTHROW;

/** The string's length. */
QV_EXPORT unsigned long QVScannerGetLength(void* scanner) QV_NOTHROW;

/**
 * Passes everything up to and including the first of the characters, or up to the end, and gives it in `out`
 * as a temporary string. False, with `out` null, when the marker is already at the end.
 */
QV_EXPORT QVBoolean QVScannerScanUpToCharacters(void* scanner, const wchar_t* characters,
                                                void** out) QV_NOTHROW;

/**
 * Passes the characters of the set that follow and gives them in `out` as a new string that the caller
 * releases. False, with `out` null, when none follows.
 */
QV_EXPORT QVBoolean QVScannerScanUpToNotCharacters(void* scanner, const wchar_t* characters,
                                                   void** out) QV_NOTHROW;

/**
 * Passes the hexadecimal digits that follow and gives their value, modulo 2^32. False, with 0, when none
 * follows. There is no prefix: on "0x1F" it reads 0 and stops at the "x".
 */
QV_EXPORT QVBoolean QVScannerScanHexUInt(void* scanner, unsigned int* out) QV_NOTHROW;

QV_END_DECLS

#endif
