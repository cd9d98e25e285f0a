/*
 * Text encodings: strings to bytes and back.
 *
 *     QVEncodingInfo utf16 = {QVEncodingUTF16, 2, 1};              // big-endian, with a byte-order mark
 *     void* data = QVStringMakeData(string, utf16);                // "abc": FE FF 00 61 00 62 00 63
 *     void* copy = QVStringCreateWithData(data, utf16);            // "abc"
 *     puts(QVStringGetUTF8String(copy));                           // lives in the temporary pool
 *     QVRelease(copy);
 *     QVRelease(data);
 *
 * Encoding never fails for a character's sake: one that does not fit (in UTF-8, UTF-16 and UTF-32 a surrogate
 * or a value above U+10FFFF) becomes one "?". Decoding is strict: bytes that are not valid give no string at
 * all.
 *
 * Shift_JIS is the desktop's own (code page 932: 5C is a backslash, 7E a tilde); ISO-2022-JP always ends in
 * ASCII; the wave dash U+301C and the full-width tilde U+FF5E both fit. These three need the C library's
 * conversion tables; without them the encoded text is empty and decoding gives null.
 */
#ifndef QVFOUNDATION_QVENCODING_H
#define QVFOUNDATION_QVENCODING_H

#include <stdint.h>

#include <QVFoundation/QVObject.h>

QV_BEGIN_DECLS

/** Encodings. Every other number stands for Mac OS Roman. */
enum {
    QVEncodingShiftJIS = 1,
    QVEncodingISO2022JP = 2,
    QVEncodingEUCJP = 3,
    QVEncodingUTF8 = 4,
    QVEncodingUTF16 = 5, /**< needs a byte order */
    QVEncodingUTF32 = 6  /**< needs a byte order */
};

/** How a text is laid out in bytes; passed by value. */
typedef struct QVEncodingInfo {
    uint32_t encoding;       /**< QVEncoding... */
    uint32_t byteOrder;      /**< 1 little-endian, 2 big-endian, 0 none given; counts for UTF-16 and UTF-32 */
    QVBoolean byteOrderMark; /**< write a byte-order mark, or skip one */
} QVEncodingInfo;

/**
 * New Data with the string's characters in the encoding, owned by the caller; null when memory runs out.
 *
 * With the flag set a byte-order mark stands first: EF BB BF for UTF-8, FF FE for UTF-16 and FF FE 00 00 for
 * UTF-32, or FE FF and 00 00 FE FF when the byte order is 2; the other encodings have none.
 *
 * UTF-16 and UTF-32 WITH A BYTE ORDER OTHER THAN 1 AND 2 ARE WRITTEN AS MAC OS ROMAN, and a mark asked for is
 * still the little-endian one.
 */
QV_EXPORT void* QVStringMakeData(void* string, QVEncodingInfo info) QV_NOTHROW;

/** What QVStringMakeData does. */
QV_EXPORT void* QVStringCreateDataMac(void* string, QVEncodingInfo info) QV_NOTHROW;

/**
 * A new string from the Data's bytes, owned by the caller; null when they are not valid in the encoding, when
 * the Data has no buffer (empty Data has none), or when memory runs out.
 *
 * With the flag set the first 3 bytes (UTF-8), 2 (UTF-16) or 4 (UTF-32) are skipped, WHATEVER THEY ARE; when
 * nothing is left the string is empty. Without it a mark becomes the character U+FEFF.
 *
 * UTF-16 and UTF-32 WITH A BYTE ORDER OTHER THAN 1 AND 2 ARE READ AS SHIFT_JIS, unlike in the other
 * direction.
 */
QV_EXPORT void* QVStringCreateWithData(void* data, QVEncodingInfo info) QV_NOTHROW;

/**
 * The string in UTF-8, followed by one 0 byte; never has a mark. The bytes live in the calling thread's top
 * temporary pool. A null string gives an empty text. When memory runs out the text is empty as well, or null
 * when not even the 0 can be had.
 */
QV_EXPORT const char* QVStringGetUTF8String(void* string) QV_NOTHROW;

/**
 * The MIME name of an encoding as a string, borrowed from a table that is made on the first call and lives
 * until the library's end: "Shift_JIS", "ISO-2022-JP", "EUC-JP", "UTF-8", "UTF-16BE", "UTF-16LE", "UTF-32BE"
 * or "UTF-32LE". The byte order (1 little-endian, 2 big-endian) counts for UTF-16 and UTF-32, which have no
 * name without one. Null when there is no name; also while the library is down, after logging "QVFoundation
 * is not initialized.", and when memory runs out.
 */
QV_EXPORT void* QVGetMIMECharSetName(uint32_t encoding, uint32_t byteOrder) QV_NOTHROW;

/**
 * Encodes `count` characters and stores new Data, owned by the caller, in `data`: 2 * count ZERO BYTES COME
 * FIRST, then the encoded bytes. Surrogates are encoded like any other value, values from 2^21 on in five or
 * six bytes, and a negative value becomes one byte, its low seven bits. `second`, which may be null, is
 * always set to 0.
 *
 * 0, or with null in `data`: QVErrMemory when the Data cannot be made, QVErrParam for null characters with a
 * count and for a null `data`.
 */
QV_EXPORT int QVEncodeWideStringWithUTF8(const wchar_t* characters, unsigned long count, void** data,
                                         unsigned long* second) QV_NOTHROW;

QV_END_DECLS

#endif
