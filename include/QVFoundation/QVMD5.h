/*
 * MD5 digests, all at once or piece by piece (type ID 8).
 *
 *     QVHashValue128 hash = QVHashMD5("abc", 3);
 *     void* text = QVStringCreateWithHashValue128(hash);   // "900150983CD24FB0D6963F7D28E17F72"
 *     QVRelease(text);
 *
 * NOT STANDARD FOR EVERY LENGTH: the finishing step always works in one block. When the message's length
 * modulo 64 is 56 to 63, the length overwrites the message's last bytes, and the digest is a value of this
 * library's own. For all other lengths it is standard MD5. The library's files carry such digests, so this
 * stays.
 *
 * MD5 is here to read and write the library's own files and to name contents. It resists no attacker: do not
 * choose it for signatures, passwords or new formats.
 */
#ifndef QVFOUNDATION_QVMD5_H
#define QVFOUNDATION_QVMD5_H

#include <QVFoundation/QVHashValue.h>
#include <QVFoundation/QVObject.h>

QV_BEGIN_DECLS

/**
 * A new hasher, owned by the caller; QVMD5Initialize begins its first message. Null when memory runs out,
 * after logging "Couldn't create the instance of the QVMD5.".
 */
QV_EXPORT void* QVMD5Create(void) QV_NOTHROW;

/** Begins a new message; whatever was fed before is forgotten. */
QV_EXPORT void QVMD5Initialize(void* md5) QV_NOTHROW;

/**
 * Feeds `length` bytes; any split of a message into pieces gives the same digest. Null bytes feed nothing.
 * After QVMD5Finish it goes on from the finished state, which is the digest of no message: initialize first.
 */
QV_EXPORT void QVMD5Update(void* md5, const void* bytes, unsigned long length) QV_NOTHROW;

/** Ends the message. */
QV_EXPORT void QVMD5Finish(void* md5) QV_NOTHROW;

/** The state's words as they stand: the digest after QVMD5Finish, zeros before the first QVMD5Initialize. */
QV_EXPORT QVHashValue128 QVMD5GetHashValue(void* md5) QV_NOTHROW;

/** The digest of `length` bytes. Makes no object and cannot fail. Null bytes count as none. */
QV_EXPORT QVHashValue128 QVHashMD5(const void* bytes, unsigned long length) QV_NOTHROW;

QV_END_DECLS

#endif
