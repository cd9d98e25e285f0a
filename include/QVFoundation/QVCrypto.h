/*
 * Encrypted containers: a stretch of a stream, enciphered and protected by a keyed fingerprint (type ID 10).
 *
 *     void* crypto = QVCryptoCreate();
 *     QVCryptoSetKey(crypto, "secret", 6, 16);        // used as 16 bytes: secretsecretsecr
 *     QVCryptoSetSrcStream(crypto, source);
 *     QVCryptoSetDstStream(crypto, destination);
 *     int code = QVCryptoEncode(crypto, QVStreamGetSize(source));
 *     QVRelease(crypto);
 *
 * A container is a header of 64 bytes and the body in blocks of 8 bytes; docs/encrypted-container.md shows it
 * byte by byte. A wrong key or a damaged body is noticed before anything is deciphered: nothing is written
 * then. The fingerprint does NOT cover the plaintext size and the body's feedback code in the header. Two
 * containers of the same bytes differ, because each begins with fresh random feedback codes.
 *
 * Containers are made of MD5 and Blowfish and serve the library's own files. They are NO CHOICE FOR NEW
 * SECRETS: the key is used as it is given, the feedback codes come from rand(), the plaintext size is told by
 * the container's, and the fingerprint is no modern message authentication.
 *
 * Work goes through a buffer of fixed size, whatever the container's size. Keys, tables and plaintext are
 * wiped from the library's memory when they are no longer needed; what the caller holds is the caller's to
 * wipe.
 */
#ifndef QVFOUNDATION_QVCRYPTO_H
#define QVFOUNDATION_QVCRYPTO_H

#include <QVFoundation/QVObject.h>

QV_BEGIN_DECLS

/** A new object without key and streams, owned by the caller. Null when memory runs out; nothing is logged.
 */
QV_EXPORT void* QVCryptoCreate(void) QV_NOTHROW;

/**
 * Sets the key: `length` bytes, repeated from the start until there are `minimumLength` if that is more. The
 * old key is dropped first, whatever follows. 0; QVErrParam for a null key, a length of 0 and when the longer
 * of the two lengths is above 56; QVErrMemory.
 */
QV_EXPORT int QVCryptoSetKey(void* crypto, const void* key, unsigned long length,
                             unsigned long minimumLength) QV_NOTHROW;

/** Sets the stream to read from, which is retained; null takes the old one away. */
QV_EXPORT void QVCryptoSetSrcStream(void* crypto, void* stream) QV_NOTHROW;

/** The stream to read from, borrowed, or null. */
QV_EXPORT void* QVCryptoGetSrcStream(void* crypto) QV_NOTHROW;

/** Sets the stream to write to, which is retained; null is ignored. */
QV_EXPORT void QVCryptoSetDstStream(void* crypto, void* stream) QV_NOTHROW;

/** The stream to write to, borrowed, or null. */
QV_EXPORT void* QVCryptoGetDstStream(void* crypto) QV_NOTHROW;

/**
 * Enciphers `size` bytes from the source's marker on into a container at the destination's marker, and
 * flushes the destination. The destination must be able to move its marker: the header is written last, over
 * 64 zeros.
 *
 * 0; QVErrParam without a key or a stream, with one stream on both sides, and when the source ends before
 * `size` bytes; QVErrMemory, with nothing written; any code of the streams, the flush's included, with the
 * zeros still in place of the header.
 */
QV_EXPORT int QVCryptoEncode(void* crypto, unsigned long long size) QV_NOTHROW;

/**
 * Deciphers the container of `size` bytes at the source's marker, writes the plaintext at the destination's,
 * and flushes the destination. The source is read twice: the fingerprint comes first, and until it is right
 * nothing is written.
 *
 * 0; QVErrParam as above; QVErrFormat when it does not begin as a container does; QVErrHashMismatch for a
 * wrong key, for a body that was changed or cut, and for fewer than 64 bytes; QVErrMemory; any code of the
 * streams. A container that claims more plaintext than its body holds gives what the body holds.
 */
QV_EXPORT int QVCryptoDecode(void* crypto, unsigned long long size) QV_NOTHROW;

/**
 * The Data's bytes as a container, enciphered with the key Data's bytes (1 to 56): new Data as a temporary
 * object. Null on any failure.
 */
QV_EXPORT void* QVCryptoEncodeData(void* data, void* key) QV_NOTHROW;

/**
 * The plaintext of the container in the Data: new Data as a temporary object. Null on any failure; what had
 * been deciphered of a container that turns out to be wrong is wiped. A plaintext SHORTER THAN THE KEY is
 * followed by zeros up to the key's size: the container knows its size, this result does not tell.
 */
QV_EXPORT void* QVCryptoDecodeData(void* data, void* key) QV_NOTHROW;

QV_END_DECLS

#endif
